#include "sequence/output_name.h"

#include <algorithm>

#include "host/image_plugins.h"
#include "host/messages.h"
#include "sequence/frame_name.h"
#include "sequence/source_choice.h"

namespace vistel {

namespace {

// The chosen name: the number stands for all from the first to the last "#" of the base name, else,
// in an animation, it goes before the last dot.
Tstring chosenName(const Saving& saving, int frame) {
    const size_t start = baseNameStart(saving.saveName);
    const Tstring folder = saving.saveName.substr(0, start), base = saving.saveName.substr(start);
    const size_t first = base.find('#');
    if (first != Tstring::npos) {
        const size_t last = base.rfind('#'), width = last - first + 1;
        return folder + base.substr(0, first) + paddedNumber(frame, static_cast<int>(width)) +
               base.substr(last + 1);
    }
    if (!saving.saveAnimation) return saving.saveName;
    const size_t dot = std::min(base.rfind('.'), base.size());
    return folder + base.substr(0, dot) + paddedNumber(frame, 0) + base.substr(dot);
}

// The file keeps its type.
void keepType(SourceReader reader, OutputTarget& target) {
    if (reader == SourceReader::direct) return;
    const ImageType* type = reader == SourceReader::imageConverter
                                ? imageTypeOfExtension(fileExtension(target.path))
                                : nullptr;
    if (!type)
        target.refusal = messageText(Message::rVTTypeUnknown);
    else if (!type->writes || type->multiFrame)
        target.refusal = formatMessage(Message::rVTTypeNotWritten, {type->name});
    else
        target.formatKey = type->key;
}

}  // namespace

Tstring outputName(const Saving& saving, const SequenceState& state) {
    const int frame = state.currentFrame;
    if (saving.saveNameSet) return chosenName(saving, frame);
    if (saving.overwriteMode && !state.animation) return state.sourceName;
    const Tstring stem = saving.overwriteMode ? state.fileName : Tstring("vistel.out");
    return state.searchDirs.front() + stem + "." + paddedNumber(frame, state.padNum ? 4 : 0);
}

OutputTarget outputTarget(const Saving& saving, SequenceState& state) {
    OutputTarget target;
    target.path = outputName(saving, state);
    if (saving.saveNameSet && !saving.saveFormatKey.empty())
        target.formatKey = saving.saveFormatKey;
    if (saving.saveNameSet || !saving.overwriteMode) return target;
    if (state.testMode || state.openedName.empty() || namesCommand(state.openedName)) {
        target.refusal = messageText(Message::rVTSourceIsNoFile);
        return target;
    }
    OpenedSource source = chooseSource(state, state.openedName, state.currentFrame, Reading::again);
    const bool oneFile = source.oneFile;
    keepOneFileStream(state, source);
    if (oneFile) target.refusal = messageText(Message::rVTOneFileNotWritten);
    if (oneFile || source.located.empty()) return target;
    target.path = source.located;
    target.isSource = true;
    keepType(source.reader, target);
    return target;
}

}  // namespace vistel
