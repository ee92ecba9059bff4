#include "DocumentWork.h"

#include <libVideo/SceneGraph.h>

#ifdef BENCHMARKS_USE_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#endif

#include <ctime>
#include <stdexcept>

namespace benchmarks {

namespace {

double processorSeconds()
{
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void expect(bool isRead, Work work)
{
    if (!isRead) {
        throw std::runtime_error(std::string("the document is refused by ") + nameOf(work));
    }
}

// In each of these the clock is read before what was made is destroyed.

double secondsOfOpen(const std::string& path)
{
    const double start = processorSeconds();
    DAE dae(nullptr, nullptr, "1.4.1");
    expect(dae.open(path) != nullptr, Work::Open);
    return processorSeconds() - start;
}

double secondsOfLoad(const std::string& path)
{
    const double start = processorSeconds();
    libVideo::Scene scene;
    expect(scene.createFromCollada(path.c_str()), Work::Load);
    return processorSeconds() - start;
}

#ifdef BENCHMARKS_USE_ASSIMP
// The flags bring what a load brings: one index list of shared vertices, triangles apart from points and lines.
double secondsOfImport(const std::string& path)
{
    const double start = processorSeconds();
    Assimp::Importer importer;
    expect(importer.ReadFile(path, aiProcess_JoinIdenticalVertices | aiProcess_SortByPType | aiProcess_Triangulate) !=
               nullptr,
           Work::Import);
    return processorSeconds() - start;
}
#else
double secondsOfImport(const std::string& /*path*/)
{
    throw std::runtime_error("this program was built without Assimp");
}
#endif

} // namespace

const char* nameOf(Work work)
{
    switch (work) {
    case Work::Open:
        return "open";
    case Work::Load:
        return "load";
    case Work::Import:
        return "import";
    }
    return "";
}

Work workOf(const std::string& name)
{
    for (const Work work : {Work::Open, Work::Load, Work::Import}) {
        if (name == nameOf(work)) {
            return work;
        }
    }
    throw std::runtime_error("no such work: " + name);
}

double secondsOf(Work work, const std::string& path)
{
    switch (work) {
    case Work::Open:
        return secondsOfOpen(path);
    case Work::Load:
        return secondsOfLoad(path);
    case Work::Import:
        return secondsOfImport(path);
    }
    return 0.0;
}

} // namespace benchmarks
