#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Light.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using PointElement = domLight::domTechnique_common::domPoint;
using SpotElement = domLight::domTechnique_common::domSpot;
using PointList = vesk::Array<PointLightHandle>;
using SpotList = vesk::Array<SpotLightHandle>;

PRIVATE_MEMBER(pointColor, Vector3 PointLight::*, &PointLight::m_color)
PRIVATE_MEMBER(pointConstant, float PointLight::*, &PointLight::m_constantAttenuation)
PRIVATE_MEMBER(pointLinear, float PointLight::*, &PointLight::m_linearAttenuation)
PRIVATE_MEMBER(pointQuadratic, float PointLight::*, &PointLight::m_quadraticAttenuation)
PRIVATE_MEMBER(pointId, vesk::String PointLight::*, &PointLight::m_id)

PRIVATE_MEMBER(spotColor, Vector3 SpotLight::*, &SpotLight::m_color)
PRIVATE_MEMBER(spotConstant, float SpotLight::*, &SpotLight::m_constantAttenuation)
PRIVATE_MEMBER(spotLinear, float SpotLight::*, &SpotLight::m_linearAttenuation)
PRIVATE_MEMBER(spotQuadratic, float SpotLight::*, &SpotLight::m_quadraticAttenuation)
PRIVATE_MEMBER(spotOuterCone, float SpotLight::*, &SpotLight::m_outerConeAngle)
PRIVATE_MEMBER(spotInnerCone, float SpotLight::*, &SpotLight::m_innerConeAngle)
PRIVATE_MEMBER(spotExponent, float SpotLight::*, &SpotLight::m_falloffExponent)
PRIVATE_MEMBER(spotLookAtNodeId, vesk::String SpotLight::*, &SpotLight::m_lookAtNodeId)
PRIVATE_MEMBER(spotId, vesk::String SpotLight::*, &SpotLight::m_id)

TEST(PointLightTest, FieldsStandInTheirOrder)
{
    const PointLight light("lamp");
    expectAscending(
        {&pointColor(light), &pointConstant(light), &pointLinear(light), &pointQuadratic(light), &pointId(light)});
}

TEST(SpotLightTest, FieldsStandInTheirOrder)
{
    const SpotLight light("lamp");
    expectAscending({&spotColor(light), &spotConstant(light), &spotLinear(light), &spotQuadratic(light),
                     &spotOuterCone(light), &spotInnerCone(light), &spotExponent(light), &spotLookAtNodeId(light),
                     &spotId(light)});
}

const char* const noDocument = "Cannot create a camera list from a NULL domCOLLADA pointer";
const char* const noPointColor = "PointLight has no color component";
const char* const noSpotColor = "SpotLight has no color component";
const char* const shortColor = "Color has fewer than three values";

/// A document with one light.
class LightDocument {
public:
    explicit LightDocument(const std::string& content)
        : m_builder("<library_lights><light id='lamp'>" + content + "</light></library_lights>")
    {
        m_root = m_builder.open();
    }

    domLightRef light() { return m_root->getLibrary_lights_array()[0]->getLight_array()[0]; }
    DAE& dae() { return m_builder.dae(); }

private:
    ColladaBuilder m_builder;
    const domCOLLADA* m_root;
};

std::string pointWith(const std::string& content)
{
    return "<technique_common><point>" + content + "</point></technique_common>";
}

std::string spotWith(const std::string& content)
{
    return "<technique_common><spot>" + content + "</spot></technique_common>";
}

bool load(PointLight& light, const std::string& content)
{
    LightDocument document(pointWith(content));
    return light.createFromCollada(*document.light()->getTechnique_common()->getPoint());
}

bool load(SpotLight& light, const std::string& content)
{
    LightDocument document(spotWith(content));
    return light.createFromCollada(*document.light()->getTechnique_common()->getSpot());
}

void readExtra(SpotLight& light, const std::string& extras)
{
    LightDocument document(spotWith("<color>1 1 1</color>") + extras);
    light.readExtraData(*document.light(), document.dae());
}

using Color = std::array<float, 3>;
const Color white = {1.0f, 1.0f, 1.0f};

template <class Light>
Color colorOf(const Light& light)
{
    return {light.color()[0], light.color()[1], light.color()[2]};
}

/// Constant, linear and quadratic.
template <class Light>
std::array<float, 3> attenuationsOf(const Light& light)
{
    return {light.constantAttenuation(), light.linearAttenuation(), light.quadraticAttenuation()};
}

// ---- data

TEST(PointLightTest, IsWhiteAndBearsItsIdUntilRead)
{
    const PointLight light("lamp");
    EXPECT_EQ(white, colorOf(light));
    EXPECT_EQ((std::array<float, 3>{0.0f, 0.0f, 0.0f}), attenuationsOf(light));
    EXPECT_EQ("lamp", textOf(light.id()));
}

TEST(SpotLightTest, IsWhiteAndBearsItsIdUntilRead)
{
    const SpotLight light("lamp");
    EXPECT_EQ(white, colorOf(light));
    EXPECT_EQ((std::array<float, 3>{0.0f, 0.0f, 0.0f}), attenuationsOf(light));
    EXPECT_EQ(0.0f, light.outerConeAngle());
    EXPECT_EQ(0.0f, light.innerConeAngle());
    EXPECT_EQ(0.0f, light.falloffExponent());
    EXPECT_EQ("", textOf(light.lookAtNodeId()));
    EXPECT_EQ("lamp", textOf(light.id()));
}

