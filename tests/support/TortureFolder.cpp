#include "TortureFolder.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace testSupport {

namespace {

std::filesystem::path fastFolder()
{
    const std::filesystem::path memory = "/dev/shm";
    std::error_code error;
    return std::getenv("TMPDIR") == nullptr && std::filesystem::is_directory(memory, error)
               ? memory
               : std::filesystem::temp_directory_path();
}

} // namespace

TortureFolder::TortureFolder()
{
    std::string name = (fastFolder() / "libVideoTorture-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + name);
    }
    m_path = name;
    std::filesystem::copy_file(std::filesystem::path(SEED_FOLDER) / "neighbour.dae", m_path / "neighbour.dae");
}

TortureFolder::~TortureFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TortureFolder::write(const std::string& content) const
{
    const std::filesystem::path document = m_path / "document.dae";
    std::ofstream file(document, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + document.string());
    }
    return document.string();
}

} // namespace testSupport
