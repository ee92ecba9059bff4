#include "FolderConversion.h"

#include "common/DocumentFiles.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace scenetool {

namespace {

namespace fs = std::filesystem;
using ReportLine = nlohmann::ordered_json;

struct Job {
    fs::path in;
    fs::path out;
};

// Passes a short text from a child process to its parent.
class Channel {
public:
    Channel()
    {
        if (pipe2(m_ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
            throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
        }
    }
    ~Channel()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    // Called by the child. Truncates a text that does not fit into the pipe at once.
    void put(const std::string& text) const
    {
        static_cast<void>(!write(m_ends[1], text.data(), std::min(text.size(), maxBytes)));
    }
    // Called by the parent after the child has exited.
    std::string take() const
    {
        std::string text(maxBytes, '\0');
        const ssize_t size = read(m_ends[0], text.data(), text.size());
        text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return text;
    }

private:
    static constexpr std::size_t maxBytes = 4096;

    std::array<int, 2> m_ends{};
};

std::vector<Job> jobsOf(const fs::path& in, const fs::path& out)
{
    std::vector<Job> jobs;
    for (const fs::directory_entry& entry :
         fs::recursive_directory_iterator(in, fs::directory_options::skip_permission_denied)) {
        if (isDocument(entry)) {
            jobs.push_back({entry.path(), out / entry.path().lexically_relative(in)});
        }
    }
    std::sort(jobs.begin(), jobs.end(), [](const Job& a, const Job& b) { return a.in < b.in; });
    // The names of two documents may differ only in the case of their extension.
    std::vector<fs::path> taken;
    for (Job& job : jobs) {
        fs::path wish = fs::path(job.out).replace_extension(".glb");
        for (unsigned number = 2; std::binary_search(taken.begin(), taken.end(), wish); ++number) {
            wish = fs::path(job.out).replace_extension("." + std::to_string(number) + ".glb");
        }
        taken.insert(std::upper_bound(taken.begin(), taken.end(), wish), wish);
        job.out = wish;
    }
    return jobs;
}

// Removes the temporary files that interrupted runs have left beside a result.
void removeRemains(const fs::path& out)
{
    std::error_code ignored;
    const std::string start = out.filename().string() + ".part";
    for (const fs::directory_entry& entry : fs::directory_iterator(out.parent_path(), ignored)) {
        const std::string name = entry.path().filename().string();
        const std::string writer = name.rfind(start, 0) == 0 ? name.substr(start.size()) : std::string();
        const long process = writer.empty() ? 0 : std::strtol(writer.c_str(), nullptr, 10);
        if (process > 0 && kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH) {
            fs::remove(entry.path(), ignored);
        }
    }
}

bool isUpToDate(const Job& job)
{
    std::error_code error;
    const fs::file_time_type result = fs::last_write_time(job.out, error);
    return !error && result >= fs::last_write_time(job.in, error) && !error;
}

ReportLine lineOf(const Job& job)
{
    return {{"file", job.in.string()}, {"result", job.out.string()}};
}

// The conversions of a folder, each in a process of its own.
class Conversions {
public:
    Conversions(const FolderConversionSettings& settings, std::size_t count)
        : m_settings(settings), m_sandbox(settings.limits), m_count(count)
    {}

    bool isFull() const { return m_sandbox.runningCount() >= std::max<std::size_t>(m_settings.jobs, 1); }
    bool isIdle() const { return m_sandbox.runningCount() == 0; }
    bool hasFailed() const { return m_hasFailed; }

    void start(const Job& job)
    {
        if (!m_settings.isRepeated && isUpToDate(job)) {
            ReportLine line = lineOf(job);
            line["status"] = "up to date";
            print(line);
            return;
        }
        const auto start = std::chrono::steady_clock::now();
        std::error_code error;
        fs::create_directories(job.out.parent_path(), error);
        removeRemains(job.out);
        try {
            auto channel = std::make_unique<const Channel>();
            const pid_t process = m_sandbox.start([&] { return convert(job, *channel); });
            m_running.emplace(process, Running{job, std::move(channel), start});
        } catch (const std::system_error& problem) {
            printEnd(job, start, problem.what(), 0);
        }
    }

    // Waits until one of them has ended.
    void wait()
    {
        const Sandbox::Ended ended = m_sandbox.wait();
        const auto found = m_running.find(ended.process);
        const std::string said = found->second.channel->take();
        std::string failure = ended.result.failure;
        if (failure.empty() && ended.result.status != EXIT_SUCCESS) {
            failure = said.empty() ? "failed without a reason" : said;
        }
        printEnd(found->second.job, found->second.start, failure, std::strtol(said.c_str(), nullptr, 10));
        m_running.erase(found);
    }

private:
    using Time = std::chrono::steady_clock::time_point;

    struct Running {
        Job job;
        std::unique_ptr<const Channel> channel;
        Time start;
    };

    // Called in the child process. Says what was lost, or why the conversion failed.
    int convert(const Job& job, const Channel& channel) const
    {
        const ConversionResult result = convertDocument(job.in.string(), job.out.string(), m_settings.conversion);
        const auto lost =
            std::count_if(result.prepared.findings.begin(), result.prepared.findings.end(),
                          [](const libPrepare::Finding& f) { return f.outcome == libPrepare::Outcome::lost; });
        channel.put(result.failure.empty() ? std::to_string(lost) : result.failure);
        return result.failure.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
    }

    void printEnd(const Job& job, Time start, const std::string& failure, long lost)
    {
        ReportLine line = lineOf(job);
        if (failure.empty()) {
            line["lost"] = lost;
        }
        line["status"] = failure.empty() ? "converted" : "failed";
        if (!failure.empty()) {
            line["reason"] = failure;
            m_hasFailed = true;
        }
        line["seconds"] = std::chrono::duration<float>(std::chrono::steady_clock::now() - start).count();
        print(line);
    }

    void print(const ReportLine& line)
    {
        ++m_done;
        std::cout << line.dump(-1, ' ', false, ReportLine::error_handler_t::replace) << std::endl;
        if (m_settings.showsProgress) {
            constexpr std::size_t width = 40;
            const std::size_t filled = width * m_done / m_count;
            std::cerr << "\r[" << std::string(filled, '#') << std::string(width - filled, ' ') << "] " << m_done
                      << " of " << m_count << (m_done == m_count ? "\n" : "") << std::flush;
        }
    }

    const FolderConversionSettings& m_settings;
    Sandbox m_sandbox;
    std::map<pid_t, Running> m_running;
    std::size_t m_count;
    std::size_t m_done = 0;
    bool m_hasFailed = false;
};

} // namespace

bool convertFolder(const std::string& in, const std::string& out, const FolderConversionSettings& settings)
{
    const std::vector<Job> jobs = jobsOf(in, out);
    Conversions conversions(settings, jobs.size());
    for (const Job& job : jobs) {
        if (conversions.isFull()) {
            conversions.wait();
        }
        conversions.start(job);
    }
    while (!conversions.isIdle()) {
        conversions.wait();
    }
    return !conversions.hasFailed();
}

} // namespace scenetool
