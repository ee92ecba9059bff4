#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/VisualScene.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace libVideo;
using namespace testSupport;

PRIVATE_MEMBER(sceneVisualScene, VisualScene Scene::*, &Scene::m_visualScene)
PRIVATE_MEMBER(scenePool, SceneResources Scene::*, &Scene::m_resources)
PRIVATE_MEMBER(sceneDae, DAE Scene::*, &Scene::m_dae)
PRIVATE_MEMBER(sceneReservedWord, std::uint64_t Scene::*, &Scene::m_reserved)
PRIVATE_MEMBER(sceneUpTransform, Matrix4 Scene::*, &Scene::m_upTransform)
PRIVATE_MEMBER(sceneTransformToYUP, void (Scene::*)(domUpAxisType), &Scene::transformToYUP)
PRIVATE_MEMBER(visualSceneName, vesk::String VisualScene::*, &VisualScene::m_name)
PRIVATE_MEMBER(visualSceneResources, libVideo::SceneResourcesLink VisualScene::*, &VisualScene::m_resources)
PRIVATE_MEMBER(visualSceneNodeList, vesk::Array<libVideo::NodeHandle> VisualScene::*, &VisualScene::m_nodeList)
PRIVATE_MEMBER(visualSceneNodeTable, libVideo::NodeTable VisualScene::*, &VisualScene::m_nodeTable)

// Destroyed in reverse order: the document, the pool, the scene.
TEST(SceneTest, MembersStandInTheirOrder)
{
    const Scene scene;
    expectAscending({&sceneVisualScene(scene), &scenePool(scene), &sceneDae(scene), &sceneReservedWord(scene),
                     &sceneUpTransform(scene)});
}

TEST(SceneTest, BothAccessorsGiveTheSameScene)
{
    Scene scene;
    EXPECT_EQ(&sceneVisualScene(scene), &scene.visualScene());
    EXPECT_EQ(&scene.visualScene(), &std::as_const(scene).visualScene());
}

// The texts of small documents.

std::string whole(const std::string& body, const std::string& asset = std::string())
{
    return "<?xml version='1.0' encoding='utf-8'?>"
           "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>"
           "<asset><created>2026-01-01T00:00:00Z</created><modified>2026-01-01T00:00:00Z</modified>" +
           asset + "</asset>" + body + "</COLLADA>";
}

// Two libraries, each with a failed and a complete curve. The latter moves "a/t" from (10, 20, 30) at second 1 to (30,
// 40, 50) at second 3.
const std::string animations =
    "<library_animations><animation/></library_animations><library_animations><animation>"
    "<source id='times'><float_array id='times-array' count='2'>1 3</float_array><technique_common>"
    "<accessor source='#times-array' count='2' stride='1'/></technique_common></source>"
    "<source id='values'><float_array id='values-array' count='6'>10 20 30 30 40 50.5</float_array><technique_common>"
    "<accessor source='#values-array' count='2' stride='3'/></technique_common></source>"
    "<sampler id='sampler'><input semantic='INPUT' source='#times'/><input semantic='OUTPUT' source='#values'/>"
    "</sampler><channel source='#sampler' target='a/t'/></animation></library_animations>";

const std::string nodes = "<library_visual_scenes><visual_scene id='scene' name='Stage'>"
                          "<node id='a'><translate sid='t'>1.5 2.25 -3</translate>"
                          "<node id='b' name='B'><translate>10 20 30</translate></node></node>"
                          "</visual_scene></library_visual_scenes>";

const std::string showsScene = "<scene><instance_visual_scene url='#scene'/></scene>";

const std::string good = whole(animations + nodes + showsScene);

const libVideo::Node& firstNode(const Scene& scene)
{
    return *scene.visualScene().root().children()[0];
}

bool load(Scene& scene, const std::string& path)
{
    return scene.createFromCollada(path.c_str());
}

// Expects the scene to be empty, and all of its functions to be callable.
void expectNothingToShow(const Scene& scene);

// The content of the good document.
void expectGood(Scene& scene);

// Expects a path to be refused as one that cannot be opened, and the scene to stay empty.
void expectRefused(const std::string& path);

/// Restores the working directory.
class WorkingDirectory {
public:
    WorkingDirectory() : m_before(std::filesystem::current_path()) {}
    ~WorkingDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_before, ignored);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

    static void change(const std::filesystem::path& folder) { std::filesystem::current_path(folder); }

private:
    std::filesystem::path m_before;
};

