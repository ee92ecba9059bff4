#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Camera.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using Parameter = libVideo::SharedHandle<PerspectiveParameter>;
using AnimationList = vesk::Array<AnimationHandle>;
using CameraList = vesk::Array<CameraHandle>;
using CameraRef = daeSmartRef<domCamera>;
using ReadExtra = void (PerspectiveCamera::*)(const CameraRef&, DAE&);
using Update = bool (PerspectiveCamera::*)(double, double, double, double, double);

PRIVATE_MEMBER(animationsField, AnimationList Camera::*, &Camera::m_animations)
PRIVATE_MEMBER(projectionField, Matrix4 PerspectiveCamera::*, &PerspectiveCamera::m_projection)
PRIVATE_MEMBER(nameField, vesk::String PerspectiveCamera::*, &PerspectiveCamera::m_name)
PRIVATE_MEMBER(idField, vesk::String PerspectiveCamera::*, &PerspectiveCamera::m_id)
PRIVATE_MEMBER(lookAtNodeURIField, vesk::String PerspectiveCamera::*, &PerspectiveCamera::m_lookAtNodeURI)
PRIVATE_MEMBER(lookAtNodeField, vesk::String PerspectiveCamera::*, &PerspectiveCamera::m_lookAtNode)
PRIVATE_MEMBER(xfovField, Parameter PerspectiveCamera::*, &PerspectiveCamera::m_xfov)
PRIVATE_MEMBER(yfovField, Parameter PerspectiveCamera::*, &PerspectiveCamera::m_yfov)
PRIVATE_MEMBER(znearField, Parameter PerspectiveCamera::*, &PerspectiveCamera::m_znear)
PRIVATE_MEMBER(zfarField, Parameter PerspectiveCamera::*, &PerspectiveCamera::m_zfar)
PRIVATE_MEMBER(aspectRatioField, Parameter PerspectiveCamera::*, &PerspectiveCamera::m_aspectRatio)
PRIVATE_MEMBER(readExtraCameraDataOf, ReadExtra, &PerspectiveCamera::readExtraCameraData)
PRIVATE_MEMBER(updateProjectionMatrixOf, Update, &PerspectiveCamera::updateProjectionMatrix)

TEST(PerspectiveParameterTest, HoldsValueAndSid)
{
    const PerspectiveParameter parameter(2.5, "angle");
    EXPECT_EQ(2.5, parameter.value);
    EXPECT_EQ("angle", textOf(parameter.sid));
}

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

const char* const noDocument = "Cannot create a camera list from a NULL domCOLLADA pointer";
const char* const noAspectRatio = "Camera :Eye does not have required aspect ratio data";

// ---- documents

/// Optics with planes at 1 and 101.
std::string opticsWith(const std::string& angles)
{
    return optics(angles + "<znear>1</znear><zfar>101</zfar>");
}

/// A document with two cameras: an empty one, and the one under test.
class CameraDocument {
public:
    explicit CameraDocument(const std::string& content, const std::string& attributes = "id='eye' name='Eye'")
        : m_builder("<library_cameras><camera/><camera " + attributes + ">" + content + "</camera></library_cameras>")
    {
        m_root = m_builder.open();
    }

    CameraRef blank() { return m_root->getLibrary_cameras_array()[0]->getCamera_array()[0]; }
    CameraRef camera() { return m_root->getLibrary_cameras_array()[0]->getCamera_array()[1]; }
    DAE& dae() { return m_builder.dae(); }

private:
    ColladaBuilder m_builder;
    const domCOLLADA* m_root;
};

/// A camera as it is before any load; loading the empty camera does not change it.
PerspectiveCamera unreadCamera()
{
    CameraDocument document("");
    const LogCapture silence;
    return PerspectiveCamera(document.blank(), document.dae());
}

PerspectiveCamera load(const std::string& content)
{
    CameraDocument document(content);
    const LogCapture silence;
    return PerspectiveCamera(document.camera(), document.dae());
}

/// An animation of the parameter `sid` of the camera "eye" with keys at seconds 1 and 3, so that at second 2 its value
/// is the mean of the two.
AnimationHandle curve(const std::string& sid, const std::string& values, const std::string& interpolation = "LINEAR")
{
    return loadedCurve("eye/" + sid, "1 3", values, interpolation + " " + interpolation);
}

/// An animation that failed to load: it has no target and no keys, and returns the value that it is given.
AnimationHandle failedAnimation()
{
    ColladaBuilder builder("<library_animations><animation/></library_animations>");
    const domAnimationRef element = builder.open()->getLibrary_animations_array()[0]->getAnimation_array()[0];
    const LogCapture silence;
    return AnimationHandle(new Animation(element, builder.dae()));
}

constexpr double meanTime = 2.0;

// ---- expected matrices

using Floats = Elements;

Floats projection(float x, float y, float depthScale, float depthOffset)
{
    return {x, 0.0f, 0.0f, 0.0f, 0.0f, y, 0.0f, 0.0f, 0.0f, 0.0f, depthScale, 1.0f, 0.0f, 0.0f, depthOffset, 0.0f};
}

/// The projection for two planes and two scales.
Floats projection(float x, float y, double znear, double zfar)
{
    const double depthScale = zfar / (zfar - znear);
    return projection(x, y, static_cast<float>(depthScale), static_cast<float>(-(depthScale * znear)));
}

float scaleOf(double degrees)
{
    return static_cast<float>(1 / std::tan(degrees * 3.141592653589793 / 180 * 0.5));
}

float narrowed(double value)
{
    return static_cast<float>(value);
}

/// Equal bit for bit; all NaNs count as equal.
void expectFloats(const Floats& expected, const Matrix4& actual);

void expectParameter(double value, const std::string& sid, const Parameter& parameter)
{
    ASSERT_TRUE(parameter);
    EXPECT_EQ(value, parameter->value);
    EXPECT_EQ(sid, textOf(parameter->sid));
}

std::vector<const PerspectiveParameter*> parametersOf(const PerspectiveCamera& camera)
{
    return {xfovField(camera).get(), yfovField(camera).get(), znearField(camera).get(), zfarField(camera).get(),
            aspectRatioField(camera).get()};
}

// ---- data

TEST(CameraTest, IsEmptyUntilRead)
{
    const PerspectiveCamera camera = unreadCamera();
    EXPECT_EQ(0u, animationsField(camera).size());
    expectFloats(Floats{}, projectionField(camera));
    EXPECT_EQ("", textOf(nameField(camera)));
    EXPECT_EQ("", textOf(idField(camera)));
    EXPECT_EQ("", textOf(lookAtNodeURIField(camera)));
    EXPECT_EQ("", textOf(lookAtNodeField(camera)));
    EXPECT_EQ(std::vector<const PerspectiveParameter*>(5, nullptr), parametersOf(camera));
}

TEST(CameraTest, FieldsStandInTheirOrder)
{
    const PerspectiveCamera camera = unreadCamera();
    expectAscending({&animationsField(camera), &projectionField(camera), &nameField(camera), &idField(camera),
                     &lookAtNodeURIField(camera), &lookAtNodeField(camera), &xfovField(camera), &yfovField(camera),
                     &znearField(camera), &zfarField(camera), &aspectRatioField(camera)});
}

#if defined(__x86_64__) && defined(__GNUC__)

TEST(CameraTest, VirtualOperationsStandInTheirOrder)
{
    EXPECT_EQ(0u, slotOf(&Camera::clone));
    EXPECT_EQ(1u, slotOf(static_cast<const Matrix4& (Camera::*)(double)>(&Camera::projectionMatrix)));
    EXPECT_EQ(2u, slotOf(static_cast<const Matrix4& (Camera::*)() const>(&Camera::projectionMatrix)));
    EXPECT_EQ(3u, slotOf(&Camera::transform));
    EXPECT_EQ(4u, slotOf(&Camera::name));
    EXPECT_EQ(5u, slotOf(&Camera::id));
    EXPECT_EQ(6u, slotOf(&Camera::lookAtNode));
    // The destructor takes two places.
    EXPECT_EQ(9u, slotOf(&Camera::setAspectRatio));
}
#endif

TEST(CameraTest, AccessorsShowTheFields)
{
    const PerspectiveCamera camera =
        load(opticsWith("<xfov>90</xfov><yfov>90</yfov>") + vendorExtra("<target>scene.dae#Target</target>"));
    const Camera& base = camera;
    EXPECT_EQ(&nameField(camera), &base.name());
    EXPECT_EQ(&idField(camera), &base.id());
    EXPECT_EQ(&lookAtNodeField(camera), &base.lookAtNode());
    EXPECT_EQ(&lookAtNodeURIField(camera), &camera.lookAtNodeURI());
    EXPECT_EQ(&projectionField(camera), &base.projectionMatrix());
    EXPECT_EQ("Eye", textOf(base.name()));
    EXPECT_EQ("eye", textOf(base.id()));
    EXPECT_EQ("Target", textOf(base.lookAtNode()));
    EXPECT_EQ("scene.dae#Target", textOf(camera.lookAtNodeURI()));
}

// ---- createFromCollada

