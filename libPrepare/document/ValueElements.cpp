#include "ValueElements.h"

#include <unordered_set>

namespace libPrepare {

bool holdsOnlyValue(std::string_view name)
{
    static const std::unordered_set<std::string_view> names = {"IDREF_array",
                                                               "Name_array",
                                                               "aspect_ratio",
                                                               "bind_shape_matrix",
                                                               "bool_array",
                                                               "color",
                                                               "constant_attenuation",
                                                               "falloff_angle",
                                                               "falloff_exponent",
                                                               "float",
                                                               "float_array",
                                                               "input",
                                                               "int_array",
                                                               "linear_attenuation",
                                                               "lookat",
                                                               "matrix",
                                                               "p",
                                                               "param",
                                                               "quadratic_attenuation",
                                                               "rotate",
                                                               "scale",
                                                               "skeleton",
                                                               "skew",
                                                               "translate",
                                                               "v",
                                                               "vcount",
                                                               "xfov",
                                                               "xmag",
                                                               "yfov",
                                                               "ymag",
                                                               "zfar",
                                                               "znear"};
    return names.count(name) != 0;
}

} // namespace libPrepare
