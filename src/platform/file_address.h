// What a web browser calls a file. win32 and linux implement it each.
#pragma once

#include <string>

namespace vistel::platform {

// "file:///..." for a whole path with forward slashes; what this system's browsers would not take
// as it is, at least each blank, is written as "%" and two digits.
std::string fileAddress(const std::string& path);

}  // namespace vistel::platform
