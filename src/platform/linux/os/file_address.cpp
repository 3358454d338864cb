#include "platform/file_address.h"

#include <cstdio>
#include <cstring>

namespace vistel::platform {

static bool standsForItself(char c) {
    const bool letterOrDigit =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return letterOrDigit || (c != 0 && std::strchr("-._~/:@!$&'()*+,;=", c));
}

// The path's own first slash is the third one.
std::string fileAddress(const std::string& path) {
    std::string address = path.starts_with('/') ? "file://" : "file:///";
    for (const char c : path) {
        char escape[4] = {c};
        if (!standsForItself(c))
            std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(c));
        address += escape;
    }
    return address;
}

}  // namespace vistel::platform
