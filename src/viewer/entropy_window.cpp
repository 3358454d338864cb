#include "viewer/entropy_window.h"

#include <chrono>
#include <cstdlib>
#include <exception>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "host/messages.h"
#include "platform/input_event.h"
#include "platform/surface.h"
#include "platform/window.h"
#include "sequence/frame_name.h"
#include "viewer/picture/draw_pass.h"
#include "viewer/picture/title.h"
#include "viewer/window/window_context.h"

namespace vistel {

namespace {

using namespace std::chrono_literals;

// From any thread: the first one may be about anything.
[[noreturn]] void endProgram(int status) {
    platform::endCommands();
    std::_Exit(status);
}

[[noreturn]] void endWithoutWindow() {
    if (windowContext().calls.refused)
        windowContext().calls.refused();  // of the first thread alone
    endProgram(1);
}

[[noreturn]] void refuse() {
    printError(messageText(Message::rVTNoWindow));
    endWithoutWindow();
}

platform::PixelRect middleOfScreen(bool fullScreen) {
    constexpr int titleRows = 29;
    const platform::ScreenSize screen = platform::screenSize();
    const int left = (screen.width - HistogramPicture::width) / 2;
    const int rows = screen.height - (fullScreen ? 0 : titleRows);
    const int top = (rows - HistogramPicture::height) / 2;
    return {left, top, left + HistogramPicture::width, top + HistogramPicture::height};
}

void draw(platform::Window* window, const HistogramPicture& picture) {
    constexpr uint8_t background = bandColour & 0xFF;
    platform::setColour(window, background, background, background, 255);
    platform::clearSurface(window);
    platform::setColour(window, 255, 255, 255, 255);
    for (const auto& [left, bottom, right, top] : picture.bars)
        platform::fillRectangle(window, left, bottom, right, top);
    platform::setColour(window, 255, 0, 0, 255);
    for (size_t i = 1; i < picture.line.size(); ++i) {
        const auto &from = picture.line[i - 1], &to = picture.line[i];
        platform::drawLine(window, from.x, from.y, to.x, to.y);
    }
    platform::swapBuffers(window);
}

}  // namespace

TileCounter countInto(std::optional<CountedFile>& counted) {
    return [&counted](IffReader& chunk, const FrameStore& frame) {
        if (!counted) counted = CountedFile{{}, frame.imageName};
        return countTileBytes(chunk, counted->histogram);
    };
}

std::string histogramTitle(const CurrentSource& source, const CountedFile& counted) {
    const bool standardInput = source.sourceName == messageText(Message::rVTStdin);
    Tstring name = shownSourceName(source);
    name = name.substr(baseNameStart(name));
    if (standardInput) name = counted.imageName.empty() ? "stdin" : counted.imageName;
    return formatMessage(Message::rVTEntropyAnalyzer, {printable(name)});
}

// A window that is open, on the thread that opened it. It draws when the system asks for it, so
// that it is there for its user under whatever pumps messages on that thread.
class EntropyWindows::OpenWindow {
 public:
    OpenWindow(const ByteHistogram& histogram, const std::string& title, bool fullScreen,
               void (*escaped)())
        : picture_(histogramPicture(histogram)), escapeAction_(escaped) {
        const platform::PixelRect place = middleOfScreen(fullScreen);
        window_ = platform::openWindow({title, place, true, false}, sink());
        if (!window_) refuse();
        if (!platform::createSurface(window_)) endWithoutWindow();  // the system's box told why
        platform::setDoubleBuffered(window_, true);
        platform::setViewport(window_, HistogramPicture::width, HistogramPicture::height);
        draw(window_, picture_);
    }
    ~OpenWindow() { platform::releaseWindow(window_); }
    OpenWindow(const OpenWindow&) = delete;
    OpenWindow& operator=(const OpenWindow&) = delete;

    bool exists() const { return platform::windowExists(window_); }
    bool escaped() const { return escaped_; }

 private:
    static OpenWindow& self(void* owner) { return *static_cast<OpenWindow*>(owner); }

