#pragma once

#include <libPrepare/document/Transforms.h>

#include <optional>

namespace libPrepare {

class Document;

/// The coordinate system of an `<asset>`.
struct Frame {
    char up = 'Y';    ///< `X`, `Y` or `Z`.
    double meter = 1; ///< Meters in a unit.

    /// Reads an asset. Values that it does not give are those of another frame.
    static Frame read(pugi::xml_node asset, const Frame& otherwise);
    /// Writes both into an asset, where they differ from what it says.
    void write(pugi::xml_node asset) const;
    /// Converts coordinates of another frame to this one.
    Matrix4 from(const Frame& other) const;
};

} // namespace libPrepare
