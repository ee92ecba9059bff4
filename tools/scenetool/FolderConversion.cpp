#include "FolderConversion.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace scenetool {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

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

bool isDocument(const fs::path& path)
{
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending == ".dae";
}

std::vector<Job> jobsOf(const fs::path& in, const fs::path& out)
{
    std::vector<Job> jobs;
    for (const fs::directory_entry& entry :
         fs::recursive_directory_iterator(in, fs::directory_options::skip_permission_denied)) {
        std::error_code ignored;
        if (isDocument(entry.path()) && entry.is_regular_file(ignored)) {
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

Json convert(const Job& job, const FolderConversionSettings& settings)
{
    Json line = {{"file", job.in.string()}, {"result", job.out.string()}};
    if (!settings.isRepeated && isUpToDate(job)) {
        line["status"] = "up to date";
        return line;
    }
    const auto start = std::chrono::steady_clock::now();
    std::string failure;
    std::error_code error;
    fs::create_directories(job.out.parent_path(), error);
    removeRemains(job.out);
    try {
        const Channel channel;
        const SandboxResult ended = runInSandbox(settings.limits, [&] {
            const ConversionResult result = convertDocument(job.in.string(), job.out.string(), settings.conversion);
            const auto lost = std::count_if(
                result.prepared.findings.begin(), result.prepared.findings.end(),
                [](const libPrepare::Finding& finding) { return finding.outcome == libPrepare::Outcome::lost; });
            channel.put(result.failure.empty() ? std::to_string(lost) : result.failure);
            return result.failure.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
        });
        const std::string said = channel.take();
        if (!ended.failure.empty()) {
            failure = ended.failure;
        } else if (ended.status != EXIT_SUCCESS) {
            failure = said.empty() ? "failed without a reason" : said;
        }
        if (failure.empty()) {
            line["lost"] = std::strtol(said.c_str(), nullptr, 10);
        }
    } catch (const std::system_error& problem) {
        failure = problem.what();
    }
    line["status"] = failure.empty() ? "converted" : "failed";
    if (!failure.empty()) {
        line["reason"] = failure;
    }
    line["seconds"] = std::chrono::duration<float>(std::chrono::steady_clock::now() - start).count();
    return line;
}

} // namespace

bool convertFolder(const std::string& in, const std::string& out, const FolderConversionSettings& settings)
{
    const std::vector<Job> jobs = jobsOf(in, out);
    std::atomic<std::size_t> next{0};
    std::size_t done = 0;
    std::size_t failed = 0;
    std::mutex mutex;
    const auto work = [&] {
        for (std::size_t i = next++; i < jobs.size(); i = next++) {
            const Json line = convert(jobs[i], settings);
            const std::lock_guard<std::mutex> lock(mutex);
            ++done;
            failed += line["status"] == "failed" ? 1 : 0;
            std::cout << line.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
            if (settings.showsProgress) {
                constexpr std::size_t width = 40;
                const std::size_t filled = width * done / jobs.size();
                std::cerr << "\r[" << std::string(filled, '#') << std::string(width - filled, ' ') << "] " << done
                          << " of " << jobs.size() << (done == jobs.size() ? "\n" : "") << std::flush;
            }
        }
    };
    std::vector<std::thread> workers;
    const std::size_t count = std::clamp<std::size_t>(settings.jobs, 1, std::max<std::size_t>(jobs.size(), 1));
    for (std::size_t i = 0; i < count; ++i) {
        workers.emplace_back(work);
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    return failed == 0;
}

} // namespace scenetool
