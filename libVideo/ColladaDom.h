#pragma once // SPDX-License-Identifier: MIT

/// @file
/// The one way to the classes of COLLADA DOM: with the definitions that its binary was built with, and without the
/// warnings that its headers give.

#pragma GCC system_header

// Two of these add virtual functions to the class DAE, so they are part of its binary form.
#ifndef COLLADA_DOM_SUPPORT141
#define COLLADA_DOM_SUPPORT141
#endif
#ifndef COLLADA_DOM_SUPPORT150
#define COLLADA_DOM_SUPPORT150
#endif
#ifndef COLLADA_DOM_DAEFLOAT_IS64
#define COLLADA_DOM_DAEFLOAT_IS64
#endif
#ifndef COLLADA_DOM_USING_141
#define COLLADA_DOM_USING_141
#endif
#ifndef NO_BOOST
#define NO_BOOST // hides two helpers that would need the headers of Boost
#endif

#include <dae.h>
#include <dae/daeErrorHandler.h>
#include <dae/daeMetaCMPolicy.h>
#include <dom/domAny.h>
#include <dom/domCOLLADA.h>
#include <dom/domCommon_newparam_type.h>
#include <dom/domConstants.h>
#include <dom/domProfile_COMMON.h>
