#pragma once

#include <string>

/// The shaders that draw scenes, in GLSL 3.30.
namespace scenetool::sceneShaders {

/// Texels per light in the light buffer: position and kind; color and inner cosine; attenuation and outer cosine;
/// direction and exponent.
constexpr unsigned texelsPerLight = 4;

constexpr const char* vertex = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec2 texcoord;
layout(location = 3) in vec4 color;
uniform mat4 clipFromWorld;
uniform mat4 worldFromModel;
uniform mat3 normalMatrix;
out vec3 worldPosition;
out vec3 worldNormal;
out vec2 vertexTexcoord;
out vec3 vertexColor;
void main()
{
    vec4 world = worldFromModel * vec4(position, 1.0);
    worldPosition = world.xyz;
    worldNormal = normalMatrix * normal;
    vertexTexcoord = texcoord;
    vertexColor = color.rgb;
    gl_Position = clipFromWorld * world;
}
)";

constexpr const char* fragmentBody = R"(
const int pointLight = 0;
const int spotLight = 1;
const int directionalLight = 2;
const int headLight = 3;
in vec3 worldPosition;
in vec3 worldNormal;
in vec2 vertexTexcoord;
in vec3 vertexColor;
uniform vec4 eye; // w = 1: position; w = 0: direction towards the eye of an orthographic view
uniform vec3 ambientLight;
uniform int lightCount;
uniform samplerBuffer lights;
uniform vec3 colors[4]; // emission, ambient, diffuse, specular
#if HAS_TEXTURES
uniform bool hasTexture[5]; // for these and for the opacity
uniform sampler2D textures[5];
#define SHOWN(channel, plain) (hasTexture[channel] ? texture(textures[channel], vertexTexcoord) : plain)
#else
#define SHOWN(channel, plain) plain
#endif
uniform float shininess;
uniform float opacity;
uniform float opacityFactor; // for the opacity texture
uniform bool isOpacityByColor;
uniform bool isOpacityInverted;
uniform bool isAmbientDiffuse;
uniform bool hasNormal;
uniform bool isTwoSided;
uniform bool isPoints;
uniform bool hasColor;
uniform bool isFlat; // one unlit color, for wires
out vec4 result;

vec3 shownNormal(vec3 towardsEye)
{
    if (isPoints) {
        vec3 own = hasNormal && dot(worldNormal, worldNormal) > 0.0 ? normalize(worldNormal) : towardsEye;
        return dot(own, towardsEye) < 0.0 ? -own : own;
    }
    if (hasNormal && dot(worldNormal, worldNormal) > 0.0) {
        vec3 own = normalize(worldNormal);
        return isTwoSided && !gl_FrontFacing ? -own : own;
    }
    vec3 face = cross(dFdx(worldPosition), dFdy(worldPosition));
    face = dot(face, face) > 0.0 ? normalize(face) : towardsEye;
    return dot(face, towardsEye) < 0.0 ? -face : face;
}

float shownOpacity(float alpha)
{
#if HAS_TEXTURES
    if (!hasTexture[4]) {
        return opacity * alpha;
    }
    vec4 image = texture(textures[4], vertexTexcoord);
    float share = opacityFactor * (isOpacityByColor ? dot(image.rgb, vec3(0.212671, 0.715160, 0.072169)) : image.a);
    return opacity * alpha * (isOpacityInverted ? 1.0 - share : share);
#else
    return opacity * alpha;
#endif
}

float cone(float cosine, float inner, float outer, float exponent)
{
    float edge = inner > outer ? clamp((cosine - outer) / (inner - outer), 0.0, 1.0) : step(inner, cosine);
    return exponent > 0.0 ? edge * pow(max(cosine, 0.0), exponent) : edge;
}

void main()
{
    if (isFlat) {
        result = vec4(0.05, 0.06, 0.08, 1.0);
        return;
    }
    vec4 image = SHOWN(2, vec4(colors[2], 1.0));
    float alpha = shownOpacity(image.a);
    if (alpha <= 0.0) {
        discard;
    }
    vec3 emission = SHOWN(0, vec4(colors[0], 1.0)).rgb;
    vec3 ambient = SHOWN(1, vec4(colors[1], 1.0)).rgb;
    vec3 diffuse = hasColor ? image.rgb * vertexColor : image.rgb;
    vec3 specular = SHOWN(3, vec4(colors[3], 1.0)).rgb;
    ambient = isAmbientDiffuse ? diffuse : ambient;

    vec3 towardsEye = normalize(eye.xyz - eye.w * worldPosition);
    vec3 normal = shownNormal(towardsEye);
    vec3 sum = emission + ambient * ambientLight;
    for (int i = 0; i < lightCount; ++i) {
        vec4 place = texelFetch(lights, 4 * i);
        vec4 color = texelFetch(lights, 4 * i + 1);
        vec4 attenuation = texelFetch(lights, 4 * i + 2);
        vec4 direction = texelFetch(lights, 4 * i + 3);
        int kind = int(place.w);
        vec3 way = place.xyz - worldPosition;
        float far = length(way);
        vec3 towardsLight = kind == directionalLight ? -direction.xyz : far > 0.0 ? way / far : normal;
        float facing = dot(normal, towardsLight);
        // Lights of the document light one side. The head light lights both.
        vec3 lit = kind == headLight && facing < 0.0 ? -normal : normal;
        facing = kind == headLight ? abs(facing) : facing;
        if (facing <= 0.0) {
            continue;
        }
        vec3 light = color.rgb;
        if (kind != directionalLight) {
            light /= max(dot(attenuation.xyz, vec3(1.0, far, far * far)), 1e-6);
        }
        if (kind == spotLight) {
            light *= cone(dot(-towardsLight, direction.xyz), color.w, attenuation.w, direction.w);
        }
        sum += diffuse * light * facing;
        if (shininess > 0.0) {
            float lobe = dot(reflect(-towardsLight, lit), towardsEye);
            sum += specular * light * pow(max(lobe, 0.0), shininess);
        }
    }
    result = vec4(clamp(sum, 0.0, 1.0), clamp(alpha, 0.0, 1.0));
}
)";

/// The fragment shader. The one without textures samples none, because a software driver would evaluate all of them at
/// every pixel.
inline std::string fragment(bool hasTextures)
{
    return std::string("#version 330 core\n#define HAS_TEXTURES ") + (hasTextures ? "1" : "0") + fragmentBody;
}

} // namespace scenetool::sceneShaders
