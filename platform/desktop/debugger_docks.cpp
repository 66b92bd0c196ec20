// What the docks of the debugger's window show, and what is edited there.
#include "platform/desktop/debugger_window.h"

#include "platform/desktop/debugger_tables.h"
#include "platform/desktop/dialog_parts.h"
#include <QtCore/QTimer>
#include <QtGui/QFontDatabase>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTableWidget>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

namespace platform {

namespace {

constexpr uint32_t past_instructions = 10000;
constexpr int bytes_a_line = 16;
constexpr int register_columns = 3; // each a name and a value
constexpr qint64 profile_ms = 1000; // between two looks at it while the machine runs

// As far as the font has it: what has none shows as a point.
QChar sign_of(uint8_t byte) {
    if (byte >= 0x20 && byte < 0x7F) return QChar(byte);
    return byte >= 0xA1 && byte <= 0xDF ? QChar(0xFF61 + byte - 0xA1) : QChar(u'.'); // half-width katakana
}

// What `sign_of` shows so; -1: nothing.
int byte_of(QChar sign) {
    const char16_t c = sign.unicode();
    if (c >= 0x20 && c < 0x7F) return c;
    return c >= 0xFF61 && c <= 0xFF9F ? c - 0xFF61 + 0xA1 : -1;
}

int rows_of(const QTableWidget *table) {
    return std::max(1, table->viewport()->height() / table->verticalHeader()->defaultSectionSize());
}

} // namespace

debugger_request debugger_window::request() const {
    debugger_request r;
    r.follow = follow;
    r.listing_at = listing_at;
    r.listing_rows = rows_of(listing);
    r.area = std::max(0, area->currentIndex());
    r.memory_at = memory_at;
    r.memory_size = is_seen(memory) ? static_cast<uint32_t>(rows_of(memory) * bytes_a_line) : 0;
    r.stack = is_seen(stack);
    r.points = is_seen(points);
    r.devices = is_seen(devices);
    if (is_seen(costs) && (!shown.running || !profile_age.isValid() || profile_age.elapsed() > profile_ms))
        r.profile =
            by_address->currentIndex() == 0 ? debugger_request::by_routine : debugger_request::by_address;
    return r;
}

void debugger_window::look() {
    if (!isVisible() || filling) return;
    debugger_look l;
    const debugger_request wanted = request();
    if (!listener.debugger_looks(wanted, l)) return;
    if (!l.running && is_seen(past) && past_of != l.changes) past_time->start();
    filling = true;
    show_listing(l);
    show_registers(l);
    show_memory(l);
    show_points(l);
    show_devices(l);
    profile_due = is_seen(costs) && wanted.profile == debugger_request::no_profile;
    if (wanted.profile != debugger_request::no_profile) show_profile(l);
    // What moves is grey: it is of a moment ago.
    for (QWidget *w : std::initializer_list<QWidget *>{listing, registers, stack, devices}) {
        QPalette grey = palette();
        if (l.running) grey.setColor(QPalette::Text, grey.color(QPalette::PlaceholderText));
        w->setPalette(grey);
    }
    for (const auto &[action, standing] : actions) action->setEnabled(!standing || !l.running);
    state->setText(l.running       ? translated("実行中")
                   : l.why.empty() ? translated("停止中")
                                   : translated("停止中") + QStringLiteral(": ") + text_of(l.why));
    place->setText(text_of(l.place));
    shown = std::move(l);
    filling = false;
}

// ---- listing, stack, past ----------------------------------------------------------------------------

void debugger_window::show_listing(const debugger_look &l) {
    listing->setRowCount(static_cast<int>(l.listing.size()));
    // Not the colour of the chosen line.
    const bool is_dark = palette().color(QPalette::Base).lightness() < 128;
    const QBrush next = is_dark ? QColor(0x70, 0x55, 0x00) : QColor(0xFF, 0xE4, 0x90),
                 on_it = palette().brush(QPalette::Text);
    for (int row = 0; row < listing->rowCount(); ++row) {
        const debugger_line &line_of = l.listing[static_cast<size_t>(row)];
        const bool is_next = line_of.address == l.pc && !l.running;
        QString mark = line_of.point == debugger_line::point_on    ? QString(QChar(0x25CF))
                       : line_of.point == debugger_line::point_off ? QString(QChar(0x25CB))
                                                                   : QString();
        if (line_of.address == l.pc) mark += QChar(0x25B6);
        QString text = text_of(line_of.text);
        if (!line_of.note.empty())
            text = text.leftJustified(24) + QStringLiteral(" ; ") + text_of(line_of.note);
        put(listing, row, 0, mark);
        put(listing, row, 1, hex(line_of.address, 4) + u' ' + text_of(line_of.label));
        put(listing, row, 2, text_of(line_of.bytes));
        put(listing, row, 3, text);
        for (int column = 0; column < 4; ++column) {
            listing->item(row, column)->setBackground(is_next ? next : QBrush());
            listing->item(row, column)->setForeground(is_next ? on_it : QBrush());
        }
        if (line_of.point != debugger_line::no_point)
            listing->item(row, 0)->setForeground(QColor(0xE0, 0x40, 0x30));
    }
    if (!is_seen(stack)) return;
    stack->setRowCount(static_cast<int>(l.stack.size()));
    for (int row = 0; row < stack->rowCount(); ++row) {
        const debugger_word &word = l.stack[static_cast<size_t>(row)];
        put(stack, row, 0, hex(word.address, 4));
        put(stack, row, 1, hex(word.value, 4));
        put(stack, row, 2, word.text.empty() ? QString() : text_of(word.text));
    }
    stack->resizeColumnToContents(0);
    stack->resizeColumnToContents(1);
}

// Runs the past again: once nobody steps for a moment, so that steps answer at once.
void debugger_window::show_past() {
    if (shown.running || !is_seen(past) || past_of == shown.changes) return;
    debugger_request back;
    back.past = past_instructions;
    debugger_look l;
    if (!listener.debugger_looks(back, l) || l.running) return;
    past_of = l.changes;
    QString all;
    for (const debugger_line &p : l.past)
        all += hex(p.address, 4) + u' ' + text_of(p.bytes).leftJustified(9) +
               text_of(p.text).leftJustified(20) + u' ' + text_of(p.note) + u'\n';
    all.chop(1);
    past->setPlainText(all);
    past->verticalScrollBar()->setValue(past->verticalScrollBar()->maximum());
}

// ---- registers ---------------------------------------------------------------------------------------

QWidget *debugger_window::make_registers() {
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    registers = make_table(2 * register_columns);
    registers->setSelectionBehavior(QAbstractItemView::SelectItems);
    registers->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                               QAbstractItemView::AnyKeyPressed);
    layout->addWidget(registers);
    auto *row = new QHBoxLayout;
    row->setSpacing(2);
    for (int bit = 7; bit >= 0; --bit) {
        auto *flag = new QCheckBox(QString(u"SZYHXPNC"[7 - bit]));
        flag->setFocusPolicy(Qt::TabFocus);
        connect(flag, &QCheckBox::clicked, this, [this, bit] {
            for (const debugger_register &r : shown.registers)
                if (r.name == "AF") // after which others are shown
                    return tell(listener.debugger_sets_register(r.index, r.value ^ (1u << bit)));
        });
        row->addWidget(flag);
        flags.push_back(flag);
    }
    layout->addLayout(row);
    connect(registers, &QTableWidget::cellChanged, this, [this](int r, int column) {
        if (!filling && column % 2 == 1) register_edited(r + column / 2 * registers->rowCount());
    });
    return page;
}

