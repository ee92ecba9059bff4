#include "InputFile.h"

#include "OutputFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace libPrepare {

namespace {

struct GzipCloser {
    void operator()(gzFile_s* file) const { gzclose(file); }
};

// Requests large pages for the memory of a long string that is still empty: a page fault for every 4 KiB of a document
// takes longer than its parsing. Where there are none, nothing changes.
void useLargePages(std::string& text)
{
#ifdef MADV_HUGEPAGE
    constexpr std::size_t pageSize = 2'097'152;
    void* begin = text.data();
    std::size_t size = text.capacity();
    if (std::align(pageSize, pageSize, begin, size) != nullptr) {
        ::madvise(begin, size / pageSize * pageSize, MADV_HUGEPAGE);
    }
#else
    static_cast<void>(text);
#endif
}

Refusal unreadable(const std::string& why)
{
    return {"unreadable", "cannot be read: " + why, "give a file that may be read", 0, 0};
}

} // namespace

InputFile::~InputFile()
{
    if (m_file >= 0) {
        ::close(m_file);
    }
}

std::optional<Refusal> InputFile::open(const std::filesystem::path& path)
{
    struct stat state = {};
    if (::stat(path.c_str(), &state) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return Refusal{"missing", "does not exist", "give the path of a document", 0, 0};
        }
        return unreadable(std::strerror(errno));
    }
    // Only regular files are opened, because opening anything else can have side effects.
    const auto refuse = [](const char* what) {
        return Refusal{"special-file", std::string("is a ") + what, "give the path of a document", 0, 0};
    };
    if (S_ISDIR(state.st_mode)) {
        return Refusal{"directory", "is a directory", "give the path of a document", 0, 0};
    }
    if (S_ISFIFO(state.st_mode)) {
        return refuse("pipe");
    }
    if (S_ISSOCK(state.st_mode)) {
        return refuse("socket");
    }
    if (!S_ISREG(state.st_mode)) {
        return refuse("device");
    }
    m_file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (m_file < 0) {
        return unreadable(std::strerror(errno));
    }
    if (::fstat(m_file, &state) != 0 || !S_ISREG(state.st_mode)) { // the name belongs to another file by now
        return unreadable("it changed");
    }
    return std::nullopt;
}

std::optional<Refusal> InputFile::read(std::uint64_t most, std::string& bytes) const
{
    const int copy = ::fcntl(m_file, F_DUPFD_CLOEXEC, 0); // the reader closes its own
    if (copy < 0 || ::lseek(copy, 0, SEEK_SET) < 0) {
        return unreadable(std::strerror(errno));
    }
    const std::unique_ptr<gzFile_s, GzipCloser> file(gzdopen(copy, "rb"));
    if (file == nullptr) {
        ::close(copy);
        throw std::bad_alloc();
    }
    struct stat state = {};
    ::fstat(m_file, &state);
    constexpr std::size_t piece = 65'536;
    bytes.clear();
    bytes.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(static_cast<std::uint64_t>(state.st_size), most)) +
                  piece);
    useLargePages(bytes);
    for (;;) {
        const std::size_t end = bytes.size();
        bytes.resize(end + piece);
        const int count = gzread(file.get(), bytes.data() + end, piece);
        bytes.resize(end + static_cast<std::size_t>(std::max(count, 0)));
        if (bytes.size() > most) {
            return Refusal{"too-large", "is larger than " + std::to_string(most) + " bytes", "allow more by --max-size",
                           0, 0};
        }
        int error = Z_OK;
        const char* const message = gzerror(file.get(), &error);
        if (error == Z_ERRNO) {
            return unreadable(std::strerror(errno));
        }
        if (count < 0 || error != Z_OK) {
            return Refusal{"compression", std::string("is no whole gzip file: ") + message, "compress it again", 0, 0};
        }
        if (count == 0) {
            return std::nullopt;
        }
    }
}

bool InputFile::copyTo(OutputFile& output) const
{
    std::array<char, 65'536> bytes = {};
    for (off_t at = 0;;) {
        const ssize_t count = ::pread(m_file, bytes.data(), bytes.size(), at);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0;
        }
        output.write({bytes.data(), static_cast<std::size_t>(count)});
        at += count;
    }
}

} // namespace libPrepare
