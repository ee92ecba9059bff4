#include "PlainReader.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace documents {

namespace {

constexpr const char* schema = "http://www.collada.org/2005/11/COLLADASchema";
constexpr std::uint32_t mostUnbackedRecords = 1048576;

// An exception that ends the load.
struct Thrown {
    std::string name;
    std::string expression;
};

// --- text

std::vector<std::string> tokensOf(const std::string& text)
{
    static constexpr const char* blanks = " \t\r\n";
    std::vector<std::string> tokens;
    for (std::size_t start = text.find_first_not_of(blanks); start != std::string::npos;) {
        const std::size_t end = std::min(text.find_first_of(blanks, start), text.size());
        tokens.push_back(text.substr(start, end - start));
        start = text.find_first_not_of(blanks, end);
    }
    return tokens;
}

// Ids, names and the like are cut at the first blank.
std::string word(const pugi::xml_node& element, const char* attribute)
{
    const std::vector<std::string> tokens = tokensOf(element.attribute(attribute).value());
    return tokens.empty() ? std::string() : tokens.front();
}

// The last run of text that is not blank. Comments and child elements end a run.
std::string lastText(const pugi::xml_node& element)
{
    std::string text;
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() == pugi::node_pcdata) {
            text = child.value();
        }
    }
    return text;
}

bool isNamed(const pugi::xml_node& element, const char* name)
{
    return std::string_view(element.name()) == name;
}

// The first child that has one of the names: where only one of them may stand, the others are lost.
pugi::xml_node firstOf(const pugi::xml_node& element, std::initializer_list<const char*> names)
{
    return element.find_child([names](const pugi::xml_node& child) {
        return std::any_of(names.begin(), names.end(), [&child](const char* name) { return isNamed(child, name); });
    });
}

// A reference as it is kept: with blanks encoded, and empty if it is none by its characters.
std::string reference(const std::string& written)
{
    std::string result;
    for (const char c : written) {
        result += c == ' ' ? std::string("%20") : std::string(1, c);
    }
    const bool isValid = result.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                                  "-._~!$&'()*+,;=:@/?%#") == std::string::npos &&
                         std::count(result.begin(), result.end(), '#') <= 1;
    for (std::size_t i = result.find('%'); i != std::string::npos; i = result.find('%', i + 1)) {
        const std::string digits = result.substr(i + 1, 2);
        if (digits.size() < 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            return std::string();
        }
    }
    return isValid ? result : std::string();
}

std::string fragmentOf(const pugi::xml_node& element, const char* attribute)
{
    const std::string text = reference(element.attribute(attribute).value());
    const std::size_t mark = text.find('#');
    return mark == std::string::npos ? std::string() : text.substr(mark + 1);
}

// What is no number counts as 0.
std::vector<double> numbersOf(const pugi::xml_node& element)
{
    std::vector<double> numbers;
    for (const std::string& token : tokensOf(lastText(element))) {
        numbers.push_back(std::strtod(token.c_str(), nullptr));
    }
    return numbers;
}

double numberAt(const std::vector<double>& numbers, std::size_t index)
{
    return index < numbers.size() ? numbers[index] : 0.0;
}

// Of counts only the lower 32 bits take part.
std::uint32_t countAttribute(const pugi::xml_node& element, const char* attribute, std::uint32_t absent)
{
    const pugi::xml_attribute found = element.attribute(attribute);
    return found ? static_cast<std::uint32_t>(std::strtoull(found.value(), nullptr, 10)) : absent;
}

