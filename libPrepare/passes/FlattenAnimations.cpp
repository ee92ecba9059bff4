#include "Passes.h"

namespace libPrepare {

void flattenAnimations(Document&) {}

} // namespace libPrepare
