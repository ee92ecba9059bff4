#include "Passes.h"

namespace libPrepare {

void chooseVisualScene(Document&) {}

} // namespace libPrepare
