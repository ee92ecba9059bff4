#include "Passes.h"

namespace libPrepare {

void poseControllers(Document&) {}

} // namespace libPrepare
