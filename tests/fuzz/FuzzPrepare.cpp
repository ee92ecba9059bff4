// Any bytes as a document: the prepared document is well-formed, does not change when it is prepared again, and loads.

#include "Check.h"

#include "support/PreparationCheck.h"
#include "support/TortureFolder.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testSupport::TortureFolder folder; // removed when the process exits normally
    const std::string path = folder.write(std::string(reinterpret_cast<const char*>(data), size));
    const std::string fault = testSupport::faultOfPreparation(path);
    if (!fault.empty()) {
        fuzz::fail(fault);
    }
    return 0;
}
