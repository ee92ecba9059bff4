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
#include <memory>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace documents {

namespace {

constexpr const char* schema = "http://www.collada.org/2005/11/COLLADASchema";
constexpr std::uint32_t mostUnbackedRecords = 1048576;

// An exception that the load throws.
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

// Ids and names are cut at the first blank.
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

// The first child with one of the names. Where only one of them is allowed, the others are lost.
pugi::xml_node firstOf(const pugi::xml_node& element, std::initializer_list<const char*> names)
{
    return element.find_child([names](const pugi::xml_node& child) {
        return std::any_of(names.begin(), names.end(), [&child](const char* name) { return isNamed(child, name); });
    });
}

// A reference as it is stored: blanks are encoded, and it is empty if it has invalid characters.
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

// Anything but a number counts as 0.
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

// Only the lower 32 bits of counts are used.
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

// The values of a transform are stored as `float`, except the angle of a rotation.
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
        component /= length; // an axis of length 0 gives NaN
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
            // Sine and cosine are as exact as the angle, even where they are tiny.
            result.magnitude[4 * row + column] = identity + std::fabs(cross[row][column]) + 2.0 * std::fabs(along);
        }
    }
    return result;
}

// Eye and target are the same point, so there is no direction.
PlainMatrix ofLookAt()
{
    PlainMatrix result;
    result.value.fill(std::numeric_limits<double>::quiet_NaN());
    result.magnitude = result.value;
    return result;
}

// Whether an animation can drive the transform.
bool isAnimatable(const pugi::xml_node& element)
{
    return isNamed(element, "translate") || isNamed(element, "rotate") || isNamed(element, "scale") ||
           isNamed(element, "matrix");
}