TEST(PointLightTest, AccessorsShowTheFields)
{
    PointLight light("lamp");
    pointConstant(light) = 1.0f;
    pointLinear(light) = 2.0f;
    pointQuadratic(light) = 3.0f;
    EXPECT_EQ(&pointColor(light), &light.color());
    EXPECT_EQ(1.0f, light.constantAttenuation());
    EXPECT_EQ(2.0f, light.linearAttenuation());
    EXPECT_EQ(3.0f, light.quadraticAttenuation());
    EXPECT_EQ(&pointId(light), &light.id());
}

TEST(SpotLightTest, AccessorsShowTheFields)
{
    SpotLight light("lamp");
    spotConstant(light) = 1.0f;
    spotLinear(light) = 2.0f;
    spotQuadratic(light) = 3.0f;
    spotOuterCone(light) = 4.0f;
    spotInnerCone(light) = 5.0f;
    spotExponent(light) = 6.0f;
    EXPECT_EQ(&spotColor(light), &light.color());
    EXPECT_EQ(1.0f, light.constantAttenuation());
    EXPECT_EQ(2.0f, light.linearAttenuation());
    EXPECT_EQ(3.0f, light.quadraticAttenuation());
    EXPECT_EQ(4.0f, light.outerConeAngle());
    EXPECT_EQ(5.0f, light.innerConeAngle());
    EXPECT_EQ(6.0f, light.falloffExponent());
    EXPECT_EQ(&spotLookAtNodeId(light), &light.lookAtNodeId());
    EXPECT_EQ(&spotId(light), &light.id());
}

// ---- color and attenuations

struct PointCase : Row {
    const char* xml;
    Color color;
    std::array<float, 3> attenuations;
    const char* words;
};

class PointLightLoadTest : public testing::TestWithParam<PointCase> {};

TEST_P(PointLightLoadTest, ReadsItsElement)
{
    PointLight light("lamp");
    const LogCapture log;
    EXPECT_TRUE(load(light, GetParam().xml));
    EXPECT_EQ(GetParam().color, colorOf(light));
    EXPECT_EQ(GetParam().attenuations, attenuationsOf(light));
    EXPECT_EQ("lamp", textOf(light.id()));
    expectErrors("libVideo.light", GetParam().words, log);
}

INSTANTIATE_ROWS(Documents, PointLightLoadTest,
                 {"ColorOnly", "<color>1 0.5 0</color>", triple(1.0f, 0.5f, 0.0f), triple(0.0f, 0.0f, 0.0f), ""},
                 {"All",
                  "<color>0.25 0.5 0.75</color><constant_attenuation>2</constant_attenuation>"
                  "<linear_attenuation>3</linear_attenuation><quadratic_attenuation>4</quadratic_attenuation>",
                  triple(0.25f, 0.5f, 0.75f), triple(2.0f, 3.0f, 4.0f), ""},
                 {"ConstantOnly", "<color>0 0 0</color><constant_attenuation>2</constant_attenuation>",
                  triple(0.0f, 0.0f, 0.0f), triple(2.0f, 0.0f, 0.0f), ""},
                 {"LinearOnly", "<color>0 0 0</color><linear_attenuation>3</linear_attenuation>",
                  triple(0.0f, 0.0f, 0.0f), triple(0.0f, 3.0f, 0.0f), ""},
                 {"QuadraticOnly", "<color>0 0 0</color><quadratic_attenuation>4</quadratic_attenuation>",
                  triple(0.0f, 0.0f, 0.0f), triple(0.0f, 0.0f, 4.0f), ""},
                 // The values of the document, unclamped and rounded to the nearest float.
                 {"Unclamped", "<color>2.5 -1 100</color><constant_attenuation>-2</constant_attenuation>",
                  triple(2.5f, -1.0f, 100.0f), triple(-2.0f, 0.0f, 0.0f), ""},
                 {"Narrowed", "<color>0.1 16777217 0.7</color><linear_attenuation>0.0123456789</linear_attenuation>",
                  triple(0.1f, 16777216.0f, 0.7f), triple(0.0f, 0.0123456789f, 0.0f), ""},
                 {"FourValues", "<color>0.25 0.5 0.75 0.125</color>", triple(0.25f, 0.5f, 0.75f),
                  triple(0.0f, 0.0f, 0.0f), ""},
                 {"NoColor",
                  "<constant_attenuation>2</constant_attenuation><linear_attenuation>3</linear_attenuation>"
                  "<quadratic_attenuation>4</quadratic_attenuation>",
                  white, triple(2.0f, 3.0f, 4.0f), noPointColor},
                 {"NothingAtAll", "", white, triple(0.0f, 0.0f, 0.0f), noPointColor},
                 {"TwoValues",
                  "<color>0.25 0.5</color><constant_attenuation>2</constant_attenuation>"
                  "<linear_attenuation>3</linear_attenuation><quadratic_attenuation>4</quadratic_attenuation>",
                  white, triple(2.0f, 3.0f, 4.0f), shortColor},
                 {"NoValues", "<color/>", white, triple(0.0f, 0.0f, 0.0f), shortColor});

