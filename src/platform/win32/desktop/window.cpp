// Opening, placing and closing the window, and what the system knows of screen, mouse and keys.
#include "platform/window.h"

#include <algorithm>

#include "platform/surface.h"
#include "platform/win32/desktop/native_window.h"
#include "platform/win32/os/wide_text.h"

namespace vistel::platform {

namespace {

constexpr DWORD plainStyle = WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN;
// No sizing border and no maximise box: the picture decides the size.
constexpr DWORD borderedStyle = plainStyle | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;

DWORD styleFor(bool border) { return border ? borderedStyle : plainStyle; }

// The window's outer rectangle round a client rectangle.
RECT outerRectangle(const PixelRect& client, bool border) {
    RECT outer = {client.left, client.top, client.right, client.bottom};
    AdjustWindowRect(&outer, styleFor(border), border && nativeWindow().menu);
    return outer;
}

// A menu that breaks into two lines takes height that nobody counted: the window grows by it.
void correctClientHeight(int wanted) {
    const HWND window = nativeWindow().handle;
    RECT client, outer;
    GetClientRect(window, &client);
    if (client.bottom >= wanted || IsIconic(window)) return;
    GetWindowRect(window, &outer);
    SetWindowPos(window, nullptr, 0, 0, outer.right - outer.left,
                 outer.bottom - outer.top + wanted - client.bottom,
                 SWP_NOZORDER | SWP_NOMOVE | SWP_NOACTIVATE);
}

void moveTo(const RECT& outer, UINT flags) {
    SetWindowPos(nativeWindow().handle, nullptr, outer.left, outer.top, outer.right - outer.left,
                 outer.bottom - outer.top, SWP_NOZORDER | flags);
}

void changeBorder(bool border) {
    const NativeWindow& native = nativeWindow();
    const LONG style = GetWindowLongW(native.handle, GWL_STYLE);
    // What the system keeps in the style (minimised ...) stays.
    const LONG wanted =
        static_cast<LONG>((style & ~(borderedStyle & ~plainStyle)) | styleFor(border));
    if (wanted == style) return;
    SetWindowLongW(native.handle, GWL_STYLE, wanted);
    SetMenu(native.handle, border ? native.menu : nullptr);
}

bool createNative(const WindowRequest& request) {
    NativeWindow& native = nativeWindow();
    const wchar_t* const windowClass = viewerWindowClass();
    if (!windowClass) return false;
    native.menu = LoadMenuW(resourceModule(), MAKEINTRESOURCEW(menuResource));
    RECT outer = outerRectangle(request.client, request.border);
    // A caption above the screen could not be reached.
    if (outer.top < 0) OffsetRect(&outer, 0, -outer.top);
    HWND window =
        CreateWindowW(windowClass, wideText(request.title).c_str(), styleFor(request.border),
                      outer.left, outer.top, outer.right - outer.left, outer.bottom - outer.top,
                      nullptr, native.menu, resourceModule(), nullptr);
    if (!window) {
        if (native.menu) DestroyMenu(native.menu);
        native.menu = nullptr;
        return false;
    }
    applyMenuStates();
    if (!request.border) {
        SetMenu(window, nullptr);
        moveTo(outer, SWP_FRAMECHANGED);
    }
    return true;
}

void openAgain(const WindowRequest& request) {
    destroySurface();
    setWindowTitle(request.title);
    placeWindow(request.client, request.border);
}

}  // namespace

NativeWindow& nativeWindow() {
    static thread_local NativeWindow window;
    return window;
}

bool openWindow(const WindowRequest& request, const WindowSink& sink) {
    NativeWindow& native = nativeWindow();
    native.sink = sink;
    native.creating = true;
    bool opened = true;
    if (native.handle) {
        openAgain(request);
    } else {
        opened = createNative(request);
    }
    native.creating = false;
    if (!opened) return false;
    correctClientHeight(request.client.height());
    ShowWindow(native.handle, SW_SHOW);
    return true;
}

bool windowExists() { return nativeWindow().handle != nullptr; }

void placeWindow(const PixelRect& client, bool border) {
    if (!windowExists()) return;
    changeBorder(border);
    moveTo(outerRectangle(client, border), SWP_FRAMECHANGED);
    correctClientHeight(client.height());
}

void setWindowTitle(const std::string& title) {
    if (windowExists()) SetWindowTextW(nativeWindow().handle, wideText(title).c_str());
}

void closeWindow() {
    if (windowExists()) DestroyWindow(nativeWindow().handle);
}

void clientArea(int& width, int& height) {
    RECT client = {};
    if (windowExists()) GetClientRect(nativeWindow().handle, &client);
    width = client.right;
    height = client.bottom;
}

void clientScreenPosition(int& x, int& y) {
    POINT corner = {};
    if (windowExists()) ClientToScreen(nativeWindow().handle, &corner);
    x = corner.x;
    y = corner.y;
}

ScreenSize screenSize() { return {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}; }

PixelRect workArea() {
    RECT area = {};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    return {area.left, area.top, area.right, area.bottom};
}

void setCursor(bool cross) {
    nativeWindow().cursor = LoadCursorA(nullptr, cross ? IDC_CROSS : IDC_ARROW);
    SetCursor(nativeWindow().cursor);
}

bool pumpMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) return false;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

void waitMessage() {
    // Without a window nothing would ever come.
    if (windowExists()) WaitMessage();
}

bool keyDown(int code) { return code < 256 && (GetAsyncKeyState(code) & 0x8000) != 0; }

void cursorPosition(int& x, int& y) {
    POINT position = {};
    GetCursorPos(&position);
    x = position.x;
    y = position.y;
}

}  // namespace vistel::platform