PlainMatrix localMatrix(const pugi::xml_node& node)
{
    PlainMatrix local; // stays zero without any transform child
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

    // The element that a reference names; none if the reference is invalid or leads to another file.
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
    // If several elements have the same id, it belongs to the one that ends first.
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

// --- geometries

constexpr std::uint32_t typeTriangles = 4;
constexpr std::uint32_t typePoints = 7;
constexpr std::uint32_t noSemantic = 15;

std::uint32_t semanticNumber(const std::string& written)
{
    static const std::map<std::string, std::uint32_t> numbers = {
        {"BINORMAL", 0}, {"WEIGHT", 2}, {"COLOR", 3},   {"NORMAL", 4},         {"POSITION", 5},    {"TANGENT", 8},
        {"TEXCOORD", 9}, {"INPUT", 10}, {"OUTPUT", 11}, {"INTERPOLATION", 12}, {"IN_TANGENT", 13}, {"OUT_TANGENT", 14}};
    const auto found = numbers.find(upperCase(written));
    return found == numbers.end() ? noSemantic : found->second;
}

// A `<source>` as an input reads it: by the records of its accessor, or float by float.
struct Source {
    struct Component {
        std::uint32_t start;  // in a record
        std::uint32_t floats; // 1, or 16 for a matrix
    };

    bool hasAccessor = false;
    std::uint32_t count = 0; // of records, or of floats
    std::uint32_t offset = 0;
    std::uint32_t stride = 0;
    std::uint32_t byteSize = 0;
    std::uint32_t dataType = 1;
    std::vector<Component> components; // empty if the accessor is broken
    std::vector<double> values;

    // The records of an input. A source without an accessor has none.
    std::uint32_t records() const { return hasAccessor ? count : 0; }

    // The number of records that begin within the array.
    std::size_t backed() const
    {
        const std::size_t all = hasAccessor && stride > 0 ? (values.size() + stride - 1) / stride : 0;
        return all > offset ? all - offset : 0;
    }
};

// One attribute of a vertex and its origin.
struct Attribute {
    PlainAttribute layout;
    Source source;
};

// Reads the primitives of a `<mesh>`.
class MeshReader {
public:
    MeshReader(References& references, std::vector<std::pair<std::string, std::string>>& lines)
        : m_references(references), m_lines(lines)
    {}

    std::vector<PlainPrimitive> read(const pugi::xml_node& mesh)
    {
        std::vector<PlainPrimitive> primitives;
        for (const pugi::xml_node& child : mesh.children("triangles")) {
            primitives.push_back(readTriangles(child));
        }
        if (primitives.empty() && !mesh.child("lines")) {
            primitives.push_back(readPoints(mesh.child("vertices")));
        }
        return primitives;
    }

private:
    void log(const char* module, const std::string& words)
    {
        m_lines.emplace_back(std::string("libVideo.") + module, words);
    }

    // --- sources

    std::optional<Source> readSource(const pugi::xml_node& input)
    {
        const pugi::xml_node element = m_references.resolve(input, "source");
        if (!isNamed(element, "source")) {
            const std::string shown = element ? word(element, "id") : reference(input.attribute("source").value());
            log("source", "Element " + shown + " is not a source");
            return std::nullopt;
        }
        const pugi::xml_node array =
            firstOf(element, {"IDREF_array", "Name_array", "bool_array", "float_array", "int_array"});
        if (!isNamed(array, "float_array")) {
            log("source", "Source has no float array");
            return std::nullopt;
        }
        const pugi::xml_node accessor = element.child("technique_common").child("accessor");
        if (countAttribute(array, "count", 0) == 0) {
            if (!accessor) {
                log("source", "Not interested in <source> that has no data and accessors");
                return std::nullopt;
            }
            if (!accessor.child("param")) {
                log("source", "Not interested in <accessor> that has no param");
                return std::nullopt;
            }
            if (floatsOf(accessor.child("param")) == 0) {
                log("source", "Cannot instantiate a Source object with type " + word(accessor.child("param"), "type"));
                return std::nullopt;
            }
        }
        Source source;
        if (accessor) {
            source.hasAccessor = true;
            readAccessor(accessor, source);
        } else {
            source.count = countAttribute(array, "count", 0);
            source.components = {{0, 1}};
            source.stride = 1;
            source.values = numbersOf(array);
        }
        return source;
    }

    void readAccessor(const pugi::xml_node& accessor, Source& source)
    {
        source.count = countAttribute(accessor, "count", 0);
        const pugi::xml_node array = m_references.resolve(accessor, "source");
        if (!isNamed(array, "float_array")) {
            log("accessor", "Data source is not a float array " +
                                (array ? array.name() : reference(accessor.attribute("source").value())));
            return;
        }
        source.values = numbersOf(array);
        source.offset = countAttribute(accessor, "offset", 0);
        std::uint32_t position = 0;
        for (const pugi::xml_node& param : accessor.children("param")) {
            const std::uint32_t floats = floatsOf(param);
            if (floats == 0) {
                throw Thrown{"AssertionFailure", "false"};
            }
            if (param.attribute("name")) {
                source.components.push_back({position, floats});
                source.byteSize += floats * bytesOf(floats);
            }
            position += floats;
        }
        if (!accessor.child("param")) {
            source.components = {{0, 1}}; // of size 0 all the same
        }
        const std::uint32_t stride = countAttribute(accessor, "stride", 1);
        source.stride = stride > 1 ? stride : position;
        logReach(source);
        static const std::map<std::uint32_t, std::uint32_t> types = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {16, 8}};
        const auto type = types.find(source.stride);
        if (type == types.end()) {
            log("source", "Does not have a matching float data type for stride " + std::to_string(source.stride));
        } else {
            source.dataType = type->second;
        }
    }

    // Logs a message unless the last component of the last record is in the array.
    void logReach(const Source& source)
    {
        if (source.count == 0 || source.components.empty()) {
            return;
        }
        const Source::Component& last = source.components.back();
        const std::uint64_t records = std::uint64_t(source.offset) + source.count - 1;
        if (records * source.stride + last.start + last.floats > source.values.size()) {
            log("accessor", "Accessor reaches beyond its float array");
        }
    }

    // 0 for a type that no component can have.
    static std::uint32_t floatsOf(const pugi::xml_node& param)
    {
        const std::string type = upperCase(word(param, "type"));
        return type == "FLOAT" ? 1 : type == "FLOAT4X4" ? 16 : 0;
    }

    // The floats of a matrix are 64 bytes apart.
    static std::uint32_t bytesOf(std::uint32_t floats) { return 4 * floats; }

    void appendRecord(const Source& source, std::uint32_t index, PlainPrimitive& primitive)
    {
        if (index >= source.count) {
            throw Thrown{"AssertionFailure", source.hasAccessor ? "index < m_count" : "index < m_arrayCount"};
        }
        if (source.components.empty()) {
            log("accessor", "No data to read from the accessor");
        }
        const std::uint32_t base = (source.offset + index) * source.stride;
        for (const Source::Component& component : source.components) {
            for (std::uint32_t i = 0; i < component.floats; ++i) {
                const std::size_t place = std::size_t(base) + component.start + i;
                primitive.vertices.emplace_back(asFloat(numberAt(source.values, place)));
                primitive.vertices.resize(primitive.vertices.size() + bytesOf(component.floats) / 4 - 1);
            }
        }
    }

    // --- inputs

    // The inputs of a `<vertices>`.
    std::vector<Attribute> readAttributes(const pugi::xml_node& vertices)
    {
        std::vector<Attribute> attributes;
        for (const pugi::xml_node& input : vertices.children("input")) {
            appendAttribute(input, attributes);
        }
        if (attributes.empty()) {
            log("input", "createFromCollada failed");
        }
        return attributes;
    }

    // False if there is no source for it.
    bool appendAttribute(const pugi::xml_node& input, std::vector<Attribute>& attributes)
    {
        Attribute attribute;
        attribute.layout.semantic = semanticNumber(word(input, "semantic"));
        if (attribute.layout.semantic == noSemantic) {
            log("input", "Does not recognize input semantic " + word(input, "semantic"));
            return true;
        }
        std::optional<Source> source = readSource(input);
        if (!source) {
            return false;
        }
        attribute.layout.byteSize = source->byteSize;
        attribute.layout.dataType = source->dataType;
        attribute.source = std::move(*source);
        attributes.push_back(std::move(attribute));
        return true;
    }

    // The inputs of a `<triangles>`. Its "VERTEX" stands for the inputs of its `<vertices>`.
    std::vector<Attribute> readCornerAttributes(const pugi::xml_node& triangles)
    {
        std::vector<Attribute> attributes;
        for (const pugi::xml_node& input : triangles.children("input")) {
            if (upperCase(word(input, "semantic")) != "VERTEX") {
                if (!appendAttribute(input, attributes)) {
                    log("input", "Does not have a class representation for source " + fragmentOf(input, "source"));
                }
                continue;
            }
            const pugi::xml_node vertices = m_references.resolve(input, "source");
            if (!isNamed(vertices, "vertices")) {
                log("input", "Input is not a <vertices> element " + fragmentOf(input, "source"));
                continue;
            }
            for (Attribute& attribute : readAttributes(vertices)) {
                attributes.push_back(std::move(attribute));
            }
        }
        if (attributes.empty()) {
            log("input", "createFromCollada failed");
        }
        return attributes;
    }

    // They follow each other.
    static void describe(const std::vector<Attribute>& attributes, PlainPrimitive& primitive)
    {
        for (const Attribute& attribute : attributes) {
            primitive.layout.push_back(attribute.layout);
            primitive.layout.back().byteOffset = primitive.bytesPerVertex;
            primitive.bytesPerVertex += attribute.layout.byteSize;
        }
    }

    // --- primitives

    PlainPrimitive readTriangles(const pugi::xml_node& triangles)
    {
        PlainPrimitive primitive;
        primitive.material = word(triangles, "material");
        if (!triangles.child("input")) {
            log("primitive", "Skipping <triangles> element with no vertex description");
            return primitive;
        }
        const std::vector<Attribute> attributes = readCornerAttributes(triangles);
        describe(attributes, primitive);
        primitive.type = typeTriangles;
        primitive.id = word(triangles, "name");
        primitive.vertexPerPrimitive = 3;
        primitive.count = countAttribute(triangles, "count", 0);

        std::vector<std::uint32_t> offsets;
        for (const pugi::xml_node& input : triangles.children("input")) {
            offsets.push_back(countAttribute(input, "offset", 0));
        }
        const std::size_t step = std::set<std::uint32_t>(offsets.begin(), offsets.end()).size();
        std::vector<std::uint32_t> p;
        for (const std::string& token : tokensOf(lastText(triangles.child("p")))) {
            p.push_back(static_cast<std::uint32_t>(std::strtoull(token.c_str(), nullptr, 10)));
        }
        const std::size_t whole = p.size() / (3 * step);
        if (whole < primitive.count) {
            log("primitive", "Triangles have fewer indices than their count");
            primitive.count = static_cast<std::uint32_t>(whole);
        }
        if (attributes.empty()) {
            primitive.indices.resize(std::size_t(3) * primitive.count);
        } else {
            appendCorners(attributes, offsets, p, step, primitive);
        }
        return primitive;
    }

    // Corners with the same tuple of indices share a vertex.
    void appendCorners(const std::vector<Attribute>& attributes, const std::vector<std::uint32_t>& offsets,
                       const std::vector<std::uint32_t>& p, std::size_t step, PlainPrimitive& primitive)
    {
        std::map<std::vector<std::uint32_t>, std::uint32_t> known;
        for (std::size_t corner = 0; corner < std::size_t(3) * primitive.count; ++corner) {
            const auto tuple = p.begin() + static_cast<std::ptrdiff_t>(corner * step);
            const auto [found, isNew] =
                known.emplace(std::vector<std::uint32_t>(tuple, tuple + static_cast<std::ptrdiff_t>(step)),
                              static_cast<std::uint32_t>(known.size()));
            if (isNew) {
                for (std::size_t i = 0; i < attributes.size(); ++i) {
                    if (i >= offsets.size()) {
                        throw Thrown{"IndexOutOfBounds", std::string()};
                    }
                    const std::size_t place = corner * step + offsets[i];
                    appendRecord(attributes[i].source, place < p.size() ? p[place] : 0, primitive);
                }
            }
            primitive.indices.push_back(found->second);
        }
    }

    PlainPrimitive readPoints(const pugi::xml_node& vertices)
    {
        PlainPrimitive primitive;
        if (!vertices) {
            log("primitive", "NULL domVertices passed");
            return primitive;
        }
        primitive.id = word(vertices, "id");
        const std::vector<Attribute> attributes = readAttributes(vertices);
        describe(attributes, primitive);
        primitive.type = typePoints;
        primitive.vertexPerPrimitive = 1;
        std::size_t most = mostUnbackedRecords;
        for (const Attribute& attribute : attributes) {
            most = std::max(most, attribute.source.backed());
        }
        const std::size_t records = attributes.empty() ? 0 : attributes.front().source.records();
        primitive.count = static_cast<std::uint32_t>(std::min(records, most));
        for (std::uint32_t i = 0; i < primitive.count; ++i) {
            for (const Attribute& attribute : attributes) {
                appendRecord(attribute.source, i, primitive);
            }
        }
        return primitive;
    }

    References& m_references;
    std::vector<std::pair<std::string, std::string>>& m_lines;
};

