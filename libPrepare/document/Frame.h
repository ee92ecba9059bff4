#pragma once

#include <libPrepare/document/Transforms.h>

#include <optional>

namespace libPrepare {

class Document;

/// What an `<asset>` says about coordinates.
struct Frame {
    char up = 'Y';    ///< `X`, `Y` or `Z`.
    double meter = 1; ///< Meters in a unit.

    /// What an asset says; what it leaves open is as in another frame.
    static Frame read(pugi::xml_node asset, const Frame& otherwise);
    /// Writes both into an asset, where they differ from what it says.
    void write(pugi::xml_node asset) const;
    /// Takes coordinates of another frame into this one.
    Matrix4 from(const Frame& other) const;
};

} // namespace libPrepare