TEST(PointLightTest, SecondLoadSetsAbsentAttenuationsToZero)
{
    PointLight light("lamp");
    EXPECT_TRUE(load(light, "<color>0 0 0</color><constant_attenuation>2</constant_attenuation>"
                            "<linear_attenuation>3</linear_attenuation>"
                            "<quadratic_attenuation>4</quadratic_attenuation>"));
    EXPECT_TRUE(load(light, "<color>0.5 0.5 0.5</color>"));
    EXPECT_EQ((Color{0.5f, 0.5f, 0.5f}), colorOf(light));
    EXPECT_EQ((std::array<float, 3>{0.0f, 0.0f, 0.0f}), attenuationsOf(light));
}

struct SpotCase : Row {
    const char* xml;
    bool result;
    Color color;
    std::array<float, 3> attenuations;
    float cone;
    float exponent;
    const char* words;
};

class SpotLightLoadTest : public testing::TestWithParam<SpotCase> {};

TEST_P(SpotLightLoadTest, ReadsOrRefusesItsElement)
{
    SpotLight light("lamp");
    spotOuterCone(light) = 77.0f;
    spotLookAtNodeId(light) = "before";
    const LogCapture log;
    EXPECT_EQ(GetParam().result, load(light, GetParam().xml));
    EXPECT_EQ(GetParam().color, colorOf(light));
    EXPECT_EQ(GetParam().attenuations, attenuationsOf(light));
    EXPECT_EQ(GetParam().cone, light.innerConeAngle());
    EXPECT_EQ(GetParam().exponent, light.falloffExponent());
    EXPECT_EQ("lamp", textOf(light.id()));
    expectErrors("libVideo.light", GetParam().words, log);
    // These come only from the extra data.
    EXPECT_EQ(77.0f, light.outerConeAngle());
    EXPECT_EQ("before", textOf(light.lookAtNodeId()));
}

INSTANTIATE_ROWS(Documents, SpotLightLoadTest,
                 {"ColorOnly", "<color>1 0.5 0</color>", true, triple(1.0f, 0.5f, 0.0f), triple(0.0f, 0.0f, 0.0f),
                  180.0f, 0.0f, ""},
                 {"All",
                  "<color>0.25 0.5 0.75</color><constant_attenuation>2</constant_attenuation>"
                  "<linear_attenuation>3</linear_attenuation><quadratic_attenuation>4</quadratic_attenuation>"
                  "<falloff_angle>45</falloff_angle><falloff_exponent>0.15</falloff_exponent>",
                  true, triple(0.25f, 0.5f, 0.75f), triple(2.0f, 3.0f, 4.0f), 45.0f, 0.15f, ""},
                 {"ConstantOnly", "<color>0 0 0</color><constant_attenuation>2</constant_attenuation>", true,
                  triple(0.0f, 0.0f, 0.0f), triple(2.0f, 0.0f, 0.0f), 180.0f, 0.0f, ""},
                 {"LinearOnly", "<color>0 0 0</color><linear_attenuation>3</linear_attenuation>", true,
                  triple(0.0f, 0.0f, 0.0f), triple(0.0f, 3.0f, 0.0f), 180.0f, 0.0f, ""},
                 {"QuadraticOnly", "<color>0 0 0</color><quadratic_attenuation>4</quadratic_attenuation>", true,
                  triple(0.0f, 0.0f, 0.0f), triple(0.0f, 0.0f, 4.0f), 180.0f, 0.0f, ""},
                 {"AngleOnly", "<color>0 0 0</color><falloff_angle>33.3</falloff_angle>", true,
                  triple(0.0f, 0.0f, 0.0f), triple(0.0f, 0.0f, 0.0f), 33.3f, 0.0f, ""},
                 {"ExponentOnly", "<color>0 0 0</color><falloff_exponent>2</falloff_exponent>", true,
                  triple(0.0f, 0.0f, 0.0f), triple(0.0f, 0.0f, 0.0f), 180.0f, 2.0f, ""},
                 {"AngleOfZero", "<color>0 0 0</color><falloff_angle>0</falloff_angle>", true, triple(0.0f, 0.0f, 0.0f),
                  triple(0.0f, 0.0f, 0.0f), 0.0f, 0.0f, ""},
                 {"UnclampedAndNarrowed", "<color>0.1 16777217 -3</color><falloff_angle>400</falloff_angle>", true,
                  triple(0.1f, 16777216.0f, -3.0f), triple(0.0f, 0.0f, 0.0f), 400.0f, 0.0f, ""},
                 {"FourValues", "<color>0.25 0.5 0.75 0.125</color>", true, triple(0.25f, 0.5f, 0.75f),
                  triple(0.0f, 0.0f, 0.0f), 180.0f, 0.0f, ""},
                 {"NoColor",
                  "<constant_attenuation>2</constant_attenuation><linear_attenuation>3</linear_attenuation>"
                  "<quadratic_attenuation>4</quadratic_attenuation><falloff_angle>45</falloff_angle>"
                  "<falloff_exponent>0.15</falloff_exponent>",
                  false, white, triple(0.0f, 0.0f, 0.0f), 0.0f, 0.0f, noSpotColor},
                 {"NothingAtAll", "", false, white, triple(0.0f, 0.0f, 0.0f), 0.0f, 0.0f, noSpotColor},
                 {"TwoValues",
                  "<color>0.25 0.5</color><constant_attenuation>2</constant_attenuation>"
                  "<linear_attenuation>3</linear_attenuation><quadratic_attenuation>4</quadratic_attenuation>"
                  "<falloff_angle>45</falloff_angle><falloff_exponent>0.15</falloff_exponent>",
                  true, white, triple(2.0f, 3.0f, 4.0f), 45.0f, 0.15f, shortColor},
                 {"NoValues", "<color/>", true, white, triple(0.0f, 0.0f, 0.0f), 180.0f, 0.0f, shortColor});

