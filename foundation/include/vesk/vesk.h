#pragma once // SPDX-License-Identifier: MIT

/// @file
/// Everything of the foundation.

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
