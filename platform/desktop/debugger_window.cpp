#include "platform/desktop/debugger_window.h"

#include "platform/desktop/dialog_parts.h"
#include <QtCore/QTimer>
#include <QtGui/QAction>
#include <QtGui/QCloseEvent>
#include <QtGui/QFontDatabase>
#include <QtGui/QScreen>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTableWidget>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

namespace platform {

namespace {

constexpr int look_ms = 200, past_ms = 60;
constexpr uint32_t bytes_a_line = 16;

QFont fixed_font() { return QFontDatabase::systemFont(QFontDatabase::FixedFont); }

int rows_of(const QTableWidget *table) {
    return std::max(1, table->viewport()->height() / table->verticalHeader()->defaultSectionSize());
}

} // namespace

debugger_window::debugger_window(debugger_listener &hears, const std::string &layout) : listener(hears) {
    setWindowTitle(translated("Kiv デバッガ"));
    setDockNestingEnabled(true);
    make_listing();
    make_actions();
    dock("registers", translated("レジスタ"), make_registers(), Qt::RightDockWidgetArea);
    stack = make_table(3);
    dock("stack", translated("スタック"), stack, Qt::RightDockWidgetArea);
    dock("memory", translated("メモリ"), make_memory(), Qt::BottomDockWidgetArea);
    dock("console", translated("コンソール"), make_console(), Qt::BottomDockWidgetArea);
    dock("points", translated("ブレークポイント"), make_points(), Qt::RightDockWidgetArea);
    devices = new QTreeWidget;
    devices->setHeaderHidden(true);
    devices->setColumnCount(2);
    dock("devices", translated("デバイス"), devices, Qt::RightDockWidgetArea);
    past = new QPlainTextEdit;
    past->setReadOnly(true);
    past->setFont(fixed_font());
    past->setLineWrapMode(QPlainTextEdit::NoWrap);
    dock("past", translated("実行の跡"), past, Qt::BottomDockWidgetArea);
    dock("profile", translated("プロファイル"), make_profile(), Qt::BottomDockWidgetArea);
    past_time = new QTimer(this);
    past_time->setSingleShot(true);
    past_time->setInterval(past_ms);
    connect(past_time, &QTimer::timeout, this, [this] { show_past(); });
    state = new QLabel;
    place = new QLabel;
    place->setFont(fixed_font());
    statusBar()->addWidget(state, 1);
    statusBar()->addPermanentWidget(place);
    arrange();
    listing->setFocus();
    const QStringList parts = text_of(layout).split(u' ');
    if (parts.size() >= 2) {
        restoreGeometry(QByteArray::fromBase64(parts[0].toLatin1()));
        restoreState(QByteArray::fromBase64(parts[1].toLatin1()));
    }
    set_colours(parts.value(2).toInt());
    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this] {
        if (!isVisible()) return; // taken away already, and the listener with it
        take_lines();
        if (shown.running || profile_due) look();
    });
    timer->start(look_ms);
}

std::string debugger_window::layout() const {
    return (saveGeometry().toBase64() + ' ' + saveState().toBase64() + ' ' + QByteArray::number(colours))
        .toStdString();
}

void debugger_window::closeEvent(QCloseEvent *e) {
    e->ignore(); // the program takes it away
    listener.debugger_closed(layout());
}

void debugger_window::resizeEvent(QResizeEvent *e) {
    QMainWindow::resizeEvent(e);
    QTimer::singleShot(0, this, [this] { look(); });
}

void debugger_window::come_to_front() {
    raise();
    activateWindow();
}

QTableWidget *debugger_window::make_table(int columns) {
    auto *table = new QTableWidget(0, columns, this);
    table->setFont(fixed_font());
    table->horizontalHeader()->hide();
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(QFontMetrics(fixed_font()).height() + 3);
    table->verticalHeader()->setMinimumSectionSize(1);
    table->setShowGrid(false);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setTabKeyNavigation(false);
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setMinimumSectionSize(8);
    return table;
}

void debugger_window::dock(const char *name, const QString &title, QWidget *inside,
                           Qt::DockWidgetArea where) {
    auto *d = new QDockWidget(title, this);
    d->setObjectName(QString::fromLatin1(name));
    d->setWidget(inside);
    addDockWidget(where, d);
    connect(d, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (visible) QTimer::singleShot(0, this, [this] { look(); });
    });
}

