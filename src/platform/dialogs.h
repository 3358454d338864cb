// Modal boxes and dialogs over a window of the calling thread, which takes no input until they are
// closed; other windows do. With null they stand alone. Each system implements all of this (win32,
// linux, headless). Without a display questions are answered as if the user had cancelled them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vistel::platform {

struct Window;

// Text with an OK button. Without a display the text goes to standard error.
void showMessageBox(Window* over, const std::string& caption, const std::string& text);

// The system's own text for the last error of this thread, in an information box.
void showSystemErrorBox(Window* over, const std::string& caption);

// A question with the buttons Yes and No.
[[nodiscard]] bool confirm(Window* over, const std::string& caption, const std::string& text);

// About the program: a text and an OK button.
void showAbout(Window* over, const std::string& text);

// --- files --------------------------------------------------------------------------------------

struct FileFilter {
    std::string name;      // "Images"
    std::string patterns;  // "*.iff;*.png"
};

// What a dialog for files asks besides.
enum class FileQuestion {
    openImage,      // nothing
    openAnimation,  // the animation's fields
    openSound,      // the audio offset
    save,           // nothing; the file need not exist
};

// Beside the choice of an animation's first frame.
struct AnimationFields {
    int end = 0;  // 0: as far as there are frames
    int zoom = 1, shrink = 1;
    bool depth = false;  // depth planes are wanted
};

struct FileRequest {
    FileQuestion question = FileQuestion::openImage;
    std::string folder;  // where the dialog starts; empty: the current one
    std::vector<FileFilter> filters;
    int filter = 0;             // counted from 1, the one at first; 0: the first
    AnimationFields animation;  // as the fields are at first; the end frame is always empty
};

struct FileChoice {
    std::string name;  // with its folder, at most 511 characters
    std::string folder;
    int filter = 0;  // counted from 1
    AnimationFields animation;
    int audioOffset = 0;  // frame at which a sound starts
};

// Asks the user for a file; none when the dialog is cancelled.
[[nodiscard]] std::optional<FileChoice> askForFile(Window* over, const FileRequest& request);

}  // namespace vistel::platform