bool debugger_window::being_edited(const QWidget *table) const {
    const QWidget *focus = QApplication::focusWidget();
    return qobject_cast<const QLineEdit *>(focus) != nullptr && table->isAncestorOf(focus);
}

void debugger_window::show_registers(const debugger_look &l) {
    const int rows = static_cast<int>(l.registers.size() + register_columns - 1) / register_columns;
    if (!being_edited(registers)) {
        registers->setRowCount(rows);
        for (int i = 0; i < static_cast<int>(l.registers.size()); ++i) {
            const debugger_register &r = l.registers[static_cast<size_t>(i)];
            const int column = i / rows * 2;
            put(registers, i % rows, column, text_of(r.name));
            put(registers, i % rows, column + 1, hex(r.value, r.digits), true);
            const bool changed = shown.registers.size() == l.registers.size() &&
                                 shown.registers[static_cast<size_t>(i)].value != r.value;
            QFont font = registers->font();
            font.setBold(changed && !l.running);
            registers->item(i % rows, column + 1)->setFont(font);
        }
        for (int column = 0; column < 2 * register_columns - 1; ++column)
            registers->resizeColumnToContents(column);
    }
    for (const debugger_register &r : l.registers)
        if (r.name == "AF")
            for (size_t i = 0; i < flags.size(); ++i) flags[i]->setChecked((r.value >> (7 - i) & 1) != 0);
}

