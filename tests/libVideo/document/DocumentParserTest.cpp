#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/document/ColladaReader.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#ifndef LIBVIDEO_CORPUS
#define LIBVIDEO_CORPUS "" // a folder of further documents
#endif

namespace {

using namespace libVideo;
using namespace testSupport;

using libVideo::detail::ColladaReader;

using Use = std::function<void(domCOLLADA& root)>;

const std::string rootTag = "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>";

std::string whole(const std::string& body)
{
    return rootTag + body + "</COLLADA>";
}

std::string scene(const std::string& nodes, const std::string& end = "</node></visual_scene></library_visual_scenes>")
{
    return whole("<library_visual_scenes><visual_scene id='scene'><node id='n'>" + nodes + end +
                 "<scene><instance_visual_scene url='#scene'/></scene>");
}

// Opens a file in a process of its own, with nothing in between, and makes use of it. @return whether that process came
// to its end, with or without a root, in the processor time that it may take
bool bareModelSurvives(const std::string& path, rlim_t seconds, const Use& use = nullptr);

void expectRefused(const std::string& path)
{
    const LogCapture log;
    Scene scene;
    EXPECT_FALSE(scene.createFromCollada(path.c_str()));
    EXPECT_EQ("Collada file does not exist " + path, log.text());
}

struct DocumentCase : testSupport::Row {
    std::string text;
    rlim_t seconds = 20; ///< what the document model may take before it counts as hanging
};

class DeadlyDocumentTest : public testing::TestWithParam<DocumentCase> {};

TEST_P(DeadlyDocumentTest, EndsTheBareModelAndIsRefused)
{
    const TemporaryFile file(GetParam().text);
    EXPECT_FALSE(bareModelSurvives(file.path(), GetParam().seconds)) << "there is no need to refuse it any more";
    expectRefused(file.path());
}

// What an application may put below a node in its own words.
std::string ownWords(const std::string& content)
{
    return whole("<library_nodes><node id='n'><extra><technique profile='p'>" + content +
                 "</technique></extra></node></library_nodes>");
}

std::string triangles(const std::string& content)
{
    return whole("<library_geometries><geometry id='g'><mesh><triangles>" + content +
                 "</triangles></mesh></geometry></library_geometries>");
}

// Whether the library's reader opens a file.
bool opens(const std::filesystem::path& file)
{
    const SilentDocumentModel silence;
    struct Dae {
        ~Dae() { dae.clear(); }
        std::unique_ptr<ColladaReader> reader = std::make_unique<ColladaReader>(dae);
        DAE dae{&reader->database(), reader.get(), "1.4.1"};
    } model;
    return model.reader->open(file) != nullptr;
}

bool passes(const std::string& text)
{
    const TemporaryFile file(text);
    return opens(file.path());
}

bool bareModelSurvives(const std::string& path, rlim_t seconds, const Use& use)
{
    const pid_t child = fork();
    if (child == 0) {
        const rlimit time{seconds, seconds};
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CPU, &time);
        setrlimit(RLIMIT_CORE, &noCore);
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        {
            DAE dae(nullptr, nullptr, "1.4.1");
            domCOLLADA* const root = daeSafeCast<domCOLLADA>(dae.open(path));
            if (root != nullptr && use) {
                use(*root);
            }
        }
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// --- What the document model does not survive.

std::string unfoldingEntities()
{
    std::string declarations = "<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 12; ++i) {
        const std::string below = "&e" + std::to_string(i - 1) + ";";
        declarations += "<!ENTITY e" + std::to_string(i) + " '" + repeated(below, 10) + "'>";
    }
    return "<!DOCTYPE COLLADA [" + declarations + "]>" + whole("<library_nodes name='&e11;'/>");
}

INSTANTIATE_ROWS(
    Documents, DeadlyDocumentTest, {"RootScene", "<scene/>"}, {"RootAsset", "<asset/>"}, {"RootExtra", "<extra/>"},
    {"RootLibrary", "<library_geometries/>"}, {"TranslateInTranslate", scene("<translate><translate/></translate>")},
    {"PInP", triangles("<p><p/></p>")},
    {"FloatArrayInFloatArray", whole("<library_geometries><geometry><mesh><source><float_array><float_array/>"
                                     "</float_array></source></mesh></geometry></library_geometries>")},
    {"TypeOfAFieldOfView",
     whole("<library_cameras><camera><optics><technique_common><perspective><xfov><TargetableFloat/></xfov>"
           "</perspective></technique_common></optics></camera></library_cameras>")},
    {"TypeOfAnInput", whole("<library_geometries><geometry><mesh><vertices><input><InputLocal/></input>"
                            "</vertices></mesh></geometry></library_geometries>")},
    {"PInPInOwnWords", ownWords("<p><p/></p>")}, {"PInPDeepInOwnWords", ownWords("<x><p><p/></p></x>")},
    {"TypeInItself", ownWords("<TargetableFloat><TargetableFloat/></TargetableFloat>")},
    {"AnyInOwnWords", ownWords("<x><any/></x>")}, {"AnyInAny", ownWords("<any><any/></any>")},
    {"LongTagInOwnWords", ownWords("<" + std::string(1'000'000, 'x') + "/>")},
    {"DeepNodes",
     whole("<library_nodes>" + repeated("<node>", 200'000) + repeated("</node>", 200'000) + "</library_nodes>")},
    {"CutInSomethingUnknown", rootTag + "<library_geometries><unknown><x>", 2},
    {"CutInAnUnknownTag", rootTag + "<library_geometries><unknown><x a='", 2},
    {"UnfoldingEntities", unfoldingEntities(), 2},
    {"ManyParentSteps", whole("<scene><instance_visual_scene url='" + repeated("a/../", 200'000) + "'/></scene>"), 2},
    {"ManyParentStepsInText",
     whole("<library_images><image><init_from>" + repeated("a/../", 400'000) + "</init_from></image></library_images>"),
     2});

// --- What it opens, and does not survive to be asked for.

std::string withEffect(const std::string& url, const std::string& newparams)
{
    return whole(
        "<library_materials><material id='m'><instance_effect url='" + url + "'/></material></library_materials>" +
        "<library_effects><effect id='e'><profile_COMMON>" + newparams +
        "<technique sid='common'><blinn><diffuse><texture texture='loop' texcoord='UV'/></diffuse></blinn>"
        "</technique></profile_COMMON></effect></library_effects>"
        "<library_geometries><geometry id='g'><mesh/></geometry></library_geometries>"
        "<library_visual_scenes><visual_scene id='scene'><node id='n'><instance_geometry url='#g'><bind_material>"
        "<technique_common><instance_material symbol='s' target='#m'/></technique_common></bind_material>"
        "</instance_geometry></node></visual_scene></library_visual_scenes>"
        "<scene><instance_visual_scene url='#scene'/></scene>");
}

void expectLoaded(const std::string& path)
{
    const LogCapture log;
    Scene scene;
    EXPECT_TRUE(scene.createFromCollada(path.c_str())) << log.text();
}

TEST(DeadlyReferenceTest, NumbersInAFileEndTheBareModelAndLeadNowhere)
{
    const TemporaryFile file(withEffect("numbers.raw#e", ""));
    std::ofstream(file.folder() / "numbers.raw") << "01234567";
    const Use follow = [](domCOLLADA& root) {
        root.getLibrary_materials_array()[0]->getMaterial_array()[0]->getInstance_effect()->getUrl().getElement();
    };
    EXPECT_FALSE(bareModelSurvives(file.path(), 20, follow)) << "there is no need to keep it away any more";
    expectLoaded(file.path());
}

TEST(DeadlyReferenceTest, LoopOfNamesEndsTheBareModelAndIsNotFollowed)
{
    const TemporaryFile file(withEffect("#e", "<extra><technique profile='p'><newparam sid='loop'><SIDREF>loop</SIDREF>"
                                              "</newparam></technique></extra>"));
    const Use follow = [](domCOLLADA& root) {
        domFx_profile_abstract* const profile =
            root.getLibrary_effects_array()[0]->getEffect_array()[0]->getFx_profile_abstract_array()[0];
        daeSIDResolver(profile, "loop").getElement();
    };
    EXPECT_FALSE(bareModelSurvives(file.path(), 20, follow)) << "there is no need to keep it away any more";
    expectLoaded(file.path());
}

// --- What it does survive, although it looks much the same.

class HarmlessDocumentTest : public testing::TestWithParam<DocumentCase> {};

TEST_P(HarmlessDocumentTest, IsOpenedByTheBareModelAndPasses)
{
    const TemporaryFile file(GetParam().text);
    EXPECT_TRUE(bareModelSurvives(file.path(), GetParam().seconds));
    EXPECT_TRUE(passes(GetParam().text));
}

INSTANTIATE_ROWS(
    Documents, HarmlessDocumentTest, {"OtherElementInP", triangles("<p><foo><p/></foo>0 1 2</p>")},
    {"PInPOfSomethingUnknown", whole("<library_geometries><unknown><p><p/></p></unknown></library_geometries>")},
    {"MeshInMesh", whole("<library_geometries><geometry><mesh><mesh><p/></mesh></mesh></geometry>"
                         "</library_geometries>")},
    {"SourceInSource", whole("<library_geometries><geometry><mesh><source><source/></source></mesh></geometry>"
                             "</library_geometries>")},
    {"LibraryInLibrary", whole("<library_nodes><library_nodes/></library_nodes>")},
    {"ColladaInCollada", whole("<COLLADA><asset/></COLLADA>")},
    {"TypeOfANewparam",
     whole("<library_effects><effect id='e'><profile_COMMON><newparam sid='s'><common_newparam_type/></newparam>"
           "</profile_COMMON></effect></library_effects>")},
    {"AnyAsFirstOwnWord", ownWords("<any><x/></any>")}, {"AnyElsewhere", whole("<any><any/></any>")},
    {"PrefixedAny", ownWords("<x><x:any/></x>")},
    {"TagOf127BytesInOwnWords", ownWords("<" + std::string(127, 'x') + "/>")},
    {"PrefixedTagOf127BytesInOwnWords", ownWords("<p:" + std::string(125, 'x') + "/>")},
    {"LongTagOfSomethingUnknown", whole("<" + std::string(100'000, 'x') + "/>")},
    {"LongAttributeNameInOwnWords", ownWords("<x " + std::string(100'000, 'y') + "='1'/>")},
    {"Comments",
     "<?xml version='1.0'?><!-- <x> --><?pi <y> ?>" + whole("<!-- <z> --><![CDATA[<p>]]>") + " <!-- end -->\n<?pi?> "},
    {"Entities", whole("<library_nodes name='&lt;&amp;&#65;&#x42;&quot;&apos;&gt;'/>")});

// --- The limits.

TEST(DocumentParserTest, RootHasToBeCollada)
{
    EXPECT_TRUE(passes("<COLLADA/>"));
    EXPECT_FALSE(passes("<collada/>"));
    EXPECT_FALSE(passes("<c:COLLADA xmlns:c='http://www.collada.org/2005/11/COLLADASchema'/>"));
    EXPECT_FALSE(passes("<html/>"));
    EXPECT_FALSE(passes(""));
    EXPECT_FALSE(passes(" \n"));
}

TEST(DocumentParserTest, TagNamesInOwnWordsEndAt127Bytes)
{
    const std::string prefixed = "<p:" + std::string(126, 'x') + "/>"; // 128 in all
    EXPECT_TRUE(passes(ownWords("<" + std::string(127, 'x') + "/>")));
    EXPECT_FALSE(passes(ownWords("<" + std::string(128, 'x') + "/>")));
    EXPECT_FALSE(passes(ownWords("<y><" + std::string(128, 'x') + "/></y>")));
    EXPECT_FALSE(passes(ownWords(prefixed)));
    EXPECT_TRUE(passes(whole(prefixed))) << "passed over by the document model";
    EXPECT_FALSE(passes(ownWords("<" + repeated("\xC3\xA9", 64) + "/>"))) << "64 letters of two bytes";
}

TEST(DocumentParserTest, ElementsNestTo10000Levels)
{
    const auto nested = [](std::size_t levels) { // the root included
        return whole(repeated("<node>", levels - 1) + repeated("</node>", levels - 1));
    };
    EXPECT_TRUE(passes(nested(10'000)));
    EXPECT_FALSE(passes(nested(10'001)));
}

TEST(DocumentParserTest, NodesNestedTo10000LevelsLoad)
{
    constexpr std::size_t nodes = 10'000 - 3; // below the root, the library and the scene
    const TemporaryFile file(whole("<library_visual_scenes><visual_scene id='scene'>" + repeated("<node>", nodes) +
                                   repeated("</node>", nodes) + "</visual_scene></library_visual_scenes>" +
                                   "<scene><instance_visual_scene url='#scene'/></scene>"));
    Scene scene;
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
}

// A document with a start tag of that many bytes, at a distance from the start.
std::string withTagOf(std::size_t size, std::size_t distance, const std::string& end)
{
    const std::string begin = "<library_nodes name='";
    return rootTag + std::string(distance, ' ') + begin + std::string(size - begin.size() - 1 - end.size(), 'x') + "'" +
           end + (end.find('/') == std::string::npos ? "</library_nodes>" : "") + "</COLLADA>";
}

TEST(DocumentParserTest, StartTagsEndAt1048576Bytes)
{
    for (const std::string end : {">", "/>", " \n\t>", "  />"}) {
        for (const std::size_t distance : {0u, 1u, 5'000u, 16'000u}) {
            EXPECT_TRUE(passes(withTagOf(1'048'576, distance, end))) << distance << end;
            EXPECT_FALSE(passes(withTagOf(1'048'577, distance, end))) << distance << end;
        }
    }
    EXPECT_FALSE(passes(withTagOf(50'000'000, 0, ">")));
}

TEST(DocumentParserTest, LargeTagsDoNotAddUp)
{
    const std::string tag = "<library_nodes name='" + std::string(1'000'000, 'x') + "'/>";
    EXPECT_TRUE(passes(whole(tag + tag + tag)));
}

std::string attributes(std::size_t count)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += " a" + std::to_string(i) + "=''";
    }
    return all;
}

TEST(DocumentParserTest, StartTagsHoldUpTo1024Attributes)
{
    EXPECT_TRUE(passes(whole("<library_nodes" + attributes(1'024) + "/>")));
    EXPECT_FALSE(passes(whole("<library_nodes" + attributes(1'025) + "/>")));
    EXPECT_FALSE(passes(whole("<library_nodes" + attributes(80'000) + "/>")))
        << "which the parser would compare in pairs";
}

TEST(DocumentParserTest, QuotesInAValueAreNoAttributes)
{
    EXPECT_TRUE(passes(whole("<library_nodes name='" + std::string(500'000, '"') + "'/>")));
    EXPECT_TRUE(passes(whole("<library_nodes name=\"" + std::string(500'000, '\'') + "\"/>")));
    EXPECT_TRUE(passes(whole("<library_nodes name='" + std::string(500'000, '=') + "'/>")));
}

TEST(DocumentParserTest, NamespacesInScopeEndAt1024)
{
    const auto declared = [](std::size_t count, const std::string& start) {
        std::string all;
        for (std::size_t i = 0; i < count; ++i) {
            all += " xmlns:" + start + std::to_string(i) + "='u'";
        }
        return all;
    };
    EXPECT_TRUE(passes("<COLLADA" + declared(1'024, "a") + "/>"));
    EXPECT_FALSE(passes("<COLLADA" + declared(1'025, "a") + "/>"));
    const auto nested = [&](std::size_t inner) {
        return "<COLLADA" + declared(1'000, "a") + "><asset" + declared(inner, "b") + "/><asset" +
               declared(inner, "c") + "/></COLLADA>";
    };
    EXPECT_TRUE(passes(nested(24))) << "those of a sibling are out of scope";
    EXPECT_FALSE(passes(nested(25)));
}

TEST(DocumentParserTest, ReferencesStepUpTo256Times)
{
    const auto shows = [](std::size_t steps) {
        return whole("<scene><instance_visual_scene url='" + repeated("a/../", steps) + "b.dae#c'/></scene>");
    };
    EXPECT_TRUE(passes(shows(256)));
    EXPECT_FALSE(passes(shows(257)));
    const auto image = [](std::size_t steps) {
        return whole("<library_images><image><init_from>" + repeated("../", steps) +
                     "a.png</init_from></image>"
                     "<image><init_from>../a.png</init_from></image></library_images>");
    };
    EXPECT_TRUE(passes(image(256)));
    EXPECT_FALSE(passes(image(257)));
}

TEST(DocumentParserTest, TextThatIsNoReferenceMayHoldAnyDots)
{
    EXPECT_TRUE(passes(whole("<library_nodes name='" + repeated("a..b", 1'000) + "'/>")));
    EXPECT_TRUE(passes(whole("<library_nodes name='" + repeated(".../", 1'000) + "'/>")));
    EXPECT_TRUE(passes(whole("<library_nodes name='" + repeated("./", 1'000) + "'/>")));
    EXPECT_TRUE(
        passes(whole("<asset><contributor><comments>" + repeated("../", 1'000) + "</comments></contributor></asset>")));
}

TEST(DocumentParserTest, DocumentTypeIsRefused)
{
    EXPECT_FALSE(passes("<!DOCTYPE COLLADA>" + whole("")));
    EXPECT_FALSE(passes("<!DOCTYPE COLLADA SYSTEM 'collada.dtd'>" + whole("")));
    EXPECT_FALSE(passes("<!DOCTYPE COLLADA [<!ENTITY a 'b'>]>" + whole("")));
}

TEST(DocumentParserTest, DocumentIsXmlToItsLastByte)
{
    const std::string text = "<?xml version='1.0'?>" + whole("<asset><unit name='m' meter='1'/></asset>");
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(passes(text.substr(0, size))) << size;
    }
    EXPECT_TRUE(passes(text));
    EXPECT_TRUE(passes(text + " \n"));
    EXPECT_FALSE(passes(text + "x"));
    EXPECT_FALSE(passes(text + "<asset/>"));
    EXPECT_FALSE(passes(text + std::string(1, '\0')));
    EXPECT_FALSE(passes(" " + text)) << "a declaration stands first";
}

TEST(DocumentParserTest, XmlThatIsNotWellFormedIsRefused)
{
    for (const char* const body : {"<a></b>", "<a b='1' b='2'/>", "<a b=1/>", "<a b='<'/>", "&unknown;", "&#0;", "<a",
                                   "\x01", "\xFF", "<!-- -- -->", "]]>", "<1/>"}) {
        EXPECT_FALSE(passes(whole(body))) << body;
    }
}

TEST(DocumentParserTest, AngleBracketsInValuesEndNoTagWhereverTheyStand)
{
    const std::string tag = "<node name='a>b' sid=\"c>d'>\"></node>";
    for (std::size_t distance = 16'384 - 80; distance < 16'384 + 80; ++distance) { // over the seam of two pieces
        EXPECT_TRUE(passes(whole("<!--" + std::string(distance - rootTag.size(), 'x') + "-->" + tag))) << distance;
    }
    EXPECT_TRUE(passes(whole("<node name='" + repeated(">", 200'000) + "'/>")));
}

// A long list of numbers with something in it, at a distance from the start of the document.
std::string listWith(const std::string& oddity, std::size_t distance)
{
    const std::string start = rootTag + "<library_geometries><geometry><mesh><source><float_array>";
    std::string list;
    while (list.size() < 40'000) {
        list += "0.125 -1e3\n\t";
    }
    list.replace(distance - start.size(), oddity.size(), oddity);
    return start + list + "</float_array></source></mesh></geometry></library_geometries></COLLADA>";
}

TEST(DocumentParserTest, NothingHidesInLongLists)
{
    const std::vector<std::string> faults = {"<",    "</p>", "&",    "&x;",  "]]>",  std::string(1, '\0'),
                                             "\x01", "\x1F", "\xFF", "\xC3", "\xA9", "<p></q>"};
    // Around the seams of the pieces in which a document is looked at.
    for (const std::size_t seam : {4'096u, 8'192u, 16'384u, 20'480u, 32'768u}) {
        for (std::size_t distance = seam - 8; distance < seam + 8; ++distance) {
            for (const std::string& fault : faults) {
                EXPECT_FALSE(passes(listWith(fault, distance))) << testing::PrintToString(fault) << " at " << distance;
            }
            for (const std::string fine : {"\xC3\xA9", "&lt;", "]", "]]", ">", "<!-- -->", "<x/>", "\x7F"}) {
                EXPECT_TRUE(passes(listWith(fine, distance))) << testing::PrintToString(fine) << " at " << distance;
            }
        }
    }
}

TEST(DocumentParserTest, ReferencesInLongTextsAreCounted)
{
    const std::string steps = repeated("../", 257);
    for (const std::size_t distance : {0u, 4'000u, 5'000u, 20'000u}) {
        EXPECT_FALSE(passes(whole("<library_images><image><init_from>" + std::string(distance, 'a') + "/" + steps +
                                  std::string(9'000, 'b') + "</init_from></image></library_images>")));
    }
}

TEST(DocumentParserTest, EncodingsPass)
{
    const std::string body = whole("<library_nodes name='" + std::string(20'000, 'x') + "'/>");
    EXPECT_TRUE(passes("\xEF\xBB\xBF" + body));
    EXPECT_TRUE(passes(inUtf16("<?xml version='1.0' encoding='UTF-16'?>" + body, true)));
    EXPECT_TRUE(passes(inUtf16("<?xml version='1.0' encoding='UTF-16'?>" + body, false)));
    EXPECT_TRUE(passes("<?xml version='1.0' encoding='ISO-8859-1'?>" + whole("<library_nodes name='\xE9'/>")));
    EXPECT_FALSE(passes("<?xml version='1.0' encoding='no-such-thing'?>" + body));
}

// What cannot be decoded halts the parser, which has nothing to say about the form of the document then.
TEST(DocumentParserTest, DocumentThatCannotBeDecodedToItsEndIsRefused)
{
    const std::string japanese = "<?xml version='1.0' encoding='Shift_JIS'?>";
    const std::string ascii = "<?xml version='1.0' encoding='US-ASCII'?>";
    EXPECT_TRUE(passes(japanese + whole("<library_nodes name='\x93\xFA\x96\x7B'/>")));
    for (const std::size_t length : {10u, 600u, 5'000u, 40'000u}) {
        const std::string text(length, 'a');
        EXPECT_FALSE(passes(japanese + rootTag + "<asset/><unknown><!-- " + text + "\xFF\xFF" + text)) << length;
        EXPECT_FALSE(passes(japanese + rootTag + "<asset/><unknown a='" + text + "\xFF\xFF" + text)) << length;
        EXPECT_FALSE(passes(japanese + whole("<unknown>" + text + "\xFF\xFF" + text + "</unknown>"))) << length;
        EXPECT_FALSE(passes(ascii + whole("") + std::string(length, '\xE9'))) << length;
        EXPECT_FALSE(passes(japanese + whole("") + text + "\x93")) << length;
    }
    EXPECT_FALSE(passes(inUtf16("<?xml version='1.0' encoding='UTF-16'?>" + whole(""), true) + "<")) << "half a letter";
}

TEST(DocumentParserTest, LimitsHoldInUtf16)
{
    EXPECT_TRUE(passes(inUtf16(withTagOf(1'048'576, 0, ">"), true)));
    EXPECT_FALSE(passes(inUtf16(withTagOf(1'048'577, 0, ">"), true)));
    EXPECT_FALSE(passes(inUtf16(triangles("<p><p/></p>"), true)));
}

TEST(DocumentParserTest, MissingFileDoesNotOpen)
{
    EXPECT_FALSE(opens("/missing/document.dae"));
}

TEST(DocumentParserTest, IsSilent)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(passes(whole("<a></b>&x;")));
    EXPECT_FALSE(passes("\xFF\xFE\x01"));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

} // namespace
