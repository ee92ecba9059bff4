#include "PictureOptions.h"

#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

namespace scenetool {

namespace {

// Parses the whole text as a number.
bool parse(const std::string& text, int base, unsigned& value)
{
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

void readSize(const std::string& text, RenderOptions& options)
{
    const std::size_t cross = text.find('x');
    const bool isRead = cross != std::string::npos && parse(text.substr(0, cross), 10, options.width) &&
                        parse(text.substr(cross + 1), 10, options.height);
    if (!isRead || options.width == 0 || options.height == 0 || options.width > maxPictureSize ||
        options.height > maxPictureSize) {
        const std::string maximum = std::to_string(maxPictureSize);
        throw PictureUsageError("--size expects a width and a height such as 960x640, from 1x1 to " + maximum + "x" +
                                maximum + ", not " + text);
    }
}

// "sky", "none", or a color such as 33383f, with or without a "#".
void readBackground(const std::string& text, Background& background)
{
    if (text == "sky" || text == "none") {
        background.kind = text == "sky" ? Background::Kind::sky : Background::Kind::none;
        return;
    }
    const std::string digits = text.substr(text.rfind('#', 0) == 0 ? 1 : 0);
    unsigned value = 0;
    if (digits.size() != 6 || !parse(digits, 16, value)) {
        throw PictureUsageError("--background expects sky, none or a color such as 33383f, not " + text);
    }
    background.kind = Background::Kind::color;
    for (unsigned i = 0; i < 3; ++i) {
        background.color[i] = static_cast<float>((value >> (16u - 8u * i)) & 255u) / 255.0f;
    }
}

LightChoice lightChoice(const std::string& text)
{
    const std::pair<const char*, LightChoice> choices[] = {
        {"document", LightChoice::document}, {"head", LightChoice::head}, {"both", LightChoice::both}};
    for (const auto& [name, choice] : choices) {
        if (text == name) {
            return choice;
        }
    }
    throw PictureUsageError("--lights expects document, head or both, not " + text);
}

} // namespace

void PictureOptions::addTo(Command& command)
{
    command.add("--time", m_options.time, "Show the scene at this time in seconds");
    command.add("--camera", m_options.camera, "Look through this camera of the scene; the first one is 0");
    command.addFlag("--framed", m_options.isFramed, "Show the whole scene, even if it has cameras");
    command.add("--up", m_up, "Axis that points up in a view of the whole scene: x, y or z (default: y)");
    command.add("--lights", m_lights,
                "Lights: document, head (a light that moves with the eye) or both (default: document, or head "
                "if the document lights nothing)");
    command.addFlag("--as-loaded", m_isAsLoaded, "Show what the library delivers of the unprepared document");
    command.add("--size", m_size, "Width and height of the picture in pixels (default: 960x640)");
    command.add("--background", m_background,
                "Background: sky, none (a PNG with alpha) or a color such as 33383f (default: sky)");
    command.addFlag("--identity-for-empty", m_options.isIdentityForEmpty,
                    "Draw nodes without transforms, whose matrix is zero, as if they had the identity");
}

void PictureOptions::read()
{
    if (!m_size.empty()) {
        readSize(m_size, m_options);
    }
    if (!m_background.empty()) {
        readBackground(m_background, m_options.drawing.background);
    }
    if (!m_lights.empty()) {
        m_options.drawing.lights = lightChoice(m_lights);
    }
    if (m_up != "x" && m_up != "y" && m_up != "z") {
        throw PictureUsageError("--up expects x, y or z, not " + m_up);
    }
    m_options.up = m_up == "x" ? UpAxis::x : m_up == "y" ? UpAxis::y : UpAxis::z;
    if (m_options.time && !std::isfinite(*m_options.time)) {
        throw PictureUsageError("--time expects a number of seconds");
    }
}

void PictureOptions::setSize(unsigned width, unsigned height)
{
    m_options.width = width;
    m_options.height = height;
}

DocumentOptions PictureOptions::document() const
{
    DocumentOptions options;
    options.isAsLoaded = m_isAsLoaded;
    options.time = m_options.time;
    options.aspect = static_cast<double>(m_options.width) / m_options.height;
    return options;
}

} // namespace scenetool
