#include "platform/browser_command.h"

namespace vistel::platform {

namespace {

constexpr const char* leftToTheSystem[] = {"NETSCP.EXE", "NETSCP6.EXE", "OPERA.EXE", "MOZILLA.EXE"};

}  // namespace

std::optional<std::string> browserCommand(const std::string& registered,
                                          const std::string& address) {
    for (const char* program : leftToTheSystem)
        if (registered.find(program) != std::string::npos) return std::nullopt;
    const size_t quoted = registered.find("\"%1\"");
    const size_t cut = quoted == std::string::npos ? registered.find("%1") : quoted;
    return registered.substr(0, cut) + " " + address;
}

}  // namespace vistel::platform
