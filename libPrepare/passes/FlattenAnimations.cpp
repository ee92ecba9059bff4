#include "Optics.h"
#include "Passes.h"

#include <libPrepare/document/FlatCurve.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace libPrepare {

namespace {

bool isNothingMoving(const Curve& curve)
{
    return !(curve.lastTime() > curve.firstTime()) || !(curve.lastTime() > 0);
}

pugi::xml_node topAnimationOf(pugi::xml_node element)
{
    while (element && !is(element.parent(), "library_animations")) {
        element = element.parent();
    }
    return element;
}

// Replaces the numbers of a list. Words whose number does not change keep their text.
// @return whether one has changed
bool replaceNumbers(pugi::xml_node element, const std::vector<double>& numbers, const std::vector<double>& tolerances)
{
    std::string scratch;
    const std::string_view before = textOf(element, scratch);
    std::string after;
    std::size_t index = 0;
    bool isChanged = false;
    const std::vector<std::string_view> given = words(before);
    for (; index < std::max(given.size(), numbers.size()); ++index) {
        after += index == 0 ? "" : " ";
        const double declared = index < given.size() ? number(given[index]) : NAN;
        if (index >= numbers.size() || std::abs(declared - numbers[index]) <= tolerances[index]) {
            after += given[index];
        } else {
            append(after, numbers[index]);
            isChanged = true;
        }
    }
    if (isChanged) {
        setText(element, after);
    }
    return isChanged;
}

// One target with all channels that drive it.
struct Job {
    pugi::xml_node element;            // a transform, or a number of a <perspective>
    std::vector<std::size_t> channels; // none for a number that an animated camera needs besides
    pugi::xml_node top;                // the animation that the new one replaces
    std::optional<FlatCurve> curve;    // absent: the animation stays as it is, or becomes the declared value
    bool stays = false;
    std::string target;
    std::vector<std::string> oldIds; // of the animations that the channels were in
    std::string newId;
};

class Flattening {
public:
    explicit Flattening(Document& document)
        : m_document(document), m_motion(document, Reading::onDemand), m_sampling(document.options())
    {}

    void run()
    {
        if (m_motion.channels().empty() && m_motion.brokenChannels().empty()) {
            return;
        }
        findShown();
        collect();
        for (Job& job : m_jobs) {
            if (is(job.element.parent(), "node")) {
                arrangeTransform(job);
            }
        }
        for (const pugi::xml_node perspective : m_perspectives) {
            arrangeCamera(perspective);
        }
        replace();
        adaptClips();
    }

private:
    void findShown()
    {
        const pugi::xml_node scene = shownScene(m_document);
        for (const pugi::xml_node node : nodesIn(scene)) {
            m_shown.insert(node.hash_value());
            for (const pugi::xml_node instance : node.children("instance_camera")) {
                const pugi::xml_node camera = m_document.resolve(instance.attribute("url").value(), {"camera"});
                m_shown.insert(perspectiveOf(camera).hash_value());
            }
        }
    }

    bool hasEffect(const Channel& channel) const
    {
        const std::size_t width = channel.curve->width();
        const std::size_t size = std::max<std::size_t>(transformSize(channel.target.name()), 1);
        return channel.slot ? *channel.slot < size : width == size || (width == 1 && is(channel.target, "rotate"));
    }

    void collect()
    {
        std::unordered_map<std::size_t, std::size_t> jobs;
        const std::vector<Channel>& channels = m_motion.channels();
        for (std::size_t i = 0; i < channels.size(); ++i) {
            const Channel& channel = channels[i];
            const pugi::xml_node parent = channel.target.parent();
            const bool isDriven =
                m_shown.count(parent.hash_value()) > 0 &&
                (isOptic(channel.target) || (is(parent, "node") && isTransform(channel.target.name())));
            const pugi::xml_node top = topAnimationOf(channel.element);
            if (isTransform(channel.target.name()) || isDriven) {
                m_end = std::max(m_end, channel.curve->lastTime());
            }
            if (isDriven && !hasEffect(channel)) {
                leaveOut(channel.element, "its values are not as many as those of its target");
                continue;
            }
            if (!isDriven) {
                ++m_tops[top.hash_value()].others;
                continue;
            }
            const auto [known, isNew] = jobs.try_emplace(channel.target.hash_value(), m_jobs.size());
            if (isNew) {
                m_jobs.emplace_back();
                m_jobs.back().element = channel.target;
                m_jobs.back().top = top;
                if (isOptic(channel.target)) {
                    std::vector<std::size_t>& optics = m_optics[parent.hash_value()];
                    if (optics.empty()) {
                        m_perspectives.push_back(parent);
                    }
                    optics.push_back(known->second);
                }
            }
            m_jobs[known->second].channels.push_back(i);
        }
        for (const pugi::xml_node broken : m_motion.brokenChannels()) {
            leaveOut(broken, "its target is not there, or it has no keys");
        }
    }

