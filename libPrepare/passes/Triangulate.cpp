#include "Passes.h"

namespace libPrepare {

void triangulate(Document&) {}

} // namespace libPrepare
