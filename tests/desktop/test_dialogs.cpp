// The dialogs, driven as a person would: by keys and clicks while they run.
#include "tests/desktop/host_fixture.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtGui/QClipboard>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QSlider>
#include <deque>

using namespace platform;

namespace {

class DesktopDialogs : public DesktopHost {
  protected:
    // One step for each dialog that comes up, in order; a step returns false to be called again. A dialog
    // that no step is left for, or one that takes too long, is closed.
    using step = std::function<bool(QWidget &)>;
    void drive(std::vector<step> steps) {
        pending.assign(steps.begin(), steps.end());
        polls = 0;
        poller.disconnect();
        QObject::connect(&poller, &QTimer::timeout, [this] {
            QWidget *dialog = QApplication::activeModalWidget();
            if (dialog == nullptr) return;
            if (pending.empty() || ++polls > 300) {
                ADD_FAILURE() << "a dialog too many, or one that does not end: "
                              << dialog->windowTitle().toStdString();
                dialog->close();
                return;
            }
            const step now = pending.front();
            pending.pop_front();
            if (!now(*dialog)) pending.push_front(now);
        });
        poller.start(10);
    }
    void TearDown() override {
        poller.stop();
        EXPECT_TRUE(pending.empty()) << pending.size() << " steps were never asked for";
        DesktopHost::TearDown();
    }
    static void press(QWidget &w, int key, Qt::KeyboardModifiers with = {}) {
        QWidget *to = w.focusWidget() != nullptr ? w.focusWidget() : &w;
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent e(type, key, with);
            QApplication::sendEvent(to, &e);
        }
    }
    template <class Widget> static Widget *child(QWidget &of, const char *name) {
        auto *found = of.findChild<Widget *>(QString::fromUtf8(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    // Nothing of the dialog's texts may be cut off.
    static void expect_readable(const QWidget &dialog) {
        for (const QWidget *w : dialog.findChildren<QWidget *>()) {
            if (qobject_cast<const QLabel *>(w) == nullptr &&
                qobject_cast<const QAbstractButton *>(w) == nullptr)
                continue;
            if (!w->isVisible()) continue;
            EXPECT_GE(w->width(), w->minimumSizeHint().width()) << w->objectName().toStdString();
            EXPECT_GE(w->height(), w->minimumSizeHint().height()) << w->objectName().toStdString();
            EXPECT_TRUE(dialog.rect().contains(QRect(w->mapTo(&dialog, QPoint(0, 0)), w->size())));
        }
    }

    QTimer poller;
    std::deque<step> pending;
    int polls = 0;
};

TEST_F(DesktopDialogs, ErrorBoxWithAndWithoutAnOwner) {
    for (host_window *owner : {window, static_cast<host_window *>(nullptr)}) {
        drive({[](QWidget &w) {
            auto *box = qobject_cast<QMessageBox *>(&w);
            EXPECT_NE(box, nullptr);
            EXPECT_EQ(box->icon(), QMessageBox::Critical);
            EXPECT_EQ(box->text().toStdString(), "$1234 にて HALT命令を検出につき終了。<b>");
            EXPECT_EQ(box->windowTitle().toStdString(), "Kivex");
            EXPECT_EQ(box->buttons().size(), 1);
            expect_readable(*box);
            press(w, Qt::Key_Return);
            return true;
        }});
        host->error_box(owner, "$1234 にて HALT命令を検出につき終了。<b>", "Kivex");
    }
}

settings_dialog example_settings() {
    return {"Kiv機能設定",
            "Zun - PC-8801 Emulator",
            "Copyright (C)",
            {{"DMA load", "(T)", 0, 100, 100},
             {"DMA gain", "(T)", 1, 40, 500},
             {"Volume", "(dB)", -100, 0, -4},
             {"Amplitude", "", 1, 18, 1}},
            {{"TEN-Keyless", true},
             {"NO Wait", false},
             {"Sync Vertical Blank", false},
             {"720x480", false},
             {"Text diff-draw", false},
             {"Interlace like", false},
             {"N-BASIC ROM BOOT", false},
             {"HiRes CRT", true}}};
}

TEST_F(DesktopDialogs, SettingsMirrorTheirSlidersAndTakeOkOnly) {
    settings_dialog dialog = example_settings();
    drive({[](QWidget &w) {
        EXPECT_EQ(w.windowTitle().toStdString(), "Kiv機能設定");
        expect_readable(w);
        auto *load = child<QSlider>(w, "DMA load"), *volume = child<QSlider>(w, "Volume");
        auto *load_box = child<QLineEdit>(w, "DMA load value"),
             *gain_box = child<QLineEdit>(w, "DMA gain value");
        EXPECT_EQ(load_box->text(), "100");
        EXPECT_EQ(gain_box->text(), "500") << "the value in effect, although the slider ends at 40";
        EXPECT_TRUE(load_box->isReadOnly());
        EXPECT_TRUE(load_box->alignment() & Qt::AlignRight);
        EXPECT_EQ(w.focusWidget(), load) << "the first control";
        press(w, Qt::Key_Left); // keys
        EXPECT_EQ(load_box->text(), "99");
        press(w, Qt::Key_PageDown);
        EXPECT_EQ(load_box->text(), "89");
        load->setSliderDown(true); // dragging
        load->setSliderPosition(33);
        EXPECT_EQ(load_box->text(), "33");
        load->setSliderDown(false);
        volume->setValue(-100);
        EXPECT_EQ(child<QLineEdit>(w, "Volume value")->text(), "-100");
        // Tab visits the sliders, then the check boxes, then the buttons; never the number boxes.
        std::string order;
        for (int i = 0; i < 15; ++i) {
            press(w, Qt::Key_Tab);
            const QString name = w.focusWidget()->objectName();
            EXPECT_FALSE(name.endsWith("value")) << name.toStdString();
            order += name.left(1).toStdString() + ",";
        }
        EXPECT_EQ(order.substr(0, 22), "D,V,A,T,N,S,7,T,I,N,H,");
        child<QCheckBox>(w, "NO Wait")->click();
        child<QCheckBox>(w, "HiRes CRT")->click();
        auto *buttons = w.findChild<QDialogButtonBox *>();
        EXPECT_EQ(buttons->button(QDialogButtonBox::Cancel)->text().toStdString(), "キャンセル");
        buttons->button(QDialogButtonBox::Ok)->click();
        return true;
    }});
    EXPECT_TRUE(host->settings(*window, dialog));
    EXPECT_EQ(dialog.sliders[0].value, 33);
    EXPECT_EQ(dialog.sliders[1].value, 40);
    EXPECT_EQ(dialog.sliders[2].value, -100);
    EXPECT_EQ(dialog.sliders[3].value, 1);
    std::string checks;
    for (const settings_check &c : dialog.checks) checks += c.checked ? '1' : '0';
    EXPECT_EQ(checks, "11000000");

    dialog = example_settings();
    drive({[](QWidget &w) {
        child<QSlider>(w, "Amplitude")->setValue(9);
        child<QCheckBox>(w, "NO Wait")->click();
        press(w, Qt::Key_Escape);
        return true;
    }});
    EXPECT_FALSE(host->settings(*window, dialog));
    EXPECT_EQ(dialog.sliders[3].value, 1);
    EXPECT_FALSE(dialog.checks[1].checked);
}

TEST_F(DesktopDialogs, HelpIsReadScrolledAndCopiedButNotWritten) {
    std::string text;
    for (int i = 1; i <= 33; ++i)
        text += "[F" + std::to_string(i) + "] ................ Kiv形式ﾒﾓﾘﾀﾞﾝﾌﾟﾌｧｲﾙ出力\r\n";
    for (const int closing : {int{Qt::Key_Escape}, int{Qt::Key_Return}}) {
        drive({[closing](QWidget &w) {
            EXPECT_EQ(w.windowTitle().toStdString(), "Kivについて");
            expect_readable(w);
            auto *help = w.findChild<QPlainTextEdit *>();
            EXPECT_EQ(help->document()->blockCount(), 34);
            EXPECT_FALSE(help->textCursor().hasSelection()) << "opens without a selection";
            press(w, Qt::Key_X);
            EXPECT_EQ(help->document()->blockCount(), 34);
            EXPECT_FALSE(help->document()->isModified());
            EXPECT_GT(help->verticalScrollBar()->maximum(), 0);
            help->selectAll();
            help->copy();
            EXPECT_TRUE(QApplication::clipboard()->text().contains(QString::fromUtf8("ﾒﾓﾘﾀﾞﾝﾌﾟ")));
            press(w, closing);
            return true;
        }});
        host->help(*window, {"Kivについて", "Kiv - PC-8001 Emulator", "Copyright (C)", text});
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
}

// ---- files -------------------------------------------------------------------------------------------

class DesktopFileDialogs : public DesktopDialogs {
  protected:
    void SetUp() override {
        DesktopDialogs::SetUp();
        was = QDir::currentPath();
        ASSERT_TRUE(folder.isValid());
        ASSERT_TRUE(QDir::setCurrent(folder.path()));
        for (const char *name : {"a.kiv", "b.CMT", "テープ.cmt", "dump.KIV", "other.txt", "plain"}) {
            QFile file(QString::fromUtf8(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
    }
    void TearDown() override {
        QDir::setCurrent(was);
        DesktopDialogs::TearDown();
    }
    static void type(QWidget &w, const char *name) {
        child<QLineEdit>(w, "fileNameEdit")->setText(QString::fromUtf8(name));
    }
    // After the step: what the dialog asks then runs inside, and the next steps must get their turn.
    static void accept(QWidget &w) {
        QTimer::singleShot(0, &w, [&w] { static_cast<QDialog &>(w).accept(); });
    }
    std::string in_folder(const char *name) const {
        return (QDir(folder.path()).absoluteFilePath(QString::fromUtf8(name))).toStdString();
    }

    const file_dialog_options opening{
        "Kiv ﾌｧｲﾙの選択", "Kiv ﾌﾟﾛｸﾞﾗﾑﾌｧｲﾙ", {"*.KIV", "*.CMT"}, "*.kiv;*.cmt", "KIV", false, true};
    const file_dialog_options saving{
        "Kiv ﾌｧｲﾙの保存", "Kiv ﾌﾟﾛｸﾞﾗﾑﾌｧｲﾙ", {"*.KIV"}, "dump", "KIV", true, false};
    QTemporaryDir folder;
    QString was;
};

TEST_F(DesktopFileDialogs, OpeningListsItsPatternsInAnyCase) {
    drive({[](QWidget &w) {
        auto *list = child<QListView>(w, "listView");
        const QAbstractItemModel *model = list->model();
        if (model->rowCount(list->rootIndex()) < 4) return false; // still reading the folder
        QStringList names; // in any order, as the list sorts itself later
        for (int i = 0; i < model->rowCount(list->rootIndex()); ++i)
            names << model->index(i, 0, list->rootIndex()).data().toString();
        names.sort();
        EXPECT_EQ(names.join('|').toStdString(), "a.kiv|b.CMT|dump.KIV|テープ.cmt");
        EXPECT_EQ(child<QLineEdit>(w, "fileNameEdit")->text(), "*.kiv;*.cmt");
        static_cast<QDialog &>(w).accept(); // a pattern is no name
        EXPECT_TRUE(w.isVisible());
        type(w, "テープ.cmt");
        accept(w);
        return true;
    }});
    std::string path;
    EXPECT_TRUE(host->open_file(*window, opening, path));
    EXPECT_EQ(path, in_folder("テープ.cmt"));
}

TEST_F(DesktopFileDialogs, OpeningTakesFilesThatExist) {
    drive({[](QWidget &w) {
               type(w, "missing.KIV");
               accept(w);
               return true;
           },
           [](QWidget &w) {
               if (qobject_cast<QMessageBox *>(&w) == nullptr) return false;
               w.close();
               return true;
           },
           [](QWidget &w) {
               if (qobject_cast<QMessageBox *>(&w) != nullptr) return false;
               type(w, "dump"); // completed to dump.KIV
               accept(w);
               return true;
           }});
    std::string path;
    EXPECT_TRUE(host->open_file(*window, opening, path));
    EXPECT_EQ(path, in_folder("dump.KIV"));

    drive({[](QWidget &w) {
        type(w, "plain"); // exists as it is
        accept(w);
        return true;
    }});
    EXPECT_TRUE(host->open_file(*window, opening, path));
    EXPECT_EQ(path, in_folder("plain"));

    drive({[](QWidget &w) {
        press(w, Qt::Key_Escape);
        return true;
    }});
    EXPECT_FALSE(host->open_file(*window, opening, path));
    EXPECT_EQ(path, in_folder("plain")) << "unchanged by a cancel";
}

TEST_F(DesktopFileDialogs, SavingAddsTheExtensionAndAsksBeforeReplacing) {
    std::string path;
    drive({[](QWidget &w) {
               EXPECT_EQ(child<QLineEdit>(w, "fileNameEdit")->text(), "dump");
               accept(w);
               return true;
           },
           [](QWidget &w) {
               auto *box = qobject_cast<QMessageBox *>(&w);
               if (box == nullptr) return false;
               EXPECT_TRUE(box->text().contains("dump.KIV")) << box->text().toStdString();
               press(*box, Qt::Key_Return); // the default is No
               return true;
           },
           [](QWidget &w) {
               if (qobject_cast<QMessageBox *>(&w) != nullptr) return false;
               accept(w);
               return true;
           },
           [](QWidget &w) {
               auto *box = qobject_cast<QMessageBox *>(&w);
               if (box == nullptr) return false;
               box->button(QMessageBox::Yes)->click();
               return true;
           }});
    EXPECT_TRUE(host->save_file(*window, saving, path));
    EXPECT_EQ(path, in_folder("dump.KIV"));

    for (const auto &[typed, saved] : {std::pair{"新しい", "新しい.KIV"}, {"x.bin", "x.bin"}}) {
        drive({[name = typed](QWidget &w) {
            type(w, name);
            accept(w);
            return true;
        }});
        EXPECT_TRUE(host->save_file(*window, saving, path));
        EXPECT_EQ(path, in_folder(saved));
    }
    EXPECT_EQ(QDir::currentPath().toStdString(), folder.path().toStdString())
        << "a dialog does not move the program";
}

TEST_F(DesktopFileDialogs, ADeletedCurrentFolderIsNoObstacle) {
    QTemporaryDir gone;
    ASSERT_TRUE(QDir::setCurrent(gone.path()));
    ASSERT_TRUE(gone.remove());
    drive({[](QWidget &w) {
        w.close();
        return true;
    }});
    std::string path;
    EXPECT_FALSE(host->open_file(*window, opening, path));
}

} // namespace
