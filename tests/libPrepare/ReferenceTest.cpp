#include <libPrepare/document/Reference.h>

#include <gtest/gtest.h>

namespace {

using namespace libPrepare;

TEST(ReferenceTest, DecodingTakesOffWhatIsEncoded)
{
    EXPECT_EQ("a b\xC3\xA9", percentDecoded("a%20b%c3%A9"));
    EXPECT_EQ("100%.png", percentDecoded("100%.png"));
    EXPECT_EQ("a%2", percentDecoded("a%2"));
    EXPECT_EQ("%zz", percentDecoded("%zz"));
}

TEST(ReferenceTest, EncodingLeavesWhatAPathMayHold)
{
    EXPECT_EQ("../a-b_c.d~/@:(1),2", percentEncoded("../a-b_c.d~/@:(1),2"));
    EXPECT_EQ("a%20b%25%23%3F%5B%5D%7B%5E%7C%60%3C%22", percentEncoded("a b%#?[]{^|`<\""));
    EXPECT_EQ("%C3%A9", percentEncoded("\xC3\xA9"));
}

TEST(ReferenceTest, BlanksWithinAreReadable)
{
    EXPECT_TRUE(isReadableReference("my file.png"));
    EXPECT_TRUE(isReadableReference("my%20file.png"));
    EXPECT_TRUE(isReadableReference("file:///C:/a.png"));
    for (const char* const text :
         {"", " a.png", "a.png ", "C:\\a.png", "a[1].png", "100%.png", "\xC3\xA9.png", "a\nb", "a#b.png", "a?b.png"}) {
        EXPECT_FALSE(isReadableReference(text)) << text;
    }
}

TEST(ReferenceTest, UnreadableIsMadeReadable)
{
    EXPECT_EQ("file://G:/a%C3%A9%5B1%5D b%20c.jpg", readableReference("file://G:\\a\xC3\xA9[1] b%20c.jpg"));
    EXPECT_EQ("100%25.png", readableReference("100%.png"));
    EXPECT_EQ("a#b%23c", readableReference("a#b#c"));
    EXPECT_EQ("a%0Ab", readableReference("a\nb"));
}

} // namespace