TEST(CameraTest, LoadTakesEachValueWithItsSid)
{
    CameraDocument document(optics("<xfov sid='x'>70.5</xfov><yfov sid='y'>50.25</yfov>"
                                   "<znear sid='n'>0.5</znear><zfar sid='f'>200</zfar>"));
    PerspectiveCamera camera = unreadCamera();
    const LogCapture log;
    EXPECT_TRUE(camera.createFromCollada(document.camera(), document.dae()));
    EXPECT_EQ("", log.text());
    expectParameter(70.5, "x", xfovField(camera));
    expectParameter(50.25, "y", yfovField(camera));
    expectParameter(0.5, "n", znearField(camera));
    expectParameter(200.0, "f", zfarField(camera));
    EXPECT_FALSE(aspectRatioField(camera));
}

TEST(CameraTest, LoadTakesTheAspectRatioWithItsSid)
{
    CameraDocument document(optics("<yfov sid='y'>50.25</yfov><aspect_ratio sid='a'>1.25</aspect_ratio>"
                                   "<znear>0.5</znear><zfar>200</zfar>"));
    PerspectiveCamera camera = unreadCamera();
    const LogCapture log;
    EXPECT_TRUE(camera.createFromCollada(document.camera(), document.dae()));
    EXPECT_EQ("", log.text());
    EXPECT_FALSE(xfovField(camera));
    expectParameter(50.25, "y", yfovField(camera));
    expectParameter(1.25, "a", aspectRatioField(camera));
    // An absent sid is empty.
    expectParameter(0.5, "", znearField(camera));
    expectParameter(200.0, "", zfarField(camera));
}

TEST(CameraTest, EachParameterIsAnObjectOfItsOwn)
{
    const PerspectiveCamera camera = load(opticsWith("<xfov>1</xfov><yfov>1</yfov>"));
    EXPECT_EQ(1u, xfovField(camera).useCount());
    EXPECT_EQ(1u, yfovField(camera).useCount());
    EXPECT_EQ(1u, znearField(camera).useCount());
    EXPECT_EQ(1u, zfarField(camera).useCount());
}

TEST(CameraTest, AbsentIdAndNameAreEmpty)
{
    CameraDocument document(opticsWith("<aspect_ratio>1</aspect_ratio>"), "");
    const PerspectiveCamera camera(document.camera(), document.dae());
    EXPECT_EQ("", textOf(camera.id()));
    EXPECT_EQ("", textOf(camera.name()));
}

TEST(CameraTest, ConstructorDropsTheResultOfTheLoad)
{
    CameraDocument document(opticsWith("<xfov>90</xfov>"));
    const LogCapture log;
    const PerspectiveCamera camera(document.camera(), document.dae());
    expectErrors("libVideo.camera", noAspectRatio, log);
    EXPECT_EQ("eye", textOf(camera.id()));
}

struct FailureCase : Row {
    std::string optics;
    const char* words;
    bool hasNear;
};

class CameraFailureTest : public testing::TestWithParam<FailureCase> {};

TEST_P(CameraFailureTest, LogsItsLineAndKeepsWhatWasRead)
{
    CameraDocument document(GetParam().optics + vendorExtra("<target>scene.dae#Target</target>"));
    PerspectiveCamera camera = unreadCamera();
    const LogCapture log;
    EXPECT_FALSE(camera.createFromCollada(document.camera(), document.dae()));
    expectErrors("libVideo.camera", GetParam().words, log);
    EXPECT_EQ("Eye", textOf(camera.name()));
    EXPECT_EQ("eye", textOf(camera.id()));
    EXPECT_EQ("scene.dae#Target", textOf(camera.lookAtNodeURI()));
    EXPECT_EQ("Target", textOf(camera.lookAtNode()));
    if (GetParam().hasNear) {
        expectParameter(0.5, "n", znearField(camera));
    } else {
        EXPECT_FALSE(znearField(camera));
    }
    EXPECT_FALSE(zfarField(camera));
    EXPECT_FALSE(xfovField(camera));
    EXPECT_FALSE(yfovField(camera));
    EXPECT_FALSE(aspectRatioField(camera));
    expectFloats(Floats{}, camera.projectionMatrix());
}

const char* const noTechnique = "Camera Eye does not have a common technique";
const char* const noPerspective = "Camera Eye does not have perspective optics";
const char* const noNear = "Camera Eye does not have near plane data";
const char* const noFar = "Camera Eye does not have far plane data";
const char* const angles = "<xfov sid='x'>90</xfov><aspect_ratio sid='a'>2</aspect_ratio>";

INSTANTIATE_ROWS(Documents, CameraFailureTest, {"NoOptics", "", noTechnique, false},
                 {"EmptyOptics", "<optics/>", noTechnique, false},
                 {"OtherTechniqueOnly", "<optics><technique profile='X'/></optics>", noTechnique, false},
                 {"EmptyTechnique", "<optics><technique_common/></optics>", noPerspective, false},
                 {"Orthographic",
                  "<optics><technique_common><orthographic><xmag>1</xmag><znear>1</znear><zfar>2</zfar>"
                  "</orthographic></technique_common></optics>",
                  noPerspective, false},
                 {"EmptyPerspective", optics(""), noNear, false},
                 {"NoNear", optics(std::string(angles) + "<zfar sid='f'>100</zfar>"), noNear, false},
                 {"NoFar", optics(std::string(angles) + "<znear sid='n'>0.5</znear>"), noFar, true});

class NamelessCameraTest : public testing::TestWithParam<Case<std::string, const char*>> {};

TEST_P(NamelessCameraTest, LineShowsTheNameAndNeverTheId)
{
    CameraDocument document(GetParam().given, "id='eye'");
    const LogCapture log;
    const PerspectiveCamera camera(document.camera(), document.dae());
    expectErrors("libVideo.camera", GetParam().expected, log);
}

INSTANTIATE_ROWS(Documents, NamelessCameraTest,
                 {"NoTechnique", "<optics/>", "Camera  does not have a common technique"},
                 {"NoPerspective", "<optics><technique_common/></optics>", "Camera  does not have perspective optics"},
                 {"NoNear", optics(""), "Camera  does not have near plane data"},
                 {"NoFar", optics("<znear>1</znear>"), "Camera  does not have far plane data"},
                 {"NoAspectRatio", opticsWith(""), "Camera : does not have required aspect ratio data"});

TEST(CameraTest, SecondLoadKeepsWhatItsElementDoesNotHold)
{
    CameraDocument first(opticsWith("<xfov sid='x'>60</xfov><aspect_ratio sid='a'>2</aspect_ratio>") +
                         vendorExtra("<target>#First</target>"));
    CameraDocument second(optics("<yfov sid='y'>90</yfov><znear sid='n'>2</znear><zfar sid='f'>4</zfar>"),
                          "id='other'");
    PerspectiveCamera camera(first.camera(), first.dae());
    const LogCapture log;
    EXPECT_TRUE(camera.createFromCollada(second.camera(), second.dae()));
    EXPECT_EQ("", log.text());
    EXPECT_EQ("other", textOf(camera.id()));
    EXPECT_EQ("", textOf(camera.name()));
    EXPECT_EQ("#First", textOf(camera.lookAtNodeURI()));
    EXPECT_EQ("First", textOf(camera.lookAtNode()));
    expectParameter(60.0, "x", xfovField(camera));
    expectParameter(90.0, "y", yfovField(camera));
    expectParameter(2.0, "n", znearField(camera));
    expectParameter(4.0, "f", zfarField(camera));
    expectParameter(2.0, "a", aspectRatioField(camera));
    // The horizontal angle is present as a parameter, but its element gives 0.
    expectFloats(projection(infinity, scaleOf(90.0), 2.0, 4.0), camera.projectionMatrix());
}

TEST(CameraTest, SecondLoadThatFailsAtTheFarPlaneReplacesTheNearOneOnly)
{
    CameraDocument first(opticsWith("<xfov>90</xfov><yfov>90</yfov>"));
    CameraDocument second(optics("<xfov>10</xfov><znear sid='n'>7</znear>"));
    PerspectiveCamera camera(first.camera(), first.dae());
    const Floats before = elements(camera.projectionMatrix());
    const LogCapture log;
    EXPECT_FALSE(camera.createFromCollada(second.camera(), second.dae()));
    expectErrors("libVideo.camera", noFar, log);
    expectParameter(7.0, "n", znearField(camera));
    expectParameter(101.0, "", zfarField(camera));
    expectParameter(90.0, "", xfovField(camera));
    expectFloats(before, camera.projectionMatrix());
}

TEST(CameraTest, SecondLoadAdoptsNewParametersAndCopiesKeepTheOld)
{
    CameraDocument first(opticsWith("<xfov>90</xfov><yfov>80</yfov>"));
    CameraDocument second(optics("<xfov>10</xfov><yfov>20</yfov><znear>3</znear><zfar>4</zfar>"));
    PerspectiveCamera camera(first.camera(), first.dae());
    const PerspectiveCamera copy(camera);
    EXPECT_TRUE(camera.createFromCollada(second.camera(), second.dae()));
    expectParameter(90.0, "", xfovField(copy));
    expectParameter(80.0, "", yfovField(copy));
    expectParameter(1.0, "", znearField(copy));
    expectParameter(101.0, "", zfarField(copy));
    expectParameter(10.0, "", xfovField(camera));
    expectParameter(20.0, "", yfovField(camera));
    expectParameter(3.0, "", znearField(camera));
    expectParameter(4.0, "", zfarField(camera));
}

