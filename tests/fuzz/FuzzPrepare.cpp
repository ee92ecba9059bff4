// Any bytes as a document: what comes out of its preparation is well-formed, prepares to itself, and loads.

#include "Check.h"

#include "support/PreparationCheck.h"
#include "support/TortureFolder.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testSupport::TortureFolder folder; // goes when the process ends by itself
    const std::string path = folder.write(std::string(reinterpret_cast<const char*>(data), size));
    const std::string fault = testSupport::faultOfPreparation(path);
    if (!fault.empty()) {
        fuzz::fail(fault);
    }
    return 0;
}
