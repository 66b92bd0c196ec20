#include "platform/desktop/desktop_dialogs.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtGui/QFontDatabase>
#include <QtGui/QIcon>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QSlider>
#include <QtWidgets/QTreeView>
#include <algorithm>
#include <set>

namespace platform {

namespace {

constexpr int icon_size = 32;
constexpr int help_lines_shown = 30;
constexpr int most_ticks = 20; // a tick at every position up to this many

QString text_of(const std::string &text) { return QString::fromStdString(text); }

// A plain message, with a button text in the language of the rest.
int ask(QWidget *owner, QMessageBox::Icon icon, const QString &text, const QString &caption,
        QMessageBox::StandardButtons buttons, QMessageBox::StandardButton standard) {
    QMessageBox box(icon, caption, text, buttons, owner);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(standard);
    if (auto *yes = box.button(QMessageBox::Yes)) yes->setText(QStringLiteral("はい(&Y)"));
    if (auto *no = box.button(QMessageBox::No)) no->setText(QStringLiteral("いいえ(&N)"));
    if (auto *ok = box.button(QMessageBox::Ok)) ok->setText(QStringLiteral("OK"));
    return box.exec();
}

// ---- files -------------------------------------------------------------------------------------------

class file_chooser : public QFileDialog {
  public:
    file_chooser(QWidget *owner, const file_dialog_options &o, bool saving)
        : QFileDialog(owner, text_of(o.title)), options(o), for_saving(saving) {
        setOption(QFileDialog::DontUseNativeDialog);  // one that looks and works the same everywhere
        setOption(QFileDialog::DontConfirmOverwrite); // asked below
        setAcceptMode(saving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
        setFileMode(saving || !o.must_exist ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
        const QString current = QDir::currentPath(); // empty when the folder was deleted
        setDirectory(current.isEmpty() ? QDir::homePath() : current);
        QStringList patterns;
        for (const std::string &pattern : o.patterns) patterns << text_of(pattern);
        filter(patterns);
        if (saving) setDefaultSuffix(text_of(o.default_extension));
        setLabelText(QFileDialog::LookIn, QStringLiteral("場所:"));
        setLabelText(QFileDialog::FileName, QStringLiteral("ファイル名(&N):"));
        setLabelText(QFileDialog::FileType, QStringLiteral("種類:"));
        setLabelText(QFileDialog::Accept, saving ? QStringLiteral("保存(&S)") : QStringLiteral("開く(&O)"));
        setLabelText(QFileDialog::Reject, QStringLiteral("キャンセル"));
        name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        if (name != nullptr) {
            name->setText(text_of(o.file_name));
            name->selectAll();
            name->setFocus();
        }
        if (auto *list = findChild<QTreeView *>(QStringLiteral("treeView"))) { // dates and sizes whole
            list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
            list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        }
        resize(720, 440);
    }

    void accept() override {
        const QString typed = name != nullptr ? name->text() : QString();
        // A pattern as a name narrows the list.
        if (typed.contains(u'*') || typed.contains(u'?')) {
            if (!typed.contains(u'/')) filter(typed.split(u';', Qt::SkipEmptyParts));
            return;
        }
        // What is typed counts, not what the list has completed it to.
        if (auto *list = findChild<QAbstractItemView *>(QStringLiteral("listView"));
            list != nullptr && !typed.isEmpty())
            list->clearSelection();
        const QString chosen = selectedFiles().value(0);
        if (!QFileInfo(chosen).isDir() && !typed.isEmpty()) {
            if (!for_saving && options.must_exist && !QFileInfo::exists(chosen)) {
                const QString longer = typed + u'.' + text_of(options.default_extension);
                if (QFileInfo(chosen).suffix().isEmpty() && QFileInfo(directory(), longer).isFile()) {
                    name->setText(longer);
                } else {
                    ask(this, QMessageBox::Warning, chosen + QStringLiteral("\nファイルが見つかりません。"),
                        windowTitle(), QMessageBox::Ok, QMessageBox::Ok);
                    return;
                }
            }
            if (options.confirm_overwrite && QFileInfo::exists(chosen) &&
                ask(this, QMessageBox::Question,
                    chosen + QStringLiteral("\nは既に存在します。置き換えますか?"), windowTitle(),
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
                return;
        }
        QFileDialog::accept();
    }

  private:
    void filter(const QStringList &patterns) {
        setNameFilter(text_of(options.filter_name) + u'(' + patterns.join(u' ') + u')');
    }

    const file_dialog_options &options;
    const bool for_saving;
    QLineEdit *name = nullptr;
};

// ---- settings and help -------------------------------------------------------------------------------

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

// The icon with the program's two lines beside it.
QLayout *program_lines(const std::string &program, const std::string &copyright) {
    auto *row = new QHBoxLayout;
    auto *icon = new QLabel;
    icon->setPixmap(QApplication::windowIcon().pixmap(icon_size, icon_size));
    icon->setFixedSize(icon_size, icon_size);
    auto *lines = new QLabel(text_of(program) + u'\n' + text_of(copyright));
    lines->setTextFormat(Qt::PlainText);
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addWidget(lines);
    row->addStretch();
    return row;
}

QFont fixed_font() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // The one whose half-width and full-width characters stand exactly 1 : 2.
    static const QString preferred = QStringLiteral("VL Gothic");
    if (QFontDatabase::families().contains(preferred))
        font = QFont(preferred, std::max(font.pointSize(), 10));
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    return font;
}

} // namespace

void show_error_box(QWidget *owner, const std::string &text, const std::string &caption) {
    ask(owner, QMessageBox::Critical, text_of(text), text_of(caption), QMessageBox::Ok, QMessageBox::Ok);
}

std::string choose_file(QWidget *owner, const file_dialog_options &options, bool for_saving) {
    file_chooser chooser(owner, options, for_saving);
    if (chooser.exec() != QDialog::Accepted) return {};
    return QDir::toNativeSeparators(chooser.selectedFiles().value(0)).toStdString();
}

bool run_settings_dialog(QWidget *owner, settings_dialog &dialog) {
    QDialog box(owner);
    box.setWindowTitle(text_of(dialog.caption));
    std::set<char16_t> taken{u'O', u'C'}; // of the buttons
    auto *all = new QVBoxLayout(&box);

    auto *rows = new QGridLayout;
    std::vector<QSlider *> sliders;
    for (const settings_slider &s : dialog.sliders) {
        const int row = rows->rowCount();
        auto *label = new QLabel(with_mnemonic(s.label, taken));
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
        label->setBuddy(slider);
        // Shows the value in effect, which may lie outside of the slider's range, until the slider moves.
        auto *mirror = new QLineEdit(QString::number(s.value));
        mirror->setObjectName(text_of(s.label) + QStringLiteral(" value"));
        mirror->setReadOnly(true);
        mirror->setAlignment(Qt::AlignRight);
        mirror->setFocusPolicy(Qt::NoFocus);
        mirror->setFixedWidth(mirror->fontMetrics().horizontalAdvance(QStringLiteral("-0000")) + 16);
        QObject::connect(slider, &QSlider::valueChanged, mirror,
                         [mirror](int value) { mirror->setText(QString::number(value)); });
        rows->addWidget(label, row, 0);
        rows->addWidget(slider, row, 1);
        rows->addWidget(mirror, row, 2);
        rows->addWidget(new QLabel(text_of(s.unit)), row, 3);
        sliders.push_back(slider);
    }
    all->addLayout(rows);

    auto *grid = new QGridLayout;
    std::vector<QCheckBox *> checks;
    const int half = (static_cast<int>(dialog.checks.size()) + 1) / 2;
    for (const settings_check &c : dialog.checks) {
        const int number = static_cast<int>(checks.size());
        auto *check = new QCheckBox(with_mnemonic(c.label, taken));
        check->setObjectName(text_of(c.label));
        check->setChecked(c.checked);
        grid->addWidget(check, number % half, number / half);
        checks.push_back(check);
    }
    all->addLayout(grid);
    all->addSpacing(8);

    auto *bottom = new QHBoxLayout;
    bottom->addLayout(program_lines(dialog.program_line, dialog.copyright_line));
    bottom->addSpacing(24);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("キャンセル"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
    bottom->addWidget(buttons, 0, Qt::AlignBottom);
    all->addLayout(bottom);
    all->setSizeConstraint(QLayout::SetFixedSize);
    if (!sliders.empty()) sliders.front()->setFocus();

    if (box.exec() != QDialog::Accepted) return false;
    for (size_t i = 0; i < sliders.size(); ++i) dialog.sliders[i].value = sliders[i]->value();
    for (size_t i = 0; i < checks.size(); ++i) dialog.checks[i].checked = checks[i]->isChecked();
    return true;
}

void run_help_dialog(QWidget *owner, const help_dialog &dialog) {
    QDialog box(owner);
    box.setWindowTitle(text_of(dialog.caption));
    auto *all = new QVBoxLayout(&box);

    QString text = text_of(dialog.text);
    text.remove(u'\r');
    auto *help = new QPlainTextEdit;
    help->setReadOnly(true);
    help->setFont(fixed_font());
    help->setPlainText(text);
    help->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    help->setTabChangesFocus(true);
    help->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    help->setLineWrapMode(QPlainTextEdit::NoWrap);
    const QFontMetrics metrics(help->font());
    int widest = 0;
    for (const QString &line : text.split(u'\n')) widest = std::max(widest, metrics.horizontalAdvance(line));
    const int edge = 2 * (help->frameWidth() + static_cast<int>(help->document()->documentMargin()));
    help->setMinimumSize(200, metrics.lineSpacing() * 6);
    all->addWidget(help);

    auto *bottom = new QHBoxLayout;
    bottom->addLayout(program_lines(dialog.program_line, dialog.copyright_line));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
    bottom->addWidget(buttons, 0, Qt::AlignBottom);
    all->addLayout(bottom);
    help->setFocus(Qt::OtherFocusReason); // for the scrolling keys; takes no selection along

    // Whole lines, the widest one included.
    const QMargins margins = all->contentsMargins();
    const int height = metrics.lineSpacing() * help_lines_shown + edge -
                       static_cast<int>(help->document()->documentMargin()); // none below a cut text
    box.resize(widest + edge + help->verticalScrollBar()->sizeHint().width() +
                   metrics.averageCharWidth() * 2 + margins.left() + margins.right(),
               box.sizeHint().height() - help->sizeHint().height() + height);
    box.exec();
}

} // namespace platform