const char* const fullSpot = "<color>0.25 0.5 0.75</color><constant_attenuation>2</constant_attenuation>"
                             "<linear_attenuation>3</linear_attenuation>"
                             "<quadratic_attenuation>4</quadratic_attenuation>"
                             "<falloff_angle>45</falloff_angle><falloff_exponent>0.5</falloff_exponent>";

void expectFullSpot(const SpotLight& light)
{
    EXPECT_EQ((Color{0.25f, 0.5f, 0.75f}), colorOf(light));
    EXPECT_EQ((std::array<float, 3>{2.0f, 3.0f, 4.0f}), attenuationsOf(light));
    EXPECT_EQ(45.0f, light.innerConeAngle());
    EXPECT_EQ(0.5f, light.falloffExponent());
    EXPECT_EQ(60.0f, light.outerConeAngle());
    EXPECT_EQ("Node1", textOf(light.lookAtNodeId()));
    EXPECT_EQ("lamp", textOf(light.id()));
}

const std::string fullExtra = vendorExtra("<outer_cone>60</outer_cone><target>#Node1</target>");

SpotLight fullSpotLight()
{
    SpotLight light("lamp");
    EXPECT_TRUE(load(light, fullSpot));
    readExtra(light, fullExtra);
    return light;
}

TEST(SpotLightTest, LoadWithoutColorChangesNothing)
{
    SpotLight light = fullSpotLight();
    const LogCapture log;
    EXPECT_FALSE(load(light, "<constant_attenuation>9</constant_attenuation><falloff_angle>9</falloff_angle>"));
    expectErrors("libVideo.light", noSpotColor, log);
    expectFullSpot(light);
}

TEST(SpotLightTest, SecondLoadSetsWhatIsAbsentToItsDefault)
{
    SpotLight light = fullSpotLight();
    EXPECT_TRUE(load(light, "<color>0 0 0</color>"));
    EXPECT_EQ((Color{0.0f, 0.0f, 0.0f}), colorOf(light));
    EXPECT_EQ((std::array<float, 3>{0.0f, 0.0f, 0.0f}), attenuationsOf(light));
    EXPECT_EQ(180.0f, light.innerConeAngle());
    EXPECT_EQ(0.0f, light.falloffExponent());
    EXPECT_EQ(60.0f, light.outerConeAngle());
    EXPECT_EQ("Node1", textOf(light.lookAtNodeId()));
}

// ---- extra data

struct ExtraCase : Row {
    std::string extras;
    float outerCone;
    const char* target;
};

class SpotLightExtraTest : public testing::TestWithParam<ExtraCase> {};

TEST_P(SpotLightExtraTest, LastValueOfEachNameCounts)
{
    SpotLight light("lamp");
    spotOuterCone(light) = 77.0f;
    spotLookAtNodeId(light) = "before";
    const LogCapture log;
    readExtra(light, GetParam().extras);
    EXPECT_EQ(GetParam().outerCone, light.outerConeAngle());
    EXPECT_EQ(GetParam().target, textOf(light.lookAtNodeId()));
    expectErrors("libVideo.light", "", log);
    // Nothing else is touched, not even by the color of the light.
    EXPECT_EQ(white, colorOf(light));
    EXPECT_EQ(0.0f, light.innerConeAngle());
    EXPECT_EQ(0.0f, light.falloffExponent());
    EXPECT_EQ("lamp", textOf(light.id()));
}

const std::string cone45 = "<outer_cone>45</outer_cone>";
const std::string cone50 = "<outer_cone>50</outer_cone>";
const std::string one = "<target>#One</target>";
const std::string two = "<target>#Two</target>";

std::string technique(const std::string& content, const std::string& profile = "FCOLLADA")
{
    return "<technique profile='" + profile + "'>" + content + "</technique>";
}

