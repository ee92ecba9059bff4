#pragma once

#include <libPrepare/Prepare.h>

#include <pugixml.hpp>

#include <string>
#include <vector>

namespace test {

/// A document prepared in memory: the result and the report.
struct Prepared {
    /// @param body content of `<COLLADA>`, or a whole document if it starts with `<?xml` or `<COLLADA`
    explicit Prepared(const std::string& body, const libPrepare::Options& options = {});

    /// The first node that an XPath finds.
    pugi::xml_node node(const char* path) const { return document.select_node(path).node(); }
    std::size_t count(const char* path) const { return document.select_nodes(path).size(); }
    /// The text of the first node that an XPath finds, without leading and trailing blanks.
    std::string text(const char* path) const;
    /// The numbers of the first node that an XPath finds.
    std::vector<double> numbers(const std::string& path) const;
    /// The numbers of the source that the input of a semantic leads to.
    /// @param owner XPath of the input's parent
    std::vector<double> inputNumbers(const std::string& owner, const std::string& semantic) const;
    /// The findings of a kind.
    std::size_t findings(const char* kind) const;
    /// The whole result.
    std::string xml() const;

    pugi::xml_document document;
    libPrepare::Report report;
};

/// A complete document with this body, with `<COLLADA>` and `<asset>`.
std::string colladaDocument(const std::string& body);

} // namespace test
