#pragma once

#include <libPrepare/Prepare.h>
#include <libVideo/SceneGraph.h>

#include <vesk/Logging.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

namespace scenetool {

/// One log message of the library.
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

/// A loaded document, with its nodes in breadth-first order and all messages logged since the start of the load.
class LoadedScene {
public:
    /// Loads the document. Exceptions of the library do not leave the constructor.
    /// @param source the file that is loaded instead, such as the prepared document, which messages do not name; empty
    ///     for none
    explicit LoadedScene(std::string file, const std::string& source = {});
    ~LoadedScene();
    LoadedScene(const LoadedScene&) = delete;
    LoadedScene& operator=(const LoadedScene&) = delete;

    const std::string& file() const { return m_file; }
    bool isLoaded() const { return m_isLoaded; }
    /// The exception that ended the load or the evaluation, if any.
    const std::optional<Failure>& failure() const { return m_failure; }
    /// Why the library refused the document, with `Outcome::refused`.
    const std::optional<libPrepare::Finding>& refusal() const { return m_refusal; }
    /// Why the load or the evaluation failed, in one line; empty if neither did.
    std::string fault() const;
    /// Writes the same as a line of the program's standard error, with the file and, if known, the place in it:
    /// "scenetool: X is a directory", "scenetool: X:7:2: ...". Nothing without a fault.
    void writeFault(std::ostream& out) const;
    const std::vector<LogLine>& log() const { return m_log; }
    const libVideo::VisualScene& scene() const { return m_scene.visualScene(); }

    /// All nodes below the root, breadth-first.
    const std::vector<libVideo::Node*>& nodes() const { return m_nodes; }
    /// Index in `nodes()`; nothing for the root and for null.
    std::optional<std::size_t> indexOf(const libVideo::Node* node) const;

    /// Evaluates every node, then every camera, at a time in seconds. @return false, with `failure()` set, if one of
    /// them throws; those after it keep their state
    bool evaluate(double time);
    /// Multiplies the parents into the nodes, so that local matrices become world matrices.
    void fold();

private:
    template <class Action>
    bool run(const Action& action);
    void findRefusal();
    void listNodes();

    std::string m_file;
    std::string m_source;
    bool m_isLoaded = false;
    std::optional<Failure> m_failure;
    std::optional<libPrepare::Finding> m_refusal;
    std::vector<LogLine> m_log;
    vesk::LogHandler m_handlerBefore;
    libVideo::Scene m_scene;
    std::vector<libVideo::Node*> m_nodes;
    std::unordered_map<const libVideo::Node*, std::size_t> m_indices;
};

/// The buckets of a table, sorted by key.
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
