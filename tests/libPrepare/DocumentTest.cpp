#include <libPrepare/document/Document.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

// A document with many lights, which take several pages of memory.
struct Lights {
    Lights()
    {
        pugi::xml_node library = xml.append_child("COLLADA").append_child("library_lights");
        for (int i = 0; i < 2000; ++i) {
            library.append_child("light").append_attribute("id") = ("light" + std::to_string(i)).c_str();
        }
    }
    std::string text() const
    {
        std::ostringstream out;
        xml.save(out, "", pugi::format_raw | pugi::format_no_declaration);
        return out.str();
    }

    pugi::xml_document xml;
    libPrepare::Options options;
    libPrepare::Report report;
};

TEST(DocumentTest, HandlesOfDiscardedElementsStayValid)
{
    Lights lights;
    {
        libPrepare::Document document(lights.xml, "a.dae", lights.options, lights.report);
        const pugi::xml_node light = document.byId("light999");
        libPrepare::discard(document.root().child("library_lights"));
        EXPECT_FALSE(document.root().first_child());
        lights.xml.child("COLLADA").append_child("asset").text() = std::string(1000, 'x').c_str();
        EXPECT_STREQ("light999", light.attribute("id").value());
        EXPECT_EQ(light, document.byId("light999", {"light"}));
        document.forgetIds();
        EXPECT_FALSE(document.byId("light999"));
    }
    EXPECT_EQ("<COLLADA><asset>" + std::string(1000, 'x') + "</asset></COLLADA>", lights.text());
}

TEST(DocumentTest, ElementsThatATextReplacesAreDiscarded)
{
    Lights lights;
    {
        libPrepare::Document document(lights.xml, "a.dae", lights.options, lights.report);
        const pugi::xml_node light = document.byId("light1");
        libPrepare::setText(document.root().child("library_lights"), "text");
        EXPECT_STREQ("light", light.name());
    }
    EXPECT_EQ("<COLLADA><library_lights>text</library_lights></COLLADA>", lights.text());
}

TEST(DocumentTest, RootOfAnyNameIsNotDiscarded)
{
    pugi::xml_document xml;
    xml.append_child("discarded").append_child("kept");
    libPrepare::freeDiscarded(xml);
    EXPECT_TRUE(xml.child("discarded").child("kept"));
}

} // namespace