    void leaveOut(pugi::xml_node channel, const char* why)
    {
        m_document.lost(channel, "animation",
                        "The animation of \"" + std::string(channel.attribute("target").value()) +
                            "\" is left out: " + why + ".",
                        "Correct the <channel> and its <sampler>.");
        m_leftOut.push_back(channel);
    }

    // The numbers of a target; nothing if the scene graph cannot animate them in such an element.
    std::optional<std::vector<Component>> componentsOf(const Job& job, const std::vector<double>& declared) const
    {
        std::vector<Component> all(declared.size());
        for (std::size_t c = 0; c < all.size(); ++c) {
            all[c].constant = declared[c];
        }
        const bool isRotate = is(job.element, "rotate");
        for (const std::size_t index : job.channels) {
            const Channel& channel = m_motion.channels()[index];
            const Curve* const curve = channel.curve.get();
            if (channel.slot) {
                all[*channel.slot] = {curve, 0, 0};
            } else if (curve->width() == 1) {
                all[isRotate ? 3 : 0] = {curve, 0, 0};
            }
            for (std::size_t c = 0; !channel.slot && curve->width() == all.size() && c < all.size(); ++c) {
                all[c] = {curve, c, 0};
            }
        }
        if (!isRotate) {
            const bool isKnown = !is(job.element, "lookat") && !is(job.element, "skew");
            return isKnown ? std::optional(all) : std::nullopt;
        }
        for (std::size_t c = 0; c < 3; ++c) { // the axis
            for (std::size_t key = 0; all[c].curve != nullptr && key < all[c].curve->count(); ++key) {
                const double value = all[c].curve->values(key)[all[c].index];
                if (std::abs(value - declared[c]) > 1e-9 || all[c].curve->kind(key) == Interpolation::bezier ||
                    all[c].curve->kind(key) == Interpolation::hermite) {
                    return std::nullopt;
                }
            }
        }
        return std::vector<Component>{all[3]};
    }

    // Gives a transform a sid that a target can name.
    std::string targetOf(pugi::xml_node element)
    {
        pugi::xml_node owner = element.parent();
        if (is(owner, "perspective")) {
            owner = owner.parent().parent().parent();
        }
        std::string id = owner.attribute("id").value();
        if (id.empty()) {
            const std::string name = plain(owner.attribute("name").value());
            id = m_document.freshId(name.empty() ? owner.name() : name.c_str());
            m_document.setId(owner, id);
            m_document.rewritten(owner, "id", "The animated <" + std::string(owner.name()) + "> has an id now.");
        }
        const std::string sid = element.attribute("sid").value();
        std::unordered_set<std::string>& taken = takenSids(element.parent());
        const auto bearer = m_firstBySid.find({element.parent().hash_value(), sid});
        const bool isFirst = bearer == m_firstBySid.end() || bearer->second == element;
        if (!sid.empty() && isFirst && sid.find_first_of("./ \t\r\n") == std::string::npos) {
            return id + '/' + sid;
        }
        std::string start = plain(sid.empty() ? element.name() : sid.c_str());
        std::replace(start.begin(), start.end(), '.', '_');
        std::string fresh = start;
        for (unsigned number = 2; !taken.insert(fresh).second; ++number) {
            fresh = start + '-' + std::to_string(number);
        }
        m_document.rewritten(element, "sid",
                             "The sid of an animated <" + std::string(element.name()) + "> is \"" + fresh +
                                 "\" now, which a target can name.");
        setAttribute(element, "sid", fresh);
        return id + '/' + fresh;
    }

    std::unordered_set<std::string>& takenSids(pugi::xml_node parent)
    {
        const auto [known, isNew] = m_takenSids.try_emplace(parent.hash_value());
        for (const pugi::xml_node child : parent.children()) {
            if (!isNew) {
                break;
            }
            if (const pugi::xml_attribute sid = child.attribute("sid")) {
                known->second.insert(sid.value());
                m_firstBySid.try_emplace({parent.hash_value(), sid.value()}, child);
            }
        }
        return known->second;
    }

