// The settings live in the registry of the user, as texts (REG_SZ).
#include "platform/settings_store.h"

#include <cstring>

#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

constexpr const char* settingsKey = "Software\\Ostrel\\vistel";
constexpr DWORD valueCapacity = 260;  // bytes, the terminating zero included

HKEY openForWriting() {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, settingsKey, 0, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS) {
        return key;
    }
    return RegCreateKeyA(HKEY_CURRENT_USER, settingsKey, &key) == ERROR_SUCCESS ? key : nullptr;
}

}  // namespace

std::optional<std::string> readSetting(const std::string& name) {
    static char value[valueCapacity];
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, settingsKey, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    DWORD type = REG_NONE, size = valueCapacity;
    std::memset(value, 0, sizeof value);
    if (RegQueryValueExA(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(value),
                         &size) != ERROR_SUCCESS ||
        type != REG_SZ) {
        RegCloseKey(key);
        return std::nullopt;
    }
    // The key stays open after a successful read, on purpose: it is read a few times in a run, and
    // the handle goes with the process.
    return std::string(value, strnlen(value, valueCapacity - 1));
}

void writeSetting(const std::string& name, const std::string& value) {
    const HKEY key = openForWriting();
    if (!key) return;
    // The length does not count the terminating zero.
    RegSetValueExA(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                   static_cast<DWORD>(value.size()));
    RegCloseKey(key);
}

}  // namespace vistel::platform
