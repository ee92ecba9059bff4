#pragma once

#include "render/SceneShow.h"

#include <CLI/CLI.hpp>

#include <string>

namespace scenetool {

/// The options of the command line that say what a picture shows.
class PictureOptions {
public:
    /// Adds them to a command, which they have to outlive.
    void addTo(CLI::App& command);
    /// Reads what was given in words. @throws PictureUsageError for words that say nothing
    void read();

    /// Whether the size of the picture is given.
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