// Of a window that nobody has arranged yet.
void debugger_window::arrange() {
    const auto d = [this](const char *name) { return findChild<QDockWidget *>(QString::fromLatin1(name)); };
    splitDockWidget(d("memory"), d("console"), Qt::Horizontal);
    tabifyDockWidget(d("memory"), d("past"));
    tabifyDockWidget(d("memory"), d("profile"));
    tabifyDockWidget(d("stack"), d("points"));
    tabifyDockWidget(d("stack"), d("devices"));
    d("devices")->raise();
    d("memory")->raise();
    const QRect desktop = screen() != nullptr ? screen()->availableGeometry() : QRect(0, 0, 1280, 1024);
    resize(std::min(1180, desktop.width() - 40), std::min(860, desktop.height() - 80));
    resizeDocks({d("registers"), d("devices")}, {240, 340}, Qt::Vertical);
    resizeDocks({d("registers")}, {430}, Qt::Horizontal);
    resizeDocks({d("memory"), d("console")}, {300, 300}, Qt::Vertical);
    resizeDocks({d("memory"), d("console")}, {680, 480}, Qt::Horizontal);
    make_view_menu();
}

void debugger_window::make_view_menu() {
    QMenu *menu = menuBar()->addMenu(translated("表示(&V)"));
    for (const char *name :
         {"registers", "memory", "stack", "points", "devices", "past", "profile", "console"})
        menu->addAction(findChild<QDockWidget *>(QString::fromLatin1(name))->toggleViewAction());
    menu->addSeparator();
    for (const char *text : {"デスクトップの配色(&D)", "明るい配色(&L)", "暗い配色(&K)"}) {
        QAction *item = menu->addAction(translated(text));
        item->setCheckable(true);
        const int which = static_cast<int>(colour_items.size());
        connect(item, &QAction::triggered, this, [this, which] { set_colours(which); });
        colour_items.push_back(item);
    }
}

void debugger_window::set_colours(int which) {
    colours = which == light || which == dark ? which : colours_of_desktop;
    for (size_t i = 0; i < colour_items.size(); ++i)
        colour_items[i]->setChecked(static_cast<int>(i) == colours);
    QPalette p = QApplication::palette();
    if (colours != colours_of_desktop) {
        const bool is_dark = colours == dark;
        const auto grey = [](int level) { return QColor(level, level, level); };
        p = QPalette(grey(is_dark ? 0x38 : 0xEF), grey(is_dark ? 0x2B : 0xEF)); // texts follow from these
        p.setColor(QPalette::Base, grey(is_dark ? 0x1E : 0xFF));
        p.setColor(QPalette::AlternateBase, grey(is_dark ? 0x26 : 0xF7));
        for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
            p.setColor(role, grey(is_dark ? 0xE0 : 0x00));
            p.setColor(QPalette::Disabled, role, grey(is_dark ? 0x90 : 0x78));
        }
        p.setColor(QPalette::PlaceholderText, grey(is_dark ? 0x90 : 0x78));
        p.setColor(QPalette::Highlight, is_dark ? QColor(0x2F, 0x5D, 0x8C) : QColor(0x30, 0x8C, 0xC6));
        p.setColor(QPalette::HighlightedText, Qt::white);
    }
    setPalette(p);
    for (QWidget *w : findChildren<QWidget *>())
        if (w->isWindow() || qobject_cast<QDockWidget *>(w) != nullptr || qobject_cast<QMenu *>(w) != nullptr)
            w->setPalette(p);
    look();
}

// ---- what the person does ----------------------------------------------------------------------------