INSTANTIATE_ROWS(
    Search, SpotLightExtraTest, {"NoExtra", "", 77.0f, "before"}, {"EmptyExtra", "<extra/>", 77.0f, "before"},
    {"EmptyTechnique", vendorExtra(""), 77.0f, "before"}, {"Both", vendorExtra(cone45 + one), 45.0f, "One"},
    {"BothTheOtherWayRound", vendorExtra(one + cone45), 45.0f, "One"},
    {"ConeOnly", vendorExtra(cone45), 45.0f, "before"}, {"TargetOnly", vendorExtra(one), 77.0f, "One"},
    {"ProfileInLowerCase", vendorExtra(cone45 + one, "fcollada"), 45.0f, "One"},
    {"ProfileInMixedCase", vendorExtra(cone45 + one, "fCollADA"), 45.0f, "One"},
    {"OtherProfile", vendorExtra(cone45 + one, "OTHER"), 77.0f, "before"},
    {"LongerProfile", vendorExtra(cone45 + one, "FCOLLADA2"), 77.0f, "before"},
    {"EmptyProfile", vendorExtra(cone45 + one, ""), 77.0f, "before"},
    {"NoProfile", "<extra><technique>" + cone45 + one + "</technique></extra>", 77.0f, "before"},
    {"NamesInUpperCase", vendorExtra("<OUTER_CONE>45</OUTER_CONE><TARGET>#One</TARGET>"), 45.0f, "One"},
    {"NamesInMixedCase", vendorExtra("<Outer_Cone>45</Outer_Cone><tarGet>#One</tarGet>"), 45.0f, "One"},
    {"OtherNames",
     vendorExtra("<outer_cones>1</outer_cones><outercone>2</outercone><targets>#A</targets>"
                 "<intensity>3</intensity><param name='target'>#B</param><source id='s'/>"),
     77.0f, "before"},
    {"NamesAmongOthers", vendorExtra("<a>1</a>" + cone45 + "<source id='s'/>" + one + "<b>#B</b>"), 45.0f, "One"},
    {"NestedNames", vendorExtra("<group>" + cone45 + one + "</group>"), 77.0f, "before"},
    {"LastChild", vendorExtra(cone45 + one + two + cone50), 50.0f, "Two"},
    {"LastTechnique", "<extra>" + technique(cone45 + one) + technique(cone50 + two) + "</extra>", 50.0f, "Two"},
    {"LastExtra", vendorExtra(cone45 + one) + vendorExtra(cone50 + two), 50.0f, "Two"},
    {"LastOfTheProfile", vendorExtra(cone45 + one) + vendorExtra(cone50 + two, "OTHER"), 45.0f, "One"},
    {"ValuesOfSeveralPlaces", "<extra/>" + vendorExtra(cone50 + two) + vendorExtra(one), 50.0f, "One"},
    {"EmptyTargetIsAValue", vendorExtra(one + "<target/>"), 77.0f, ""});

INSTANTIATE_ROWS(Cones, SpotLightExtraTest, {"Fraction", vendorExtra("<outer_cone>33.3</outer_cone>"), 33.3f, "before"},
                 {"Negative", vendorExtra("<outer_cone>-4e1</outer_cone>"), -40.0f, "before"},
                 {"BlanksAround", vendorExtra("<outer_cone>\n 45\t</outer_cone>"), 45.0f, "before"},
                 {"Word", vendorExtra("<outer_cone>wide</outer_cone>"), 77.0f, "before"},
                 {"NumberAndWord", vendorExtra("<outer_cone>45 degrees</outer_cone>"), 77.0f, "before"},
                 {"Comma", vendorExtra("<outer_cone>4,5</outer_cone>"), 77.0f, "before"},
                 {"Empty", vendorExtra("<outer_cone/>"), 77.0f, "before"},
                 {"WordBehindANumber", vendorExtra(cone45 + "<outer_cone>wide</outer_cone>"), 45.0f, "before"},
                 {"WordDoesNotEndTheSearch", vendorExtra("<outer_cone>wide</outer_cone>" + cone45 + one), 45.0f,
                  "One"});

INSTANTIATE_ROWS(Targets, SpotLightExtraTest,
                 {"DocumentAndFragment", vendorExtra("<target>scene.dae#Node1</target>"), 77.0f, "Node1"},
                 {"AddressAndFragment", vendorExtra("<target>http://host/p.dae#q</target>"), 77.0f, "q"},
                 {"NoFragment", vendorExtra("<target>Node1</target>"), 77.0f, ""},
                 {"EmptyFragment", vendorExtra("<target>#</target>"), 77.0f, ""},
                 {"EncodedBlank", vendorExtra("<target>#a%20b</target>"), 77.0f, "a%20b"},
                 // From here on, the document model finds no reference in the text.
                 {"BlanksAround", vendorExtra("<target>  #Node1 </target>"), 77.0f, "Node1"},
                 {"LineFeedsAround", vendorExtra("<target>\n\t#Node1\n</target>"), 77.0f, "Node1"},
                 {"BlankInside", vendorExtra("<target>#My Node</target>"), 77.0f, "My Node"},
                 {"NonAscii", vendorExtra("<target>#N\xc5\x93ud</target>"), 77.0f, "N\xc5\x93ud"},
                 {"TwoMarks", vendorExtra("<target>a#b#c</target>"), 77.0f, "b#c"},
                 {"OnlyBlanksBehindTheMark", vendorExtra("<target># \n</target>"), 77.0f, ""},
                 {"BlanksWithoutAMark", vendorExtra("<target>my node</target>"), 77.0f, ""});

TEST(SpotLightTest, TechniquesOutsideOfExtrasAreNotSearched)
{
    LightDocument document(spotWith("<color>1 1 1</color>") + technique(cone45 + one));
    SpotLight light("lamp");
    light.readExtraData(*document.light(), document.dae());
    EXPECT_EQ(0.0f, light.outerConeAngle());
    EXPECT_EQ("", textOf(light.lookAtNodeId()));
}

TEST(SpotLightTest, BaseURIKeepsTheLastTarget)
{
    LightDocument document(vendorExtra("<target>a.dae#A</target><target>b.dae#B</target>" + cone45));
    SpotLight light("lamp");
    light.readExtraData(*document.light(), document.dae());
    EXPECT_EQ("b.dae#B", document.dae().getBaseURI().originalStr());
    EXPECT_EQ("B", document.dae().getBaseURI().fragment());
}

