#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>

namespace scenetool {

/// Collects what is missing in a picture: one line of text each, and each line once.
class Shortfalls {
public:
    using Sink = std::function<void(const std::string& line)>;

    explicit Shortfalls(Sink sink) : m_sink(std::move(sink)) {}
    void add(const std::string& line)
    {
        if (m_known.insert(line).second) {
            m_sink(line);
        }
    }

private:
    Sink m_sink;
    std::set<std::string> m_known;
};

} // namespace scenetool
