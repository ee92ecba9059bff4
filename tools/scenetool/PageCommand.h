#pragma once

#include "DocumentConversion.h"

#include <CLI/CLI.hpp>

#include <string>

namespace scenetool {

/// `scenetool page IN -o OUT.html`: writes one HTML file with the model and a viewer, which a browser can open offline.
class PageCommand {
public:
    /// Adds the command and its options.
    explicit PageCommand(CLI::App& app);

    bool isParsed() const { return m_command->parsed(); }
    /// @return the status of the program
    int run() const;

private:
    CLI::App* m_command;
    std::string m_in;
    std::string m_out;
    std::string m_title;
    ConversionSettings m_settings;
};

} // namespace scenetool
