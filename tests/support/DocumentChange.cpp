#include "DocumentChange.h"

#include "Texts.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <sstream>

namespace testSupport {

namespace {

const std::vector<std::string> numbers =
    texts("", "0", "-1", "1", "2", "3", "0.5", "-0", "7", "16", "65536", "1048577", "2147483647", "2147483648",
          "4294967295", "4294967296",
          "1431655766", // three times this is 2 modulo 2^32
          "18446744073709551615", "18446744073709551616", "-9223372036854775809", "1e38", "1e400", "-1e400", "1e-400",
          "NaN", "INF", "-INF", "0x10", "1,5", "x", "1 2", "--1");

const std::vector<std::string> references =
    texts("", "#", "#no-such-id", "##", "#a b", "#%41", "%", ".", "no-hash", "#N\xC5\x93ud", "neighbour.dae",
          "neighbour.dae#scene", "neighbour.dae#no-such-id", "no-such-file.dae#id", "values.raw", "values.raw#id",
          "/dev/null#id", "file:///dev/null#id", "../../no-such-folder/a.dae#id", "http://127.0.0.1:9/a.dae#id",
          "a\\b[1].dae#id", "#a/b(0)(1).X");

const std::vector<std::string> words =
    texts("", " ", "float", "float4x4", "Name", "POSITION", "VERTEX", "NORMAL", "INPUT", "OUTPUT", "INTERPOLATION",
          "IN_TANGENT", "OUT_TANGENT", "BEZIER", "STEP", "HERMITE", "FCOLLADA", "two words", "a/b.c(1)",
          "\xC3\xA9\xE2\x82\xAC", "&<>\"'", std::string(300, 'a'));

const std::vector<std::string> elementNames = texts(
    "COLLADA", "accessor", "ambient", "animation", "any", "asset", "aspect_ratio", "bind_material", "blinn", "camera",
    "channel", "color", "diffuse", "directional", "effect", "emission", "extra", "falloff_angle", "falloff_exponent",
    "float", "float_array", "geometry", "image", "init_from", "input", "instance_camera", "instance_effect",
    "instance_geometry", "instance_light", "instance_material", "instance_node", "instance_visual_scene", "int_array",
    "lambert", "library_animations", "library_cameras", "library_effects", "library_geometries", "library_images",
    "library_lights", "library_materials", "library_visual_scenes", "light", "lines", "lookat", "material", "matrix",
    "mesh", "Name_array", "newparam", "node", "optics", "orthographic", "outer_cone", "p", "param", "perspective",
    "phong", "point", "polygons", "polylist", "profile_COMMON", "reflective", "rotate", "sampler", "sampler2D", "scale",
    "scene", "shininess", "skew", "source", "specular", "spline", "spot", "surface", "target", "technique",
    "technique_common", "texture", "translate", "transparency", "triangles", "vertices", "visual_scene", "xfov", "yfov",
    "zfar", "znear", "unknown");

const std::vector<std::string> attributeNames =
    texts("id", "sid", "name", "url", "source", "target", "count", "offset", "stride", "set", "symbol", "texture",
          "type", "semantic", "profile", "material", "version", "xmlns", "texcoord");

// One character longer than the longest tag that the document model can hold.
const std::string longName(128, 'n');

constexpr std::size_t mostTokens = 10;
constexpr std::size_t mostIds = 3;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isNumber(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0 || std::strchr("+-.eE", c) != nullptr;
    });
}

std::vector<std::string> tokensOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> tokens;
    for (std::string token; stream >> token;) {
        tokens.push_back(token);
    }
    return tokens;
}

std::string joined(const std::vector<std::string>& tokens)
{
    std::string text;
    for (const std::string& token : tokens) {
        text += (text.empty() ? "" : " ") + token;
    }
    return text;
}

// The element after `node` in document order, found without recursion; a null node after the last.
pugi::xml_node following(const pugi::xml_node& node, const pugi::xml_node& top)
{
    if (node.first_child()) {
        return node.first_child();
    }
    for (pugi::xml_node at = node; at && at != top; at = at.parent()) {
        if (at.next_sibling()) {
            return at.next_sibling();
        }
    }
    return pugi::xml_node();
}

