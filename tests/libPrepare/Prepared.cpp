#include "Prepared.h"

#include <libPrepare/document/Numbers.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace test {

std::string colladaDocument(const std::string& body)
{
    return "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\"><asset/>" + body +
           "</COLLADA>";
}

Prepared::Prepared(const std::string& body, const libPrepare::Options& options)
{
    const bool isWhole = body.rfind("<?xml", 0) == 0 || body.rfind("<COLLADA", 0) == 0;
    const std::string whole = isWhole ? body : colladaDocument(body);
    if (!document.load_string(whole.c_str(), pugi::parse_full | pugi::parse_ws_pcdata)) {
        throw std::invalid_argument("the document of the test is not well-formed");
    }
    report = libPrepare::prepare(document, "memory.dae", options);
}

std::string Prepared::text(const char* path) const
{
    std::string result = node(path).text().get();
    const std::size_t first = result.find_first_not_of(" \n\t\r");
    const std::size_t last = result.find_last_not_of(" \n\t\r");
    return first == std::string::npos ? std::string() : result.substr(first, last - first + 1);
}

std::vector<double> Prepared::numbers(const std::string& path) const
{
    return libPrepare::numbers(text(path.c_str()));
}

std::vector<double> Prepared::inputNumbers(const std::string& owner, const std::string& semantic) const
{
    const std::string source =
        node((owner + "/input[@semantic='" + semantic + "']").c_str()).attribute("source").value();
    return numbers("//source[@id='" + (source.empty() ? source : source.substr(1)) + "']/float_array");
}

std::size_t Prepared::findings(const char* kind) const
{
    return static_cast<std::size_t>(
        std::count_if(report.findings.begin(), report.findings.end(),
                      [&](const libPrepare::Finding& finding) { return finding.kind == kind; }));
}

std::string Prepared::xml() const
{
    std::ostringstream out;
    document.save(out, "", pugi::format_raw | pugi::format_no_declaration);
    return out.str();
}

} // namespace test
