#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>

namespace scenetool {

/// What a conversion changes or leaves out, counted by kind.
class ConversionNotes {
public:
    /// The kind that loses nothing: images in another format.
    static constexpr const char* imageFormat = "image format";

    struct Note {
        std::string text;      ///< One sentence about the kind.
        std::size_t count = 0; ///< How often it was met.
    };

    /// @param kind a fixed word, such as "tangents"
    void add(const std::string& kind, const std::string& text, std::size_t count = 1)
    {
        Note& note = m_notes[kind];
        note.text = note.count == 0 ? text : note.text;
        note.count += count;
    }
    /// By kind.
    const std::map<std::string, Note>& all() const { return m_notes; }

private:
    std::map<std::string, Note> m_notes;
};

} // namespace scenetool
