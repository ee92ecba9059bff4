#pragma once

#include <libVideo/ColladaDom.h>

#include <filesystem>
#include <string>
#include <vector>

namespace testSupport {

/// Builds a small document from the XML of its libraries and scene, and opens it from memory. The elements live as long
/// as the builder.
class ColladaBuilder {
public:
    ColladaBuilder() = default;
    explicit ColladaBuilder(const std::string& xml) { add(xml); }
    ColladaBuilder(const ColladaBuilder&) = delete;
    ColladaBuilder& operator=(const ColladaBuilder&) = delete;

    /// Adds children of `<COLLADA>`.
    ColladaBuilder& add(const std::string& xml);
    /// Adds a `<library_visual_scenes>` with the nodes below a visual scene "scene", and a `<scene>` that shows it.
    ColladaBuilder& addScene(const std::string& nodes);

    /// The whole document.
    std::string text() const;
    /// Opens the document as built so far. @throws std::runtime_error if the document model refuses it
    domCOLLADA* open();

    DAE& dae() { return m_dae; }
    /// The element with that id in the opened document; null if there is none or it has another type.
    template <class Element>
    Element* element(const char* id)
    {
        return daeSafeCast<Element>(m_dae.getDatabase()->idLookup(id, m_dae.getDoc(0)));
    }

private:
    DAE m_dae{nullptr, nullptr, "1.4.1"}; // by default it reads only the newest schema that it was built with
    std::string m_body;
};

/// Numbers as the text of an element, separated by blanks.
inline daeTArray<double> valuesOf(const std::vector<double>& numbers)
{
    daeTArray<double> values;
    for (const double number : numbers) {
        values.append(number);
    }
    return values;
}

/// A file with content given by the test. The destructor removes it.
class TemporaryFile {
public:
    /// @param name name of the file, which is created in a new folder
    explicit TemporaryFile(const std::string& content, const std::string& name = "document.dae");
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string path() const { return m_path.string(); }
    std::filesystem::path folder() const { return m_path.parent_path(); }

private:
    std::filesystem::path m_path;
};

} // namespace testSupport
