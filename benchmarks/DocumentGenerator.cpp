#include "DocumentGenerator.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace benchmarks {

namespace {

std::string document(const std::string& libraries, const std::string& nodes)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">\n"
           "<asset><created>2026-01-01T00:00:00Z</created><modified>2026-01-01T00:00:00Z</modified></asset>\n" +
           libraries + "<library_visual_scenes><visual_scene id=\"scene\">\n" + nodes +
           "</visual_scene></library_visual_scenes>\n"
           "<scene><instance_visual_scene url=\"#scene\"/></scene>\n</COLLADA>\n";
}

std::string floatSource(const std::string& id, unsigned count, unsigned stride, const std::string& values)
{
    const std::string records = std::to_string(count);
    return "<source id=\"" + id + "\"><float_array id=\"" + id + "-array\" count=\"" + std::to_string(count * stride) +
           "\">" + values + "</float_array><technique_common><accessor source=\"#" + id + "-array\" count=\"" +
           records + "\" stride=\"" + std::to_string(stride) + "\"/></technique_common></source>\n";
}

} // namespace

std::string balancedTree(unsigned nodes, Ids ids)
{
    constexpr unsigned branches = 8;
    // Node i has the children 8 i + 1 to 8 i + 8. Written depth first.
    struct Entry {
        unsigned node;
        bool isStarted;
    };
    std::string xml;
    std::vector<Entry> open = {{0, false}};
    while (!open.empty()) {
        if (open.back().isStarted) {
            xml += "</node>\n";
            open.pop_back();
            continue;
        }
        open.back().isStarted = true;
        const unsigned node = open.back().node;
        const std::string number = std::to_string(node);
        xml += ids == Ids::Distinct ? "<node id=\"node-" + number + "\" name=\"node-" + number + "\">" : "<node>";
        xml += "<translate sid=\"place\">" + std::to_string(node % 100) +
               ".5 1.25 -3.75</translate>"
               "<rotate sid=\"turn\">0 1 0 " +
               std::to_string(node % 360) + "</rotate>";
        for (unsigned i = branches; i > 0; --i) {
            const unsigned child = branches * node + i;
            if (child < nodes) {
                open.push_back({child, false});
            }
        }
    }
    return document(std::string(), xml);
}

std::string chain(unsigned depth)
{
    std::string xml;
    for (unsigned i = 0; i < depth; ++i) {
        xml += "<node id=\"link-" + std::to_string(i) + "\"><translate>0 0.5 0</translate>";
    }
    for (unsigned i = 0; i < depth; ++i) {
        xml += "</node>";
    }
    return document(std::string(), xml);
}

std::string animatedNode(unsigned keys)
{
    std::string times;
    std::string values;
    for (unsigned i = 0; i < keys; ++i) {
        times += std::to_string(i + 1) + " ";
        values += std::to_string(i % 10) + " 0.5 " + std::to_string(i % 7) + ".25 ";
    }
    const std::string animation =
        "<library_animations><animation id=\"path\">\n" + floatSource("times", keys, 1, times) +
        floatSource("places", keys, 3, values) +
        "<sampler id=\"sampler\"><input semantic=\"INPUT\" source=\"#times\"/>"
        "<input semantic=\"OUTPUT\" source=\"#places\"/></sampler>"
        "<channel source=\"#sampler\" target=\"walker/place\"/></animation></library_animations>\n";
    return document(animation, "<node id=\"walker\"><translate sid=\"place\">1 2 3</translate></node>\n");
}

DocumentFile::DocumentFile(const std::string& content)
{
    std::string name = (std::filesystem::temp_directory_path() / "libVideoBenchmark-XXXXXX").string();
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) {
        throw std::runtime_error("no temporary file: " + name);
    }
    m_path = name;
    std::ofstream file(m_path, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + name);
    }
}

DocumentFile::~DocumentFile()
{
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

} // namespace benchmarks
