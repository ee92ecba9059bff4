#pragma once

#include <string>
#include <vector>

namespace testSupport {

using Texts = std::vector<std::string>;

/// A list of texts, which clang-format does not break into one line per text.
template <class... Text>
Texts texts(const Text&... all)
{
    return {all...};
}

} // namespace testSupport
