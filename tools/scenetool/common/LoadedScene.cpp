#include "LoadedScene.h"

#include "Printable.h"
#include "ReportPrinter.h"

#include <vesk/Exception.h>
#include <vesk/Logging.h>

#include <exception>
#include <utility>

namespace scenetool {

namespace {

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

} // namespace

// Runs an action of the library, and stores what it throws in `m_failure`.
template <class Action>
bool LoadedScene::run(const Action& action)
{
    try {
        return action();
    } catch (const vesk::IndexOutOfBounds& exception) {
        m_failure = Failure{"IndexOutOfBounds", exception.what()};
    } catch (const vesk::AssertionFailure& exception) {
        m_failure = Failure{"AssertionFailure", exception.what()};
    } catch (const vesk::NullPointer& exception) {
        m_failure = Failure{"NullPointer", exception.what()};
    } catch (const vesk::SerializationFailed& exception) {
        m_failure = Failure{"SerializationFailed", exception.what()};
    } catch (const std::exception& exception) {
        m_failure = Failure{"exception", exception.what()};
    }
    return false;
}

LoadedScene::LoadedScene(std::string file, const std::string& source)
    : m_file(std::move(file)), m_source(source.empty() ? m_file : source)
{
    m_handlerBefore = vesk::LogFactory::setHandler(
        [this](const vesk::Logger& logger, vesk::LoggerPriority::LOGGER_PRIORITY priority, const vesk::String& text) {
            m_log.push_back({logger.channel().data(), priority,
                             m_source == m_file ? text.data() : replaced(text.data(), m_source, m_file)});
        });
    m_isLoaded = run([&] { return m_scene.createFromCollada(m_source.c_str()); });
    if (!m_isLoaded && !m_failure) {
        findRefusal();
    }
    listNodes();
}

LoadedScene::~LoadedScene()
{
    vesk::LogFactory::setHandler(m_handlerBefore);
}

std::string LoadedScene::fault() const
{
    if (m_failure) {
        const std::string what = m_isLoaded ? "the evaluation" : "the load";
        return what + " failed with " + m_failure->type + ": " + m_failure->message;
    }
    return m_refusal ? m_refusal->text : "";
}

void LoadedScene::writeFault(std::ostream& out) const
{
    if (m_refusal) {
        out << "scenetool: " << refusalText(m_file, *m_refusal) << '\n';
    } else if (m_failure) {
        out << "scenetool: " << printable(m_file) << ": " << printable(fault()) << '\n';
    }
}

// Asks libPrepare for the reason, because the library logs the same message for all documents that it refuses.
void LoadedScene::findRefusal()
{
    const libPrepare::Report report = libPrepare::inspect(m_source);
    if (const libPrepare::Finding* const found = report.first(libPrepare::Outcome::refused)) {
        m_refusal = *found;
        return;
    }
    libPrepare::Finding& refusal = m_refusal.emplace();
    refusal.outcome = libPrepare::Outcome::refused;
    refusal.kind = "refused";
    refusal.text = m_log.empty() ? "does not load" : "does not load: " + m_log.back().text;
    refusal.remedy = "fix what the message names, or prepare the document";
}

void LoadedScene::listNodes()
{
    const auto append = [this](const libVideo::Node& parent) {
        for (const libVideo::NodeLink& child : parent.children()) {
            m_indices.emplace(child.get(), m_nodes.size());
            m_nodes.push_back(child.get());
        }
    };
    append(scene().root());
    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        append(*m_nodes[i]);
    }
}

std::optional<std::size_t> LoadedScene::indexOf(const libVideo::Node* node) const
{
    const auto found = m_indices.find(node);
    return found == m_indices.end() ? std::nullopt : std::optional<std::size_t>(found->second);
}

bool LoadedScene::evaluate(double time)
{
    return run([this, time] {
        for (libVideo::Node* const node : m_nodes) {
            node->transform(time);
        }
        for (const libVideo::CameraInstanceHandle& camera : scene().cameraList()) {
            camera->view(time);
            camera->projection(time);
        }
        return true;
    });
}

void LoadedScene::fold()
{
    m_scene.visualScene().transform();
}

} // namespace scenetool
