#include "Frame.h"

#include "Document.h"
#include "Numbers.h"

#include <cmath>

namespace libPrepare {

namespace {

// Turns coordinates of a frame into those of one where Y is up, X to the right and Z to the viewer.
Matrix4 toYUp(char up)
{
    switch (up) {
    case 'X':
        return transformMatrix("matrix", {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    case 'Z':
        return transformMatrix("matrix", {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1});
    default:
        return identity();
    }
}

const char* nameOf(double meter)
{
    static constexpr struct {
        double meter;
        const char* name;
    } names[] = {{1, "meter"},        {0.01, "centimeter"}, {0.001, "millimeter"},
                 {1000, "kilometer"}, {0.0254, "inch"},     {0.3048, "foot"}};
    for (const auto& entry : names) {
        if (std::abs(entry.meter - meter) <= 1e-9 * meter) {
            return entry.name;
        }
    }
    return "unit";
}

} // namespace

Frame Frame::read(pugi::xml_node asset, const Frame& otherwise)
{
    Frame result = otherwise;
    const std::string axis = textOf(asset.child("up_axis"));
    const std::string_view word = trimmed(axis);
    if (word == "X_UP" || word == "Y_UP" || word == "Z_UP") {
        result.up = word[0];
    }
    const pugi::xml_attribute unit = asset.child("unit").attribute("meter");
    const double meter = unit ? numberOr(unit.value(), 0) : 0;
    if (std::isfinite(meter) && meter > 0) {
        result.meter = meter;
    }
    return result;
}

void Frame::write(pugi::xml_node asset) const
{
    const Frame said = read(asset, {});
    pugi::xml_node axis = asset.child("up_axis");
    if (said.meter != meter) {
        pugi::xml_node unit = asset.child("unit");
        if (!unit) {
            unit = axis ? asset.insert_child_before("unit", axis) : asset.append_child("unit");
        }
        setAttribute(unit, "name", nameOf(meter));
        setAttribute(unit, "meter", text(meter));
    }
    if (said.up != up) {
        setText(axis ? axis : asset.append_child("up_axis"), std::string(1, up) + "_UP");
    }
}

Matrix4 Frame::from(const Frame& other) const
{
    const double factor = other.meter / meter;
    Matrix4 back = toYUp(up); // a turn, whose inverse is its transpose
    Matrix4 turned = identity();
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            turned(row, column) = back(column, row);
        }
    }
    return transformMatrix("scale", {factor, factor, factor}) * turned * toYUp(other.up);
}

} // namespace libPrepare
