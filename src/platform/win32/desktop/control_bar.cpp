#include "platform/control_bar.h"

#include <algorithm>
#include <utility>

#include "platform/win32/desktop/native_window.h"
#include "platform/win32/os/wide_text.h"
#include "resources/command_ids.h"

// After the system's own header.
#include <commctrl.h>

namespace vistel::platform {

namespace {

constexpr int buttonTop = 3, buttonHeight = 23;
constexpr int fieldTop = 4, fieldHeight = 21;
constexpr int labelTop = 8, labelHeight = 16;

struct Place {
    int control, left, top, width, height;
};
constexpr Place places[] = {
#define BAR_BUTTON(caption, control, left, width) {control, left, buttonTop, width, buttonHeight},
#define BAR_FIELD(control, left, width) {control, left, fieldTop, width, fieldHeight},
#define BAR_LABEL(text, control, left, width) {control, left, labelTop, width, labelHeight},
#include "resources/control_bar_table.inc"
#undef BAR_BUTTON
#undef BAR_FIELD
#undef BAR_LABEL
};

Window& windowOfBar(HWND dialog) {
    return *reinterpret_cast<Window*>(GetWindowLongPtrW(dialog, DWLP_USER));
}

HWND controlOf(const ControlBar& bar, int id) { return GetDlgItem(bar.dialog, id); }

// --- buttons ------------------------------------------------------------------------------------

uint32_t systemColour(int index) {
    const DWORD colour = GetSysColor(index);
    return uint32_t{GetRValue(colour)} << 16 | uint32_t{GetGValue(colour)} << 8 | GetBValue(colour);
}

void drawButton(const ControlBar& bar, const DRAWITEMSTRUCT& item) {
    const auto look = bar.looks.find(static_cast<int>(item.CtlID));
    if (look == bar.looks.end()) return;
    const BarTouch touch = item.itemState & ODS_SELECTED  ? BarTouch::pressed
                           : item.hwndItem == bar.hovered ? BarTouch::hovered
                                                          : BarTouch::none;
    const BarColours colours{systemColour(COLOR_BTNFACE), systemColour(COLOR_BTNTEXT),
                             systemColour(COLOR_HIGHLIGHT)};
    const int width = item.rcItem.right, height = item.rcItem.bottom;
    const std::vector<uint32_t> pixels = drawBarButton(look->second, touch, colours, width, height);
    BITMAPINFO format = {};
    format.bmiHeader.biSize = sizeof format.bmiHeader;
    format.bmiHeader.biWidth = width;
    format.bmiHeader.biHeight = -height;  // rows from above
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    SetDIBitsToDevice(item.hDC, 0, 0, width, height, 0, 0, 0, height, pixels.data(), &format,
                      DIB_RGB_COLORS);
}

void hover(ControlBar& bar, HWND button) {
    if (button == bar.hovered) return;
    const HWND before = std::exchange(bar.hovered, button);
    for (const HWND changed : {before, button})
        if (changed) InvalidateRect(changed, nullptr, FALSE);
}

// A button tells when the pointer comes and goes.
LRESULT CALLBACK buttonProcedure(HWND button, UINT id, WPARAM wide, LPARAM lengthy, UINT_PTR,
                                 DWORD_PTR owner) {
    ControlBar& bar = *reinterpret_cast<ControlBar*>(owner);
    if (id == WM_MOUSEMOVE) {
        hover(bar, button);
        TRACKMOUSEEVENT leaving = {sizeof leaving, TME_LEAVE, button, 0};
        TrackMouseEvent(&leaving);
    }
    if (id == WM_MOUSELEAVE && bar.hovered == button) hover(bar, nullptr);
    return DefSubclassProc(button, id, wide, lengthy);
}

// --- field --------------------------------------------------------------------------------------

constexpr int longestText = 255;

std::wstring fieldText(HWND field) {
    wchar_t text[longestText + 1] = {};
    GetWindowTextW(field, text, longestText + 1);
    return text;
}

void stepField(HWND field, int change) {
    const int rate = _wtoi(fieldText(field).c_str());
    SetWindowTextW(field, std::to_wstring(std::max(rate + change, 1)).c_str());
}

// Of the characters that a key types the field takes what a number is made of, blanks, and what the
// system has control characters for.
bool isForField(WPARAM character) {
    return character < ' ' || character == ' ' || (character >= '0' && character <= '9');
}

LRESULT CALLBACK fieldProcedure(HWND field, UINT id, WPARAM wide, LPARAM lengthy, UINT_PTR,
                                DWORD_PTR owner) {
    constexpr WPARAM controlA = 1;
    const bool leaving = wide == VK_RETURN || wide == VK_ESCAPE || wide == VK_TAB;
    switch (id) {
        case WM_KEYDOWN:
            if (leaving) SetFocus(reinterpret_cast<Window*>(owner)->handle);
            if (wide == VK_UP || wide == VK_DOWN) stepField(field, wide == VK_UP ? 1 : -1);
            if (leaving || wide == VK_UP || wide == VK_DOWN) return 0;
            break;
        case WM_CHAR:
            if (leaving) return 0;
            if (wide == controlA) return SendMessageW(field, EM_SETSEL, 0, -1);
            if (!isForField(wide)) {
                MessageBeep(MB_OK);
                return 0;
            }
            break;
        case WM_MOUSEWHEEL:
            stepField(field, GET_WHEEL_DELTA_WPARAM(wide) > 0 ? 1 : -1);
            return 0;
    }
    return DefSubclassProc(field, id, wide, lengthy);
}

void fieldChanged(Window& window) {
    if (window.bar.rewriting || !window.sink.rateTyped) return;
    const HWND field = controlOf(window.bar, BAR_RATE);
    window.sink.rateTyped(window.sink.owner, utf8Text(fieldText(field)));
}

// --- dialog -------------------------------------------------------------------------------------

void clicked(Window& window, int control) {
    SetFocus(window.handle);
    const WindowSink sink = window.sink;
    sink.command(sink.owner, control);
}

void prepareControls(HWND dialog, Window& window) {
    constexpr UINT_PTR subclass = 1;
    window.bar.dialog = dialog;
    for (const Place& place : places) {
        const HWND control = GetDlgItem(dialog, place.control);
        SetWindowPos(control, nullptr, place.left, place.top, place.width, place.height,
                     SWP_NOZORDER | SWP_NOACTIVATE);
        if (place.control == BAR_RATE)
            SetWindowSubclass(control, fieldProcedure, subclass,
                              reinterpret_cast<DWORD_PTR>(&window));
        else if (place.control != BAR_RATE_LABEL)
            SetWindowSubclass(control, buttonProcedure, subclass,
                              reinterpret_cast<DWORD_PTR>(&window.bar));
    }
    SendDlgItemMessageW(dialog, BAR_RATE, EM_SETLIMITTEXT, longestText, 0);
}

void controlTold(Window& window, int control, int notice) {
    if (control == BAR_RATE) {
        if (notice == EN_CHANGE) fieldChanged(window);
    } else if (notice == BN_CLICKED || notice == BN_DOUBLECLICKED) {
        clicked(window, control);
    }
}

INT_PTR CALLBACK barProcedure(HWND dialog, UINT id, WPARAM wide, LPARAM lengthy) {
    switch (id) {
        case WM_INITDIALOG:
            SetWindowLongPtrW(dialog, DWLP_USER, lengthy);
            prepareControls(dialog, *reinterpret_cast<Window*>(lengthy));
            return FALSE;  // the keyboard stays where it is
        case WM_DRAWITEM:
            drawButton(windowOfBar(dialog).bar, *reinterpret_cast<const DRAWITEMSTRUCT*>(lengthy));
            return TRUE;
        case WM_COMMAND:
            if (GetWindowLongPtrW(dialog, DWLP_USER))
                controlTold(windowOfBar(dialog), LOWORD(wide), HIWORD(wide));
            return TRUE;
    }
    return FALSE;
}

void attachTip(ControlBar& bar, int control) {
    TOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = bar.dialog;
    tool.uId = reinterpret_cast<UINT_PTR>(controlOf(bar, control));
    tool.lpszText = bar.tipTexts[control].data();
    SendMessageW(bar.tips, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(bar.tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

bool isOpen(const Window* window) { return windowExists(window) && window->bar.dialog; }

}  // namespace

void openControlBar(Window* window) {
    if (!windowExists(window) || window->bar.dialog) return;
    const INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_WIN95_CLASSES};
    InitCommonControlsEx(&classes);
    window->bar = {};
    CreateDialogParamW(resourceModule(), MAKEINTRESOURCEW(controlBarDialogResource), window->handle,
                       barProcedure, reinterpret_cast<LPARAM>(window));
    if (!window->bar.dialog) return;
    window->bar.tips =
        CreateWindowW(TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                      CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, window->handle,
                      nullptr, resourceModule(), nullptr);
    fitControlBar(*window);
    ShowWindow(window->bar.dialog, SW_SHOWNA);
}

void closeControlBar(Window* window) {
    if (!isOpen(window)) return;
    const bool hadKeyboard = IsChild(window->bar.dialog, GetFocus());
    DestroyWindow(std::exchange(window->bar.dialog, nullptr));
    DestroyWindow(window->bar.tips);
    window->bar = {};
    if (hadKeyboard) SetFocus(window->handle);
}

void fitControlBar(Window& window) {
    if (!window.bar.dialog) return;
    RECT client;
    GetClientRect(window.handle, &client);
    SetWindowPos(window.bar.dialog, HWND_TOP, 0, 0, client.right, controlBarHeight, SWP_NOACTIVATE);
}

void setBarTip(Window* window, int control, const std::string& text) {
    if (!isOpen(window)) return;
    window->bar.tipTexts[control] = wideText(text);
    attachTip(window->bar, control);
}

void showBarButton(Window* window, int button, const BarButtonLook& look) {
    if (!isOpen(window)) return;
    window->bar.looks[button] = look;
    const HWND control = controlOf(window->bar, button);
    EnableWindow(control, look.enabled);
    InvalidateRect(control, nullptr, FALSE);
}

void showBarRate(Window* window, const std::string& text) {
    if (!isOpen(window)) return;
    const HWND field = controlOf(window->bar, BAR_RATE);
    const std::wstring before = fieldText(field), now = wideText(text);
    if (before == now) return;
    DWORD caret = 0;
    SendMessageW(field, EM_GETSEL, 0, reinterpret_cast<LPARAM>(&caret));
    window->bar.rewriting = true;
    SetWindowTextW(field, now.c_str());
    window->bar.rewriting = false;
    // What stands for an emptied field is replaced by the next digit.
    if (GetFocus() == field)
        SendMessageW(field, EM_SETSEL, before.empty() ? 0 : caret, caret ? caret : -1);
}

}  // namespace vistel::platform
