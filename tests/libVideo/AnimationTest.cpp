#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Scene.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using Evolutions = vesk::Array<Evolution>;
using CreateInputFunction = bool (Animation::*)(const daeSmartRef<domInputLocal>&);
using CreateFloatFunction = bool (Animation::*)(const domFloat_array*, const VertexSemantic&, unsigned, unsigned);
using CreateNameFunction = bool (Animation::*)(const domName_array*, const VertexSemantic&, unsigned, unsigned);
using SetTargetFunction = void (Animation::*)(vesk::String);

PRIVATE_MEMBER(nameField, vesk::String Animation::*, &Animation::m_name)
PRIVATE_MEMBER(targetNodeField, vesk::String Animation::*, &Animation::m_targetNode)
PRIVATE_MEMBER(targetTransformField, vesk::String Animation::*, &Animation::m_targetTransform)
PRIVATE_MEMBER(lengthField, double Animation::*, &Animation::m_animationLength)
PRIVATE_MEMBER(createInput, CreateInputFunction, &Animation::createInputFromCollada)
PRIVATE_MEMBER(createFloat, CreateFloatFunction, &Animation::createFloatEvolution)
PRIVATE_MEMBER(createName, CreateNameFunction, &Animation::createNameEvolution)
PRIVATE_MEMBER(setTarget, SetTargetFunction, &Animation::setTarget)

TEST(AnimationTest, InterpolationTypesHaveTheirNumbers)
{
    EXPECT_EQ(0u, static_cast<unsigned>(libVideo::STEP));
    EXPECT_EQ(1u, static_cast<unsigned>(libVideo::LINEAR));
    EXPECT_EQ(2u, static_cast<unsigned>(libVideo::BEZIER));
    EXPECT_EQ(3u, static_cast<unsigned>(libVideo::HERMITE));
    EXPECT_EQ(4u, static_cast<unsigned>(libVideo::CARDINAL));
    EXPECT_EQ(5u, static_cast<unsigned>(libVideo::BSPLINE));
}

TEST(AnimationTest, FieldsOfARecordStandInOrder)
{
    const Evolution record;
    EXPECT_LT(place(record.time), place(record.interpolation));
    EXPECT_LT(place(record.interpolation), place(record.values));
    EXPECT_LT(place(record.values), place(record.inTangent));
    EXPECT_LT(place(record.inTangent), place(record.outTangent));
}

TEST(AnimationTest, NewRecordHoldsTimeZeroAndLinearAndNoNumbers)
{
    const Evolution record;
    EXPECT_EQ(0.0, record.time);
    EXPECT_EQ(libVideo::LINEAR, record.interpolation);
    EXPECT_EQ(0u, record.values.size());
    EXPECT_EQ(0u, record.inTangent.size());
    EXPECT_EQ(0u, record.outTangent.size());
}

constexpr char noDocument[] = "Cannot create an animation list from a NULL domCOLLADA pointer";
constexpr char noChannel[] = "Cannot create an animation without a channel element.";
constexpr char noSampler[] = "Cannot create an animation without a channel that points to a valid sampler element.";
constexpr char noInput[] = "Cannot create an animation without any input.";
constexpr char countMismatch[] = "Cannot create an animation because the counts of all the inputs do not match.";
constexpr char shortArray[] = "Cannot create an animation because an array is shorter than its accessor says.";
constexpr char floatLine[] = "Cannot create a float evolution input from: ";
constexpr char nameLine[] = "Cannot create a name evolution input from: ";
constexpr char strideWords[] = ", with a stride of: ";

constexpr char usualChannel[] = "<channel source='#sampler' target='node/transform.X'/>";

std::string countAndStride(unsigned count, unsigned stride)
{
    return "count='" + std::to_string(count) + "' stride='" + std::to_string(stride) + "'";
}

std::string source(const std::string& id, const std::string& content)
{
    return "<source id='" + id + "'>" + content + "</source>";
}

std::string sampler(const std::string& inputs, const std::string& id = "sampler")
{
    return "<sampler id='" + id + "'>" + inputs + "</sampler>";
}

/// Sources, the one sampler, and a channel to "node/transform.X".
std::string curve(const std::string& sources, const std::string& inputs)
{
    return sources + sampler(inputs) + usualChannel;
}

/// A curve with one input.
std::string curveOf(const std::string& semantic, const std::string& oneSource)
{
    return curve(oneSource, inputXml(semantic, "a"));
}

/// A document with one animation, given by its content.
class AnimationDocument {
public:
    explicit AnimationDocument(const std::string& content, const std::string& attributes = std::string())
    {
        m_builder.add("<library_animations><animation " + attributes + ">" + content +
                      "</animation><animation id='blank'/></library_animations>");
        m_root = m_builder.open();
    }

    domAnimationRef element() { return m_root->getLibrary_animations_array()[0]->getAnimation_array()[0]; }
    domAnimationRef blankElement() { return m_root->getLibrary_animations_array()[0]->getAnimation_array()[1]; }
    domSamplerRef samplerElement() { return element()->getSampler_array()[0]; }
    DAE& dae() { return m_builder.dae(); }
    template <class Element>
    Element* named(const char* id)
    {
        return m_builder.element<Element>(id);
    }

    /// An empty animation, because its element had no channel. Its message is not shown.
    Animation blank()
    {
        LogCapture log;
        return Animation(blankElement(), dae());
    }

private:
    ColladaBuilder m_builder;
    domCOLLADA* m_root = nullptr;
};

Evolutions recordsOf(Animation& animation)
{
    Evolutions records;
    for (unsigned i = 0; i < animation.getCount(); ++i) {
        records.append(animation.evolution(i));
    }
    return records;
}

std::vector<double> numbers(const vesk::Array<double>& array)
{
    return std::vector<double>(array.begin(), array.end());
}

using Numbers = std::vector<double>;

/// The result of a load, with the messages of all channels.
struct Outcome {
    explicit Outcome(const std::string& content) : document(content), animation(document.blank())
    {
        LogCapture log;
        result = animation.createFromCollada(document.element(), document.dae());
        lines = log.lines();
        text = log.text();
    }

    AnimationDocument document;
    Animation animation;
    bool result = false;
    std::vector<LogLine> lines;
    std::string text;
};

// ---- a whole curve

const char allInputs[] = "<input semantic='INPUT' source='#time'/><input semantic='OUTPUT' source='#value'/>"
                         "<input semantic='INTERPOLATION' source='#kind'/>"
                         "<input semantic='IN_TANGENT' source='#in'/><input semantic='OUT_TANGENT' source='#out'/>";

std::string allSources()
{
    return floats("time", "0.5 1.5 4", 3) + floats("value", "1 2 3 4 5 6", 3, 2) +
           names("kind", "STEP BEZIER LINEAR", 3) + floats("in", "11 12 13 14 21 22 23 24 31 32 33 34", 3, 4) +
           floats("out", "41 42 43 44 51 52 53 54 61 62 63 64", 3, 4);
}

void expectWholeCurve(Animation& animation)
{
    EXPECT_EQ(3u, animation.getCount());
    EXPECT_EQ(4.0, animation.animationLength());
    const Evolutions records = recordsOf(animation);
    ASSERT_EQ(3u, records.size());
    EXPECT_EQ(0.5, records[0].time);
    EXPECT_EQ(1.5, records[1].time);
    EXPECT_EQ(4.0, records[2].time);
    EXPECT_EQ(libVideo::STEP, records[0].interpolation);
    EXPECT_EQ(libVideo::BEZIER, records[1].interpolation);
    EXPECT_EQ(libVideo::LINEAR, records[2].interpolation);
    EXPECT_EQ((Numbers{1, 2}), numbers(records[0].values));
    EXPECT_EQ((Numbers{3, 4}), numbers(records[1].values));
    EXPECT_EQ((Numbers{5, 6}), numbers(records[2].values));
    EXPECT_EQ((Numbers{11, 12, 13, 14}), numbers(records[0].inTangent));
    EXPECT_EQ((Numbers{21, 22, 23, 24}), numbers(records[1].inTangent));
    EXPECT_EQ((Numbers{31, 32, 33, 34}), numbers(records[2].inTangent));
    EXPECT_EQ((Numbers{41, 42, 43, 44}), numbers(records[0].outTangent));
    EXPECT_EQ((Numbers{51, 52, 53, 54}), numbers(records[1].outTangent));
    EXPECT_EQ((Numbers{61, 62, 63, 64}), numbers(records[2].outTangent));
}