// --- materials

class MaterialReader {
public:
    MaterialReader(References& references, std::vector<std::pair<std::string, std::string>>& lines)
        : m_references(references), m_lines(lines)
    {}

    // Of a `<blinn>` or `<phong>` of a `<profile_COMMON>`.
    PlainMaterial read(const pugi::xml_node& shader, const pugi::xml_node& profile)
    {
        PlainMaterial material;
        material.emission = readColor(shader.child("emission"), profile);
        material.ambient = readColor(shader.child("ambient"), profile);
        material.diffuse = readColor(shader.child("diffuse"), profile);
        material.specular = readColor(shader.child("specular"), profile);
        material.reflective = readColor(shader.child("reflective"), profile);
        material.shininess = readNumber(shader.child("shininess"));
        material.transparency = readNumber(shader.child("transparency"));
        return material;
    }

private:
    static float readNumber(const pugi::xml_node& coefficient)
    {
        const pugi::xml_node number = firstOf(coefficient, {"float", "param"});
        return isNamed(number, "float") ? asFloat(numberAt(numbersOf(number), 0)) : 0.0f;
    }

    PlainColor readColor(const pugi::xml_node& channel, const pugi::xml_node& profile)
    {
        PlainColor color;
        const pugi::xml_node value = firstOf(channel, {"color", "param", "texture"});
        if (isNamed(value, "color")) {
            const std::vector<double> numbers = numbersOf(value);
            if (numbers.size() < 3) {
                m_lines.emplace_back("libVideo.material", "Color has fewer than three values");
                return color;
            }
            for (std::size_t i = 0; i < 3; ++i) {
                color.value[i] = asFloat(numbers[i]);
            }
        } else if (isNamed(value, "texture")) {
            color.texture = std::string();
            const pugi::xml_node surface = surfaceOf(word(value, "texture"), profile);
            if (surface) {
                color.texture = fileOf(surface);
            } else {
                m_lines.emplace_back("libVideo.material", "Unable to initialize texture");
            }
        }
        return color;
    }

