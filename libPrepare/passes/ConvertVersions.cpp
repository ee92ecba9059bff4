#include "Passes.h"

namespace libPrepare {

void convertVersions(Document&) {}

} // namespace libPrepare
