#include "platform/linux/desktop/menu_bar.h"

#include <QAction>
#include <QMenu>
#include <map>

#include "platform/menu.h"

namespace vistel::platform {

namespace {

struct ItemState {
    bool checked = false;
    bool enabled = true;
    QAction* action = nullptr;  // null while there is no window
};

// By command. The sound items need a sound first.
std::map<int, ItemState>& items() {
    static std::map<int, ItemState> all = {{40023, {false, false}}, {40024, {false, false}}};
    return all;
}

void showState(const ItemState& item) {
    if (!item.action) return;
    // An item without its mark has no empty box either.
    item.action->setCheckable(item.checked);
    item.action->setChecked(item.checked);
    item.action->setEnabled(item.enabled);
}

// Builds menus from the rows of the menu table.
struct Builder {
    QMenuBar* bar;
    void (*send)(int command);
    QMenu* menu = nullptr;

    void begin(const char* caption) { menu = bar->addMenu(QString::fromUtf8(caption)); }

    void item(const char* caption, int command) {
        QAction* action = menu->addAction(QString::fromUtf8(caption));
        ItemState& state = items()[command];
        state.action = action;
        showState(state);
        QObject::connect(action, &QAction::triggered, [send = send, command] {
            // Choosing an item does not change its mark; the command may.
            showState(items()[command]);
            send(command);
        });
    }

    void separator() { menu->addSeparator(); }
};

}  // namespace

QMenuBar* createMenuBar(QWidget* parent, void (*send)(int command)) {
    auto* bar = new QMenuBar(parent);
    // In the window, also where desktops move the menus to a bar of their own.
    bar->setNativeMenuBar(false);
    bar->setFocusPolicy(Qt::NoFocus);
    Builder builder{bar, send};
#define MENU_BEGIN(caption) builder.begin(caption);
#define MENU_ITEM(caption, command) builder.item(caption, command);
#define MENU_SEPARATOR builder.separator();
#define MENU_END
#include "resources/menu_table.inc"
#undef MENU_BEGIN
#undef MENU_ITEM
#undef MENU_SEPARATOR
#undef MENU_END
    return bar;
}

void forgetMenuBar() {
    for (auto& [command, item] : items()) item.action = nullptr;
}

void openMenu(QMenuBar& bar, char mnemonic) {
    const QString mark = QString(QLatin1Char('&')) + QLatin1Char(mnemonic);
    for (QAction* action : bar.actions()) {
        if (!action->text().contains(mark, Qt::CaseInsensitive)) continue;
        bar.setActiveAction(action);
        return;
    }
}

void checkMenuItem(int command, bool checked) {
    ItemState& item = items()[command];
    item.checked = checked;
    showState(item);
}

void enableMenuItem(int command, bool enabled) {
    ItemState& item = items()[command];
    item.enabled = enabled;
    showState(item);
}

}  // namespace vistel::platform
