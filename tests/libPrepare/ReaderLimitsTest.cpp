#include "ReaderLimits.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST(ReaderLimitsTest, LeaveTheLighthouseToTheReader)
{
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file((std::filesystem::path(DATA_FOLDER) / "lighthouse.dae").c_str()));
    const test::ReaderLimits limits(document);
    EXPECT_EQ("", limits.unread);
    EXPECT_TRUE(limits.looks);
    EXPECT_TRUE(limits.cameras);
    EXPECT_FALSE(limits.channels.empty());
    EXPECT_FALSE(limits.nodes.empty());
    EXPECT_EQ(3U, limits.times.size());
    for (const auto& [node, times] : limits.times) {
        EXPECT_LT(1U, times.size()) << node;
    }
}

} // namespace
