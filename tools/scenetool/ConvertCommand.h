#pragma once

#include <libPrepare/Prepare.h>

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace scenetool {

/// `scenetool convert IN -o OUT`: writes glTF from what the library delivers.
class ConvertCommand {
public:
    /// Adds the command and its options.
    explicit ConvertCommand(CLI::App& app);

    bool isParsed() const { return m_command->parsed(); }
    /// @return the status of the program
    int run() const;

private:
    int convert(const std::string& in, const std::string& out) const;

    CLI::App* m_command;
    std::string m_in;
    std::string m_out;
    bool m_isAsLoaded = false;
    bool m_reports = false;
    double m_tolerance = 1e-4;
    std::uint64_t m_mebibytes = 1024;
    libPrepare::Options m_prepare;
};

} // namespace scenetool
