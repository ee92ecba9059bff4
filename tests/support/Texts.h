#pragma once

#include <string>
#include <vector>

namespace testSupport {

using Texts = std::vector<std::string>;

/// A list; unlike one in braces it takes no line for each of its texts.
template <class... Text>
Texts texts(const Text&... all)
{
    return {all...};
}

} // namespace testSupport
