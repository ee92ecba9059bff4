#include "Motion.h"

#include "Numbers.h"
#include "Tree.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace libPrepare {

namespace {

// Finds descendants by sid: the one with the fewest levels in between, and of several the first.
class Sids {
public:
    explicit Sids(pugi::xml_node root) : m_root(root) {}

    pugi::xml_node find(pugi::xml_node above, const std::string& sid)
    {
        unsigned tries = 0;
        for (pugi::xml_node child = above.first_child(); child && tries < maxTries; child = child.next_sibling()) {
            if (sid == child.attribute("sid").value() && child.attribute("sid")) {
                return child;
            }
            ++tries;
        }
        index();
        const auto bearers = m_bearers.find(sid);
        const auto range = m_ranges.find(above.hash_value());
        if (bearers == m_bearers.end() || range == m_ranges.end()) {
            return {};
        }
        const auto [known, isNew] = m_found.try_emplace({range->second.first, sid});
        if (isNew) {
            const auto isBefore = [](const Bearer& bearer, std::size_t place) { return bearer.place < place; };
            const std::vector<Bearer>& all = bearers->second;
            const Bearer* best = nullptr;
            for (auto each = std::lower_bound(all.begin(), all.end(), range->second.first + 1, isBefore);
                 each != all.end() && each->place < range->second.second; ++each) {
                best = best == nullptr || each->depth < best->depth ? &*each : best;
            }
            known->second = best == nullptr ? pugi::xml_node() : best->element;
        }
        return known->second;
    }

private:
    struct Bearer {
        std::size_t place;
        std::size_t depth;
        pugi::xml_node element;
    };
    static constexpr unsigned maxTries = 64; // usually it is one of the first children

    void index()
    {
        if (!m_ranges.empty()) {
            return;
        }
        std::size_t place = 0;
        std::vector<pugi::xml_node> open;
        const auto close = [&](pugi::xml_node parent) {
            while (!open.empty() && open.back() != parent) {
                m_ranges[open.back().hash_value()].second = place;
                open.pop_back();
            }
        };
        for (pugi::xml_node node = m_root; node; node = next(node, m_root)) {
            if (node.type() != pugi::node_element) {
                continue;
            }
            close(node.parent());
            m_ranges[node.hash_value()].first = place;
            if (const pugi::xml_attribute sid = node.attribute("sid")) {
                m_bearers[sid.value()].push_back({place, open.size(), node});
            }
            open.push_back(node);
            ++place;
        }
        close({});
    }

