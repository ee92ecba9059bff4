#pragma once // SPDX-License-Identifier: MIT

namespace libVideo {

/// What a component, or the record of a whole source, is made of. The numbers are part of the interface.
enum DataType : unsigned {
    DATA_TYPE_FLOAT = 1,    ///< a `<param>` of type "float"; a source of stride 1
    DATA_TYPE_FLOAT2 = 2,   ///< a source of stride 2
    DATA_TYPE_FLOAT3 = 3,   ///< a source of stride 3
    DATA_TYPE_FLOAT4 = 4,   ///< a source of stride 4
    DATA_TYPE_FLOAT4X4 = 8, ///< a `<param>` of type "float4x4"; a source of stride 16
    DATA_TYPE_INVALID = 9   ///< none
};

} // namespace libVideo
