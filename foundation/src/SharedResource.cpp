#include <vesk/SharedResource.h>

namespace vesk {

SharedResourceDestroyerBase::~SharedResourceDestroyerBase() = default;

} // namespace vesk
