// The menu bar, built from what the program says is in it.
#include "platform/desktop/desktop_window_parts.h"

#include <QtCore/QTimer>
#include <QtGui/QAction>
#include <QtGui/QActionGroup>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QProxyStyle>

namespace platform {

namespace {

// Keys that belong to the desktop reach a menu item by themselves; the others belong to the machine or are
// the program's own, and are only shown.
// Pictures of states want more room than an icon.
class picture_style : public QProxyStyle {
  public:
    int pixelMetric(PixelMetric which, const QStyleOption *option, const QWidget *widget) const override {
        return which == PM_SmallIconSize ? 80 : QProxyStyle::pixelMetric(which, option, widget);
    }
};

QIcon icon_of(const menu_picture &shown) {
    return QIcon(QPixmap::fromImage(QImage(reinterpret_cast<const uchar *>(shown.pixels.data()), shown.width,
                                           shown.height, QImage::Format_RGB32)
                                        .copy()));
}

bool is_desktop_key(const std::string &shortcut) { return shortcut.starts_with("Alt+"); }

} // namespace

bool desktop_window::has_menus() const { return !menus.empty(); }

void desktop_window::menus_changed() {
    if (gone) return;
    const std::vector<menu_item> wanted = listener.menus();
    qDeleteAll(keys_of_menus);
    keys_of_menus.clear();
    if (wanted.size() != menus.size()) {
        frame->menuBar()->clear();
        menus.clear();
        for (size_t i = 0; i < wanted.size(); ++i) {
            QMenu *menu = frame->menuBar()->addMenu(QString());
            // What is checked or possible may have changed since.
            QObject::connect(menu, &QMenu::aboutToShow, menu, [this] { menus_changed(); });
            // A menu left by Escape would leave the keyboard with the menu bar.
            QObject::connect(menu, &QMenu::aboutToHide, view,
                             [this] { QTimer::singleShot(0, view, [this] { menu_closed(); }); });
            menus.push_back(menu);
        }
    }
    for (size_t i = 0; i < wanted.size(); ++i) {
        menus[i]->setTitle(QString::fromStdString(wanted[i].text));
        fill_menu(*menus[i], wanted[i].items);
    }
    if (!full_screen) frame->menuBar()->setVisible(has_menus());
}

void desktop_window::fill_menu(QMenu &menu, const std::vector<menu_item> &items) {
    menu.clear();
    qDeleteAll(menu.findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly));
    QActionGroup *choices = nullptr;
    bool has_pictures = false;
    for (const menu_item &item : items) {
        if (!item.items.empty()) {
            QMenu *inner = menu.addMenu(QString::fromStdString(item.text));
            inner->setEnabled(item.enabled);
            fill_menu(*inner, item.items);
        } else if (item.text.empty()) {
            menu.addSeparator();
            choices = nullptr;
        } else {
            auto *action = new QAction(QString::fromStdString(item.text), &menu);
            action->setEnabled(item.enabled && item.id != 0);
            action->setCheckable(item.kind != menu_item::plain);
            action->setChecked(item.checked);
            if (item.kind == menu_item::choice) {
                if (choices == nullptr) choices = new QActionGroup(&menu);
                choices->addAction(action);
            }
            // Posted, so that the menu has closed and given the keyboard back before the command runs.
            QObject::connect(action, &QAction::triggered, view,
                             [this, id = item.id] { post(wm_sys_command, id, 0); });
            if (is_desktop_key(item.shortcut)) {
                action->setShortcut(QKeySequence(QString::fromStdString(item.shortcut)));
                action->setAutoRepeat(false);
                frame->addAction(action); // also while the menu bar is hidden
                keys_of_menus.push_back(action);
            } else if (!item.shortcut.empty()) {
                action->setText(action->text() + u'\t' + QString::fromStdString(item.shortcut));
            }
            if (item.shown != nullptr) {
                action->setIcon(icon_of(*item.shown));
                has_pictures = true;
            }
            menu.addAction(action);
        }
    }
    if (has_pictures) {
        auto *style = new picture_style;
        style->setParent(&menu);
        menu.setStyle(style);
    }
}

void desktop_window::menu_closed() {
    if (QApplication::activePopupWidget() != nullptr) return; // from one menu into the next
    if (full_screen) frame->menuBar()->hide();
    view->setFocus(Qt::MenuBarFocusReason);
}

// By F10: the first menu, from which the arrow keys lead to the others. In full screen the bar comes for as
// long.
void desktop_window::open_menu() {
    if (!has_menus()) return;
    QMenuBar *bar = frame->menuBar();
    bar->show();
    bar->setActiveAction(menus.front()->menuAction());
    for (QAction *action : menus.front()->actions()) {
        if (!action->isEnabled() || action->isSeparator()) continue;
        menus.front()->setActiveAction(action);
        return;
    }
}

} // namespace platform
