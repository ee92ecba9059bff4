#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>

namespace scenetool {

/// Counts what a conversion changes or leaves out, by kind.
class ConversionNotes {
public:
    /// The only kind that loses nothing: images that are converted to another format.
    static constexpr const char* imageFormat = "image format";

    struct Note {
        std::string text;      ///< A sentence that explains the kind.
        std::size_t count = 0; ///< Number of occurrences.
    };

    /// @param kind a fixed word, such as "tangents"
    void add(const std::string& kind, const std::string& text, std::size_t count = 1)
    {
        Note& note = m_notes[kind];
        note.text = note.count == 0 ? text : note.text;
        note.count += count;
    }
    /// The notes by kind.
    const std::map<std::string, Note>& all() const { return m_notes; }

private:
    std::map<std::string, Note> m_notes;
};

} // namespace scenetool
