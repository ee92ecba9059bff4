#include "Passes.h"

namespace libPrepare {

void arrangeInputs(Document&) {}

} // namespace libPrepare
