#pragma once

#include <filesystem>

namespace scenetool {

/// A new folder that only this user can access. The destructor removes it with its contents.
class TemporaryFolder {
public:
    /// @throws std::system_error if it cannot be created
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace scenetool
