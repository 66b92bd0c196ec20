// The dialog of gamepads: whether they are used, and which key of the machine each input presses.
#include "platform/desktop/desktop_dialogs.h"

#include "platform/desktop/dialog_parts.h"
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>

namespace platform {

bool run_pad_dialog(QWidget *owner, pad_dialog &dialog) {
    QDialog box(owner);
    box.setWindowTitle(text_of(dialog.caption));
    auto *all = new QVBoxLayout(&box);
    auto *use = new QCheckBox(text_of(dialog.use_label));
    use->setChecked(dialog.use);
    all->addWidget(use);
    auto *found = new QLabel(text_of(dialog.found));
    found->setTextFormat(Qt::PlainText);
    found->setVisible(!dialog.found.empty());
    all->addWidget(found);

    QStringList keys;
    for (const std::string &key : dialog.keys) keys << text_of(key);
    std::vector<QComboBox *> choices;
    auto *rows = new QGridLayout;
    const int half = (static_cast<int>(dialog.rows.size()) + 1) / 2;
    for (const pad_dialog::row &row : dialog.rows) {
        const int number = static_cast<int>(choices.size()), column = number / half * 3;
        auto *label = new QLabel(text_of(row.label));
        auto *choice = new QComboBox;
        choice->addItems(keys);
        choice->setCurrentIndex(static_cast<int>(row.key));
        choice->setMaxVisibleItems(16);
        label->setBuddy(choice);
        rows->addWidget(label, number % half, column);
        rows->addWidget(choice, number % half, column + 1);
        choices.push_back(choice);
    }
    rows->setColumnMinimumWidth(2, 16);
    all->addLayout(rows);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    buttons->button(QDialogButtonBox::Cancel)->setText(translated("キャンセル"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
    all->addWidget(buttons);
    if (box.exec() != QDialog::Accepted) return false;
    dialog.use = use->isChecked();
    for (size_t i = 0; i < choices.size(); ++i)
        dialog.rows[i].key = static_cast<size_t>(choices[i]->currentIndex());
    return true;
}

} // namespace platform
