#include "Passes.h"

namespace libPrepare {

void completeEffects(Document&) {}

} // namespace libPrepare
