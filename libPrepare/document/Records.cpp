#include "Records.h"

#include "NumberCensus.h"
#include "Numbers.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numeric>
#include <string_view>
#include <utility>

namespace libPrepare {

namespace {

// How many numbers a param of a type such as "float", "float3" or "float4x4" takes.
std::size_t paramWidth(std::string_view type)
{
    std::size_t letters = 0;
    while (letters < type.size() && type[letters] >= 'a' && type[letters] <= 'z') {
        ++letters;
    }
    const std::string_view digits = type.substr(letters);
    const auto digit = [&](std::size_t index) {
        return std::isdigit(static_cast<unsigned char>(digits[index])) ? static_cast<std::size_t>(digits[index] - '0')
                                                                       : 0;
    };
    if (letters == 0 || (digits.size() != 1 && digits.size() != 3)) {
        return 1;
    }
    if (digits.size() == 1) {
        return std::max<std::size_t>(digit(0), 1);
    }
    return digits[1] == 'x' ? std::max<std::size_t>(digit(0) * digit(2), 1) : 1;
}

} // namespace

std::size_t wholeNumber(pugi::xml_attribute attribute, std::size_t otherwise)
{
    const std::vector<long long> values = integers(attribute.value());
    return values.empty() || values[0] < 0 ? otherwise : static_cast<std::size_t>(values[0]);
}

RecordLayout::RecordLayout(pugi::xml_node accessor, std::size_t size)
    : m_stride(std::max<std::size_t>(wholeNumber(accessor.attribute("stride"), 1), 1)),
      m_offset(wholeNumber(accessor.attribute("offset"), 0))
{
    const auto isNamed = [](pugi::xml_node param) { return *param.attribute("name").value() != '\0'; };
    const auto params = accessor.children("param");
    const bool isAnyNamed = std::any_of(params.begin(), params.end(), isNamed);
    std::size_t at = 0;
    bool hasParams = false;
    for (const pugi::xml_node param : params) {
        const std::size_t width = paramWidth(param.attribute("type").value());
        for (std::size_t i = 0; i < width && (!isAnyNamed || isNamed(param)); ++i) {
            if (at + i < m_stride) {
                m_columns.push_back(at + i);
            }
            hasParams = true;
        }
        at += width;
    }
    if (!hasParams) {
        m_columns.resize(std::min(m_stride, size));
        std::iota(m_columns.begin(), m_columns.end(), std::size_t(0));
    }
    if (!m_columns.empty() && m_offset < size && m_columns.back() < size - m_offset) {
        const std::size_t available = (size - m_offset - m_columns.back() - 1) / m_stride + 1;
        m_count = std::min(available, wholeNumber(accessor.attribute("count"), 0));
    }
}

Records::Records(std::size_t width, std::vector<double> values)
    : m_width(width), m_count(width == 0 ? 0 : values.size() / width), m_values(std::move(values)), m_readCount(m_count)
{}

Records Records::read(Document& document, pugi::xml_node source, Reading reading)
{
    const pugi::xml_node accessor = descend(source, "technique_common/accessor");
    const pugi::xml_node array = document.resolve(
        accessor.attribute("source").value(), {"float_array", "Name_array", "IDREF_array", "int_array", "bool_array"});
    if (!is(array, "float_array") && !is(array, "int_array")) {
        return {};
    }
    if (reading == Reading::onDemand) {
        std::string scratch;
        const std::string_view list = textOf(array, scratch);
        const NumberCensus census = numberCensusOf(list);
        const RecordLayout layout(accessor, census.words);
        if (census.isFinite && layout.isDense() && layout.count() > 1) {
            Records result;
            result.m_width = layout.width();
            result.m_count = layout.count();
            result.m_array = array;
            result.m_values.resize(layout.width());
            result.m_readCount = readNumbers(list, result.m_values.data(), layout.width()) / layout.width();
            return result;
        }
    }
    std::vector<double> values = numbersOf(array);
    const RecordLayout layout(accessor, values.size());
    layout.pick(values);
    return {layout.width(), std::move(values)};
}

void Records::readAll() const
{
    if (m_readCount == m_count) {
        return;
    }
    m_values = numbersOf(m_array);
    m_values.resize(m_count * m_width);
    m_readCount = m_count;
}

bool Records::areFinite() const
{
    return m_readCount < m_count ||
           std::all_of(m_values.begin(), m_values.end(), [](double value) { return std::isfinite(value); });
}

void Records::shorten(std::size_t count)
{
    m_count = count;
    m_readCount = std::min(m_readCount, count);
    m_values.resize(m_readCount * m_width);
}

Records Records::reordered(const std::vector<std::size_t>& order) const
{
    std::vector<double> values;
    values.reserve(order.size() * m_width);
    for (const std::size_t index : order) {
        const double* const record = (*this)[index];
        values.insert(values.end(), record, record + m_width);
    }
    return {m_width, std::move(values)};
}

std::vector<double> Records::takeFirstNumbers()
{
    readAll();
    std::vector<double> result = std::move(m_values);
    for (std::size_t record = 0; record < m_count; ++record) {
        result[record] = result[record * m_width];
    }
    result.resize(m_count);
    *this = Records();
    return result;
}

} // namespace libPrepare