    // Whether the scene graph reads the animation of a job correctly, and plays it as long as all others.
    bool canStay(const Job& job, double tolerance) const
    {
        const Channel& channel = m_motion.channels()[job.channels.front()];
        const pugi::xml_node animation = channel.element.parent();
        if (job.channels.size() != 1 || animation != job.top || animation.child("animation") ||
            channel.element.previous_sibling("channel") || channel.element.next_sibling("channel")) {
            return false;
        }
        const bool isAngle = is(job.element, "rotate");
        const std::string given = channel.element.attribute("target").value();
        const bool isWhole = given == job.target && (!channel.slot || channel.slot == 3U);
        const bool isMember = isAngle && channel.slot == 3U && given == job.target + ".ANGLE";
        const std::size_t width = isAngle ? 1 : std::max<std::size_t>(transformSize(job.element.name()), 1);
        return (isWhole || isMember) && channel.curve->width() == width && !isNothingMoving(*channel.curve) &&
               channel.curve->lastTime() >= m_end - 1e-6 * std::max(1.0, m_end) && isFlat(*channel.curve, tolerance);
    }

    bool isStill(const Job& job) const
    {
        return std::all_of(job.channels.begin(), job.channels.end(),
                           [&](std::size_t index) { return isNothingMoving(*m_motion.channels()[index].curve); });
    }

    void declare(const Job& job, const std::vector<double>& numbers, const std::vector<double>& tolerances)
    {
        const std::string before = trimmedText(job.element);
        if (replaceNumbers(job.element, numbers, tolerances)) {
            if (isTransform(job.element.name())) {
                m_document.setAtStart();
            }
            m_document.rewritten(job.element, "declared value",
                                 "The declared value of the animated <" + std::string(job.element.name()) +
                                     "> is that of its curve at second 0 now" +
                                     (before.size() < 200 ? "; it was " + before + "." : std::string(".")));
        }
    }

    static std::string trimmedText(pugi::xml_node element) { return std::string(trimmed(textOf(element))); }

