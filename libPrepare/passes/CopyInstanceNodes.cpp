#include "Passes.h"

namespace libPrepare {

void copyInstanceNodes(Document&) {}

} // namespace libPrepare
