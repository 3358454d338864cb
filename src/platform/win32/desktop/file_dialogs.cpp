// The system's dialogs for files, with our rows below their own.
#include <algorithm>

#include "platform/dialogs.h"
#include "platform/win32/desktop/native_window.h"
#include "platform/win32/os/wide_text.h"
#include "resources/command_ids.h"

// After the system's own header.
#include <commdlg.h>

namespace vistel::platform {

namespace {

constexpr size_t nameBuffer = 512;  // characters, the ending zero included

enum : WORD { animationTemplate = 105, saveTemplate = 106, soundTemplate = 109 };

// What the rows below a dialog are set from, and what is read from them.
struct Rows {
    FileQuestion question;
    FileChoice& choice;
};

// The end frame is typed once it counts.
void enableEndFrame(HWND rows) {
    const bool counts = IsDlgButtonChecked(rows, FIELD_SET_END_FRAME) == BST_CHECKED;
    EnableWindow(GetDlgItem(rows, FIELD_END_FRAME), counts);
}

void fillRows(HWND rows, const Rows& asked) {
    if (asked.question == FileQuestion::openSound) SetDlgItemInt(rows, FIELD_AUDIO_OFFSET, 0, TRUE);
    if (asked.question != FileQuestion::openAnimation) return;
    const AnimationFields& fields = asked.choice.animation;
    SetDlgItemInt(rows, FIELD_ZOOM, static_cast<UINT>(fields.zoom), TRUE);
    SetDlgItemInt(rows, FIELD_SHRINK, static_cast<UINT>(fields.shrink), TRUE);
    CheckDlgButton(rows, FIELD_Z_BUFFER, fields.depth ? BST_CHECKED : BST_UNCHECKED);
    enableEndFrame(rows);
}

int numberIn(HWND rows, int field) {
    return static_cast<int>(GetDlgItemInt(rows, field, nullptr, TRUE));
}

void readRows(HWND rows, const Rows& asked) {
    if (asked.question == FileQuestion::openSound)
        asked.choice.audioOffset = numberIn(rows, FIELD_AUDIO_OFFSET);
    if (asked.question != FileQuestion::openAnimation) return;
    AnimationFields& fields = asked.choice.animation;
    const bool endSet = IsDlgButtonChecked(rows, FIELD_SET_END_FRAME) == BST_CHECKED;
    fields.end = endSet ? numberIn(rows, FIELD_END_FRAME) : 0;
    fields.zoom = numberIn(rows, FIELD_ZOOM);
    fields.shrink = numberIn(rows, FIELD_SHRINK);
    fields.depth = IsDlgButtonChecked(rows, FIELD_Z_BUFFER) == BST_CHECKED;
}

UINT_PTR CALLBACK rowsProcedure(HWND rows, UINT id, WPARAM word, LPARAM lengthy) {
    if (id == WM_COMMAND && LOWORD(word) == FIELD_SET_END_FRAME) enableEndFrame(rows);
    if (id == WM_INITDIALOG) {
        const auto& dialog = *reinterpret_cast<const OPENFILENAMEW*>(lengthy);
        SetWindowLongPtrW(rows, GWLP_USERDATA, dialog.lCustData);
        fillRows(rows, *reinterpret_cast<const Rows*>(dialog.lCustData));
    }
    const auto* const asked = reinterpret_cast<const Rows*>(GetWindowLongPtrW(rows, GWLP_USERDATA));
    const bool chosen =
        id == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lengthy)->code == CDN_FILEOK;
    if (chosen && asked) readRows(rows, *asked);
    return 0;
}

// Pairs of name and patterns, each ended by a zero, and one more at the end.
std::wstring filterText(const std::vector<FileFilter>& filters) {
    std::wstring text;
    for (const FileFilter& filter : filters) {
        text += wideText(filter.name) + L'\0';
        text += wideText(filter.patterns) + L'\0';
    }
    return text + L'\0';
}

void addRows(OPENFILENAMEW& dialog, WORD rows, Rows& asked) {
    dialog.Flags |= OFN_EXPLORER | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE;
    dialog.hInstance = resourceModule();
    dialog.lpTemplateName = MAKEINTRESOURCEW(rows);
    dialog.lpfnHook = rowsProcedure;
    dialog.lCustData = reinterpret_cast<LPARAM>(&asked);
}

WORD templateFor(FileQuestion question) {
    switch (question) {
        case FileQuestion::openAnimation:
            return animationTemplate;
        case FileQuestion::openSound:
            return soundTemplate;
        case FileQuestion::save:
            return saveTemplate;
        case FileQuestion::openImage:
            break;
    }
    return 0;
}

}  // namespace

std::optional<FileChoice> askForFile(Window* over, const FileRequest& request) {
    const bool saves = request.question == FileQuestion::save;
    FileChoice choice;
    choice.animation = request.animation;
    Rows asked{request.question, choice};
    wchar_t name[nameBuffer] = {};
    std::wstring folder = wideText(request.folder);
    std::replace(folder.begin(), folder.end(), L'/', L'\\');
    const std::wstring filters = filterText(request.filters);
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = handleOf(over);
    dialog.lpstrFilter = filters.c_str();
    dialog.nFilterIndex = static_cast<DWORD>(std::max(request.filter, 1));
    dialog.lpstrFile = name;
    dialog.nMaxFile = nameBuffer;
    dialog.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
    dialog.Flags = OFN_HIDEREADONLY | OFN_SHOWHELP | OFN_NOCHANGEDIR |
                   (saves ? OFN_PATHMUSTEXIST : OFN_FILEMUSTEXIST);
    if (const WORD rows = templateFor(request.question)) addRows(dialog, rows, asked);
    const BOOL chosen = saves ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog);
    if (!chosen) return std::nullopt;
    choice.name = utf8Text(name);
    choice.folder = utf8Text(std::wstring(name, dialog.nFileOffset));
    // The separator stays where the folder is a root.
    if (choice.folder.size() > 3) choice.folder.pop_back();
    choice.filter = static_cast<int>(dialog.nFilterIndex);
    return choice;
}

}  // namespace vistel::platform