std::string upperCase(std::string text)
{
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

// --- matrices

float asFloat(double number)
{
    if (std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
        return std::copysign(std::numeric_limits<float>::infinity(), static_cast<float>(std::copysign(1.0, number)));
    }
    return static_cast<float>(number);
}

// Values of a transform are kept as `float`, the angle of a rotation aside.
double narrowed(double number)
{
    return static_cast<double>(asFloat(number));
}

PlainMatrix ofValues(const std::array<double, 16>& values)
{
    PlainMatrix matrix;
    matrix.value = values;
    for (std::size_t i = 0; i < 16; ++i) {
        matrix.magnitude[i] = std::fabs(values[i]);
    }
    return matrix;
}

PlainMatrix translationOf(const std::vector<double>& numbers)
{
    const double x = narrowed(numberAt(numbers, 0));
    const double y = narrowed(numberAt(numbers, 1));
    const double z = narrowed(numberAt(numbers, 2));
    return ofValues({1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1});
}

PlainMatrix scaleOf(const std::vector<double>& numbers)
{
    const double x = narrowed(numberAt(numbers, 0));
    const double y = narrowed(numberAt(numbers, 1));
    const double z = narrowed(numberAt(numbers, 2));
    return ofValues({x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1});
}

PlainMatrix matrixOf(const std::vector<double>& numbers)
{
    std::array<double, 16> values{};
    for (std::size_t i = 0; i < 16; ++i) {
        values[i] = narrowed(numberAt(numbers, i));
    }
    return ofValues(values);
}

// By Rodrigues: R = cos·I + sin·K + (1 − cos)·a·aT, where K is the cross product with the axis a of length 1.
PlainMatrix rotationOf(const std::vector<double>& numbers)
{
    std::array<double, 3> axis = {narrowed(numberAt(numbers, 0)), narrowed(numberAt(numbers, 1)),
                                  narrowed(numberAt(numbers, 2))};
    const double length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
    for (double& component : axis) {
        component /= length; // an axis of no length gives no numbers
    }
    const double pi = std::acos(-1.0);
    const double cosine = std::cos(numberAt(numbers, 3) / 180.0 * pi);
    const double sine = std::sin(numberAt(numbers, 3) / 180.0 * pi);
    const double cross[3][3] = {{0, -axis[2], axis[1]}, {axis[2], 0, -axis[0]}, {-axis[1], axis[0], 0}};
    PlainMatrix result = plainIdentity();
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const double identity = row == column ? 1.0 : 0.0;
            const double along = axis[row] * axis[column];
            result.value[4 * row + column] = cosine * identity + sine * cross[row][column] + (1.0 - cosine) * along;
            // Sine and cosine are as exact as the angle, whatever their size.
            result.magnitude[4 * row + column] = identity + std::fabs(cross[row][column]) + 2.0 * std::fabs(along);
        }
    }
    return result;
}

// Its eye and its target are one point, and there is no direction from a point to itself.
PlainMatrix ofLookAt()
{
    PlainMatrix result;
    result.value.fill(std::numeric_limits<double>::quiet_NaN());
    result.magnitude = result.value;
    return result;
}

// Whether it is a transform that an animation can drive.
bool isAnimatable(const pugi::xml_node& element)
{
    return isNamed(element, "translate") || isNamed(element, "rotate") || isNamed(element, "scale") ||
           isNamed(element, "matrix");
}

PlainMatrix localMatrix(const pugi::xml_node& node)
{
    PlainMatrix local; // zero, and stays so without any transform child
    bool isFirst = true;
    for (const pugi::xml_node& child : node.children()) {
        const bool isLookAt = isNamed(child, "lookat");
        const bool isSkew = isNamed(child, "skew");
        if (!isAnimatable(child) && !isLookAt && !isSkew) {
            continue;
        }
        if (isFirst) {
            local = plainIdentity();
            isFirst = false;
        }
        if (isNamed(child, "translate")) {
            local = local * translationOf(numbersOf(child));
        } else if (isNamed(child, "rotate")) {
            local = local * rotationOf(numbersOf(child));
        } else if (isNamed(child, "scale")) {
            local = local * scaleOf(numbersOf(child));
        } else if (isNamed(child, "matrix")) {
            local = local * matrixOf(numbersOf(child));
        } else if (isLookAt) {
            local = local * ofLookAt();
        }
    }
    return local;
}

// --- what refers to what

class References {
public:
    References(std::string fileName, const pugi::xml_node& root) : m_fileName(std::move(fileName)) { listIds(root); }

    // The element that a reference names; none for one that is no valid reference or leads into another file.
    pugi::xml_node resolve(const pugi::xml_node& element, const char* attribute)
    {
        const std::string text = reference(element.attribute(attribute).value());
        const std::size_t mark = text.find('#');
        const std::string file = text.substr(0, mark);
        if (!file.empty() && file != m_fileName && file != "./" + m_fileName) {
            m_leadElsewhere = true;
            return pugi::xml_node();
        }
        return mark == std::string::npos ? pugi::xml_node() : byId(text.substr(mark + 1));
    }

    pugi::xml_node byId(const std::string& id) const
    {
        const auto found = m_byId.find(id);
        return found == m_byId.end() ? pugi::xml_node() : found->second;
    }

