#pragma once

#include "gltf/ConversionNotes.h"

#include <libPrepare/Prepare.h>

#include <cstdint>
#include <string>

namespace scenetool {

/// How documents are converted.
struct ConversionSettings {
    bool isAsLoaded = false;                           ///< Without libPrepare.
    bool isCompressed = false;                         ///< By EXT_meshopt_compression.
    double tolerance = 1e-4;                           ///< Of animations, relative to their size.
    std::uint64_t mostBytes = std::uint64_t(1) << 30U; ///< Of the result's data.
    libPrepare::Options prepare;                       ///< For libPrepare.
};

/// What became of one document.
struct ConversionResult {
    std::string failure; ///< Why there is no result, in one line; empty if there is one.
    libPrepare::Report prepared;
    ConversionNotes notes;
};

/// What glTF asks of a document: Y up, meters, and normals.
libPrepare::Options preparationForGltf();

/// Whether a file name says which form of glTF is wanted: it ends in .glb or .gltf.
bool namesGltf(const std::string& path);

/// Writes a document as glTF: one binary file, or JSON with its data beside it, by the ending of `out`. The result appears
/// under its name when it is whole.
ConversionResult convertDocument(const std::string& in, const std::string& out, const ConversionSettings& settings);

/// Converts a document with default settings and writes nothing, for the notes.
ConversionResult tryConversion(const std::string& in);

} // namespace scenetool