    // The second newparam of the chain; none if the chain breaks off.
    static pugi::xml_node surfaceOf(const std::string& sampler, const pugi::xml_node& profile)
    {
        const pugi::xml_node source = newparam(sampler, profile).child("sampler2D").child("source");
        const std::vector<std::string> name = tokensOf(lastText(source));
        return name.empty() ? pugi::xml_node() : newparam(name.front(), profile);
    }

    // The newparams of the profile come first, then those below it, level by level.
    static pugi::xml_node newparam(const std::string& sid, const pugi::xml_node& profile)
    {
        if (sid.empty()) {
            return pugi::xml_node();
        }
        for (const pugi::xml_node& child : profile.children("newparam")) {
            if (word(child, "sid") == sid) {
                return child;
            }
        }
        std::deque<pugi::xml_node> level(profile.begin(), profile.end());
        while (!level.empty()) {
            const pugi::xml_node element = level.front();
            level.pop_front();
            if (word(element, "sid") == sid) {
                return isNamed(element, "newparam") ? element : pugi::xml_node();
            }
            level.insert(level.end(), element.begin(), element.end());
        }
        return pugi::xml_node();
    }

    std::string fileOf(const pugi::xml_node& param)
    {
        const pugi::xml_node surface = param.child("surface");
        if (!firstOf(surface,
                     {"init_as_null", "init_as_target", "init_cube", "init_volume", "init_planar", "init_from"})) {
            m_lines.emplace_back("libVideo.texture", "Texture has no surface initiailzer");
            return std::string();
        }
        for (const pugi::xml_node& from : surface.children("init_from")) {
            const std::vector<std::string> id = tokensOf(lastText(from));
            const pugi::xml_node image = id.empty() ? pugi::xml_node() : m_references.byId(id.front());
            if (!image) {
                m_lines.emplace_back("libVideo.texture", "Surface initializer has no <init_from> child");
            }
            const std::string file =
                isNamed(image, "image") ? reference(lastText(image.child("init_from"))) : std::string();
            if (!file.empty()) {
                return file;
            }
        }
        return std::string();
    }