/// Sets an environment variable; the destructor restores it.
class Environment {
public:
    Environment(const char* name, const char* value) : m_name(name)
    {
        const char* const before = std::getenv(name);
        if (before != nullptr) {
            m_before = before;
        }
        setenv(name, value, 1);
    }
    ~Environment()
    {
        if (m_before) {
            setenv(m_name, m_before->c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_before;
};

/// Sets the process-wide locale to one with a decimal comma; the destructor restores it.
class CommaLocale {
public:
    CommaLocale() : m_before(std::setlocale(LC_ALL, nullptr))
    {
        uselocale(LC_GLOBAL_LOCALE); // another test may have set one for this thread
        for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8"}) {
            if (take(name)) {
                return;
            }
        }
        // A locale made for the test, if none is installed.
        m_folder = std::make_unique<TemporaryFile>("", "empty");
        const std::string folder = m_folder->folder().string();
        const std::string command = "localedef -i de_DE -f ISO-8859-1 '" + folder + "/comma' >/dev/null 2>&1";
        if (std::system(command.c_str()) == 0) {
            const Environment place("LOCPATH", folder.c_str());
            take("comma");
        }
    }
    ~CommaLocale() { std::setlocale(LC_ALL, m_before.c_str()); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    bool isAvailable() const { return m_isAvailable; }

    /// Whether numbers are written with a comma at present.
    static bool isPresent() { return *std::localeconv()->decimal_point == ','; }

private:
    bool take(const char* name)
    {
        m_isAvailable = std::setlocale(LC_ALL, name) != nullptr && isPresent();
        return m_isAvailable;
    }

    std::string m_before;
    std::unique_ptr<TemporaryFile> m_folder;
    bool m_isAvailable = false;
};

/// Ends the test program if its scope takes longer: opening a pipe without a writer would block forever.
class Deadline {
public:
    explicit Deadline(unsigned seconds) { alarm(seconds); }
    ~Deadline() { alarm(0); }
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;
};

TEST(SceneTest, NewSceneIsEmpty)
{
    Scene scene;
    expectNothingToShow(scene);
    EXPECT_EQ(0, sceneDae(scene).getDocCount());
    const SceneResources& pool = scenePool(scene);
    EXPECT_EQ(0u, pool.cameraList.size() + pool.pointLightList.size() + pool.spotLightList.size());
    EXPECT_EQ(0u, pool.animationList.size());
    EXPECT_EQ(8u, pool.cameraList.capacity());
    EXPECT_EQ(8u, pool.pointLightList.capacity());
    EXPECT_EQ(8u, pool.spotLightList.capacity());
    EXPECT_EQ(8u, pool.animationList.capacity());
}

TEST(SceneTest, GoodDocumentLoads)
{
    const LogCapture log("libVideo.scene");
    const TemporaryFile file(good);
    Scene scene;
    EXPECT_TRUE(load(scene, file.path()));
    expectGood(scene);
    EXPECT_STREQ("Stage", visualSceneName(scene.visualScene()).data());
    EXPECT_EQ(1, sceneDae(scene).getDocCount());
    EXPECT_EQ(0u, sceneReservedWord(scene));
    EXPECT_EQ(zero, elements(sceneUpTransform(scene)));
    EXPECT_EQ("", log.text());
}

TEST(SceneTest, HostFoldsAndAsksForATime)
{
    const TemporaryFile file(good);
    Scene scene;
    const LogCapture quiet;
    ASSERT_TRUE(load(scene, file.path()));
    const libVideo::NodeLink a = scene.visualScene().root().children()[0];

    scene.visualScene().transform();
    EXPECT_EQ(translated(11.5f, 22.25f, 27.0f), elements(std::as_const(*a->children()[0]).transform()));
    EXPECT_EQ(translated(20.0f, 30.0f, 40.25f), elements(a->transform(2.0)));
}

TEST(SceneTest, LoadNeedsTheFileNoLongerThanTheCall)
{
    auto file = std::make_unique<TemporaryFile>(good);
    Scene scene;
    const LogCapture quiet;
    ASSERT_TRUE(load(scene, file->path()));
    file.reset();
    expectGood(scene);
}

TEST(SceneTest, AnimationFaultsDoNotFailTheLoad)
{
    const LogCapture log;
    const TemporaryFile file(good);
    Scene scene;
    EXPECT_TRUE(load(scene, file.path()));

    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ("libVideo.animation", lines[0].channel);
    EXPECT_EQ("Cannot create an animation without a channel element.", lines[0].words());
    EXPECT_EQ("libVideo.visualScene", lines[1].channel);
    EXPECT_EQ("Unable to find the animation's target node with id: ", lines[1].words());
}

TEST(SceneTest, LoadTracesItsScope)
{
    const TemporaryFile file(good);
    Scene scene;
    const LogCapture log("libVideo.scene");
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    ASSERT_TRUE(load(scene, file.path()));

    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(vesk::LoggerPriority::PRIORITY_TRACE, lines[0].priority);
    EXPECT_EQ(0u, lines[0].text.find("> Scene::createFromCollada (libVideo/SceneGraph/Scene:"));
    EXPECT_EQ(vesk::LoggerPriority::PRIORITY_TRACE, lines[1].priority);
    EXPECT_EQ("< Scene::createFromCollada", lines[1].text);
}

TEST(SceneTest, TraceEndsAtARefusalToo)
{
    Scene scene;
    const LogCapture log("libVideo.scene");
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    EXPECT_FALSE(load(scene, "/missing/document.dae"));

    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ("Collada file does not exist /missing/document.dae", lines[1].words());
    EXPECT_EQ("< Scene::createFromCollada", lines[2].text);
}

// A document that opens but has no scene: channel and text of the message, with FILE for the path, and whether
// animations were loaded.
struct FailureCase : Row {
    std::string body;
    const char* channel;
    std::string words;
    unsigned pooled;
};

std::string withPath(std::string text, const std::string& path)
{
    const std::size_t place = text.find("FILE");
    return place == std::string::npos ? text : text.replace(place, 4, path);
}

class SceneFailureTest : public testing::TestWithParam<FailureCase> {
protected:
    TemporaryFile m_file{whole(animations + GetParam().body)};
};

TEST_P(SceneFailureTest, IsLoggedAndStaysWhereItGot)
{
    Scene scene;
    {
        const LogCapture all;
        testing::internal::CaptureStdout();
        const bool isLoaded = load(scene, m_file.path());
        EXPECT_EQ("", testing::internal::GetCapturedStdout());
        EXPECT_FALSE(isLoaded);
        std::vector<LogLine> lines = all.lines();
        if (GetParam().pooled > 0) {
            ASSERT_EQ(2u, lines.size());
            EXPECT_EQ("libVideo.animation", lines[0].channel) << "the pool fills first";
        } else {
            ASSERT_EQ(1u, lines.size());
        }
        EXPECT_EQ(GetParam().channel, lines.back().channel);
        EXPECT_EQ(vesk::LoggerPriority::PRIORITY_ERROR, lines.back().priority);
        EXPECT_EQ(withPath(GetParam().words, m_file.path()), lines.back().words());
    }
    expectNothingToShow(scene);
    EXPECT_EQ(GetParam().pooled, scenePool(scene).animationList.size());
    EXPECT_EQ(1, sceneDae(scene).getDocCount());
    scene.visualScene().transform();
}

TEST_P(SceneFailureTest, MayTryAgain)
{
    const TemporaryFile file(good, "good.dae");
    const LogCapture quiet;
    Scene scene;
    EXPECT_FALSE(load(scene, m_file.path()));
    EXPECT_FALSE(load(scene, m_file.path()));
    EXPECT_EQ(GetParam().pooled, scenePool(scene).animationList.size()) << "the pool starts anew";
    EXPECT_TRUE(load(scene, file.path()));
    expectGood(scene);
}

INSTANTIATE_ROWS(Documents, SceneFailureTest,
                 {"NoScene", nodes, "libVideo.scene", "Collada file does not have a scene definition FILE", 0},
                 {"EmptyScene", nodes + "<scene/>", "libVideo.scene", "Scene does not have a visual scene", 2},
                 {"OnlyPhysics", nodes + "<scene><instance_physics_scene url='#scene'/><extra/></scene>",
                  "libVideo.scene", "Scene does not have a visual scene", 2},
                 {"UrlOfNothing", nodes + "<scene><instance_visual_scene url='#nothing'/></scene>", "libVideo.scene",
                  "Url file:FILE#nothing does not point to a collada element", 2},
                 {"UrlOfOtherCase", nodes + "<scene><instance_visual_scene url='#Scene'/></scene>", "libVideo.scene",
                  "Url file:FILE#Scene does not point to a collada element", 2},
                 {"NoUrl", nodes + "<scene><instance_visual_scene/></scene>", "libVideo.scene",
                  "Url file:FILE does not point to a collada element", 2},
                 {"UrlOfANode", nodes + "<scene><instance_visual_scene url='#a'/></scene>", "libVideo.scene",
                  "daeElement is not a domVisual_scene element", 2},
                 {"UrlOfASource", nodes + "<scene><instance_visual_scene url='#times'/></scene>", "libVideo.scene",
                  "daeElement is not a domVisual_scene element", 2},
                 {"SceneWithoutNodes",
                  "<library_visual_scenes><visual_scene id='scene' name='Stage'/></library_visual_scenes>" + showsScene,
                  "libVideo.visualScene", "Visual scene has no visual nodes", 2});

TEST(SceneTest, SceneOfTheUrlIsShownNotTheFirst)
{
    const TemporaryFile file(
        whole("<library_visual_scenes><visual_scene id='first'><node id='x'/></visual_scene></library_visual_scenes>" +
              nodes + showsScene));
    Scene scene;
    ASSERT_TRUE(load(scene, file.path()));
    EXPECT_STREQ("a", firstNode(scene).id().data());
}

TEST(SceneTest, SecondLoadIsRefusedAndChangesNothing)
{
    const TemporaryFile file(good);
    const TemporaryFile other(whole("<library_visual_scenes><visual_scene id='scene' name='Other'><node id='x'/>"
                                    "</visual_scene></library_visual_scenes>" +
                                    showsScene));
    Scene scene;
    {
        const LogCapture quiet;
        ASSERT_TRUE(load(scene, file.path()));
    }
    const libVideo::Node* const a = &firstNode(scene);
    const libVideo::Animation* const curve = scenePool(scene).animationList[1].get();
    for (const std::string& path : {other.path(), file.path(), std::string("/missing.dae"), std::string()}) {
        const LogCapture log;
        EXPECT_FALSE(load(scene, path));
        expectErrors("libVideo.scene", "Scene is already loaded", log);
        EXPECT_EQ(1, sceneDae(scene).getDocCount());
        EXPECT_EQ(a, &firstNode(scene));
        EXPECT_EQ(curve, scenePool(scene).animationList[1].get());
        EXPECT_STREQ("Stage", visualSceneName(scene.visualScene()).data());
        expectGood(scene);
    }
    EXPECT_EQ(translated(20.0f, 30.0f, 40.25f), elements(scene.visualScene().root().children()[0]->transform(2.0)));
}

TEST(SceneTest, RefusedPathMayBeFollowedByAnother)
{
    const TemporaryFile file(good);
    const LogCapture quiet;
    Scene scene;
    EXPECT_FALSE(load(scene, file.path() + ".missing"));
    EXPECT_FALSE(load(scene, ""));
    EXPECT_TRUE(load(scene, file.path()));
    expectGood(scene);
}

TEST(SceneTest, UpTransformIsPatchedByXUp)
{
    Scene scene;
    sceneTransformToYUP(scene, UPAXISTYPE_X_UP);
    EXPECT_EQ((Elements{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), elements(sceneUpTransform(scene)));
}

TEST(SceneTest, UpTransformIsPatchedByZUp)
{
    Scene scene;
    sceneTransformToYUP(scene, UPAXISTYPE_Z_UP);
    EXPECT_EQ((Elements{0, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 0}), elements(sceneUpTransform(scene)));
}

TEST(SceneTest, UpTransformIsTheIdentityForAllOtherAxes)
{
    static_assert(UPAXISTYPE_X_UP == 0 && UPAXISTYPE_Y_UP == 1 && UPAXISTYPE_Z_UP == 2);
    for (const domUpAxisType axis : {UPAXISTYPE_Y_UP, static_cast<domUpAxisType>(3)}) {
        Scene scene;
        sceneUpTransform(scene)[12] = 7.0f;
        sceneTransformToYUP(scene, axis);
        EXPECT_EQ(identity, elements(sceneUpTransform(scene))) << axis;
    }
}

TEST(SceneTest, UpTransformPatchesLeaveTheOtherTwelveElements)
{
    Scene scene;
    Matrix4& matrix = sceneUpTransform(scene);
    for (unsigned i = 0; i < 16; ++i) {
        matrix[i] = static_cast<float>(100 + i);
    }
    sceneTransformToYUP(scene, UPAXISTYPE_X_UP);
    EXPECT_EQ((Elements{0, -1, 102, 103, 1, 0, 106, 107, 108, 109, 110, 111, 112, 113, 114, 115}), elements(matrix));
    sceneTransformToYUP(scene, UPAXISTYPE_Z_UP);
    EXPECT_EQ((Elements{0, -1, 102, 103, 1, 0, -1, 107, 108, 1, 0, 111, 112, 113, 114, 115}), elements(matrix));
}

TEST(SceneTest, UpTransformOverTheIdentityTurnsXToYAndZToMinusY)
{
    Scene first;
    sceneTransformToYUP(first, UPAXISTYPE_Y_UP);
    sceneTransformToYUP(first, UPAXISTYPE_X_UP);
    EXPECT_EQ((Elements{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}), elements(sceneUpTransform(first)));
    Scene second;
    sceneTransformToYUP(second, UPAXISTYPE_Y_UP);
    sceneTransformToYUP(second, UPAXISTYPE_Z_UP);
    EXPECT_EQ((Elements{1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1}), elements(sceneUpTransform(second)));
}

class SceneAssetTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(SceneAssetTest, HasNoEffectOnTheNumbers)
{
    const TemporaryFile file(whole(animations + nodes + showsScene, GetParam().given));
    const LogCapture quiet;
    Scene scene;
    EXPECT_EQ(zero, elements(sceneUpTransform(scene)));
    ASSERT_TRUE(load(scene, file.path()));
    EXPECT_EQ(zero, elements(sceneUpTransform(scene)));
    expectGood(scene);
    scene.visualScene().transform();
    EXPECT_EQ(identity, elements(scene.visualScene().root().transform()));
    EXPECT_EQ(translated(1.5f, 2.25f, -3.0f), elements(firstNode(scene).transform()));
    EXPECT_EQ(translated(11.5f, 22.25f, 27.0f), elements(std::as_const(*firstNode(scene).children()[0]).transform()));
}

INSTANTIATE_ROWS(Assets, SceneAssetTest, {"None", ""}, {"XUp", "<up_axis>X_UP</up_axis>"},
                 {"YUp", "<up_axis>Y_UP</up_axis>"}, {"ZUp", "<up_axis>Z_UP</up_axis>"},
                 {"Centimetres", "<unit name='centimeter' meter='0.01'/><up_axis>Z_UP</up_axis>"});

TEST(SceneTest, DocumentWithoutAssetLoads)
{
    const TemporaryFile file("<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>" + nodes +
                             showsScene + "</COLLADA>");
    Scene scene;
    EXPECT_TRUE(load(scene, file.path()));
}

// A file is opened whatever its name, and the name is shown as given.
class ScenePathTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(ScenePathTest, ExistingFileOpens)
{
    const TemporaryFile file(good, GetParam().given);
    const LogCapture log("libVideo.scene");
    Scene scene;
    EXPECT_TRUE(load(scene, file.path()));
    expectGood(scene);
    EXPECT_EQ("", log.text());
}

TEST_P(ScenePathTest, ExistingFileOpensByARelativePath)
{
    const TemporaryFile file(good, GetParam().given);
    const WorkingDirectory restored;
    WorkingDirectory::change(file.folder());
    const LogCapture quiet;
    Scene scene;
    EXPECT_TRUE(load(scene, GetParam().given));
    expectGood(scene);
}

TEST_P(ScenePathTest, FolderMayHaveTheNameToo)
{
    const TemporaryFile place("", "empty");
    const std::filesystem::path folder = place.folder() / GetParam().given;
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "document.dae", std::ios::binary) << good;
    const LogCapture quiet;
    Scene scene;
    EXPECT_TRUE(load(scene, (folder / "document.dae").string()));
    expectGood(scene);

    const WorkingDirectory restored;
    WorkingDirectory::change(folder);
    Scene relative;
    EXPECT_TRUE(load(relative, "document.dae"));
    expectGood(relative);
}

TEST_P(ScenePathTest, MissingFileIsShownAsGiven)
{
    const TemporaryFile place("", "empty");
    expectRefused((place.folder() / GetParam().given).string());
}

INSTANTIATE_ROWS(Names, ScenePathTest, {"Blank", "a b.dae"}, {"BlanksAtTheEnds", " a "},
                 {"Accent", "\xC3\xA9t\xC3\xA9.dae"}, {"Hash", "a#b.dae"}, {"Percent", "100%.dae"},
                 {"PercentAndDigits", "a%20b.dae"}, {"QuestionMark", "a?b.dae"}, {"Backslash", "a\\b.dae"},
                 {"Brackets", "a[1].dae"}, {"Braces", "{a}.dae"}, {"Quotes", "'a'\"b\".dae"},
                 {"Angles", "<a>|^`&;.dae"}, {"LineFeed", "a\nb.dae"}, {"Tab", "a\tb.dae"},
                 {"InvalidUtf8", "a\xFF\xC3.dae"}, {"Colon", "a:b.dae"}, {"LooksLikeAnAddress", "http:a.dae"},
                 {"NoEnding", "document"}, {"EndingOfAnArchive", "document.zae"}, {"LeadingDot", ".dae"});

TEST(SceneTest, PercentInAPathIsNoEncoding)
{
    const TemporaryFile file(good, "a b.dae");
    expectRefused((file.folder() / "a%20b.dae").string());
}

TEST(SceneTest, FragmentBehindAPathIsPartOfTheName)
{
    const TemporaryFile file(good);
    expectRefused(file.path() + "#scene");
    expectRefused(file.path() + "?x");
}

TEST(SceneTest, RelativePathCountsFromThePresentWorkingDirectory)
{
    const TemporaryFile before(whole("<library_visual_scenes><visual_scene id='scene'><node id='wrong'/></visual_scene>"
                                     "</library_visual_scenes>" +
                                     showsScene));
    const TemporaryFile file(good);
    const LogCapture quiet;
    const WorkingDirectory restored;
    WorkingDirectory::change(before.folder());
    Scene scene;
    WorkingDirectory::change(file.folder());
    EXPECT_TRUE(load(scene, "document.dae"));
    expectGood(scene);

    Scene other;
    std::filesystem::create_directory(file.folder() / "sub");
    WorkingDirectory::change(file.folder() / "sub");
    EXPECT_TRUE(load(other, "./../document.dae"));
    expectGood(other);
}

TEST(SceneTest, LinkToAFileOpens)
{
    const TemporaryFile file(good);
    std::filesystem::create_symlink(file.path(), file.folder() / "link.dae");
    const LogCapture quiet;
    Scene scene;
    EXPECT_TRUE(load(scene, (file.folder() / "link.dae").string()));
    expectGood(scene);
}

TEST(SceneTest, WhatIsNoFileIsRefused)
{
    const TemporaryFile file(good);
    std::filesystem::create_symlink(file.folder() / "missing", file.folder() / "dangling.dae");
    expectRefused(file.folder().string());
    expectRefused(file.folder().string() + "/");
    expectRefused((file.folder() / "missing.dae").string());
    expectRefused((file.folder() / "dangling.dae").string());
    expectRefused(file.path() + "/document.dae");
    expectRefused((file.folder() / std::string(300, 'a')).string());
    expectRefused(std::string(10000, 'a'));
    expectRefused("");
    expectRefused(".");
    expectRefused("/dev/null");
}

TEST(SceneTest, WorkingDirectoryThatIsGoneRefusesRelativePathsOnly)
{
    const TemporaryFile file(good);
    const LogCapture quiet;
    const WorkingDirectory restored;
    Scene scene;
    Scene absolute;
    {
        const TemporaryFile place("", "empty");
        WorkingDirectory::change(place.folder());
    }
    EXPECT_FALSE(load(scene, "document.dae"));
    EXPECT_TRUE(load(absolute, file.path()));
}

TEST(SceneTest, FifoIsRefusedAtOnce)
{
    const TemporaryFile place("", "empty");
    const std::string path = (place.folder() / "fifo.dae").string();
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    const Deadline deadline(60);
    expectRefused(path);
}

TEST(SceneTest, AddressesAreRefused)
{
    // Nothing listens there; the refusal must not depend on the network.
    expectRefused("http://127.0.0.1:9/document.dae");
    expectRefused("ftp://127.0.0.1:9/document.dae");
    expectRefused("https://127.0.0.1:9/document.dae");
    expectRefused("HTTP://127.0.0.1:9/document.dae");
}

// An archive of uncompressed files, by name and content.
std::string archive(const std::vector<std::pair<std::string, std::string>>& files)
{
    const auto bytes = [](std::size_t number, unsigned count) {
        std::string text;
        for (unsigned i = 0; i < count; ++i) {
            text += static_cast<char>(static_cast<unsigned char>(number % 256));
            number /= 256;
        }
        return text;
    };
    const auto checksum = [](const std::string& content) {
        std::uint32_t sum = 0xFFFFFFFFu;
        for (const char c : content) {
            sum ^= static_cast<unsigned char>(c);
            for (unsigned bit = 0; bit < 8; ++bit) {
                sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320u : 0u);
            }
        }
        return ~sum;
    };
    std::string contents;
    std::string directory;
    for (const auto& [name, content] : files) {
        // Version 10, no flags, stored, at the start of 1980.
        const std::string entry = bytes(10, 2) + bytes(0, 4) + bytes(0, 2) + bytes(0x21, 2) +
                                  bytes(checksum(content), 4) + bytes(content.size(), 4) + bytes(content.size(), 4) +
                                  bytes(name.size(), 2) + bytes(0, 2);
        directory += "PK\x01\x02" + bytes(10, 2) + entry + bytes(0, 10) + bytes(contents.size(), 4) + name;
        contents += "PK\x03\x04" + entry + name + content;
    }
    return contents + directory + "PK\x05\x06" + bytes(0, 4) + bytes(files.size(), 2) + bytes(files.size(), 2) +
           bytes(directory.size(), 4) + bytes(contents.size(), 4) + bytes(0, 2);
}

TEST(SceneTest, ArchiveThatTheDocumentModelWouldOpenIsRefused)
{
    const TemporaryFile file(archive({{"manifest.xml", "<?xml version='1.0'?><dae_root>./scene.dae</dae_root>"},
                                      {"scene.dae", whole(nodes + showsScene)}}),
                             "document.zae");
    {
        const TemporaryFile unpacked("", "empty"); // files that it unpacks stay in this folder
        const Environment place("TMPDIR", unpacked.folder().c_str());
        const SilentDocumentModel silence;
        DAE dae(nullptr, nullptr, "1.4.1");
        ASSERT_NE(nullptr, dae.open(file.path()));
    }
    const TemporaryFile untouched("", "empty");
    const Environment place("TMPDIR", untouched.folder().c_str());
    expectRefused(file.path());
    const std::filesystem::directory_iterator entries(untouched.folder());
    EXPECT_EQ(1, std::distance(begin(entries), end(entries))) << "nothing was unpacked";
}

class SceneContentTest : public testing::TestWithParam<Case<std::string>> {};

TEST_P(SceneContentTest, ThatIsNoDocumentIsRefused)
{
    const TemporaryFile file(GetParam().given);
    expectRefused(file.path());
}

TEST_P(SceneContentTest, ThatIsNoDocumentIsRefusedWithoutATemporaryDirectoryToo)
{
    const TemporaryFile file(GetParam().given);
    const Environment nowhere("TMPDIR", file.path().c_str());
    expectRefused(file.path());
}

INSTANTIATE_ROWS(Contents, SceneContentTest, {"Empty", ""}, {"Blank", " \n"}, {"Text", "no document"},
                 {"OtherRoot", "<html/>"}, {"Zeros", std::string(100, '\0')}, {"StartOfAnArchive", "PK"},
                 {"Archive", std::string("PK\x03\x04") + std::string(60, '\0')},
                 {"ArchiveWithADocument", "PK\x03\x04" + good});

TEST(SceneTest, GoodDocumentNeedsNoTemporaryDirectory)
{
    const TemporaryFile file(good);
    const Environment nowhere("TMPDIR", "/missing");
    const LogCapture quiet;
    Scene scene;
    EXPECT_TRUE(load(scene, file.path()));
    expectGood(scene);
}

TEST(SceneTest, MissingFileIsRefusedWithoutATemporaryDirectoryToo)
{
    const Environment nowhere("TMPDIR", "/missing");
    expectRefused("/missing/document.dae");
}

TEST(SceneTest, DocumentCompressedByGzipOpens)
{
    const TemporaryFile file(good, "plain");
    const std::string path = (file.folder() / "document.dae").string();
    if (std::system(("gzip -c '" + file.path() + "' > '" + path + "' 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "there is no gzip";
    }
    std::ifstream compressed(path, std::ios::binary);
    ASSERT_EQ(0x1F, compressed.get());
    ASSERT_EQ(0x8B, compressed.get());
    const LogCapture log("libVideo.scene");
    Scene scene;
    EXPECT_TRUE(load(scene, path));
    expectGood(scene);
    EXPECT_EQ("", log.text());
}

TEST(SceneTest, Utf16DocumentOpensAndItsTextIsUtf8)
{
    const std::string text = "<?xml version='1.0' encoding='utf-16'?>"
                             "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>"
                             "<library_visual_scenes><visual_scene id='scene'><node id='n' name='caf@'/>"
                             "</visual_scene></library_visual_scenes>" +
                             showsScene + "</COLLADA>";
    std::string wide = "\xFF\xFE";
    for (const char c : text) {
        wide += c == '@' ? '\xE9' : c;
        wide += '\0';
    }
    const TemporaryFile file(wide);
    Scene scene;
    ASSERT_TRUE(load(scene, file.path()));
    EXPECT_STREQ("caf\xC3\xA9", firstNode(scene).name().data());
}

TEST(SceneTest, DocumentOfTheOldVersionOpensAndOneOfAnotherSchemaDoesNot)
{
    const std::string rest = "<library_visual_scenes><visual_scene id='scene'><node id='a'/></visual_scene>"
                             "</library_visual_scenes>" +
                             showsScene + "</COLLADA>";
    const TemporaryFile older("<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.0'>" + rest);
    Scene scene;
    EXPECT_TRUE(load(scene, older.path()));
    const TemporaryFile newer("<COLLADA xmlns='http://www.collada.org/2008/03/COLLADASchema' version='1.5.0'>" + rest);
    expectRefused(newer.path());
}

TEST(SceneTest, NumbersReadTheSameWhereACommaIsWritten)
{
    const TemporaryFile file(good);
    const LogCapture quiet;
    const CommaLocale comma;
    if (!comma.isAvailable()) {
        GTEST_SKIP() << "there is no locale with a comma";
    }
    Scene scene;
    ASSERT_TRUE(load(scene, file.path()));
    EXPECT_TRUE(CommaLocale::isPresent());
    EXPECT_EQ(LC_GLOBAL_LOCALE, uselocale(nullptr));
    expectGood(scene);
    EXPECT_EQ(translated(20.0f, 30.0f, 40.25f), elements(scene.visualScene().root().children()[0]->transform(2.0)));

    const TemporaryFile forms(whole("<library_visual_scenes><visual_scene id='scene'><node id='n'>"
                                    "<translate>+2.5 .25 1.5e+1</translate></node></visual_scene>"
                                    "</library_visual_scenes>" +
                                    showsScene));
    Scene other;
    ASSERT_TRUE(load(other, forms.path()));
    EXPECT_EQ(translated(2.5f, 0.25f, 15.0f), elements(firstNode(other).transform()));
}

TEST(SceneTest, LocaleIsPutBackAfterARefusal)
{
    const LogCapture quiet;
    const CommaLocale comma;
    if (!comma.isAvailable()) {
        GTEST_SKIP() << "there is no locale with a comma";
    }
    const TemporaryFile file("no document");
    Scene scene;
    EXPECT_FALSE(load(scene, "/missing/document.dae"));
    EXPECT_TRUE(CommaLocale::isPresent());
    EXPECT_FALSE(load(scene, file.path()));
    EXPECT_TRUE(CommaLocale::isPresent());
    const Environment nowhere("TMPDIR", "/missing");
    EXPECT_FALSE(load(scene, file.path()));
    EXPECT_TRUE(CommaLocale::isPresent());
}

TEST(SceneTest, LocaleOfTheThreadIsPutBack)
{
    const TemporaryFile file(good);
    const LogCapture quiet;
    const locale_t own = newlocale(LC_ALL_MASK, "C", nullptr);
    ASSERT_NE(nullptr, own);
    const locale_t before = uselocale(own);
    Scene scene;
    EXPECT_TRUE(load(scene, file.path()));
    EXPECT_EQ(own, uselocale(nullptr));
    Scene refused;
    EXPECT_FALSE(load(refused, "/missing/document.dae"));
    EXPECT_EQ(own, uselocale(nullptr));
    uselocale(before);
    freelocale(own);
}

// Causes messages of the document model: an unknown element and attribute, text where none is allowed, and an invalid
// number.
const std::string odd = whole("<library_visual_scenes><visual_scene id='scene' colour='red'><unknown/>text<node id='a'>"
                              "<translate>NaN 1 2</translate></node></visual_scene></library_visual_scenes>" +
                              showsScene);

TEST(SceneTest, StandardOutputStaysSilent)
{
    const TemporaryFile oddFile(odd);
    const TemporaryFile noDocument("no document", "other");
    const TemporaryFile unresolved(whole(nodes + "<scene><instance_visual_scene url='#nothing'/></scene>"));
    const LogCapture quiet;
    testing::internal::CaptureStdout();
    Scene first;
    const bool isOddLoaded = load(first, oddFile.path());
    Scene second;
    const bool isOtherLoaded = load(second, noDocument.path());
    Scene third;
    const bool isUnresolvedLoaded = load(third, unresolved.path());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_TRUE(isOddLoaded);
    EXPECT_FALSE(isOtherLoaded);
    EXPECT_FALSE(isUnresolvedLoaded);
}

TEST(SceneTest, DefaultErrorHandlerIsPutBack)
{
    daeErrorHandler::setErrorHandler(nullptr);
    const daeErrorHandler* const standard = daeErrorHandler::get();
    const TemporaryFile file(odd);
    const TemporaryFile noDocument("no document", "other");
    const LogCapture quiet;
    Scene scene;
    EXPECT_FALSE(load(scene, "/missing/document.dae"));
    EXPECT_EQ(standard, daeErrorHandler::get());
    EXPECT_FALSE(load(scene, noDocument.path()));
    EXPECT_EQ(standard, daeErrorHandler::get());
    {
        const Environment nowhere("TMPDIR", "/missing");
        EXPECT_FALSE(load(scene, noDocument.path()));
        EXPECT_EQ(standard, daeErrorHandler::get());
    }
    EXPECT_TRUE(load(scene, file.path()));
    EXPECT_EQ(standard, daeErrorHandler::get());
    EXPECT_FALSE(load(scene, file.path()));
    EXPECT_EQ(standard, daeErrorHandler::get());
}

TEST(SceneTest, ErrorHandlerOfTheHostIsKeptAndUsed)
{
    const TemporaryFile file(odd);
    const SilentDocumentModel handler;
    const LogCapture quiet;
    Scene scene;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(load(scene, file.path()));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_GT(handler.messageCount(), 0u);
    EXPECT_EQ(&handler, daeErrorHandler::get());
    Scene refused;
    EXPECT_FALSE(load(refused, "/missing/document.dae"));
    EXPECT_EQ(&handler, daeErrorHandler::get());
}

TEST(SceneTest, TwoScenesLiveSideBySide)
{
    const TemporaryFile file(good);
    const TemporaryFile other(whole("<library_visual_scenes><visual_scene id='scene'><node id='x'>"
                                    "<translate>7 8 9</translate></node></visual_scene></library_visual_scenes>" +
                                    showsScene));
    const LogCapture quiet;
    auto first = std::make_unique<Scene>();
    Scene second;
    ASSERT_TRUE(load(*first, file.path()));
    ASSERT_TRUE(load(second, other.path()));
    expectGood(*first);
    EXPECT_EQ(translated(7, 8, 9), elements(firstNode(second).transform()));
    EXPECT_EQ(0u, scenePool(second).animationList.size());

    first.reset();
    EXPECT_STREQ("x", firstNode(second).id().data());
    second.visualScene().transform();
    EXPECT_EQ(translated(7, 8, 9), elements(firstNode(second).transform()));
    Scene third;
    ASSERT_TRUE(load(third, file.path()));
    expectGood(third);
}

TEST(SceneTest, TwoScenesMayShowOneDocument)
{
    const TemporaryFile file(good);
    const LogCapture quiet;
    Scene first;
    Scene second;
    ASSERT_TRUE(load(first, file.path()));
    ASSERT_TRUE(load(second, file.path()));
    EXPECT_NE(&firstNode(first), &firstNode(second));
    first.visualScene().root().children()[0]->transform(2.0);
    EXPECT_EQ(translated(20.0f, 30.0f, 40.25f), elements(firstNode(first).transform()));
    expectGood(second);
}

TEST(SceneTest, ScenesComeAndGo)
{
    const TemporaryFile file(good);
    const LogCapture quiet;
    for (unsigned i = 0; i < 50; ++i) {
        Scene scene;
        ASSERT_TRUE(load(scene, file.path())) << i;
        expectGood(scene);
    }
}

static_assert(std::is_default_constructible_v<Scene>);
static_assert(!std::is_copy_constructible_v<Scene> && !std::is_copy_assignable_v<Scene>);
static_assert(!std::is_move_constructible_v<Scene> && !std::is_move_assignable_v<Scene>);
static_assert(!std::is_polymorphic_v<Scene>);
static_assert(std::is_same_v<decltype(std::declval<Scene&>().visualScene()), VisualScene&>);
static_assert(std::is_same_v<decltype(std::declval<const Scene&>().visualScene()), const VisualScene&>);

void expectNothingToShow(const Scene& scene)
{
    const VisualScene& shown = scene.visualScene();
    EXPECT_EQ(0u, shown.root().children().size());
    EXPECT_EQ(identity, elements(shown.root().transform()));
    EXPECT_EQ(0u, shown.cameraList().size());
    EXPECT_EQ(0u, shown.pointLightList().size());
    EXPECT_EQ(0u, shown.spotLightList().size());
    EXPECT_EQ(0u, shown.geometryTable().size());
    EXPECT_EQ(0u, shown.blinnMaterialTable().size());
    EXPECT_EQ(0u, visualSceneNodeList(shown).size());
    EXPECT_EQ(0u, visualSceneNodeTable(shown).size());
    EXPECT_STREQ("", visualSceneName(shown).data());
    EXPECT_EQ(nullptr, visualSceneResources(shown));
    EXPECT_EQ(0u, sceneReservedWord(scene));
    EXPECT_EQ(zero, elements(sceneUpTransform(scene)));
}

void expectGood(Scene& scene)
{
    ASSERT_EQ(1u, scene.visualScene().root().children().size());
    const libVideo::NodeLink a = scene.visualScene().root().children()[0];
    EXPECT_STREQ("a", a->id().data());
    EXPECT_EQ(translated(1.5f, 2.25f, -3.0f), elements(std::as_const(*a).transform()));
    EXPECT_TRUE(a->hasAnimation());
    ASSERT_EQ(1u, a->children().size());
    EXPECT_STREQ("B", a->children()[0]->name().data());
    EXPECT_EQ(2u, scenePool(scene).animationList.size());
    EXPECT_EQ(&scenePool(scene), visualSceneResources(scene.visualScene()).get());
}

void expectRefused(const std::string& path)
{
    const LogCapture log;
    Scene scene;
    testing::internal::CaptureStdout();
    const bool isLoaded = load(scene, path);
    const std::string output = testing::internal::GetCapturedStdout();

    EXPECT_FALSE(isLoaded);
    EXPECT_EQ("", output);
    // Paths may have line feeds.
    EXPECT_EQ(Texts{"libVideo.scene: Collada file does not exist " + path}, log.messages());
    expectNothingToShow(scene);
    EXPECT_EQ(0u, scenePool(scene).animationList.size());
    EXPECT_EQ(0, sceneDae(scene).getDocCount());
}

} // namespace
