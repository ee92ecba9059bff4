#pragma once

#include "Refusal.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace libPrepare {

/// A file that is there whole or not at all: it is written under another name beside its place and then takes it.
/// Devices, such as /dev/null, are written as they are.
class OutputFile {
public:
    OutputFile() = default;
    /// Without `commit` nothing is left.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::optional<Refusal> open(const std::filesystem::path& path);
    /// Adds bytes. After a fault the rest is passed over, and `commit` says what went wrong.
    void write(std::string_view bytes);
    std::optional<Refusal> commit();

private:
    void flush();
    void writeThrough(std::string_view rest);

    std::filesystem::path m_path;
    std::string m_temporary; // empty for a device
    std::string m_buffer;
    int m_file = -1;
    int m_error = 0;
};

} // namespace libPrepare
