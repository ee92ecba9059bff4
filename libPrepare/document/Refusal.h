#pragma once

#include <string>

namespace libPrepare {

/// Why a document cannot be read or written.
struct Refusal {
    const char* kind;    ///< As `Finding::kind`.
    std::string reason;  ///< Such as "is a directory"; after a line and column such as "not well-formed: ...".
    std::string remedy;  ///< What a person can do about it.
    unsigned line = 0;   ///< From 1; 0 if the document as a whole is meant.
    unsigned column = 0; ///< From 1, in bytes of the text as UTF-8.
};

} // namespace libPrepare
