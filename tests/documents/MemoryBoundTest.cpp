#include "support/ColladaBuilder.h"
#include "support/Rows.h"
#include "support/Words.h"

#include <vesk/Exception.h>
#include <vesk/Logging.h>

#include <libVideo/SceneGraph/Scene.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest.h>

// Measures, as the system counts it, how much memory small documents take that ask for a lot.

#if !defined(__SANITIZE_ADDRESS__)

namespace {

using libVideo::Scene;
using namespace testSupport;

// Peak memory of a process that loads a document, in bytes; nothing if it does not finish.
std::optional<std::uint64_t> peakOfLoad(const std::string& path);

const std::string array = "<float_array id='a' count='3'>1 2 3</float_array>";

std::string source(const std::string& params, unsigned count = 1, unsigned stride = 3);

std::string cloud(const std::string& sourceText, unsigned inputs);
std::string triangles(const std::string& sourceText, unsigned inputs, unsigned corners);

std::string animations(unsigned count, const std::string& inputs, const std::string& sources);

class MemoryBoundTest : public testing::TestWithParam<Case<std::function<std::string()>>> {};

TEST_P(MemoryBoundTest, LoadTakesAFixedMultipleOfTheDocument)
{
    const std::string text =
        ColladaBuilder(GetParam().given()).addScene("<node id='n'><instance_geometry url='#g'/></node>").text();
    const TemporaryFile file(text);
    const std::optional<std::uint64_t> taken = peakOfLoad(file.path());
    ASSERT_TRUE(taken) << "the process did not finish";
    // Three times the budget: a growing array exists beside its successor, and its capacity is larger than its size.
    EXPECT_LT(*taken, 3 * (std::uint64_t{134'217'728} + 64 * text.size()) + 64'000'000) << text.size() << " bytes";
}

INSTANTIATE_ROWS(
    Documents, MemoryBoundTest, {"CloudOfManyInputsWithoutParams", [] { return cloud(source("", 1'048'576), 1'000); }},
    {"CloudOfUnnamedParams", [] { return cloud(source("<param type='float'/>", 1'048'576), 100); }},
    {"CloudOfWideRecords",
     [] { return cloud(source(repeated("<param name='X' type='float4x4'/>", 100), 1'048'576), 10); }},
    {"TrianglesOfManyBareSources", [] { return triangles("<source id='s'>" + array + "</source>", 4'000, 30'000); }},
    {"TrianglesOfWideVertices",
     [] { return triangles(source(repeated("<param name='X' type='float'/>", 5'000)), 1, 90'000); }},
    {"AccessorsOfALongName",
     [] { return cloud(source("<param name='" + std::string(1'000'000, 'x') + "' type='float'/>"), 1'500); }},
    {"AccessorsOfManyMatrices",
     [] { return cloud(source(repeated("<param name='X' type='float4x4'/>", 2'000)), 700); }},
    {"VerticesAskedForOften",
     [] {
         return meshXml(
             "<source id='s'>" + array + "</source><vertices id='v'>" +
             repeated("<input semantic='POSITION' source='#s'/>", 3'000) + "</vertices><triangles count='1'>" +
             repeated("<input semantic='VERTEX' source='#v' offset='0'/>", 3'000) + "<p>0 0 0</p></triangles>");
     }},
    {"OutputsAskedForOften",
     [] {
         return animations(1, repeated("<input semantic='OUTPUT' source='#s'/>", 3'000),
                           "<source id='s'><float_array id='a' count='100000'>" + repeated("0 ", 100'000) +
                               "</float_array><technique_common><accessor source='#a' count='1000' stride='100'/>"
                               "</technique_common></source>");
     }},
    {"CurvesThatShareTheirKeys",
     [] {
         return animations(3'000, "<input semantic='INPUT' source='#s'/><input semantic='OUTPUT' source='#s'/>",
                           "<source id='s'><float_array id='a' count='100000'>" + repeated("0 ", 100'000) +
                               "</float_array><technique_common><accessor source='#a' count='100000' stride='1'/>"
                               "</technique_common></source>");
     }},
    {"KeysThatNothingBacks", [] {
         return animations(300, "<input semantic='INPUT' source='#s'/>",
                           "<source id='s'><technique_common><accessor count='1048576'/></technique_common></source>");
     }});

std::optional<std::uint64_t> peakOfLoad(const std::string& path)
{
    int ends[2] = {};
    if (pipe(ends) != 0) {
        return std::nullopt;
    }
    const pid_t child = fork();
    if (child == 0) {
        vesk::LogFactory::setHandler(
            [](const vesk::Logger&, vesk::LoggerPriority::LOGGER_PRIORITY, const vesk::String&) {});
        const auto peak = [] {
            rusage usage = {};
            getrusage(RUSAGE_SELF, &usage);
            return static_cast<std::uint64_t>(usage.ru_maxrss) * 1'024;
        };
        std::ofstream("/proc/self/clear_refs") << "5"; // resets the peak, if the system allows it
        const std::uint64_t before = peak();
        try {
            Scene scene;
            static_cast<void>(scene.createFromCollada(path.c_str()));
        } catch (const vesk::Exception&) {
            // caused by the document
        }
        const std::uint64_t taken = peak() - before;
        const bool isTold = write(ends[1], &taken, sizeof taken) == sizeof taken;
        _exit(isTold ? 0 : 1);
    }
    close(ends[1]);
    std::uint64_t taken = 0;
    const bool isHeard = read(ends[0], &taken, sizeof taken) == sizeof taken;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return isHeard && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(taken) : std::nullopt;
}

std::string source(const std::string& params, unsigned count, unsigned stride)
{
    return "<source id='s'>" + array + "<technique_common><accessor source='#a' count='" + std::to_string(count) +
           "' stride='" + std::to_string(stride) + "'>" + params + "</accessor></technique_common></source>";
}

std::string cloud(const std::string& sourceText, unsigned inputs)
{
    return meshXml(sourceText + "<vertices id='v'>" + repeated("<input semantic='POSITION' source='#s'/>", inputs) +
                   "</vertices>");
}

std::string triangles(const std::string& sourceText, unsigned inputs, unsigned corners)
{
    std::string indices;
    for (unsigned i = 0; i < corners; ++i) {
        indices += "0 " + std::to_string(i) + " ";
    }
    return meshXml(sourceText + "<triangles count='" + std::to_string(corners / 3) + "'>" +
                   repeated("<input semantic='POSITION' source='#s' offset='0'/>", inputs) +
                   "<input semantic='NORMAL' source='#nothing' offset='1'/><p>" + indices + "</p></triangles>");
}

std::string animations(unsigned count, const std::string& inputs, const std::string& sources)
{
    std::string all;
    for (unsigned i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        all += "<animation><sampler id='m" + number + "'>" + inputs + "</sampler><channel source='#m" + number +
               "' target='n/t'/></animation>";
    }
    return "<library_animations><animation>" + sources + "</animation>" + all + "</library_animations>";
}

} // namespace

#endif
