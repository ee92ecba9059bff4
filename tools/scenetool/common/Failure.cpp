#include "Failure.h"

#include "Printable.h"

#include <iostream>

namespace scenetool {

int fail(const std::string& file, const std::string& why, int status)
{
    std::cerr << "scenetool: " << printable(file) << ": " << printable(why) << '\n';
    return status;
}

} // namespace scenetool
