#include "DocumentConversion.h"

#include "common/DefaultCreaseAngle.h"
#include "common/LoadedScene.h"
#include "common/PreparedFile.h"
#include "gltf/GltfExport.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace scenetool {

namespace {

bool hasEnding(const std::string& path, const char* ending)
{
    return std::filesystem::path(path).extension() == ending;
}

// Prepares, loads and converts a document, and passes the glTF document to `use`.
ConversionResult convert(const std::string& in, const ConversionSettings& settings,
                         const std::function<void(GltfDocument&)>& use)
{
    ConversionResult result;
    std::unique_ptr<PreparedFile> prepared;
    if (!settings.isAsLoaded) {
        prepared = std::make_unique<PreparedFile>(in, settings.prepare);
        result.prepared = prepared->report();
        if (!prepared->isPrepared()) {
            const libPrepare::Finding* const why = result.prepared.first(libPrepare::Outcome::refused);
            result.failure = why != nullptr ? why->text : "cannot be prepared";
            return result;
        }
    }
    LoadedScene loaded(in, prepared ? prepared->path() : in);
    if (!loaded.isLoaded()) {
        result.failure = loaded.fault();
        return result;
    }
    GltfOptions options;
    options.documentFiles = prepared ? std::vector<std::string>{prepared->path(), in} : std::vector<std::string>{in};
    options.isPrepared = prepared != nullptr;
    options.tolerance = settings.tolerance;
    options.maxBytes = settings.maxBytes;
    options.approximations = result.prepared.approximations;
    try {
        GltfDocument document = gltfOf(loaded, options, result.notes);
        use(document);
    } catch (const GltfError& error) {
        result.failure = error.what();
    }
    return result;
}

} // namespace

libPrepare::Options preparationForGltf()
{
    libPrepare::Options options;
    options.upAxis = libPrepare::UpAxis::y;
    options.unit = 1.0;
    options.normals = defaultCreaseAngle;
    return options;
}

bool namesGltf(const std::string& path)
{
    return hasEnding(path, ".glb") || hasEnding(path, ".gltf");
}

ConversionResult convertDocument(const std::string& in, const std::string& out, const ConversionSettings& settings)
{
    return convert(in, settings, [&](GltfDocument& document) {
        if (settings.isCompressed) {
            document.compress();
        }
        if (hasEnding(out, ".glb")) {
            document.writeBinary(out);
        } else {
            document.writeText(out);
        }
    });
}

ConversionResult tryConversion(const std::string& in)
{
    ConversionSettings settings;
    settings.prepare = preparationForGltf();
    return convert(in, settings, [](GltfDocument& /*document*/) {});
}

} // namespace scenetool
