#include "PageCommand.h"

#include "common/Base64.h"
#include "common/Failure.h"
#include "common/TemporaryFolder.h"
#include "gltf/GltfDocument.h"
#include "page/PageViewer.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace scenetool {

namespace {

// Escapes text for use between tags.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

} // namespace

PageCommand::PageCommand(CommandLine& line)
    : m_command(line.addCommand("page", "Writes one HTML file with the model and a viewer in it."))
{
    m_settings.prepare = preparationForGltf();
    m_command.add("IN", m_in, "The document").require();
    m_command.add("-o,--output", m_out, "The page, which any browser can open offline").require();
    m_command.add("--title", m_title, "The title of the page (default: the name of the document)");
    m_command.addFlag("--as-loaded", m_settings.isAsLoaded,
                      "Show what the library delivers of the unprepared document");
}

int PageCommand::run() const
{
    const TemporaryFolder folder;
    const std::string model = (folder.path() / "model.glb").string();
    const ConversionResult converted = convertDocument(m_in, model, m_settings);
    if (!converted.failure.empty()) {
        return fail(m_in, converted.failure);
    }
    std::ifstream in(model, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::string title = m_title.empty() ? std::filesystem::path(m_in).stem().string() : m_title;
    const std::string head =
        "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
        escaped(title) +
        "</title>\n<style>body { margin: 0; overflow: hidden; background: #9fb8cc; font-family: sans-serif } "
        "canvas { display: block } #message { padding: 1em }</style>\n</head>\n<body>\n"
        "<div id=\"message\">Loading the model ...</div>\n"
        "<script type=\"text/plain\" id=\"model\">" +
        base64(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) + "</script>\n<script>\n";
    const std::string tail = "\n</script>\n</body>\n</html>\n";
    const std::string_view viewer = pageViewer();
    try {
        writeWholeFile(m_out, {{head.data(), head.size()}, {viewer.data(), viewer.size()}, {tail.data(), tail.size()}});
    } catch (const GltfError& error) {
        return fail(m_out, error.what());
    }
    return EXIT_SUCCESS;
}

} // namespace scenetool
