#pragma once

#include <libPrepare/Prepare.h>
#include <libVideo/SceneGraph.h>

#include <vesk/Logging.h>

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace scenetool {

/// One line of the library's log.
struct LogLine {
    std::string channel;
    int priority;
    std::string text;
};

/// An exception that ended a load or an evaluation.
struct Failure {
    std::string type;
    std::string message;
};

/// A document as the library loads it, with everything that was logged since, and its nodes in breadth-first order.
class LoadedScene {
public:
    /// Loads the document; neither a failure nor an exception of the library leaves the constructor.
    /// @param source is loaded in its place, such as what was prepared from it
    explicit LoadedScene(std::string file, const std::string& source = {});
    ~LoadedScene();
    LoadedScene(const LoadedScene&) = delete;
    LoadedScene& operator=(const LoadedScene&) = delete;

    const std::string& file() const { return m_file; }
    bool isLoaded() const { return m_isLoaded; }
    /// What ended the load or the evaluation, if anything did.
    const std::optional<Failure>& failure() const { return m_failure; }
    /// Why the library refuses the document; `Outcome::refused`.
    const std::optional<libPrepare::Finding>& refusal() const { return m_refusal; }
    /// Why the load or the evaluation failed, in one line; empty if neither did.
    std::string fault() const;
    /// The same with the file before it, and the line if there is one: "X is a directory", "X:7:2: ...".
    std::string faultLine() const;
    const std::vector<LogLine>& log() const { return m_log; }
    const libVideo::VisualScene& scene() const { return m_scene.visualScene(); }

    /// From the root's children down.
    const std::vector<libVideo::Node*>& nodes() const { return m_nodes; }
    /// Place in `nodes()`; nothing for the root and for no node.
    std::optional<std::size_t> indexOf(const libVideo::Node* node) const;

    /// Asks every node, then every camera, for its state at a time in seconds. @return false, with `failure()` set, if
    /// one throws; those behind it keep their state then
    bool evaluate(double time);
    /// Folds the parents into the nodes.
    void fold();

private:
    template <class Action>
    bool run(const Action& action);
    void findRefusal(const std::string& path);
    void listNodes();

    std::string m_file;
    bool m_isLoaded = false;
    std::optional<Failure> m_failure;
    std::optional<libPrepare::Finding> m_refusal;
    std::vector<LogLine> m_log;
    vesk::LogHandler m_handlerBefore;
    libVideo::Scene m_scene;
    std::vector<libVideo::Node*> m_nodes;
    std::unordered_map<const libVideo::Node*, std::size_t> m_indices;
};

/// The buckets of a table, in the order of their keys.
template <class Table>
std::map<std::string, const typename Table::Bucket*> sorted(const Table& table)
{
    std::map<std::string, const typename Table::Bucket*> buckets;
    for (const typename Table::Bucket& bucket : table) {
        buckets.emplace(bucket.key.data(), &bucket);
    }
    return buckets;
}

} // namespace scenetool
