#pragma once

#include "CommandLine.h"
#include "render/SceneShow.h"

#include <string>

namespace scenetool {

/// The command-line options that control what a picture shows.
class PictureOptions {
public:
    /// Adds the options to a command. This object has to outlive the command.
    void addTo(Command& command);
    /// Parses the values given as text. @throws PictureUsageError if one is invalid
    void read();

    /// Whether the command line sets the size of the picture.
    bool hasSize() const { return !m_size.empty(); }
    void setSize(unsigned width, unsigned height);
    /// Whether the picture has no background.
    bool hasAlpha() const { return m_options.drawing.background.kind == Background::Kind::none; }

    const RenderOptions& picture() const { return m_options; }
    DocumentOptions document() const;

private:
    std::string m_size;
    std::string m_up = "y";
    std::string m_background;
    std::string m_lights;
    bool m_isAsLoaded = false;
    RenderOptions m_options;
};

} // namespace scenetool
