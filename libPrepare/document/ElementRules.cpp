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
    {"IDREF_array", {true, false}},
    {"Name_array", {true, false}},
    {"aspect_ratio", {true, true}},
    {"bind_shape_matrix", {true, true}},
    {"bool_array", {true, false}},
    {"color", {true, true}},
    {"constant_attenuation", {true, true}},
    {"falloff_angle", {true, true}},
    {"falloff_exponent", {true, true}},
    {"float", {true, true}},
    {"float2", {false, true}},
    {"float2x2", {false, true}},
    {"float3", {false, true}},
    {"float3x3", {false, true}},
    {"float4", {false, true}},
    {"float4x4", {false, true}},
    {"float_array", {true, true}},
    {"input", {true, false}},
    {"int_array", {true, false}},
    {"linear_attenuation", {true, true}},
    {"lookat", {true, true}},
    {"matrix", {true, true}},
    {"p", {true, false}},
    {"param", {true, false}},
    {"quadratic_attenuation", {true, true}},
    {"rotate", {true, true}},
    {"scale", {true, true}},
    {"skeleton", {true, false}},
    {"skew", {true, true}},
    {"translate", {true, true}},
    {"v", {true, false}},
    {"vcount", {true, false}},
    {"xfov", {true, true}},
    {"xmag", {true, true}},
    {"yfov", {true, true}},
    {"ymag", {true, true}},
    {"zfar", {true, true}},
    {"znear", {true, true}},
};

constexpr std::size_t placeCount = 128;

// A perfect hash of the names above, because each element of a document is looked up.
constexpr std::size_t placeOf(std::string_view name)
{
    const std::size_t first = static_cast<unsigned char>(name.front());
    const std::size_t last = static_cast<unsigned char>(name.back());
    return (first + 15 * last + 13 * name.size()) % placeCount;
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

bool canHold(pugi::xml_node holder, const char* child)
{
    const char* const parent = holder.name();
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
