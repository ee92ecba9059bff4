#include "Benchmarks.h"

namespace benchmarks {

namespace {

bool isAnyFailed = false;

} // namespace

void fail(benchmark::State& state, const std::string& reason)
{
    isAnyFailed = true;
    state.SkipWithError(reason.c_str());
}

bool hasFailed()
{
    return isAnyFailed;
}

} // namespace benchmarks
