// What is shown while a command takes long.
#include "platform/desktop/desktop_dialogs.h"

#include "platform/desktop/dialog_parts.h"
#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>

namespace platform {

namespace {

constexpr qint64 shown_after_ms = 300, between_looks_ms = 30;

class work_dialog final : public long_work {
  public:
    work_dialog(QWidget *of, const std::string &what)
        : owner(QApplication::activeWindow() != nullptr ? QApplication::activeWindow() : of), text(what) {
        time.start();
    }
    bool goes_on(double part) override {
        if (ended || time.elapsed() < next_look) return !ended;
        if (!dialog) show();
        bar->setRange(0, part < 0 ? 0 : 1000);
        bar->setValue(part < 0 ? 0 : static_cast<int>(part * 1000));
        QCoreApplication::processEvents();
        next_look = time.elapsed() + between_looks_ms;
        return !ended;
    }

  private:
    // For the whole program: nothing else may touch the machine meanwhile.
    void show() {
        dialog = std::make_unique<QDialog>(owner);
        dialog->setWindowTitle(QStringLiteral("Kiv"));
        dialog->setWindowModality(Qt::ApplicationModal);
        auto *layout = new QVBoxLayout(dialog.get());
        bar = new QProgressBar;
        bar->setTextVisible(false);
        bar->setMinimumWidth(320);
        auto *buttons = new QDialogButtonBox;
        buttons->addButton(translated("中止"), QDialogButtonBox::RejectRole);
        layout->addWidget(new QLabel(text_of(text)));
        layout->addWidget(bar);
        layout->addWidget(buttons);
        QObject::connect(buttons, &QDialogButtonBox::rejected, dialog.get(), &QDialog::reject);
        QObject::connect(dialog.get(), &QDialog::finished, dialog.get(), [this] { ended = true; });
        dialog->show();
    }

    QWidget *owner;
    std::string text;
    QElapsedTimer time;
    qint64 next_look = shown_after_ms;
    std::unique_ptr<QDialog> dialog;
    QProgressBar *bar = nullptr; // the dialog's
    bool ended = false;
};

} // namespace

std::unique_ptr<long_work> make_work_dialog(QWidget *owner, const std::string &text) {
    return std::make_unique<work_dialog>(owner, text);
}

} // namespace platform
