#include <libPrepare/document/DocumentFile.h>

#include "Expectations.h"
#include "TemporaryFolder.h"

#include "support/Rows.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <sys/stat.h>

namespace {

using namespace libPrepare;
using test::canonical;
using test::contentOf;
using test::TemporaryFolder;
using namespace std::string_literals;

constexpr std::uint64_t much = std::uint64_t(1) << 30;
const std::string root = "<COLLADA version=\"1.4.1\">";

std::string inUtf16(const std::string& ascii, bool isBigEndian)
{
    std::string result = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) {
        result += isBigEndian ? "\0"s + c : std::string(1, c) + '\0';
    }
    return result;
}

struct Refused : testSupport::Row {
    std::string content;
    std::string kind;
    std::string reason;
    unsigned line;
    unsigned column;
};

class RefusedDocumentTest : public testing::TestWithParam<Refused> {};

TEST_P(RefusedDocumentTest, SaysWhereAndWhy)
{
    const TemporaryFolder folder;
    DocumentFile document;
    const std::optional<Refusal> refusal = document.read(folder.write("a.dae", GetParam().content), much);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(GetParam().kind, refusal->kind);
    EXPECT_EQ(GetParam().reason, refusal->reason);
    EXPECT_EQ(GetParam().line, refusal->line);
    EXPECT_EQ(GetParam().column, refusal->column);
    EXPECT_NE("", refusal->remedy);
}

std::string nested(std::size_t levels)
{
    std::string result;
    for (std::size_t i = 0; i < levels; ++i) {
        result += "<n>";
    }
    for (std::size_t i = 0; i < levels; ++i) {
        result += "</n>";
    }
    return result;
}

