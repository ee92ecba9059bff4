#pragma once

#include "CommandLine.h"
#include "DocumentConversion.h"
#include "SandboxOptions.h"

#include <cstdint>
#include <string>

namespace scenetool {

/// `scenetool convert IN -o OUT`: converts a document, or all documents in a folder, to glTF.
class ConvertCommand {
public:
    /// Adds the command and its options.
    ConvertCommand(CommandLine& line, SandboxOptions& sandbox);

    bool isParsed() const { return m_command.isParsed(); }
    /// @return the status of the program
    int run() const;

private:
    int convertFile(const ConversionSettings& settings) const;
    int convertAll(const ConversionSettings& settings) const;

    Command m_command;
    const SandboxOptions* m_sandbox;
    std::string m_in;
    std::string m_out;
    bool m_reports = false;
    bool m_isRepeated = false;
    unsigned m_jobs;
    std::uint64_t m_mebibytes = 1024;
    ConversionSettings m_settings;
};

} // namespace scenetool