TEST(CameraTest, SecondLoadKeepsTheAnimations)
{
    CameraDocument document(opticsWith("<xfov>90</xfov><yfov>80</yfov>"));
    PerspectiveCamera camera(document.camera(), document.dae());
    camera.addAnimation(curve("x", "1 2"));
    EXPECT_TRUE(camera.createFromCollada(document.camera(), document.dae()));
    EXPECT_EQ(1u, animationsField(camera).size());
}

TEST(CameraTest, NullElementThrowsNullPointer)
{
    CameraDocument document("");
    EXPECT_THROW(PerspectiveCamera(CameraRef(), document.dae()), vesk::NullPointer);
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><yfov>80</yfov>"));
    const Floats before = elements(camera.projectionMatrix());
    const LogCapture log;
    try {
        camera.createFromCollada(CameraRef(), document.dae());
        ADD_FAILURE() << "nothing thrown";
    } catch (const vesk::NullPointer& exception) {
        EXPECT_FALSE(exception.message().empty());
    }
    EXPECT_EQ("", log.text());
    EXPECT_EQ("eye", textOf(camera.id()));
    expectFloats(before, camera.projectionMatrix());
}

/// The parameters of a camera by letter: near, far, x, y, aspect ratio.
class CameraAllocationTest : public testing::TestWithParam<Case<const char*, const char*>> {};

TEST_P(CameraAllocationTest, LoadThatRunsOutOfMemoryHasMadeTheParametersInTheirOrder)
{
    CameraDocument document(opticsWith(GetParam().given));
    const CameraRef element = document.camera();
    const std::string order = GetParam().expected;
    std::vector<std::string> reached;
    for (long successes = 0;; ++successes) {
        PerspectiveCamera camera = unreadCamera();
        bool hasFailed = false;
        {
            const FailingAllocator allocator(successes);
            try {
                camera.createFromCollada(element, document.dae());
            } catch (const std::bad_alloc&) {
                hasFailed = true;
            }
        }
        const std::pair<char, bool> presence[] = {{'n', bool(znearField(camera))},
                                                  {'f', bool(zfarField(camera))},
                                                  {'x', bool(xfovField(camera))},
                                                  {'y', bool(yfovField(camera))},
                                                  {'a', bool(aspectRatioField(camera))}};
        std::string made;
        for (const auto& parameter : presence) {
            if (parameter.second) {
                made += parameter.first;
            }
        }
        EXPECT_EQ(order.substr(0, made.size()), made);
        if (reached.empty() || reached.back() != made) {
            reached.push_back(made);
        }
        if (!hasFailed) {
            break;
        }
        ASSERT_LT(successes, 1000);
    }
    // From none to all, one at a time.
    EXPECT_EQ(order.size() + 1, reached.size());
    EXPECT_EQ(order, reached.back());
}

INSTANTIATE_ROWS(Angles, CameraAllocationTest, {"Both", "<xfov>90</xfov><yfov>80</yfov>", "nfxy"},
                 {"Horizontal", "<xfov>90</xfov><aspect_ratio>2</aspect_ratio>", "nfxa"},
                 {"Vertical", "<yfov>90</yfov><aspect_ratio>2</aspect_ratio>", "nfya"});

// ---- readExtraCameraData

struct ExtraCase : Row {
    std::string extras;
    const char* uri;
    const char* node;
};

class CameraExtraTest : public testing::TestWithParam<ExtraCase> {};

TEST_P(CameraExtraTest, FirstTextOfTheVendorTechniqueIsTheLookAtReference)
{
    CameraDocument document(opticsWith("<xfov>90</xfov><yfov>90</yfov>") + GetParam().extras);
    PerspectiveCamera camera = unreadCamera();
    const LogCapture log;
    EXPECT_TRUE(camera.createFromCollada(document.camera(), document.dae()));
    EXPECT_EQ("", log.text());
    EXPECT_EQ(GetParam().uri, textOf(camera.lookAtNodeURI()));
    EXPECT_EQ(GetParam().node, textOf(camera.lookAtNode()));
}

TEST_P(CameraExtraTest, ReadsWithoutAnyOptics)
{
    CameraDocument document(GetParam().extras);
    PerspectiveCamera camera = unreadCamera();
    const LogCapture log;
    readExtraCameraDataOf(camera, document.camera(), document.dae());
    EXPECT_EQ("", log.text());
    EXPECT_EQ(GetParam().uri, textOf(camera.lookAtNodeURI()));
    EXPECT_EQ(GetParam().node, textOf(camera.lookAtNode()));
    EXPECT_EQ("", textOf(camera.id()));
}

const std::string one = "<target>#One</target>";
const std::string two = "<target>#Two</target>";

INSTANTIATE_ROWS(
    Search, CameraExtraTest, {"NoExtra", "", "", ""}, {"EmptyExtra", "<extra/>", "", ""},
    {"EmptyTechnique", vendorExtra(""), "", ""}, {"Target", vendorExtra(one), "#One", "One"},
    {"ProfileInLowerCase", vendorExtra(one, "fcollada"), "#One", "One"},
    {"ProfileInMixedCase", vendorExtra(one, "fCollADA"), "#One", "One"},
    {"OtherProfile", vendorExtra(one, "OTHER"), "", ""}, {"LongerProfile", vendorExtra(one, "FCOLLADA2"), "", ""},
    {"ShorterProfile", vendorExtra(one, "FCOLLAD"), "", ""}, {"EmptyProfile", vendorExtra(one, ""), "", ""},
    {"NoProfile", "<extra><technique>" + one + "</technique></extra>", "", ""},
    {"FirstOfTwoTexts", vendorExtra(one + two), "#One", "One"},
    {"FirstTextWhateverItsName", vendorExtra("<vertical_aspect>#Any</vertical_aspect>" + one), "#Any", "Any"},
    {"FirstTextThoughItIsNoReference", vendorExtra("<width>36</width>" + one), "36", ""},
    {"FirstTextThoughItIsEmpty", vendorExtra("<nothing/>" + one), "", ""},
    {"FirstTextThoughItIsAContainer", vendorExtra("<group><target>#Inner</target></group>" + one), "", ""},
    {"TextOfATypedElement", vendorExtra("<param name='to'>#Param</param>" + one), "#Param", "Param"},
    {"NumbersOfATypedElement", vendorExtra("<translate>1 2 3</translate>" + one), "1 2 3", ""},
    {"ElementWithoutTextIsPassedOver", vendorExtra("<source id='s'/><node id='n'/>" + one), "#One", "One"},
    {"TechniqueWithoutTextIsPassedOver",
     "<extra><technique profile='FCOLLADA'><source id='s'/></technique><technique profile='FCOLLADA'>" + one +
         "</technique></extra>",
     "#One", "One"},
    {"SecondTechnique",
     "<extra><technique profile='OTHER'>" + one + "</technique><technique profile='FCOLLADA'>" + two +
         "</technique></extra>",
     "#Two", "Two"},
    {"FirstOfTwoTechniques",
     "<extra><technique profile='FCOLLADA'>" + one + "</technique><technique profile='FCOLLADA'>" + two +
         "</technique></extra>",
     "#One", "One"},
    {"SecondExtra", "<extra/>" + vendorExtra(one, "OTHER") + vendorExtra("") + vendorExtra(two), "#Two", "Two"},
    {"FirstOfTwoExtras", vendorExtra(one) + vendorExtra(two), "#One", "One"},
    {"EmptyTextEndsTheSearch", vendorExtra("<nothing/>") + vendorExtra(two), "", ""});

INSTANTIATE_ROWS(Texts, CameraExtraTest,
                 {"DocumentAndFragment", vendorExtra("<t>scene.dae#Target</t>"), "scene.dae#Target", "Target"},
                 {"AddressAndFragment", vendorExtra("<t>http://host/p.dae#q</t>"), "http://host/p.dae#q", "q"},
                 {"NoFragment", vendorExtra("<t>Target</t>"), "Target", ""},
                 {"EmptyFragment", vendorExtra("<t>#</t>"), "#", ""},
                 {"EncodedBlank", vendorExtra("<t>#a%20b</t>"), "#a%20b", "a%20b"},
                 // From here on, the document model finds no reference in the text.
                 {"BlanksAround", vendorExtra("<t>  #Target </t>"), "  #Target ", "Target"},
                 {"LineFeedsAround", vendorExtra("<t>\n\t#Target\n</t>"), "\n\t#Target\n", "Target"},
                 {"BlankBehindTheMark", vendorExtra("<t># Target</t>"), "# Target", "Target"},
                 {"BlankInside", vendorExtra("<t>#My Node</t>"), "#My Node", "My Node"},
                 {"BlankBeforeTheMark", vendorExtra("<t>my scene.dae#Target</t>"), "my scene.dae#Target", "Target"},
                 {"NonAscii", vendorExtra("<t>#N\xc5\x93ud</t>"), "#N\xc5\x93ud", "N\xc5\x93ud"},
                 {"TwoMarks", vendorExtra("<t>a#b#c</t>"), "a#b#c", "b#c"},
                 {"BadPercent", vendorExtra("<t>#100%</t>"), "#100%", "100%"},
                 {"OnlyBlanksBehindTheMark", vendorExtra("<t># \n</t>"), "# \n", ""},
                 {"BlanksWithoutAMark", vendorExtra("<t>my node</t>"), "my node", ""},
                 {"NonAsciiWithoutAMark", vendorExtra("<t>N\xc5\x93ud</t>"), "N\xc5\x93ud", ""});

