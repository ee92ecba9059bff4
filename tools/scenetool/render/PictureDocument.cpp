#include "PictureDocument.h"

#include "TextureFile.h"

#include "../common/DefaultCreaseAngle.h"

#include <algorithm>
#include <map>
#include <system_error>
#include <utility>

namespace scenetool {

namespace {

// Counts texts, in the order of their first occurrence.
class Counts {
public:
    void add(const std::string& text)
    {
        const auto [found, isNew] = m_places.emplace(text, m_counts.size());
        if (isNew) {
            m_counts.emplace_back(text, 0u);
        }
        ++m_counts[found->second].second;
    }
    const std::vector<std::pair<std::string, unsigned>>& all() const { return m_counts; }

private:
    std::map<std::string, std::size_t> m_places;
    std::vector<std::pair<std::string, unsigned>> m_counts;
};

// The library logs a message for each camera or spot light without a node to look at, although these are common.
bool isOrdinary(const LogLine& line)
{
    const auto endsWith = [&line](const std::string& end) {
        return line.text.size() >= end.size() && line.text.compare(line.text.size() - end.size(), end.size(), end) == 0;
    };
    return endsWith("Cannot find lookat node  from camera list") || endsWith("Cannot resolve lookAtNode with id ");
}

} // namespace

PictureDocument::PictureDocument(std::string file, const std::filesystem::path& folder, const DocumentOptions& options)
    : m_file(std::move(file)), m_isPrepared(!options.isAsLoaded)
{
    if (!m_isPrepared) {
        m_report = libPrepare::inspect(m_file);
        m_loaded.emplace(m_file);
        return;
    }
    libPrepare::Options wanted;
    wanted.time = options.time;
    wanted.upAxis = libPrepare::UpAxis::y;
    wanted.aspect = options.aspect;
    wanted.normals = defaultCreaseAngle;
    const std::filesystem::path prepared = folder / "prepared.dae";
    m_report = libPrepare::prepare(m_file, prepared, wanted);
    m_madeNormals.insert(m_report.madeNormals.begin(), m_report.madeNormals.end());
    m_preparedFile = prepared.string();
    if (m_report.done) {
        m_loaded.emplace(m_file, m_preparedFile);
    }
    std::error_code error;
    std::filesystem::remove(prepared, error);
}

std::string PictureDocument::fault() const
{
    if (m_isPrepared && !m_report.done) {
        const libPrepare::Finding* const why = m_report.first(libPrepare::Outcome::refused);
        if (why == nullptr) {
            return "cannot be prepared";
        }
        const std::string place = why->place.line == 0 ? ""
                                                       : "line " + std::to_string(why->place.line) + ", column " +
                                                             std::to_string(why->place.column) + ": ";
        return place + why->text;
    }
    if (m_loaded->failure()) {
        return "the load failed with " + m_loaded->failure()->type + ": " + m_loaded->failure()->message;
    }
    return m_loaded->log().empty() ? "does not load" : m_loaded->log().back().text;
}

const libPrepare::Approximation* PictureDocument::approximation(libPrepare::Approximation::Kind kind,
                                                                const std::string& id, const std::string& node) const
{
    if (!m_isPrepared) {
        return nullptr;
    }
    for (const libPrepare::Approximation& each : m_report.approximations) {
        if (each.kind == kind && each.id == id && each.nodeId == node) {
            return &each;
        }
    }
    return nullptr;
}

const libPrepare::OpacityTexture* PictureDocument::opacityTexture(const std::string& symbol) const
{
    if (!m_isPrepared) {
        return nullptr;
    }
    const auto& all = m_report.opacityTextures;
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const libPrepare::OpacityTexture& each) { return each.symbol == symbol; });
    return found == all.end() ? nullptr : &*found;
}

bool PictureDocument::hasMadeNormals(const std::string& geometry) const
{
    return m_madeNormals.count(geometry) > 0;
}

std::array<float, 3> PictureDocument::ambientLight() const
{
    std::array<float, 3> sum{};
    for (const libPrepare::Approximation& each : m_report.approximations) {
        for (std::size_t i = 0; each.kind == libPrepare::Approximation::Kind::ambientLight && i < sum.size(); ++i) {
            sum[i] += static_cast<float>(each.color[i]);
        }
    }
    return sum;
}

std::string PictureDocument::textureFile(const std::string& reference) const
{
    if (m_isPrepared) {
        std::string path = scenetool::textureFile(m_preparedFile, reference);
        std::error_code error;
        if (std::filesystem::is_regular_file(path, error)) {
            return path;
        }
    }
    return scenetool::textureFile(m_file, reference);
}

std::vector<std::string> PictureDocument::notes() const
{
    Counts messages;
    for (const LogLine& line : m_loaded->log()) {
        if (isOrdinary(line)) {
            continue;
        }
        messages.add("[" + line.channel + "] " + line.text);
    }
    std::vector<std::string> lines;
    for (const auto& [text, count] : messages.all()) {
        lines.push_back(count == 1 ? text : text + " (" + std::to_string(count) + " times)");
    }
    Counts kinds;
    for (const libPrepare::Finding& finding : m_report.findings) {
        // Reported as lost, but drawn here: ambient lights on textures, and opacity textures.
        const bool isDrawn = m_isPrepared && (finding.kind == "ambient" || finding.kind == "transparent-texture");
        if (finding.outcome == libPrepare::Outcome::lost && !isDrawn) {
            kinds.add(finding.kind);
        }
    }
    std::string summary;
    for (const auto& [kind, count] : kinds.all()) {
        summary += (summary.empty() ? "" : ", ") + std::to_string(count) + " " + kind;
    }
    if (!summary.empty()) {
        lines.push_back("not in the picture: " + summary + " (see scenetool check)");
    }
    return lines;
}

} // namespace scenetool
