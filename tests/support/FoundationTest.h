#pragma once

/// @file
/// Precompiled header of all tests of the foundation.

#include "CollidingTexts.h"
#include "CountingElement.h"
#include "FailingAllocator.h"
#include "LogCapture.h"
#include "MemberOrder.h"
#include "PrivateAccess.h"
#include "Rows.h"

#include <vesk/Array.h>
#include <vesk/Buffer.h>
#include <vesk/CopiedResource.h>
#include <vesk/Exception.h>
#include <vesk/HashTable.h>
#include <vesk/Logging.h>
#include <vesk/PointerStorage.h>
#include <vesk/Serializable.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <numeric>
#include <ostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace testSupport {

template <class T>
std::vector<T> elements(const vesk::Array<T>& array)
{
    std::vector<T> list;
    for (unsigned i = 0; i < array.size(); ++i) {
        list.push_back(array[i]);
    }
    return list;
}

/// A string that owns its memory.
inline vesk::String longText(unsigned number)
{
    vesk::String text("a text that is too long to stand in the object itself, number ");
    text.append(std::to_string(number).c_str());
    return text;
}

} // namespace testSupport
