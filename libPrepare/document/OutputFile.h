#pragma once

#include "Refusal.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace libPrepare {

/// A file that is complete or missing: it is written under another name in the same folder and then renamed. Devices,
/// such as /dev/null, are written as they are.
class OutputFile {
public:
    OutputFile() = default;
    /// Removes the file unless `commit` was called.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::optional<Refusal> open(const std::filesystem::path& path);
    /// Adds bytes. After a fault the rest is ignored, and `commit` returns the fault.
    void write(std::string_view bytes)
    {
        if (bytes.size() >= m_free) {
            writeMuch(bytes);
            return;
        }
        m_end += bytes.copy(m_end, bytes.size()); // which takes an empty text without data, too
        m_free -= bytes.size();
    }
    std::optional<Refusal> commit();

private:
    // Adds at least as many bytes as there is room for.
    void writeMuch(std::string_view bytes);
    void flush();
    void writeThrough(std::string_view rest);

    std::filesystem::path m_path;
    std::string m_temporary; // empty for a device
    std::unique_ptr<char[]> m_buffer;
    char* m_end = nullptr; // of what is in the buffer
    std::size_t m_free = 0;
    int m_file = -1;
    int m_error = 0;
};

} // namespace libPrepare
