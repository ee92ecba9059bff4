#include "AnimationWords.h"

#include <libPrepare/document/Numbers.h>

namespace test {

std::string source(const std::string& id, const std::string& params, const std::string& numbers)
{
    const std::size_t size = libPrepare::words(params).size();
    std::string result = "<source id='" + id + "'><float_array id='" + id + "-array' count='" +
                         std::to_string(libPrepare::numbers(numbers).size()) + "'>" + numbers +
                         "</float_array><technique_common><accessor source='#" + id + "-array' count='" +
                         std::to_string(libPrepare::numbers(numbers).size() / size) + "' stride='" +
                         std::to_string(size) + "'>";
    for (const std::string_view param : libPrepare::words(params)) {
        result += "<param name='" + std::string(param) + "' type='float'/>";
    }
    return result + "</accessor></technique_common></source>";
}

std::string kinds(const std::string& id, const std::string& words)
{
    return "<source id='" + id + "'><Name_array id='" + id + "-array' count='" +
           std::to_string(libPrepare::words(words).size()) + "'>" + words +
           "</Name_array><technique_common><accessor source='#" + id + "-array' count='" +
           std::to_string(libPrepare::words(words).size()) +
           "' stride='1'><param name='I' type='Name'/></accessor></technique_common></source>";
}

std::string input(const std::string& semantic, const std::string& id)
{
    return "<input semantic='" + semantic + "' source='#" + id + "'/>";
}

std::string animated(const std::string& target, const std::string& sources)
{
    std::string inputs = input("INPUT", "t") + input("OUTPUT", "o");
    if (sources.find("id='k'") != std::string::npos) {
        inputs += input("INTERPOLATION", "k");
    }
    if (sources.find("id='out'") != std::string::npos) {
        inputs += input("IN_TANGENT", "in") + input("OUT_TANGENT", "out");
    }
    return "<library_animations><animation><animation>" + sources + "<sampler id='s'>" + inputs +
           "</sampler><channel source='#s' target='" + target + "'/></animation></animation></library_animations>";
}

std::string flat(const std::string& id, const std::string& target, const std::string& params, const std::string& times,
                 const std::string& values, const std::string& words)
{
    return "<animation id='" + id + "'>" + source(id + "-t", "TIME", times) + source(id + "-o", params, values) +
           kinds(id + "-k", words) + "<sampler id='" + id + "-s'>" + input("INPUT", id + "-t") +
           input("OUTPUT", id + "-o") + input("INTERPOLATION", id + "-k") + "</sampler><channel source='#" + id +
           "-s' target='" + target + "'/></animation>";
}

std::string shown(const std::string& nodes)
{
    return "<library_visual_scenes><visual_scene id='v'>" + nodes +
           "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#v'/></scene>";
}

} // namespace test
