#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace testSupport {

namespace {

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

// A file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }
    void close()
    {
        if (m_number >= 0) {
            ::close(m_number);
        }
        m_number = -1;
    }
    void reset(int number)
    {
        close();
        m_number = number;
    }

private:
    int m_number;
};

// A pipe for text from the child. Both ends close when the child starts the program, except for the copies that are
// made for it.
struct Stream {
    Descriptor reading;
    Descriptor writing;

    void makePipe()
    {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            fail("pipe2");
        }
        reading.reset(ends[0]);
        writing.reset(ends[1]);
    }

    void makeTerminal()
    {
        reading.reset(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
        if (!reading.isOpen() || grantpt(reading.number()) != 0 || unlockpt(reading.number()) != 0) {
            fail("posix_openpt");
        }
        std::array<char, 256> name{};
        if (ptsname_r(reading.number(), name.data(), name.size()) != 0) {
            fail("ptsname_r");
        }
        writing.reset(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        if (!writing.isOpen()) {
            fail("no terminal");
        }
    }
};

class SpawnActions {
public:
    SpawnActions()
    {
        if (posix_spawn_file_actions_init(&m_actions) != 0) {
            throw std::runtime_error("posix_spawn_file_actions_init");
        }
    }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&m_actions); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    void openEmpty(int number)
    {
        check(posix_spawn_file_actions_addopen(&m_actions, number, "/dev/null", O_RDONLY, 0));
    }
    void copy(const Descriptor& from, int to)
    {
        check(posix_spawn_file_actions_adddup2(&m_actions, from.number(), to));
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    static void check(int error)
    {
        if (error != 0) {
            errno = error;
            fail("posix_spawn_file_actions");
        }
    }

    posix_spawn_file_actions_t m_actions{};
};

// A child process, which does not outlive this object.
class Child {
public:
    explicit Child(pid_t process) : m_process(process) {}
    ~Child()
    {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            wait();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    int wait()
    {
        int status = 0;
        while (waitpid(m_process, &status, 0) < 0) {
            if (errno != EINTR) {
                m_process = -1;
                fail("waitpid");
            }
        }
        m_process = -1;
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

private:
    pid_t m_process;
};

std::string nameOf(const std::string& variable)
{
    return variable.substr(0, variable.find('='));
}

std::vector<std::string> environmentWith(const std::vector<std::string>& changes)
{
    std::vector<std::string> result;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        bool isKept = true;
        for (const std::string& change : changes) {
            isKept = isKept && nameOf(*variable) != nameOf(change);
        }
        if (isKept) {
            result.emplace_back(*variable);
        }
    }
    for (const std::string& change : changes) {
        if (change.find('=') != std::string::npos) {
            result.push_back(change);
        }
    }
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Reads what has arrived, and closes the stream at its end.
void take(Descriptor& stream, std::string& text)
{
    std::array<char, 65536> buffer{};
    const ssize_t count = read(stream.number(), buffer.data(), buffer.size());
    if (count > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
        stream.close(); // reading a terminal fails once its other end is closed
    }
}

} // namespace

bool hasTerminals()
{
    return Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)).isOpen();
}

ProcessResult runProcess(const std::vector<std::string>& arguments, const ProcessOptions& options)
{
    std::vector<std::string> argumentTexts = arguments;
    std::vector<std::string> environmentTexts = environmentWith(options.environment);
    const std::vector<char*> argumentPointers = pointersTo(argumentTexts);
    const std::vector<char*> environmentPointers = pointersTo(environmentTexts);

    Stream output;
    Stream errors;
    if (options.hasTerminal) {
        output.makeTerminal();
    } else {
        output.makePipe();
    }
    errors.makePipe();
    SpawnActions actions;
    actions.openEmpty(STDIN_FILENO);
    actions.copy(output.writing, STDOUT_FILENO);
    actions.copy(errors.writing, STDERR_FILENO);

    pid_t process = -1;
    const int error = posix_spawn(&process, arguments.at(0).c_str(), actions.get(), nullptr, argumentPointers.data(),
                                  environmentPointers.data());
    if (error != 0) {
        errno = error;
        fail("cannot start " + arguments[0]);
    }
    Child child(process);
    output.writing.close();
    errors.writing.close();

    // Reads both streams at once: a child that has filled one of them would wait forever.
    ProcessResult result;
    const auto end = std::chrono::steady_clock::now() + options.limit;
    while (output.reading.isOpen() || errors.reading.isOpen()) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        if (left <= 0) {
            throw std::runtime_error(arguments[0] + " did not end in time");
        }
        // Closed streams are negative, which poll ignores.
        std::array<pollfd, 2> waiting{{{output.reading.number(), POLLIN, 0}, {errors.reading.number(), POLLIN, 0}}};
        if (poll(waiting.data(), waiting.size(), static_cast<int>(left)) < 0 && errno != EINTR) {
            fail("poll");
        }
        if (waiting[0].revents != 0) {
            take(output.reading, result.output);
        }
        if (waiting[1].revents != 0) {
            take(errors.reading, result.errors);
        }
    }
    result.status = child.wait();
    return result;
}

} // namespace testSupport