void debugger_window::register_edited(int i) {
    if (i >= static_cast<int>(shown.registers.size())) return;
    const debugger_register &r = shown.registers[static_cast<size_t>(i)];
    const int rows = registers->rowCount();
    std::string wrong;
    const QString text = registers->item(i % rows, i / rows * 2 + 1)->text().trimmed();
    bool is_hex = false;
    int64_t value = text.toUInt(&is_hex, 16);
    if (!is_hex) value = listener.debugger_finds(text.toStdString(), wrong);
    if (value >= int64_t{1} << (r.digits * 4))
        wrong = (text + translated(": 値が大きすぎます")).toStdString();
    if (wrong.empty()) wrong = listener.debugger_sets_register(r.index, static_cast<uint32_t>(value));
    tell(wrong);
    QMetaObject::invokeMethod(
        this, [this] { look(); }, Qt::QueuedConnection);
}

// ---- memory ------------------------------------------------------------------------------------------

QWidget *debugger_window::make_memory() {
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    auto *row = new QHBoxLayout;
    area = new QComboBox;
    memory_address = new QLineEdit;
    memory_address->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    memory_address->setPlaceholderText(translated("番地: $C000, HL, ラベル"));
    row->addWidget(area);
    row->addWidget(memory_address, 1);
    layout->addLayout(row);
    memory = make_table(bytes_a_line + 2);
    memory->setSelectionBehavior(QAbstractItemView::SelectItems);
    memory->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::AnyKeyPressed);
    memory->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const int letter = memory->fontMetrics().horizontalAdvance(u'0');
    memory->setColumnWidth(0, letter * 6);
    for (int i = 1; i <= bytes_a_line; ++i) memory->setColumnWidth(i, letter * 7 / 2);
    memory->viewport()->installEventFilter(this);
    layout->addWidget(memory);
    connect(memory_address, &QLineEdit::returnPressed, this, [this] { go_to(memory_address->text(), true); });
    connect(area, &QComboBox::activated, this, [this] {
        memory_at = 0;
        look();
    });
    connect(memory, &QTableWidget::cellChanged, this, [this](int r, int column) {
        if (!filling) memory_edited(r, column);
    });
    return page;
}

void debugger_window::show_memory(const debugger_look &l) {
    if (area->count() == 0)
        for (const debugger_area &a : l.areas) area->addItem(text_of(a.name));
    const size_t chosen = static_cast<size_t>(std::max(0, area->currentIndex()));
    if (chosen < l.areas.size() && memory_at >= l.areas[chosen].size)
        memory_at = l.areas[chosen].size - bytes_a_line;
    if (!is_seen(memory) || being_edited(memory)) return;
    const int rows = (static_cast<int>(l.memory.size()) + bytes_a_line - 1) / bytes_a_line;
    memory->setRowCount(rows);
    for (int row = 0; row < rows; ++row) {
        QString text;
        put(memory, row, 0, hex(memory_at + static_cast<uint32_t>(row * bytes_a_line), 4));
        for (int i = 0; i < bytes_a_line; ++i) {
            const auto at = static_cast<size_t>(row * bytes_a_line + i);
            const bool there = at < l.memory.size();
            put(memory, row, i + 1, there ? hex(l.memory[at], 2) : QString(), there);
            if (there) text += sign_of(l.memory[at]);
        }
        put(memory, row, bytes_a_line + 1, text, true);
    }
}

// What differs from what the line showed; it may go on beyond the line.
void debugger_window::memory_text_edited(int row, const QString &text) {
    const auto from = static_cast<size_t>(row * bytes_a_line);
    const auto old = [&](size_t i) {
        return from + i < shown.memory.size() ? shown.memory[from + i] : uint8_t{0};
    };
    std::vector<uint8_t> bytes;
    size_t first = SIZE_MAX, behind = 0;
    for (size_t i = 0; i < static_cast<size_t>(text.size()); ++i) {
        const QChar sign = text[static_cast<qsizetype>(i)];
        bytes.push_back(old(i));
        if (i < bytes_a_line && sign == sign_of(old(i))) continue;
        if (byte_of(sign) < 0)
            return tell((QString(sign) + translated(": この文字は書けません")).toStdString());
        bytes[i] = static_cast<uint8_t>(byte_of(sign));
        first = std::min(first, i);
        behind = i + 1;
    }
    if (behind == 0) return tell({});
    bytes.resize(behind);
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(first));
    tell(listener.debugger_writes(area->currentIndex(), memory_at + static_cast<uint32_t>(from + first),
                                  bytes));
}

