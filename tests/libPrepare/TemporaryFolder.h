#pragma once

#include "support/Files.h"

#include <filesystem>
#include <string>

namespace test {

/// A temporary folder. The destructor removes it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    /// Writes a file and creates its folders. @return its path
    std::filesystem::path write(const std::string& name, const std::string& content) const;
    /// Number of files in it.
    std::size_t size() const;

private:
    std::filesystem::path m_path;
};

using testSupport::contentOf;

} // namespace test
