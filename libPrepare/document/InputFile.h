#pragma once

#include "Refusal.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace libPrepare {

class OutputFile;

/// A regular file that is read whole. Anything else of that name, such as a directory or a pipe, is refused without
/// waiting for it.
class InputFile {
public:
    InputFile() = default;
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::optional<Refusal> open(const std::filesystem::path& path);
    /// All bytes, decompressed if gzip compressed them.
    /// @param most bytes of the result
    std::optional<Refusal> read(std::uint64_t most, std::string& bytes) const;
    /// Copies the file as it is, compressed or not.
    /// @return false if it could not be read; errors of `output` are kept by it
    bool copyTo(OutputFile& output) const;

private:
    int m_file = -1;
};

} // namespace libPrepare
