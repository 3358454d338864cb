// Text by GDI: white on black into a 32-bit image, whose grey levels are the coverage.
#include "platform/text.h"

#include <memory>
#include <mutex>

#include "platform/win32/os/wide_text.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

// A device context of its own holds the font. Windows of several threads draw with it: one at a
// time has the device context.
struct FontHandle {
    std::mutex inUse;
    HDC device = nullptr;
    HFONT font = nullptr;
    TEXTMETRICW metrics = {};
};

namespace {

LOGFONTW logicalFont(const FontRequest& request) {
    LOGFONTW font = {};
    font.lfHeight = request.height;
    font.lfWeight = request.weight;
    font.lfItalic = request.italic;
    font.lfCharSet = DEFAULT_CHARSET;
    // Grey levels, never the coloured fringes of sub-pixel rendering.
    font.lfQuality = ANTIALIASED_QUALITY;
    // The plain proportional face of the system, whatever its name.
    font.lfPitchAndFamily = VARIABLE_PITCH | FF_SWISS;
    return font;
}

SIZE extent(const FontHandle& font, const std::wstring& text) {
    SIZE size = {};
    GetTextExtentPoint32W(font.device, text.c_str(), static_cast<int>(text.size()), &size);
    return size;
}

// A 32-bit image in memory that GDI draws on, selected into the device context while it lives.
class DrawingImage {
 public:
    DrawingImage(HDC device, int width, int height) : device_(device) {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;  // rows from top to bottom
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        bitmap_ = CreateDIBSection(device, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        pixels_ = static_cast<const uint32_t*>(bits);
        if (bitmap_) before_ = SelectObject(device_, bitmap_);
    }
    ~DrawingImage() {
        if (!bitmap_) return;
        SelectObject(device_, before_);
        DeleteObject(bitmap_);
    }
    DrawingImage(const DrawingImage&) = delete;
    DrawingImage& operator=(const DrawingImage&) = delete;

    const uint32_t* pixels() const { return pixels_; }  // null when there was no memory

 private:
    HDC device_;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ before_ = nullptr;
    const uint32_t* pixels_ = nullptr;
};

}  // namespace

float textScale() { return 1; }

FontHandle* createFont(const FontRequest& request) {
    const LOGFONTW description = logicalFont(request);
    // Lives as long as the process.
    auto* handle = new FontHandle;
    handle->device = CreateCompatibleDC(nullptr);
    handle->font = CreateFontIndirectW(&description);
    if (handle->font) SelectObject(handle->device, handle->font);
    GetTextMetricsW(handle->device, &handle->metrics);
    SetBkColor(handle->device, RGB(0, 0, 0));
    SetBkMode(handle->device, OPAQUE);
    SetTextColor(handle->device, RGB(255, 255, 255));
    return handle;
}

int textWidth(FontHandle* font, const std::string& text) {
    const std::lock_guard lock(font->inUse);
    return extent(*font, wideText(text)).cx;
}

TextCoverage renderText(FontHandle* font, const std::string& text) {
    const std::wstring wide = wideText(text);
    const std::lock_guard lock(font->inUse);
    TextCoverage coverage{
        extent(*font, wide).cx, font->metrics.tmHeight, font->metrics.tmDescent, {}};
    if (coverage.width <= 0 || coverage.height <= 0) return {};
    const size_t count = size_t(coverage.width) * size_t(coverage.height);
    coverage.rows.assign(count, 0);
    const DrawingImage image(font->device, coverage.width, coverage.height);
    if (!image.pixels()) return coverage;
    TextOutW(font->device, 0, 0, wide.c_str(), static_cast<int>(wide.size()));
    GdiFlush();
    for (size_t i = 0; i < count; ++i) {
        coverage.rows[i] = static_cast<uint8_t>(image.pixels()[i] >> 8);  // the green level
    }
    return coverage;
}

}  // namespace vistel::platform
