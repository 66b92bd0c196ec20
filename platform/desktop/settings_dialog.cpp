// The settings dialog: sliders, each with a box that mirrors its number, and check boxes in two columns.
#include "platform/desktop/desktop_dialogs.h"

#include "platform/desktop/dialog_parts.h"
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <set>

namespace platform {

namespace {

constexpr int most_ticks = 20; // a tick at every position up to this many

// `text` for a control, with its first letter or digit that no other control has as the key that reaches it.
QString with_mnemonic(const std::string &text, std::set<char16_t> &taken) {
    QString label = text_of(text);
    qsizetype at = -1;
    for (qsizetype i = 0; i < label.size() && at < 0; ++i) {
        const char16_t key = label[i].toUpper().unicode();
        if (key < 0x80 && label[i].isLetterOrNumber() && taken.insert(key).second) {
            at = i;
        }
    }
    QString marked;
    for (qsizetype i = 0; i < label.size(); ++i) {
        if (i == at) marked += u'&';
        marked += label[i];
        if (label[i] == u'&') marked += u'&';
    }
    return marked;
}

QSlider *make_slider(const settings_slider &s) {
    auto *slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(text_of(s.label));
    slider->setRange(s.minimum, s.maximum);
    slider->setValue(s.value);
    slider->setMinimumWidth(220);
    if (s.maximum - s.minimum < most_ticks) {
        slider->setTickPosition(QSlider::TicksBelow);
        slider->setTickInterval(1);
        slider->setPageStep(2);
    }
    return slider;
}

// Shows the value in effect, which may lie outside of the slider's range, until the slider moves.
QLineEdit *make_mirror(const settings_slider &s, QSlider *slider) {
    auto *mirror = new QLineEdit(QString::number(s.value));
    mirror->setObjectName(text_of(s.label) + QStringLiteral(" value"));
    mirror->setReadOnly(true);
    mirror->setAlignment(Qt::AlignRight);
    mirror->setFocusPolicy(Qt::NoFocus);
    mirror->setFixedWidth(mirror->fontMetrics().horizontalAdvance(QStringLiteral("-0000")) + 16);
    QObject::connect(slider, &QSlider::valueChanged, mirror,
                     [mirror](int value) { mirror->setText(QString::number(value)); });
    return mirror;
}

class settings_box : public QDialog {
  public:
    settings_box(QWidget *owner, const settings_dialog &dialog) : QDialog(owner), all(new QVBoxLayout(this)) {
        setWindowTitle(text_of(dialog.caption));
        add_sliders(dialog.sliders);
        add_checks(dialog.checks);
        all->addSpacing(8);
        add_bottom(dialog);
        all->setSizeConstraint(QLayout::SetFixedSize);
        if (!sliders.empty()) sliders.front()->setFocus();
    }
    void read(settings_dialog &dialog) const {
        for (size_t i = 0; i < sliders.size(); ++i) dialog.sliders[i].value = sliders[i]->value();
        for (size_t i = 0; i < checks.size(); ++i) dialog.checks[i].checked = checks[i]->isChecked();
    }

  private:
    void add_sliders(const std::vector<settings_slider> &of) {
        auto *rows = new QGridLayout;
        for (const settings_slider &s : of) {
            const int row = rows->rowCount();
            auto *label = new QLabel(with_mnemonic(s.label, taken));
            auto *slider = make_slider(s);
            label->setBuddy(slider);
            rows->addWidget(label, row, 0);
            rows->addWidget(slider, row, 1);
            rows->addWidget(make_mirror(s, slider), row, 2);
            rows->addWidget(new QLabel(text_of(s.unit)), row, 3);
            sliders.push_back(slider);
        }
        all->addLayout(rows);
    }
    void add_checks(const std::vector<settings_check> &of) {
        auto *grid = new QGridLayout;
        const int half = (static_cast<int>(of.size()) + 1) / 2;
        for (const settings_check &c : of) {
            const int number = static_cast<int>(checks.size());
            auto *check = new QCheckBox(with_mnemonic(c.label, taken));
            check->setObjectName(text_of(c.label));
            check->setChecked(c.checked);
            grid->addWidget(check, number % half, number / half);
            checks.push_back(check);
        }
        all->addLayout(grid);
    }
    void add_bottom(const settings_dialog &dialog) {
        auto *bottom = new QHBoxLayout;
        bottom->addLayout(program_lines(dialog.program_line, dialog.copyright_line));
        bottom->addSpacing(24);
        auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
        buttons->button(QDialogButtonBox::Cancel)->setText(translated("キャンセル"));
        QObject::connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        QObject::connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        bottom->addWidget(buttons, 0, Qt::AlignBottom);
        all->addLayout(bottom);
    }

    QVBoxLayout *all;
    std::set<char16_t> taken{u'O', u'C'}; // of the buttons
    std::vector<QSlider *> sliders;
    std::vector<QCheckBox *> checks;
};

} // namespace

bool run_settings_dialog(QWidget *owner, settings_dialog &dialog) {
    settings_box box(owner, dialog);
    if (box.exec() != QDialog::Accepted) return false;
    box.read(dialog);
    return true;
}

} // namespace platform
