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
    /// Opens what was added so far. @throw std::runtime_error if the document model refuses it
    domCOLLADA* open();

    DAE& dae() { return m_dae; }
    /// The element of that id in the opened document, null if there is none or if it is of another type.
    template <class Element>
    Element* element(const char* id)
    {
        return daeSafeCast<Element>(m_dae.getDatabase()->idLookup(id, m_dae.getDoc(0)));
    }

private:
    DAE m_dae{nullptr, nullptr, "1.4.1"}; // by default it reads only the newest schema that it was built with
    std::string m_body;
};

/// Numbers as an element of a document has them.
inline daeTArray<double> valuesOf(const std::vector<double>& numbers)
{
    daeTArray<double> values;
    for (const double number : numbers) {
        values.append(number);
    }
    return values;
}

/// A file with a content of the test's, removed at the end.
class TemporaryFile {
public:
    /// @param name the file's name in a new folder of its own
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
