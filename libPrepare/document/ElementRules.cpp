#include "ElementRules.h"

#include "Names.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace libPrepare {

namespace {

struct Row {
    std::string_view name;
    ElementTraits traits;
};

constexpr Row rows[] = {
    {"COLLADA", {false, false, true}},
    {"IDREF_array", {true, false, false}},
    {"Name_array", {true, false, false}},
    {"animation", {false, false, true}},
    {"aspect_ratio", {true, true, false}},
    {"bind_shape_matrix", {true, true, false}},
    {"bool_array", {true, false, false}},
    {"camera", {false, false, true}},
    {"color", {true, true, false}},
    {"constant_attenuation", {true, true, false}},
    {"controller", {false, false, true}},
    {"effect", {false, false, true}},
    {"falloff_angle", {true, true, false}},
    {"falloff_exponent", {true, true, false}},
    {"float", {true, true, false}},
    {"float2", {false, true, false}},
    {"float2x2", {false, true, false}},
    {"float3", {false, true, false}},
    {"float3x3", {false, true, false}},
    {"float4", {false, true, false}},
    {"float4x4", {false, true, false}},
    {"float_array", {true, true, false}},
    {"geometry", {false, false, true}},
    {"image", {false, false, true}},
    {"input", {true, false, false}},
    {"int_array", {true, false, false}},
    {"light", {false, false, true}},
    {"linear_attenuation", {true, true, false}},
    {"lookat", {true, true, false}},
    {"material", {false, false, true}},
    {"matrix", {true, true, false}},
    {"node", {false, false, true}},
    {"p", {true, false, false}},
    {"param", {true, false, false}},
    {"quadratic_attenuation", {true, true, false}},
    {"rotate", {true, true, false}},
    {"sampler", {false, false, true}},
    {"scale", {true, true, false}},
    {"skeleton", {true, false, false}},
    {"skew", {true, true, false}},
    {"source", {false, false, true}},
    {"translate", {true, true, false}},
    {"v", {true, false, false}},
    {"vcount", {true, false, false}},
    {"vertices", {false, false, true}},
    {"visual_scene", {false, false, true}},
    {"xfov", {true, true, false}},
    {"xmag", {true, true, false}},
    {"yfov", {true, true, false}},
    {"ymag", {true, true, false}},
    {"zfar", {true, true, false}},
    {"znear", {true, true, false}},
};

constexpr std::size_t placeCount = 256;

// A perfect hash of the names above, because each element of a document is looked up.
constexpr std::size_t placeOf(std::string_view name)
{
    const std::size_t first = static_cast<unsigned char>(name.front());
    const std::size_t last = static_cast<unsigned char>(name.back());
    return (first + 4 * last + 86 * name.size()) % placeCount;
}

constexpr std::uint8_t noRow = 0xFF;

constexpr std::array<std::uint8_t, placeCount> rowsByPlace()
{
    std::array<std::uint8_t, placeCount> result{};
    for (std::uint8_t& each : result) {
        each = noRow;
    }
    std::uint8_t number = 0;
    for (const Row& row : rows) {
        result[placeOf(row.name)] = number++;
    }
    return result;
}

constexpr bool isEachAtItsPlace()
{
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        if (rowsByPlace()[placeOf(rows[i].name)] != i) {
            return false;
        }
    }
    return true;
}

static_assert(isEachAtItsPlace(), "two names have one place: placeOf needs other factors");

using Names = std::initializer_list<const char*>;

bool isOneOf(const char* name, Names names)
{
    return std::any_of(names.begin(), names.end(), [&](const char* each) { return areEqual(each, name); });
}

bool beginsWith(const char* name, std::string_view start)
{
    return std::strncmp(name, start.data(), start.size()) == 0;
}

bool canHoldDefinition(pugi::xml_node holder, const char* child)
{
    const char* const parent = holder.name();
    const bool isFree = areEqual(parent, "technique") && holder.attribute("profile");
    if (isFree || areEqual(child, "COLLADA")) {
        return isFree;
    }
    if (beginsWith(child, "library_") || areEqual(parent, "COLLADA")) {
        return areEqual(parent, "COLLADA");
    }
    if (beginsWith(parent, "library_")) {
        return true;
    }
    if (areEqual(child, "source")) { // sampler2D and the like have the name of a surface in theirs
        return beginsWith(parent, "sampler") || isOneOf(parent, {"mesh", "animation", "skin", "morph", "spline",
                                                                 "convex_mesh", "brep", "nurbs", "nurbs_surface"});
    }
    if (areEqual(child, "node")) {
        return isOneOf(parent, {"node", "visual_scene"});
    }
    if (areEqual(child, "image")) {
        return beginsWith(parent, "profile_") || isOneOf(parent, {"effect", "technique", "pass"});
    }
    if (areEqual(child, "vertices")) {
        return isOneOf(parent, {"mesh", "convex_mesh", "brep"});
    }
    return areEqual(parent, "animation") && isOneOf(child, {"animation", "sampler"});
}

} // namespace

ElementTraits traitsOf(std::string_view name)
{
    static constexpr std::array<std::uint8_t, placeCount> numbers = rowsByPlace();
    if (name.empty()) {
        return {};
    }
    const std::uint8_t number = numbers[placeOf(name)];
    return number != noRow && rows[number].name == name ? rows[number].traits : ElementTraits();
}

bool canHold(pugi::xml_node holder, const char* child, ElementTraits traitsOfChild)
{
    const char* const parent = holder.name();
    const bool isLibrary = *child == 'l' && beginsWith(child, "library_");
    if ((traitsOfChild.isDefinition || isLibrary) && !canHoldDefinition(holder, child)) {
        return false;
    }
    static constexpr Names instances = {"instance_geometry", "instance_controller", "instance_camera", "instance_light",
                                        "instance_node"};
    static constexpr Names channels = {
        "emission",   "ambient",      "diffuse",     "specular",     "shininess",
        "reflective", "reflectivity", "transparent", "transparency", "index_of_refraction"};
    static constexpr Names primitives = {"triangles", "polylist",   "polygons", "tristrips",
                                         "trifans",   "linestrips", "lines",    "vertices"};
    if (std::strchr("abdelprstiv", *parent) == nullptr) {
        return true; // most elements are not among these
    }
    if (isOneOf(parent, instances)) {
        return isOneOf(child, {"bind_material", "skeleton", "extra"});
    }
    if (is(holder, "bind_material")) {
        return isOneOf(child, {"param", "technique_common", "technique", "extra"});
    }
    if (is(holder, "technique_common") && is(holder.parent(), "bind_material")) {
        return std::strcmp(child, "instance_material") == 0;
    }
    if (isOneOf(parent, channels)) {
        return isOneOf(child, {"color", "param", "texture", "float", "extra"});
    }
    return !isOneOf(parent, primitives) || isOneOf(child, {"input", "p", "ph", "vcount", "extra"});
}

bool isForeign(const char* name)
{
    return areEqual(name, "extra") ||
           (*name == 'p' && std::strncmp(name, "profile_", 8) == 0 && std::strcmp(name, "profile_COMMON") != 0);
}

} // namespace libPrepare