std::string repeated(const std::string& text, std::size_t count)
{
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

INSTANTIATE_ROWS(
    Rows, RefusedDocumentTest, {"Empty", "", "empty", "is empty", 0, 0},
    {"Picture", "\x89PNG\r\n", "other-format", "is a PNG picture", 0, 0},
    {"Archive", "PK\x03\x04...", "other-format", "is a zip archive", 0, 0},
    {"Cut", root + "\n<asset>", "malformed", "not well-formed: The document ends inside <asset> of line 2", 2, 8},
    {"Mismatch", root + "\n  <a></b></COLLADA>", "malformed",
     "not well-formed: Opening and ending tag mismatch: a line 2 and b", 2, 10},
    {"MismatchAfterManyNumbers", root + "\n" + repeated("0 1 2 3\n", 10'000) + "<a></b></COLLADA>", "malformed",
     "not well-formed: Opening and ending tag mismatch: a line 10002 and b", 10'002, 8},
    {"Junk", root + "</COLLADA>\nx", "malformed", "not well-formed: Extra content at the end of the document", 2, 1},
    {"Entity", root + "\n&lots;</COLLADA>", "malformed", "not well-formed: Entity 'lots' not defined", 2, 7},
    {"EndOfCharacterData", root + "]]></COLLADA>", "malformed",
     "not well-formed: Sequence ']]>' not allowed in content", 1, 26},
    {"DocumentType", "<?xml version=\"1.0\"?>\n<!DOCTYPE COLLADA [<!ENTITY a 'b'>]>" + root + "</COLLADA>",
     "document-type", "has a document type with declarations (<!DOCTYPE [...]>)", 2, 1},
    {"DocumentTypeOfAFileWithDeclarations", "<!DOCTYPE COLLADA SYSTEM 'a>b' [<!ENTITY a 'b'>]>" + root + "</COLLADA>",
     "document-type", "has a document type with declarations (<!DOCTYPE [...]>)", 1, 1},
    {"Root", "\n<html/>", "root", "no COLLADA: The root element is <html>", 2, 1},
    {"Deep", root + "\n" + nested(10'000) + "</COLLADA>", "too-deep", "more than 10,000 levels of elements", 2,
     3 * 9'999 + 1},
    {"ManyAttributes",
     root + "\n<a " +
         [] {
             std::string result;
             for (unsigned i = 0; i < 1'025; ++i) {
                 result += " a" + std::to_string(i) + "=''";
             }
             return result;
         }() +
         "/></COLLADA>",
     "start-tag", "<a> has too many attributes", 2, 1},
    {"LongName", root + "<technique>\n<" + std::string(128, 'n') + "/></technique></COLLADA>", "long-name",
     "an element with a name of 128 bytes", 2, 1},
    {"ValueInItsLike", root + "<p>1\n<p/></p></COLLADA>", "stray-element", "an element <p> where there can be none", 2,
     1},
    {"ParentSteps", root + "\n<a url='" + repeated("../", 257) + "'/></COLLADA>", "reference",
     "<a> has a reference with too many steps to a parent folder", 2, 1},
    {"BadUtf8", root + "\nab\xE9 </COLLADA>", "malformed",
     "not well-formed: Input is not proper UTF-8, indicate encoding !\nBytes: 0xE9 0x20 0x3C 0x2F", 2, 3},
    {"BytesBeyondTheEncoding", "<?xml version='1.0' encoding='ASCII'?>\n<a>\xE9</a>", "encoding",
     "not well-formed: Bytes that are no ASCII", 2, 4},
    {"UnknownEncoding", "<?xml version='1.0' encoding='martian'?><a>\xE9</a>", "encoding",
     "its encoding martian is not known", 1, 1},
    {"HalfACharacter", inUtf16(root + "</COLLADA>", true) + "a", "encoding",
     "not well-formed: Bytes that are no UTF-16BE", 1, 36});

TEST(DocumentFileTest, WhatIsNoRegularFileIsRefusedWithoutWaiting)
{
    const TemporaryFolder folder;
    ASSERT_EQ(0, mkfifo((folder.path() / "pipe").c_str(), 0600));
    const auto reason = [](const std::filesystem::path& path) {
        DocumentFile document;
        const std::optional<Refusal> refusal = document.read(path, much);
        return refusal ? refusal->reason : std::string();
    };
    EXPECT_EQ("is a directory", reason(folder.path()));
    EXPECT_EQ("is a pipe", reason(folder.path() / "pipe"));
    EXPECT_EQ("is a device", reason("/dev/zero"));
    EXPECT_EQ("does not exist", reason(folder.path() / "none.dae"));
    EXPECT_EQ("does not exist", reason(""));
}

struct Encoded : testSupport::Row {
    std::string content;
    std::string text; // of the root
    std::string encoding;
};

std::string declared(const std::string& encoding, const std::string& text)
{
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n<COLLADA>" + text + "</COLLADA>";
}

class EncodingTest : public testing::TestWithParam<Encoded> {};

TEST_P(EncodingTest, BecomesUtf8AndSaysTheSameInCanonicalXml)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.write("a.dae", GetParam().content);
    DocumentFile document;
    ASSERT_FALSE(document.read(file, much));
    EXPECT_STREQ(GetParam().text.c_str(), document.xml().child("COLLADA").text().get());
    EXPECT_EQ(GetParam().encoding, document.encoding().name);
    EXPECT_FALSE(document.encoding().isMistaken);

    const std::filesystem::path copy = folder.path() / "copy.dae";
    ASSERT_FALSE(document.write(copy, false));
    EXPECT_EQ(GetParam().content, contentOf(copy));
    ASSERT_FALSE(document.write(copy, true));
    EXPECT_EQ(canonical(GetParam().content), canonical(contentOf(copy)));
}

INSTANTIATE_ROWS(Rows, EncodingTest, {"Utf8", declared("UTF-8", "caf\xC3\xA9"), "caf\xC3\xA9", "UTF-8"},
                 {"ByteOrderMark", "\xEF\xBB\xBF" + declared("utf-8", "caf\xC3\xA9"), "caf\xC3\xA9", "UTF-8"},
                 {"Latin1", declared("ISO-8859-1", "caf\xE9"), "caf\xC3\xA9", "ISO-8859-1"},
                 {"Windows1252", declared("windows-1252", "\x80"), "\xE2\x82\xAC", "windows-1252"},
                 {"ShiftJis", declared("Shift_JIS", "\x83\x65"), "\xE3\x83\x86", "Shift_JIS"},
                 {"Utf16Little", inUtf16(declared("UTF-16", "a"), false), "a", "UTF-16LE"},
                 {"Utf16Big", inUtf16(declared("UTF-16", "a"), true), "a", "UTF-16BE"},
                 {"Utf16WithoutMark", inUtf16(declared("UTF-16", "a"), false).substr(2), "a", "UTF-16LE"});

TEST(DocumentFileTest, AnEncodingThatIsNotThatOfTheBytesIsRepaired)
{
    const TemporaryFolder folder;
    for (const char* const name : {"utf-16", "UCS-2", "martian", "us-ascii", "unicode", "IBM037"}) {
        DocumentFile document;
        ASSERT_FALSE(document.read(folder.write("a.dae", declared(name, "caf\xC3\xA9")), much)) << name;
        EXPECT_TRUE(document.encoding().isMistaken) << name;
        ASSERT_FALSE(document.write(folder.path() / "b.dae", true));
        EXPECT_EQ(declared("UTF-8", "caf\xC3\xA9") + "\n", contentOf(folder.path() / "b.dae"));
    }
}

TEST(DocumentFileTest, ZerosAfterTheEndAreTakenOff)
{
    const TemporaryFolder folder;
    DocumentFile document;
    ASSERT_FALSE(document.read(folder.write("a.dae", root + "</COLLADA>\n" + std::string(300, '\0')), much));
    EXPECT_EQ(300U, document.encoding().zerosAtEnd);
    DocumentFile wide;
    ASSERT_FALSE(wide.read(folder.write("b.dae", inUtf16(root + "</COLLADA>", true) + std::string(3, '\0')), much));
    EXPECT_EQ(2U, wide.encoding().zerosAtEnd);
    DocumentFile mixed;
    ASSERT_FALSE(mixed.read(folder.write("c.dae", root + "</COLLADA>\n\0 \0\r\n"s), much));
    EXPECT_EQ(2U, mixed.encoding().zerosAtEnd);
    DocumentFile blanks;
    ASSERT_FALSE(blanks.read(folder.write("d.dae", root + "</COLLADA> \n"), much));
    EXPECT_EQ(0U, blanks.encoding().zerosAtEnd);
    DocumentFile inside;
    EXPECT_TRUE(inside.read(folder.write("e.dae", root + "\0</COLLADA>"s), much));
    DocumentFile beforeText;
    EXPECT_TRUE(beforeText.read(folder.write("f.dae", root + "</COLLADA>\0x"s), much));
}

TEST(DocumentFileTest, GzipIsTakenApart)
{
    const TemporaryFolder folder;
    const std::string content = declared("ISO-8859-1", "caf\xE9") + std::string(100'000, '\n');
    const std::filesystem::path file = folder.path() / "a.dae";
    const gzFile out = gzopen(file.c_str(), "wb");
    ASSERT_EQ(static_cast<int>(content.size()), gzwrite(out, content.data(), static_cast<unsigned>(content.size())));
    ASSERT_EQ(Z_OK, gzclose(out));
    DocumentFile document;
    ASSERT_FALSE(document.read(file, much));
    EXPECT_STREQ("caf\xC3\xA9", document.xml().child("COLLADA").text().get());
    DocumentFile small;
    EXPECT_STREQ("too-large", small.read(file, 100'000)->kind);
    const std::string packed = contentOf(file);
    DocumentFile cut;
    EXPECT_STREQ("compression", cut.read(folder.write("b.dae", packed.substr(0, packed.size() - 20)), much)->kind);
}

TEST(DocumentFileTest, WhatIsWrittenIsTheSameInCanonicalXml)
{
    const TemporaryFolder folder;
    const std::string document =
        "<?xml version='1.0' standalone=\"yes\"?><!-- first --><?go on?>\r\n"
        "<COLLADA a='1&#10;&#13;&#9;2\n3&lt;&amp;\"&apos;>' xmlns:e='urn:e'>\r\n x&#13;y &gt;&lt;&amp;"
        "<![CDATA[<raw> & \r\n]]><e:b></e:b><!--c--><d  q = \"1\" />]]&gt;<?pi?></COLLADA>\n<!-- last -->\n";
    DocumentFile read;
    ASSERT_FALSE(read.read(folder.write("a.dae", document), much));
    ASSERT_FALSE(read.write(folder.path() / "b.dae", true));
    const std::string written = contentOf(folder.path() / "b.dae");
    EXPECT_EQ(canonical(document), canonical(written));
    DocumentFile again;
    ASSERT_FALSE(again.read(folder.path() / "b.dae", much));
    ASSERT_FALSE(again.write(folder.path() / "c.dae", true));
    EXPECT_EQ(written, contentOf(folder.path() / "c.dae"));
}

TEST(DocumentFileTest, LinesAreThoseOfTheFile)
{
    const TemporaryFolder folder;
    DocumentFile document;
    ASSERT_FALSE(document.read(
        folder.write("a.dae", "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<COLLADA>\r\n  <asset/></COLLADA>"), much));
    const std::ptrdiff_t offset = document.xml().child("COLLADA").child("asset").offset_debug();
    EXPECT_EQ((std::pair<unsigned, unsigned>(3, 4)), document.lines().at(static_cast<std::size_t>(offset)));
}

TEST(DocumentFileTest, ResultIsWrittenWholeOrNotAtAll)
{
    const TemporaryFolder folder;
    DocumentFile document;
    const std::filesystem::path file = folder.write("a.dae", root + "</COLLADA>");
    ASSERT_FALSE(document.read(file, much));
    ASSERT_TRUE(document.write(folder.path() / "none" / "b.dae", true));
    EXPECT_EQ("cannot be written: it is a directory", document.write(folder.path(), true)->reason);
    ASSERT_FALSE(document.write("/dev/null", true));
    EXPECT_EQ(1U, folder.size());

    std::filesystem::create_symlink("a.dae", folder.path() / "link.dae");
    std::filesystem::permissions(file, std::filesystem::perms(0640));
    ASSERT_FALSE(document.write(folder.path() / "link.dae", true));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path() / "link.dae"));
    EXPECT_EQ("<COLLADA version=\"1.4.1\"/>\n", contentOf(file));
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(file).permissions());
    EXPECT_EQ(2U, folder.size());
}

} // namespace
