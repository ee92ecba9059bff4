#include "DocumentCheck.h"
#include "PlainReader.h"

#include "support/ColladaBuilder.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

// Documents that no exporter writes, loaded by the library and by the plain reader.

namespace {

using testSupport::ColladaBuilder;
using testSupport::TemporaryFile;

struct OddDocument {
    const char* name;
    std::string text;
    bool loads = true;
};

void PrintTo(const OddDocument& document, std::ostream* out)
{
    *out << document.name;
}

// An animation with one input, of two records.
std::string animation(const std::string& id, const std::string& target, const std::string& accessor = "count='2'",
                      const std::string& semantic = "INPUT", const std::string& array = "float_array")
{
    return "<animation><source id='" + id + "'><" + array + " id='" + id + "-array' count='2'>1 2</" + array +
           "><technique_common><accessor source='#" + id + "-array' " + accessor +
           "/></technique_common></source><sampler id='" + id + "-sampler'><input semantic='" + semantic +
           "' source='#" + id + "'/></sampler><channel source='#" + id + "-sampler' target='" + target +
           "'/></animation>";
}

std::string withAnimations(const std::string& animations, const std::string& nodes)
{
    return ColladaBuilder("<library_animations>" + animations + "</library_animations>").addScene(nodes).text();
}

std::string withNodes(const std::string& nodes)
{
    return ColladaBuilder().addScene(nodes).text();
}

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    return text.replace(text.find(from), from.size(), to);
}

std::string chain(unsigned depth)
{
    std::string nodes;
    for (unsigned i = 0; i < depth; ++i) {
        nodes += "<node><translate>0.1 0 0</translate><rotate>1 2 3 7</rotate><scale>1.01 0.99 1</scale>";
    }
    for (unsigned i = 0; i < depth; ++i) {
        nodes += "</node>";
    }
    return nodes;
}

