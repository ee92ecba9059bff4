#include "Passes.h"

namespace libPrepare {

void makeNormals(Document&) {}

} // namespace libPrepare
