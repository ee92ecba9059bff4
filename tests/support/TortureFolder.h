#pragma once

#include <filesystem>
#include <string>

namespace testSupport {

/// A temporary folder that holds one document at a time, in memory where the system allows it. The destructor removes
/// it; it stays if the process crashes. Beside the document is "neighbour.dae", to which references may lead.
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