std::vector<OddDocument> oddDocuments()
{
    const std::string moving = "<node id='n'><translate sid='t'>1 2 3</translate></node>";
    const std::string nameless = "<node id='n'/><node><translate>1 2 3</translate></node><node/>";
    const std::string plain = withNodes(moving);
    return {
        {"AllTransforms", withNodes("<node><translate>1 2 3</translate><rotate>1 1 0 33</rotate><scale>2 -3 0.5</scale>"
                                    "<skew>45 1 0 0 0 1 0</skew><matrix>1 2 3 4 5 6 7 8 9 10 11 12 0 0 0 1</matrix>"
                                    "<rotate>0 0 -4 725</rotate></node>")},
        {"LookAtAmongOthers", withNodes("<node><translate>1 2 3</translate><lookat>1 2 3 4 5 6 0 1 0</lookat>"
                                        "<scale>2 2 2</scale><node><translate>1 0 0</translate></node></node>")},
        {"RotationAboutNoAxis", withNodes("<node><translate>1 2 3</translate><rotate>0 0 0 90</rotate></node>")},
        {"ZeroMatrixAboveOthers", withNodes("<node id='a'><node id='b'><translate>1 2 3</translate></node></node>")},
        {"ValuesMissing", withNodes("<node><translate>1 2</translate><rotate>0 1</rotate></node><node><scale/></node>"
                                    "<node><matrix>1 2 3</matrix></node>")},
        {"ValuesTooMany", withNodes("<node><translate>1 2 3 4 5</translate><rotate>0 0 1 90 7</rotate></node>")},
        {"ValuesThatAreNone", withNodes("<node><translate>1 x 3</translate><scale>1,5 1e0 +2</scale></node>")},
        {"ValuesBehindAComment", withNodes("<node><translate>1 2<!-- c --> 3 4 5</translate></node>")},
        {"ValuesInCdata", withNodes("<node><translate><![CDATA[7 8 9]]> 1 2 3</translate></node>")},
        {"ValuesBeyondFloat", withNodes("<node><translate>1e39 -1e39 1e-50</translate></node>")},
        {"TransformsBehindOthers",
         withNodes("<node><node><scale>1 2 3</scale></node><translate>1 2 3</translate></node>")},
        {"LongNames", withNodes("<node id=' a  b' sid='s\tt' name='Big&#10;lamp'/>")},
        {"NamesOfOtherScripts", withNodes("<node id='Nœud' name='灯台'><translate>1 0 0</translate></node>")},
        {"RepeatedIds",
         withAnimations(animation("a", "n/t"), "<node id='n'><scale sid='s'>1 1 1</scale></node>" + moving)},
        {"DeepTree", withNodes(chain(40))},
        {"AnimationByMember", withAnimations(animation("a", "n/t.X"), moving)},
        {"AnimationOfOtherCase", withAnimations(animation("a", "N/t") + animation("b", "n/T"), moving)},
        {"AnimationWithoutTarget", withAnimations(animation("a", ""), nameless)},
        {"AnimationWithoutSlash", withAnimations(animation("a", "n"), nameless)},
        {"AnimationOfTheFirstWithoutSid",
         withAnimations(animation("a", "n/"), "<node id='n'><scale sid='s'>1 1 1</scale>"
                                              "<translate>1 2 3</translate></node>")},
        {"AnimationWithoutChannel", withAnimations("<animation/>", nameless)},
        {"AnimationOfNothingFindsNoNode", withAnimations("<animation/>", moving)},
        {"AnimationWithDanglingSampler",
         withAnimations("<animation><channel source='#no' target='n/t'/></animation>", moving)},
        {"AnimationFromANode", withAnimations("<animation><channel source='#n' target='n/t'/></animation>", moving)},
        {"AnimationOfUnknownSemantic", withAnimations(animation("a", "n/t", "count='2'", "COLOR"), moving)},
        {"AnimationOfLowerCaseSemantic", withAnimations(animation("a", "n/t", "count='2'", "output"), moving)},
        {"AnimationOfNamesAsTimes", withAnimations(animation("a", "n/t", "count='2'", "INPUT", "Name_array"), moving)},
        {"AnimationOfNames", withAnimations(animation("a", "n/t", "count='2'", "INTERPOLATION", "Name_array"), moving)},
        {"AnimationOfNamesInPairs",
         withAnimations(animation("a", "n/t", "count='1' stride='2'", "INTERPOLATION", "Name_array"), moving)},
        {"AnimationBeyondItsArray", withAnimations(animation("a", "n/t", "count='3'"), moving)},
        {"AnimationOfManyRecords", withAnimations(animation("a", "n/t", "count='4000000000'"), moving)},
        {"AnimationOfNoRecords", withAnimations(animation("a", "n/t", "count='0' stride='0'"), moving)},
        {"AnimationWithoutStride", withAnimations(animation("a", "n/t", "count='2'", "OUT_TANGENT"), moving)},
        {"AnimationOfLightIsLost", withAnimations(animation("a", "lamp/color"), moving)},
        {"NestedAnimation", withAnimations("<animation>" + animation("a", "n/t") + "</animation>", moving)},
        {"TwoLibraries", ColladaBuilder("<library_animations>" + animation("a", "n/t") +
                                        "</library_animations>"
                                        "<library_animations>" +
                                        animation("b", "m/t") + "</library_animations>")
                             .addScene(moving + "<node id='m'><scale sid='t'>1 1 1</scale></node>")
                             .text()},
        {"TimesWithoutElement", withAnimations(animation("a", "n/t", "count='2' stride='0'"), moving), false},
        {"NoNameSpace", replaced(plain, "xmlns='http://www.collada.org/2005/11/COLLADASchema'", "")},
        {"NameSpaceOfOnePointFive", replaced(plain, "2005/11", "2008/03"), false},
        {"NameSpaceWithSlash", replaced(plain, "COLLADASchema'", "COLLADASchema/'"), false},
        {"OtherVersion", replaced(plain, "version='1.4.1'", "version='9.9'")},
        {"TruncatedInTheTree", plain.substr(0, plain.find("</translate>")), false},
        {"NoNodes", withNodes(""), false},
        {"OnlyAnInstanceOfANode", withNodes("<node id='n'><instance_node url='#n'/></node>")},
        {"SceneIsANode", replaced(plain, "url='#scene'", "url='#n'"), false},
        {"SceneIsNowhere", replaced(plain, "url='#scene'", "url='#no'"), false},
        {"SceneIsNoReference", replaced(plain, "url='#scene'", "url='#sc[e]ne'"), false},
        {"SceneWithABlank", replaced(plain, "url='#scene'", "url='#scene '"), false},
        {"SceneByFileName", replaced(plain, "url='#scene'", "url='document.dae#scene'")},
        {"NoScene", replaced(plain, "<scene><instance_visual_scene url='#scene'/></scene>", ""), false},
        {"EmptyScene", replaced(plain, "<instance_visual_scene url='#scene'/>", ""), false},
    };
}

class OddDocumentTest : public testing::TestWithParam<OddDocument> {};

TEST_P(OddDocumentTest, LoadsAsAPlainReaderReadsIt)
{
    const TemporaryFile file(GetParam().text);
    const documents::PlainDocument expected = documents::readPlainly(file.path());
    ASSERT_FALSE(expected.leadsElsewhere);
    EXPECT_EQ(expected.outcome == documents::PlainDocument::Outcome::loads, GetParam().loads);
    documents::expectLoadAsRead(file.path(), expected);
}

INSTANTIATE_TEST_SUITE_P(Documents, OddDocumentTest, testing::ValuesIn(oddDocuments()),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
