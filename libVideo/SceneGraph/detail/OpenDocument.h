#pragma once

/// @file
/// The guard of a load. The document model takes documents on trust, reads numbers in the host's locale and writes its
/// messages to standard output; what stands here keeps that away from the host.

#include <libVideo/ColladaDom.h>

#include <vesk/String.h>

#include <clocale>

namespace libVideo::detail {

/// For the length of a load: numbers read in the C locale, and the document model silent unless the host has given it
/// an error handler of its own. Both are put back at the end.
class LoadScope {
public:
    LoadScope();
    ~LoadScope();
    LoadScope(const LoadScope&) = delete;
    LoadScope& operator=(const LoadScope&) = delete;

private:
    locale_t m_numericC;
    locale_t m_localeBefore = nullptr;
    bool m_isSilent;
};

/// Takes from a new `DAE` the resolver that reads what a reference names as plain numbers, and does not survive it if an
/// element asks that holds none.
void removeRawResolver(DAE& dae);

/// Opens the file that `path` names, whatever characters the path holds.
/// @return the root, or null for whatever is no regular file, is an archive, or does not open; exceptions of the
///     document model count as that, those of `vesk` pass
domCOLLADA* openDocument(DAE& dae, const vesk::String& path);

} // namespace libVideo::detail
