#include "platform/win32/desktop/wine_cures.h"

#include "platform/win32/desktop/native_window.h"

namespace vistel::platform::wine {

namespace {

bool isWine() {
    static const bool found =
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return found;
}

HWND createHiddenChild(HWND window) {
    return CreateWindowW(L"STATIC", nullptr, WS_CHILD, 0, 0, 1, 1, window, nullptr,
                         resourceModule(), nullptr);
}

bool hasVisibleChild(HWND window) {
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsWindowVisible(child)) return true;
    }
    return false;
}

}  // namespace

void windowCreated(HWND window) {
    if (isWine()) createHiddenChild(window);
}

void windowSized(HWND window) {
    if (isWine()) DestroyWindow(createHiddenChild(window));
}

void buffersSwapped(HWND window, HDC device) {
    if (isWine() && hasVisibleChild(window)) SwapBuffers(device);
}

}  // namespace vistel::platform::wine
