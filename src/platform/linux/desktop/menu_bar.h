// The menu bar, built from the menu table.
#pragma once

#include <QMenuBar>

namespace vistel::platform {

// A new menu bar in the state that checkMenuItem and enableMenuItem have left. Its items only send
// their command to `send`.
QMenuBar* createMenuBar(QWidget* parent, void (*send)(int command));

// To be called when the menu bar is gone: menu state is from then on only remembered.
void forgetMenuBar();

// Opens the menu whose caption has this mnemonic, a capital letter.
void openMenu(QMenuBar& bar, char mnemonic);

}  // namespace vistel::platform
