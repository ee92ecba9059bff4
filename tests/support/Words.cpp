#include "Words.h"

#include <sstream>

namespace testSupport {

namespace {

std::string countAndStride(unsigned count, unsigned stride)
{
    return "count='" + std::to_string(count) + "' stride='" + std::to_string(stride) + "'";
}

std::string array(const std::string& element, const std::string& id, const std::string& content)
{
    return "<" + element + " id='" + id + "' count='" + std::to_string(wordCount(content)) + "'>" + content + "</" +
           element + ">";
}

} // namespace

std::string repeated(const std::string& text, std::size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string inUtf16(const std::string& text, bool isLittleEndian)
{
    std::string wide = isLittleEndian ? "\xFF\xFE" : "\xFE\xFF";
    for (const char c : text) {
        wide += isLittleEndian ? std::string{c, '\0'} : std::string{'\0', c};
    }
    return wide;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

unsigned wordCount(const std::string& text)
{
    std::istringstream words(text);
    std::string word;
    unsigned count = 0;
    while (words >> word) {
        ++count;
    }
    return count;
}

std::string library(const std::string& name, const std::string& content)
{
    return content.empty() ? "" : "<" + name + ">" + content + "</" + name + ">";
}

std::string floatArray(const std::string& id, const std::string& numbers)
{
    return array("float_array", id, numbers);
}

std::string nameArray(const std::string& id, const std::string& names)
{
    return array("Name_array", id, names);
}

std::string accessorTo(const std::string& array, const std::string& attributes, const std::string& params)
{
    return "<technique_common><accessor source='#" + array + "' " + attributes + ">" + params +
           "</accessor></technique_common>";
}

std::string sourceXml(const std::string& id, const std::string& numbers, const std::string& attributes,
                      const std::string& params)
{
    return "<source id='" + id + "'>" + floatArray(id + "-array", numbers) +
           (attributes.empty() ? "" : accessorTo(id + "-array", attributes, params)) + "</source>";
}

std::string floats(const std::string& id, const std::string& numbers, unsigned count, unsigned stride)
{
    return sourceXml(id, numbers, countAndStride(count, stride));
}

std::string names(const std::string& id, const std::string& words, unsigned count, unsigned stride)
{
    return "<source id='" + id + "'>" + nameArray(id + "-array", words) +
           accessorTo(id + "-array", countAndStride(count, stride)) + "</source>";
}

std::string inputXml(const std::string& semantic, const std::string& source)
{
    return "<input semantic='" + semantic + "' source='#" + source + "'/>";
}

std::string inputXml(const std::string& semantic, const std::string& source, const std::string& offset)
{
    return "<input semantic='" + semantic + "' source='#" + source + "' offset='" + offset + "'/>";
}

std::string curve(const std::string& name, const std::string& target, const std::string& seconds,
                  const std::string& values, const std::string& interpolation)
{
    const unsigned keys = wordCount(seconds);
    const std::string sampler = name + "-sampler";
    std::string sources =
        floats(name + "-in", seconds, keys) + floats(name + "-out", values, keys, wordCount(values) / keys);
    std::string inputs = inputXml("INPUT", name + "-in") + inputXml("OUTPUT", name + "-out");
    if (!interpolation.empty()) {
        sources += names(name + "-kind", interpolation, keys);
        inputs += inputXml("INTERPOLATION", name + "-kind");
    }
    return "<animation>" + sources + "<sampler id='" + sampler + "'>" + inputs + "</sampler><channel source='#" +
           sampler + "' target='" + target + "'/></animation>";
}

std::string meshXml(const std::string& content)
{
    return "<library_geometries><geometry id='g'><mesh>" + content + "</mesh></geometry></library_geometries>";
}

std::string node(const std::string& id, const std::string& content)
{
    return "<node id='" + id + "'>" + content + "</node>";
}

std::string vendorExtra(const std::string& content, const std::string& profile)
{
    return "<extra><technique profile='" + profile + "'>" + content + "</technique></extra>";
}

std::string optics(const std::string& perspective)
{
    return "<optics><technique_common><perspective>" + perspective + "</perspective></technique_common></optics>";
}

} // namespace testSupport
