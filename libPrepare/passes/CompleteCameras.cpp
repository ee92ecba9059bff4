#include "Passes.h"

namespace libPrepare {

void completeCameras(Document&) {}

} // namespace libPrepare
