#include "settings/help_pages.h"

#include "host/application.h"
#include "host/messages.h"
#include "platform/dialogs.h"
#include "platform/web_browser.h"

namespace vistel {

void showHelpPage(platform::Window* over, const Tstring& address) {
    if (platform::showInBrowser(address)) return;
    platform::showMessageBox(over, applicationName(),
                             formatMessage(Message::rVTNoBrowser, {address}));
}

}  // namespace vistel
