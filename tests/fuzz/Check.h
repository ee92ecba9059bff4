#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// Aborts the process, which the fuzzer reports as a finding.
[[noreturn]] inline void fail(const std::string& words)
{
    static_cast<void>(std::fprintf(stderr, "FINDING: %s\n", words.c_str()));
    std::abort();
}

inline void check(bool holds, const char* words)
{
    if (!holds) {
        fail(words);
    }
}

} // namespace fuzz
