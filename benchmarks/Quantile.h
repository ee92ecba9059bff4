#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace benchmarks {

/// The value below which a share of the values lies. There has to be a value.
inline double quantile(std::vector<double> values, double share)
{
    const auto place = std::lround(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
}

/// Between the lower and the upper half of the values.
inline double median(const std::vector<double>& values)
{
    return quantile(values, 0.5);
}

} // namespace benchmarks
