// The menu bar, built from the menu table.
#pragma once

#include <QMenuBar>
#include <functional>
#include <map>

#include "platform/linux/desktop/native_window.h"

namespace vistel::platform {

// A new menu bar, whose items are entered in `items` by their commands and show the state that is
// found there; `items` lives as long as the bar. An item that is chosen only sends its command.
QMenuBar* createMenuBar(QWidget* parent, std::map<int, MenuItemState>& items,
                        const std::function<void(int command)>& send);

// Makes the item look as its state says: choosing it in the menu turns its mark over.
void showMenuItem(const MenuItemState& item);

// Opens the menu whose caption has this mnemonic, a capital letter.
void openMenu(QMenuBar& bar, char mnemonic);

}  // namespace vistel::platform