    pugi::xml_node m_root;
    std::unordered_map<std::size_t, std::pair<std::size_t, std::size_t>>
        m_ranges;                                                   // places of an element and its descendants
    std::unordered_map<std::string, std::vector<Bearer>> m_bearers; // in document order
    std::map<std::pair<std::size_t, std::string>, pugi::xml_node> m_found;
};

// A target without its member, and which number the member names.
struct Aim {
    std::string_view name;
    std::optional<std::size_t> slot;
};

std::optional<std::size_t> memberSlot(std::string_view word)
{
    static constexpr struct {
        const char* word;
        std::size_t slot;
    } members[] = {{"X", 0}, {"Y", 1}, {"Z", 2}, {"W", 3}, {"R", 0}, {"G", 1}, {"B", 2},    {"A", 3},
                   {"S", 0}, {"T", 1}, {"P", 2}, {"Q", 3}, {"U", 0}, {"V", 1}, {"ANGLE", 3}};
    std::string upper(word);
    for (char& character : upper) {
        character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    for (const auto& member : members) {
        if (upper == member.word) {
            return member.slot;
        }
    }
    return {};
}

// First the whole word, since ids and sids may hold dots and brackets; then without brackets; then without the last dot.
std::vector<Aim> aims(std::string_view last)
{
    std::vector<Aim> result{{last, {}}};
    std::vector<long long> indices; // from the last bracket to the first
    std::string_view rest = last;
    while (!rest.empty() && rest.back() == ')') {
        const std::size_t open = rest.rfind('(');
        const std::vector<long long> values = open == std::string_view::npos
                                                  ? std::vector<long long>()
                                                  : integers(rest.substr(open + 1, rest.size() - open - 2));
        if (values.size() != 1 || values[0] < 0 || values[0] > 0xFFFF) {
            break;
        }
        indices.push_back(values[0]);
        rest = rest.substr(0, open);
    }
    if (!indices.empty()) {
        const std::size_t first = static_cast<std::size_t>(indices.back()); // the column, if there are two
        const bool isMatrix = indices.size() > 1;
        result.push_back({rest, isMatrix ? 4 * static_cast<std::size_t>(indices[indices.size() - 2]) + first : first});
    }
    const std::size_t dot = last.rfind('.');
    if (dot != std::string_view::npos) {
        if (const std::optional<std::size_t> slot = memberSlot(last.substr(dot + 1))) {
            result.push_back({last.substr(0, dot), slot});
        }
    }
    return result;
}

bool findTarget(Document& document, Sids& sids, Channel& channel)
{
    const std::string_view path = trimmed(channel.element.attribute("target").value());
    const std::size_t lastSlash = path.rfind('/');
    const bool hasSids = lastSlash != std::string_view::npos;
    for (const Aim& aim : aims(hasSids ? path.substr(lastSlash + 1) : path)) {
        const std::size_t firstSlash = std::min(path.find('/'), path.size());
        const std::string_view id = hasSids ? path.substr(0, firstSlash) : aim.name;
        pugi::xml_node element = document.resolve('#' + std::string(id));
        std::size_t at = firstSlash;
        while (element && hasSids && at < lastSlash) {
            const std::size_t end = path.find('/', at + 1);
            element = sids.find(element, std::string(path.substr(at + 1, end - at - 1)));
            at = end;
        }
        if (element && hasSids) {
            element = sids.find(element, std::string(aim.name));
        }
        if (element) {
            channel.target = is(element, "source") ? element.child("float_array") : element;
            channel.slot = aim.slot;
            return static_cast<bool>(channel.target);
        }
    }
    return false;
}

} // namespace

Motion::Motion(Document& document, Reading reading) : m_document(document)
{
    Sids sids(document.root());
    std::unordered_map<std::size_t, std::shared_ptr<const Curve>> curves;
    for (const pugi::xml_node library : document.root().children("library_animations")) {
        for (pugi::xml_node element = library; element; element = next(element, library)) {
            if (!is(element, "channel") || !is(element.parent(), "animation")) {
                continue;
            }
            Channel channel;
            channel.element = element;
            const pugi::xml_node sampler = document.resolve(element.attribute("source").value(), {"sampler"});
            if (sampler && findTarget(document, sids, channel)) {
                const auto [known, isNew] = curves.try_emplace(sampler.hash_value());
                if (isNew) {
                    known->second = Curve::read(m_document, sampler, reading);
                }
                channel.curve = known->second;
            }
            if (channel.curve == nullptr) {
                m_brokenChannels.push_back(element);
                continue;
            }
            m_byTarget[channel.target.hash_value()].push_back(m_channels.size());
            m_channels.push_back(std::move(channel));
        }
    }
}

const std::vector<std::size_t>& Motion::channelsOf(pugi::xml_node element) const
{
    static const std::vector<std::size_t> none;
    const auto found = m_byTarget.find(element.hash_value());
    return found == m_byTarget.end() ? none : found->second;
}

bool Motion::isNodeAnimated(pugi::xml_node node) const
{
    const auto children = node.children();
    return !m_byTarget.empty() && std::any_of(children.begin(), children.end(), [&](pugi::xml_node child) {
        return isTransform(child.name()) && isAnimated(child);
    });
}

std::vector<double> Motion::values(pugi::xml_node element, std::optional<double> time) const
{
    std::vector<double> result = numbersOf(element);
    const std::size_t size = transformSize(element.name());
    if (size > 0) {
        result.resize(size); // further numbers have no meaning
    }
    if (time) {
        apply(element, *time, result);
    }
    return result;
}

void Motion::apply(pugi::xml_node element, double time, std::vector<double>& values) const
{
    for (const std::size_t index : channelsOf(element)) {
        const Channel& channel = m_channels[index];
        const std::size_t width = channel.curve->width();
        if (!channel.slot && width == values.size()) {
            channel.curve->evaluate(time, values.data());
        } else if (!channel.slot && width == 1 && is(element, "rotate")) {
            channel.curve->evaluate(time, &values[3]);
        } else if (channel.slot && *channel.slot < values.size()) {
            values[*channel.slot] = channel.curve->evaluate(time, std::size_t(0));
        }
    }
}

Matrix4 Motion::localMatrix(pugi::xml_node node, std::optional<double> time) const
{
    Matrix4 result = identity();
    for (const pugi::xml_node child : node.children()) {
        if (isTransform(child.name())) {
            result = result * transformMatrix(child.name(), values(child, time));
        }
    }
    return result;
}

const Matrix4& Pose::world(pugi::xml_node node)
{
    static const Matrix4 none = identity();
    std::vector<pugi::xml_node> way;
    while (is(node, "node") && m_worlds.find(node.hash_value()) == m_worlds.end()) {
        way.push_back(node);
        node = node.parent();
    }
    const Matrix4* above = is(node, "node") ? &m_worlds.find(node.hash_value())->second : &none;
    for (; !way.empty(); way.pop_back()) {
        above =
            &m_worlds.emplace(way.back().hash_value(), *above * m_motion.localMatrix(way.back(), m_time)).first->second;
    }
    return *above;
}

} // namespace libPrepare
