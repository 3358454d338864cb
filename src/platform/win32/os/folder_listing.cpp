// Folders are listed by the command interpreter, whose order is the system's own.
#include <algorithm>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/win32/os/wide_text.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

namespace {

std::string outputOf(const std::string& command) {
    FILE* pipe = openPipe(command, "r");
    if (!pipe) return {};
    std::string output;
    char block[4096];
    while (const size_t count = std::fread(block, 1, sizeof block, pipe)) {
        output.append(block, count);
    }
    closePipe(pipe);
    return output;
}

// The code page the interpreter writes a listing in: the console's, or without a console the one
// that the system itself is set to (this process's own is UTF-8 and tells nothing of it).
unsigned listingCodePage() {
    if (const unsigned console = GetConsoleOutputCP()) return console;
    DWORD codePage = 0;
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<LPWSTR>(&codePage), sizeof codePage / sizeof(WCHAR));
    return codePage ? codePage : CP_ACP;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        std::string line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) lines.push_back(std::move(line));
        start = end + 1;
    }
    return lines;
}

// The same listing in UTF-16, which loses nothing and costs a second interpreter.
std::string unicodeOutputOf(const std::string& command) {
    const std::string bytes = outputOf("cmd /u /c " + command);
    std::wstring wide;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const unsigned low = static_cast<unsigned char>(bytes[i]);
        const unsigned high = static_cast<unsigned char>(bytes[i + 1]);
        wide.push_back(static_cast<wchar_t>(high << 8 | low));
    }
    return utf8Text(wide);
}

}  // namespace

// Both halves empty list the current folder: the interpreter takes "" for it.
std::vector<std::string> listFolder(const std::string& searchDirectory, const std::string& folder) {
    std::string path = searchDirectory.empty() ? folder : searchDirectory + "\\" + folder;
    std::replace(path.begin(), path.end(), '/', '\\');  // a slash can begin a switch
    const std::string command = "dir /b \"" + path + "\" 2>nul";
    const std::string listing = outputOf(command);
    // No file name holds a question mark: one in a listing stands for a character that the code
    // page does not have.
    if (listing.find('?') != std::string::npos) return linesOf(unicodeOutputOf(command));
    return linesOf(utf8FromCodePage(listing, listingCodePage()));
}

}  // namespace vistel::platform
