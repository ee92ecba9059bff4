#include "support/Rows.h"

#include <libPrepare/document/Census.h>

#include <gtest/gtest.h>

namespace {

using libPrepare::Census;

struct Fact : testSupport::Row {
    bool Census::*fact;
    bool expected;
    const char* content; // of the root element
};

class CensusTest : public testing::TestWithParam<Fact> {};

TEST_P(CensusTest, FactsAreThoseOfTheElements)
{
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string((std::string("<COLLADA>") + GetParam().content + "</COLLADA>").c_str(),
                                     pugi::parse_full | pugi::parse_ws_pcdata));
    std::pmr::monotonic_buffer_resource memory;
    EXPECT_EQ(GetParam().expected, Census::of(document.document_element(), memory).*GetParam().fact);
}

INSTANTIATE_ROWS(Texts, CensusTest,
                 {"NumbersInOneRun", &Census::hasOddTexts, false, "<float_array>1 2 3</float_array>"},
                 {"CommaInANumber", &Census::hasOddTexts, true, "<float_array>1,5 2</float_array>"},
                 {"CommaInAName", &Census::hasOddTexts, false, "<Name_array>a,b</Name_array>"},
                 {"CommaInTheUnit", &Census::hasOddTexts, true, "<asset><unit meter='0,01'/></asset>"},
                 {"UnitWithAPoint", &Census::hasOddTexts, false, "<asset><unit meter='0.01' name='a,b'/></asset>"},
                 {"CommentInAText", &Census::hasOddTexts, true, "<p>1 <!-- two --> 3</p>"},
                 {"CharacterData", &Census::hasOddTexts, true, "<p><![CDATA[1 2 3]]></p>"},
                 {"ElementInAValue", &Census::hasOddTexts, true, "<p>1 2 3<input/></p>"},
                 {"SourceInAPrimitive", &Census::hasOddTexts, true, "<triangles><source id='s'/></triangles>"},
                 {"ElementsOfAPrimitive", &Census::hasOddTexts, false,
                  "<triangles> <input/> <p>0 1 2</p> <extra/> </triangles>"},
                 {"CommentOfAnotherProgram", &Census::hasOddTexts, false, "<extra><float>1,5<!-- --></float></extra>"},
                 {"CommentOfAnotherProfile", &Census::hasOddTexts, false, "<profile_X><float>1,5</float></profile_X>"},
                 {"CommaAfterAnotherProgram", &Census::hasOddTexts, true, "<extra><a/></extra><float>1,5</float>"});

INSTANTIATE_ROWS(Transforms, CensusTest,
                 {"MainAxis", &Census::areTransformsComplete, true, "<node><rotate>0 1 0 90</rotate></node>"},
                 {"AnotherAxis", &Census::areTransformsComplete, false, "<node><rotate>0 0 0 90</rotate></node>"},
                 {"MainAxisAfterAnother", &Census::areTransformsComplete, false,
                  "<node><rotate>0 0 0 <!-- -->1 0 0 90</rotate></node>"},
                 {"MainAxisInAComment", &Census::areTransformsComplete, false,
                  "<node><rotate><!--1 0 0 9-->0 0 0 90</rotate></node>"},
                 {"MainAxisAsCharacterData", &Census::areTransformsComplete, false,
                  "<node><rotate><![CDATA[1 0 0 9]]></rotate></node>"},
                 {"RotationWithoutNumbers", &Census::areTransformsComplete, false, "<node><rotate/></node>"},
                 {"NodeWithoutATransform", &Census::areTransformsComplete, false, "<node><instance_light/></node>"},
                 {"NodeInANode", &Census::areTransformsComplete, false, "<node><matrix/><node/></node>"},
                 {"TransformAfterANode", &Census::areTransformsComplete, true,
                  "<node><node><scale/></node><translate/></node>"},
                 {"Lookat", &Census::areTransformsComplete, false, "<node><lookat/></node>"},
                 {"Skew", &Census::areTransformsComplete, false, "<node><matrix/><skew/></node>"});

INSTANTIATE_ROWS(Ids, CensusTest, {"PlainId", &Census::areIdsPlain, true, "<node id='a-b_c.d'/>"},
                 {"BlankInAnId", &Census::areIdsPlain, false, "<node id='a b'/>"},
                 {"BlankBeforeAnId", &Census::areIdsPlain, false, "<node id=' a'/>"},
                 {"EmptyId", &Census::areIdsPlain, false, "<node id=''/>"},
                 {"SlashInAnId", &Census::areIdsPlain, true, "<node id='a/b'/>"},
                 {"SlashInTheIdOfAnImage", &Census::areIdsPlain, false, "<image id='a/b'/>"},
                 {"PlainReference", &Census::areReferencesPlain, true, "<instance_node url='#a'/>"},
                 {"ReferenceToAFile", &Census::areReferencesPlain, false, "<instance_node url='b.dae#a'/>"},
                 {"ReferenceWithABlank", &Census::areReferencesPlain, false, "<instance_node url='#a '/>"},
                 {"ReferenceInAText", &Census::areReferencesPlain, false, "<skeleton> #a</skeleton>"},
                 {"ReferenceThatIsNoUri", &Census::areReferencesPlain, true, "<texture texture='a b'/>"});

INSTANTIATE_ROWS(Instances, CensusTest, {"Camera", &Census::hasCameraInstances, true, "<instance_camera/>"},
                 {"Controller", &Census::hasControllerInstances, true, "<instance_controller/>"},
                 {"ControllerMakesAGeometry", &Census::hasGeometryInstances, true, "<instance_controller/>"},
                 {"Geometry", &Census::hasGeometryInstances, true, "<instance_geometry/>"},
                 {"Light", &Census::hasLightInstances, true, "<instance_light/>"},
                 {"Node", &Census::hasNodeInstances, true, "<instance_node/>"},
                 {"NoNode", &Census::hasNodeInstances, false, "<instance_nodes/><instance_light/>"},
                 {"AssetOfTheDocument", &Census::hasInnerAssets, false, "<asset/>"},
                 {"AssetOfANode", &Census::hasInnerAssets, true, "<node><asset/></node>"});

} // namespace