    bool leadElsewhere() const { return m_leadElsewhere; }

private:
    // Of several elements of one id the one that ends first has it.
    void listIds(const pugi::xml_node& root)
    {
        const auto firstLeaf = [](pugi::xml_node node) {
            while (node.first_child()) {
                node = node.first_child();
            }
            return node;
        };
        pugi::xml_node node = firstLeaf(root);
        while (true) {
            const std::string id = word(node, "id");
            if (!id.empty()) {
                m_byId.emplace(id, node);
            }
            if (node == root) {
                return;
            }
            node = node.next_sibling() ? firstLeaf(node.next_sibling()) : node.parent();
        }
    }

    std::string m_fileName;
    std::unordered_map<std::string, pugi::xml_node> m_byId;
    bool m_leadElsewhere = false;
};

//@@MESH@@
// --- the document

// One `<source>` that an `<input>` of a sampler names.
struct Input {
    std::string semantic;
    std::uint32_t count = 0;
    std::uint32_t stride = 1;
    pugi::xml_node array; // what the accessor reads from; may be anything, or nothing
};

class Reader {
public:
    explicit Reader(const std::string& path) : m_fileName(std::filesystem::path(path).filename().string())
    {
        const pugi::xml_parse_result result =
            m_xml.load_file(path.c_str(), pugi::parse_default | pugi::parse_doctype, pugi::encoding_auto);
        m_isWellFormed = static_cast<bool>(result);
        m_result.reason = "Collada file does not exist ";
    }

    PlainDocument read()
    {
        if (!opens()) {
            return std::move(m_result);
        }
        const pugi::xml_node root = m_xml.document_element();
        listIds(root);
        const pugi::xml_node scene = root.child("scene");
        if (!scene) {
            m_result.reason = "Collada file does not have a scene definition ";
            return std::move(m_result);
        }
        // The pool of animations fills before the way to the visual scene is looked at.
        if (!readAnimations(root)) {
            m_result.outcome = PlainDocument::Outcome::throwsIndex;
            return std::move(m_result);
        }
        const pugi::xml_node instance = scene.child("instance_visual_scene");
        if (!instance) {
            m_result.reason = "Scene does not have a visual scene";
            return std::move(m_result);
        }
        const pugi::xml_node visualScene = resolve(instance.attribute("url").value());
        if (!visualScene) {
            m_result.reason = "Url ";
        } else if (!isNamed(visualScene, "visual_scene")) {
            m_result.reason = "daeElement is not a domVisual_scene element";
        } else if (!visualScene.child("node")) {
            m_result.reason = "Visual scene has no visual nodes";
        } else {
            m_result.outcome = PlainDocument::Outcome::loads;
            m_result.reason.clear();
            readNodes(visualScene);
            attachAnimations();
        }
        return std::move(m_result);
    }

private:
    bool opens() const
    {
        if (!m_isWellFormed) {
            return false;
        }
        for (const pugi::xml_node& child : m_xml.children()) {
            if (child.type() == pugi::node_doctype) {
                return false;
            }
        }
        const pugi::xml_node root = m_xml.document_element();
        const pugi::xml_attribute nameSpace = root.attribute("xmlns");
        return isNamed(root, "COLLADA") && (!nameSpace || std::string_view(nameSpace.value()) == schema);
    }

