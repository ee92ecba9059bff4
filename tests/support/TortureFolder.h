#pragma once

#include <filesystem>
#include <string>

namespace testSupport {

/// A folder of its own for one document after the other, in memory where the system has that; it goes at the end, but
/// not if the process ends before. Beside the document lies "neighbour.dae", to which references may lead.
class TortureFolder {
public:
    TortureFolder();
    ~TortureFolder();
    TortureFolder(const TortureFolder&) = delete;
    TortureFolder& operator=(const TortureFolder&) = delete;

    /// Replaces the document. @return its path
    std::string write(const std::string& content) const;
    std::filesystem::path path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace testSupport
