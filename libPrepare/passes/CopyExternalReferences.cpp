#include "Passes.h"

namespace libPrepare {

void copyExternalReferences(Document&) {}

} // namespace libPrepare