    void readNodes(const pugi::xml_node& visualScene)
    {
        std::vector<PlainNode>& nodes = m_result.nodes;
        const auto append = [this, &nodes](const pugi::xml_node& of, std::optional<std::size_t> parent) {
            for (const pugi::xml_node& element : of.children("node")) {
                if (parent) {
                    nodes[*parent].children.push_back(nodes.size());
                }
                PlainNode node;
                node.id = word(element, "id");
                node.sid = word(element, "sid");
                node.name = word(element, "name");
                node.parent = parent;
                node.local = localMatrix(element);
                nodes.push_back(std::move(node));
                m_elements.push_back(element);
            }
        };
        append(visualScene, std::nullopt);
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            append(m_elements[i], i);
        }
    }

    // False if one of them throws.
    bool readAnimations(const pugi::xml_node& root)
    {
        for (const pugi::xml_node& library : root.children("library_animations")) {
            for (const pugi::xml_node& element : library.children("animation")) {
                PlainAnimation animation;
                if (!readAnimation(element, animation)) {
                    return false;
                }
                m_result.animations.push_back(animation);
            }
        }
        return true;
    }

    bool readAnimation(const pugi::xml_node& element, PlainAnimation& animation)
    {
        const pugi::xml_node channel = element.child("channel");
        if (!channel) {
            return true;
        }
        const pugi::xml_node sampler = resolve(channel.attribute("source").value());
        if (!isNamed(sampler, "sampler") || !sampler.child("input")) {
            return true;
        }
        std::uint32_t records = 0;
        for (const pugi::xml_node& child : sampler.children("input")) {
            Input input;
            if (!readInput(child, input) || (records > 0 && input.count > records) || input.count > backed(input)) {
                return true;
            }
            if (records == 0) {
                records = input.count;
            }
            const bool isFilled = countAttribute(input.array, "count", 0) > 0;
            if (isFilled && isNamed(input.array, "float_array")) {
                if (input.semantic == "INPUT" && input.stride == 0 && input.count > 0) {
                    return false;
                }
                if (input.semantic != "INPUT" && input.semantic != "OUTPUT" && input.semantic != "IN_TANGENT" &&
                    input.semantic != "OUT_TANGENT") {
                    return true;
                }
            } else if (isFilled && isNamed(input.array, "Name_array")) {
                if (input.semantic != "INTERPOLATION" || input.stride > 1) {
                    return true;
                }
            }
        }
        animation.isComplete = true;
        const std::string target = word(channel, "target");
        const std::size_t slash = target.find('/');
        if (slash != std::string::npos) {
            animation.targetNode = target.substr(0, slash);
            const std::string behind = target.substr(slash + 1);
            animation.targetTransform = behind.substr(0, behind.find('.'));
        }
        return true;
    }

    bool readInput(const pugi::xml_node& element, Input& input)
    {
        input.semantic = upperCase(word(element, "semantic"));
        const pugi::xml_node source = resolve(element.attribute("source").value());
        const pugi::xml_node accessor = source.child("technique_common").child("accessor");
        if (!isNamed(source, "source") || !accessor) {
            return false;
        }
        input.count = countAttribute(accessor, "count", 0);
        input.stride = countAttribute(accessor, "stride", 1);
        input.array = resolve(accessor.attribute("source").value());
        return true;
    }

    // How many records the array has values for.
    static std::size_t backed(const Input& input)
    {
        if (countAttribute(input.array, "count", 0) > 0) {
            const std::size_t size = tokensOf(lastText(input.array)).size();
            if (isNamed(input.array, "Name_array")) {
                return size;
            }
            if (isNamed(input.array, "float_array") && input.stride > 0) {
                return size / input.stride;
            }
        }
        return mostUnbackedRecords;
    }

    // Each goes to the first node of its target's id, and there to the first transform of its target's sid. One that is
    // not complete looks for a node without id.
    void attachAnimations()
    {
        for (PlainAnimation& animation : m_result.animations) {
            const auto found = m_byId.find(animation.targetNode);
            animation.mayMeetCamera =
                animation.targetNode.empty() || (found != m_byId.end() && isNamed(found->second, "camera"));
            for (std::size_t i = 0; i < m_result.nodes.size(); ++i) {
                if (m_result.nodes[i].id == animation.targetNode) {
                    for (const pugi::xml_node& child : m_elements[i].children()) {
                        if (isAnimatable(child) && word(child, "sid") == animation.targetTransform) {
                            m_result.nodes[i].isAnimated = true;
                            animation.node = i;
                        }
                    }
                    break;
                }
            }
        }
    }

    std::string m_fileName;
    pugi::xml_document m_xml;
    bool m_isWellFormed = false;
    std::unordered_map<std::string, pugi::xml_node> m_byId;
    std::vector<pugi::xml_node> m_elements; // of the nodes
    PlainDocument m_result;
};

} // namespace

PlainMatrix plainIdentity()
{
    return ofValues({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

PlainMatrix operator*(const PlainMatrix& left, const PlainMatrix& right)
{
    PlainMatrix result;
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t k = 0; k < 4; ++k) {
                result.value[4 * row + column] += left.value[4 * row + k] * right.value[4 * k + column];
                result.magnitude[4 * row + column] += left.magnitude[4 * row + k] * right.magnitude[4 * k + column];
            }
        }
    }
    return result;
}

std::vector<PlainMatrix> PlainDocument::worldMatrices() const
{
    std::vector<PlainMatrix> world;
    for (const PlainNode& node : nodes) {
        world.push_back(node.parent ? world[*node.parent] * node.local : node.local);
    }
    return world;
}

bool PlainDocument::moves(std::size_t node) const
{
    std::optional<std::size_t> place = node;
    while (place && !nodes[*place].isAnimated) {
        place = nodes[*place].parent;
    }
    return place.has_value();
}

PlainDocument readPlainly(const std::string& path)
{
    return Reader(path).read();
}

} // namespace documents
