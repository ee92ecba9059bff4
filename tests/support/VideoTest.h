#pragma once

/// @file
/// Precompiled header of all tests of libVideo.

#include "ColladaBuilder.h"
#include "Curves.h"
#include "FailingAllocator.h"
#include "Failures.h"
#include "LogCapture.h"
#include "MatrixValues.h"
#include "MemberOrder.h"
#include "PrivateAccess.h"
#include "Rows.h"
#include "SilentDocumentModel.h"
#include "Words.h"

#include <vesk/Array.h>
#include <vesk/Buffer.h>
#include <vesk/CopiedResource.h>
#include <vesk/Exception.h>
#include <vesk/HashTable.h>
#include <vesk/Logging.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

#include <libVideo/Handles.h>

#include <libVideo/ColladaDom.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
