#pragma once

#include "CommandLine.h"
#include "DocumentConversion.h"

#include <string>

namespace scenetool {

/// `scenetool page IN -o OUT.html`: writes one HTML file with the model and a viewer, which a browser can open offline.
class PageCommand {
public:
    /// Adds the command and its options.
    explicit PageCommand(CommandLine& line);

    bool isParsed() const { return m_command.isParsed(); }
    /// @return the status of the program
    int run() const;

private:
    Command m_command;
    std::string m_in;
    std::string m_out;
    std::string m_title;
    ConversionSettings m_settings;
};

} // namespace scenetool
