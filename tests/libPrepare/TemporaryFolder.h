#pragma once

#include "support/Files.h"

#include <filesystem>
#include <string>

namespace test {

/// A folder of its own that goes at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    /// Writes a file, and the folders that it lies in. @return its path
    std::filesystem::path write(const std::string& name, const std::string& content) const;
    /// How many files lie in it.
    std::size_t size() const;

private:
    std::filesystem::path m_path;
};

using testSupport::contentOf;

} // namespace test
