#include <libPrepare/document/FormCheck.h>
#include <libPrepare/document/PlainForm.h>

#include "support/Rows.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using libPrepare::checkForm;
using libPrepare::isPlainlyFormed;
using testSupport::Row;

std::string inRoot(const std::string& body)
{
    return "<COLLADA>" + body + "</COLLADA>";
}

struct PlainCase : Row {
    std::string text;
};

class PlainTest : public testing::TestWithParam<PlainCase> {};

TEST_P(PlainTest, NeedsNoParser)
{
    EXPECT_TRUE(isPlainlyFormed(GetParam().text));
    EXPECT_FALSE(checkForm(GetParam().text));
}

INSTANTIATE_ROWS(Rows, PlainTest, {"Root", "<COLLADA/>"},
                 {"Declaration", "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\r\n<COLLADA />\n"},
                 {"Comments",
                  "<?xml version=\"1.0\"?><!-- a<b&c -->\n" + inRoot("<!----><a>1<!-- ] -->2</a>") + "<!-- end -->\n"},
                 {"Attributes",
                  "<COLLADA xmlns=\"http://a\"\n\tversion='1.4.1' a=\"it's &lt; 'b' > c\" b='\"'></COLLADA >"},
                 {"Entities", inRoot("&amp;&lt;&gt;&quot;&apos; > ' \" ]] ]>")},
                 {"LongText", inRoot("<p>" + std::string(10'000, '7') + "</p>")},
                 {"NodeInNode", inRoot("<node><node/><node></node></node>")});

class OddTest : public testing::TestWithParam<PlainCase> {};

TEST_P(OddTest, IsLeftToTheParser)
{
    EXPECT_FALSE(isPlainlyFormed(GetParam().text));
}

std::string times(std::size_t count, const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

INSTANTIATE_ROWS(Rows, OddTest, {"Empty", ""}, {"OtherRoot", "<a/>"}, {"TwoRoots", "<COLLADA/><COLLADA/>"},
                 {"NoEnd", "<COLLADA>"}, {"TextAfterTheEnd", "<COLLADA/>x"}, {"TextBeforeTheRoot", "x<COLLADA/>"},
                 {"OtherEncoding", "<?xml version=\"1.0\" encoding=\"latin1\"?><COLLADA/>"},
                 {"Version11", "<?xml version=\"1.1\"?><COLLADA/>"}, {"DocumentType", "<!DOCTYPE COLLADA><COLLADA/>"},
                 {"Instruction", inRoot("<?a b?>")}, {"CharacterData", inRoot("<![CDATA[a]]>")},
                 {"EndOfCharacterData", inRoot("a]]>")}, {"OtherEntity", inRoot("&a;")}, {"Prefix", inRoot("<a:b/>")},
                 {"PrefixOfAnAttribute", inRoot("<a b:c=''/>")}, {"SameAttributeTwice", inRoot("<a b='' c='' b=''/>")},
                 {"NoBlankBetweenAttributes", inRoot("<a b=''c=''/>")}, {"NoQuotes", inRoot("<a b=c/>")},
                 {"AngleBracketInAValue", inRoot("<a b='<'/>")}, {"WrongEndTag", inRoot("<a></b>")},
                 {"LongerEndTag", inRoot("<a></ab>")}, {"DashesInAComment", inRoot("<!-- -- -->")},
                 {"CommentEndsInDashes", inRoot("<!-- --->")}, {"BeyondAscii", inRoot("\xC3\xA4")},
                 {"Zero", inRoot(std::string(1, '\0'))}, {"ListInAList", inRoot("<p><p/></p>")},
                 {"AnyInATechnique", inRoot("<technique><any/></technique>")},
                 {"ManySteps", inRoot("<a b='" + times(300, "../") + "'/>")},
                 {"ManyStepsInAText", inRoot("<init_from>" + times(300, "../") + "</init_from>")},
                 {"CommentInAReference", inRoot("<init_from>a<!-- -->b</init_from>")},
                 {"Deep", inRoot(times(6'000, "<a>") + times(6'000, "</a>"))},
                 {"LongName", inRoot("<" + times(200, "a") + "/>")});

// Each byte of a document is removed, doubled, and replaced by every byte with a meaning in XML.
TEST(PlainFormTest, WhatNeedsNoParserIsFineForTheParser)
{
    const std::string document =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<COLLADA xmlns=\"h:/a\" version='1.4.1'>\n"
        "<!-- a --><a b=\"c &amp; d\" e='f'><p>0 1 ]2</p><technique/><init_from>../a.png</init_from>"
        "</a >&lt;</COLLADA>\n";
    ASSERT_TRUE(isPlainlyFormed(document));
    std::size_t accepted = 0;
    const auto check = [&](const std::string& text) {
        if (isPlainlyFormed(text)) {
            ++accepted;
            EXPECT_FALSE(checkForm(text)) << text;
        }
    };
    for (std::size_t at = 0; at < document.size(); ++at) {
        std::string text = document;
        check(text.erase(at, 1));
        text = document;
        check(text.insert(at, 1, document[at]));
        for (const char character : std::string("<>/?!-&;]\"'= \n:a1\x01\x7F\xC3\0", 21)) {
            text = document;
            text[at] = character;
            check(text);
        }
    }
    EXPECT_LT(500U, accepted);
}

} // namespace
