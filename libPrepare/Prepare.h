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

/// Rewrites COLLADA documents so that they say the same with the elements that `libVideo` reads.
namespace libPrepare {

/// The axis that points up in the result.
enum class UpAxis {
    keep, ///< The axis of the document.
    y,    ///< Y points up.
    z,    ///< Z points up.
};

/// Options of `prepare`. The defaults keep everything that the document says.
struct Options {
    /// Time in seconds for the pose of skins and morphs, and for the values of animated materials and lights; the
    /// declared values are used if absent.
    std::optional<double> time;
    /// The axis that points up in the result.
    UpAxis upAxis = UpAxis::keep;
    /// Meters per unit of the result; the document's own unit if absent.
    std::optional<double> unit;
    /// Aspect ratio, width over height, for cameras without both angles of view. If absent, the camera's own
    /// `<aspect_ratio>` is used, or 1 without it.
    std::optional<double> aspect;
    /// Crease angle in degrees for computing missing normals. If absent, none are computed.
    std::optional<double> normals;
    /// Samples per second at which a curve that cannot be written exactly is compared with its replacement.
    double sampleRate = 60.0;
    /// Largest error of a resampled curve: in degrees for angles, otherwise relative to the size of the values.
    double tolerance = 1e-4;
    /// If false, everything that can only be approximated is left out (directional and ambient lights, orthographic
    /// cameras).
    bool approximations = true;
    /// Largest size of the result in bytes. Instances of instances can multiply a document.
    std::uint64_t maxSize = std::uint64_t(1) << 30;
};

/// A place in the document that was read.
struct Place {
    unsigned line = 0;   ///< From 1; 0 if unknown.
    unsigned column = 0; ///< From 1, in bytes; 0 if unknown.
    std::string path;    ///< For example, `COLLADA/library_geometries/geometry[\@id='a']/mesh/polylist[2]`.
};

/// What happened to a part of the document.
enum class Outcome {
    rewritten,    ///< It says the same with other elements.
    approximated, ///< It says nearly the same; an `Approximation` has the numbers.
    lost,         ///< The result cannot express it, or it names something that does not exist.
    refused,      ///< The document cannot be read.
};

/// One entry of a report.
struct Finding {
    Outcome outcome = Outcome::rewritten; ///< What happened.
    std::string kind;   ///< A fixed word for each kind of finding, such as `polylist`; reports group by it.
    std::string text;   ///< One sentence for people.
    std::string remedy; ///< What a person can do about it, or what was done about it.
    Place place;        ///< Where it is in the document that was read.
};

/// An approximation, with the numbers to undo it.
struct Approximation {
    /// What it was in the document.
    enum class Kind {
        directionalLight,   ///< In the result, a point light far away.
        ambientLight,       ///< In the result, a part of the emission of all materials.
        orthographicCamera, ///< In the result, a perspective camera far away.
    };
    Kind kind = Kind::directionalLight; ///< What it was.
    std::string id;     ///< Id of the `<light>` or `<camera>` in the result (an ambient light's in the source).
    std::string nodeId; ///< Id of the node in the result that shows it; empty if none does.
    double color[3] = {0, 0, 0}; ///< Color of a light.
    double xmag = 0;             ///< Half width of an orthographic camera, in units of the document.
    double ymag = 0;             ///< Half height.
    double znear = 0;            ///< As in the document.
    double zfar = 0;             ///< As in the document.
};

/// An opacity texture, which the materials of `libVideo` cannot express: there the face is opaque. Let the share be
/// `factor` times the alpha or the luminance of the texture. The opacity is the share, or 1 minus the share if
/// `isInverted`.
struct OpacityTexture {
    std::string symbol;      ///< Material symbol of its triangles in the result.
    std::string image;       ///< Id of the `<image>` in the result.
    std::string file;        ///< Its `<init_from>` in the result.
    std::string wrapS;       ///< `<wrap_s>` of its sampler, such as `MIRROR`; empty if not given.
    std::string wrapT;       ///< `<wrap_t>`.
    bool isByColor = false;  ///< Uses the luminance (`RGB_ZERO`, `RGB_ONE`) instead of the alpha.
    bool isInverted = false; ///< The share is the transparency (`RGB_ZERO`, `A_ZERO`).
    double factor = 1;       ///< `<transparency>`.
};

/// The result of `prepare` or `inspect`.
struct Report {
    /// False if nothing could be read or written; the last finding says why.
    bool done = false;
    /// True if the result differs from what was read.
    bool changed = false;
    /// In the order of the passes. They run again, several times at most, over a document of which something is lost;
    /// what they report again is not added.
    std::vector<Finding> findings;
    /// In the order of the passes, too.
    std::vector<Approximation> approximations;
    /// One for each symbol in the result with such a material.
    std::vector<OpacityTexture> opacityTextures;
    /// Ids in the result of the geometries whose normals were computed because of `Options::normals`. The document does
    /// not say which side of their triangles is the outer one.
    std::vector<std::string> madeNormals;

    /// The first finding with this outcome, or null.
    LIBPREPARE_API const Finding* first(Outcome outcome) const;
};

/// Reads a document and writes one that `libVideo` delivers whole. Copies it byte for byte if nothing needs changing.
/// Does not throw because of the document's content, or if files cannot be read or written: see `Report::done`.
/// @param in COLLADA 1.4.0, 1.4.1 or 1.5, in any encoding that its XML declaration names, plain or gzip
/// @param out written whole or not at all; may be the same file
/// @throws std::bad_alloc
LIBPREPARE_API Report prepare(const std::filesystem::path& in, const std::filesystem::path& out,
                              const Options& options = {});

/// Prepares a document in memory. It must have been parsed with `pugi::parse_full | pugi::parse_ws_pcdata`.
/// @param file path of the document before and after: images and other documents are searched beside it
/// @throws std::bad_alloc
LIBPREPARE_API Report prepare(pugi::xml_document& document, const std::filesystem::path& file,
                              const Options& options = {});

/// Reports why `libVideo` refuses a document, or what it ignores, without writing anything. `Outcome::lost` marks what
/// a host does not get from the unprepared document.
/// @throws std::bad_alloc
LIBPREPARE_API Report inspect(const std::filesystem::path& file);

} // namespace libPrepare
