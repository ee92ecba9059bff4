#include "Passes.h"

namespace libPrepare {

void completeTransforms(Document&) {}

} // namespace libPrepare
