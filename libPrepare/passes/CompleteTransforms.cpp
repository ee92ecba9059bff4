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

} // namespace

void completeTransforms(Document& document)
{
    for (const pugi::xml_node node : nodesIn(shownScene(document))) {
        bool hasTransform = false;
        for (const pugi::xml_node child : node.children()) {
            const char* const name = child.name(); // empty for what is no element
            if (areEqual(name, "lookat") || areEqual(name, "skew")) {
                hasTransform = true;
                replaceByMatrix(document, child);
                continue;
            }
            if (areEqual(name, "rotate")) {
                repairAxis(document, child);
            }
            hasTransform = hasTransform || isTransform(name);
        }
        if (!hasTransform) {
            prependTransform(node, "matrix", identityText);
            document.rewritten(node, "node without a transform", "The node has an identity <matrix> now.");
        }
    }
}

} // namespace libPrepare
