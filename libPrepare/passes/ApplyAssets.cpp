#include "Passes.h"

namespace libPrepare {

void applyAssets(Document&) {}

} // namespace libPrepare
