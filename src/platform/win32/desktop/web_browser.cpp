#include "platform/web_browser.h"

#include "platform/browser_command.h"
#include "platform/win32/windows_api.h"

#include <shellapi.h>

namespace vistel::platform {

namespace {

constexpr LONG longestValue = 260;   // bytes, the terminating zero included
constexpr UINT lastStartError = 32;  // above it the program runs

// The text that stands for a key of the classes itself.
std::optional<std::string> classText(const std::string& key) {
    char text[longestValue] = {};
    LONG size = longestValue;
    if (RegQueryValueA(HKEY_CLASSES_ROOT, key.c_str(), text, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return std::string(text, strnlen(text, longestValue));
}

// The command with which the system opens pages.
std::optional<std::string> registeredBrowser() {
    const std::optional<std::string> documentClass = classText(".htm");
    if (!documentClass) return std::nullopt;
    return classText(*documentClass + "\\shell\\open\\command");
}

bool startRegisteredBrowser(const std::string& address) {
    const std::optional<std::string> registered = registeredBrowser();
    if (!registered) return false;
    const std::optional<std::string> command = browserCommand(*registered, address);
    return command && WinExec(command->c_str(), SW_SHOWNORMAL) > lastStartError;
}

}  // namespace

// What the shell cannot open it tells the user itself.
bool showInBrowser(const std::string& address) {
    if (startRegisteredBrowser(address)) return true;
    ShellExecuteA(nullptr, "open", address.c_str(), nullptr, "C:\\", SW_SHOWNORMAL);
    return true;
}

}  // namespace vistel::platform
