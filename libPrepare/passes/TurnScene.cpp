#include "Optics.h"
#include "Passes.h"

#include <libPrepare/document/Frame.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>

#include <cmath>

namespace libPrepare {

namespace {

// Multiplies all numbers of a list, or every second one for tangents, which start with a time.
void scaleNumbers(pugi::xml_node element, double factor, std::size_t first = 0, std::size_t step = 1)
{
    std::vector<double> values = numbersOf(element);
    for (std::size_t i = first; i < values.size(); i += step) {
        values[i] *= factor;
    }
    if (!values.empty()) {
        setText(element, text(values));
    }
}

void scaleCameras(Document& document, double factor)
{
    for (const pugi::xml_node library : document.root().children("library_cameras")) {
        for (const pugi::xml_node camera : library.children("camera")) {
            for (const pugi::xml_node optics : descend(camera, "optics/technique_common").children()) {
                for (const char* const name : {"xmag", "ymag", "znear", "zfar"}) {
                    if (const pugi::xml_node number = optics.child(name)) {
                        scaleNumbers(number, factor);
                    }
                }
            }
        }
    }
    const Motion motion(document);
    for (const Channel& channel : motion.channels()) {
        if (!isOptic(channel.target) || (!is(channel.target, "znear") && !is(channel.target, "zfar"))) {
            continue;
        }
        const pugi::xml_node sampler = document.resolve(channel.element.attribute("source").value(), {"sampler"});
        for (const pugi::xml_node input : sampler.children("input")) {
            const std::string_view semantic = input.attribute("semantic").value();
            const pugi::xml_node source = document.resolve(input.attribute("source").value(), {"source"});
            if (semantic == "OUTPUT") {
                scaleNumbers(source.child("float_array"), factor);
            } else if (semantic == "IN_TANGENT" || semantic == "OUT_TANGENT") {
                scaleNumbers(source.child("float_array"), factor, 1, 2);
            }
        }
    }
}

// Attenuation depends on the distance in units.
void scaleLights(Document& document, double factor)
{
    for (const pugi::xml_node library : document.root().children("library_lights")) {
        for (const pugi::xml_node light : library.children("light")) {
            for (const pugi::xml_node kind : light.child("technique_common").children()) {
                if (const pugi::xml_node linear = kind.child("linear_attenuation")) {
                    scaleNumbers(linear, 1 / factor);
                }
                if (const pugi::xml_node quadratic = kind.child("quadratic_attenuation")) {
                    scaleNumbers(quadratic, 1 / (factor * factor));
                }
            }
        }
    }
}

} // namespace

void turnScene(Document& document)
{
    const Options& options = document.options();
    pugi::xml_node asset = document.root().child("asset");
    const Frame given = Frame::read(asset, {});
    Frame wanted = given;
    if (options.upAxis != UpAxis::keep) {
        wanted.up = options.upAxis == UpAxis::y ? 'Y' : 'Z';
    }
    if (options.unit && std::isfinite(*options.unit) && *options.unit > 0) {
        wanted.meter = *options.unit;
    }
    const bool isScaled = std::abs(wanted.meter - given.meter) > 1e-9 * given.meter;
    if (wanted.up == given.up && !isScaled) {
        return;
    }
    if (!asset) {
        asset = document.root().prepend_child("asset");
    }
    const std::string matrix = text(wanted.from(given));
    for (const pugi::xml_node node : shownScene(document).children("node")) {
        prependTransform(node, "matrix", matrix);
    }
    if (isScaled) {
        const double factor = given.meter / wanted.meter;
        scaleCameras(document, factor);
        scaleLights(document, factor);
    }
    wanted.write(asset);
    document.rewritten(asset, "asset",
                       std::string("The scene has ") + wanted.up + " up and " + text(wanted.meter) +
                           " meters in a unit now; it had " + given.up + " up and " + text(given.meter) + ".");
}

} // namespace libPrepare
