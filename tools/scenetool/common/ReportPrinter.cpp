#include "ReportPrinter.h"

#include "Printable.h"

#include <nlohmann/json.hpp>

#include <map>
#include <utility>
#include <vector>

namespace scenetool {

namespace {

const char* word(libPrepare::Outcome outcome)
{
    switch (outcome) {
    case libPrepare::Outcome::rewritten:
        return "rewritten";
    case libPrepare::Outcome::approximated:
        return "approximated";
    case libPrepare::Outcome::lost:
        return "lost";
    case libPrepare::Outcome::refused:
        return "refused";
    }
    return "";
}

const char* word(libPrepare::Approximation::Kind kind)
{
    switch (kind) {
    case libPrepare::Approximation::Kind::directionalLight:
        return "directionalLight";
    case libPrepare::Approximation::Kind::ambientLight:
        return "ambientLight";
    case libPrepare::Approximation::Kind::orthographicCamera:
        return "orthographicCamera";
    }
    return "";
}

// "line 7", "lines 7, 12, 30 and 4 more"; empty if no line is known.
std::string linesText(const std::vector<const libPrepare::Finding*>& findings)
{
    constexpr std::size_t maxShown = 8;
    std::vector<unsigned> lines;
    for (const libPrepare::Finding* const finding : findings) {
        if (finding->place.line > 0 && (lines.empty() || lines.back() != finding->place.line)) {
            lines.push_back(finding->place.line);
        }
    }
    std::string text;
    for (std::size_t i = 0; i < lines.size() && i < maxShown; ++i) {
        text += (i == 0 ? (lines.size() == 1 ? "line " : "lines ") : ", ") + std::to_string(lines[i]);
    }
    return lines.size() > maxShown ? text + " and " + std::to_string(lines.size() - maxShown) + " more" : text;
}

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

} // namespace

std::string refusalText(const std::string& file, const libPrepare::Finding& refusal)
{
    const std::string name = printable(file);
    const std::string reason = printable(refusal.text);
    const libPrepare::Place& place = refusal.place;
    if (place.line == 0) {
        return name + ' ' + reason;
    }
    return name + ':' + std::to_string(place.line) + ':' + std::to_string(place.column) + ": " + reason;
}

void writeReport(const libPrepare::Report& report, std::ostream& out)
{
    // Groups appear in the order of their first finding.
    std::map<std::pair<libPrepare::Outcome, std::string>, std::size_t> places;
    std::vector<std::vector<const libPrepare::Finding*>> groups;
    for (const libPrepare::Finding& finding : report.findings) {
        const auto [place, isNew] = places.try_emplace({finding.outcome, finding.kind}, groups.size());
        if (isNew) {
            groups.emplace_back();
        }
        groups[place->second].push_back(&finding);
    }
    for (const auto& group : groups) {
        const libPrepare::Finding& first = *group.front();
        const std::string indent(14, ' ');
        out << padded(word(first.outcome), 12) << "  " << printable(first.kind);
        if (group.size() > 1) {
            out << ", " << group.size() << " times";
        }
        out << "\n" << indent << printable(first.text) << '\n';
        const std::string lines = linesText(group);
        if (!lines.empty()) {
            out << indent << lines << ": " << printable(first.place.path) << (group.size() > 1 ? " ...\n" : "\n");
        }
        if (!first.remedy.empty()) {
            out << indent << "-> " << printable(first.remedy) << '\n';
        }
    }
}

std::string reportJson(const std::string& file, const libPrepare::Report& report, int indent)
{
    using Json = nlohmann::ordered_json;
    Json findings = Json::array();
    for (const libPrepare::Finding& finding : report.findings) {
        findings.push_back({{"outcome", word(finding.outcome)},
                            {"kind", finding.kind},
                            {"text", finding.text},
                            {"remedy", finding.remedy},
                            {"line", finding.place.line},
                            {"column", finding.place.column},
                            {"path", finding.place.path}});
    }
    Json approximations = Json::array();
    for (const libPrepare::Approximation& each : report.approximations) {
        approximations.push_back({{"kind", word(each.kind)},
                                  {"id", each.id},
                                  {"nodeId", each.nodeId},
                                  {"color", {each.color[0], each.color[1], each.color[2]}},
                                  {"xmag", each.xmag},
                                  {"ymag", each.ymag},
                                  {"znear", each.znear},
                                  {"zfar", each.zfar}});
    }
    const Json json = {{"file", file},
                       {"done", report.done},
                       {"changed", report.changed},
                       {"findings", findings},
                       {"approximations", approximations}};
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

} // namespace scenetool
