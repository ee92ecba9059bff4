#include "ColladaBuilder.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace testSupport {

ColladaBuilder& ColladaBuilder::add(const std::string& xml)
{
    m_body += xml;
    return *this;
}

ColladaBuilder& ColladaBuilder::addScene(const std::string& nodes)
{
    return add("<library_visual_scenes><visual_scene id='scene'>" + nodes +
               "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#scene'/></scene>");
}

std::string ColladaBuilder::text() const
{
    return "<?xml version='1.0' encoding='utf-8'?>"
           "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>"
           "<asset><created>2026-01-01T00:00:00Z</created><modified>2026-01-01T00:00:00Z</modified></asset>" +
           m_body + "</COLLADA>";
}

domCOLLADA* ColladaBuilder::open()
{
    auto* const root = daeSafeCast<domCOLLADA>(m_dae.openFromMemory("memory.dae", text().c_str()));
    if (root == nullptr) {
        throw std::runtime_error("the document does not open: " + text());
    }
    return root;
}

TemporaryFile::TemporaryFile(const std::string& content, const std::string& name)
{
    std::string folder = (std::filesystem::temp_directory_path() / "libVideoTest-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + folder);
    }
    m_path = std::filesystem::path(folder) / name;
    std::ofstream file(m_path, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + m_path.string());
    }
}

TemporaryFile::~TemporaryFile()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path.parent_path(), ignored);
}

} // namespace testSupport
