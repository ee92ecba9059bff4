#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace libPrepare {

namespace {

constexpr std::size_t bufferSize = 1'048'576;

Refusal unwritable(const std::string& why)
{
    return {"unwritable", "cannot be written: " + why, "give another place", 0, 0};
}

// A new file with an unused name.
int openBeside(const std::filesystem::path& path, std::string& name)
{
    static std::atomic<unsigned> next = 0;
    for (unsigned tries = 0; tries < 1'000; ++tries) {
        name =
            (path.parent_path() / (".prepare-" + std::to_string(::getpid()) + '-' + std::to_string(next++))).string();
        const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0 || errno != EEXIST) {
            return file;
        }
    }
    return -1;
}

} // namespace

OutputFile::~OutputFile()
{
    if (m_file >= 0) {
        ::close(m_file);
        if (!m_temporary.empty()) {
            ::unlink(m_temporary.c_str());
        }
    }
}

std::optional<Refusal> OutputFile::open(const std::filesystem::path& path)
{
    std::error_code error;
    m_path = std::filesystem::is_symlink(path, error) ? std::filesystem::weakly_canonical(path, error) : path;
    if (error || m_path.empty()) {
        m_path = path;
    }
    struct stat state = {};
    const bool exists = ::stat(m_path.c_str(), &state) == 0;
    if (exists && S_ISCHR(state.st_mode)) {
        m_file = ::open(m_path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        return m_file < 0 ? std::optional(unwritable(std::strerror(errno))) : std::nullopt;
    }
    if (exists && !S_ISREG(state.st_mode)) {
        return unwritable(S_ISDIR(state.st_mode) ? "it is a directory" : "it is no regular file");
    }
    if (exists && ::access(m_path.c_str(), W_OK) != 0) {
        return unwritable(std::strerror(errno));
    }
    m_file = openBeside(m_path, m_temporary);
    if (m_file < 0) {
        m_temporary.clear();
        return unwritable(std::strerror(errno));
    }
    if (exists && ::fchmod(m_file, state.st_mode & 0777U) != 0) {
        return unwritable(std::strerror(errno));
    }
    return std::nullopt;
}

void OutputFile::writeMuch(std::string_view bytes)
{
    flush();
    if (bytes.size() >= bufferSize) { // without a copy
        writeThrough(bytes);
    } else {
        write(bytes);
    }
}

void OutputFile::flush()
{
    if (m_buffer == nullptr) {
        m_buffer.reset(new char[bufferSize]); // without zeros
    } else {
        writeThrough({m_buffer.get(), bufferSize - m_free});
    }
    m_end = m_buffer.get();
    m_free = bufferSize;
}

void OutputFile::writeThrough(std::string_view rest)
{
    while (!rest.empty() && m_error == 0) {
        const ssize_t count = ::write(m_file, rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            m_error = errno;
        }
    }
}

std::optional<Refusal> OutputFile::commit()
{
    flush();
    if (m_error != 0) {
        return unwritable(std::strerror(m_error));
    }
    const int file = m_file;
    m_file = -1;
    const bool isWhole = ::close(file) == 0;
    if (m_temporary.empty() || (isWhole && ::rename(m_temporary.c_str(), m_path.c_str()) == 0)) {
        return isWhole ? std::nullopt : std::optional(unwritable(std::strerror(errno)));
    }
    const std::string why = std::strerror(errno);
    ::unlink(m_temporary.c_str());
    return unwritable(why);
}

} // namespace libPrepare
