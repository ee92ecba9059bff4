#include "Passes.h"

namespace libPrepare {

void resolveTextures(Document&) {}

} // namespace libPrepare
