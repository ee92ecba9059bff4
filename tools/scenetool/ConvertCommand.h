#pragma once

#include "DocumentConversion.h"
#include "SandboxOptions.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace scenetool {

/// `scenetool convert IN -o OUT`: converts a document, or all documents in a folder, to glTF.
class ConvertCommand {
public:
    /// Adds the command and its options.
    ConvertCommand(CLI::App& app, SandboxOptions& sandbox);

    bool isParsed() const { return m_command->parsed(); }
    /// @return the status of the program
    int run() const;

private:
    int convertFile(const ConversionSettings& settings) const;
    int convertAll(const ConversionSettings& settings) const;

    CLI::App* m_command;
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
