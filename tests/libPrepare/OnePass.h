#pragma once

#include "Prepared.h"

#include <libPrepare/document/Document.h>
#include <libPrepare/passes/Passes.h>

#include <gtest/gtest.h>

#include <sstream>

namespace test {

/// Runs one pass on a document, without the passes before and after it.
struct OnePass {
    OnePass(void (*pass)(libPrepare::Document&), const std::string& body)
    {
        const std::string whole =
            body.rfind("<", 0) == 0 && body.find("COLLADA") < 4 ? body : test::colladaDocument(body);
        EXPECT_TRUE(xml.load_string(whole.c_str(), pugi::parse_full | pugi::parse_ws_pcdata));
        libPrepare::Document document(xml, "folder/scene.dae", options, report);
        pass(document);
    }
    std::string value(const char* path) const { return xml.select_node(path).attribute().value(); }
    std::string text(const char* path) const { return xml.select_node(path).node().text().get(); }
    std::size_t count(const char* path) const { return xml.select_nodes(path).size(); }
    std::string all() const
    {
        std::ostringstream out;
        xml.save(out, "", pugi::format_raw | pugi::format_no_declaration);
        return out.str();
    }

    pugi::xml_document xml;
    libPrepare::Options options;
    libPrepare::Report report;
};

} // namespace test
