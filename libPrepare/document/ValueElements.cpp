#include "ValueElements.h"

#include <unordered_map>

namespace libPrepare {

ElementTraits traitsOf(std::string_view name)
{
    struct Hash { // there are few names, and each element is looked up
        std::size_t operator()(std::string_view text) const
        {
            if (text.empty()) {
                return 0;
            }
            const std::size_t first = static_cast<unsigned char>(text.front());
            const std::size_t last = static_cast<unsigned char>(text.back());
            return text.size() + 32 * first + 8192 * last;
        }
    };
    static const std::unordered_map<std::string_view, ElementTraits, Hash> traits = {
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
    const auto found = name.empty() ? traits.end() : traits.find(name);
    return found == traits.end() ? ElementTraits() : found->second;
}

} // namespace libPrepare
