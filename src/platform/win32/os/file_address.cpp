#include "platform/file_address.h"

namespace vistel::platform {

std::string fileAddress(const std::string& path) {
    std::string address = "file:///";
    for (const char c : path) {
        if (c == ' ')
            address += "%20";
        else
            address += c;
    }
    return address;
}

}  // namespace vistel::platform
