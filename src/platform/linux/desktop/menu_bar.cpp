#include "platform/linux/desktop/menu_bar.h"

#include <QAction>
#include <QMenu>

#include "platform/menu.h"
#include "resources/command_ids.h"

namespace vistel::platform {

void showMenuItem(const MenuItemState& item) {
    if (!item.action) return;
    // An item without its mark has no empty box either.
    item.action->setCheckable(item.checked);
    item.action->setChecked(item.checked);
    item.action->setEnabled(item.enabled);
}

namespace {

// Builds menus from the rows of the menu table.
struct Builder {
    QMenuBar* bar;
    std::map<int, MenuItemState>& items;
    const std::function<void(int command)>& send;
    QMenu* menu = nullptr;

    void begin(const char* caption) { menu = bar->addMenu(QString::fromUtf8(caption)); }

    void item(const char* caption, int command, bool enabledAtFirst) {
        QAction* action = menu->addAction(QString::fromUtf8(caption));
        // A window keeps what was set when it gets its menu anew.
        const auto [place, first] = items.try_emplace(command);
        MenuItemState& state = place->second;
        if (first) state.enabled = enabledAtFirst;
        state.action = action;
        showMenuItem(state);
        QObject::connect(action, &QAction::triggered, [send = send, command] { send(command); });
    }

    void separator() { menu->addSeparator(); }
};

}  // namespace

QMenuBar* createMenuBar(QWidget* parent, std::map<int, MenuItemState>& items,
                        const std::function<void(int command)>& send) {
    auto* bar = new QMenuBar(parent);
    // In the window, also where desktops move the menus to a bar of their own.
    bar->setNativeMenuBar(false);
    bar->setFocusPolicy(Qt::NoFocus);
    Builder builder{bar, items, send};
#define MENU_BEGIN(caption) builder.begin(caption);
#define MENU_ITEM(caption, command) builder.item(caption, command, true);
#define MENU_GREYED_ITEM(caption, command) builder.item(caption, command, false);
#define MENU_SEPARATOR builder.separator();
#define MENU_END
#include "resources/menu_table.inc"
#undef MENU_BEGIN
#undef MENU_ITEM
#undef MENU_GREYED_ITEM
#undef MENU_SEPARATOR
#undef MENU_END
    return bar;
}

void openMenu(QMenuBar& bar, char mnemonic) {
    const QString mark = QString(QLatin1Char('&')) + QLatin1Char(mnemonic);
    for (QAction* action : bar.actions()) {
        if (!action->text().contains(mark, Qt::CaseInsensitive)) continue;
        bar.setActiveAction(action);
        return;
    }
}

void checkMenuItem(Window* window, int command, bool checked) {
    if (!windowExists(window)) return;
    MenuItemState& item = window->menuItems[command];
    item.checked = checked;
    showMenuItem(item);
}

void enableMenuItem(Window* window, int command, bool enabled) {
    if (!windowExists(window)) return;
    MenuItemState& item = window->menuItems[command];
    item.enabled = enabled;
    showMenuItem(item);
}

}  // namespace vistel::platform