TEST(CameraTest, TechniquesAndExtrasOfTheOpticsAreNotSearched)
{
    const PerspectiveCamera camera =
        load("<optics><technique_common><perspective><xfov>90</xfov><yfov>90</yfov><znear>1</znear><zfar>2</zfar>"
             "</perspective></technique_common><technique profile='FCOLLADA'>" +
             one + "</technique>" + vendorExtra(one) + "</optics>");
    EXPECT_EQ("", textOf(camera.lookAtNodeURI()));
    EXPECT_EQ("", textOf(camera.lookAtNode()));
}

TEST(CameraTest, BaseURIKeepsTheReference)
{
    CameraDocument document(vendorExtra("<t>scene.dae#Target</t>"));
    const LogCapture silence;
    const PerspectiveCamera camera(document.camera(), document.dae());
    EXPECT_EQ("scene.dae#Target", document.dae().getBaseURI().originalStr());
    EXPECT_EQ("Target", document.dae().getBaseURI().fragment());
}

TEST(CameraTest, BaseURIStaysWithoutAReference)
{
    CameraDocument document("<extra/>" + vendorExtra(one, "OTHER"));
    const std::string before = document.dae().getBaseURI().originalStr();
    ASSERT_NE("", before);
    const LogCapture silence;
    const PerspectiveCamera camera(document.camera(), document.dae());
    EXPECT_EQ(before, document.dae().getBaseURI().originalStr());
}

TEST(CameraTest, TextThatIsNoReferenceIsParsedByTheBaseURIAllTheSame)
{
    CameraDocument document(vendorExtra("<t>#My Node</t>"));
    ASSERT_NE("", document.dae().getBaseURI().originalStr());
    const LogCapture silence;
    const PerspectiveCamera camera(document.camera(), document.dae());
    EXPECT_EQ("", document.dae().getBaseURI().originalStr());
}

// ---- updateProjectionMatrix

enum class Scale { zero, fromXfov, fromYfov, otherTimesAspectRatio, otherDividedByAspectRatio };

struct PresenceCase : Row {
    bool hasXfov;
    bool hasYfov;
    bool hasAspectRatio;
    Scale x;
    Scale y;
    bool result;
};

float expectedScale(Scale scale, double xfov, double yfov, double aspectRatio)
{
    switch (scale) {
    case Scale::zero:
        return 0.0f;
    case Scale::fromXfov:
        return scaleOf(xfov);
    case Scale::fromYfov:
        return scaleOf(yfov);
    case Scale::otherTimesAspectRatio:
        return narrowed(double(scaleOf(yfov)) * aspectRatio);
    case Scale::otherDividedByAspectRatio:
        return narrowed(double(scaleOf(xfov)) / aspectRatio);
    }
    return -1.0f;
}

class CameraProjectionTest : public testing::TestWithParam<PresenceCase> {};

TEST_P(CameraProjectionTest, LoadGivesTheScalesOfItsRow)
{
    const PresenceCase& row = GetParam();
    // The document model drops an aspect ratio beside two angles.
    CameraDocument document(optics(
        std::string(row.hasXfov ? "<xfov>70</xfov>" : "") + (row.hasYfov ? "<yfov>40</yfov>" : "") +
        (row.hasAspectRatio ? "<aspect_ratio>1.7</aspect_ratio>" : "") + "<znear>0.3</znear><zfar>1000.7</zfar>"));
    PerspectiveCamera camera = unreadCamera();
    const LogCapture log;
    EXPECT_EQ(row.result, camera.createFromCollada(document.camera(), document.dae()));
    expectFloats(projection(expectedScale(row.x, 70.0, 40.0, 1.7), expectedScale(row.y, 70.0, 40.0, 1.7), 0.3, 1000.7),
                 camera.projectionMatrix());
    if (row.result) {
        EXPECT_EQ("", log.text());
    } else {
        expectErrors("libVideo.camera", noAspectRatio, log);
    }
    expectParameter(0.3, "", znearField(camera));
    expectParameter(1000.7, "", zfarField(camera));
    EXPECT_EQ(row.hasXfov, bool(xfovField(camera)));
    EXPECT_EQ(row.hasYfov, bool(yfovField(camera)));
}

TEST_P(CameraProjectionTest, UpdateTakesPresenceFromTheParametersAndNumbersFromItsArguments)
{
    const PresenceCase& row = GetParam();
    PerspectiveCamera camera = unreadCamera();
    nameField(camera) = "Eye";
    if (row.hasXfov) {
        xfovField(camera) = new PerspectiveParameter(1.0, "x");
    }
    if (row.hasYfov) {
        yfovField(camera) = new PerspectiveParameter(2.0, "y");
    }
    if (row.hasAspectRatio) {
        aspectRatioField(camera) = new PerspectiveParameter(3.0, "a");
    }
    projectionField(camera) = matrixOf(counting); // must be replaced completely
    const LogCapture log;
    EXPECT_EQ(row.result, updateProjectionMatrixOf(camera, 2.0, 50.0, 65.0, 35.0, 0.7));
    expectFloats(projection(expectedScale(row.x, 65.0, 35.0, 0.7), expectedScale(row.y, 65.0, 35.0, 0.7), 2.0, 50.0),
                 camera.projectionMatrix());
    if (row.result) {
        EXPECT_EQ("", log.text());
    } else {
        expectErrors("libVideo.camera", noAspectRatio, log);
    }
    if (row.hasXfov) {
        expectParameter(1.0, "x", xfovField(camera));
    }
    if (row.hasYfov) {
        expectParameter(2.0, "y", yfovField(camera));
    }
    if (row.hasAspectRatio) {
        expectParameter(3.0, "a", aspectRatioField(camera));
    }
}

INSTANTIATE_ROWS(Presence, CameraProjectionTest,
                 {"BothAnglesAndAspectRatio", true, true, true, Scale::fromXfov, Scale::fromYfov, true},
                 {"BothAngles", true, true, false, Scale::fromXfov, Scale::fromYfov, true},
                 {"XfovAndAspectRatio", true, false, true, Scale::fromXfov, Scale::otherDividedByAspectRatio, true},
                 {"YfovAndAspectRatio", false, true, true, Scale::otherTimesAspectRatio, Scale::fromYfov, true},
                 {"AspectRatioOnly", false, false, true, Scale::zero, Scale::zero, true},
                 {"XfovOnly", true, false, false, Scale::fromXfov, Scale::zero, false},
                 {"YfovOnly", false, true, false, Scale::zero, Scale::fromYfov, false},
                 {"Neither", false, false, false, Scale::zero, Scale::zero, false});

TEST(CameraTest, RightAnglesAndPlanesAtOneAndAHundredAndOne)
{
    const PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><yfov>90</yfov>"));
    const Floats expected = projection(1.0f, 1.0f, 1.01f, -1.01f);
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_FLOAT_EQ(expected[i], camera.projectionMatrix()[i]) << i;
    }
}

TEST(CameraTest, HorizontalScaleIsTheVerticalOneTimesTheAspectRatio)
{
    const PerspectiveCamera camera = load(opticsWith("<yfov>60</yfov><aspect_ratio>2</aspect_ratio>"));
    const Matrix4& matrix = camera.projectionMatrix();
    EXPECT_FLOAT_EQ(1.7320508f, matrix[5]); // the square root of 3
    EXPECT_EQ(2.0f * matrix[5], matrix[0]);
}

TEST(CameraTest, VerticalScaleIsTheHorizontalOneDividedByTheAspectRatio)
{
    const PerspectiveCamera camera = load(opticsWith("<xfov>60</xfov><aspect_ratio>2</aspect_ratio>"));
    const Matrix4& matrix = camera.projectionMatrix();
    EXPECT_FLOAT_EQ(1.7320508f, matrix[0]);
    EXPECT_EQ(0.5f * matrix[0], matrix[5]);
}

class CameraNumberTest : public testing::TestWithParam<Case<std::string, Floats>> {};

TEST_P(CameraNumberTest, ProjectionIsComputedInDoubleAndNarrowedAtEachStore)
{
    CameraDocument document(optics(GetParam().given));
    PerspectiveCamera camera = unreadCamera();
    const LogCapture log;
    EXPECT_TRUE(camera.createFromCollada(document.camera(), document.dae()));
    EXPECT_EQ("", log.text());
    expectFloats(GetParam().expected, camera.projectionMatrix());
}

std::string perspectiveOf(const std::string& angleElements, const std::string& znear, const std::string& zfar)
{
    return angleElements + "<znear>" + znear + "</znear><zfar>" + zfar + "</zfar>";
}

const char* const aspectRatioOne = "<aspect_ratio>1</aspect_ratio>";

INSTANTIATE_ROWS(Planes, CameraNumberTest,
                 {"CloserThanFloatCanTell", perspectiveOf(aspectRatioOne, "0.1", "0.1000001"),
                  projection(0.0f, 0.0f, 0.1, 0.1000001)},
                 {"OffsetFromTheUnroundedScale", perspectiveOf(aspectRatioOne, "0.3", "1000.7"),
                  projection(0.0f, 0.0f, 0.3, 1000.7)},
                 // 4 / (4 - 8) = -1, and -(-1 * 8) = 8
                 {"Swapped", perspectiveOf(aspectRatioOne, "8", "4"), projection(0.0f, 0.0f, -1.0f, 8.0f)},
                 // 5 / 5 = 1, and -(1 * 0) = -0
                 {"NearAtTheEye", perspectiveOf(aspectRatioOne, "0", "5"), projection(0.0f, 0.0f, 1.0f, -0.0f)},
                 {"Equal", perspectiveOf(aspectRatioOne, "5", "5"), projection(0.0f, 0.0f, infinity, -infinity)},
                 {"EqualAtTheEye", perspectiveOf(aspectRatioOne, "0", "0"),
                  projection(0.0f, 0.0f, notANumber, notANumber)});