TEST(SpotLightTest, BaseURIStaysWithoutATarget)
{
    LightDocument document(vendorExtra(cone45 + "<other>a.dae#A</other>") + vendorExtra(one, "OTHER"));
    const std::string before = document.dae().getBaseURI().originalStr();
    ASSERT_NE("", before);
    SpotLight light("lamp");
    light.readExtraData(*document.light(), document.dae());
    EXPECT_EQ(before, document.dae().getBaseURI().originalStr());
}

TEST(SpotLightTest, TargetThatIsNoReferenceIsParsedByTheBaseURIAllTheSame)
{
    LightDocument document(vendorExtra("<target>#My Node</target>"));
    ASSERT_NE("", document.dae().getBaseURI().originalStr());
    SpotLight light("lamp");
    light.readExtraData(*document.light(), document.dae());
    EXPECT_EQ("", document.dae().getBaseURI().originalStr());
}

// ---- copies

TEST(PointLightTest, CopiesAreIndependent)
{
    PointLight light("lamp");
    EXPECT_TRUE(load(light, "<color>0.25 0.5 0.75</color><constant_attenuation>2</constant_attenuation>"
                            "<linear_attenuation>3</linear_attenuation>"
                            "<quadratic_attenuation>4</quadratic_attenuation>"));
    const PointLight copy(light);
    PointLight assigned("other");
    PointLight& result = (assigned = light);
    EXPECT_EQ(&assigned, &result);
    PointLight& alias = light;
    light = alias; // keeps its text
    EXPECT_EQ("lamp", textOf(light.id()));
    EXPECT_TRUE(load(light, "<color>0 0 0</color>"));
    pointId(light) = "changed";
    for (const PointLight* kept : {&copy, static_cast<const PointLight*>(&assigned)}) {
        EXPECT_EQ((Color{0.25f, 0.5f, 0.75f}), colorOf(*kept));
        EXPECT_EQ((std::array<float, 3>{2.0f, 3.0f, 4.0f}), attenuationsOf(*kept));
        EXPECT_EQ("lamp", textOf(kept->id()));
    }
}

TEST(SpotLightTest, CopyIsIndependent)
{
    SpotLight light = fullSpotLight();
    const SpotLight copy(light);
    EXPECT_TRUE(load(light, "<color>0 0 0</color>"));
    readExtra(light, vendorExtra(cone45 + one));
    spotId(light) = "changed";
    expectFullSpot(copy);
}

TEST(SpotLightTest, AssignmentIsIndependent)
{
    SpotLight light = fullSpotLight();
    SpotLight assigned("other");
    SpotLight& result = (assigned = light);
    EXPECT_EQ(&assigned, &result);
    readExtra(light, vendorExtra(cone45 + one));
    expectFullSpot(assigned);
}

TEST(SpotLightTest, AssignmentToItselfChangesNothing)
{
    SpotLight light = fullSpotLight();
    SpotLight& alias = light;
    light = alias;
    expectFullSpot(light);
}

// ---- list builders

std::string listed(const std::string& id, const std::string& content)
{
    return "<light id='" + id + "'>" + content + "</light>";
}

const std::string colored = "<color>0.25 0.5 0.75</color>";
const std::string ambient = "<technique_common><ambient>" + colored + "</ambient></technique_common>";
const std::string directional = "<technique_common><directional>" + colored + "</directional></technique_common>";

/// Both builders, each with a list that already holds one light.
struct PointBuilder {
    using List = PointList;
    using Light = PointLight;
    static std::string element(const std::string& content) { return pointWith(content); }
    static std::string otherElement(const std::string& content) { return spotWith(content); }
    static unsigned build(const domCOLLADA* root, DAE& /*dae*/, List& list)
    {
        return libVideo::createPointLightListFromCollada(root, list);
    }
};

struct SpotBuilder {
    using List = SpotList;
    using Light = SpotLight;
    static std::string element(const std::string& content) { return spotWith(content); }
    static std::string otherElement(const std::string& content) { return pointWith(content); }
    static unsigned build(const domCOLLADA* root, DAE& dae, List& list)
    {
        return libVideo::createSpotLightListFromCollada(root, dae, list);
    }
};

struct BuilderName {
    template <class Builder>
    static std::string GetName(int /*index*/)
    {
        return std::is_same_v<Builder, PointBuilder> ? "Point" : "Spot";
    }
};

template <class Builder>
class LightListTest : public testing::Test {
protected:
    using List = typename Builder::List;
    using Handle = libVideo::SharedHandle<typename Builder::Light>;

    LightListTest() { list.append(Handle(new typename Builder::Light("before"))); }

    unsigned build(ColladaBuilder& document)
    {
        const domCOLLADA* const root = document.open();
        EXPECT_NE(nullptr, root);
        return Builder::build(root, document.dae(), list);
    }

    std::vector<std::string> ids() const
    {
        std::vector<std::string> all;
        for (const Handle& light : list) {
            all.push_back(textOf(light->id()));
        }
        return all;
    }

    List list;
};

using Builders = testing::Types<PointBuilder, SpotBuilder>;
TYPED_TEST_SUITE(LightListTest, Builders, BuilderName);

TYPED_TEST(LightListTest, NullDocumentLeavesTheListAsItWas)
{
    ColladaBuilder document;
    const auto before = this->list[0];
    const LogCapture log;
    EXPECT_EQ(0u, TypeParam::build(nullptr, document.dae(), this->list));
    expectErrors("libVideo.light", noDocument, log);
    ASSERT_EQ(1u, this->list.size());
    EXPECT_EQ(before, this->list[0]);
}

