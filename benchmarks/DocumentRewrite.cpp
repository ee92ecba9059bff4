// documentRewrite load IN: measures parsing a document into a tree. documentRewrite save IN OUT: measures writing the
// tree, without parsing it.

#include "Measurement.h"

#include <pugixml.hpp>

#include <cstdlib>
#include <string_view>

int main(int argc, char** argv)
{
    const std::string_view mode = argc > 2 ? argv[1] : "";
    benchmarks::Measurement measurement;
    pugi::xml_document document;
    if (argc != (mode == "save" ? 4 : 3) ||
        !document.load_file(argv[2], pugi::parse_full | pugi::parse_ws_pcdata, pugi::encoding_utf8)) {
        return EXIT_FAILURE;
    }
    if (mode == "save") {
        measurement = benchmarks::Measurement();
        if (!document.save_file(argv[3], "", pugi::format_raw)) {
            return EXIT_FAILURE;
        }
    }
    measurement.print();
    return EXIT_SUCCESS;
}
