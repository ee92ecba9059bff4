#pragma once

/// @file
/// Protects the host during a load. The document model itself trusts documents, lets their references reach any file
/// and the network, reads numbers in the host's locale, and writes messages to standard output.

#include "../detail/MemoryBudget.h"
#include "ReferenceResolver.h"

#include <libVideo/ColladaDom.h>

#include <vesk/String.h>

#include <libxml/xmlerror.h>

#include <clocale>

namespace libVideo::detail {

/// While it exists, this thread reads numbers in the C locale.
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

/// While it exists, the XML parser is silent, and so is the document model, unless the host has set an error handler of
/// its own.
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

/// While it exists, only a `ReferenceResolver` resolves references.
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

/// All protections of one load. The destructor restores the previous state.
class LoadScope {
public:
    LoadScope(DAE& dae, ColladaReader& reader) : m_references(dae, reader) {}

    /// Opens the file at `path`, which may have any characters.
    /// @return the root, or null if it is not a regular file, the document is refused, or the document model throws;
    ///     exceptions of `vesk` propagate
    domCOLLADA* open(const vesk::String& path);

private:
    MemoryBudget m_budget;
    NumericLocaleScope m_locale;
    SilenceScope m_silence;
    ReferenceScope m_references;
};

} // namespace libVideo::detail