void debugger_window::memory_edited(int row, int column) {
    if (column == bytes_a_line + 1) {
        memory_text_edited(row, memory->item(row, column)->text());
        QMetaObject::invokeMethod(
            this, [this] { look(); }, Qt::QueuedConnection);
        return;
    }
    if (column < 1) return;
    bool is_hex = false;
    const QString text = memory->item(row, column)->text().trimmed();
    const uint32_t value = text.toUInt(&is_hex, 16);
    const uint32_t at = memory_at + static_cast<uint32_t>(row * bytes_a_line + column - 1);
    if (!is_hex || value > 0xFF)
        tell((text + translated(": 16進数で2桁です")).toStdString());
    else
        tell(listener.debugger_writes(area->currentIndex(), at, {static_cast<uint8_t>(value)}));
    QMetaObject::invokeMethod(
        this, [this] { look(); }, Qt::QueuedConnection);
}

// ---- stop points and devices -------------------------------------------------------------------------

QWidget *debugger_window::make_points() {
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    points = make_table(2);
    layout->addWidget(points);
    auto *row = new QHBoxLayout;
    new_point = new QLineEdit;
    new_point->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    new_point->setPlaceholderText(QStringLiteral("$8000 if A==3 / port $51 w / watch $C000,2"));
    auto *remove = new QPushButton(translated("削除(&D)"));
    row->addWidget(new_point, 1);
    row->addWidget(remove);
    layout->addLayout(row);
    const auto chosen = [this](int at) -> const debugger_point * {
        return at >= 0 && at < static_cast<int>(shown.points.size()) ? &shown.points[static_cast<size_t>(at)]
                                                                     : nullptr;
    };
    connect(new_point, &QLineEdit::returnPressed, this, [this] {
        const std::string wrong = listener.debugger_adds_point(new_point->text().toStdString());
        tell(wrong);
        if (wrong.empty()) new_point->clear();
    });
    connect(remove, &QPushButton::clicked, this, [this, chosen] {
        if (const debugger_point *p = chosen(points->currentRow())) listener.debugger_removes_point(p->id);
    });
    connect(points, &QTableWidget::cellChanged, this, [this, chosen](int r, int column) {
        const debugger_point *p = chosen(r);
        if (filling || column != 0 || p == nullptr) return;
        listener.debugger_enables_point(p->id, points->item(r, 0)->checkState() == Qt::Checked);
    });
    return page;
}

void debugger_window::show_points(const debugger_look &l) {
    if (!is_seen(points)) return;
    points->setRowCount(static_cast<int>(l.points.size()));
    for (int row = 0; row < points->rowCount(); ++row) {
        const debugger_point &p = l.points[static_cast<size_t>(row)];
        put(points, row, 0, QString::number(p.id));
        points->item(row, 0)->setCheckState(p.enabled ? Qt::Checked : Qt::Unchecked);
        put(points, row, 1,
            text_of(p.text) + (p.hits == 0 ? QString() : QStringLiteral("  (%1)").arg(p.hits)));
    }
    points->resizeColumnToContents(0);
}

void debugger_window::show_devices(const debugger_look &l) {
    if (l.devices.empty()) return;
    const bool first = devices->topLevelItemCount() == 0;
    for (size_t i = 0; i < l.devices.size(); ++i) {
        const debugger_device &d = l.devices[i];
        QTreeWidgetItem *top = devices->topLevelItem(static_cast<int>(i));
        if (top == nullptr) devices->addTopLevelItem(top = new QTreeWidgetItem({text_of(d.name)}));
        while (top->childCount() > static_cast<int>(d.lines.size()))
            delete top->takeChild(top->childCount() - 1);
        for (size_t j = 0; j < d.lines.size(); ++j) {
            QTreeWidgetItem *item = top->child(static_cast<int>(j));
            if (item == nullptr) top->addChild(item = new QTreeWidgetItem);
            item->setText(0, text_of(d.lines[j].first));
            item->setText(1, text_of(d.lines[j].second));
        }
    }
    if (!first) return;
    devices->expandAll();
    devices->resizeColumnToContents(0);
}

} // namespace platform