    References& m_references;
    std::vector<std::pair<std::string, std::string>>& m_lines;
};

// --- the document

// One `<source>` that an `<input>` of a sampler names.
struct Input {
    std::string semantic;
    std::uint32_t count = 0;
    std::uint32_t stride = 1;
    pugi::xml_node array; // the element that the accessor reads from; may be anything, or nothing
};

class Reader {
public:
    explicit Reader(const std::string& path)
    {
        const pugi::xml_parse_result result =
            m_xml.load_file(path.c_str(), pugi::parse_default | pugi::parse_doctype, pugi::encoding_auto);
        m_isWellFormed = static_cast<bool>(result);
        m_references =
            std::make_unique<References>(std::filesystem::path(path).filename().string(), m_xml.document_element());
        m_result.reason = "Collada file does not exist ";
    }

    PlainDocument read()
    {
        if (opens()) {
            try {
                readScene();
            } catch (const Thrown& thrown) {
                m_result.outcome = PlainDocument::Outcome::throws;
                m_result.reason = thrown.name;
                m_result.expression = thrown.expression;
            }
        }
        m_result.leadsElsewhere = m_references->leadElsewhere();
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

    void readScene()
    {
        const pugi::xml_node root = m_xml.document_element();
        const pugi::xml_node scene = root.child("scene");
        if (!scene) {
            m_result.reason = "Collada file does not have a scene definition ";
            return;
        }
        // Animations are loaded before the reference to the visual scene is resolved.
        readAnimations(root);
        const pugi::xml_node instance = scene.child("instance_visual_scene");
        if (!instance) {
            m_result.reason = "Scene does not have a visual scene";
            return;
        }
        const pugi::xml_node visualScene = m_references->resolve(instance, "url");
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
            readInstances();
            attachAnimations();
        }
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

    // Node by node. If one throws, the scene keeps what was loaded so far.
    void readInstances()
    {
        for (std::size_t i = 0; i < m_elements.size(); ++i) {
            for (const pugi::xml_node& instance : m_elements[i].children("instance_geometry")) {
                readInstance(instance, i);
            }
        }
    }

    void readInstance(const pugi::xml_node& instance, std::size_t node)
    {
        const pugi::xml_node geometry = m_references->resolve(instance, "url");
        if (!isNamed(geometry, "geometry")) {
            m_result.lines.emplace_back("libVideo.visualScene", "Not a geometry element");
            return;
        }
        const pugi::xml_node technique = instance.child("bind_material").child("technique_common");
        for (const pugi::xml_node& binding : technique.children("instance_material")) {
            const pugi::xml_node material = m_references->resolve(binding, "target");
            if (isNamed(material, "material")) {
                readMaterial(material, word(binding, "symbol"));
            }
        }
        const std::string id = word(geometry, "id");
        if (m_result.geometries.count(id) > 0) {
            m_result.lines.emplace_back("libVideo.visualScene", "Unable to initialize geometry instance");
            return;
        }
        const pugi::xml_node mesh = firstOf(geometry, {"convex_mesh", "mesh", "spline"});
        if (!isNamed(mesh, "mesh")) {
            m_result.lines.emplace_back("libVideo.geometry",
                                        "Program does not handle geometry type other than meshes right now.");
            return;
        }
        PlainGeometry read;
        read.name = word(geometry, "name");
        read.node = node;
        read.primitives = MeshReader(*m_references, m_result.lines).read(mesh);
        m_result.geometries.emplace(id, std::move(read));
    }

    // The first material of a symbol counts, and the first usable profile of an effect.
    void readMaterial(const pugi::xml_node& material, const std::string& symbol)
    {
        const pugi::xml_node effect = m_references->resolve(material.child("instance_effect"), "url");
        if (!isNamed(effect, "effect") || m_result.materials.count(symbol) > 0) {
            return;
        }
        for (const pugi::xml_node& profile : effect.children("profile_COMMON")) {
            const pugi::xml_node shader =
                firstOf(profile.child("technique"), {"blinn", "constant", "lambert", "phong"});
            if (isNamed(shader, "blinn") || isNamed(shader, "phong")) {
                m_result.materials.emplace(symbol, MaterialReader(*m_references, m_result.lines).read(shader, profile));
            }
        }
    }

    void readAnimations(const pugi::xml_node& root)
    {
        for (const pugi::xml_node& library : root.children("library_animations")) {
            for (const pugi::xml_node& element : library.children("animation")) {
                m_result.animations.push_back(readAnimation(element));
            }
        }
    }

    // An incomplete animation has no target.
    PlainAnimation readAnimation(const pugi::xml_node& element)
    {
        PlainAnimation animation;
        const pugi::xml_node channel = element.child("channel");
        if (!channel) {
            return animation;
        }
        const pugi::xml_node sampler = m_references->resolve(channel, "source");
        if (!isNamed(sampler, "sampler") || !sampler.child("input")) {
            return animation;
        }
        std::uint32_t records = 0;
        for (const pugi::xml_node& child : sampler.children("input")) {
            Input input;
            if (!readInput(child, input) || (records > 0 && input.count > records) || input.count > backed(input)) {
                return animation;
            }
            if (records == 0) {
                records = input.count;
            }
            const bool isFilled = countAttribute(input.array, "count", 0) > 0;
            if (isFilled && isNamed(input.array, "float_array")) {
                if (input.semantic == "INPUT" && input.stride == 0 && input.count > 0) {
                    throw Thrown{"IndexOutOfBounds", std::string()}; // a time without an element
                }
                if (input.semantic != "INPUT" && input.semantic != "OUTPUT" && input.semantic != "IN_TANGENT" &&
                    input.semantic != "OUT_TANGENT") {
                    return animation;
                }
            } else if (isFilled && isNamed(input.array, "Name_array")) {
                if (input.semantic != "INTERPOLATION" || input.stride > 1) {
                    return animation;
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
        return animation;
    }

    bool readInput(const pugi::xml_node& element, Input& input)
    {
        input.semantic = upperCase(word(element, "semantic"));
        const pugi::xml_node source = m_references->resolve(element, "source");
        const pugi::xml_node accessor = source.child("technique_common").child("accessor");
        if (!isNamed(source, "source") || !accessor) {
            return false;
        }
        input.count = countAttribute(accessor, "count", 0);
        input.stride = countAttribute(accessor, "stride", 1);
        input.array = m_references->resolve(accessor, "source");
        return true;
    }

    // The number of records that the array has values for.
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

    // An animation belongs to the first node with the id of its target, and there to the first transform with the sid.
    // An incomplete one looks for a node without id.
    void attachAnimations()
    {
        for (PlainAnimation& animation : m_result.animations) {
            animation.mayMeetCamera =
                animation.targetNode.empty() || isNamed(m_references->byId(animation.targetNode), "camera");
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

    pugi::xml_document m_xml;
    bool m_isWellFormed = false;
    std::unique_ptr<References> m_references;
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
