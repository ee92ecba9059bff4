#include "Passes.h"

#include <libPrepare/document/Looks.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/geometry/Sources.h>

#include <algorithm>
#include <array>
#include <unordered_map>
#include <unordered_set>

namespace libPrepare {

namespace {

constexpr std::size_t maxInputs = 256;  // of a primitive; the rest is dropped
constexpr std::size_t widestRecord = 4; // values of an attribute that have a type

bool isKnown(std::string_view semantic)
{
    static constexpr std::array<std::string_view, 12> words = {
        "POSITION", "BINORMAL", "TEXCOORD", "TANGENT",       "WEIGHT",     "COLOR",
        "NORMAL",   "INPUT",    "OUTPUT",   "INTERPOLATION", "IN_TANGENT", "OUT_TANGENT"};
    std::string upper(semantic);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return std::find(words.begin(), words.end(), upper) != words.end();
}

// Names of the values of an attribute, in order.
const char* valueName(std::string_view semantic, std::size_t column)
{
    const char* const names = semantic == "COLOR" ? "RGBA" : semantic == "TEXCOORD" ? "STPQ" : "XYZW";
    static constexpr const char* letters[] = {"X", "Y", "Z", "W", "R", "G", "B", "A", "S", "T", "P", "Q"};
    for (const char* const letter : letters) {
        if (*letter == names[std::min<std::size_t>(column, 3)]) {
            return letter;
        }
    }
    return "X";
}

// Replaces a record that is missing. Black would hide a color, and a zero normal all light.
const char* neutralValue(std::string_view semantic, std::size_t column)
{
    return semantic == "COLOR" || (semantic == "NORMAL" && column == 2) ? "1" : "0";
}

std::string plural(std::size_t count, const std::string& noun)
{
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

// The requirements of the users of a source.
struct Demand {
    std::string semantic;
    std::size_t records = 0; // least number
    bool isMet = false;
};

// An input of a primitive in the result.
struct PlannedInput {
    pugi::xml_node element; // null if it comes from `<vertices>`
    std::string semantic;
    std::string_view reference;           // in an attribute of its element, or of the input of `<vertices>`
    const SourceLayout* layout = nullptr; // of the positions for VERTEX
    std::size_t offset = 0;
    long long set = 0;
};

class InputArranger {
public:
    explicit InputArranger(Document& document) : m_document(document), m_sources(document.sources()) {}

    void run()
    {
        findInstances();
        for (const pugi::xml_node library : m_document.root().children("library_geometries")) {
            for (const pugi::xml_node geometry : library.children("geometry")) {
                for (const pugi::xml_node body : geometry.children()) {
                    if (is(body, "mesh") || is(body, "convex_mesh")) {
                        arrangeMesh(geometry, body);
                    }
                }
            }
        }
        dropOtherVertices();
        for (const auto& vertices : m_vertices) {
            reduceVertices(vertices.second);
        }
        rewriteSources();
        m_sources.forget();
    }

private:
    // The instance that shows each geometry: it says which coordinates a texture takes.
    void findInstances()
    {
        const bool hasInstances = m_document.census().hasGeometryInstances;
        for (pugi::xml_node node = m_document.root(); hasInstances && node; node = nextElement(node)) {
            if (is(node, "instance_geometry") && is(node.parent(), "node")) {
                const pugi::xml_node geometry = m_document.resolve(node.attribute("url").value(), {"geometry"});
                m_instances.emplace(geometry.hash_value(), node);
            }
        }
    }

    // Nodes and their libraries in document order, without what lies in other libraries.
    pugi::xml_node nextElement(pugi::xml_node element) const
    {
        const pugi::xml_node root = m_document.root();
        const bool isOpen = element == root || is(element, "library_visual_scenes") || is(element, "visual_scene") ||
                            is(element, "library_nodes") || is(element, "node");
        if (isOpen && element.first_child()) {
            return element.first_child();
        }
        while (element != root && !element.next_sibling()) {
            element = element.parent();
        }
        return element == root ? pugi::xml_node() : element.next_sibling();
    }

    void arrangeMesh(pugi::xml_node geometry, pugi::xml_node body)
    {
        for (pugi::xml_node element = body.first_child(); element;) {
            const pugi::xml_node following = element.next_sibling();
            if (is(element, "triangles") || is(element, "lines") || is(element, "linestrips")) {
                arrangePrimitive(geometry, element);
            }
            element = following;
        }
        const pugi::xml_node vertices = body.child("vertices");
        if (vertices && m_vertices.count(vertices.hash_value()) == 0) {
            arrangePoints(vertices);
        }
        for (pugi::xml_node other = vertices.next_sibling("vertices"); other; other = other.next_sibling("vertices")) {
            m_otherVertices.push_back(other);
        }
    }

    // A mesh has one <vertices>, the first. Primitives that named another one name it now or were removed.
    void dropOtherVertices()
    {
        for (const pugi::xml_node other : m_otherVertices) {
            m_document.rewritten(other, "vertices",
                                 "A mesh has more than one <vertices>, of which the first alone is read.",
                                 "This one was taken out.");
            m_vertices.erase(other.hash_value());
            discard(other);
            m_document.forgetIds();
        }
    }

    // `<vertices>` that no primitive names: a cloud of points, all inputs of which are read.
    void arrangePoints(pugi::xml_node vertices)
    {
        for (const Input& input : inputsOf(vertices)) {
            PlannedInput planned{
                input.element, input.semantic, input.element.attribute("source").value(), nullptr, 0, 0};
            if (isReadable(vertices, planned)) {
                demand(planned.semantic, *planned.layout, planned.layout->count);
            } else {
                discard(input.element);
            }
        }
    }

    void arrangePrimitive(pugi::xml_node geometry, pugi::xml_node element)
    {
        const std::vector<Input> inputs = inputsOf(element);
        const SourceLayout* const positions = positionsOf(m_document, m_sources, inputs);
        const bool isRead = is(element, "triangles");
        if (positions == nullptr) {
            if (isRead) {
                m_document.lost(element, "positions", "A list of triangles has no positions that can be read.",
                                "Give it an input VERTEX that leads to <vertices> with positions.");
                m_document.report().changed = true;
                discard(element);
            }
            return;
        }
        std::vector<PlannedInput> plan = planInputs(element, inputs, positions, bindingOf(geometry, element));
        if (!nameFirstVertices(firstInput(inputs, "VERTEX")->element, *positions)) {
            m_document.lost(element, "positions",
                            std::string("A <") + element.name() +
                                "> has other positions than those of the first <vertices> of its mesh.",
                            "Give each mesh one <vertices>.");
            m_document.report().changed = true;
            discard(element);
            return;
        }
        if (!isRead) {
            write(element, inputs, plan);
            return;
        }
        sortSets(geometry, element, plan);
        if (arrangeIndices(element, inputs, plan)) {
            m_document.rewritten(element, "offsets",
                                 "Offsets of inputs leave gaps, or corners name records that are not there.",
                                 "The index list is written anew.");
        }
        write(element, inputs, plan);
        for (const PlannedInput& input : plan) {
            demand(input.semantic == "VERTEX" ? "POSITION" : input.semantic, *input.layout, input.layout->count);
        }
    }

    pugi::xml_node verticesOf(pugi::xml_node vertex)
    {
        return resolveNear(m_document, vertex.attribute("source").value(), {"vertices"}, vertex.parent().parent());
    }

    // Makes an input VERTEX that leads to another <vertices> of a mesh lead to the first. The plan has its inputs already.
    // @return false if the positions of the two differ
    bool nameFirstVertices(pugi::xml_node vertex, const SourceLayout& positions)
    {
        const pugi::xml_node own = verticesOf(vertex);
        const pugi::xml_node first = own.parent().child("vertices");
        if (own == first) {
            return true;
        }
        const std::vector<Input> inputs = inputsOf(first);
        const Input* const position = firstInput(inputs, "POSITION");
        if (position == nullptr ||
            m_document.resolve(position->element.attribute("source").value(), {"source"}) != positions.source) {
            return false;
        }
        m_vertices.emplace(first.hash_value(), first);
        if (*first.attribute("id").value() == '\0') {
            m_document.setId(first, m_document.freshId("vertices"));
        }
        setAttribute(vertex, "source", '#' + std::string(first.attribute("id").value()));
        return true;
    }

    // The inputs of a primitive and those of its `<vertices>`, without those that are not read.
    std::vector<PlannedInput> planInputs(pugi::xml_node element, const std::vector<Input>& inputs,
                                         const SourceLayout* positions, pugi::xml_node binding)
    {
        std::vector<PlannedInput> plan;
        const Input* const vertex = firstInput(inputs, "VERTEX");
        for (const Input& input : inputs) {
            PlannedInput planned{input.element, input.semantic, input.element.attribute("source").value(),
                                 positions,     input.offset,   input.set};
            const bool isVertex = &input == vertex;
            const bool isBeyond = static_cast<std::size_t>(&input - inputs.data()) >= maxInputs;
            if (!isVertex && (isBeyond || !isReadable(input.element, planned))) {
                continue;
            }
            plan.push_back(std::move(planned));
        }
        const pugi::xml_node vertices = verticesOf(vertex->element);
        m_vertices.emplace(vertices.hash_value(), vertices);
        std::size_t moved = 0;
        bool hasPosition = false;
        std::size_t place = 0;
        for (const Input& input : inputsOf(vertices)) {
            if (place++ >= maxInputs) {
                break;
            }
            if (input.semantic == "POSITION" && !hasPosition) {
                hasPosition = true;
                continue;
            }
            PlannedInput planned{{},      input.semantic, input.element.attribute("source").value(),
                                 nullptr, vertex->offset, 0};
            const bool isThere = std::any_of(plan.begin(), plan.end(), [&](const PlannedInput& other) {
                return other.semantic == planned.semantic;
            });
            if (isThere && planned.semantic != "TEXCOORD" && planned.semantic != "COLOR") {
                continue; // the primitive's own input takes precedence
            }
            if (plan.size() >= maxInputs || !isReadable(input.element, planned)) {
                continue;
            }
            for (const PlannedInput& other : plan) {
                if (other.semantic == planned.semantic) {
                    planned.set = std::max(planned.set, other.set + 1);
                }
            }
            for (const pugi::xml_node bind : binding.children("bind_vertex_input")) {
                if (isThere) { // these mean sets that have a number
                    planned.set = std::max(planned.set, setIn(bind) + 1);
                }
            }
            plan.push_back(std::move(planned));
            ++moved;
        }
        if (moved > 0) {
            m_document.rewritten(element, "vertices", "Inputs of <vertices> beside the positions are not read rightly.",
                                 plural(moved, "input") + " moved to the primitive.");
        }
        return plan;
    }

    // Whether an input leads to numbers and has a known semantic. Reports it otherwise.
    bool isReadable(pugi::xml_node where, PlannedInput& input)
    {
        const bool isPoint = is(where, "vertices");
        if (!isKnown(input.semantic) || (input.semantic == "POSITION" && !isPoint)) {
            if (m_reported.insert(where.hash_value()).second) {
                m_document.lost(where, "semantic",
                                "An input of the semantic " + input.semantic + " has no expression in the result.",
                                "It was taken out.");
                m_document.report().changed = true;
            }
            return false;
        }
        const pugi::xml_node body = isPoint ? where.parent() : where.parent().parent();
        input.layout = m_sources.find(resolveNear(m_document, input.reference, {"source"}, body));
        const std::size_t least = isPoint && input.semantic == "POSITION" ? 2 : 1; // values, as for positions of faces
        if (input.layout == nullptr || input.layout->width() < least || input.layout->count == 0) {
            if (m_reported.insert(where.hash_value()).second) {
                m_document.lost(where, "source", "An input " + input.semantic + " leads to no numbers.",
                                "It was taken out. Check its source and the accessor of that.");
                m_document.report().changed = true;
            }
            return false;
        }
        return true;
    }

    // Only the first of several sets is read, so the set of the diffuse texture, or else the lowest, comes first.
    void sortSets(pugi::xml_node geometry, pugi::xml_node element, std::vector<PlannedInput>& plan)
    {
        for (const char* const semantic : {"TEXCOORD", "COLOR", "NORMAL"}) {
            std::vector<std::size_t> places;
            for (std::size_t i = 0; i < plan.size(); ++i) {
                if (plan[i].semantic == semantic) {
                    places.push_back(i);
                }
            }
            if (places.size() < 2) {
                continue;
            }
            const auto bySet = [&](std::size_t a, std::size_t b) { return plan[a].set < plan[b].set; };
            std::size_t first = *std::min_element(places.begin(), places.end(), bySet);
            if (std::string_view(semantic) == "TEXCOORD") {
                const long long bound = boundSet(geometry, element, plan[first].set, plan);
                const auto found = std::find_if(places.begin(), places.end(),
                                                [&](std::size_t place) { return plan[place].set == bound; });
                first = found == places.end() ? first : *found;
            }
            if (first != places.front()) {
                std::rotate(plan.begin() + static_cast<std::ptrdiff_t>(places.front()),
                            plan.begin() + static_cast<std::ptrdiff_t>(first),
                            plan.begin() + static_cast<std::ptrdiff_t>(first) + 1);
                m_document.rewritten(element, "sets",
                                     std::string("Of several inputs ") + semantic + " the first is read alone.",
                                     "The one that is meant comes first.");
            }
        }
    }

    // The binding of a primitive's material; null if there is none.
    pugi::xml_node bindingOf(pugi::xml_node geometry, pugi::xml_node element) const
    {
        const auto instance = m_instances.find(geometry.hash_value());
        if (instance == m_instances.end()) {
            return {};
        }
        const std::string_view symbol = element.attribute("material").value();
        pugi::xml_node binding = descend(instance->second, "bind_material/technique_common").child("instance_material");
        while (binding && symbol != binding.attribute("symbol").value()) {
            binding = binding.next_sibling("instance_material");
        }
        return binding;
    }

    // The set that a `<bind_vertex_input>` means.
    static long long setIn(pugi::xml_node bind)
    {
        return static_cast<long long>(wholeOr(bind.attribute("input_set").value(), 0));
    }

    // The set of coordinates of the diffuse texture. Reports channels that use another one.
    long long boundSet(pugi::xml_node geometry, pugi::xml_node element, long long lowest,
                       const std::vector<PlannedInput>& plan)
    {
        const pugi::xml_node binding = bindingOf(geometry, element);
        if (!binding) {
            return lowest;
        }
        const pugi::xml_node shader = shadingOf(effectOf(m_document, materialOf(m_document, binding))).shader;
        const auto setOf = [&](pugi::xml_node texture) {
            const std::string_view name = texture.attribute("texcoord").value();
            for (const pugi::xml_node bind : binding.children("bind_vertex_input")) {
                if (texture.attribute("texcoord") && name == bind.attribute("semantic").value() &&
                    std::string_view(bind.attribute("input_semantic").value()) == "TEXCOORD" &&
                    *bind.attribute("input_set").value() != '\0') {
                    const long long set = setIn(bind);
                    const bool isThere = std::any_of(plan.begin(), plan.end(), [&](const PlannedInput& input) {
                        return input.semantic == "TEXCOORD" && input.set == set;
                    });
                    return isThere ? set : lowest;
                }
            }
            return lowest;
        };
        const pugi::xml_node diffuse = descend(shader, "diffuse/texture");
        const long long chosen = diffuse ? setOf(diffuse) : lowest;
        for (const pugi::xml_node channel : shader.children()) {
            const pugi::xml_node texture = channel.child("texture");
            if (texture && !is(channel, "diffuse") && setOf(texture) != chosen) {
                m_document.lost(texture, "texcoord",
                                std::string("The texture of <") + channel.name() +
                                    "> takes other coordinates than that of <diffuse>.",
                                "It gets those of <diffuse>. Give both the same set.");
            }
        }
        return chosen;
    }

    // An offset within the corners of a primitive that inputs read.
    struct Column {
        std::size_t offset;
        std::size_t limit; // records that the longest of its sources has, or the positions
        bool hasVertex = false;
    };

    // Makes offsets consecutive from 0, and all indices valid. @return whether `<p>` changed
    bool arrangeIndices(pugi::xml_node element, const std::vector<Input>& inputs, std::vector<PlannedInput>& plan)
    {
        const std::size_t stride = strideOf(inputs);
        const std::size_t corners = 3 * wholeOr(element.attribute("count").value(), 0);
        const pugi::xml_node list = element.child("p");
        const ColumnCensus& census = m_sources.census(list, stride, corners);
        const std::vector<Column> columns = columnsOf(plan);
        bool isSame = columns.size() == stride;
        for (const Column& column : columns) {
            isSame = areThere(element, plan, column, census) && isSame;
        }
        for (PlannedInput& input : plan) {
            const auto at = std::find_if(columns.begin(), columns.end(),
                                         [&](const Column& column) { return column.offset == input.offset; });
            input.offset = static_cast<std::size_t>(at - columns.begin());
        }
        if (isSame || !list) {
            return false;
        }
        rewriteIndices(list, columns, stride, census.tuples);
        return true;
    }

    // In ascending order.
    static std::vector<Column> columnsOf(const std::vector<PlannedInput>& plan)
    {
        std::vector<Column> columns;
        for (const PlannedInput& input : plan) {
            auto column = std::find_if(columns.begin(), columns.end(),
                                       [&](const Column& other) { return other.offset >= input.offset; });
            if (column == columns.end() || column->offset != input.offset) {
                column = columns.insert(column, {input.offset, 0});
            }
            if (input.semantic == "VERTEX") {
                column->limit = input.layout->count;
                column->hasVertex = true;
            } else if (!column->hasVertex) {
                column->limit = std::max(column->limit, input.layout->count);
            }
        }
        return columns;
    }

    // Whether all records that corners name in a column exist. Extends sources that are too short.
    bool areThere(pugi::xml_node element, const std::vector<PlannedInput>& plan, const Column& column,
                  const ColumnCensus& census)
    {
        const bool isInside = column.offset < census.greatest.size();
        const std::int32_t greatest = isInside ? census.greatest[column.offset] : -1;
        const std::size_t needed = greatest >= 0 ? static_cast<std::size_t>(greatest) + 1 : 0;
        const bool isBroken = isInside && (census.hasInvalid[column.offset] || needed > column.limit);
        const std::size_t records = isBroken ? column.limit + 1 : needed;
        for (const PlannedInput& input : plan) {
            if (input.offset == column.offset && input.semantic != "VERTEX" && records > input.layout->count) {
                pad(element, input, records);
            }
        }
        return !isBroken;
    }

    // Removes columns that no input reads. Invalid indices become that of the record after the last.
    static void rewriteIndices(pugi::xml_node list, const std::vector<Column>& columns, std::size_t stride,
                               std::size_t corners)
    {
        std::string scratch;
        const std::string_view text = textOf(list, scratch);
        const std::vector<std::int32_t> entries = indices(text);
        std::string result;
        result.reserve(text.size());
        for (std::size_t corner = 0; corner < corners; ++corner) {
            for (const Column& column : columns) {
                const std::int32_t index = entries[corner * stride + column.offset];
                const bool isThere = index >= 0 && static_cast<std::size_t>(index) < column.limit;
                appendEntry(result, isThere ? index : static_cast<long long>(column.limit));
            }
        }
        setText(list, result);
    }

    // Corners name more records than a source has.
    void pad(pugi::xml_node element, const PlannedInput& input, std::size_t records)
    {
        demand(input.semantic, *input.layout, records);
        m_document.rewritten(element, "indices",
                             "Corners name records of the source of " + input.semantic + " that are not there.",
                             "They get a neutral value.");
    }

    void demand(const std::string& semantic, const SourceLayout& layout, std::size_t records)
    {
        const auto [place, isNew] = m_demands.emplace(layout.source.hash_value(), m_demandOrder.size());
        if (isNew) {
            m_demandOrder.emplace_back(&layout, Demand{semantic, 0});
        }
        Demand& known = m_demandOrder[place->second].second;
        const bool isOther = semantic == "POSITION" && known.semantic != semantic;
        if (isNew || isOther || records > known.records) {
            known.semantic = isOther ? semantic : known.semantic;
            known.records = std::max(known.records, records);
            known.isMet = isPlain(layout, known); // now, while the source is in the processor's cache
        }
    }

    // Takes out the inputs that are not planned.
    static void dropOthers(const std::vector<Input>& inputs, const std::vector<PlannedInput>& plan)
    {
        std::unordered_set<std::size_t> kept;
        if (plan.size() == inputs.size() &&
            std::equal(plan.begin(), plan.end(), inputs.begin(), [](const PlannedInput& planned, const Input& input) {
                return planned.element == input.element;
            })) {
            return; // the usual case
        }
        for (const PlannedInput& planned : plan) {
            kept.insert(planned.element.hash_value());
        }
        for (const Input& input : inputs) {
            if (kept.count(input.element.hash_value()) == 0) {
                discard(input.element);
            }
        }
    }

    void write(pugi::xml_node element, const std::vector<Input>& inputs, const std::vector<PlannedInput>& plan)
    {
        dropOthers(inputs, plan);
        pugi::xml_node last;
        for (const PlannedInput& planned : plan) {
            pugi::xml_node input = planned.element;
            if (!input) {
                input = last ? element.insert_child_after("input", last) : element.prepend_child("input");
                setAttribute(input, "semantic", planned.semantic);
                setAttribute(input, "source", std::string(planned.reference));
                setAttribute(input, "offset", std::to_string(planned.offset));
                if (planned.set > 0) {
                    setAttribute(input, "set", std::to_string(planned.set));
                }
            } else {
                const std::string offset = std::to_string(planned.offset);
                const pugi::xml_attribute written = input.attribute("offset");
                if (offset != (written ? written.value() : "0")) {
                    setAttribute(input, "offset", offset);
                    m_document.report().changed = true;
                }
                if (last && !isAfter(input, last)) {
                    element.insert_move_after(input, last);
                }
            }
            last = input;
        }
    }

    static bool isAfter(pugi::xml_node node, pugi::xml_node other)
    {
        pugi::xml_node next = other.next_sibling();
        while (next && !is(next, "input")) {
            next = next.next_sibling();
        }
        return next == node;
    }

    // Only the positions stay; the primitives have all other inputs now.
    void reduceVertices(pugi::xml_node vertices)
    {
        bool hasPosition = false;
        for (pugi::xml_node input = vertices.child("input"); input;) {
            const pugi::xml_node following = input.next_sibling("input");
            const bool isPosition = trimmed(input.attribute("semantic").value()) == "POSITION";
            if (!isPosition || hasPosition) {
                discard(input);
                m_document.report().changed = true;
            }
            hasPosition = hasPosition || isPosition;
            input = following;
        }
    }

    // Sources that the library would misread get a plain array and accessor.
    void rewriteSources()
    {
        struct Change {
            const SourceLayout* layout;
            std::string semantic;
            std::vector<std::string> names;
            std::size_t count;
            std::string text;
        };
        std::vector<Change> changes;
        for (const auto& [layout, demand] : m_demandOrder) {
            if (demand.isMet) {
                continue;
            }
            Change change{layout, demand.semantic, {}, std::max(layout->count, demand.records), {}};
            change.names = valueNames(*layout, demand.semantic);
            if (!m_document.takeBytes(2 * change.count * change.names.size())) {
                m_document.lost(layout->source, "size", "A source would make the result too big.",
                                "It stays as it is and is not read rightly.");
                continue;
            }
            change.text = plainText(*layout, demand.semantic, change.count, change.names.size());
            changes.push_back(std::move(change));
        }
        for (Change& change : changes) { // only now, as sources may share arrays
            write(*change.layout, change.names, change.count, change.text);
            m_document.rewritten(change.layout->source, "source",
                                 "A source of " + change.semantic + " is laid out in a way that is not read rightly.",
                                 "Its numbers lie one after the other now.");
        }
    }

    // Whether the library reads a source as its accessor says.
    static bool isPlain(const SourceLayout& layout, const Demand& demand)
    {
        std::size_t params = 0;
        for (const pugi::xml_node param : layout.accessor.children("param")) {
            const std::string_view type = trimmed(param.attribute("type").value());
            constexpr std::string_view word = "float";
            const auto isSame = [](char letter, char other) { return (letter | 0x20) == other; };
            if (!std::equal(type.begin(), type.end(), word.begin(), word.end(), isSame) ||
                *param.attribute("name").value() == '\0') {
                return false;
            }
            ++params;
        }
        return layout.array == layout.source.child("float_array") && layout.offset == 0 && params == layout.stride &&
               layout.width() == params && params <= widestRecord && (demand.semantic != "POSITION" || params >= 3) &&
               demand.records <= layout.count && wholeOr(layout.accessor.attribute("count").value(), 0) == layout.count;
    }

    static std::vector<std::string> valueNames(const SourceLayout& layout, const std::string& semantic)
    {
        std::vector<std::string> names(std::min(layout.width(), widestRecord));
        std::vector<std::string> given;
        for (const pugi::xml_node param : layout.accessor.children("param")) {
            const std::string_view type = trimmed(param.attribute("type").value());
            if (type.find_first_of("123456789") != std::string_view::npos) {
                given.clear(); // one param for several values: their names are our own
                break;
            }
            given.emplace_back(param.attribute("name").value());
        }
        for (std::size_t i = 0; i < names.size(); ++i) {
            const std::size_t column = layout.columns[i];
            const bool isGiven = column < given.size() && !given[column].empty();
            names[i] = isGiven ? given[column] : valueName(semantic, i);
        }
        while (semantic == "POSITION" && names.size() < 3) {
            names.emplace_back(valueName(semantic, names.size()));
        }
        return names;
    }

    // The words of the selected values, record by record; missing ones are neutral.
    static std::string plainText(const SourceLayout& layout, const std::string& semantic, std::size_t count,
                                 std::size_t width)
    {
        std::string scratch;
        const std::vector<std::string_view> all = words(textOf(layout.array, scratch));
        std::string result;
        result.reserve(count * width * 8);
        for (std::size_t record = 0; record < count; ++record) {
            for (std::size_t i = 0; i < width; ++i) {
                const std::size_t at =
                    i < layout.width() ? layout.offset + record * layout.stride + layout.columns[i] : all.size();
                if (!result.empty()) {
                    result += ' ';
                }
                result += record < layout.count && at < all.size() ? all[at] : neutralValue(semantic, i);
            }
        }
        return result;
    }

    void write(const SourceLayout& layout, const std::vector<std::string>& names, std::size_t count,
               const std::string& text)
    {
        pugi::xml_node source = layout.source;
        pugi::xml_node array = layout.array;
        if (array.parent() != source) {
            array = source.prepend_child("float_array");
        } else if (is(array, "int_array")) {
            array.set_name("float_array");
            array.remove_attribute("minInclusive");
            array.remove_attribute("maxInclusive");
        }
        if (*array.attribute("id").value() == '\0') {
            m_document.setId(array, m_document.freshId(std::string(source.attribute("id").value()) + "-array"));
        }
        setAttribute(array, "count", std::to_string(count * names.size()));
        setText(array, text);
        pugi::xml_node accessor = layout.accessor;
        setAttribute(accessor, "source", '#' + std::string(array.attribute("id").value()));
        setAttribute(accessor, "count", std::to_string(count));
        setAttribute(accessor, "stride", std::to_string(names.size()));
        accessor.remove_attribute("offset");
        while (const pugi::xml_node param = accessor.child("param")) {
            discard(param);
        }
        for (const std::string& name : names) {
            pugi::xml_node param = accessor.append_child("param");
            setAttribute(param, "name", name);
            setAttribute(param, "type", "float");
        }
    }

    Document& m_document;
    Sources& m_sources;
    std::unordered_map<std::size_t, pugi::xml_node> m_instances; // by geometry
    std::unordered_map<std::size_t, pugi::xml_node> m_vertices;  // that primitives name
    std::vector<pugi::xml_node> m_otherVertices;                 // beyond the first of a mesh
    std::unordered_set<std::size_t> m_reported;                  // inputs that several primitives share
    std::unordered_map<std::size_t, std::size_t> m_demands;
    std::vector<std::pair<const SourceLayout*, Demand>> m_demandOrder;
};

} // namespace

void arrangeInputs(Document& document)
{
    InputArranger(document).run();
}

} // namespace libPrepare
