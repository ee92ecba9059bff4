#include "SceneSize.h"

#include "Document.h"
#include "Looks.h"
#include "Motion.h"
#include "Numbers.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace libPrepare {

namespace {

// The largest absolute value among the first numbers of a list and some at equal distances in the text.
double largestIn(std::string_view list)
{
    constexpr std::size_t spots = 256;
    constexpr std::size_t numbersAtASpot = 9; // positions of a triangle
    const std::size_t step = std::max<std::size_t>(list.size() / spots, 1);
    double largest = 0;
    std::size_t at = 0;
    for (std::size_t spot = 0; spot < list.size(); spot += step) {
        if (spot < at) {
            continue; // read already
        }
        at = spot;
        while (spot > 0 && at < list.size() && !isBlank(list[at])) {
            ++at; // a word that is cut
        }
        for (std::size_t count = 0; count < numbersAtASpot && at < list.size(); ++count) {
            while (at < list.size() && isBlank(list[at])) {
                ++at;
            }
            std::size_t end = at;
            while (end < list.size() && !isBlank(list[end])) {
                ++end;
            }
            const double value = std::abs(number(list.substr(at, end - at)));
            largest = std::isfinite(value) ? std::max(largest, value) : largest;
            at = end;
        }
    }
    return largest;
}

double largestPosition(Document& document, pugi::xml_node geometry)
{
    double largest = 0;
    for (const pugi::xml_node body : geometry.children()) {
        for (const pugi::xml_node input : body.child("vertices").children("input")) {
            if (std::string_view(input.attribute("semantic").value()) == "POSITION") {
                const pugi::xml_node source = document.resolve(input.attribute("source").value(), {"source"});
                std::string scratch;
                largest = std::max(largest, largestIn(textOf(source.child("float_array"), scratch)));
            }
        }
    }
    return largest;
}

} // namespace

double sizeOfScene(Document& document, pugi::xml_node scene, Pose& pose)
{
    double size = 0;
    std::unordered_map<std::size_t, double> known;
    for (const pugi::xml_node instance : elementsBelow(scene, "instance_geometry")) {
        const pugi::xml_node geometry = document.resolve(instance.attribute("url").value(), {"geometry"});
        const auto [entry, isNew] = known.try_emplace(geometry.hash_value(), 0.0);
        if (isNew) {
            entry->second = largestPosition(document, geometry);
        }
        const Matrix4& world = pose.world(instance.parent());
        for (unsigned row = 0; row < 3; ++row) {
            const double turned =
                std::abs(world[4 * row]) + std::abs(world[4 * row + 1]) + std::abs(world[4 * row + 2]);
            const double reach = std::abs(world[4 * row + 3]) + entry->second * turned;
            size = std::isfinite(reach) ? std::max(size, reach) : size;
        }
    }
    return size > 0 ? size : 1;
}

} // namespace libPrepare