bool isInside(pugi::xml_node node, const pugi::xml_node& ancestor)
{
    while (node && node != ancestor) {
        node = node.parent();
    }
    return static_cast<bool>(node);
}

bool hasText(const pugi::xml_node& element)
{
    const pugi::xml_text text = element.text();
    const char* c = text.get();
    while (isBlank(*c)) {
        ++c;
    }
    return *c != '\0';
}

const std::string& schemaName(std::size_t value)
{
    value %= elementNames.size() + 1;
    return value == elementNames.size() ? longName : elementNames[value];
}

} // namespace

bool ChangeableDocument::read(const std::string& text)
{
    const bool isRead = static_cast<bool>(
        m_document.load_buffer(text.data(), text.size(), pugi::parse_default | pugi::parse_ws_pcdata));
    collect();
    return isRead && !m_elements.empty();
}

std::string ChangeableDocument::text() const
{
    std::ostringstream out;
    m_document.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return out.str();
}

void ChangeableDocument::collect()
{
    m_elements.clear();
    m_ids.clear();
    m_sids.clear();
    const pugi::xml_node top = m_document;
    for (pugi::xml_node node = following(top, top); node; node = following(node, top)) {
        if (node.type() != pugi::node_element) {
            continue;
        }
        m_elements.push_back(node);
        if (const pugi::xml_attribute id = node.attribute("id")) {
            m_ids.emplace_back(id.value());
        }
        if (const pugi::xml_attribute sid = node.attribute("sid")) {
            m_sids.emplace_back(sid.value());
        }
    }
}

ChangeableDocument::Sort ChangeableDocument::sortOf(const std::string& name, const std::string& value)
{
    if (name == "target" && value.find('#') == std::string::npos) {
        return Sort::target;
    }
    if (name == "url" || name == "source" || name == "target" || name == "init_from" || value.substr(0, 1) == "#") {
        return Sort::reference;
    }
    return isNumber(value) ? Sort::number : Sort::word;
}

std::size_t ChangeableDocument::replacementCount(Sort sort) const
{
    const std::size_t ids = std::min(m_ids.size(), mostIds);
    switch (sort) {
    case Sort::number:
        return numbers.size();
    case Sort::reference:
        return references.size() + 1 + ids;
    case Sort::target:
        return words.size() + 3 * ids;
    case Sort::word:
        return words.size() + ids;
    }
    return 0;
}

// The ids of the document follow the fixed values. `value` picks from all of them, not only from the first few.
std::string ChangeableDocument::replacement(Sort sort, const pugi::xml_node& element, const std::string& old,
                                            std::size_t value) const
{
    const auto pick = [value](const std::vector<std::string>& texts) {
        return texts.empty() ? std::string() : texts[value * 7 % texts.size()];
    };
    value %= 4096;
    switch (sort) {
    case Sort::number:
        return numbers[value % numbers.size()];
    case Sort::reference:
        if (value < references.size()) {
            return references[value];
        }
        if (value == references.size()) {
            pugi::xml_node owner = element;
            while (owner && !owner.attribute("id")) {
                owner = owner.parent();
            }
            return std::string("#") + owner.attribute("id").value();
        }
        return "#" + pick(m_ids);
    case Sort::target:
        if (value < words.size()) {
            return words[value];
        }
        switch (value % 3) {
        case 0:
            return pick(m_ids);
        case 1:
            return pick(m_ids) + "/" + pick(m_sids);
        default:
            return old.substr(0, old.find('/') + 1) + pick(m_sids) + ".X";
        }
    case Sort::word:
        return value < words.size() ? words[value] : pick(m_ids);
    }
    return old;
}

