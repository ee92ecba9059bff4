// Shows the model embedded in the page. Drag to turn it, use the wheel to zoom.
import * as THREE from "three";
import { OrbitControls } from "three/addons/controls/OrbitControls.js";
import { MeshoptDecoder } from "three/addons/libs/meshopt_decoder.module.js";
import { GLTFLoader } from "three/addons/loaders/GLTFLoader.js";

const message = document.getElementById("message");

// The bytes of the embedded binary glTF file.
function modelBytes() {
    const text = atob(document.getElementById("model").textContent.trim());
    const bytes = new Uint8Array(text.length);
    for (let i = 0; i < text.length; ++i) {
        bytes[i] = text.charCodeAt(i);
    }
    return bytes.buffer;
}

// A camera like the first one of the model, or one that shows the whole model if it has none.
function viewpoint(model) {
    const box = new THREE.Box3().setFromObject(model.scene);
    const center = box.isEmpty() ? new THREE.Vector3() : box.getCenter(new THREE.Vector3());
    const radius = Math.max(box.isEmpty() ? 1 : box.getSize(new THREE.Vector3()).length() / 2, 1e-6);
    const camera = new THREE.PerspectiveCamera(40, 1, radius / 1000, radius * 1000);
    const own = model.cameras.find((each) => each.isPerspectiveCamera);
    const target = center.clone();
    if (own) {
        own.updateWorldMatrix(true, false);
        camera.position.setFromMatrixPosition(own.matrixWorld);
        const forward = new THREE.Vector3(0, 0, -1).transformDirection(own.matrixWorld);
        camera.fov = own.fov;
        target.copy(camera.position).addScaledVector(forward, Math.max(center.clone().sub(camera.position).dot(forward), radius / 10));
    } else {
        camera.position.copy(center).add(new THREE.Vector3(0.5, 0.4, 1).setLength((1.05 * radius) / Math.sin(Math.PI / 9)));
    }
    return { camera, target };
}

function show(model) {
    const renderer = new THREE.WebGLRenderer({ antialias: true });
    document.body.append(renderer.domElement);
    const scene = new THREE.Scene();
    scene.background = new THREE.Color(0x9fb8cc);
    scene.add(model.scene);
    scene.updateMatrixWorld(true);
    const { camera, target } = viewpoint(model);
    let lights = 0;
    model.scene.traverse((each) => (lights += each.isLight ? 1 : 0));
    scene.add(new THREE.HemisphereLight(0xffffff, 0x667788, lights > 0 ? 0.5 : 2));
    if (lights === 0) {
        const head = new THREE.DirectionalLight(0xffffff, 2);
        camera.add(head);
        scene.add(camera);
    }
    const controls = new OrbitControls(camera, renderer.domElement);
    controls.target.copy(target);
    const mixer = new THREE.AnimationMixer(model.scene);
    model.animations.forEach((each) => mixer.clipAction(each).play());
    const resize = () => {
        renderer.setPixelRatio(devicePixelRatio);
        renderer.setSize(innerWidth, innerHeight);
        camera.aspect = innerWidth / Math.max(innerHeight, 1);
        camera.updateProjectionMatrix();
    };
    addEventListener("resize", resize);
    resize();
    const clock = new THREE.Clock();
    renderer.setAnimationLoop(() => {
        mixer.update(clock.getDelta());
        controls.update();
        renderer.render(scene, camera);
        document.body.dataset.state = "shown";
    });
}

new GLTFLoader()
    .setMeshoptDecoder(MeshoptDecoder)
    .parseAsync(modelBytes(), "")
    .then((model) => {
        message.remove();
        show(model);
    })
    .catch((error) => {
        message.textContent = "The model cannot be shown: " + error.message;
        document.body.dataset.state = "failed";
    });
