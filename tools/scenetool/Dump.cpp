#include "Dump.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace scenetool {

namespace {

// Members in the order in which they are written; floats, so that their shortest text is printed.
using Json =
    nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

Json text(const vesk::String& value)
{
    return std::string(value.data(), value.size());
}

Json number(float value)
{
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0.0f ? "Infinity" : "-Infinity";
    }
    return value;
}

Json vector(const libMath::Vector<float, 3>& value)
{
    Json result = Json::array();
    for (unsigned i = 0; i < 3; ++i) {
        result.push_back(number(value[i]));
    }
    return result;
}

Json matrix(const libMath::Matrix<float, 4, 4>& value)
{
    Json result = Json::array();
    for (unsigned i = 0; i < 16; ++i) {
        result.push_back(number(value[i]));
    }
    return result;
}

Json index(const LoadedScene& loaded, const libVideo::Node* node)
{
    const std::optional<std::size_t> place = loaded.indexOf(node);
    return place ? Json(*place) : Json();
}

Json error(const LoadedScene& loaded)
{
    if (!loaded.failure()) {
        return Json();
    }
    return {{"type", loaded.failure()->type}, {"message", loaded.failure()->message}};
}

Json log(const LoadedScene& loaded)
{
    Json lines = Json::array();
    for (const LogLine& line : loaded.log()) {
        lines.push_back({{"channel", line.channel}, {"priority", line.priority}, {"text", line.text}});
    }
    return lines;
}

Json nodes(const LoadedScene& loaded)
{
    Json all = Json::array();
    for (const libVideo::Node* const node : loaded.nodes()) {
        Json children = Json::array();
        for (const libVideo::NodeLink& child : node->children()) {
            children.push_back(index(loaded, child.get()));
        }
        all.push_back({{"id", text(node->id())},
                       {"sid", text(node->sid())},
                       {"name", text(node->name())},
                       {"parent", index(loaded, node->parent().get())},
                       {"children", children},
                       {"hasAnimation", node->hasAnimation()},
                       {"transform", matrix(node->transform())},
                       {"position", vector(node->position())},
                       {"up", vector(node->up())}});
    }
    return all;
}

} // namespace

void writeDump(const LoadedScene& loaded, std::ostream& out)
{
    // Asking the scene may log as well, so the log is taken last.
    Json nodeList = nodes(loaded);

    Json dump;
    dump["file"] = loaded.file();
    dump["loaded"] = loaded.isLoaded();
    dump["error"] = error(loaded);
    dump["log"] = log(loaded);
    dump["nodes"] = std::move(nodeList);
    // Text of a document is UTF-8, a path need not be.
    out << dump.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace scenetool
