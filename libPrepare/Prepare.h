#pragma once // SPDX-License-Identifier: MIT

#include <libPrepare/Export.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace pugi {
class xml_document;
}

/// Rewrites COLLADA documents so that they say the same in the words that `libVideo` reads.
namespace libPrepare {

/// The axis that points up in the result.
enum class UpAxis {
    keep, ///< The one that the document has.
    y,    ///< Y points up.
    z,    ///< Z points up.
};

/// What `prepare` may be told. The defaults keep everything that the document says.
struct Options {
    /// Time in seconds at which skins and morphs take their pose, and animated materials and lights their values; the
    /// declared values if absent.
    std::optional<double> time;
    /// The axis that points up in the result.
    UpAxis upAxis = UpAxis::keep;
    /// Meters per unit of the result; the document's own unit if absent.
    std::optional<double> unit;
    /// Width over height of the picture that cameras without a whole field of view are completed for; the camera's own
    /// `<aspect_ratio>` if absent, else 1.
    std::optional<double> aspect;
    /// Crease angle in degrees for meshes without normals, which stay without them if this is absent.
    std::optional<double> normals;
    /// Samples a second at which a curve that cannot be written exactly is compared with what is written.
    double sampleRate = 60.0;
    /// Largest error of a resampled curve: degrees for angles, else relative to the size of the values.
    double tolerance = 1e-4;
    /// False leaves out what can only be approximated (directional and ambient lights, orthographic cameras).
    bool approximations = true;
    /// Bytes that the result may reach at most, since instances of instances multiply a document.
    std::uint64_t maxSize = std::uint64_t(1) << 30;
};

/// Where something is in the document that was read.
struct Place {
    unsigned line = 0;   ///< From 1; 0 if unknown.
    unsigned column = 0; ///< From 1, in bytes; 0 if unknown.
    std::string path;    ///< Such as `COLLADA/library_geometries/geometry[\@id='a']/mesh/polylist[2]`.
};

/// What became of a piece of the document.
enum class Outcome {
    rewritten,    ///< Says the same in other words.
    approximated, ///< Says nearly the same; there is an `Approximation` with the numbers.
    lost,         ///< Has no expression in the result, or names something that is not there.
    refused,      ///< Nothing can be read.
};

/// One entry of a report.
struct Finding {
    Outcome outcome = Outcome::rewritten; ///< What became of the piece.
    std::string kind;   ///< A fixed word for each kind of finding, such as `polylist`; reports group by it.
    std::string text;   ///< One sentence for people.
    std::string remedy; ///< What a person can do about it, or what was done.
    Place place;        ///< Where it was in the document that was read.
};

/// What was approximated, with the numbers to undo it.
struct Approximation {
    /// What something was in the document.
    enum class Kind {
        directionalLight,   ///< A point light far away in the result.
        ambientLight,       ///< A part of the emission of all materials in the result.
        orthographicCamera, ///< A perspective camera far away in the result.
    };
    Kind kind = Kind::directionalLight; ///< What it was.
    std::string id;     ///< Id of the `<light>` or `<camera>` in the result (an ambient light's in the source).
    std::string nodeId; ///< Id of the node in the result that shows it; empty if none does.
    double color[3] = {0, 0, 0}; ///< Of a light.
    double xmag = 0;             ///< Half width of an orthographic camera, in units of the document.
    double ymag = 0;             ///< Half height.
    double znear = 0;            ///< As the document says.
    double zfar = 0;             ///< As the document says.
};

/// A texture that says how much light passes a face, for which no material of `libVideo` has a place: there the face is
/// opaque. The opacity is the share, or what is missing of it to 1, where the share is `factor` times the alpha or the
/// luminance of the texture.
struct OpacityTexture {
    std::string symbol;      ///< The material symbol in the result of the triangles that it is for.
    std::string image;       ///< Id of the `<image>` in the result.
    std::string file;        ///< Its `<init_from>` in the result.
    std::string wrapS;       ///< `<wrap_s>` of its sampler, such as `MIRROR`; empty if that says nothing.
    std::string wrapT;       ///< `<wrap_t>`.
    bool isByColor = false;  ///< By the luminance (`RGB_ZERO`, `RGB_ONE`) in place of the alpha.
    bool isInverted = false; ///< The share is what passes (`RGB_ZERO`, `A_ZERO`).
    double factor = 1;       ///< `<transparency>`.
};

/// What `prepare` or `inspect` found.
struct Report {
    /// False if nothing could be read or written; the last finding says why.
    bool done = false;
    /// True if the result differs from what was read.
    bool changed = false;
    /// In the order of the passes.
    std::vector<Finding> findings;
    /// In the order of the passes, too.
    std::vector<Approximation> approximations;
    /// One for each symbol in the result that shows such a material.
    std::vector<OpacityTexture> opacityTextures;
    /// Ids in the result of the geometries with triangles that `Options::normals` has given normals. The document does
    /// not say which side of these is the outer one.
    std::vector<std::string> madeNormals;

    /// The first finding with this outcome, or null.
    LIBPREPARE_API const Finding* first(Outcome outcome) const;
};

/// Reads a document and writes one that `libVideo` delivers whole. Copies it byte for byte if nothing needs changing.
/// @param in COLLADA 1.4.0, 1.4.1 or 1.5, in any encoding that its XML declaration names, plain or gzip
/// @param out written whole or not at all; may be the same file
/// Neither throws for what a document holds nor for files that cannot be read or written: see `Report::done`.
/// @throws std::bad_alloc
LIBPREPARE_API Report prepare(const std::filesystem::path& in, const std::filesystem::path& out,
                              const Options& options = {});

/// Prepares a document in memory. It must have been parsed with `pugi::parse_full | pugi::parse_ws_pcdata`.
/// @param file where it comes from and where it will be: images and other documents are looked for beside it
/// @throws std::bad_alloc
LIBPREPARE_API Report prepare(pugi::xml_document& document, const std::filesystem::path& file,
                              const Options& options = {});

/// Says without writing anything why `libVideo` refuses a document and what it passes over. `Outcome::lost` marks what
/// a host does not get from the document as it is.
/// @throws std::bad_alloc
LIBPREPARE_API Report inspect(const std::filesystem::path& file);

} // namespace libPrepare