    platform::WindowSink sink() {
        return {.owner = this,
                .postEvent =
                    [](void* owner, int code, unsigned value) {
                        if (code == keyEscape && value) self(owner).escape();
                    },
                .command = [](void*, int) {},
                .commandStarts = [](void*) {},
                .commandEnds = [](void*) {},
                .paint =
                    [](void* owner) {
                        if (platform::surfaceExists(self(owner).window_))
                            draw(self(owner).window_, self(owner).picture_);
                    },
                .resized = [](void*) {}};
    }

    void escape() {
        escaped_ = true;
        platform::closeWindow(window_);
        escapeAction_();
    }

    const HistogramPicture picture_;
    void (*const escapeAction_)();
    platform::Window* window_ = nullptr;
    bool escaped_ = false;
};

// Of the windows that have a thread each.
struct EntropyWindows::OwnThreads {
    std::mutex mutex;
    std::set<std::string> open;                  // the sources
    std::map<std::string, std::thread> running;  // the first thread's

    // Those of the windows that the end of the program finds open.
    ~OwnThreads() {
        for (auto& [source, thread] : running) thread.detach();
    }
    // Each thread has gone for good before the next one begins: the run-time library of win32 may
    // hang where one begins while another one, which nobody joins, is on its way out.
    void joinEnded() {
        for (auto entry = running.begin(); entry != running.end();) {
            const auto ended = entry++;
            if (isOpen(ended->first)) continue;
            ended->second.join();
            running.erase(ended);
        }
    }
    bool isOpen(const std::string& source) {
        const std::lock_guard lock(mutex);
        return open.contains(source);
    }
    bool add(const std::string& source) {
        const std::lock_guard lock(mutex);
        return open.insert(source).second;
    }
    void remove(const std::string& source) {
        const std::lock_guard lock(mutex);
        open.erase(source);
    }
    // The whole life of a window, on its thread.
    void live(const std::string& source, const ByteHistogram& histogram, const std::string& title,
              bool fullScreen, void (*escaped)()) try {
        {
            OpenWindow window(histogram, title, fullScreen, escaped);
            while (window.exists()) {
                platform::pumpMessages();
                platform::waitMessage();
            }
            if (window.escaped()) {
                std::this_thread::sleep_for(2s);
                endProgram(0);
            }
        }
        remove(source);
    } catch (const std::exception&) {  // no memory
        refuse();
    }
};

EntropyWindows::EntropyWindows(void (*escaped)())
    : escaped_(escaped), threads_(std::make_shared<OwnThreads>()) {}

EntropyWindows::EntropyWindows(EntropyWindows&&) noexcept = default;
EntropyWindows& EntropyWindows::operator=(EntropyWindows&&) noexcept = default;

// When the process ends with windows open, the driver that they draw with may have gone before.
EntropyWindows::~EntropyWindows() {
    for (auto& [source, window] : windows_) (void)window.release();
}

void EntropyWindows::open(const std::string& source, const ByteHistogram& histogram,
                          const std::string& title, bool fullScreen) try {
    const bool others = anyOpen();
    if (!platform::windowsOnEveryThread()) {
        if (others && windows_.contains(source)) return;
        windows_[source] = std::make_unique<OpenWindow>(histogram, title, fullScreen, escaped_);
        return;
    }
    if (!threads_->add(source)) return;
    threads_->running[source] =
        std::thread(&OwnThreads::live, threads_, source, histogram, title, fullScreen, escaped_);
} catch (const std::exception&) {  // no memory, no more threads
    refuse();
}

bool EntropyWindows::anyOpen() {
    std::erase_if(windows_, [](const auto& entry) { return !entry.second->exists(); });
    threads_->joinEnded();
    const std::lock_guard lock(threads_->mutex);
    return !threads_->open.empty() || !windows_.empty();
}

void EntropyWindows::waitUntilClosed() {
    while (anyOpen() && !platform::interruptRequested()) {
        if (!windows_.empty()) {
            platform::waitMessage();
            platform::pumpMessages();
            continue;
        }
        std::this_thread::sleep_for(20ms);  // an interrupt would wake nobody
    }
    windows_.clear();
}

}  // namespace vistel
