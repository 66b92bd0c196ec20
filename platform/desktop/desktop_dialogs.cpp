#include "platform/desktop/desktop_dialogs.h"

#include "platform/desktop/dialog_parts.h"
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtGui/QFontDatabase>
#include <QtGui/QIcon>
#include <QtGui/QKeyEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTreeView>
#include <algorithm>

namespace platform {

namespace {

constexpr int icon_size = 32;
constexpr QSize file_dialog_size(720, 440);
constexpr int help_lines_shown = 30;

// A plain message, with a button text in the language of the rest.
int ask(QWidget *owner, QMessageBox::Icon icon, const QString &text, const QString &caption,
        QMessageBox::StandardButtons buttons, QMessageBox::StandardButton standard) {
    QMessageBox box(icon, caption, text, buttons, owner);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(standard);
    if (auto *yes = box.button(QMessageBox::Yes)) yes->setText(translated("はい(&Y)"));
    if (auto *no = box.button(QMessageBox::No)) no->setText(translated("いいえ(&N)"));
    if (auto *ok = box.button(QMessageBox::Ok)) ok->setText(QStringLiteral("OK"));
    return box.exec();
}

// ---- files -------------------------------------------------------------------------------------------

void set_up(QFileDialog &chooser, const QString &accept) {
    chooser.setLabelText(QFileDialog::LookIn, translated("場所:"));
    chooser.setLabelText(QFileDialog::FileType, translated("種類:"));
    chooser.setLabelText(QFileDialog::Accept, accept);
    chooser.setLabelText(QFileDialog::Reject, translated("キャンセル"));
    if (auto *list = chooser.findChild<QTreeView *>(QStringLiteral("treeView"))) { // dates and sizes whole
        list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
        list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    }
    chooser.resize(within_desktop(chooser, file_dialog_size));
}

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
        set_up(*this, saving ? translated("保存(&S)") : translated("開く(&O)"));
        setLabelText(QFileDialog::FileName, translated("ファイル名(&N):"));
        name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        if (name != nullptr) {
            name->setText(text_of(o.file_name));
            name->selectAll();
            name->setFocus();
        }
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
                    ask(this, QMessageBox::Warning, chosen + translated("\nファイルが見つかりません。"),
                        windowTitle(), QMessageBox::Ok, QMessageBox::Ok);
                    return;
                }
            }
            if (options.confirm_overwrite && QFileInfo::exists(chosen) &&
                ask(this, QMessageBox::Question, chosen + translated("\nは既に存在します。置き換えますか?"),
                    windowTitle(), QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
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

// ---- help --------------------------------------------------------------------------------------------

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

QSize within_desktop(const QWidget &window, const QSize &wanted) {
    constexpr QSize frame(8, 48);
    const QScreen *screen = window.screen();
    return screen == nullptr ? wanted : wanted.boundedTo(screen->availableSize() - frame);
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

void show_error_box(QWidget *owner, const std::string &text, const std::string &caption) {
    ask(owner, QMessageBox::Critical, text_of(text), text_of(caption), QMessageBox::Ok, QMessageBox::Ok);
}

int show_question_box(QWidget *owner, const question_box &question) {
    QMessageBox box(QMessageBox::Critical, text_of(question.caption), text_of(question.text), QMessageBox::Ok,
                    owner);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Ok);
    box.setEscapeButton(QMessageBox::Ok);
    box.button(QMessageBox::Ok)->setText(QStringLiteral("OK"));
    std::vector<QAbstractButton *> buttons;
    for (const std::string &label : question.buttons)
        buttons.push_back(box.addButton(text_of(label), QMessageBox::ActionRole));
    if (!question.detail.empty()) {
        // Stays open, and closes nothing.
        auto *detail = box.addButton(translated("詳細(&D)"), QMessageBox::HelpRole);
        detail->disconnect();
        QObject::connect(detail, &QAbstractButton::clicked, &box, [&] {
            const QString shown = text_of(question.detail);
            box.setInformativeText(box.informativeText().isEmpty() ? shown : QString());
        });
    }
    box.exec();
    for (size_t i = 0; i < buttons.size(); ++i)
        if (box.clickedButton() == buttons[i]) return static_cast<int>(i) + 1;
    return 0;
}

std::string choose_folder(QWidget *owner, const std::string &title) {
    QFileDialog chooser(owner, text_of(title));
    chooser.setOption(QFileDialog::DontUseNativeDialog);
    chooser.setFileMode(QFileDialog::Directory);
    set_up(chooser, translated("開く(&O)"));
    chooser.setLabelText(QFileDialog::FileName, translated("フォルダ(&F):"));
    if (chooser.exec() != QDialog::Accepted) return {};
    return QDir::toNativeSeparators(chooser.selectedFiles().value(0)).toStdString();
}

std::string choose_file(QWidget *owner, const file_dialog_options &options, bool for_saving) {
    file_chooser chooser(owner, options, for_saving);
    if (chooser.exec() != QDialog::Accepted) return {};
    return QDir::toNativeSeparators(chooser.selectedFiles().value(0)).toStdString();
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
    const QSize whole(widest + edge + help->verticalScrollBar()->sizeHint().width() +
                          metrics.averageCharWidth() * 2 + margins.left() + margins.right(),
                      box.sizeHint().height() - help->sizeHint().height() + height);
    box.resize(within_desktop(box, whole));
    box.exec();
}

} // namespace platform
