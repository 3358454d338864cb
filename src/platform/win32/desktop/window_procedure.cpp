// The messages of the viewer window and what becomes of them.
#include <vector>

#include "platform/control_bar.h"
#include "platform/input_event.h"
#include "platform/surface.h"
#include "platform/win32/desktop/native_window.h"
#include "platform/win32/desktop/wine_cures.h"
#include "platform/win32/os/wide_text.h"

// After the system's own header.
#include <shellapi.h>

namespace vistel::platform {

namespace {

constexpr UINT_PTR timerId = 1;

void post(Window& window, int code, unsigned value) {
    if (code >= keyLeftShift && code <= keyRightAlt)
        window.modifiersPosted.set(static_cast<size_t>(code - keyLeftShift), value != 0);
    window.sink.postEvent(window.sink.owner, code, value);
}

// --- keys ---

// The character a key is named by. With Shift or Control held a key types another one, so the
// layout's plain character counts when it has one.
unsigned nameOfKey(int virtualKey, WPARAM typed) {
    constexpr UINT characterBits = 0xFFFF;  // the rest marks a dead key
    const UINT plain = MapVirtualKeyA(virtualKey, MAPVK_VK_TO_CHAR) & characterBits;
    return plain ? plain : static_cast<unsigned>(typed);
}

void learnKey(Window& window, WPARAM character) {
    KeyTranslator& keys = window.keys;
    const KeyTranslator::Learned key = keys.learn(nameOfKey(keys.waiting(), character));
    if (key.code == 0) return;
    post(window, key.code, 1);
    if (key.released) post(window, key.code, 0);
}

// The right Shift key has no extended code: its place on the keyboard tells.
bool isRightKey(WPARAM virtualKey, LPARAM flags) {
    constexpr LPARAM rightShiftPlace = 0x36;
    if (virtualKey == VK_SHIFT) return (flags >> 16 & 0xFF) == rightShiftPlace;
    return flags >> 24 & 1;
}

constexpr int shiftState = 1, altGrState = 2 | 4;  // as VkKeyScan gives them

bool held(int virtualKey) { return GetKeyState(virtualKey) < 0; }

// A menu, a box or another window may have seen a modifier released: it is not held for what comes.
void postMissedReleases(Window& window) {
    for (int code = keyLeftShift; code <= keyRightAlt; ++code)
        if (window.modifiersPosted[static_cast<size_t>(code - keyLeftShift)] && !held(code))
            post(window, code, 0);
}

// A character that the layout types on this key with the modifiers that are held, and only so.
struct TypedKey {
    int code = 0;  // 0: none
    int state = 0;
};
TypedKey typedKey(WPARAM virtualKey) {
    const bool altGr = held(VK_RMENU) || (held(VK_CONTROL) && held(VK_MENU));
    const int state = (held(VK_SHIFT) ? shiftState : 0) | (altGr ? altGrState : 0);
    if (state == 0) return {};
    for (const char character : keyCharacters) {
        const SHORT place = VkKeyScanW(static_cast<WCHAR>(character));
        if (place == -1 || (place & 0xFF) != static_cast<int>(virtualKey)) continue;
        if ((place >> 8 & (shiftState | altGrState)) == state)
            return {characterKey(character), state};
    }
    return {};
}

// The modifiers that typed a character are not held for what it does.
void postTyped(Window& window, const TypedKey& key) {
    std::vector<int> typing;
    for (int code = keyLeftShift; code <= keyRightAlt; ++code) {
        const bool ofShift = code <= keyRightShift;
        if (held(code) && key.state & (ofShift ? shiftState : altGrState)) typing.push_back(code);
    }
    for (const int code : typing) post(window, code, 0);
    post(window, key.code, 1);
    for (const int code : typing) post(window, code, 1);
}

// Whether the key typed a character with Shift or AltGr, which is dealt with then.
bool handleTypedKey(Window& window, WPARAM virtualKey, bool down) {
    if (down) {
        const TypedKey key = typedKey(virtualKey);
        if (key.code == 0) return false;
        window.typed[virtualKey] = key.code;
        postTyped(window, key);
        return true;
    }
    const auto pressed = window.typed.find(virtualKey);
    if (pressed == window.typed.end()) return false;
    post(window, pressed->second, 0);
    window.typed.erase(pressed);
    return true;
}

void postKey(Window& window, WPARAM virtualKey, LPARAM flags, bool down) {
    if (down) postMissedReleases(window);
    if (handleTypedKey(window, virtualKey, down)) return;
    KeyTranslator& keys = window.keys;
    const int code =
        keys.translate(static_cast<int>(virtualKey), isRightKey(virtualKey, flags), down);
    if (code != 0) return post(window, code, down ? 1 : 0);
    // With Control held no character follows that would name the key.
    const bool control = GetKeyState(VK_CONTROL) < 0;
    if (down && control && keys.waiting() && nameOfKey(keys.waiting(), 0)) learnKey(window, 0);
}

// Keys whose system meaning (switching windows, the window's menu, closing) is left to the system.
bool isSystemsOwnKey(WPARAM virtualKey) {
    return virtualKey == VK_TAB || virtualKey == VK_SPACE || virtualKey == VK_F4 ||
           virtualKey == VK_F10;
}

// --- window ---

void created(Window& window) {
    window.device = GetDC(window.handle);
    DragAcceptFiles(window.handle, window.sink.dropped != nullptr);
    windowCame();
    wine::windowCreated(window.handle);
}

void destroyed(Window& window) {
    closeControlBar(&window);
    KillTimer(window.handle, timerId);
    destroySurface(&window);
    if (window.device) ReleaseDC(window.handle, window.device);
    // A menu that is attached goes with the window.
    if (window.menu && GetMenu(window.handle) != window.menu) DestroyMenu(window.menu);
    window.device = nullptr;
    window.menu = nullptr;
    windowWent();
}

void sized(Window& window) {
    wine::windowSized(window.handle);
    if (window.context) {
        wglMakeCurrent(window.device, window.context);
        RECT client;
        GetClientRect(window.handle, &client);
        setViewport(&window, client.right, client.bottom);
    }
    fitControlBar(window);
    window.sink.resized(window.sink.owner);
}

UINT fileDialogHelpMessage() {
    static const UINT message = RegisterWindowMessageW(L"commdlg_help");
    return message;
}

struct Message {
    Window& window;
    UINT id;
    WPARAM wide;
    LPARAM lengthy;
    HWND handle;  // the window's may be gone by the time the system has its turn
    LRESULT systemsWay() const { return DefWindowProcW(handle, id, wide, lengthy); }
};

LRESULT systemKey(const Message& m) {
    if (isSystemsOwnKey(m.wide)) return m.systemsWay();
    postKey(m.window, m.wide, m.lengthy, m.id == WM_SYSKEYDOWN);
    return 0;
}

LRESULT plainKey(const Message& m) {
    postKey(m.window, m.wide, m.lengthy, m.id == WM_KEYDOWN);
    return 0;
}

LRESULT character(const Message& m) {
    const bool opensMenu = m.wide == 'f' || m.wide == 'v';  // File, View
    if (m.id == WM_SYSCHAR && opensMenu) return m.systemsWay();
    learnKey(m.window, m.wide);
    return 0;
}

template <int code>
LRESULT buttonPressed(const Message& m) {
    SetCapture(m.handle);
    postMissedReleases(m.window);
    post(m.window, code, 1);
    return 0;
}

// A release counts only where the press was seen.
template <int code>
LRESULT buttonReleased(const Message& m) {
    if (GetCapture() != m.handle) return 0;
    ReleaseCapture();
    post(m.window, code, 0);
    return 0;
}

template <void (*handle)(Window&)>
LRESULT handledThenSystem(const Message& m) {
    handle(m.window);
    return m.systemsWay();
}

// A maximised window is as large as the window is already.
LRESULT sizeLimits(const Message& m) {
    const LRESULT result = m.systemsWay();
    if (m.window.creating) return result;
    RECT outer;
    GetWindowRect(m.handle, &outer);
    reinterpret_cast<MINMAXINFO*>(m.lengthy)->ptMaxSize = {outer.right - outer.left,
                                                           outer.bottom - outer.top};
    return result;
}

LRESULT painted(const Message& m) {
    PAINTSTRUCT painting;
    BeginPaint(m.handle, &painting);
    EndPaint(m.handle, &painting);
    m.window.sink.paint(m.window.sink.owner);
    return 0;
}

LRESULT closed(const Message& m) {
    DestroyWindow(m.handle);
    return 0;
}

// Everything is drawn over, so nothing need be erased.
LRESULT erased(const Message&) { return 1; }

LRESULT cursorWanted(const Message& m) {
    if (LOWORD(m.lengthy) != HTCLIENT || !m.window.cursor) return m.systemsWay();
    SetCursor(m.window.cursor);
    return TRUE;
}

// The window may be gone when the command returns.
LRESULT commandChosen(const Message& m) {
    const WindowSink sink = m.window.sink;
    sink.commandStarts(sink.owner);
    sink.command(sink.owner, LOWORD(m.wide));
    sink.commandEnds(sink.owner);
    return m.systemsWay();
}

LRESULT filesDropped(const Message& m) {
    const auto drop = reinterpret_cast<HDROP>(m.wide);
    std::vector<std::string> names;
    const UINT count = DragQueryFileW(drop, UINT_MAX, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
        std::wstring name(DragQueryFileW(drop, i, nullptr, 0) + 1, L'\0');
        name.resize(DragQueryFileW(drop, i, name.data(), static_cast<UINT>(name.size())));
        names.push_back(utf8Text(name));
    }
    DragFinish(drop);
    const WindowSink sink = m.window.sink;
    if (sink.dropped && !names.empty()) sink.dropped(sink.owner, names);
    return 0;
}

LRESULT timerFired(const Message& m) {
    post(m.window, EV_TIMER, 1);
    return 0;
}

// What became of the modifiers meanwhile is looked up with every tick: now at once.
LRESULT keyboardCame(const Message& m) {
    post(m.window, EV_TIMER, 1);
    return m.systemsWay();
}

LRESULT cursorMoved(const Message& m) {
    RECT client;
    GetClientRect(m.handle, &client);
    post(m.window, EV_MOUSEX, static_cast<uint16_t>(LOWORD(m.lengthy)));
    post(m.window, EV_MOUSEY, static_cast<uint16_t>(client.bottom - HIWORD(m.lengthy)));
    return m.systemsWay();
}

// Every message not listed is the system's.
constexpr struct {
    UINT id;
    LRESULT (*handle)(const Message&);
} handlers[] = {
    {WM_CREATE, handledThenSystem<created>},
    {WM_DESTROY, handledThenSystem<destroyed>},
    {WM_SIZE, handledThenSystem<sized>},
    {WM_PAINT, painted},
    {WM_CLOSE, closed},
    {WM_ERASEBKGND, erased},
    {WM_SETCURSOR, cursorWanted},
    {WM_GETMINMAXINFO, sizeLimits},
    {WM_KEYDOWN, plainKey},
    {WM_KEYUP, plainKey},
    {WM_SYSKEYDOWN, systemKey},
    {WM_SYSKEYUP, systemKey},
    {WM_CHAR, character},
    {WM_SYSCHAR, character},
    {WM_COMMAND, commandChosen},
    {WM_DROPFILES, filesDropped},
    {WM_TIMER, timerFired},
    {WM_SETFOCUS, keyboardCame},
    {WM_MOUSEMOVE, cursorMoved},
    {WM_LBUTTONDOWN, buttonPressed<EV_LEFTMOUSE>},
    {WM_RBUTTONDOWN, buttonPressed<EV_RIGHTMOUSE>},
    {WM_MBUTTONDOWN, buttonPressed<EV_MIDDLEMOUSE>},
    {WM_LBUTTONUP, buttonReleased<EV_LEFTMOUSE>},
    {WM_RBUTTONUP, buttonReleased<EV_RIGHTMOUSE>},
    {WM_MBUTTONUP, buttonReleased<EV_MIDDLEMOUSE>},
};

// The first message of a window's life that is for us brings its Window along; the last one takes
// it away. Null outside that time.
Window* windowOf(HWND handle, UINT id, LPARAM lengthy) {
    if (id == WM_NCCREATE) {
        auto* const window =
            static_cast<Window*>(reinterpret_cast<const CREATESTRUCTW*>(lengthy)->lpCreateParams);
        window->handle = handle;
        SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window));
    }
    return reinterpret_cast<Window*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
}

