// The command that a system has registered for opening pages, made one for a certain page.
//
// Shared code, for the systems that register commands with a place for the page (win32).
#pragma once

#include <optional>
#include <string>

namespace vistel::platform {

// The address takes the place of the first %1 between double quotes, else of the first one, else it
// comes last; a blank before it. What stood behind the place is left out. None for a browser that
// does not take addresses so and is to be left to the system.
std::optional<std::string> browserCommand(const std::string& registered,
                                          const std::string& address);

}  // namespace vistel::platform
