#include "Passes.h"

namespace libPrepare {

void separateGeometries(Document&) {}

} // namespace libPrepare