INSTANTIATE_ROWS(
    Angles, CameraNumberTest,
    {"XfovZeroIsPresent", perspectiveOf("<xfov>0</xfov><yfov>90</yfov>", "1", "2"),
     projection(infinity, scaleOf(90.0), 1.0, 2.0)},
    {"YfovZeroIsPresent", perspectiveOf("<xfov>90</xfov><yfov>0</yfov>", "1", "2"),
     projection(scaleOf(90.0), infinity, 1.0, 2.0)},
    {"Negative", perspectiveOf("<xfov>-90</xfov><yfov>-60</yfov>", "1", "2"),
     projection(scaleOf(-90.0), scaleOf(-60.0), 1.0, 2.0)},
    // The product overflows if the degrees are multiplied by pi first.
    {"ProductWithPiComesFirst", perspectiveOf("<xfov>1e308</xfov><yfov>1e308</yfov>", "1", "2"),
     projection(notANumber, notANumber, 1.0, 2.0)},
    // A factor of pi / 180 would give another float here.
    {"DivisionComesBehindTheProduct",
     perspectiveOf("<xfov>123456789012345</xfov><yfov>123456789012345</yfov>", "1", "2"),
     projection(scaleOf(123456789012345.0), scaleOf(123456789012345.0), 1.0, 2.0)},
    // Neither the unrounded scale nor a product in float gives the same result.
    {"ProductOfTheNarrowedScale", perspectiveOf("<yfov>22</yfov><aspect_ratio>1.3</aspect_ratio>", "1", "2"),
     projection(narrowed(double(scaleOf(22.0)) * 1.3), scaleOf(22.0), 1.0, 2.0)},
    {"QuotientOfTheNarrowedScale", perspectiveOf("<xfov>24</xfov><aspect_ratio>1.3</aspect_ratio>", "1", "2"),
     projection(scaleOf(24.0), narrowed(double(scaleOf(24.0)) / 1.3), 1.0, 2.0)},
    {"QuotientByAnAspectRatioOfZero", perspectiveOf("<xfov>24</xfov><aspect_ratio>0</aspect_ratio>", "1", "2"),
     projection(scaleOf(24.0), infinity, 1.0, 2.0)});

// ---- animations

TEST(CameraTest, AddedAnimationsStandInTheirOrderAndAreShared)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><yfov>90</yfov>"));
    const AnimationHandle first = curve("a", "1 2");
    const AnimationHandle second = failedAnimation();
    camera.addAnimation(first);
    camera.addAnimation(second);
    camera.addAnimation(first);
    const AnimationList& list = animationsField(camera);
    ASSERT_EQ(3u, list.size());
    EXPECT_EQ(first, list[0]);
    EXPECT_EQ(second, list[1]);
    EXPECT_EQ(first, list[2]);
    EXPECT_EQ(3u, first.useCount());
}

TEST(CameraTest, EmptyAnimationHandleThrowsNullPointer)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><yfov>90</yfov>"));
    const LogCapture log;
    try {
        camera.addAnimation(AnimationHandle());
        ADD_FAILURE() << "nothing thrown";
    } catch (const vesk::NullPointer& exception) {
        EXPECT_FALSE(exception.message().empty());
    }
    EXPECT_EQ("", log.text());
    EXPECT_EQ(0u, animationsField(camera).size());
}

TEST(CameraTest, AnimationLengthIsThatOfTheLongest)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><yfov>90</yfov>"));
    EXPECT_EQ(0.0, camera.animationLength());
    camera.addAnimation(failedAnimation());
    EXPECT_EQ(0.0, camera.animationLength());
    camera.addAnimation(curve("nothing", "1 2"));
    camera.addAnimation(failedAnimation());
    EXPECT_EQ(3.0, camera.animationLength());
}

TEST(CameraTest, WithoutAnimationsEachTimeGivesTheMatrixAsItStandsWithoutAnAllocation)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><yfov>90</yfov>"));
    camera.transform(matrixOf(counting));
    const Floats before = elements(camera.projectionMatrix());
    const LogCapture log;
    const Matrix4* result = nullptr;
    long requests = -1;
    {
        const FailingAllocator allocator(-1);
        camera.projectionMatrix(0.0);
        camera.projectionMatrix(1.0e9);
        result = &camera.projectionMatrix(2.0);
        requests = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ(&camera.projectionMatrix(), result);
    expectFloats(before, *result);
    EXPECT_EQ("", log.text());
}

/// Both angles and both planes, each with its own sid.
const char* const namedOptics = "<xfov sid='x'>70</xfov><yfov sid='y'>40</yfov>"
                                "<znear sid='n'>0.5</znear><zfar sid='f'>200</zfar>";

TEST(CameraTest, EvaluationTakesEachValueFromItsAnimation)
{
    PerspectiveCamera camera = load(optics(namedOptics));
    camera.addAnimation(curve("f", "90 130"));
    camera.addAnimation(curve("y.ANGLE", "20 40"));
    camera.addAnimation(curve("n", "2 6"));
    camera.addAnimation(curve("x.ANGLE", "40 80"));
    const LogCapture log;
    const Matrix4& result = camera.projectionMatrix(meanTime);
    EXPECT_EQ(&camera.projectionMatrix(), &result);
    expectFloats(projection(scaleOf(60.0), scaleOf(30.0), 4.0, 110.0), result);
    EXPECT_EQ("", log.text());
}

TEST(CameraTest, EvaluationHandsTheStoredValueToTheAnimation)
{
    PerspectiveCamera camera = load(optics(namedOptics));
    for (const char* sid : {"x", "y", "n", "f"}) {
        camera.addAnimation(curve(sid, "1 2"));
    }
    // At second 0, an animation returns the value that it is given.
    expectFloats(projection(scaleOf(70.0), scaleOf(40.0), 0.5, 200.0), camera.projectionMatrix(0.0));
}

TEST(CameraTest, EvaluationLeavesTheParameters)
{
    PerspectiveCamera camera = load(optics(namedOptics));
    for (const char* sid : {"x", "y", "n", "f"}) {
        camera.addAnimation(curve(sid, "10 20"));
    }
    camera.projectionMatrix(meanTime);
    expectParameter(70.0, "x", xfovField(camera));
    expectParameter(40.0, "y", yfovField(camera));
    expectParameter(0.5, "n", znearField(camera));
    expectParameter(200.0, "f", zfarField(camera));
}

TEST(CameraTest, EachEvaluationStartsAnew)
{
    PerspectiveCamera camera = load(optics(namedOptics));
    for (const char* sid : {"x", "y", "n"}) {
        camera.addAnimation(curve(sid, "10 20"));
    }
    camera.addAnimation(curve("f", "110 130"));
    const Floats atTwo = projection(scaleOf(15.0), scaleOf(15.0), 15.0, 120.0);
    expectFloats(atTwo, camera.projectionMatrix(2.0));
    expectFloats(projection(scaleOf(10.0), scaleOf(10.0), 10.0, 110.0), camera.projectionMatrix(1.0));
    expectFloats(atTwo, camera.projectionMatrix(2.0));
}

TEST(CameraTest, EvaluationOverwritesATransform)
{
    PerspectiveCamera camera = load(optics(namedOptics));
    for (const char* sid : {"x", "y", "n", "f"}) {
        camera.addAnimation(curve(sid, "1 2"));
    }
    camera.transform(matrixOf(counting));
    expectFloats(projection(scaleOf(70.0), scaleOf(40.0), 0.5, 200.0), camera.projectionMatrix(0.0));
}

/// Given are the sid and the values of each animation; the matrix at the mean time is expected.
class CameraEvaluationTest
    : public testing::TestWithParam<Case<std::vector<std::pair<const char*, const char*>>, Floats>> {};

TEST_P(CameraEvaluationTest, WhatNoAnimationSetsIsZero)
{
    PerspectiveCamera camera = load(optics(namedOptics));
    for (const auto& animation : GetParam().given) {
        camera.addAnimation(curve(animation.first, animation.second));
    }
    const LogCapture log;
    expectFloats(GetParam().expected, camera.projectionMatrix(meanTime));
    EXPECT_EQ("", log.text());
}

// An angle of 0 has an infinite scale, and two planes at 0 give 0 / 0.
const Floats allZero = projection(infinity, infinity, notANumber, notANumber);

