#include "Passes.h"

namespace libPrepare {

void bindMaterials(Document&) {}

} // namespace libPrepare