TYPED_TEST(LightListTest, DocumentWithoutLightsClearsTheList)
{
    for (const char* xml : {"", "<library_lights/>"}) {
        ColladaBuilder document(xml);
        const typename TestFixture::Handle before(new typename TypeParam::Light("before"));
        this->list.append(before);
        const LogCapture log;
        EXPECT_EQ(0u, this->build(document));
        expectErrors("libVideo.light", "", log);
        EXPECT_EQ(0u, this->list.size());
        EXPECT_EQ(1u, before.useCount()); // the list no longer owns it
    }
}

TYPED_TEST(LightListTest, AllLibrariesAreReadInDocumentOrder)
{
    ColladaBuilder document(
        library("library_lights", listed("b", TypeParam::element(colored)) + listed("a", TypeParam::element(colored))) +
        "<library_lights/>" + library("library_lights", listed("c", TypeParam::element("<color>0 0 1</color>"))));
    const LogCapture log;
    EXPECT_EQ(3u, this->build(document));
    expectErrors("libVideo.light", "", log);
    ASSERT_EQ((std::vector<std::string>{"b", "a", "c"}), this->ids());
    EXPECT_EQ((Color{0.25f, 0.5f, 0.75f}), colorOf(*this->list[0]));
    EXPECT_EQ((Color{0.25f, 0.5f, 0.75f}), colorOf(*this->list[1]));
    EXPECT_EQ((Color{0.0f, 0.0f, 1.0f}), colorOf(*this->list[2]));
    EXPECT_EQ(1u, this->list[0].useCount());
}

TYPED_TEST(LightListTest, MoreLightsThanAListStartsWith)
{
    std::string lights;
    std::vector<std::string> expected;
    for (int i = 0; i < 20; ++i) {
        expected.push_back("light" + std::to_string(i));
        lights += listed(expected.back(), TypeParam::element("<color>0 0 " + std::to_string(i) + "</color>"));
    }
    ColladaBuilder document(library("library_lights", lights));
    EXPECT_EQ(20u, this->build(document));
    ASSERT_EQ(expected, this->ids());
    for (unsigned i = 0; i < 20; ++i) {
        EXPECT_EQ(static_cast<float>(i), this->list[i]->color()[2]);
    }
}

TYPED_TEST(LightListTest, SecondRunStartsAnew)
{
    ColladaBuilder document(library("library_lights", listed("a", TypeParam::element(colored))));
    EXPECT_EQ(1u, this->build(document));
    const auto before = this->list[0];
    EXPECT_EQ(1u, this->build(document));
    ASSERT_EQ(1u, this->list.size());
    EXPECT_NE(before, this->list[0]);
}

TYPED_TEST(LightListTest, OtherLightsGiveNoEntryAndNoLine)
{
    ColladaBuilder document(
        library("library_lights", listed("ambient", ambient) + listed("other", TypeParam::otherElement("")) +
                                      listed("a", TypeParam::element(colored)) + listed("directional", directional) +
                                      listed("noTechnique", "") + listed("emptyTechnique", "<technique_common/>") +
                                      listed("vendor", technique(cone45)) + listed("b", TypeParam::element(colored))));
    const LogCapture log;
    EXPECT_EQ(2u, this->build(document));
    expectErrors("libVideo.light", "", log);
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), this->ids());
}

TYPED_TEST(LightListTest, AbsentIdIsEmpty)
{
    ColladaBuilder document(
        library("library_lights", "<light name='lamp'>" + TypeParam::element(colored) + "</light>"));
    EXPECT_EQ(1u, this->build(document));
    EXPECT_EQ((std::vector<std::string>{""}), this->ids());
}

TYPED_TEST(LightListTest, OpensNoTrace)
{
    ColladaBuilder document(
        library("library_lights", listed("a", TypeParam::element(colored)) + listed("b", TypeParam::element(""))));
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    EXPECT_EQ(2u, this->build(document));
    // The message about the light without a color is the only one.
    ASSERT_EQ(1u, log.lines().size()) << log.text();
    EXPECT_EQ(3, log.lines()[0].priority);
}

TEST(LightListsTest, AmbientPointAndSpotGiveOnePointAndOneSpot)
{
    ColladaBuilder document(library("library_lights", listed("ambient", ambient) + listed("point", pointWith(colored)) +
                                                          listed("spot", spotWith(colored))));
    const domCOLLADA* const root = document.open();
    PointList points;
    SpotList spots;
    const LogCapture log;
    EXPECT_EQ(1u, libVideo::createPointLightListFromCollada(root, points));
    EXPECT_EQ(1u, libVideo::createSpotLightListFromCollada(root, document.dae(), spots));
    expectErrors("libVideo.light", "", log);
    ASSERT_EQ(1u, points.size());
    ASSERT_EQ(1u, spots.size());
    EXPECT_EQ("point", textOf(points[0]->id()));
    EXPECT_EQ("spot", textOf(spots[0]->id()));
}