INSTANTIATE_ROWS(
    Rows, CameraEvaluationTest,
    {"XfovAlone", {{"x", "40 80"}}, projection(scaleOf(60.0), infinity, notANumber, notANumber)},
    {"YfovAlone", {{"y", "40 80"}}, projection(infinity, scaleOf(60.0), notANumber, notANumber)},
    {"BothAngles", {{"x", "40 80"}, {"y", "20 40"}}, projection(scaleOf(60.0), scaleOf(30.0), notANumber, notANumber)},
    // 0 / (0 - 4) = -0, and -(-0 * 4) = 0
    {"NearAlone", {{"n", "2 6"}}, projection(infinity, infinity, -0.0f, 0.0f)},
    // 10 / (10 - 0) = 1, and -(1 * 0) = -0
    {"FarAlone", {{"f", "5 15"}}, projection(infinity, infinity, 1.0f, -0.0f)},
    {"BothPlanes", {{"n", "2 6"}, {"f", "5 15"}}, projection(infinity, infinity, 4.0, 10.0)},
    {"PlanesMeet", {{"n", "2 6"}, {"f", "3 5"}}, projection(infinity, infinity, infinity, -infinity)},
    {"NoTarget", {{"other", "2 6"}}, allZero},
    {"CaseCounts", {{"X", "2 6"}, {"Y", "2 6"}, {"N", "2 6"}, {"F", "2 6"}}, allZero},
    {"LongerTarget", {{"xx", "2 6"}, {"x(0)", "2 6"}}, allZero},
    {"EmptyTargetWithoutAnEmptySid", {{"", "2 6"}}, allZero},
    {"LaterOfTwoWins", {{"x", "40 80"}, {"x", "20 40"}}, projection(scaleOf(30.0), infinity, notANumber, notANumber)},
    {"LaterOfThreeWinsWithOthersBetween",
     {{"x", "40 80"}, {"y", "40 80"}, {"x", "1 1"}, {"n", "2 6"}, {"f", "5 15"}, {"x", "20 40"}},
     projection(scaleOf(30.0), scaleOf(60.0), 4.0, 10.0)});

struct SidCase : Row {
    std::array<const char*, 4> sids; ///< of xfov, yfov, znear and zfar; null for a parameter that is absent
    const char* target;
    Floats expected; ///< with the animated parameter at 8
};

class CameraSidTest : public testing::TestWithParam<SidCase> {};

TEST_P(CameraSidTest, AnimationSetsTheFirstPresentParameterWithItsSid)
{
    PerspectiveCamera camera = unreadCamera();
    const std::array<Parameter*, 4> parameters = {&xfovField(camera), &yfovField(camera), &znearField(camera),
                                                  &zfarField(camera)};
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (GetParam().sids[i] != nullptr) {
            *parameters[i] = new PerspectiveParameter(100.0 + static_cast<double>(i), GetParam().sids[i]);
        }
    }
    aspectRatioField(camera) = new PerspectiveParameter(2.0, "v");
    camera.addAnimation(curve(GetParam().target, "8 8"));
    const LogCapture log;
    expectFloats(GetParam().expected, camera.projectionMatrix(meanTime));
    EXPECT_EQ("", log.text());
}

INSTANTIATE_ROWS(
    EqualSids, CameraSidTest,
    {"XfovIsFirst", {"v", "v", "v", "v"}, "v", projection(scaleOf(8.0), infinity, notANumber, notANumber)},
    {"YfovIsSecond", {"other", "v", "v", "v"}, "v", projection(infinity, scaleOf(8.0), notANumber, notANumber)},
    {"NearIsThird", {"other", "other", "v", "v"}, "v", projection(infinity, infinity, -0.0f, 0.0f)},
    {"FarIsLast", {"other", "other", "other", "v"}, "v", projection(infinity, infinity, 1.0f, -0.0f)},
    {"AspectRatioIsNoTarget", {"other", "other", "other", "other"}, "v", allZero},
    {"AbsentXfovIsPassedOver",
     {nullptr, "v", "v", "v"},
     "v",
     projection(narrowed(double(scaleOf(8.0)) * 2.0), scaleOf(8.0), notANumber, notANumber)},
    {"AbsentYfovIsPassedOver", {"other", nullptr, "v", "v"}, "v", projection(infinity, infinity, -0.0f, 0.0f)},
    {"AbsentAnglesArePassedOver", {nullptr, nullptr, "v", "v"}, "v", projection(0.0f, 0.0f, -0.0f, 0.0f)},
    {"AbsentNearIsPassedOver", {nullptr, nullptr, nullptr, "v"}, "v", projection(0.0f, 0.0f, 1.0f, -0.0f)},
    {"NothingPresent", {nullptr, nullptr, nullptr, nullptr}, "v", projection(0.0f, 0.0f, notANumber, notANumber)},
    {"EmptySidEqualsEmptyTarget", {"x", "", "", "f"}, "", projection(infinity, scaleOf(8.0), notANumber, notANumber)});

TEST(CameraTest, AnimationThatFailedHasAnEmptyTargetAndGivesTheStoredValue)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>70</xfov><yfov>40</yfov>"));
    camera.addAnimation(failedAnimation());
    expectFloats(projection(scaleOf(70.0), infinity, notANumber, notANumber), camera.projectionMatrix(meanTime));
}

TEST(CameraTest, EvaluationWithOneAngleUsesTheStoredAspectRatio)
{
    PerspectiveCamera camera = load(optics("<yfov sid='y'>40</yfov><aspect_ratio sid='a'>1.7</aspect_ratio>"
                                           "<znear sid='n'>0.5</znear><zfar sid='f'>200</zfar>"));
    camera.addAnimation(curve("y", "20 40"));
    camera.addAnimation(curve("n", "2 6"));
    camera.addAnimation(curve("f", "90 130"));
    camera.addAnimation(curve("a", "5 5")); // not used by the evaluation
    expectFloats(projection(narrowed(double(scaleOf(30.0)) * 1.7), scaleOf(30.0), 4.0, 110.0),
                 camera.projectionMatrix(meanTime));
}

TEST(CameraTest, EvaluationWithOneAngleAndNoAspectRatioLogsEachTime)
{
    PerspectiveCamera camera = load(optics("<xfov sid='x'>70</xfov><znear sid='n'>0.5</znear><zfar sid='f'>9</zfar>"));
    camera.addAnimation(curve("x", "40 80"));
    camera.addAnimation(curve("n", "2 6"));
    camera.addAnimation(curve("f", "90 130"));
    LogCapture log;
    expectFloats(projection(scaleOf(60.0), 0.0f, 4.0, 110.0), camera.projectionMatrix(meanTime));
    expectErrors("libVideo.camera", noAspectRatio, log);
    log.clear();
    camera.projectionMatrix(meanTime);
    expectErrors("libVideo.camera", noAspectRatio, log);
}

TEST(CameraTest, EvaluationOfACameraThatFailedToLoadLogsTheMissingAspectRatio)
{
    PerspectiveCamera camera = load("<optics/>");
    camera.addAnimation(curve("x", "40 80"));
    const LogCapture log;
    expectFloats(projection(0.0f, 0.0f, notANumber, notANumber), camera.projectionMatrix(meanTime));
    expectErrors("libVideo.camera", noAspectRatio, log);
}

TEST(CameraTest, ExceptionOfAnAnimationPassesAndLeavesTheMatrix)
{
    PerspectiveCamera camera = load(optics(namedOptics));
    camera.addAnimation(curve("x", "40 80"));
    camera.addAnimation(curve("y", "40 80", "BEZIER")); // has no tangents
    const Floats before = elements(camera.projectionMatrix());
    EXPECT_THROW(camera.projectionMatrix(meanTime), vesk::IndexOutOfBounds);
    expectFloats(before, camera.projectionMatrix());
}

// ---- transform

TEST(CameraTest, TransformMultipliesOnTheRight)
{
    PerspectiveCamera camera = unreadCamera();
    Matrix4 left;
    left(0, 1) = 2.0f;
    left(1, 0) = 1.0f;
    left(2, 2) = 3.0f;
    left(3, 3) = 1.0f;
    projectionField(camera) = left;
    const Matrix4& result = camera.transform(matrixOf(counting));
    EXPECT_EQ(&camera.projectionMatrix(), &result);
    // Twice the second row, the first, three times the third, the fourth.
    expectFloats({10, 12, 14, 16, 1, 2, 3, 4, 27, 30, 33, 36, 13, 14, 15, 16}, result);
}

TEST(CameraTest, TransformByTheProjectionItselfSquaresIt)
{
    PerspectiveCamera camera = unreadCamera();
    projectionField(camera) = matrixOf(counting);
    camera.transform(camera.projectionMatrix());
    expectFloats({90, 100, 110, 120, 202, 228, 254, 280, 314, 356, 398, 440, 426, 484, 542, 600},
                 camera.projectionMatrix());
}

TEST(CameraTest, TransformsAddUp)
{
    PerspectiveCamera camera = unreadCamera();
    Matrix4 doubled;
    for (unsigned i = 0; i < 4; ++i) {
        doubled(i, i) = 2.0f;
    }
    projectionField(camera) = matrixOf(counting);
    camera.transform(doubled);
    camera.transform(doubled);
    expectFloats({4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 52, 56, 60, 64}, camera.projectionMatrix());
}

// ---- setAspectRatio

TEST(CameraTest, AspectRatioOfACameraWithoutOneIsNotSet)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><yfov>90</yfov>"));
    const LogCapture log;
    camera.setAspectRatio(3.0);
    EXPECT_FALSE(aspectRatioField(camera));
    EXPECT_EQ("", log.text());
}

TEST(CameraTest, AspectRatioIsWrittenIntoTheSharedParameter)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><aspect_ratio sid='a'>2</aspect_ratio>"));
    const PerspectiveParameter* const before = aspectRatioField(camera).get();
    camera.setAspectRatio(3.0);
    expectParameter(3.0, "a", aspectRatioField(camera));
    EXPECT_EQ(before, aspectRatioField(camera).get());
}

