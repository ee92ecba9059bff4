#pragma once

#include <libVideo/SceneGraph/Accessor.h>

#include <vesk/Array.h>

#include <cstring>
#include <vector>

namespace testSupport {

/// A token of a component.
inline float floatIn(const libVideo::Data& data, unsigned token = 0)
{
    float value = 0.0f;
    std::memcpy(&value, data[token].get(), sizeof(value));
    return value;
}

/// All values of a list, component by component.
inline std::vector<float> floatsIn(const vesk::Array<libVideo::Data>& list)
{
    std::vector<float> values;
    for (const libVideo::Data& data : list) {
        for (unsigned token = 0; token < data.stride(); ++token) {
            values.push_back(floatIn(data, token));
        }
    }
    return values;
}

} // namespace testSupport
