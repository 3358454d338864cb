#include "viewer/picture/title.h"

#include "host/messages.h"
#include "sequence/frame_name.h"

namespace vistel {

std::string shownSourceName(const CurrentSource& source) {
    if (namesCommand(source.fileName)) return messageText(Message::rVTPipedCmd);
    return source.fileName.empty() ? source.sourceName : source.fileName;
}

std::string windowTitle(const Picture& picture) {
    return formatPositional("VisTel: ^1s^2s", {shownSourceName(picture), ""});
}

}  // namespace vistel