TEST(CameraTest, EqualAspectRatioChangesNothing)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><aspect_ratio>2</aspect_ratio>"));
    camera.setAspectRatio(2.0);
    expectParameter(2.0, "", aspectRatioField(camera));
}

TEST(CameraTest, ZeroOfTheOtherSignIsAnEqualAspectRatio)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><aspect_ratio>0</aspect_ratio>"));
    camera.setAspectRatio(-0.0);
    EXPECT_FALSE(std::signbit(aspectRatioField(camera)->value));
}

TEST(CameraTest, AspectRatioDoesNotRecomputeTheMatrix)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><aspect_ratio>2</aspect_ratio>"));
    const Floats before = elements(camera.projectionMatrix());
    camera.setAspectRatio(3.0);
    expectFloats(before, camera.projectionMatrix());
    expectFloats(before, camera.projectionMatrix(1.0));
}

TEST(CameraTest, AspectRatioTakesEffectAtTheNextEvaluation)
{
    PerspectiveCamera camera = load(optics("<xfov sid='x'>90</xfov><aspect_ratio>2</aspect_ratio>"
                                           "<znear sid='n'>1</znear><zfar sid='f'>101</zfar>"));
    for (const char* sid : {"x", "n", "f"}) {
        camera.addAnimation(curve(sid, "1 2"));
    }
    const Floats before = elements(camera.projectionMatrix());
    camera.setAspectRatio(3.0);
    expectFloats(before, camera.projectionMatrix());
    expectFloats(projection(scaleOf(90.0), narrowed(double(scaleOf(90.0)) / 3.0), 1.0, 101.0),
                 camera.projectionMatrix(0.0));
}

TEST(CameraTest, ClonesAndCopiesShareTheAspectRatioInBothDirections)
{
    PerspectiveCamera camera = load(opticsWith("<xfov>90</xfov><aspect_ratio>2</aspect_ratio>"));
    const CameraHandle clone = camera.clone();
    PerspectiveCamera copy(camera);
    clone->setAspectRatio(3.0);
    expectParameter(3.0, "", aspectRatioField(camera));
    expectParameter(3.0, "", aspectRatioField(copy));
    camera.setAspectRatio(4.0);
    expectParameter(4.0, "", aspectRatioField(copy));
    const auto& other = dynamic_cast<const PerspectiveCamera&>(*clone);
    expectParameter(4.0, "", aspectRatioField(other));
}

// ---- copies

/// Two angles, an aspect ratio, a look-at reference, a matrix of its own and two animations.
PerspectiveCamera fullCamera()
{
    PerspectiveCamera camera = load(optics(namedOptics) + vendorExtra("<t>scene.dae#Target</t>"));
    aspectRatioField(camera) = new PerspectiveParameter(1.5, "a");
    projectionField(camera) = matrixOf(counting);
    camera.addAnimation(curve("x", "40 80"));
    camera.addAnimation(curve("y", "40 80"));
    return camera;
}

/// Equal texts and matrix, and the same parameters and animations.
void expectCopy(const PerspectiveCamera& camera, const PerspectiveCamera& copy)
{
    EXPECT_EQ(textOf(camera.name()), textOf(copy.name()));
    EXPECT_EQ(textOf(camera.id()), textOf(copy.id()));
    EXPECT_EQ(textOf(camera.lookAtNodeURI()), textOf(copy.lookAtNodeURI()));
    EXPECT_EQ(textOf(camera.lookAtNode()), textOf(copy.lookAtNode()));
    expectFloats(elements(camera.projectionMatrix()), copy.projectionMatrix());
    EXPECT_EQ(parametersOf(camera), parametersOf(copy));
    const AnimationList& animations = animationsField(camera);
    const AnimationList& copied = animationsField(copy);
    ASSERT_EQ(animations.size(), copied.size());
    for (unsigned i = 0; i < animations.size(); ++i) {
        EXPECT_EQ(animations[i], copied[i]) << i;
    }
}

TEST(CameraTest, CopySharesParametersAndAnimations)
{
    const PerspectiveCamera camera = fullCamera();
    const PerspectiveCamera copy(camera);
    expectCopy(camera, copy);
    EXPECT_EQ("Target", textOf(copy.lookAtNode()));
    for (const PerspectiveParameter* parameter : parametersOf(copy)) {
        EXPECT_NE(nullptr, parameter);
    }
    EXPECT_EQ(2u, animationsField(camera).size());
}

TEST(CameraTest, AssignmentSharesParametersAndAnimations)
{
    const PerspectiveCamera camera = fullCamera();
    PerspectiveCamera target = load(opticsWith("<xfov>1</xfov><aspect_ratio>9</aspect_ratio>"));
    target.addAnimation(curve("z", "1 2"));
    target.addAnimation(curve("z", "1 2"));
    target.addAnimation(curve("z", "1 2"));
    PerspectiveCamera& result = (target = camera);
    EXPECT_EQ(&target, &result);
    expectCopy(camera, target);
    EXPECT_EQ(2u, xfovField(camera).useCount());
}

TEST(CameraTest, AssignmentOfAnUnreadCameraEmptiesTheHandles)
{
    PerspectiveCamera camera = fullCamera();
    const Parameter kept = xfovField(camera);
    camera = unreadCamera();
    EXPECT_EQ(std::vector<const PerspectiveParameter*>(5, nullptr), parametersOf(camera));
    EXPECT_EQ(0u, animationsField(camera).size());
    EXPECT_EQ("", textOf(camera.id()));
    expectFloats(Floats{}, camera.projectionMatrix());
    EXPECT_EQ(1u, kept.useCount());
}

TEST(CameraTest, AssignmentToItselfChangesNothing)
{
    PerspectiveCamera camera = fullCamera();
    const PerspectiveCamera copy(camera);
    PerspectiveCamera& alias = camera;
    camera = alias;
    expectCopy(copy, camera);
    EXPECT_EQ(2u, zfarField(camera).useCount());
}

TEST(CameraTest, AssignmentThroughTheBaseCopiesTheAnimationsOnly)
{
    const PerspectiveCamera camera = fullCamera();
    PerspectiveCamera target = load(opticsWith("<xfov>1</xfov><yfov>2</yfov>") + vendorExtra("<t>#Own</t>"));
    static_cast<Camera&>(target) = camera;
    const AnimationList& animations = animationsField(target);
    ASSERT_EQ(2u, animations.size());
    EXPECT_EQ(animationsField(camera)[0], animations[0]);
    EXPECT_EQ(animationsField(camera)[1], animations[1]);
    EXPECT_EQ("Own", textOf(target.lookAtNode()));
    expectParameter(1.0, "", xfovField(target));
}

TEST(CameraTest, CopyHasMatrixTextsAndListOfItsOwn)
{
    PerspectiveCamera camera = fullCamera();
    PerspectiveCamera copy(camera);
    copy.transform(Matrix4());
    copy.addAnimation(curve("f", "1 2"));
    nameField(copy) = "Other";
    expectFloats(counting, camera.projectionMatrix());
    EXPECT_EQ(2u, animationsField(camera).size());
    EXPECT_EQ("Eye", textOf(camera.name()));
}

TEST(CameraTest, CloneIsAPerspectiveCameraInAFreshHandle)
{
    const PerspectiveCamera camera = fullCamera();
    const Camera& base = camera;
    const CameraHandle clone = base.clone();
    ASSERT_TRUE(clone);
    EXPECT_EQ(1u, clone.useCount());
    EXPECT_NE(&base, clone.get());
    const auto* const copy = dynamic_cast<const PerspectiveCamera*>(clone.get());
    ASSERT_NE(nullptr, copy);
    expectCopy(camera, *copy);
    EXPECT_EQ(2u, aspectRatioField(camera).useCount());
}

TEST(CameraTest, CloneOutlivesItsSource)
{
    CameraHandle clone;
    {
        const PerspectiveCamera camera = fullCamera();
        clone = camera.clone();
    }
    const auto& copy = dynamic_cast<const PerspectiveCamera&>(*clone);
    EXPECT_EQ("eye", textOf(clone->id()));
    EXPECT_EQ(1u, xfovField(copy).useCount());
    expectFloats(projection(scaleOf(60.0), scaleOf(60.0), notANumber, notANumber), clone->projectionMatrix(meanTime));
}

// ---- createCameraListFromCollada

std::string listed(const std::string& id, const std::string& content)
{
    return "<camera id='" + id + "' name='" + id + "'>" + content + "</camera>";
}

const std::string complete = opticsWith("<xfov>90</xfov><yfov>90</yfov>");
const std::string orthographic = "<optics><technique_common><orthographic><xmag>1</xmag><znear>1</znear>"
                                 "<zfar>2</zfar></orthographic></technique_common></optics>";

/// A list with one camera.
CameraList filledList()
{
    CameraList list;
    list.append(CameraHandle(new PerspectiveCamera(fullCamera())));
    return list;
}

std::vector<std::string> idsOf(const CameraList& list)
{
    std::vector<std::string> ids;
    for (const CameraHandle& camera : list) {
        ids.push_back(textOf(camera->id()));
    }
    return ids;
}

TEST(CameraListTest, NullDocumentLeavesTheListAsItWas)
{
    ColladaBuilder builder;
    CameraList list = filledList();
    const CameraHandle before = list[0];
    const LogCapture log;
    EXPECT_EQ(0u, libVideo::createCameraListFromCollada(nullptr, builder.dae(), list));
    expectErrors("libVideo.camera", noDocument, log);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ(before, list[0]);
}

