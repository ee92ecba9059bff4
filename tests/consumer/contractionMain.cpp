// Compiled for every processor: compares where there are fused operations that a compiler could have used.

#include <cstdio>

int countDifferences();

int main()
{
#if defined(__x86_64__)
    if (!__builtin_cpu_supports("fma") || !__builtin_cpu_supports("avx2")) {
        std::puts("not compared: this processor has no fused operations");
        return 0;
    }
#endif
    return countDifferences() == 0 ? 0 : 1;
}
