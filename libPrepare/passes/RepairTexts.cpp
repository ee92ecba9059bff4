#include "Passes.h"

namespace libPrepare {

void repairTexts(Document&) {}

} // namespace libPrepare