LRESULT CALLBACK windowProcedure(HWND handle, UINT id, WPARAM wide, LPARAM lengthy) {
    Window* const window = windowOf(handle, id, lengthy);
    if (!window) return DefWindowProcW(handle, id, wide, lengthy);
    const Message message{*window, id, wide, lengthy, handle};
    for (const auto& row : handlers) {
        if (row.id != id) continue;
        const LRESULT result = row.handle(message);
        if (id == WM_DESTROY) {
            SetWindowLongPtrW(handle, GWLP_USERDATA, 0);
            window->handle = nullptr;
        }
        return result;
    }
    if (id != fileDialogHelpMessage()) return message.systemsWay();
    showFileDialogHelp();
    return 0;
}

}  // namespace

const wchar_t* viewerWindowClass() {
    static const wchar_t* const name = [] {
        WNDCLASSW viewer = {};
        viewer.style = CS_OWNDC | CS_HREDRAW | CS_VREDRAW | CS_BYTEALIGNCLIENT;
        viewer.lpfnWndProc = windowProcedure;
        viewer.hInstance = resourceModule();
        viewer.hIcon = LoadIconW(resourceModule(), MAKEINTRESOURCEW(iconResource));
        viewer.hCursor = LoadCursorA(nullptr, IDC_ARROW);
        viewer.lpszMenuName = MAKEINTRESOURCEW(menuResource);
        viewer.lpszClassName = L"WinGlClass";
        return RegisterClassW(&viewer) ? viewer.lpszClassName : nullptr;
    }();
    return name;
}

HMODULE resourceModule() { return GetModuleHandleW(nullptr); }

void startTimer(Window* window, unsigned milliseconds) {
    if (windowExists(window)) SetTimer(window->handle, timerId, milliseconds, nullptr);
}

}  // namespace vistel::platform
