// The dialogs, driven as a person would: by keys and clicks while they run.
#include "app/kiv_help.h"
#include "platform/resources.h"
#include "platform/texts.h"
#include "tests/desktop/host_fixture.h"
#include "translations/translations.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
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
    // that no step is left for is closed.
    using step = std::function<bool(QWidget &)>;
    void drive(std::vector<step> steps) {
        pending.assign(steps.begin(), steps.end());
        poller.disconnect();
        QObject::connect(&poller, &QTimer::timeout, [this] {
            QWidget *dialog = QApplication::activeModalWidget();
            if (dialog == nullptr) return;
            if (pending.empty()) {
                ADD_FAILURE() << "a dialog too many: " << dialog->windowTitle().toStdString();
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
    static void press(QWidget &w, int key) {
        QWidget *to = w.focusWidget() != nullptr ? w.focusWidget() : &w;
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent e(type, key, {});
            QApplication::sendEvent(to, &e);
        }
    }
    template <class Widget> static Widget *child(QWidget &of, const char *name) {
        auto *found = of.findChild<Widget *>(QString::fromUtf8(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QTimer poller;
    std::deque<step> pending;
};

TEST_F(DesktopDialogs, SettingsMirrorTheirSlidersAndTakeOkOnly) {
    settings_dialog dialog{
        "Kiv機能設定",
        "Zun - PC-8801 Emulator",
        "Copyright (C)",
        {{"DMA load", "(T)", 0, 100, 100}, {"DMA gain", "(T)", 1, 40, 500}, {"Volume", "(dB)", -100, 0, -4}},
        {{"TEN-Keyless", true}, {"NO Wait", false}, {"HiRes CRT", true}}};
    for (const auto with : {QDialogButtonBox::Cancel, QDialogButtonBox::Ok}) {
        drive({[&](QWidget &w) {
            EXPECT_EQ(w.windowTitle().toStdString(), dialog.caption);
            const auto shown = [&] { return child<QLineEdit>(w, "DMA load value")->text().toInt(); };
            EXPECT_EQ(child<QLineEdit>(w, "DMA gain value")->text(), "500")
                << "the value in effect, although the slider ends at 40";
            EXPECT_EQ(shown(), 100);
            press(w, Qt::Key_Left); // the first control has the keyboard
            EXPECT_EQ(shown(), 99);
            press(w, Qt::Key_PageDown);
            EXPECT_EQ(shown(), 89);
            child<QSlider>(w, "DMA load")->setSliderDown(true); // dragging
            child<QSlider>(w, "DMA load")->setSliderPosition(33);
            EXPECT_EQ(shown(), 33);
            child<QSlider>(w, "DMA load")->setSliderDown(false);
            child<QSlider>(w, "Volume")->setValue(-100);
            // Tab visits the sliders, then the check boxes; never the number boxes.
            QString order;
            for (int i = 0; i < 5; ++i) {
                press(w, Qt::Key_Tab);
                order += w.focusWidget()->objectName() + "|";
            }
            EXPECT_EQ(order.toStdString(), "DMA gain|Volume|TEN-Keyless|NO Wait|HiRes CRT|");
            child<QCheckBox>(w, "NO Wait")->click();
            child<QCheckBox>(w, "HiRes CRT")->click();
            w.findChild<QDialogButtonBox *>()->button(with)->click();
            return true;
        }});
        const bool ok = with == QDialogButtonBox::Ok;
        EXPECT_EQ(host->settings(*window, dialog), ok);
        EXPECT_EQ(dialog.sliders[0].value, ok ? 33 : 100);
        EXPECT_EQ(dialog.sliders[1].value, ok ? 40 : 500);
        EXPECT_EQ(dialog.sliders[2].value, ok ? -100 : -4);
        EXPECT_TRUE(dialog.checks[0].checked && dialog.checks[1].checked == ok &&
                    dialog.checks[2].checked != ok);
    }
}

TEST_F(DesktopDialogs, HelpIsReadAndScrolledButNotWritten) {
    std::string text;
    for (int i = 1; i <= 33; ++i) text += "[F6] ................ Kiv形式ﾒﾓﾘﾀﾞﾝﾌﾟﾌｧｲﾙ出力\r\n";
    drive({[](QWidget &w) {
        auto *help = w.findChild<QPlainTextEdit *>();
        EXPECT_FALSE(help->textCursor().hasSelection()) << "opens without a selection";
        press(w, Qt::Key_X);
        EXPECT_EQ(help->document()->blockCount(), 34);
        EXPECT_FALSE(help->document()->isModified());
        EXPECT_GT(help->verticalScrollBar()->maximum(), 0);
        EXPECT_TRUE(help->textInteractionFlags() & Qt::TextSelectableByKeyboard); // to be copied
        press(w, Qt::Key_Return);
        return true;
    }});
    host->help(*window, {"Kivについて", "Kiv - PC-8001 Emulator", "Copyright (C)", text});
}

// ---- files -------------------------------------------------------------------------------------------

class DesktopFileDialogs : public DesktopDialogs {
  protected:
    void SetUp() override {
        DesktopDialogs::SetUp();
        ASSERT_TRUE(QDir::setCurrent(folder.path()));
        for (const char *name : {"a.kiv", "b.CMT", "テープ.cmt", "dump.KIV", "other.txt", "plain"})
            ASSERT_TRUE(QFile(QString::fromUtf8(name)).open(QIODevice::WriteOnly));
    }
    void TearDown() override {
        QDir::setCurrent(was);
        DesktopDialogs::TearDown();
    }
    // Types a name and confirms. After the step: what the dialog asks then runs inside, and the next steps
    // must get their turn.
    static step enter(const char *name) {
        return [=](QWidget &w) {
            if (w.inherits("QMessageBox")) return false; // still closing
            if (name != nullptr) child<QLineEdit>(w, "fileNameEdit")->setText(QString::fromUtf8(name));
            QTimer::singleShot(0, &w, [&w] { static_cast<QDialog &>(w).accept(); });
            return true;
        };
    }
    // Answers the question that names `about`.
    static step answer(const char *about, QMessageBox::StandardButton with) {
        return [=](QWidget &w) {
            auto *box = qobject_cast<QMessageBox *>(&w);
            if (box == nullptr) return false; // still to come
            EXPECT_TRUE(box->text().contains(about)) << box->text().toStdString();
            EXPECT_NE(box->defaultButton(), box->button(QMessageBox::Yes));
            box->button(with)->click();
            return true;
        };
    }
    std::string in_folder(const char *name) const {
        return QDir(folder.path()).absoluteFilePath(QString::fromUtf8(name)).toStdString();
    }

    const file_dialog_options opening{
        "Kiv ﾌｧｲﾙの選択", "Kiv ﾌﾟﾛｸﾞﾗﾑﾌｧｲﾙ", {"*.KIV", "*.CMT"}, "*.kiv;*.cmt", "KIV", false, true};
    const file_dialog_options saving{
        "Kiv ﾌｧｲﾙの保存", "Kiv ﾌﾟﾛｸﾞﾗﾑﾌｧｲﾙ", {"*.KIV"}, "dump", "KIV", true, false};
    QTemporaryDir folder;
    const QString was = QDir::currentPath();
    std::string path = "unchanged";
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
               return true;
           },
           enter("テープ.cmt")});
    EXPECT_TRUE(host->open_file(*window, opening, path));
    EXPECT_EQ(path, in_folder("テープ.cmt"));
}

TEST_F(DesktopFileDialogs, WhatIsChosenExistsWhenOpeningAndIsAskedForWhenSaving) {
    struct {
        const char *label;
        bool opens;
        std::vector<step> steps;
        const char *chosen;
    } const cases[] = {
        {"a missing one is refused, a short name completed",
         true,
         {enter("missing.KIV"), answer("missing.KIV", QMessageBox::Ok), enter("dump")},
         "dump.KIV"},
        {"a name without an extension that exists", true, {enter("plain")}, "plain"},
        {"replaced only after a yes",
         false,
         {enter(nullptr), answer("dump.KIV", QMessageBox::No), enter(nullptr),
          answer("dump.KIV", QMessageBox::Yes)},
         "dump.KIV"},
        {"a new name gets its extension", false, {enter("新しい")}, "新しい.KIV"},
        {"another extension stays", false, {enter("x.bin")}, "x.bin"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        drive(c.steps);
        EXPECT_TRUE(c.opens ? host->open_file(*window, opening, path)
                            : host->save_file(*window, saving, path));
        EXPECT_EQ(path, in_folder(c.chosen));
    }
    EXPECT_EQ(QDir::currentPath(), folder.path()) << "a dialog does not move the program";
}

TEST_F(DesktopFileDialogs, ACancelChangesNothingAndADeletedCurrentFolderIsNoObstacle) {
    ASSERT_TRUE(folder.remove());
    drive({[](QWidget &w) {
        press(w, Qt::Key_Escape);
        return true;
    }});
    EXPECT_FALSE(host->open_file(*window, opening, path));
    EXPECT_EQ(path, "unchanged");
}

// The given texts stand in Japanese; English comes where it is asked for, to the host's own dialogs, too.
TEST_F(DesktopDialogs, TextsAreInTheChosenLanguage) {
    register_translations();
    if (find_resource(resource_type::translation, english_translation_id).data == nullptr)
        GTEST_SKIP() << "built without Qt's Linguist tools: there is no English";
    host->set_language(language::english);
    EXPECT_EQ(text("キャンセル"), "Cancel");
    EXPECT_EQ(text(help_text).substr(0, 60).find("=="), 0u);
    EXPECT_NE(text(help_text).find("[F12] ............... reset button\r\n"), std::string::npos);
    EXPECT_EQ(text("no such text"), "no such text");
    drive({[](QWidget &w) {
        EXPECT_EQ(w.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->text(), "Cancel");
        press(w, Qt::Key_Escape);
        return true;
    }});
    settings_dialog dialog{"caption", "", "", {}, {}};
    EXPECT_FALSE(host->settings(*window, dialog));
    host->set_language(language::japanese);
    EXPECT_EQ(text("キャンセル"), "キャンセル");
}

// OK and Escape are one; the details come and go and answer nothing.
TEST_F(DesktopDialogs, AQuestionSaysWhichButtonAnsweredIt) {
    const question_box box{"text", "caption", "why\nit is so", {"&One", "&Two"}};
    const auto click = [](const char *label) {
        return [label](QWidget &w) {
            for (auto *button : w.findChildren<QPushButton *>())
                if (button->text() == label) button->click();
            return true;
        };
    };
    const auto informative = [](const char *wanted) {
        return [wanted](QWidget &w) {
            EXPECT_EQ(qobject_cast<QMessageBox *>(&w)->informativeText(), wanted);
            return true;
        };
    };
    drive({click("詳細(&D)"), informative("why\nit is so"), click("&Two"), click("&One"), click("OK"),
           [](QWidget &w) {
               press(w, Qt::Key_Escape);
               return true;
           }});
    for (const int wanted : {2, 1, 0, 0}) EXPECT_EQ(host->ask(nullptr, box), wanted);
}

} // namespace
