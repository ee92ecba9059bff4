#include <libVideo/SceneGraph/Scene.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "document/ColladaReader.h"
#include "document/LoadScope.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Light.h>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.scene")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Scene")

// Without a version, the document model would open only documents of its newest schema. The reader gets the address of
// its `DAE` before that is constructed.
Scene::Scene()
    : m_reader(std::make_unique<detail::ColladaReader>(m_dae)), m_dae(&m_reader->database(), m_reader.get(), "1.4.1")
{}

bool Scene::createFromCollada(const vesk::String& path)
{
    VIDEO_TRACE("Scene::createFromCollada");
    if (m_visualScene.root().children().size() > 0) {
        VIDEO_LOG("Scene is already loaded");
        return false;
    }
    detail::LoadScope scope(m_dae, *m_reader);
    const domCOLLADARef root = scope.open(path);
    if (root == nullptr) {
        VIDEO_LOG("Collada file does not exist ", path);
        return false;
    }
    const domCOLLADA::domSceneRef scene = root->getScene();
    if (scene == nullptr) {
        VIDEO_LOG("Collada file does not have a scene definition ", path);
        return false;
    }

    // The pool is filled even if the checks below find no visual scene.
    createAnimationListFromCollada(root, m_dae, m_resources.animationList);
    createCameraListFromCollada(root, m_dae, m_resources.cameraList);
    createPointLightListFromCollada(root, m_resources.pointLightList);
    createSpotLightListFromCollada(root, m_dae, m_resources.spotLightList);

    const domInstanceWithExtraRef instance = scene->getInstance_visual_scene();
    if (instance == nullptr) {
        VIDEO_LOG("Scene does not have a visual scene");
        return false;
    }
    const daeElementRef element = instance->getUrl().getElement();
    if (element == nullptr) {
        VIDEO_LOG("Url ", instance->getUrl().str().c_str(), " does not point to a collada element");
        return false;
    }
    const domVisual_sceneRef visualScene = daeSafeCast<domVisual_scene>(element);
    if (visualScene == nullptr) {
        VIDEO_LOG("daeElement is not a domVisual_scene element");
        return false;
    }
    return m_visualScene.createFromCollada(*visualScene, SceneResourcesLink(&m_resources));
}

Scene::~Scene()
{
    m_dae.clear(); // as long as the types of its elements exist
}

void Scene::transformToYUP(domUpAxisType upAxis)
{
    switch (upAxis) {
    case UPAXISTYPE_X_UP:
        m_upTransform[0] = 0.0f;
        m_upTransform[4] = 1.0f;
        m_upTransform[1] = -1.0f;
        m_upTransform[5] = 0.0f;
        break;
    case UPAXISTYPE_Z_UP:
        m_upTransform[5] = 0.0f;
        m_upTransform[9] = 1.0f;
        m_upTransform[10] = 0.0f;
        m_upTransform[6] = -1.0f;
        break;
    default:
        m_upTransform.setIdentity();
        break;
    }
}

} // namespace libVideo
