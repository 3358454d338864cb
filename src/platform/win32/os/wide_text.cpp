#include "platform/win32/os/wide_text.h"

#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

std::wstring decode(std::string_view text, unsigned codePage) {
    const int size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), length);
    return wide;
}

}  // namespace

std::wstring wideText(std::string_view utf8) { return decode(utf8, CP_UTF8); }

std::string utf8Text(std::wstring_view wide) {
    const int size = static_cast<int>(wide.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

std::string utf8FromCodePage(std::string_view text, unsigned codePage) {
    if (codePage == CP_UTF8) return std::string(text);
    return utf8Text(decode(text, codePage));
}

}  // namespace vistel::platform