bool ChangeableDocument::apply(const DocumentChange& change)
{
    if (m_elements.empty()) {
        return false;
    }
    const pugi::xml_node element = m_elements[change.element % m_elements.size()];
    bool isChanged = false;
    switch (change.kind) {
    case DocumentChange::attributeReplaced:
    case DocumentChange::attributeRemoved: {
        const auto attributes = element.attributes();
        const auto count = static_cast<std::size_t>(std::distance(attributes.begin(), attributes.end()));
        if (count == 0) {
            break;
        }
        pugi::xml_attribute attribute =
            *std::next(attributes.begin(), static_cast<std::ptrdiff_t>(change.part % count));
        const std::string old = attribute.value();
        if (change.kind == DocumentChange::attributeRemoved) {
            isChanged = pugi::xml_node(element).remove_attribute(attribute);
        } else {
            isChanged =
                attribute.set_value(replacement(sortOf(attribute.name(), old), element, old, change.value).c_str());
        }
        break;
    }
    case DocumentChange::tokenReplaced:
    case DocumentChange::tokenRemoved:
    case DocumentChange::textReplaced:
        isChanged = hasText(element) && applyToText(element, change);
        break;
    default:
        isChanged = applyToElement(element, change);
        break;
    }
    collect();
    return isChanged;
}

bool ChangeableDocument::applyToText(pugi::xml_node element, const DocumentChange& change)
{
    const std::string old = element.text().get();
    if (change.kind == DocumentChange::textReplaced) {
        const std::string changed[] = {"", old + " " + old, " \n "};
        return element.text().set(changed[change.value % 3].c_str());
    }
    std::vector<std::string> tokens = tokensOf(old);
    std::string& token = tokens[change.part % tokens.size()];
    if (change.kind == DocumentChange::tokenRemoved) {
        tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(change.part % tokens.size()));
    } else {
        token = replacement(sortOf(element.name(), token), element, token, change.value);
    }
    return element.text().set(joined(tokens).c_str());
}

bool ChangeableDocument::applyToElement(pugi::xml_node element, const DocumentChange& change)
{
    pugi::xml_node parent = element.parent();
    const bool isRoot = parent.type() == pugi::node_document;
    switch (change.kind) {
    case DocumentChange::elementRemoved:
        return !isRoot && parent.remove_child(element);
    case DocumentChange::elementEmptied:
        return element.remove_children();
    case DocumentChange::elementDoubled:
        return !isRoot && parent.insert_copy_after(element, element);
    case DocumentChange::elementNested:
        return static_cast<bool>(element.append_copy(element));
    case DocumentChange::elementSwapped: {
        pugi::xml_node next = element.next_sibling();
        while (next && next.type() != pugi::node_element) {
            next = next.next_sibling();
        }
        return next && parent.insert_move_after(element, next);
    }
    case DocumentChange::elementMoved: {
        pugi::xml_node target = m_elements[change.value % m_elements.size()];
        return !isRoot && !isInside(target, element) && target.append_move(element);
    }
    case DocumentChange::elementRenamed:
        return element.set_name(schemaName(change.value).c_str());
    case DocumentChange::attributeAdded: {
        const std::string& name = attributeNames[change.value % attributeNames.size()];
        if (element.attribute(name.c_str())) {
            return false;
        }
        const Sort sort = name == "count" || name == "offset" || name == "stride" || name == "set"
                              ? Sort::number
                              : sortOf(name, std::string());
        return element.append_attribute(name.c_str())
            .set_value(replacement(sort, element, std::string(), change.part).c_str());
    }
    case DocumentChange::elementAdded:
        return static_cast<bool>(element.append_child(schemaName(change.value).c_str()));
    default:
        return false;
    }
}

std::vector<DocumentChange> ChangeableDocument::everyChange() const
{
    std::vector<DocumentChange> changes;
    for (std::size_t i = 0; i < m_elements.size(); ++i) {
        addChangesOf(i, changes);
    }
    return changes;
}

