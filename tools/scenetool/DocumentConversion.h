#pragma once

#include "gltf/ConversionNotes.h"

#include <libPrepare/Prepare.h>

#include <cstdint>
#include <string>

namespace scenetool {

/// How documents are converted.
struct ConversionSettings {
    bool isAsLoaded = false;                          ///< Does not prepare the document first.
    bool isCompressed = false;                        ///< Uses EXT_meshopt_compression.
    double tolerance = 1e-4;                          ///< Largest error of an animation, relative to its size.
    std::uint64_t maxBytes = std::uint64_t(1) << 30U; ///< Maximum size of the result's binary data.
    libPrepare::Options prepare;                      ///< How the document is prepared.
};

/// Result of converting one document.
struct ConversionResult {
    std::string failure; ///< Why the conversion failed, in one line; empty on success.
    libPrepare::Report prepared;
    ConversionNotes notes;
};

/// Prepares a document as glTF needs it: Y up, in meters, and with normals.
libPrepare::Options preparationForGltf();

/// Whether a file name ends in .glb or .gltf.
bool namesGltf(const std::string& path);

/// Converts a document to glTF: to one binary file, or to JSON with a file of binary data, depending on the extension
/// of `out`. An incomplete result never appears under its name.
ConversionResult convertDocument(const std::string& in, const std::string& out, const ConversionSettings& settings);

/// Converts a document with default settings for its notes, without writing a file.
ConversionResult tryConversion(const std::string& in);

} // namespace scenetool