TEST(LightListsTest, PointWithoutColorStaysWhiteAndHasItsAttenuations)
{
    ColladaBuilder document(
        library("library_lights",
                listed("a", pointWith("<linear_attenuation>3</linear_attenuation>")) + listed("b", pointWith(colored)) +
                    listed("c", pointWith("<color>1</color><linear_attenuation>5</linear_attenuation>"))));
    PointList list;
    const LogCapture log;
    EXPECT_EQ(3u, libVideo::createPointLightListFromCollada(document.open(), list));
    EXPECT_EQ(std::string(noPointColor) + "\n" + shortColor, log.text());
    EXPECT_EQ(white, colorOf(*list[0]));
    EXPECT_EQ(3.0f, list[0]->linearAttenuation());
    EXPECT_EQ((Color{0.25f, 0.5f, 0.75f}), colorOf(*list[1]));
    EXPECT_EQ(white, colorOf(*list[2]));
    EXPECT_EQ(5.0f, list[2]->linearAttenuation());
}

TEST(LightListsTest, SpotWithoutColorStaysInTheListWithItsExtraData)
{
    ColladaBuilder document(
        library("library_lights", listed("a", spotWith("<falloff_angle>9</falloff_angle>") + fullExtra) +
                                      listed("b", spotWith(colored))));
    SpotList list;
    const LogCapture log;
    EXPECT_EQ(2u, libVideo::createSpotLightListFromCollada(document.open(), document.dae(), list));
    expectErrors("libVideo.light", noSpotColor, log);
    ASSERT_EQ(2u, list.size());
    EXPECT_EQ("a", textOf(list[0]->id()));
    EXPECT_EQ(white, colorOf(*list[0]));
    EXPECT_EQ(60.0f, list[0]->outerConeAngle());
    EXPECT_EQ("Node1", textOf(list[0]->lookAtNodeId()));
    EXPECT_EQ("b", textOf(list[1]->id()));
    EXPECT_EQ(0.0f, list[1]->outerConeAngle());
    EXPECT_EQ("", textOf(list[1]->lookAtNodeId()));
}

TEST(LightListsTest, SpotTakesElementAndExtraDataOfItsOwnLight)
{
    ColladaBuilder document(library("library_lights", listed("a", spotWith(fullSpot) + vendorExtra(cone45 + one)) +
                                                          listed("lamp", spotWith(fullSpot) + fullExtra)));
    SpotList list;
    EXPECT_EQ(2u, libVideo::createSpotLightListFromCollada(document.open(), document.dae(), list));
    EXPECT_EQ(45.0f, list[0]->outerConeAngle());
    EXPECT_EQ("One", textOf(list[0]->lookAtNodeId()));
    expectFullSpot(*list[1]);
    EXPECT_EQ("#Node1", document.dae().getBaseURI().originalStr());
}

TEST(LightListsTest, ExtraDataOfAPointIsNotRead)
{
    ColladaBuilder document(library("library_lights", listed("a", pointWith(colored) + fullExtra)));
    const domCOLLADA* const root = document.open();
    const std::string before = document.dae().getBaseURI().originalStr();
    PointList points;
    SpotList spots;
    EXPECT_EQ(1u, libVideo::createPointLightListFromCollada(root, points));
    EXPECT_EQ(0u, libVideo::createSpotLightListFromCollada(root, document.dae(), spots));
    EXPECT_EQ(before, document.dae().getBaseURI().originalStr());
}

static_assert(!std::is_polymorphic_v<PointLight> && !std::is_polymorphic_v<SpotLight>);
static_assert(std::is_constructible_v<PointLight, const vesk::String&> &&
              std::is_constructible_v<SpotLight, const vesk::String&> && !std::is_default_constructible_v<PointLight> &&
              !std::is_default_constructible_v<SpotLight>);
static_assert(std::is_copy_constructible_v<PointLight> && std::is_copy_assignable_v<PointLight> &&
              std::is_copy_constructible_v<SpotLight> && std::is_copy_assignable_v<SpotLight>);
template <class Light>
constexpr bool hasCommonAccessors()
{
    using Const = const Light&;
    return std::is_same_v<const Vector3&, decltype(std::declval<Const>().color())> &&
           std::is_same_v<float, decltype(std::declval<Const>().constantAttenuation())> &&
           std::is_same_v<float, decltype(std::declval<Const>().linearAttenuation())> &&
           std::is_same_v<float, decltype(std::declval<Const>().quadraticAttenuation())> &&
           std::is_same_v<const vesk::String&, decltype(std::declval<Const>().id())>;
}
static_assert(hasCommonAccessors<PointLight>() && hasCommonAccessors<SpotLight>());
static_assert(std::is_same_v<float, decltype(std::declval<const SpotLight&>().innerConeAngle())> &&
              std::is_same_v<float, decltype(std::declval<const SpotLight&>().outerConeAngle())> &&
              std::is_same_v<float, decltype(std::declval<const SpotLight&>().falloffExponent())> &&
              std::is_same_v<const vesk::String&, decltype(std::declval<const SpotLight&>().lookAtNodeId())>);
static_assert(
    std::is_same_v<bool,
                   decltype(std::declval<PointLight&>().createFromCollada(std::declval<const PointElement&>()))> &&
    std::is_same_v<bool, decltype(std::declval<SpotLight&>().createFromCollada(std::declval<const SpotElement&>()))>);
static_assert(
    std::is_same_v<unsigned, decltype(libVideo::createPointLightListFromCollada(std::declval<const domCOLLADA*>(),
                                                                                std::declval<PointList&>()))> &&
    std::is_same_v<unsigned, decltype(libVideo::createSpotLightListFromCollada(
                                 std::declval<const domCOLLADA*>(), std::declval<DAE&>(), std::declval<SpotList&>()))>);

} // namespace
