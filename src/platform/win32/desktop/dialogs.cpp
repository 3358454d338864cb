#include "platform/dialogs.h"

#include <cstdio>

#include "platform/win32/desktop/native_window.h"
#include "platform/win32/os/wide_text.h"
#include "resources/command_ids.h"

namespace vistel::platform {

namespace {

void showBox(Window* over, const std::string& caption, const std::wstring& text, UINT icon) {
    const int answer =
        MessageBoxW(handleOf(over), text.c_str(), wideText(caption).c_str(), MB_OK | icon);
    // No display, no box.
    if (answer <= 0) std::fprintf(stderr, "%s: %s\n", caption.c_str(), utf8Text(text).c_str());
}

// The system's text for an error code, in the system's default language.
std::wstring systemErrorText(DWORD error) {
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
        reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring copy(text, text ? length : 0);
    LocalFree(text);
    return copy;
}

INT_PTR CALLBACK closesWithOk(HWND dialog, UINT message, WPARAM wide, LPARAM) {
    if (message == WM_INITDIALOG) return TRUE;
    if (message != WM_COMMAND || (LOWORD(wide) != IDOK && LOWORD(wide) != IDCANCEL)) return FALSE;
    EndDialog(dialog, 0);
    return TRUE;
}

// The text of the About dialog comes as its parameter.
INT_PTR CALLBACK aboutProcedure(HWND dialog, UINT message, WPARAM wide, LPARAM lengthy) {
    if (message == WM_INITDIALOG)
        SetDlgItemTextW(dialog, FIELD_ABOUT, reinterpret_cast<const wchar_t*>(lengthy));
    return closesWithOk(dialog, message, wide, lengthy);
}

}  // namespace

void showMessageBox(Window* over, const std::string& caption, const std::string& text) {
    showBox(over, caption, wideText(text), 0);
}

void showSystemErrorBox(Window* over, const std::string& caption) {
    // First of all: whatever is called next may change it.
    const DWORD error = GetLastError();
    showBox(over, caption, systemErrorText(error), MB_ICONINFORMATION);
}

bool confirm(Window* over, const std::string& caption, const std::string& text) {
    return MessageBoxW(handleOf(over), wideText(text).c_str(), wideText(caption).c_str(),
                       MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

void showAbout(Window* over, const std::string& text) {
    const std::wstring wide = wideText(text);
    DialogBoxParamW(resourceModule(), MAKEINTRESOURCEW(aboutDialogResource), handleOf(over),
                    aboutProcedure, reinterpret_cast<LPARAM>(wide.c_str()));
}

void showFileDialogHelp() {
    DialogBoxParamW(resourceModule(), MAKEINTRESOURCEW(fileHelpDialogResource), GetActiveWindow(),
                    closesWithOk, 0);
}

}  // namespace vistel::platform
