#include "LightElement.h"

#include "Document.h"
#include "Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace libPrepare {

namespace {

// Children of <point> and <spot> in schema order, with their default values.
struct Value {
    const char* name;
    const char* byDefault;
    bool isOfSpot;
};

constexpr Value defaultValues[] = {
    {"color", "1 1 1", false},          {"constant_attenuation", "1", false},
    {"linear_attenuation", "0", false}, {"quadratic_attenuation", "0", false},
    {"falloff_angle", "180", true},     {"falloff_exponent", "0", true},
};

bool isEqualNoCase(const char* text, const char* lower)
{
    for (; *text != '\0' && *lower != '\0'; ++text, ++lower) {
        const char folded = *text >= 'A' && *text <= 'Z' ? static_cast<char>(*text + ('a' - 'A')) : *text;
        if (folded != *lower) {
            return false;
        }
    }
    return *text == *lower;
}

// The elements of a name in the vendor data, in the order in which they are read: the last one counts.
std::vector<pugi::xml_node> vendorValues(pugi::xml_node light, const char* name)
{
    std::vector<pugi::xml_node> result;
    for (const pugi::xml_node extra : light.children("extra")) {
        for (const pugi::xml_node technique : extra.children("technique")) {
            if (!isEqualNoCase(technique.attribute("profile").value(), "fcollada")) {
                continue;
            }
            for (const pugi::xml_node value : technique.children()) {
                if (isEqualNoCase(value.name(), name)) {
                    result.push_back(value);
                }
            }
        }
    }
    return result;
}

// Leaves one element of a name in the vendor data, which holds a text.
void setVendorValue(pugi::xml_node light, const char* name, const std::string& text)
{
    std::vector<pugi::xml_node> old = vendorValues(light, name);
    if (!old.empty()) {
        setText(old.back(), text);
        old.pop_back();
        for (const pugi::xml_node each : old) {
            discard(each);
        }
        return;
    }
    pugi::xml_node technique;
    for (const pugi::xml_node extra : light.children("extra")) {
        for (const pugi::xml_node each : extra.children("technique")) {
            if (isEqualNoCase(each.attribute("profile").value(), "fcollada")) {
                technique = each;
            }
        }
    }
    if (!technique) {
        technique = light.append_child("extra").append_child("technique");
        technique.append_attribute("profile").set_value("FCOLLADA");
    }
    setText(technique.append_child(name), text);
}

std::size_t placeOf(const char* name)
{
    return static_cast<std::size_t>(
        std::find_if(std::begin(defaultValues), std::end(defaultValues),
                     [&](const Value& value) { return std::strcmp(value.name, name) == 0; }) -
        std::begin(defaultValues));
}

pugi::xml_node needChild(pugi::xml_node shape, const char* name)
{
    if (const pugi::xml_node child = shape.child(name)) {
        return child;
    }
    for (const pugi::xml_node child : shape.children()) {
        if (child.type() == pugi::node_element && placeOf(child.name()) > placeOf(name)) {
            return shape.insert_child_before(name, child);
        }
    }
    return shape.append_child(name);
}

} // namespace

pugi::xml_node shapeOf(pugi::xml_node light)
{
    return light.child("technique_common").find_child([](pugi::xml_node child) {
        return is(child, "point") || is(child, "spot") || is(child, "directional") || is(child, "ambient");
    });
}

std::vector<double> colorOf(pugi::xml_node light)
{
    std::vector<double> color = numbersOf(shapeOf(light).child("color"));
    color.resize(color.size() < 3 ? 0 : 3);
    color.resize(3, 1.0);
    std::replace_if(
        color.begin(), color.end(), [](double value) { return !std::isfinite(value); }, 0.0);
    return color;
}

std::string completeShape(pugi::xml_node shape)
{
    std::string missing;
    for (const Value& value : defaultValues) {
        if (value.isOfSpot && !is(shape, "spot")) {
            continue;
        }
        const bool isColor = std::strcmp(value.name, "color") == 0;
        const std::vector<double> given = numbersOf(shape.child(value.name));
        if (given.size() >= (isColor ? 3U : 1U) && (isColor || !std::isnan(given.front()))) {
            continue;
        }
        setText(needChild(shape, value.name), value.byDefault);
        std::string name = value.name;
        std::replace(name.begin(), name.end(), '_', ' ');
        missing += (missing.empty() ? "" : ", ") + name;
    }
    return missing;
}

bool completeOuterCone(pugi::xml_node light)
{
    const std::vector<pugi::xml_node> given = vendorValues(light, "outer_cone");
    if (!given.empty() && std::isfinite(number(trimmed(textOf(given.back()))))) {
        return false;
    }
    const std::string angle(trimmed(textOf(shapeOf(light).child("falloff_angle"))));
    setVendorValue(light, "outer_cone", std::isfinite(number(angle)) ? angle : "180");
    return true;
}

std::string targetOf(pugi::xml_node light)
{
    const std::vector<pugi::xml_node> given = vendorValues(light, "target");
    const std::string reference = given.empty() ? std::string() : textOf(given.back());
    const std::size_t mark = reference.find('#');
    return mark == std::string::npos ? std::string() : std::string(trimmed(reference.substr(mark + 1)));
}

void setTarget(pugi::xml_node light, const std::string& nodeId)
{
    setVendorValue(light, "target", '#' + nodeId);
}

} // namespace libPrepare