void ChangeableDocument::addChangesOf(std::size_t element, std::vector<DocumentChange>& changes) const
{
    const pugi::xml_node node = m_elements[element];
    std::size_t part = 0;
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        changes.push_back({DocumentChange::attributeRemoved, element, part, 0});
        const std::size_t values = replacementCount(sortOf(attribute.name(), attribute.value()));
        for (std::size_t value = 0; value < values; ++value) {
            changes.push_back({DocumentChange::attributeReplaced, element, part, value});
        }
        ++part;
    }
    if (hasText(node)) {
        const std::vector<std::string> tokens = tokensOf(node.text().get());
        const std::size_t changed = std::min(tokens.size(), mostTokens);
        for (std::size_t i = 0; i < changed; ++i) {
            const std::size_t token = changed == 1 ? 0 : i * (tokens.size() - 1) / (changed - 1);
            changes.push_back({DocumentChange::tokenRemoved, element, token, 0});
            for (std::size_t value = 0; value < replacementCount(sortOf(node.name(), tokens[token])); ++value) {
                changes.push_back({DocumentChange::tokenReplaced, element, token, value});
            }
        }
        for (std::size_t value = 0; value < 3; ++value) {
            changes.push_back({DocumentChange::textReplaced, element, 0, value});
        }
    }
    for (const DocumentChange::Kind kind :
         {DocumentChange::elementRemoved, DocumentChange::elementEmptied, DocumentChange::elementDoubled,
          DocumentChange::elementNested, DocumentChange::elementSwapped}) {
        changes.push_back({kind, element, 0, 0});
    }
    for (std::size_t i = 0; i < 3; ++i) { // with other targets and names for each element
        changes.push_back({DocumentChange::elementMoved, element, 0, element * 31 + i * 17 + 1});
        changes.push_back({DocumentChange::elementRenamed, element, 0, element * 13 + i * 29});
    }
}

void ChangeableDocument::graft(const ChangeableDocument& other, std::size_t from, std::size_t to)
{
    if (!m_elements.empty() && !other.m_elements.empty()) {
        m_elements[to % m_elements.size()].append_copy(other.m_elements[from % other.m_elements.size()]);
        collect();
    }
}

std::size_t DocumentMutator::below(std::size_t bound)
{
    return static_cast<std::size_t>(m_random()) % bound;
}

void DocumentMutator::change(ChangeableDocument& document)
{
    // Values and references are changed twice as often as the structure.
    static constexpr DocumentChange::Kind kinds[] = {
        DocumentChange::attributeReplaced, DocumentChange::attributeReplaced, DocumentChange::attributeReplaced,
        DocumentChange::attributeReplaced, DocumentChange::tokenReplaced,     DocumentChange::tokenReplaced,
        DocumentChange::tokenReplaced,     DocumentChange::attributeRemoved,  DocumentChange::tokenRemoved,
        DocumentChange::textReplaced,      DocumentChange::elementRemoved,    DocumentChange::elementEmptied,
        DocumentChange::elementDoubled,    DocumentChange::elementNested,     DocumentChange::elementSwapped,
        DocumentChange::elementMoved,      DocumentChange::elementRenamed,    DocumentChange::attributeAdded,
        DocumentChange::elementAdded};
    constexpr std::size_t mostAttempts = 20; // an element may have nothing to change in that way
    for (std::size_t i = 0; i < mostAttempts; ++i) {
        const DocumentChange::Kind kind = kinds[below(std::size(kinds))];
        if (document.apply({kind, below(1u << 20u), below(1u << 20u), below(1u << 12u)})) {
            return;
        }
    }
}

bool DocumentMutator::mutate(std::string& text)
{
    ChangeableDocument document;
    if (!document.read(text)) {
        return false;
    }
    for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
        change(document);
    }
    text = document.text();
    return true;
}

bool DocumentMutator::crossOver(std::string& text, const std::string& other)
{
    ChangeableDocument document;
    ChangeableDocument source;
    if (!document.read(text) || !source.read(other)) {
        return false;
    }
    document.graft(source, below(1u << 20u), below(1u << 20u));
    if (below(2) == 0) {
        change(document);
    }
    text = document.text();
    return true;
}

} // namespace testSupport
