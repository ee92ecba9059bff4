#include "Expectations.h"

#include <libxml/c14n.h>
#include <libxml/parser.h>

#include <gtest/gtest.h>

#include <cstddef>

namespace test {

void expectStable(const Prepared& prepared, const libPrepare::Options& options)
{
    const Prepared again(prepared.xml(), options);
    EXPECT_EQ(prepared.xml(), again.xml());
    EXPECT_FALSE(again.report.changed);
}

void expectNear(const std::vector<double>& expected, const std::vector<double>& actual, double error)
{
    ASSERT_EQ(expected.size(), actual.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i], actual[i], error) << "number " << i;
    }
}

std::string canonical(const std::string& document)
{
    xmlDocPtr const tree =
        xmlReadMemory(document.data(), static_cast<int>(document.size()), "memory.dae", nullptr, XML_PARSE_NOERROR);
    if (tree == nullptr) {
        return "not well-formed";
    }
    xmlChar* text = nullptr;
    const int size = xmlC14NDocDumpMemory(tree, nullptr, XML_C14N_1_0, nullptr, 1, &text);
    std::string result(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
    xmlFree(text);
    xmlFreeDoc(tree);
    return result;
}

} // namespace test
