#include "platform/browser_command.h"

#include <algorithm>

namespace vistel::platform {

namespace {

constexpr const char* leftToTheSystem[] = {"NETSCP.EXE", "NETSCP6.EXE", "OPERA.EXE", "MOZILLA.EXE"};

bool names(const std::string& command, const char* program) {
    return command.find(program) != std::string::npos;
}

}  // namespace

std::optional<std::string> browserCommand(const std::string& registered,
                                          const std::string& address) {
    if (std::ranges::any_of(leftToTheSystem, [&](auto* name) { return names(registered, name); }))
        return std::nullopt;
    const size_t quoted = registered.find("\"%1\"");
    const size_t cut = quoted == std::string::npos ? registered.find("%1") : quoted;
    return registered.substr(0, cut) + " " + address;
}

}  // namespace vistel::platform
