#pragma once

/// @file
/// The guard of a load. The document model takes documents on trust, lets their references reach for any file and the
/// network, reads numbers in the host's locale and writes its messages to standard output; what stands here keeps that
/// away from the host.

#include "../detail/MemoryBudget.h"
#include "ReferenceResolver.h"

#include <libVideo/ColladaDom.h>

#include <vesk/String.h>

#include <libxml/xmlerror.h>

#include <clocale>

namespace libVideo::detail {

/// Numbers are read in the C locale.
class NumericLocaleScope {
public:
    NumericLocaleScope();
    ~NumericLocaleScope();
    NumericLocaleScope(const NumericLocaleScope&) = delete;
    NumericLocaleScope& operator=(const NumericLocaleScope&) = delete;

private:
    locale_t m_numericC;
    locale_t m_before = nullptr;
};

/// The document model is silent, unless the host has given it an error handler of its own; the parser below it always
/// is.
class SilenceScope {
public:
    SilenceScope();
    ~SilenceScope();
    SilenceScope(const SilenceScope&) = delete;
    SilenceScope& operator=(const SilenceScope&) = delete;

private:
    bool m_isSilent;
    xmlGenericErrorFunc m_parserMessages;
    void* m_parserContext;
    xmlStructuredErrorFunc m_parserErrors;
    void* m_parserErrorContext;
};

/// References are followed by a `ReferenceResolver` alone.
class ReferenceScope {
public:
    ReferenceScope(DAE& dae, ColladaReader& reader);
    ~ReferenceScope();
    ReferenceScope(const ReferenceScope&) = delete;
    ReferenceScope& operator=(const ReferenceScope&) = delete;

    ReferenceResolver& resolver() { return m_resolver; }

private:
    daeTArray<daeURIResolver*>& m_list;
    daeTArray<daeURIResolver*> m_before;
    ReferenceResolver m_resolver;
};

/// Stands around a load; all is as it was before at the end.
class LoadScope {
public:
    LoadScope(DAE& dae, ColladaReader& reader) : m_references(dae, reader) {}

    /// Opens the file that `path` names, whatever characters the path holds.
    /// @return the root, or null for whatever is no regular file or is refused;
    ///     exceptions of the document model count as that, those of `vesk` pass
    domCOLLADA* open(const vesk::String& path);

private:
    MemoryBudget m_budget;
    NumericLocaleScope m_locale;
    SilenceScope m_silence;
    ReferenceScope m_references;
};

} // namespace libVideo::detail
