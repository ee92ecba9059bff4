#include "Passes.h"

namespace libPrepare {

void completeLights(Document&) {}

} // namespace libPrepare