void debugger_window::make_actions() {
    struct entry {
        debugger_action what;
        const char *text, *key;
        bool standing, in_bar;
    };
    const entry forth[] = {{debugger_action::go_or_stop, "続ける / 止める(&G)", "F5", false, true},
                           {debugger_action::into, "一命令(&I)", "F11", false, true},
                           {debugger_action::over, "呼び出しを越えて(&O)", "F10", false, true},
                           {debugger_action::out, "戻りまで(&U)", "Shift+F11", false, true},
                           {debugger_action::run_to, "カーソルまで(&C)", "Ctrl+F10", false, true},
                           {debugger_action::frame, "次の画面まで(&F)", "F8", false, true}};
    const entry back[] = {{debugger_action::back_into, "一命令戻る(&B)", "Alt+F11", false, true},
                          {debugger_action::back_over, "呼び出しを越えて戻る(&V)", "Alt+F10", false, true},
                          {debugger_action::back_out, "呼び出しへ戻る(&R)", "Alt+Shift+F11", true, false},
                          {debugger_action::back_frame, "前の画面へ戻る(&P)", "Alt+F8", true, false},
                          {debugger_action::back_go, "前の停止点へ戻る(&S)", "Alt+F5", true, false}};
    QToolBar *bar = addToolBar(translated("実行"));
    bar->setObjectName(QStringLiteral("bar"));
    QMenu *menu = menuBar()->addMenu(translated("実行(&R)"));
    const auto add = [&](const entry &e) {
        QAction *action = menu->addAction(translated(e.text));
        action->setShortcut(QKeySequence(QString::fromLatin1(e.key)));
        connect(action, &QAction::triggered, this, [this, e] {
            act(e.what, e.what == debugger_action::run_to ? chosen_address() : uint16_t{0});
        });
        if (e.in_bar) bar->addAction(action);
        actions.emplace_back(action, e.standing);
    };
    for (const entry &e : forth) add(e);
    menu->addSeparator();
    bar->addSeparator();
    for (const entry &e : back) add(e);
    menu->addSeparator();
    QAction *point = menu->addAction(translated("ブレークポイント(&K)"));
    point->setShortcut(QKeySequence(QStringLiteral("F9")));
    connect(point, &QAction::triggered, this, [this] { listener.debugger_toggles_point(chosen_address()); });
    menu->addSeparator();
    QAction *end = menu->addAction(translated("閉じる(&X)"));
    connect(end, &QAction::triggered, this, [this] { close(); });
}

void debugger_window::act(debugger_action action, uint16_t value) {
    follow = true;
    listener.debugger_acts(action, value);
    look();
}

void debugger_window::tell(const std::string &wrong) {
    statusBar()->showMessage(text_of(wrong), wrong.empty() ? 1 : 8000);
}

// ---- the listing -------------------------------------------------------------------------------------

void debugger_window::make_listing() {
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    listing_address = new QLineEdit;
    listing_address->setFont(fixed_font());
    listing_address->setPlaceholderText(translated("番地かラベル、空なら次の命令"));
    listing_address->setClearButtonEnabled(true);
    listing = make_table(4);
    listing->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    listing->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    listing->setContextMenuPolicy(Qt::CustomContextMenu);
    listing->installEventFilter(this);
    listing->viewport()->installEventFilter(this);
    const int letter = QFontMetrics(fixed_font()).horizontalAdvance(u'0');
    for (const auto &[column, letters] : {std::pair{0, 5}, {1, 18}, {2, 10}})
        listing->setColumnWidth(column, letter * letters);
    layout->addWidget(listing_address);
    layout->addWidget(listing);
    setCentralWidget(page);
    connect(listing_address, &QLineEdit::returnPressed, this,
            [this] { go_to(listing_address->text(), false); });
    connect(listing, &QTableWidget::cellClicked, this, [this](int row, int column) {
        if (column == 0 && row < static_cast<int>(shown.listing.size()))
            listener.debugger_toggles_point(shown.listing[static_cast<size_t>(row)].address);
    });
    connect(listing, &QWidget::customContextMenuRequested, this, [this](QPoint at) { listing_menu(at); });
}

uint16_t debugger_window::chosen_address() const {
    const int row = listing->currentRow();
    return row >= 0 && row < static_cast<int>(shown.listing.size())
               ? shown.listing[static_cast<size_t>(row)].address
               : shown.pc;
}

void debugger_window::listing_menu(const QPoint &at) {
    QMenu menu;
    const uint16_t address = chosen_address();
    menu.addAction(translated("ここまで実行"), this, [&] { act(debugger_action::run_to, address); });
    menu.addAction(translated("次はここから実行"), this, [&] { act(debugger_action::put_pc, address); });
    menu.addAction(translated("ブレークポイント"), this, [&] { listener.debugger_toggles_point(address); });
    menu.exec(listing->viewport()->mapToGlobal(at));
}

