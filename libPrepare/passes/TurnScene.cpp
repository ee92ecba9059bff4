#include "Passes.h"

namespace libPrepare {

void turnScene(Document&) {}

} // namespace libPrepare
