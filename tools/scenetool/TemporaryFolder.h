#pragma once

#include <filesystem>

namespace scenetool {

/// A new folder that only this user may enter, removed with all that it holds.
class TemporaryFolder {
public:
    /// @throws std::system_error where there can be none
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace scenetool