TEST(CameraListTest, DocumentWithoutCamerasClearsTheList)
{
    for (const char* xml : {"", "<library_cameras/>"}) {
        ColladaBuilder builder(xml);
        const domCOLLADA* const root = builder.open();
        ASSERT_NE(nullptr, root);
        CameraList list = filledList();
        const CameraHandle before = list[0];
        const LogCapture log;
        EXPECT_EQ(0u, libVideo::createCameraListFromCollada(root, builder.dae(), list));
        EXPECT_EQ("", log.text());
        EXPECT_EQ(0u, list.size());
        EXPECT_EQ(1u, before.useCount()); // the list no longer owns it
    }
}

TEST(CameraListTest, AllLibrariesAreReadInDocumentOrder)
{
    ColladaBuilder builder(library("library_cameras", listed("b", complete) + listed("a", complete)) +
                           "<library_cameras/>" + library("library_cameras", listed("c", complete)));
    const domCOLLADA* const root = builder.open();
    CameraList list = filledList();
    const LogCapture log;
    EXPECT_EQ(3u, libVideo::createCameraListFromCollada(root, builder.dae(), list));
    EXPECT_EQ("", log.text());
    EXPECT_EQ((std::vector<std::string>{"b", "a", "c"}), idsOf(list));
    for (const CameraHandle& camera : list) {
        EXPECT_EQ(1u, camera.useCount());
        EXPECT_NE(nullptr, dynamic_cast<const PerspectiveCamera*>(camera.get()));
        expectFloats(projection(scaleOf(90.0), scaleOf(90.0), 1.0, 101.0), camera->projectionMatrix());
    }
}

TEST(CameraListTest, SecondRunStartsAnew)
{
    ColladaBuilder builder(library("library_cameras", listed("a", complete) + listed("b", complete)));
    const domCOLLADA* const root = builder.open();
    CameraList list;
    EXPECT_EQ(2u, libVideo::createCameraListFromCollada(root, builder.dae(), list));
    const CameraHandle before = list[0];
    EXPECT_EQ(2u, libVideo::createCameraListFromCollada(root, builder.dae(), list));
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), idsOf(list));
    EXPECT_NE(before, list[0]);
}

TEST(CameraListTest, CamerasWithoutPerspectiveArePassedOverInSilence)
{
    ColladaBuilder builder(
        library("library_cameras", listed("first", orthographic) + listed("a", complete) + listed("noOptics", "") +
                                       listed("noTechnique", "<optics/>") +
                                       listed("emptyTechnique", "<optics><technique_common/></optics>") +
                                       listed("b", complete) + listed("last", orthographic)));
    const domCOLLADA* const root = builder.open();
    CameraList list;
    const LogCapture log;
    EXPECT_EQ(2u, libVideo::createCameraListFromCollada(root, builder.dae(), list));
    EXPECT_EQ("", log.text());
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), idsOf(list));
}

TEST(CameraListTest, CamerasThatFailStayInTheList)
{
    ColladaBuilder builder(library("library_cameras", listed("noNear", optics("<xfov>90</xfov><zfar>2</zfar>")) +
                                                          listed("good", complete) +
                                                          listed("noFar", optics("<xfov>90</xfov><znear>1</znear>")) +
                                                          listed("noAspectRatio", opticsWith("<xfov>90</xfov>"))));
    const domCOLLADA* const root = builder.open();
    CameraList list;
    const LogCapture log;
    EXPECT_EQ(4u, libVideo::createCameraListFromCollada(root, builder.dae(), list));
    EXPECT_EQ("Camera noNear does not have near plane data\n"
              "Camera noFar does not have far plane data\n"
              "Camera :noAspectRatio does not have required aspect ratio data",
              log.text());
    ASSERT_EQ((std::vector<std::string>{"noNear", "good", "noFar", "noAspectRatio"}), idsOf(list));
    expectFloats(Floats{}, list[0]->projectionMatrix());
    expectFloats(projection(scaleOf(90.0), scaleOf(90.0), 1.0, 101.0), list[1]->projectionMatrix());
    expectFloats(Floats{}, list[2]->projectionMatrix());
    expectFloats(projection(scaleOf(90.0), 0.0f, 1.0, 101.0), list[3]->projectionMatrix());
}

TEST(CameraListTest, BaseURIKeepsTheReferenceOfTheLastCameraThatHasOne)
{
    ColladaBuilder builder(library("library_cameras", listed("a", complete + vendorExtra("<t>a.dae#A</t>")) +
                                                          listed("b", complete + vendorExtra("<t>b.dae#B</t>")) +
                                                          listed("c", complete) +
                                                          listed("d", orthographic + vendorExtra("<t>d.dae#D</t>"))));
    const domCOLLADA* const root = builder.open();
    CameraList list;
    EXPECT_EQ(3u, libVideo::createCameraListFromCollada(root, builder.dae(), list));
    EXPECT_EQ("A", textOf(list[0]->lookAtNode()));
    EXPECT_EQ("B", textOf(list[1]->lookAtNode()));
    EXPECT_EQ("", textOf(list[2]->lookAtNode()));
    EXPECT_EQ("b.dae#B", builder.dae().getBaseURI().originalStr());
}

const char* const entry = "> Camera::createCameraListFromCollada (libVideo/SceneGraph/Camera";
const char* const leaving = "< Camera::createCameraListFromCollada";

TEST(CameraListTest, OpensATrace)
{
    ColladaBuilder builder(library("library_cameras", listed("a", complete)));
    const domCOLLADA* const root = builder.open();
    CameraList list;
    const auto create = [&] { libVideo::createCameraListFromCollada(root, builder.dae(), list); };
    EXPECT_EQ(texts(entry, leaving), tracedTexts(create));
    EXPECT_EQ(texts(entry, leaving), tracedTexts(create, "libVideo.camera"));
}

TEST(CameraListTest, NullDocumentIsLoggedInsideTheTrace)
{
    ColladaBuilder builder;
    CameraList list;
    const auto create = [&] { libVideo::createCameraListFromCollada(nullptr, builder.dae(), list); };
    EXPECT_EQ(texts(entry, noDocument, leaving), tracedTexts(create));
    EXPECT_EQ(texts(entry, noDocument, leaving), tracedTexts(create, "libVideo.camera"));
}

static_assert(std::is_abstract_v<Camera> && std::has_virtual_destructor_v<Camera>);
static_assert(std::is_convertible_v<PerspectiveCamera*, Camera*>);
static_assert(!std::is_abstract_v<PerspectiveCamera> && !std::is_default_constructible_v<PerspectiveCamera>);
static_assert(std::is_constructible_v<PerspectiveCamera, const CameraRef&, DAE&>);
static_assert(std::is_copy_constructible_v<PerspectiveCamera> && std::is_copy_assignable_v<PerspectiveCamera>);
static_assert(!std::is_polymorphic_v<PerspectiveParameter> &&
              std::is_constructible_v<PerspectiveParameter, double, const vesk::String&> &&
              !std::is_default_constructible_v<PerspectiveParameter>);
static_assert(std::is_same_v<double, decltype(PerspectiveParameter::value)> &&
              std::is_same_v<vesk::String, decltype(PerspectiveParameter::sid)>);
static_assert(std::is_same_v<CameraHandle, decltype(std::declval<const Camera&>().clone())>);
static_assert(std::is_same_v<const Matrix4&, decltype(std::declval<Camera&>().projectionMatrix(1.0))>);
static_assert(std::is_same_v<const Matrix4&, decltype(std::declval<const Camera&>().projectionMatrix())>);
static_assert(std::is_same_v<const Matrix4&, decltype(std::declval<Camera&>().transform(Matrix4()))>);
static_assert(std::is_same_v<const vesk::String&, decltype(std::declval<const Camera&>().name())> &&
              std::is_same_v<const vesk::String&, decltype(std::declval<const Camera&>().id())> &&
              std::is_same_v<const vesk::String&, decltype(std::declval<const Camera&>().lookAtNode())> &&
              std::is_same_v<const vesk::String&, decltype(std::declval<const PerspectiveCamera&>().lookAtNodeURI())>);
static_assert(std::is_same_v<void, decltype(std::declval<Camera&>().setAspectRatio(1.0))> &&
              std::is_same_v<void, decltype(std::declval<Camera&>().addAnimation(AnimationHandle()))>);
static_assert(std::is_same_v<bool, decltype(std::declval<PerspectiveCamera&>().createFromCollada(
                                       std::declval<const CameraRef&>(), std::declval<DAE&>()))>);
static_assert(std::is_same_v<unsigned, decltype(libVideo::createCameraListFromCollada(std::declval<const domCOLLADA*>(),
                                                                                      std::declval<DAE&>(),
                                                                                      std::declval<CameraList&>()))>);

void expectFloats(const Floats& expected, const Matrix4& actual)
{
    for (unsigned i = 0; i < 16; ++i) {
        if (std::isnan(expected[i])) {
            EXPECT_TRUE(std::isnan(actual[i])) << "element " << i << " is " << actual[i];
        } else {
            EXPECT_EQ(expected[i], actual[i]) << "element " << i;
            EXPECT_EQ(std::signbit(expected[i]), std::signbit(actual[i])) << "sign of element " << i;
        }
    }
}

} // namespace
