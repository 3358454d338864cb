// Opening, placing and closing the window, and what the system knows of screen, mouse and keys.
#include "platform/window.h"

#include <algorithm>
#include <memory>

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
RECT outerRectangle(const PixelRect& client, bool border, bool menu) {
    RECT outer = {client.left, client.top, client.right, client.bottom};
    AdjustWindowRect(&outer, styleFor(border), border && menu);
    return outer;
}

PixelRect toPixelRect(const RECT& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

// A menu that breaks into two lines takes height that nobody counted: the window grows by it, as
// far as the work area has room.
void correctClientHeight(const Window& window, int wanted) {
    RECT client, outer;
    GetClientRect(window.handle, &client);
    if (client.bottom >= wanted || IsIconic(window.handle)) return;
    GetWindowRect(window.handle, &outer);
    const LONG grown = outer.bottom + wanted - client.bottom;
    const LONG bottom =
        std::max<LONG>(outer.bottom, std::min<LONG>(grown, workArea(&window).bottom));
    SetWindowPos(window.handle, nullptr, 0, 0, outer.right - outer.left, bottom - outer.top,
                 SWP_NOZORDER | SWP_NOMOVE | SWP_NOACTIVATE);
}

void moveTo(HWND window, const RECT& outer, UINT flags) {
    SetWindowPos(window, nullptr, outer.left, outer.top, outer.right - outer.left,
                 outer.bottom - outer.top, SWP_NOZORDER | flags);
}

void changeBorder(const Window& window, bool border) {
    const LONG style = GetWindowLongW(window.handle, GWL_STYLE);
    // What the system keeps in the style (minimised ...) stays.
    const LONG wanted =
        static_cast<LONG>((style & ~(borderedStyle & ~plainStyle)) | styleFor(border));
    if (wanted == style) return;
    SetWindowLongW(window.handle, GWL_STYLE, wanted);
    SetMenu(window.handle, border && window.withMenu ? window.menu : nullptr);
}

bool createNative(Window& window, const WindowRequest& request) {
    const wchar_t* const windowClass = viewerWindowClass();
    if (!windowClass) return false;
    window.menu = LoadMenuW(resourceModule(), MAKEINTRESOURCEW(menuResource));
    RECT outer = outerRectangle(request.client, request.border, request.menu);
    // A caption above the screen could not be reached.
    if (outer.top < 0) OffsetRect(&outer, 0, -outer.top);
    window.creating = true;
    const HWND handle =
        CreateWindowW(windowClass, wideText(request.title).c_str(), styleFor(request.border),
                      outer.left, outer.top, outer.right - outer.left, outer.bottom - outer.top,
                      nullptr, window.menu, resourceModule(), &window);
    window.creating = false;
    if (!handle) {
        // A window that was refused after it had come has taken its menu along.
        if (window.menu) DestroyMenu(window.menu);
        return false;
    }
    if (!request.border || !request.menu) {
        SetMenu(handle, nullptr);
        moveTo(handle, outer, SWP_FRAMECHANGED);
    }
    return true;
}

// Of the calling thread.
thread_local int openWindows = 0;
thread_local bool closedSincePump = false;

}  // namespace

void windowCame() { ++openWindows; }

void windowWent() {
    closedSincePump = true;
    if (--openWindows == 0) PostQuitMessage(0);
}

bool windowsOnEveryThread() { return true; }

Window* openWindow(const WindowRequest& request, const WindowSink& sink) {
    auto window = std::make_unique<Window>();
    window->sink = sink;
    window->withMenu = request.menu;
    if (!createNative(*window, request)) return nullptr;
    correctClientHeight(*window, request.client.height());
    ShowWindow(window->handle, SW_SHOW);
    return window.release();
}

bool windowExists(const Window* window) { return handleOf(window) != nullptr; }

void closeWindow(Window* window) {
    if (windowExists(window)) DestroyWindow(window->handle);
}

void releaseWindow(Window* window) {
    closeWindow(window);
    delete window;
}

void placeWindow(Window* window, const PixelRect& client, bool border) {
    if (!windowExists(window)) return;
    changeBorder(*window, border);
    moveTo(window->handle, outerRectangle(client, border, window->withMenu), SWP_FRAMECHANGED);
    correctClientHeight(*window, client.height());
}

PixelRect outerRect(const Window* window, const PixelRect& client, bool border) {
    return toPixelRect(outerRectangle(client, border, !window || window->withMenu));
}

void setWindowTitle(Window* window, const std::string& title) {
    if (windowExists(window)) SetWindowTextW(window->handle, wideText(title).c_str());
}

void clientArea(const Window* window, int& width, int& height) {
    RECT client = {};
    if (windowExists(window)) GetClientRect(window->handle, &client);
    width = client.right;
    height = client.bottom;
}

void clientScreenPosition(const Window* window, int& x, int& y) {
    POINT corner = {};
    if (windowExists(window)) ClientToScreen(window->handle, &corner);
    x = corner.x;
    y = corner.y;
}

void setCursor(Window* window, bool cross) {
    if (!windowExists(window)) return;
    window->cursor = LoadCursorA(nullptr, cross ? IDC_CROSS : IDC_ARROW);
    SetCursor(window->cursor);
}

void pumpMessages() {
    closedSincePump = false;
    MSG message;
    // The quit message comes last, when the thread's last window has gone.
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void waitMessage() {
    // Without a window nothing would ever come.
    if (openWindows > 0 && !closedSincePump) WaitMessage();
}

void onDisplayLost(void (*)()) {}

ScreenSize screenSize() { return {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}; }

PixelRect workArea(const Window* window) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    const HWND handle = handleOf(window);
    GetMonitorInfoW(MonitorFromWindow(handle, MONITOR_DEFAULTTOPRIMARY), &monitor);
    return toPixelRect(monitor.rcWork);
}

bool keyDown(int code) { return code < 256 && (GetAsyncKeyState(code) & 0x8000) != 0; }

void cursorPosition(int& x, int& y) {
    POINT position = {};
    GetCursorPos(&position);
    x = position.x;
    y = position.y;
}

}  // namespace vistel::platform
