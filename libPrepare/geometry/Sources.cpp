#include "Sources.h"

#include <libPrepare/document/NumberCensus.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/geometry/IndexReader.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace libPrepare {

namespace {

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

// How many numbers a param of a type such as "float3" or "float4x4" takes.
std::size_t widthOfType(std::string_view type)
{
    std::size_t letters = 0;
    while (letters < type.size() && type[letters] >= 'a' && type[letters] <= 'z') {
        ++letters;
    }
    const std::string_view size = type.substr(letters);
    if (letters > 0 && size.size() == 1 && isDigit(size[0])) {
        return static_cast<std::size_t>(size[0] - '0');
    }
    if (letters > 0 && size.size() == 3 && isDigit(size[0]) && size[1] == 'x' && isDigit(size[2])) {
        return static_cast<std::size_t>(size[0] - '0') * static_cast<std::size_t>(size[2] - '0');
    }
    return 1;
}

} // namespace

std::size_t wholeOr(std::string_view text, std::size_t otherwise)
{
    text = trimmed(text);
    std::uint32_t value = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, value);
    return read.ptr == end && read.ec == std::errc() ? value : otherwise;
}

const SourceLayout* Sources::find(pugi::xml_node source)
{
    if (!source) {
        return nullptr;
    }
    const auto known = m_layouts.find(source.hash_value());
    const std::optional<SourceLayout>& layout =
        known != m_layouts.end() ? known->second : m_layouts.emplace(source.hash_value(), read(source)).first->second;
    return layout ? &*layout : nullptr;
}

std::optional<SourceLayout> Sources::read(pugi::xml_node source)
{
    SourceLayout layout;
    layout.source = source;
    layout.accessor = descend(source, "technique_common/accessor");
    layout.array = resolveNear(m_document, layout.accessor.attribute("source").value(),
                               {"float_array", "int_array", "Name_array", "IDREF_array", "bool_array"}, source);
    if (!is(layout.array, "float_array") && !is(layout.array, "int_array")) {
        return std::nullopt;
    }
    layout.offset = wholeOr(layout.accessor.attribute("offset").value(), 0);
    layout.stride = std::max<std::size_t>(1, wholeOr(layout.accessor.attribute("stride").value(), 1));
    bool isNamed = false;
    for (const pugi::xml_node param : layout.accessor.children("param")) {
        isNamed = isNamed || *param.attribute("name").value() != '\0';
    }
    std::size_t at = 0;
    bool hasParams = false;
    for (const pugi::xml_node param : layout.accessor.children("param")) {
        const std::size_t width = widthOfType(trimmed(param.attribute("type").value()));
        for (std::size_t i = at; i < at + width && i < layout.stride; ++i) {
            if (!isNamed || *param.attribute("name").value() != '\0') {
                layout.columns.push_back(i);
            }
        }
        at += width;
        hasParams = true;
    }
    constexpr std::size_t widest = 64; // more than any vertex attribute has
    for (std::size_t i = 0; !hasParams && i < std::min(layout.stride, widest); ++i) {
        layout.columns.push_back(i);
    }
    std::string scratch;
    const NumberCensus census = numberCensusOf(textOf(layout.array, scratch));
    layout.isFinite = census.isFinite;
    const std::size_t first = layout.offset + (layout.columns.empty() ? 0 : layout.columns.back());
    if (!layout.columns.empty() && census.words > first) {
        layout.count = std::min(wholeOr(layout.accessor.attribute("count").value(), 0),
                                (census.words - first + layout.stride - 1) / layout.stride);
    }
    return layout;
}

const std::vector<double>& Sources::values(const SourceLayout& layout)
{
    if (m_valuesOf && m_valuesOf == layout.source) {
        return m_values;
    }
    std::vector<double> all = numbersOf(layout.array);
    m_valuesOf = layout.source;
    if (layout.isDense()) {
        m_values = std::move(all);
        m_values.resize(layout.count * layout.width());
        return m_values;
    }
    m_values.clear();
    m_values.reserve(layout.count * layout.width());
    for (std::size_t record = 0; record < layout.count; ++record) {
        for (const std::size_t column : layout.columns) {
            const std::size_t at = layout.offset + record * layout.stride + column;
            m_values.push_back(at < all.size() ? all[at] : std::numeric_limits<double>::quiet_NaN());
        }
    }
    return m_values;
}

void Sources::freeValues()
{
    m_valuesOf = {};
    m_values = {};
}

void Sources::forget()
{
    m_layouts.clear();
    freeValues();
    m_censuses.clear();
}