void debugger_window::go_to(const QString &text, bool in_memory) {
    std::string wrong;
    if (text.trimmed().isEmpty()) {
        follow |= !in_memory;
        return look();
    }
    const int64_t found = listener.debugger_finds(text.toStdString(), wrong);
    tell(wrong);
    if (found < 0) return;
    if (in_memory) {
        memory_at = static_cast<uint32_t>(found) & ~(bytes_a_line - 1);
    } else {
        follow = false;
        listing_at = static_cast<uint16_t>(found);
    }
    look();
}

void debugger_window::scroll_listing(int lines) {
    if (shown.listing.size() < 2) return;
    const size_t forth = std::min(static_cast<size_t>(std::max(lines, 0)), shown.listing.size() - 1);
    listing_at =
        lines > 0 ? shown.listing[forth].address : static_cast<uint16_t>(shown.listing[0].address + lines);
    follow = false;
    look();
}

bool debugger_window::eventFilter(QObject *of, QEvent *e) {
    if (e->type() == QEvent::Wheel) {
        const int lines = static_cast<QWheelEvent *>(e)->angleDelta().y() / -40;
        if (of == listing->viewport()) return scroll_listing(lines), true;
        if (memory != nullptr && of == memory->viewport()) {
            const int64_t at = static_cast<int64_t>(memory_at) + int64_t{lines} * bytes_a_line;
            memory_at = static_cast<uint32_t>(std::max<int64_t>(at, 0));
            return look(), true;
        }
    }
    if (e->type() == QEvent::Resize &&
        (of == listing->viewport() || (memory != nullptr && of == memory->viewport())))
        QTimer::singleShot(0, this, [this] { look(); });
    if (e->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(e)->key();
        if (of == listing && (key == Qt::Key_PageDown || key == Qt::Key_PageUp)) {
            scroll_listing(key == Qt::Key_PageDown ? rows_of(listing) - 1 : 1 - rows_of(listing));
            return true;
        }
        if (line != nullptr && of == line && (key == Qt::Key_Up || key == Qt::Key_Down)) {
            said_at = std::clamp<qsizetype>(said_at + (key == Qt::Key_Up ? -1 : 1), 0, said_before.size());
            line->setText(said_before.value(said_at));
            return true;
        }
        if (line != nullptr && of == line && key == Qt::Key_Tab) {
            const std::string typed = line->text().toStdString();
            const auto words = listener.debugger_completes(typed);
            if (words.size() == 1)
                line->setText(text_of(typed.substr(0, typed.find_last_of(" \t,([:") + 1) + words[0] + " "));
            else
                for (const std::string &word : words) said->appendPlainText(text_of("  " + word));
            return true;
        }
    }
    return QMainWindow::eventFilter(of, e);
}

// ---- the console -------------------------------------------------------------------------------------

QWidget *debugger_window::make_console() {
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    said = new QPlainTextEdit;
    said->setReadOnly(true);
    said->setFont(fixed_font());
    said->setMaximumBlockCount(5000);
    said->setLineWrapMode(QPlainTextEdit::NoWrap);
    line = new QLineEdit;
    line->setFont(fixed_font());
    line->setPlaceholderText(translated("コマンド: help で一覧"));
    line->installEventFilter(this);
    layout->addWidget(said);
    layout->addWidget(line);
    connect(line, &QLineEdit::returnPressed, this, [this] { command(); });
    return page;
}

void debugger_window::command() {
    const QString text = line->text();
    if (text.trimmed().isEmpty()) return;
    said->appendPlainText(QStringLiteral("> ") + text);
    said->verticalScrollBar()->setValue(said->verticalScrollBar()->maximum());
    said_before.removeAll(text);
    said_before.append(text);
    said_at = said_before.size();
    line->clear();
    follow = true;
    listener.debugger_command(text.toStdString());
    take_lines();
    look();
}

void debugger_window::take_lines() {
    // The text follows by itself only while no scroll bar comes or goes.
    QScrollBar *const bar = said->verticalScrollBar();
    const bool at_end = bar->value() == bar->maximum();
    for (const std::string &text : listener.debugger_lines()) said->appendPlainText(text_of(text));
    if (at_end) bar->setValue(bar->maximum());
}

} // namespace platform
