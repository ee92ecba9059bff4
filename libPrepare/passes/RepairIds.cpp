#include "Passes.h"

namespace libPrepare {

void repairIds(Document&) {}

} // namespace libPrepare
