#include "Passes.h"

#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Transforms.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace libPrepare {

namespace {

const char* const identityText = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1";

// The scene graph knows neither <skew> nor what <lookat> says beyond its eye.
void replaceByMatrix(Document& document, pugi::xml_node transform)
{
    const std::string name = transform.name();
    const Matrix4 matrix = transformMatrix(name.c_str(), numbersOf(transform));
    document.rewritten(transform, name.c_str(), "<" + name + "> became the <matrix> that it stands for.");
    transform.set_name("matrix");
    setText(transform, text(matrix));
}

// The scene graph divides an axis by its length in single precision.
void repairAxis(Document& document, pugi::xml_node rotate)
{
    std::string scratch;
    const std::string_view numbers = textOf(rotate, scratch);
    if (isMainAxis(numbers)) {
        return;
    }
    std::array<double, 3> axis{};
    const auto x = readNumbers(numbers, axis.data(), axis.size()) == axis.size() ? static_cast<float>(axis[0]) : 0.0F;
    const auto y = static_cast<float>(axis[1]);
    const auto z = static_cast<float>(axis[2]);
    const float square = x * x + y * y + z * z;
    if (square > 1e-30F && square < 1e30F) {
        return;
    }
    std::vector<double> values = numbersOf(rotate);
    values.resize(std::max<std::size_t>(values.size(), 4)); // what is missing is 0
    const double length = std::hypot(values[0], values[1], values[2]);
    if (std::isnan(length) || std::isinf(length)) {
        return;
    }
    if (length > 0) {
        document.rewritten(rotate, "axis", "The axis of a <rotate> has the length 1 now.");
        setText(rotate, text({values[0] / length, values[1] / length, values[2] / length, values[3]}));
    } else {
        document.rewritten(rotate, "axis", "A <rotate> without an axis, which turns nothing, became a <matrix>.");
        rotate.set_name("matrix");
        setText(rotate, identityText);
    }
}

// Appends the nodes below it to a list.
void completeNode(Document& document, pugi::xml_node node, std::vector<pugi::xml_node>& below)
{
    bool hasTransform = false;
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
        const char* const name = child.name(); // empty for a text
        if (*name == '\0') {
            continue;
        }
        if (areEqual(name, "node")) {
            below.push_back(child);
        } else if (areEqual(name, "lookat") || areEqual(name, "skew")) {
            hasTransform = true;
            replaceByMatrix(document, child);
        } else if (areEqual(name, "rotate")) {
            hasTransform = true;
            repairAxis(document, child);
        } else {
            hasTransform = hasTransform || isTransform(name);
        }
    }
    if (!hasTransform) {
        prependTransform(node, "matrix", identityText);
        document.rewritten(node, "node without a transform", "The node has an identity <matrix> now.");
    }
}

} // namespace

void completeTransforms(Document& document)
{
    if (document.census().areTransformsComplete && !document.report().changed) {
        return; // since nothing has changed, it is as the census found it
    }
    std::vector<pugi::xml_node> open; // the next one is the last
    std::vector<pugi::xml_node> below;
    for (const pugi::xml_node node : shownScene(document).children("node")) {
        open.assign(1, node);
        while (!open.empty()) {
            const pugi::xml_node next = open.back();
            open.pop_back();
            below.clear();
            completeNode(document, next, below);
            open.insert(open.end(), below.rbegin(), below.rend());
        }
    }
}

} // namespace libPrepare
