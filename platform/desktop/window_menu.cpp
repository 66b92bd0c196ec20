// The menu bar.
#include "platform/desktop/desktop_window_parts.h"

#include <QtCore/QTimer>
#include <QtGui/QAction>
#include <QtWidgets/QLayout>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <algorithm>

namespace platform {

bool desktop_window::has_menu_item(uint32_t id) const {
    return std::any_of(items.begin(), items.end(), [=](const auto &item) { return item.first == id; });
}

void desktop_window::insert_menu_item(int position, uint32_t id, const std::string &text) {
    if (gone || has_menu_item(id)) return;
    if (menu == nullptr) {
        menu = frame->menuBar()->addMenu(QStringLiteral("Kiv(&K)"));
        // A menu left by Escape would leave the keyboard with the menu bar.
        QObject::connect(menu, &QMenu::aboutToHide, view, [this] {
            QTimer::singleShot(0, view, [this] { view->setFocus(Qt::MenuBarFocusReason); });
        });
        frame->menuBar()->setVisible(!full_screen);
        if (!full_screen) frame->layout()->activate();
        centre(); // the bar has made the window taller
    }
    auto *action = new QAction(QString::fromStdString(text), menu);
    // Posted, so that the menu has closed and given the keyboard back before the command runs.
    QObject::connect(action, &QAction::triggered, menu, [this, id] { post(wm_sys_command, id, 0); });
    const auto place = static_cast<size_t>(std::clamp(position, 0, static_cast<int>(items.size())));
    menu->insertAction(place < items.size() ? items[place].second : nullptr, action);
    items.insert(items.begin() + static_cast<ptrdiff_t>(place), {id, action});
}

void desktop_window::open_menu() {
    if (menu == nullptr || full_screen) return;
    const QMenuBar *bar = frame->menuBar();
    menu->popup(bar->mapToGlobal(bar->actionGeometry(menu->menuAction()).bottomLeft()));
    if (!items.empty()) menu->setActiveAction(items.front().second);
}

} // namespace platform