TEST(AnimationTest, FieldsOfAnAnimationStandInOrder)
{
    AnimationDocument document("");
    const Animation animation = document.blank();
    EXPECT_LT(place(nameField(animation)), place(targetNodeField(animation)));
    EXPECT_LT(place(targetNodeField(animation)), place(targetTransformField(animation)));
    EXPECT_LT(place(targetTransformField(animation)), place(lengthField(animation)));
}

TEST(AnimationTest, AllInputsFillTheRecords)
{
    Outcome loaded(curve(allSources(), allInputs));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    EXPECT_EQ("node", textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ("transform", textOf(loaded.animation.getTargetTransform()));
    expectWholeCurve(loaded.animation);
}

TEST(AnimationTest, InputsInReverseOrderFillTheRecordsAlike)
{
    Outcome loaded(curve(allSources(), inputXml("OUT_TANGENT", "out") + inputXml("IN_TANGENT", "in") +
                                           inputXml("INTERPOLATION", "kind") + inputXml("OUTPUT", "value") +
                                           inputXml("INPUT", "time")));
    EXPECT_TRUE(loaded.result);
    expectWholeCurve(loaded.animation);
}

TEST(AnimationTest, SemanticWordsMatchInAnyCase)
{
    Outcome loaded(curve(allSources(), inputXml("input", "time") + inputXml("Output", "value") +
                                           inputXml("interpolatioN", "kind") + inputXml("in_tangent", "in") +
                                           inputXml("Out_Tangent", "out")));
    EXPECT_TRUE(loaded.result);
    expectWholeCurve(loaded.animation);
}

TEST(AnimationTest, ConstructorLoadsAndDropsTheResult)
{
    AnimationDocument good(curve(allSources(), allInputs), "name='swing'");
    LogCapture log;
    Animation loaded(good.element(), good.dae());
    EXPECT_EQ("", log.text());
    EXPECT_EQ("swing", textOf(nameField(loaded)));
    EXPECT_EQ("node", textOf(loaded.getTargetNode()));
    expectWholeCurve(loaded);
    Animation failed(good.blankElement(), good.dae());
    EXPECT_EQ(noChannel, log.text());
    EXPECT_EQ("", textOf(nameField(failed)));
    EXPECT_EQ("", textOf(failed.getTargetNode()));
    EXPECT_EQ("", textOf(failed.getTargetTransform()));
    EXPECT_EQ(0u, failed.getCount());
    EXPECT_EQ(0.0, failed.animationLength());
}

TEST(AnimationTest, NameIsTheAttributeEvenIfLoadingFails)
{
    AnimationDocument document("", "id='i' name='swing'");
    LogCapture log;
    const Animation animation(document.element(), document.dae());
    EXPECT_EQ(noChannel, log.text());
    EXPECT_EQ("swing", textOf(nameField(animation)));
}

TEST(AnimationTest, AccessorWithoutStrideTakesOneNumberForEachRecord)
{
    Outcome loaded(curveOf("OUTPUT", source("a", floatArray("numbers", "7 8 9") + accessorTo("numbers", "count='2'"))));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ((Numbers{7}), numbers(recordsOf(loaded.animation)[0].values));
    EXPECT_EQ((Numbers{8}), numbers(recordsOf(loaded.animation)[1].values));
}

TEST(AnimationTest, OffsetAndParamsOfTheAccessorPlayNoPart)
{
    Outcome loaded(curveOf(
        "OUTPUT", source("a", floatArray("numbers", "7 8 9 10") +
                                  "<technique_common><accessor source='#numbers' count='2' stride='2' offset='1'>"
                                  "<param type='float'/><param name='Y' type='Name'/><param name='Z' type='float'/>"
                                  "</accessor></technique_common>")));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ((Numbers{7, 8}), numbers(recordsOf(loaded.animation)[0].values));
    EXPECT_EQ((Numbers{9, 10}), numbers(recordsOf(loaded.animation)[1].values));
}

TEST(AnimationTest, TimeIsTheFirstNumberOfAWiderStride)
{
    Outcome loaded(curveOf("INPUT", floats("a", "1 91 92 2 93 94", 2, 3)));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ(1.0, recordsOf(loaded.animation)[0].time);
    EXPECT_EQ(2.0, recordsOf(loaded.animation)[1].time);
    EXPECT_EQ(2.0, loaded.animation.animationLength());
    EXPECT_EQ(0u, recordsOf(loaded.animation)[0].values.size());
}

TEST(AnimationTest, RecordsKeepTheOrderOfTheDocument)
{
    Outcome loaded(curveOf("INPUT", floats("a", "3 1 2", 3)));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(3u, loaded.animation.getCount());
    EXPECT_EQ(3.0, recordsOf(loaded.animation)[0].time);
    EXPECT_EQ(1.0, recordsOf(loaded.animation)[1].time);
    EXPECT_EQ(2.0, recordsOf(loaded.animation)[2].time);
}

TEST(AnimationTest, LengthIsTheTimeOfTheLastRecordNotTheLatestTime)
{
    Outcome loaded(curveOf("INPUT", floats("a", "3 1 2", 3)));
    EXPECT_EQ(2.0, loaded.animation.animationLength());
}

TEST(AnimationTest, SamplerWithoutTimesHasRecordsAtTimeZero)
{
    Outcome loaded(curveOf("OUTPUT", floats("a", "5 6", 2)));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ(0.0, recordsOf(loaded.animation)[0].time);
    EXPECT_EQ(0.0, recordsOf(loaded.animation)[1].time);
    EXPECT_EQ(0.0, loaded.animation.animationLength());
}

TEST(AnimationTest, SamplerWithoutInterpolationIsLinear)
{
    Outcome loaded(curveOf("INPUT", floats("a", "1 2", 2)));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ(libVideo::LINEAR, recordsOf(loaded.animation)[0].interpolation);
    EXPECT_EQ(libVideo::LINEAR, recordsOf(loaded.animation)[1].interpolation);
}

TEST(AnimationTest, LastRecordWithoutATimeGivesLengthZero)
{
    Outcome loaded(curve(floats("value", "5 6 7", 3) + floats("time", "1 2", 2),
                         inputXml("OUTPUT", "value") + inputXml("INPUT", "time")));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(3u, loaded.animation.getCount());
    EXPECT_EQ(2.0, recordsOf(loaded.animation)[1].time);
    EXPECT_EQ(0.0, recordsOf(loaded.animation)[2].time);
    EXPECT_EQ(0.0, loaded.animation.animationLength());
}

TEST(AnimationTest, SmallerCountLeavesTheRecordsBehindItWithoutValues)
{
    Outcome loaded(curve(floats("time", "1 2 3", 3) + floats("value", "5 6", 2) + names("kind", "STEP", 1),
                         inputXml("INPUT", "time") + inputXml("OUTPUT", "value") + inputXml("INTERPOLATION", "kind")));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    ASSERT_EQ(3u, loaded.animation.getCount());
    const Evolutions records = recordsOf(loaded.animation);
    EXPECT_EQ((Numbers{5}), numbers(records[0].values));
    EXPECT_EQ((Numbers{6}), numbers(records[1].values));
    EXPECT_EQ(0u, records[2].values.size());
    EXPECT_EQ(3.0, records[2].time);
    EXPECT_EQ(libVideo::STEP, records[0].interpolation);
    EXPECT_EQ(libVideo::LINEAR, records[1].interpolation);
    EXPECT_EQ(libVideo::LINEAR, records[2].interpolation);
    EXPECT_EQ(3.0, loaded.animation.animationLength());
}

TEST(AnimationTest, FirstInputWithACountFixesTheNumberOfRecords)
{
    Outcome loaded(curve(floats("time", "1 2 3", 0) + floats("value", "5 6", 2),
                         inputXml("INPUT", "time") + inputXml("OUTPUT", "value")));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    EXPECT_EQ(2u, loaded.animation.getCount());
}

TEST(AnimationTest, CountsOfZeroAloneMakeNoRecordsAndSucceed)
{
    Outcome loaded(curve(floats("time", "1 2 3", 0) + names("kind", "STEP", 0),
                         inputXml("INPUT", "time") + inputXml("INTERPOLATION", "kind")));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    EXPECT_EQ(0u, loaded.animation.getCount());
    EXPECT_EQ(0.0, loaded.animation.animationLength());
    EXPECT_EQ("node", textOf(loaded.animation.getTargetNode()));
}

TEST(AnimationTest, SameSemanticTwiceDoublesTheEntries)
{
    Outcome loaded(curve(floats("value", "5 6 7 8", 2, 2) + floats("more", "1", 1),
                         inputXml("OUTPUT", "value") + inputXml("OUTPUT", "value") + inputXml("IN_TANGENT", "value") +
                             inputXml("IN_TANGENT", "more") + inputXml("OUT_TANGENT", "more") +
                             inputXml("OUT_TANGENT", "value")));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(2u, loaded.animation.getCount());
    const Evolutions records = recordsOf(loaded.animation);
    EXPECT_EQ((Numbers{5, 6, 5, 6}), numbers(records[0].values));
    EXPECT_EQ((Numbers{7, 8, 7, 8}), numbers(records[1].values));
    EXPECT_EQ((Numbers{5, 6, 1}), numbers(records[0].inTangent));
    EXPECT_EQ((Numbers{7, 8}), numbers(records[1].inTangent));
    EXPECT_EQ((Numbers{1, 5, 6}), numbers(records[0].outTangent));
    EXPECT_EQ((Numbers{7, 8}), numbers(records[1].outTangent));
}

TEST(AnimationTest, SecondInputOfTimesReplacesTheFirst)
{
    Outcome loaded(curve(floats("early", "1 2", 2) + floats("late", "5", 1),
                         inputXml("INPUT", "early") + inputXml("INPUT", "late")));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ(5.0, recordsOf(loaded.animation)[0].time);
    EXPECT_EQ(2.0, recordsOf(loaded.animation)[1].time);
}

TEST(AnimationTest, OutputOfStrideZeroMakesRecordsWithoutValues)
{
    Outcome loaded(curveOf("OUTPUT", floats("a", "5 6", 4, 0)));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    ASSERT_EQ(4u, loaded.animation.getCount());
    EXPECT_EQ(0u, recordsOf(loaded.animation)[3].values.size());
}

TEST(AnimationTest, TimesOfStrideZeroThrowAndKeepTheRecords)
{
    AnimationDocument document(curveOf("INPUT", floats("a", "5 6", 2, 0)));
    Animation animation = document.blank();
    LogCapture log;
    expectIndexOutOfBounds(-1, 0, [&] { animation.createFromCollada(document.element(), document.dae()); });
    EXPECT_EQ("", log.text());
    EXPECT_EQ(2u, animation.getCount());
    EXPECT_EQ(0.0, animation.animationLength());
    EXPECT_EQ("", textOf(animation.getTargetNode()));
    expectIndexOutOfBounds(-1, 0, [&] { Animation(document.element(), document.dae()); });
}

TEST(AnimationTest, TimesOfStrideZeroAndCountZeroPass)
{
    Outcome loaded(curveOf("INPUT", floats("a", "5 6", 0, 0)));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ(0u, loaded.animation.getCount());
}

TEST(AnimationTest, CountAttributeOfAnArrayBoundsNothing)
{
    Outcome loaded(curveOf("INPUT", source("a", "<float_array id='numbers' count='1'>1 2 3</float_array>" +
                                                    accessorTo("numbers", countAndStride(3, 1)))));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    EXPECT_EQ(3.0, loaded.animation.animationLength());
}

TEST(AnimationTest, OnlyTheFirstChannelIsRead)
{
    Outcome loaded(floats("first", "1 2", 2) + floats("second", "5 6 7", 3) +
                   sampler(inputXml("INPUT", "second"), "sampler2") + sampler(inputXml("INPUT", "first"), "sampler1") +
                   "<channel source='#sampler1' target='node1/one.X'/>"
                   "<channel source='#sampler2' target='node2/two.X'/>");
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("node1", textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ("one", textOf(loaded.animation.getTargetTransform()));
    EXPECT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ(2.0, loaded.animation.animationLength());
}

TEST(AnimationTest, SecondChannelDoesNotStandInForABrokenFirst)
{
    Outcome loaded(floats("a", "1 2", 2) + sampler(inputXml("INPUT", "a")) +
                   "<channel source='#nothing' target='node/one.X'/>"
                   "<channel source='#sampler' target='node/two.X'/>");
    EXPECT_FALSE(loaded.result);
    EXPECT_EQ(noSampler, loaded.text);
    EXPECT_EQ("", textOf(loaded.animation.getTargetNode()));
}

TEST(AnimationTest, NestedAnimationsAreNotRead)
{
    Outcome nestedOnly("<animation>" + curveOf("INPUT", floats("a", "1 2", 2)) + "</animation>");
    EXPECT_FALSE(nestedOnly.result);
    EXPECT_EQ(noChannel, nestedOnly.text);
    EXPECT_EQ(0u, nestedOnly.animation.getCount());
    EXPECT_EQ("", textOf(nestedOnly.animation.getTargetNode()));

    Outcome both(curveOf("INPUT", floats("a", "1 2", 2)) + "<animation>" + floats("b", "1 2 3", 3) +
                 sampler(inputXml("INPUT", "b"), "inner") +
                 "<channel source='#inner' target='inner/one'/></animation>");
    EXPECT_TRUE(both.result);
    EXPECT_EQ(2u, both.animation.getCount());
    EXPECT_EQ("node", textOf(both.animation.getTargetNode()));
}

TEST(AnimationTest, CurveOutlivesItsDocument)
{
    std::vector<Animation> kept;
    {
        AnimationDocument document(curve(allSources(), allInputs), "name='swing'");
        kept.emplace_back(document.element(), document.dae());
    }
    expectWholeCurve(kept[0]);
    EXPECT_EQ("swing", textOf(nameField(kept[0])));
    EXPECT_EQ("node", textOf(kept[0].getTargetNode()));
    EXPECT_EQ("transform", textOf(kept[0].getTargetTransform()));
}

// ---- every way to fail

struct LoadCase : Row {
    std::string content;
    bool result;
    std::string line; // empty: no message
    unsigned records;
};

class AnimationLoadTest : public testing::TestWithParam<LoadCase> {};

TEST_P(AnimationLoadTest, AnswersAndLogsOnce)
{
    Outcome loaded(GetParam().content);
    EXPECT_EQ(GetParam().result, loaded.result);
    EXPECT_EQ(GetParam().line, loaded.text);
    ASSERT_EQ(GetParam().line.empty() ? 0u : 1u, loaded.lines.size());
    for (const LogLine& line : loaded.lines) {
        EXPECT_EQ("libVideo.animation", line.channel);
        EXPECT_EQ(3, line.priority);
    }
    EXPECT_EQ(GetParam().records, loaded.animation.getCount());
    EXPECT_EQ(GetParam().result ? "node" : "", textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ(GetParam().result ? "transform" : "", textOf(loaded.animation.getTargetTransform()));
    EXPECT_EQ(0.0, loaded.animation.animationLength()); // no successful row has a time in its last record
}

std::string times3()
{
    return floats("time", "1 2 3", 3);
}

std::string inputTimes()
{
    return inputXml("INPUT", "time");
}

INSTANTIATE_ROWS(Channel, AnimationLoadTest,
                 {"NoChannel", floats("a", "1", 1) + sampler(inputXml("INPUT", "a")), false, noChannel, 0},
                 {"SourceOfTheChannelNamesNothing", "<channel source='#nothing' target='node/t'/>", false, noSampler,
                  0},
                 {"ChannelWithoutSource", "<channel target='node/t'/>", false, noSampler, 0},
                 {"SourceOfTheChannelIsASource", floats("a", "1", 1) + "<channel source='#a' target='node/t'/>", false,
                  noSampler, 0},
                 {"SourceOfTheChannelIsAnAnimation", "<channel source='#blank' target='node/t'/>", false, noSampler, 0},
                 {"SamplerWithoutInput", curve("", ""), false, noInput, 0});

INSTANTIATE_ROWS(Silent, AnimationLoadTest, {"InputOfNothing", curve("", inputXml("INPUT", "nothing")), false, "", 0},
                 {"InputWithoutSource", curve("", "<input semantic='INPUT'/>"), false, "", 0},
                 {"InputOfTheSampler", curve("", inputXml("INPUT", "sampler")), false, "", 0},
                 {"InputOfTheArrayItself", curve(floats("a", "1 2", 2), inputXml("INPUT", "a-array")), false, "", 0},
                 {"SourceWithoutCommonTechnique", curveOf("INPUT", source("a", floatArray("numbers", "1 2"))), false,
                  "", 0},
                 {"CommonTechniqueWithoutAccessor",
                  curveOf("INPUT", source("a", floatArray("numbers", "1 2") + "<technique_common/>")), false, "", 0},
                 {"SecondInputOfNothing", curve(times3(), inputTimes() + inputXml("OUTPUT", "nothing")), false, "", 3},
                 {"WrongSemanticOfNothing", curve("", inputXml("COLOR", "nothing")), false, "", 0});

INSTANTIATE_ROWS(
    Counts, AnimationLoadTest,
    {"SecondInputHasMore", curve(times3() + floats("value", "1 2 3 4", 4), inputTimes() + inputXml("OUTPUT", "value")),
     false, countMismatch, 3},
    {"NamesHaveMore",
     curve(times3() + names("kind", "STEP STEP STEP STEP", 4), inputTimes() + inputXml("INTERPOLATION", "kind")), false,
     countMismatch, 3},
    {"AccessorOfNoArrayHasMore",
     curve(times3() + source("value", accessorTo("nothing", countAndStride(4, 1))),
           inputTimes() + inputXml("OUTPUT", "value")),
     false, countMismatch, 3},
    {"ThirdInputComparesWithTheFirst",
     curve(times3() + floats("value", "1 2", 2) + floats("in", "1 2 3 4", 4),
           inputTimes() + inputXml("OUTPUT", "value") + inputXml("IN_TANGENT", "in")),
     false, countMismatch, 3});

INSTANTIATE_ROWS(FloatSemantic, AnimationLoadTest,
                 {"Binormal", curveOf("BINORMAL", floats("a", "1 2", 2)), false, std::string(floatLine) + "0", 2},
                 {"Weight", curveOf("WEIGHT", floats("a", "1 2", 2)), false, std::string(floatLine) + "2", 2},
                 {"Color", curveOf("COLOR", floats("a", "1 2", 2)), false, std::string(floatLine) + "3", 2},
                 {"Normal", curveOf("NORMAL", floats("a", "1 2", 2)), false, std::string(floatLine) + "4", 2},
                 {"Position", curveOf("POSITION", floats("a", "1 2", 2)), false, std::string(floatLine) + "5", 2},
                 {"Tangent", curveOf("TANGENT", floats("a", "1 2", 2)), false, std::string(floatLine) + "8", 2},
                 {"Texcoord", curveOf("TEXCOORD", floats("a", "1 2", 2)), false, std::string(floatLine) + "9", 2},
                 {"Interpolation", curveOf("INTERPOLATION", floats("a", "1 2", 2)), false,
                  std::string(floatLine) + "12", 2},
                 {"UnknownWord", curveOf("SPEED", floats("a", "1 2", 2)), false, std::string(floatLine) + "15", 2},
                 {"NoWord", curve(floats("a", "1 2", 2), "<input source='#a'/>"), false, std::string(floatLine) + "15",
                  2},
                 {"CountOfZero", curveOf("COLOR", floats("a", "1 2", 0)), false, std::string(floatLine) + "3", 0},
                 {"StrideOfZero", curveOf("COLOR", floats("a", "1 2", 2, 0)), false, std::string(floatLine) + "3", 2});

std::string refusedName(const char* semantic, const char* stride)
{
    return std::string(nameLine) + semantic + strideWords + stride;
}

INSTANTIATE_ROWS(
    NameSemantic, AnimationLoadTest,
    {"Binormal", curveOf("BINORMAL", names("a", "STEP STEP", 2)), false, refusedName("0", "1"), 2},
    {"Weight", curveOf("WEIGHT", names("a", "STEP STEP", 2)), false, refusedName("2", "1"), 2},
    {"Color", curveOf("COLOR", names("a", "STEP STEP", 2)), false, refusedName("3", "1"), 2},
    {"Normal", curveOf("NORMAL", names("a", "STEP STEP", 2)), false, refusedName("4", "1"), 2},
    {"Position", curveOf("POSITION", names("a", "STEP STEP", 2)), false, refusedName("5", "1"), 2},
    {"Tangent", curveOf("TANGENT", names("a", "STEP STEP", 2)), false, refusedName("8", "1"), 2},
    {"Texcoord", curveOf("TEXCOORD", names("a", "STEP STEP", 2)), false, refusedName("9", "1"), 2},
    {"Input", curveOf("INPUT", names("a", "STEP STEP", 2)), false, refusedName("10", "1"), 2},
    {"Output", curveOf("OUTPUT", names("a", "STEP STEP", 2)), false, refusedName("11", "1"), 2},
    {"InTangent", curveOf("IN_TANGENT", names("a", "STEP STEP", 2)), false, refusedName("13", "1"), 2},
    {"OutTangent", curveOf("OUT_TANGENT", names("a", "STEP STEP", 2)), false, refusedName("14", "1"), 2},
    {"UnknownWord", curveOf("SPEED", names("a", "STEP STEP", 2)), false, refusedName("15", "1"), 2},
    {"WrongSemanticAndStrideZero", curveOf("INPUT", names("a", "STEP STEP", 2, 0)), false, refusedName("10", "0"), 2},
    {"WrongSemanticAndWideStride", curveOf("INPUT", names("a", "STEP STEP", 2, 3)), false, refusedName("10", "3"), 2},
    {"WideStride", curveOf("INTERPOLATION", names("a", "STEP STEP", 2, 2)), false, refusedName("12", "2"), 2},
    {"StrideIsPrintedUnsigned", curveOf("INTERPOLATION", names("a", "STEP STEP", 2, 4294967295u)), false,
     refusedName("12", "4294967295"), 2},
    {"CountOfZero", curveOf("INPUT", names("a", "STEP STEP", 0)), false, refusedName("10", "1"), 0},
    {"InterpolationOfStrideOnePasses", curveOf("INTERPOLATION", names("a", "STEP STEP", 2)), true, "", 2},
    {"InterpolationOfStrideZeroPasses", curveOf("INTERPOLATION", names("a", "STEP STEP", 2, 0)), true, "", 2});

INSTANTIATE_ROWS(
    NoArray, AnimationLoadTest,
    {"AccessorOfNothingPasses", curveOf("INPUT", source("a", accessorTo("nothing", countAndStride(2, 1)))), true, "",
     2},
    {"AccessorWithoutSourcePasses",
     curveOf("INPUT", source("a", "<technique_common><accessor count='2'/></technique_common>")), true, "", 2},
    {"IntegersPass",
     curveOf("INPUT", source("a", "<int_array id='numbers' count='2'>1 2</int_array>" +
                                      accessorTo("numbers", countAndStride(2, 1)))),
     true, "", 2},
    {"SemanticIsNotLookedAt", curveOf("COLOR", source("a", accessorTo("nothing", countAndStride(2, 1)))), true, "", 2},
    {"FloatArrayThatCountsZeroIsPassedOver",
     curveOf("COLOR", source("a", "<float_array id='numbers' count='0'>1 2</float_array>" +
                                      accessorTo("numbers", countAndStride(2, 1)))),
     true, "", 2},
    {"FloatArrayWithoutCountIsPassedOver",
     curveOf("INPUT",
             source("a", "<float_array id='numbers'>1 2</float_array>" + accessorTo("numbers", countAndStride(2, 1)))),
     true, "", 2},
    {"NameArrayThatCountsZeroIsPassedOver",
     curveOf("COLOR", source("a", "<Name_array id='words' count='0'>STEP STEP</Name_array>" +
                                      accessorTo("words", countAndStride(2, 1)))),
     true, "", 2},
    {"OneMoreThanABoundedNumberOfRecords",
     curveOf("OUTPUT", source("a", accessorTo("nothing", countAndStride(1048577, 1)))), false, shortArray, 0},
    {"OneMoreThanABoundedNumberOfRecordsOfStrideZero", curveOf("OUTPUT", floats("a", "1 2", 1048577, 0)), false,
     shortArray, 0},
    {"OneMoreThanABoundedNumberOfRecordsOfAnEmptyArray", curveOf("OUTPUT", floats("a", "", 1048577)), false, shortArray,
     0},
    {"EndlessCount", curveOf("OUTPUT", source("a", accessorTo("nothing", countAndStride(4294967295u, 1)))), false,
     shortArray, 0});

INSTANTIATE_ROWS(
    ShortArray, AnimationLoadTest,
    {"FloatsLackOneRecord", curveOf("INPUT", floats("a", "1 2 3", 4)), false, shortArray, 0},
    {"FloatsLackOneNumber", curveOf("OUTPUT", floats("a", "1 2 3 4 5", 3, 2)), false, shortArray, 0},
    {"FloatsOfHugeCount", curveOf("INPUT", floats("a", "1 2 3", 4294967295u)), false, shortArray, 0},
    {"FloatsWhoseProductWrapsIn32Bits", curveOf("OUTPUT", floats("a", "1 2 3", 65536, 65536)), false, shortArray, 0},
    {"FloatsOfHugeStride", curveOf("OUTPUT", floats("a", "1 2 3", 1, 4294967295u)), false, shortArray, 0},
    {"FloatsThatOnlyCount",
     curveOf("INPUT",
             source("a", "<float_array id='numbers' count='5'/>" + accessorTo("numbers", countAndStride(5, 1)))),
     false, shortArray, 0},
    {"NamesLackOne", curveOf("INTERPOLATION", names("a", "STEP LINEAR", 3)), false, shortArray, 0},
    {"NamesThatOnlyCount",
     curveOf("INTERPOLATION",
             source("a", "<Name_array id='words' count='5'/>" + accessorTo("words", countAndStride(5, 1)))),
     false, shortArray, 0},
    {"SecondInputKeepsTheRecordsOfTheFirst",
     curve(times3() + floats("value", "1 2", 3), inputTimes() + inputXml("OUTPUT", "value")), false, shortArray, 3});

INSTANTIATE_ROWS(
    TwoFaults, AnimationLoadTest,
    {"ShortArrayBeforeWrongFloatSemantic", curveOf("COLOR", floats("a", "1 2", 3)), false, shortArray, 0},
    {"ShortArrayBeforeWrongNameSemantic", curveOf("COLOR", names("a", "STEP", 3)), false, shortArray, 0},
    {"ShortArrayBeforeStrideOfNames", curveOf("INTERPOLATION", names("a", "STEP", 3, 2)), false, shortArray, 0},
    {"CountsBeforeShortArray", curve(times3() + floats("value", "1 2", 4), inputTimes() + inputXml("OUTPUT", "value")),
     false, countMismatch, 3},
    {"CountsBeforeWrongFloatSemantic",
     curve(times3() + floats("value", "1 2 3 4", 4), inputTimes() + inputXml("COLOR", "value")), false, countMismatch,
     3},
    {"CountsBeforeWrongNameSemantic",
     curve(times3() + names("value", "a b c d", 4), inputTimes() + inputXml("COLOR", "value")), false, countMismatch,
     3},
    {"CountsBeforeBoth", curve(times3() + floats("value", "1", 4), inputTimes() + inputXml("COLOR", "value")), false,
     countMismatch, 3},
    {"FirstBadInputEndsTheLoad",
     curve(times3() + floats("value", "1 2 3", 3),
           inputXml("COLOR", "value") + inputXml("NORMAL", "value") + inputTimes()),
     false, std::string(floatLine) + "3", 3});

TEST(AnimationTest, AsManyRecordsAsTheBoundNeedNoArray)
{
    Outcome loaded(curveOf("OUTPUT", source("a", accessorTo("nothing", countAndStride(1048576, 1)))));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    EXPECT_EQ(1048576u, loaded.animation.getCount());
}

TEST(AnimationTest, RefusedArrayAllocatesNoRecord)
{
    Outcome loaded(curveOf("INPUT", floats("a", "1 2 3", 9)));
    EXPECT_FALSE(loaded.result);
    EXPECT_EQ(0u, loaded.animation.getCount());
}

TEST(AnimationTest, KeyThatIsNotThereThrows)
{
    Outcome loaded(curve(allSources(), allInputs));
    EXPECT_EQ(4.0, loaded.animation.evolution(2).time);
    try {
        static_cast<void>(loaded.animation.evolution(3));
        FAIL() << "there are three";
    } catch (const vesk::IndexOutOfBounds& thrown) {
        EXPECT_EQ(0, thrown.low());
        EXPECT_EQ(2, thrown.high());
        EXPECT_EQ(3, thrown.index());
    }
}

TEST(AnimationTest, FailureKeepsWhatInputsBeforeItGave)
{
    Outcome loaded(curve(times3() + floats("value", "5 6 7 8", 4), inputTimes() + inputXml("OUTPUT", "value")));
    EXPECT_FALSE(loaded.result);
    ASSERT_EQ(3u, loaded.animation.getCount());
    EXPECT_EQ(1.0, recordsOf(loaded.animation)[0].time);
    EXPECT_EQ(2.0, recordsOf(loaded.animation)[1].time);
    EXPECT_EQ(3.0, recordsOf(loaded.animation)[2].time);
    EXPECT_EQ(0u, recordsOf(loaded.animation)[0].values.size());
    EXPECT_EQ(0.0, loaded.animation.animationLength());
}

TEST(AnimationTest, NullElementOfTheHostThrows)
{
    AnimationDocument document(curve(allSources(), allInputs));
    LogCapture log;
    Animation animation(document.element(), document.dae());
    EXPECT_THROW(Animation(domAnimationRef(), document.dae()), vesk::NullPointer);
    EXPECT_THROW(animation.createFromCollada(domAnimationRef(), document.dae()), vesk::NullPointer);
    EXPECT_THROW(createInput(animation, domInputLocalRef()), vesk::NullPointer);
    EXPECT_EQ("", log.text());
    expectWholeCurve(animation);
    try {
        animation.createFromCollada(domAnimationRef(), document.dae());
    } catch (const vesk::NullPointer& thrown) {
        EXPECT_FALSE(thrown.message().empty());
    }
}

// ---- again on the same object, and copies

TEST(AnimationTest, LoadingAgainStartsTheRecordsAnew)
{
    AnimationDocument wide(curveOf("INPUT", floats("a", "1 2 3 4 5 6 7 8 9", 9)), "name='wide'");
    AnimationDocument narrow(sampler(inputXml("INPUT", "b")) + floats("b", "7", 1) +
                             "<channel source='#sampler' target='other/place'/>");
    Animation animation(wide.element(), wide.dae());
    EXPECT_EQ(9u, animation.getCount());
    EXPECT_EQ("wide", textOf(nameField(animation)));
    EXPECT_TRUE(animation.createFromCollada(narrow.element(), narrow.dae()));
    EXPECT_EQ("", textOf(nameField(animation)));
    EXPECT_EQ("other", textOf(animation.getTargetNode()));
    EXPECT_EQ("place", textOf(animation.getTargetTransform()));
    EXPECT_EQ(1u, animation.getCount());
    EXPECT_EQ(7.0, animation.animationLength());
}

TEST(AnimationTest, LoadingTheSameElementAgainDoublesNothing)
{
    Outcome loaded(curve(allSources(), allInputs));
    EXPECT_TRUE(loaded.animation.createFromCollada(loaded.document.element(), loaded.document.dae()));
    expectWholeCurve(loaded.animation);
}

TEST(AnimationTest, FailedSecondLoadEmptiesTheRecordsButKeepsTheTarget)
{
    Outcome loaded(curve(allSources(), allInputs));
    LogCapture log;
    EXPECT_FALSE(loaded.animation.createFromCollada(loaded.document.blankElement(), loaded.document.dae()));
    EXPECT_EQ(noChannel, log.text());
    EXPECT_EQ(0u, loaded.animation.getCount());
    EXPECT_EQ(0.0, loaded.animation.animationLength());
    EXPECT_EQ("node", textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ("transform", textOf(loaded.animation.getTargetTransform()));
}

TEST(AnimationTest, SecondLoadWithoutASlashInItsTargetKeepsTheOldTarget)
{
    Outcome loaded(curve(allSources(), allInputs));
    AnimationDocument other(floats("a", "2", 1) + sampler(inputXml("INPUT", "a")) +
                            "<channel source='#sampler' target='lonely'/>");
    EXPECT_TRUE(loaded.animation.createFromCollada(other.element(), other.dae()));
    EXPECT_EQ("node", textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ("transform", textOf(loaded.animation.getTargetTransform()));
    EXPECT_EQ(2.0, loaded.animation.animationLength());
}

TEST(AnimationTest, CopyIsDeep)
{
    AnimationDocument document(curve(allSources(), allInputs), "name='swing'");
    Animation original(document.element(), document.dae());
    Animation copy(original);
    LogCapture log;
    AnimationDocument other(curve(floats("time", "7 8 9", 3) + floats("value", "1000 1000 1000", 3),
                                  inputXml("INPUT", "time") + inputXml("OUTPUT", "value")));
    original.createFromCollada(other.element(), other.dae());
    EXPECT_EQ(7.0, original.evolution(0).time);
    expectWholeCurve(copy);
    original.createFromCollada(document.blankElement(), document.dae());
    EXPECT_EQ(0u, original.getCount());
    expectWholeCurve(copy);
    EXPECT_EQ("swing", textOf(nameField(copy)));
    EXPECT_EQ("node", textOf(copy.getTargetNode()));
    EXPECT_EQ("transform", textOf(copy.getTargetTransform()));
}

TEST(AnimationTest, AssignmentIsDeep)
{
    AnimationDocument document(curve(allSources(), allInputs), "name='swing'");
    Animation original(document.element(), document.dae());
    Animation copy = document.blank();
    copy = original;
    AnimationDocument other(curve(floats("value", "1000", 1), inputXml("OUT_TANGENT", "value")));
    original.createFromCollada(other.element(), other.dae());
    EXPECT_EQ(1u, original.getCount());
    expectWholeCurve(copy);
    EXPECT_EQ("swing", textOf(nameField(copy)));
    EXPECT_EQ("node", textOf(copy.getTargetNode()));
    EXPECT_EQ("transform", textOf(copy.getTargetTransform()));
    const Animation& self = copy;
    copy = self;
    expectWholeCurve(copy);
}

TEST(AnimationTest, TargetsAreReturnedAsCopies)
{
    Outcome loaded(curve(allSources(), allInputs));
    vesk::String node = loaded.animation.getTargetNode();
    vesk::String transform = loaded.animation.getTargetTransform();
    node.append("-other");
    transform.append("-other");
    EXPECT_EQ("node", textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ("transform", textOf(loaded.animation.getTargetTransform()));
}

// ---- the two tables of words

class AnimationWordTest : public testing::TestWithParam<Case<const char*, libVideo::InterpolationType>> {};

TEST_P(AnimationWordTest, GivesItsInterpolationType)
{
    // The first record shows that the second one was written at all.
    Outcome loaded(curveOf("INTERPOLATION", names("a", std::string("HERMITE ") + GetParam().given, 2)));
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ(libVideo::HERMITE, recordsOf(loaded.animation)[0].interpolation);
    EXPECT_EQ(GetParam().expected, recordsOf(loaded.animation)[1].interpolation);
}

INSTANTIATE_ROWS(Words, AnimationWordTest, {"Step", "STEP", libVideo::STEP},
                 {"StepInLowerCase", "step", libVideo::STEP}, {"Linear", "LINEAR", libVideo::LINEAR},
                 {"LinearInLowerCase", "linear", libVideo::LINEAR}, {"Bezier", "BEZIER", libVideo::BEZIER},
                 {"BezierInMixedCase", "BeZier", libVideo::BEZIER}, {"Hermite", "HERMITE", libVideo::HERMITE},
                 {"HermiteInLowerCase", "hermite", libVideo::HERMITE}, {"Cardinal", "CARDINAL", libVideo::CARDINAL},
                 {"CardinalInMixedCase", "Cardinal", libVideo::CARDINAL}, {"Bspline", "BSPLINE", libVideo::BSPLINE},
                 {"BsplineInMixedCase", "BSpline", libVideo::BSPLINE},
                 {"OtherWordIsLinear", "SPLINE", libVideo::LINEAR}, {"LongerWordIsLinear", "STEPS", libVideo::LINEAR},
                 {"ShorterWordIsLinear", "BEZ", libVideo::LINEAR}, {"NumberIsLinear", "2", libVideo::LINEAR});

TEST(AnimationTest, OtherWordTurnsARecordBackToLinear)
{
    Outcome loaded(curve(names("a", "STEP BEZIER", 2) + names("b", "SPLINE", 1),
                         inputXml("INTERPOLATION", "a") + inputXml("INTERPOLATION", "b")));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(2u, loaded.animation.getCount());
    EXPECT_EQ(libVideo::LINEAR, recordsOf(loaded.animation)[0].interpolation);
    EXPECT_EQ(libVideo::BEZIER, recordsOf(loaded.animation)[1].interpolation);
}

TEST(AnimationTest, NameOfARecordIsFoundByItsIndexAlsoWithStrideZero)
{
    Outcome loaded(curveOf("INTERPOLATION", names("a", "STEP BEZIER CARDINAL", 3, 0)));
    EXPECT_TRUE(loaded.result);
    ASSERT_EQ(3u, loaded.animation.getCount());
    EXPECT_EQ(libVideo::STEP, recordsOf(loaded.animation)[0].interpolation);
    EXPECT_EQ(libVideo::BEZIER, recordsOf(loaded.animation)[1].interpolation);
    EXPECT_EQ(libVideo::CARDINAL, recordsOf(loaded.animation)[2].interpolation);
}

struct TargetCase : Row {
    const char* target;
    bool isRead;
    const char* node;
    const char* transform;
};

class AnimationTargetTest : public testing::TestWithParam<TargetCase> {};

TEST_P(AnimationTargetTest, SplitsAtSlashAndDot)
{
    AnimationDocument document("");
    Animation animation = document.blank();
    setTarget(animation, "old/kept.X");
    ASSERT_EQ("old", textOf(animation.getTargetNode()));
    ASSERT_EQ("kept", textOf(animation.getTargetTransform()));
    setTarget(animation, GetParam().target);
    EXPECT_EQ(GetParam().isRead ? GetParam().node : "old", textOf(animation.getTargetNode()));
    EXPECT_EQ(GetParam().isRead ? GetParam().transform : "kept", textOf(animation.getTargetTransform()));
}

TEST_P(AnimationTargetTest, ComesFromTheChannel)
{
    Outcome loaded(floats("a", "1", 1) + sampler(inputXml("INPUT", "a")) + "<channel source='#sampler' target='" +
                   GetParam().target + "'/>");
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    EXPECT_EQ(GetParam().node, textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ(GetParam().transform, textOf(loaded.animation.getTargetTransform()));
    EXPECT_EQ(1.0, loaded.animation.animationLength());
}

INSTANTIATE_ROWS(Targets, AnimationTargetTest, {"Angle", "node/rotateZ.ANGLE", true, "node", "rotateZ"},
                 {"Component", "node/translate.X", true, "node", "translate"},
                 {"NoMember", "node/translate", true, "node", "translate"},
                 {"Subscript", "node/transform(0)(1)", true, "node", "transform(0)(1)"},
                 {"DotInTheNode", "a.b/scale.Y", true, "a.b", "scale"}, {"TwoSlashes", "a/b/c.X", true, "a", "b/c"},
                 {"NothingBehindTheSlash", "node/", true, "node", ""}, {"NoSlash", "node", false, "", ""},
                 {"NothingBeforeTheSlash", "/scale.Y", true, "", "scale"},
                 {"DotRightBehindTheSlash", "node/.X", true, "node", ""},
                 {"TwoDots", "node/scale.X.Y", true, "node", "scale"}, {"DotAndNoSlash", "node.X", false, "", ""},
                 {"Empty", "", false, "", ""});

TEST(AnimationTest, ChannelWithoutTargetLeavesTheTargetUnset)
{
    Outcome loaded(floats("a", "1 2", 2) + sampler(inputXml("INPUT", "a")) + "<channel source='#sampler'/>");
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ("", loaded.text);
    EXPECT_EQ("", textOf(loaded.animation.getTargetNode()));
    EXPECT_EQ("", textOf(loaded.animation.getTargetTransform()));
    EXPECT_EQ(2.0, loaded.animation.animationLength());
}

// ---- the private steps by themselves

TEST(AnimationTest, OneInputIsReadByItself)
{
    AnimationDocument document(curve(allSources(), allInputs));
    Animation animation = document.blank();
    const domInputLocal_Array& inputs = document.samplerElement()->getInput_array();
    EXPECT_TRUE(createInput(animation, inputs[0]));
    ASSERT_EQ(3u, animation.getCount());
    EXPECT_EQ(1.5, recordsOf(animation)[1].time);
    EXPECT_EQ(0u, recordsOf(animation)[1].values.size());
    EXPECT_EQ(0.0, animation.animationLength());
    EXPECT_EQ("", textOf(animation.getTargetNode()));
    EXPECT_TRUE(createInput(animation, inputs[1]));
    EXPECT_EQ((Numbers{3, 4}), numbers(recordsOf(animation)[1].values));
}

TEST(AnimationTest, FloatsOfNoRecordNeedNoArray)
{
    AnimationDocument document("");
    Animation animation = document.blank();
    LogCapture log;
    const auto create = createFloat.pointer();
    EXPECT_TRUE((animation.*create)(nullptr, libVideo::SEMANTIC_OUTPUT, 0, 1));
    EXPECT_EQ("", log.text());
    EXPECT_FALSE((animation.*create)(nullptr, libVideo::SEMANTIC_COLOR, 0, 1));
    EXPECT_EQ(std::string(floatLine) + "3", log.text());
}

TEST(AnimationTest, MoreFloatsThanRecordsThrow)
{
    AnimationDocument document(curveOf("INPUT", floats("a", "1 2 3", 2)));
    Animation animation(document.element(), document.dae());
    const domFloat_array* array = document.named<domFloat_array>("a-array");
    expectIndexOutOfBounds(1, 2, [&] { createFloat(animation, array, libVideo::SEMANTIC_OUTPUT, 3, 1); });
    EXPECT_EQ((Numbers{1}), numbers(recordsOf(animation)[0].values));
    EXPECT_EQ((Numbers{2}), numbers(recordsOf(animation)[1].values));
}

TEST(AnimationTest, MoreNamesThanRecordsThrow)
{
    AnimationDocument document(curveOf("INTERPOLATION", names("a", "STEP BEZIER STEP", 1)));
    Animation animation(document.element(), document.dae());
    const domName_array* array = document.named<domName_array>("a-array");
    expectIndexOutOfBounds(0, 1, [&] { createName(animation, array, libVideo::SEMANTIC_INTERPOLATION, 2, 1); });
}

// ---- the list

std::string listed(const std::string& prefix)
{
    return "<animation name='" + prefix + "'>" + floats(prefix + "-time", "1 2", 2) +
           sampler(inputXml("INPUT", prefix + "-time"), prefix + "-sampler") + "<channel source='#" + prefix +
           "-sampler' target='" + prefix + "/move.X'/></animation>";
}

AnimationHandle someAnimation()
{
    AnimationDocument document(curveOf("INPUT", floats("a", "1", 1)));
    return AnimationHandle(new Animation(document.element(), document.dae()));
}

TEST(AnimationListTest, NullDocumentIsLoggedAndLeavesTheListUntouched)
{
    ColladaBuilder builder;
    vesk::Array<AnimationHandle> list;
    const AnimationHandle kept = someAnimation();
    list.append(kept);
    LogCapture log;
    EXPECT_EQ(0u, libVideo::createAnimationListFromCollada(nullptr, builder.dae(), list));
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(noDocument, log.text());
    EXPECT_EQ("libVideo.animation", log.lines()[0].channel);
    EXPECT_EQ(3, log.lines()[0].priority);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ(kept, list[0]);
    EXPECT_EQ(2u, kept.useCount());
}

TEST(AnimationListTest, DocumentWithoutLibraryEmptiesTheList)
{
    ColladaBuilder builder;
    const domCOLLADA* const root = builder.open();
    ASSERT_NE(nullptr, root);
    vesk::Array<AnimationHandle> list;
    const AnimationHandle kept = someAnimation();
    for (unsigned i = 0; i < 9; ++i) {
        list.append(kept);
    }
    ASSERT_EQ(16u, list.capacity());
    LogCapture log;
    EXPECT_EQ(0u, libVideo::createAnimationListFromCollada(root, builder.dae(), list));
    EXPECT_EQ("", log.text());
    EXPECT_EQ(0u, list.size());
    EXPECT_EQ(8u, list.capacity());
    EXPECT_EQ(1u, kept.useCount());
}

TEST(AnimationListTest, TwoLibrariesGiveOneListInDocumentOrder)
{
    ColladaBuilder builder(library("library_animations", listed("first") + listed("second")) +
                           library("library_animations", listed("third")));
    vesk::Array<AnimationHandle> list;
    const AnimationHandle old = someAnimation();
    list.append(old);
    LogCapture log;
    EXPECT_EQ(3u, libVideo::createAnimationListFromCollada(builder.open(), builder.dae(), list));
    EXPECT_EQ("", log.text());
    ASSERT_EQ(3u, list.size());
    EXPECT_EQ("first", textOf(list[0]->getTargetNode()));
    EXPECT_EQ("second", textOf(list[1]->getTargetNode()));
    EXPECT_EQ("third", textOf(list[2]->getTargetNode()));
    EXPECT_EQ("third", textOf(nameField(*list[2])));
    for (const AnimationHandle& handle : list) {
        EXPECT_EQ(1u, handle.useCount());
        EXPECT_EQ(2.0, handle->animationLength());
    }
    EXPECT_EQ(1u, old.useCount());
}

TEST(AnimationListTest, NestedAnimationsGetNoEntry)
{
    ColladaBuilder builder(
        library("library_animations", "<animation>" + listed("inner1") + listed("inner2") + "</animation>"));
    vesk::Array<AnimationHandle> list;
    LogCapture log;
    EXPECT_EQ(1u, libVideo::createAnimationListFromCollada(builder.open(), builder.dae(), list));
    EXPECT_EQ(noChannel, log.text());
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ(0u, list[0]->getCount());
    EXPECT_EQ("", textOf(list[0]->getTargetNode()));
}

TEST(AnimationListTest, FailedAnimationsStayInTheList)
{
    ColladaBuilder builder(library("library_animations", "<animation name='bad'/>" + listed("good") + "<animation>" +
                                                             floats("c", "1 2 3", 3) + sampler(inputXml("COLOR", "c")) +
                                                             usualChannel + "</animation>"));
    vesk::Array<AnimationHandle> list;
    LogCapture log;
    EXPECT_EQ(3u, libVideo::createAnimationListFromCollada(builder.open(), builder.dae(), list));
    EXPECT_EQ(std::string(noChannel) + "\n" + floatLine + "3", log.text());
    ASSERT_EQ(3u, list.size());
    EXPECT_EQ("bad", textOf(nameField(*list[0])));
    EXPECT_EQ("", textOf(list[0]->getTargetNode()));
    EXPECT_EQ(0u, list[0]->getCount());
    EXPECT_EQ("good", textOf(list[1]->getTargetNode()));
    EXPECT_EQ("", textOf(list[2]->getTargetNode()));
    EXPECT_EQ(3u, list[2]->getCount());
    EXPECT_EQ(0.0, list[2]->animationLength());
}

TEST(AnimationListTest, ThrownExceptionPassesAndKeepsTheEntriesBefore)
{
    ColladaBuilder builder(library("library_animations", listed("good") + "<animation>" + floats("c", "1", 1, 0) +
                                                             sampler(inputXml("INPUT", "c")) + usualChannel +
                                                             "</animation>" + listed("late")));
    const domCOLLADA* const root = builder.open();
    vesk::Array<AnimationHandle> list;
    expectIndexOutOfBounds(-1, 0, [&] { libVideo::createAnimationListFromCollada(root, builder.dae(), list); });
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("good", textOf(list[0]->getTargetNode()));
}

const char* const entry = "> Camera::createAnimationListFromCollada (libVideo/SceneGraph/Animation";
const char* const leaving = "< Camera::createAnimationListFromCollada";

TEST(AnimationListTest, OpensATraceUnderTheCameraName)
{
    ColladaBuilder builder;
    const domCOLLADA* const root = builder.open();
    vesk::Array<AnimationHandle> list;
    const auto create = [&] { libVideo::createAnimationListFromCollada(root, builder.dae(), list); };
    EXPECT_EQ(texts(entry, leaving), tracedTexts(create, "libVideo.animation"));
}

TEST(AnimationListTest, NullDocumentIsLoggedInsideTheTrace)
{
    ColladaBuilder builder;
    vesk::Array<AnimationHandle> list;
    const auto create = [&] { libVideo::createAnimationListFromCollada(nullptr, builder.dae(), list); };
    EXPECT_EQ(texts(entry, noDocument, leaving), tracedTexts(create, "libVideo.animation"));
}

// ---- what a load may take: 128 MiB and 64 bytes for each of the document

// The messages of a load of these animations.
std::string toldByLoad(const std::string& animations)
{
    const TemporaryFile file(ColladaBuilder("<library_animations>" + animations + "</library_animations>")
                                 .addScene("<node id='n'/>")
                                 .text());
    const LogCapture log("libVideo.animation");
    libVideo::Scene scene;
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
    return log.text();
}

constexpr char tooMuch[] = "Asks for more memory than the size of the document allows";

// With nine bytes per key, fourteen curves of a million keys are within the budget; the fifteenth is not.
TEST(AnimationBudgetTest, KeysThatNothingBacksAreCharged)
{
    const std::string source =
        "<source id='keys'><technique_common><accessor source='#none' count='1048576'/></technique_common></source>";
    std::string animations = "<animation>" + source + "</animation>";
    for (unsigned i = 0; i < 15; ++i) {
        const std::string id = "sampler" + std::to_string(i);
        animations += "<animation><sampler id='" + id + "'><input semantic='INPUT' source='#keys'/></sampler>" +
                      "<channel source='#" + id + "' target='n/t'/></animation>";
    }
    EXPECT_EQ(std::string(noChannel) + "\n" + tooMuch, toldByLoad(animations));
}

// Each input reads more of an array than the previous ones, so it cannot share their numbers.
TEST(AnimationBudgetTest, NumbersReadAnewAreCharged)
{
    constexpr unsigned inputCount = 200;
    constexpr unsigned most = 100'000;
    std::string sources =
        "<source id='s'><float_array id='a' count='100000'>" + repeated("0 ", most) + "</float_array></source>";
    std::string inputs;
    for (unsigned i = 0; i < inputCount; ++i) {
        const std::string id = "s" + std::to_string(i);
        sources += "<source id='" + id + "'><technique_common><accessor source='#a' count='10' stride='" +
                   std::to_string(most / 10 - inputCount + i) + "'/></technique_common></source>";
        inputs += "<input semantic='OUTPUT' source='#" + id + "'/>";
    }
    EXPECT_EQ(tooMuch, toldByLoad("<animation>" + sources + "<sampler id='m'>" + inputs +
                                  "</sampler><channel source='#m' target='n/t'/></animation>"));
}

static_assert(!std::is_polymorphic_v<Animation>);
static_assert(std::is_copy_constructible_v<Animation> && std::is_copy_assignable_v<Animation>);
static_assert(std::is_constructible_v<Animation, const daeSmartRef<domAnimation>&, DAE&>);
static_assert(sizeof(libVideo::InterpolationType) == 4);
static_assert(std::is_same_v<double, decltype(Evolution::time)>);
static_assert(std::is_same_v<libVideo::InterpolationType, decltype(Evolution::interpolation)>);
static_assert(std::is_same_v<vesk::Array<double>, decltype(Evolution::values)>);
static_assert(std::is_same_v<vesk::Array<double>, decltype(Evolution::inTangent)>);
static_assert(std::is_same_v<vesk::Array<double>, decltype(Evolution::outTangent)>);
static_assert(std::is_same_v<vesk::String, decltype(std::declval<const Animation&>().getTargetNode())>);
static_assert(std::is_same_v<vesk::String, decltype(std::declval<const Animation&>().getTargetTransform())>);
static_assert(std::is_same_v<unsigned, decltype(std::declval<Animation&>().getCount())>);
static_assert(std::is_same_v<double, decltype(std::declval<const Animation&>().animationLength())>);
static_assert(std::is_same_v<unsigned, decltype(libVideo::createAnimationListFromCollada(
                                           static_cast<const domCOLLADA*>(nullptr), std::declval<DAE&>(),
                                           std::declval<vesk::Array<AnimationHandle>&>()))>);

} // namespace
