#include <libPrepare/Prepare.h>

#include "Expectations.h"
#include "TemporaryFolder.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

#include <string>

// Prepares whole documents from file to file.

namespace {

using test::canonical;
using test::contentOf;
using test::TemporaryFolder;

// A document that needs no change, written in ways that a careless writer would change: numbers with trailing zeros,
// both kinds of quotes, character references, comments, processing instructions, blanks, vendor data.
struct Words {
    std::string node = "<matrix sid='m'>1.0 0 0 1e0\n 0 1 0 -0.0 0 0 01 0.500 0 0 0 1</matrix>";
    std::string shader =
        "<phong><emission><color>0 0 0 1.000</color></emission><ambient><color>0 0 0 1</color></ambient>"
        "<diffuse><color sid='d'>0.50 .25 0 1</color></diffuse><specular><color>0 0 0 1</color></specular>"
        "<shininess><float>20.0</float></shininess><reflective><color>0 0 0 1</color></reflective>"
        "<transparent opaque='A_ONE'><color>1 1 1 "
        "1</color></transparent><transparency><float>1.0</float></transparency>"
        "</phong>";
    std::string faces = "<triangles count='2' material='s'><input semantic='VERTEX' source='#v' offset='0'/>"
                        "<p>0 1 2\n0 2 3</p></triangles>";
};

std::string document(const Words& words)
{
    return "<?xml version='1.0' encoding=\"utf-8\"?>\n<!-- first --><?go on?>\n"
           "<COLLADA version='1.4.1' xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" xmlns:own='urn:own'>\r\n"
           "  <asset><contributor><comments>a &amp; b &#233; caf\xC3\xA9 ]]&gt;</comments></contributor>"
           "<created/><modified/></asset>\n"
           "<library_materials><material id='m' name='one&quot;\"'><instance_effect url='#f'/></material>"
           "</library_materials>\n<library_effects><effect id='f'><profile_COMMON><technique sid='t'>" +
           words.shader +
           "</technique></profile_COMMON><extra><technique profile='X'><own:a own:b='1'>1,50 <![CDATA[<raw>&]]></own:a>"
           "</technique></extra></effect></library_effects>\n"
           "<library_geometries><geometry id='g'><mesh><source id='p'><float_array id='pa' count='12'>0 0.0 0 1.00 0 0 "
           "1 1e0 0 0 1 0</float_array><technique_common><accessor source='#pa' count='4' stride='3'>"
           "<param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/></accessor>"
           "</technique_common></source><vertices id='v'><input semantic='POSITION' source='#p'/></vertices>" +
           words.faces +
           "</mesh></geometry></library_geometries>\n<library_visual_scenes><visual_scene id='s'><node id='n'>" +
           words.node +
           "<instance_geometry url='#g'><bind_material><technique_common><instance_material symbol='s' target='#m'/>"
           "</technique_common></bind_material></instance_geometry></node></visual_scene></library_visual_scenes>\n"
           "<scene><instance_visual_scene url='#s'/></scene>\n</COLLADA>\n<!-- last -->";
}

TEST(PrepareTest, WhatNeedsNothingIsCopiedByteForByte)
{
    const TemporaryFolder folder;
    const std::string text = document({});
    const std::filesystem::path out = folder.path() / "b.dae";
    const libPrepare::Report report = libPrepare::prepare(folder.write("a.dae", text), out);
    EXPECT_TRUE(report.done);
    EXPECT_FALSE(report.changed);
    EXPECT_TRUE(report.findings.empty());
    EXPECT_EQ(text, contentOf(out));
}

TEST(PrepareTest, DocumentTypeWithoutDeclarationsIsTakenOut)
{
    const TemporaryFolder folder;
    const std::string text = document({});
    const std::size_t place = text.find("<COLLADA");
    const std::string typed = text.substr(0, place) + "<!DOCTYPE COLLADA SYSTEM 'a>b.dtd' >" + text.substr(place);
    const std::filesystem::path in = folder.write("a.dae", typed);
    const std::filesystem::path out = folder.path() / "b.dae";
    const libPrepare::Report report = libPrepare::prepare(in, out);
    ASSERT_EQ(1U, report.findings.size());
    EXPECT_EQ("document-type", report.findings.front().kind);
    EXPECT_EQ(canonical(text), canonical(contentOf(out)));
    EXPECT_EQ(std::string::npos, contentOf(out).find("DOCTYPE"));
    const libPrepare::Report inspected = libPrepare::inspect(in);
    EXPECT_FALSE(inspected.done);
    EXPECT_EQ("has a document type (<!DOCTYPE>)", inspected.findings.front().text);
}

struct Change : testSupport::Row {
    const char* kind; // of the only finding
    std::string Words::*place;
    std::string before;
    std::string after;
};

std::string replaced(std::string text, const std::string& part, const std::string& by)
{
    return text.replace(text.find(part), part.size(), by);
}

class ChangedDocumentTest : public testing::TestWithParam<Change> {};

TEST_P(ChangedDocumentTest, IsEqualInCanonicalXmlButForTheReportedChange)
{
    const TemporaryFolder folder;
    Words words;
    words.*GetParam().place = GetParam().before;
    const std::filesystem::path once = folder.path() / "b.dae";
    const std::filesystem::path twice = folder.path() / "c.dae";
    const libPrepare::Report report = libPrepare::prepare(folder.write("a.dae", document(words)), once);
    words.*GetParam().place = GetParam().after;
    EXPECT_EQ(canonical(document(words)), canonical(contentOf(once)));
    ASSERT_EQ(1U, report.findings.size());
    EXPECT_EQ(GetParam().kind, report.findings.front().kind);
    EXPECT_FALSE(libPrepare::prepare(once, twice).changed);
    EXPECT_EQ(contentOf(once), contentOf(twice));
}

INSTANTIATE_ROWS(
    Rows, ChangedDocumentTest,
    {"NodeWithoutATransform", "node without a transform", &Words::node, "",
     "<matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>"},
    {"DecimalComma", "decimal-comma", &Words::node, "<translate sid='t'>0,50 1.0 02</translate>",
     "<translate sid='t'>0.50 1.0 02</translate>"},
    {"TextInTwoRuns", "divided-text", &Words::node, "<translate>1.0 <!-- x -->2 03</translate>",
     "<translate>1.0 2 03<!-- x --></translate>"},
    {"AbsentChannel", "channel", &Words::shader,
     replaced(Words().shader, "<specular><color>0 0 0 1</color></specular>", ""), Words().shader},
    {"Quad", "polylist", &Words::faces,
     "<polylist count='1' material='s'><input semantic='VERTEX' source='#v' offset='0'/><vcount>4</vcount>"
     "<p>0 1 2 3</p></polylist>",
     "<triangles count='2' material='s'><input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2 0 2 3</p>"
     "</triangles>"},
    {"CountThatIsTooSmall", "count", &Words::faces,
     "<triangles count='3' material='s'><input semantic='VERTEX' source='#v' offset='0'/>"
     "<p>0 1  2\n0 2 3</p></triangles>",
     "<triangles count='2' material='s'><input semantic='VERTEX' source='#v' offset='0'/>"
     "<p>0 1  2\n0 2 3</p></triangles>"});

} // namespace
