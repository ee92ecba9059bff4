#include "Passes.h"

namespace libPrepare {

void findImages(Document&) {}

} // namespace libPrepare