const ColumnCensus& Sources::census(pugi::xml_node list, std::size_t stride, std::size_t tuples)
{
    const auto known = m_censuses.find(list.hash_value());
    if (known != m_censuses.end() && known->second.stride == stride && known->second.limit == tuples) {
        return known->second.census;
    }
    std::string scratch;
    return m_lastCensus = censusOf(textOf(list, scratch), stride, tuples);
}

void Sources::keepCensus(pugi::xml_node list, std::size_t stride, std::size_t tuples, ColumnCensus census)
{
    m_censuses[list.hash_value()] = {stride, tuples, std::move(census)};
}

std::vector<Input> inputsOf(pugi::xml_node element)
{
    std::vector<Input> result;
    for (const pugi::xml_node input : element.children("input")) {
        result.push_back({input, std::string(trimmed(input.attribute("semantic").value())),
                          wholeOr(input.attribute("offset").value(), 0),
                          static_cast<long long>(wholeOr(input.attribute("set").value(), 0))});
    }
    return result;
}

std::size_t strideOf(const std::vector<Input>& inputs)
{
    std::size_t greatest = 0;
    for (const Input& input : inputs) {
        greatest = std::max(greatest, input.offset);
    }
    return greatest + 1;
}

const Input* firstInput(const std::vector<Input>& inputs, std::string_view semantic)
{
    const auto found =
        std::find_if(inputs.begin(), inputs.end(), [&](const Input& input) { return input.semantic == semantic; });
    return found == inputs.end() ? nullptr : &*found;
}

pugi::xml_node resolveNear(Document& document, std::string_view reference, std::initializer_list<const char*> kinds,
                           pugi::xml_node parent)
{
    constexpr unsigned mostChildren = 24;
    if (reference.size() > 1 && reference.front() == '#' && document.areIdsUnique()) {
        const std::string_view id = reference.substr(1);
        pugi::xml_node child = parent.first_child();
        for (unsigned i = 0; i < mostChildren && child; ++i, child = child.next_sibling()) {
            const bool isOfKind =
                std::any_of(kinds.begin(), kinds.end(), [&](const char* kind) { return is(child, kind); });
            if (isOfKind && id == child.attribute("id").value()) {
                return child;
            }
        }
    }
    return document.resolve(reference, kinds);
}

const SourceLayout* positionsOf(Document& document, Sources& sources, const std::vector<Input>& inputs)
{
    const Input* const vertex = firstInput(inputs, "VERTEX");
    if (vertex == nullptr) {
        return nullptr;
    }
    const pugi::xml_node vertices = resolveNear(document, vertex->element.attribute("source").value(), {"vertices"},
                                                vertex->element.parent().parent());
    const std::vector<Input> inner = inputsOf(vertices);
    const Input* const position = firstInput(inner, "POSITION");
    if (position == nullptr) {
        return nullptr;
    }
    const SourceLayout* const layout = sources.find(
        resolveNear(document, position->element.attribute("source").value(), {"source"}, vertices.parent()));
    return layout != nullptr && layout->width() >= 2 ? layout : nullptr;
}

pugi::xml_node addVectorSource(Document& document, pugi::xml_node geometry, const char* role)
{
    const pugi::xml_node source = geometry.child("mesh").prepend_child("source");
    document.setId(source, document.freshId(std::string(geometry.attribute("id").value()) + '-' + role));
    return source;
}

void fillVectorSource(Document& document, pugi::xml_node source, const std::vector<double>& values)
{
    const std::string id = document.freshId(std::string(source.attribute("id").value()) + "-array");
    const pugi::xml_node array = source.append_child("float_array");
    document.setId(array, id);
    setAttribute(array, "count", std::to_string(values.size()));
    setText(array, text(values));
    pugi::xml_node accessor = source.append_child("technique_common").append_child("accessor");
    setAttribute(accessor, "source", '#' + id);
    setAttribute(accessor, "count", std::to_string(values.size() / 3));
    setAttribute(accessor, "stride", "3");
    for (const char* const name : {"X", "Y", "Z"}) {
        const pugi::xml_node param = accessor.append_child("param");
        setAttribute(param, "name", name);
        setAttribute(param, "type", "float");
    }
}

std::vector<std::int32_t> indices(std::string_view text)
{
    std::vector<std::int32_t> result;
    result.reserve(text.size() / 4);
    IndexReader entries(text);
    while (entries.next()) {
        result.push_back(entries.index());
    }
    return result;
}

void appendEntry(std::string& list, long long value)
{
    char buffer[24] = {' '};
    const std::to_chars_result result = std::to_chars(buffer + 1, buffer + sizeof buffer, value);
    const char* const start = list.empty() ? buffer + 1 : buffer;
    list.append(start, static_cast<std::size_t>(result.ptr - start));
}

} // namespace libPrepare