    // How much a declared number may differ from its curve at second 0: the resolution of single precision.
    static std::vector<double> slack(const std::vector<double>& numbers, const std::vector<double>& declared)
    {
        std::vector<double> result(std::max(numbers.size(), declared.size()));
        const bool isMatrix = result.size() == 16;
        double sizes[2] = {0, 0};
        const auto group = [&](std::size_t i) { return isMatrix && i % 4 == 3 && i < 12 ? 1U : 0U; };
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            sizes[group(i)] = std::max(sizes[group(i)], std::abs(numbers[i]));
        }
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] = 1e-6 * sizes[group(i)];
        }
        return result;
    }

    void arrangeTransform(Job& job)
    {
        std::vector<double> declared = m_motion.values(job.element, {});
        std::replace_if(
            declared.begin(), declared.end(), [](double value) { return !std::isfinite(value); },
            0.0); // keys are finite
        const bool isAngle = is(job.element, "rotate");
        std::vector<double> atStart = declared;
        m_motion.apply(job.element, 0, atStart);
        const std::optional<std::vector<Component>> components = componentsOf(job, declared);
        const bool isAxisNothing = isAngle && declared[0] == 0 && declared[1] == 0 && declared[2] == 0;
        const bool isResultStill =
            components && std::all_of(components->begin(), components->end(), [](const Component& component) {
                return component.curve == nullptr || isNothingMoving(*component.curve);
            }); // though a channel that a later one replaces may move
        if (isStill(job) || isResultStill || (components && isAxisNothing)) {
            reportStill(job);
            declare(job, atStart, slack(atStart, declared));
            return;
        }
        job.target = targetOf(job.element);
        if (components) {
            const Measure measure = isAngle                     ? Measure::degrees
                                    : is(job.element, "matrix") ? Measure::matrix
                                                                : Measure::length;
            if (canStay(job, stayTolerance(job, measure))) {
                job.stays = true;
            } else {
                job.curve = FlatCurve::combine(*components, measure, m_sampling);
            }
            declare(job, atStart, slack(atStart, declared));
            if (!job.stays) {
                reportFlat(job);
            }
            return;
        }
        const std::string name = job.element.name();
        std::vector<const Curve*> curves;
        for (const std::size_t index : job.channels) {
            curves.push_back(m_motion.channels()[index].curve.get());
        }
        std::vector<double> values;
        const auto function = [&](double time, double* result) {
            values = declared;
            m_motion.apply(job.element, time, values);
            const Matrix4 matrix = transformMatrix(name.c_str(), values);
            for (unsigned i = 0; i < 16; ++i) {
                result[i] = matrix[i];
            }
        };
        job.curve = FlatCurve::sample(16, function, keyTimes(curves), Measure::matrix, m_sampling);
        m_document.rewritten(job.element, name.c_str(),
                             "The animated <" + name + "> became the <matrix> that it stands for, at second 0.");
        setText(job.element, text(transformMatrix(name.c_str(), atStart)));
        job.element.set_name("matrix");
        reportFlat(job);
    }

    double stayTolerance(const Job& job, Measure measure) const
    {
        const Curve& curve = *m_motion.channels()[job.channels.front()].curve;
        if (measure == Measure::degrees || curve.isStraight()) { // which stays at any tolerance
            return m_sampling.tolerance;
        }
        double largest = 0;
        for (std::size_t c = 0; c < curve.width(); ++c) {
            largest = std::max(largest, largestOf(curve, c));
        }
        return m_sampling.tolerance * largest;
    }

    void reportStill(const Job& job)
    {
        m_document.rewritten(m_motion.channels()[job.channels.front()].element, "animation without motion",
                             "The animation of a <" + std::string(job.element.name()) +
                                 "> does not move it; its value is declared now.");
    }

    void reportFlat(const Job& job)
    {
        const pugi::xml_node where =
            job.channels.empty() ? job.element : m_motion.channels()[job.channels.front()].element;
        m_document.rewritten(where, "animation",
                             "The animation of \"" + job.target + "\" is one curve of " +
                                 std::to_string(job.curve->count()) + " whole values now.");
        for (const std::size_t index : job.channels) {
            const Channel& channel = m_motion.channels()[index];
            if (channel.curve->firstTime() < 0) {
                m_document.lost(channel.element, "keys before 0", "The curve begins before second 0 and is cut there.",
                                "Move the keys so that the first is at 0.");
            }
        }
    }

    // The numbers of an animated camera, as they are before it is completed.
    struct AnimatedOptics {
        std::map<std::string, std::size_t> jobs; // by the name of the element
        bool isMoving = false;
        bool isXDerived = false; // from the other angle
        bool isYDerived = false;
        Component x;
        Component y;
        Component aspect;

        // The angle that follows from the other one.
        double derivedAt(bool isX, double time) const
        {
            return isX ? otherAngle(y.at(time), aspect.at(time)) : otherAngle(x.at(time), 1 / aspect.at(time));
        }
    };

    AnimatedOptics opticsOf(pugi::xml_node perspective) const
    {
        AnimatedOptics result;
        for (const std::size_t i : m_optics.at(perspective.hash_value())) {
            result.jobs[m_jobs[i].element.name()] = i;
            result.isMoving = result.isMoving || !isStill(m_jobs[i]);
        }
        result.x = componentOf(result, perspective, "xfov");
        result.y = componentOf(result, perspective, "yfov");
        result.aspect = componentOf(result, perspective, "aspect_ratio");
        if (result.aspect.curve == nullptr || m_document.options().aspect) {
            result.aspect.curve = nullptr;
            result.aspect.constant = aspectOf(m_document, perspective);
        }
        const bool hasX = static_cast<bool>(perspective.child("xfov"));
        const bool hasY = static_cast<bool>(perspective.child("yfov"));
        result.isXDerived = hasY && !hasX;
        result.isYDerived = hasX && !hasY;
        return result;
    }

    Component componentOf(const AnimatedOptics& optics, pugi::xml_node perspective, const char* name) const
    {
        constexpr double largest = 1e30; // keys are finite, as a float too
        Component result;
        result.constant = std::clamp(numberOr(textOf(perspective.child(name)), 0), -largest, largest);
        const auto found = optics.jobs.find(name);
        if (found != optics.jobs.end()) {
            result.curve = m_motion.channels()[m_jobs[found->second].channels.back()].curve.get();
        }
        return result;
    }

    // An animated camera ignores declared numbers, so each number needs a curve.
    void arrangeCamera(pugi::xml_node perspective)
    {
        const AnimatedOptics optics = opticsOf(perspective);
        const pugi::xml_node top = m_jobs[optics.jobs.begin()->second].top;
        completePerspective(m_document, perspective);
        for (const char* const name : {"xfov", "yfov", "znear", "zfar"}) {
            const auto found = optics.jobs.find(name);
            const bool isNew = found == optics.jobs.end();
            if (isNew && !optics.isMoving) {
                continue;
            }
            if (isNew) {
                m_jobs.emplace_back();
                m_jobs.back().element = perspective.child(name);
                m_jobs.back().top = top;
            }
            arrangeOptic(isNew ? m_jobs.back() : m_jobs[found->second], optics, componentOf(optics, perspective, name));
        }
    }

    // @param own the number of the job
    void arrangeOptic(Job& job, const AnimatedOptics& optics, const Component& own)
    {
        const bool isX = is(job.element, "xfov");
        const bool isAngle = isX || is(job.element, "yfov");
        const Measure measure = isAngle ? Measure::degrees : Measure::length;
        const bool isDerived = isX ? optics.isXDerived : isAngle && optics.isYDerived;
        const std::vector<double> first{isDerived ? optics.derivedAt(isX, 0) : own.at(0)};
        if (!optics.isMoving) {
            reportStill(job);
            declare(job, first, slack(first, first));
            return;
        }
        job.target = targetOf(job.element);
        std::vector<const Curve*> sources;
        for (const Curve* const curve : {(isX ? optics.y : optics.x).curve, optics.aspect.curve}) {
            if (isDerived && curve != nullptr) {
                sources.push_back(curve);
            }
        }
        if (!sources.empty()) {
            const auto angle = [&](double time, double* result) { *result = optics.derivedAt(isX, time); };
            job.curve = FlatCurve::sample(1, angle, keyTimes(sources), measure, m_sampling);
        } else if (own.curve == nullptr || isNothingMoving(*own.curve)) {
            job.curve = FlatCurve::constant(first);
        } else if (canStay(job, stayTolerance(job, measure))) {
            job.stays = true;
        } else {
            job.curve = FlatCurve::combine({own}, measure, m_sampling);
        }
        declare(job, first, slack(first, first));
        if (!job.stays) {
            reportFlat(job);
        }
    }

    // Takes out the animations whose channels have new curves or drive nothing, and writes the new ones in their places.
    void replace()
    {
        for (Job& job : m_jobs) {
            settle(job);
        }
        for (const pugi::xml_node channel : m_leftOut) {
            leaveOut(topAnimationOf(channel));
            m_document.report().changed = true;
        }
        removeChannels();
        for (const pugi::xml_node place : m_replaced) {
            clear(place);
        }
        if (!m_replaced.empty()) {
            m_document.forgetIds();
        }
        for (const pugi::xml_node place : m_replaced) {
            write(m_tops[place.hash_value()], place);
        }
        for (const Job& job : m_jobs) { // next to animations that stay: the other numbers of a camera
            Top& top = m_tops[job.top.hash_value()];
            if (!top.isSeen && !top.jobs.empty()) {
                top.isSeen = true;
                write(top, job.top);
            }
        }
    }

    // Notes what becomes of the animations of a job. Its curve is dropped if it would be too large.
    void settle(Job& job)
    {
        Top& top = m_tops[job.top.hash_value()];
        top.stays = top.stays || job.stays;
        if (job.curve) {
            job.curve->extendTo(m_end);
            if (!m_document.takeBytes(job.curve->size())) {
                m_document.lost(job.element, "size", "The animation of \"" + job.target + "\" is too large.",
                                "Raise the limit of the size, or the tolerance.");
                job.curve.reset();
            }
        }
        for (const std::size_t index : job.channels) {
            const Channel& channel = m_motion.channels()[index];
            rememberIds(job, channel.element);
            if (!job.stays) {
                leaveOut(topAnimationOf(channel.element));
            }
        }
        if (job.curve) {
            top.jobs.push_back(&job);
        }
    }

    // Notes an animation with channels that are taken out.
    void leaveOut(pugi::xml_node place)
    {
        Top& top = m_tops[place.hash_value()];
        if (!top.isSeen) {
            top.isSeen = true;
            m_replaced.push_back(place);
        }
    }

    void removeChannels()
    {
        std::vector<pugi::xml_node> channels = m_leftOut;
        for (const Job& job : m_jobs) {
            for (std::size_t i = 0; !job.stays && i < job.channels.size(); ++i) {
                channels.push_back(m_motion.channels()[job.channels[i]].element);
            }
        }
        for (const pugi::xml_node channel : channels) {
            removeElement(channel);
        }
    }

    // Removes an animation, or its content if new curves take its place, unless other channels need it.
    void clear(pugi::xml_node place)
    {
        Top& top = m_tops[place.hash_value()];
        if (top.others > 0 || top.stays) {
            return;
        }
        if (top.jobs.empty()) {
            removeElement(place);
        } else {
            setText(place, {});
            top.isEmptied = true;
        }
    }

    struct Top {
        std::size_t others = 0; // channels that are not of this pass
        bool stays = false;
        bool isSeen = false;
        bool isEmptied = false;
        std::vector<Job*> jobs;
    };

    void write(const Top& top, pugi::xml_node place)
    {
        pugi::xml_node last = place;
        for (Job* const job : top.jobs) {
            const bool isInPlace = top.isEmptied && job == top.jobs.front();
            pugi::xml_node animation = isInPlace ? place : place.parent().insert_child_after("animation", last);
            last = animation;
            job->newId = animation.attribute("id").value();
            if (job->newId.empty()) {
                std::string wish = plain(job->target);
                std::replace(wish.begin(), wish.end(), '/', '-');
                job->newId = m_document.freshId(wish);
                m_document.setId(animation, job->newId);
            }
            job->curve->write(m_document, animation, plain(job->newId), job->target);
        }
    }

    void rememberIds(Job& job, pugi::xml_node channel)
    {
        if (!m_document.root().child("library_animation_clips")) {
            return;
        }
        for (pugi::xml_node animation = channel.parent(); is(animation, "animation"); animation = animation.parent()) {
            if (animation.attribute("id")) {
                job.oldIds.emplace_back(animation.attribute("id").value());
            }
        }
        if (job.stays) {
            job.newId = channel.parent().attribute("id").value();
        }
    }

    // Clips name all animations that replace theirs.
    void adaptClips()
    {
        std::unordered_map<std::string, std::vector<const Job*>> byOldId;
        bool isAnyNew = false;
        for (const Job& job : m_jobs) {
            for (const std::string& id : job.oldIds) {
                byOldId[id].push_back(&job);
                isAnyNew = isAnyNew || job.newId != id;
            }
        }
        if (!isAnyNew) {
            return;
        }
        for (const pugi::xml_node library : m_document.root().children("library_animation_clips")) {
            for (pugi::xml_node clip : library.children("animation_clip")) {
                std::vector<pugi::xml_node> instances;
                for (const pugi::xml_node instance : clip.children("instance_animation")) {
                    instances.push_back(instance);
                }
                for (pugi::xml_node instance : instances) {
                    const std::string_view url = trimmed(instance.attribute("url").value());
                    const auto found = byOldId.find(std::string(url.substr(std::min(url.find('#') + 1, url.size()))));
                    if (found == byOldId.end()) {
                        continue;
                    }
                    bool isFirst = true;
                    for (const Job* const job : found->second) {
                        if (job->newId.empty() || (isFirst && job->newId == found->first)) {
                            isFirst = isFirst && job->newId.empty();
                            continue;
                        }
                        if (!m_document.takeBytes(64 + job->newId.size())) {
                            break;
                        }
                        pugi::xml_node named = isFirst ? instance : clip.insert_copy_after(instance, instance);
                        setAttribute(named, "url", '#' + job->newId);
                        isFirst = false;
                    }
                    if (isFirst) {
                        removeElement(instance);
                    }
                }
            }
        }
    }

    Document& m_document;
    Motion m_motion;
    Sampling m_sampling;
    std::unordered_set<std::size_t> m_shown;                            // nodes, and the <perspective> of cameras
    std::vector<pugi::xml_node> m_perspectives;                         // animated ones
    std::unordered_map<std::size_t, std::vector<std::size_t>> m_optics; // the jobs of each of these
    std::vector<Job> m_jobs;
    std::vector<pugi::xml_node> m_replaced; // animations with channels that are taken out
    std::vector<pugi::xml_node> m_leftOut;  // channels that drive nothing
    std::unordered_map<std::size_t, Top> m_tops;
    std::unordered_map<std::size_t, std::unordered_set<std::string>> m_takenSids;
    std::map<std::pair<std::size_t, std::string>, pugi::xml_node> m_firstBySid;
    double m_end = 0;
};

} // namespace

void flattenAnimations(Document& document)
{
    const auto libraries = document.root().children("library_animations");
    if (std::any_of(libraries.begin(), libraries.end(),
                    [](pugi::xml_node library) { return static_cast<bool>(library.child("animation")); })) {
        Flattening(document).run();
    }
}

} // namespace libPrepare
