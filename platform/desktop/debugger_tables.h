// How the debugger's docks write into their tables.
#pragma once

#include <QtCore/QString>
#include <QtWidgets/QTableWidget>

namespace platform {

inline QString hex(uint32_t value, int digits) {
    return QString::number(value, 16).toUpper().rightJustified(digits, u'0');
}

// The item at that place, made when there is none.
template <class Item = QTableWidgetItem> Item *item_at(QTableWidget *table, int row, int column) {
    QTableWidgetItem *item = table->item(row, column);
    if (item == nullptr) table->setItem(row, column, item = new Item);
    return static_cast<Item *>(item);
}

template <class Item = QTableWidgetItem>
Item *put(QTableWidget *table, int row, int column, const QString &text, bool editable = false) {
    Item *item = item_at<Item>(table, row, column);
    if (item->text() != text) item->setText(text);
    item->setFlags(editable ? item->flags() | Qt::ItemIsEditable : item->flags() & ~Qt::ItemIsEditable);
    return item;
}

inline bool is_seen(const QWidget *w) {
    return w != nullptr && w->isVisible() && !w->visibleRegion().isEmpty();
}

} // namespace platform
