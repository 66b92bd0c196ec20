// The dock that shows where the time goes. Its buttons say the console's commands.
#include "platform/desktop/debugger_window.h"

#include "platform/desktop/debugger_tables.h"
#include "platform/desktop/dialog_parts.h"
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace platform {

namespace {

enum column { at_address, of_name, own, share, with_calls, times, from_source, column_count };

// Sorted by its number.
class number_item : public QTableWidgetItem {
  public:
    void set(double value) {
        number = value;
        setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    bool operator<(const QTableWidgetItem &other) const override {
        return number < static_cast<const number_item &>(other).number;
    }

  private:
    double number = 0;
};

void put_number(QTableWidget *table, int row, int column, const QString &text, double value) {
    put<number_item>(table, row, column, text)->set(value);
}

} // namespace

QWidget *debugger_window::make_profile() {
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    auto *row = new QHBoxLayout;
    profile_goes = new QPushButton;
    auto *clear = new QPushButton(translated("消去(&E)"));
    by_address = new QComboBox;
    by_address->addItems({translated("ルーチン別"), translated("番地別")});
    row->addWidget(profile_goes);
    row->addWidget(clear);
    row->addWidget(by_address);
    row->addStretch(1);
    layout->addLayout(row);
    costs = make_table(column_count);
    costs->setHorizontalHeaderLabels({translated("番地"), translated("名前"), translated("Tステート"),
                                      QStringLiteral("%"), translated("呼び出し先込み"), translated("回数"),
                                      translated("ソース")});
    costs->horizontalHeader()->show();
    costs->horizontalHeader()->setSortIndicator(own, Qt::DescendingOrder);
    costs->setSortingEnabled(true);
    layout->addWidget(costs);
    const auto say = [this](const char *command_line) {
        listener.debugger_command(command_line);
        profile_age.invalidate();
        take_lines();
        look();
    };
    connect(profile_goes, &QPushButton::clicked, this,
            [this, say] { say(profile_runs ? "profile pause" : "profile on"); });
    connect(clear, &QPushButton::clicked, this, [say] { say("profile clear"); });
    connect(by_address, &QComboBox::activated, this, [this] {
        profile_age.invalidate();
        look();
    });
    connect(costs, &QTableWidget::cellDoubleClicked, this, [this](int at, int) {
        follow = false;
        listing_at = static_cast<uint16_t>(costs->item(at, at_address)->text().toUInt(nullptr, 16));
        look();
    });
    return page;
}

void debugger_window::show_profile(const debugger_look &l) {
    profile_age.start();
    profile_runs = l.profiling;
    profile_goes->setText(l.profiling ? translated("停止(&S)") : translated("開始(&S)"));
    costs->setColumnHidden(with_calls, by_address->currentIndex() != 0);
    costs->setSortingEnabled(false);
    costs->setRowCount(static_cast<int>(l.profile.size()));
    for (int row = 0; row < costs->rowCount(); ++row) {
        const debugger_cost &c = l.profile[static_cast<size_t>(row)];
        const double of_all =
            l.profiled == 0 ? 0 : 100.0 * static_cast<double>(c.own) / static_cast<double>(l.profiled);
        put(costs, row, at_address, hex(c.address, 4));
        put(costs, row, of_name, text_of(c.name));
        put_number(costs, row, own, QString::number(c.own), static_cast<double>(c.own));
        put_number(costs, row, share, QString::number(of_all, 'f', 1), of_all);
        put_number(costs, row, with_calls, QString::number(c.with_calls), static_cast<double>(c.with_calls));
        put_number(costs, row, times, QString::number(c.times), static_cast<double>(c.times));
        put(costs, row, from_source, text_of(c.source));
    }
    costs->setSortingEnabled(true);
    for (int column = 0; column < from_source; ++column) costs->resizeColumnToContents(column);
}

} // namespace platform
