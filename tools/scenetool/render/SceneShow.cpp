#include "SceneShow.h"

#include "../common/Printable.h"
#include "Offscreen.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace scenetool {

namespace {

float aspectOf(const RenderOptions& options)
{
    return static_cast<float>(options.width) / static_cast<float>(options.height);
}

std::string frameFile(const std::string& output, unsigned frame)
{
    std::string number = std::to_string(frame);
    number.insert(0, number.size() < 4 ? 4 - number.size() : 0, '0');
    const std::size_t end = output.rfind('.');
    return output.substr(0, end) + "-" + number + output.substr(end);
}

// Number of geometry instances that are invisible because they are on or below a node with a zero matrix.
std::size_t collapsedPlaces(const LoadedScene& loaded, const ScenePose& pose)
{
    std::size_t count = 0;
    for (const libVideo::GeometryTable::Bucket& bucket : loaded.scene().geometryTable()) {
        for (const libVideo::NodeHandle& node : bucket.value->nodes()) {
            count += isZero(pose.world(node.get())) ? 1 : 0;
        }
    }
    return count;
}

} // namespace

SceneShow::SceneShow(PictureDocument& document, const RenderOptions& options, Shortfalls::Sink sink)
    : m_document(&document),
      m_loaded(&document.scene()),
      m_options(options),
      m_shortfalls(std::move(sink)),
      m_renderer(document, m_shortfalls),
      m_pose(document, options.isIdentityForEmpty)
{
    for (const std::string& note : document.notes()) {
        m_shortfalls.add(printable(note));
    }
    if (options.camera && *options.camera >= cameraCount()) {
        throw PictureUsageError("there is no camera " + std::to_string(*options.camera) + ": the document has " +
                                std::to_string(cameraCount()) + ", counted from 0");
    }
    if (m_renderer.isEmpty()) {
        throw PictureError("nothing to draw: the scene shows no geometry");
    }
    for (const libVideo::CameraInstanceHandle& camera : m_loaded->scene().cameraList()) {
        m_restProjections.push_back(camera->projection());
    }
    if (!options.isFramed && cameraCount() > 0) {
        m_camera = options.camera.value_or(0);
    }
    if (options.time) {
        setTime(*options.time);
    }
    m_points = pointsOf(*m_loaded, m_pose);
    const std::size_t collapsed = collapsedPlaces(*m_loaded, m_pose);
    if (m_points.empty()) {
        throw PictureError(collapsed == 0 ? "nothing to draw: no geometry is at a finite position"
                                          : "nothing to draw: all geometry is on or below nodes without transforms, "
                                            "whose matrix is zero (--identity-for-empty draws it)");
    }
    if (collapsed > 0) {
        m_shortfalls.add("geometry on or below nodes without transforms collapses in " + std::to_string(collapsed) +
                         (collapsed == 1 ? " place" : " places") + " (--identity-for-empty draws it)");
    }
}

void SceneShow::setTime(double time)
{
    if (!m_loaded->evaluate(time) && m_loaded->failure()) {
        m_shortfalls.add("the evaluation failed with " + m_loaded->failure()->type + ": " +
                         printable(m_loaded->failure()->message));
    }
    m_pose = ScenePose(*m_document, m_options.isIdentityForEmpty);
}

bool SceneShow::draw(const Viewpoint& viewpoint, const DrawOptions& options)
{
    return m_renderer.draw(m_pose, viewpoint, options);
}

void SceneShow::drawAsAsked(float aspect)
{
    if (m_camera) {
        if (draw(cameraView(*m_camera, aspect), m_options.drawing)) {
            return;
        }
        m_shortfalls.add("camera " + std::to_string(*m_camera) + " sees nothing, so the whole scene is shown");
        m_camera.reset();
    }
    draw(viewpointOf(framedOrbit(aspect), aspect), m_options.drawing);
}

unsigned SceneShow::cameraCount() const
{
    return m_loaded->scene().cameraList().size();
}

// The orthographic camera that a camera approximates, or null.
const libPrepare::Approximation* SceneShow::orthographic(const libVideo::CameraInstance& camera) const
{
    if (!camera.node() || !camera.camera()) {
        return nullptr;
    }
    return m_document->approximation(libPrepare::Approximation::Kind::orthographicCamera, camera.camera()->id().data(),
                                     camera.node()->id().data());
}

Viewpoint SceneShow::cameraView(unsigned camera, float aspect)
{
    const libVideo::CameraInstance& shown = *m_loaded->scene().cameraList()[camera];
    std::string reason;
    const std::optional<Viewpoint> viewpoint =
        viewpointOf(shown, m_pose, m_restProjections[camera], aspect, orthographic(shown), reason);
    if (!viewpoint) {
        m_shortfalls.add("camera " + std::to_string(camera) +
                         " cannot be used, so the whole scene is shown: " + reason);
    }
    return viewpoint ? *viewpoint : viewpointOf(framedOrbit(aspect), aspect);
}

Orbit SceneShow::framedOrbit(float aspect) const
{
    return framed(m_points, m_options.up, aspect);
}

double SceneShow::length() const
{
    double longest = 0.0;
    for (const libVideo::Node* const node : m_loaded->nodes()) {
        longest = std::max(longest, node->animationLength());
    }
    for (const libVideo::CameraInstanceHandle& camera : m_loaded->scene().cameraList()) {
        longest = std::max(longest, camera->camera()->animationLength());
    }
    return longest;
}

void showBar(unsigned done, unsigned all)
{
    constexpr unsigned width = 40;
    const unsigned filled = static_cast<unsigned>(std::uint64_t(width) * done / all);
    const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
    std::cout << "\r[" << bar << "] " << done << " of " << all << " pictures" << (done == all ? "\n" : "")
              << std::flush;
}

Picture renderPicture(PictureDocument& document, const RenderOptions& options, Shortfalls::Sink sink)
{
    SceneShow show(document, options, std::move(sink));
    const Canvas canvas(options.width, options.height);
    canvas.bind();
    show.drawAsAsked(aspectOf(options));
    return canvas.picture();
}

void renderSequence(PictureDocument& document, const RenderOptions& options, const SequenceOptions& sequence,
                    const std::string& output, Shortfalls::Sink sink)
{
    RenderOptions atStart = options;
    atStart.time = options.time.value_or(0.0);
    SceneShow show(document, atStart, std::move(sink));
    const Canvas canvas(options.width, options.height);
    const float aspect = aspectOf(options);
    const Viewpoint all = viewpointOf(show.framedOrbit(aspect), aspect);
    for (unsigned frame = 0; frame < sequence.frames; ++frame) {
        show.setTime(*atStart.time + frame / sequence.framesPerSecond);
        canvas.bind();
        if (frame == 0) {
            show.drawAsAsked(aspect);
        } else {
            show.draw(show.camera() ? show.cameraView(*show.camera(), aspect) : all, options.drawing);
        }
        writePicture(canvas.picture(), frameFile(output, frame));
        if (sequence.hasBar) {
            showBar(frame + 1, sequence.frames);
        }
    }
}

} // namespace scenetool
