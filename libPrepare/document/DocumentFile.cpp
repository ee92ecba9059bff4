#include "DocumentFile.h"

#include "FormCheck.h"
#include "OutputFile.h"
#include "PlainForm.h"
#include "TreeWriter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string_view>

namespace libPrepare {

namespace {

using namespace std::string_view_literals;

// Formats that people pass by mistake.
std::optional<Refusal> refuseOtherFormats(std::string_view text)
{
    struct Format {
        std::string_view start;
        const char* reason;
        const char* remedy;
    };
    static constexpr std::array formats = {
        Format{"PK\x03\x04"sv, "is a zip archive", "unpack it and give the document in it"},
        Format{"\x89PNG"sv, "is a PNG picture", "give a COLLADA document"},
        Format{"\xFF\xD8\xFF"sv, "is a JPEG picture", "give a COLLADA document"},
        Format{"glTF"sv, "is a binary glTF document", "give a COLLADA document"},
        Format{"Kaydara FBX Binary"sv, "is an FBX document", "give a COLLADA document"},
        Format{"BLENDER"sv, "is a Blender document", "export it as COLLADA"},
    };
    if (text.empty()) {
        return Refusal{"empty", "is empty", "give a COLLADA document", 0, 0};
    }
    for (const Format& format : formats) {
        if (text.substr(0, format.start.size()) == format.start) {
            return Refusal{"other-format", format.reason, format.remedy, 0, 0};
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<Refusal> DocumentFile::read(const std::filesystem::path& file, std::uint64_t most)
{
    std::optional<Refusal> refusal = m_input.open(file);
    if (!refusal) {
        refusal = m_input.read(most, m_text);
    }
    if (!refusal) {
        refusal = refuseOtherFormats(m_text);
    }
    if (!refusal) {
        refusal = decode(m_text, most, m_encoding);
    }
    if (refusal) {
        return refusal;
    }
    m_isPlain = isPlainlyFormed(m_text);
    if (!m_isPlain) {
        refusal = checkForm(m_text);
    }
    if (refusal) {
        return refusal;
    }
    m_lines = Lines(m_text);
    const pugi::xml_parse_result parsed = m_xml.load_buffer_inplace(
        m_text.data(), m_text.size(), pugi::parse_full | pugi::parse_ws_pcdata, pugi::encoding_utf8);
    if (parsed.status == pugi::status_out_of_memory) {
        throw std::bad_alloc();
    }
    if (!parsed) {
        const auto [line, column] = m_lines.at(static_cast<std::size_t>(std::max<std::ptrdiff_t>(parsed.offset, 0)));
        return Refusal{"malformed", std::string("not well-formed: ") + parsed.description(),
                       "write it again, or mend it by hand", line, column};
    }
    const auto isDocumentType = [](pugi::xml_node node) { return node.type() == pugi::node_doctype; };
    m_hadDocumentType = m_xml.remove_child(m_xml.find_child(isDocumentType));
    return std::nullopt;
}

std::optional<Refusal> DocumentFile::write(const std::filesystem::path& file, bool isChanged)
{
    OutputFile output;
    if (std::optional<Refusal> refusal = output.open(file)) {
        return refusal;
    }
    if (isChanged) {
        const pugi::xml_node declaration = m_xml.first_child();
        if (declaration.type() == pugi::node_declaration) {
            if (pugi::xml_attribute encoding = declaration.attribute("encoding")) {
                const bool isUtf8 = ::strcasecmp(encoding.value(), "UTF-8") == 0;
                encoding.set_value(isUtf8 ? encoding.value() : "UTF-8");
            }
        }
        writeTree(m_xml, output);
    } else if (!m_input.copyTo(output)) {
        return Refusal{"unreadable", "cannot be read any more", "give a file that may be read", 0, 0};
    }
    return output.commit();
}

} // namespace libPrepare
