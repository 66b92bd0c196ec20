// The debugger's window: docks around a listing. It asks for what it shows five times a second while the
// machine runs, and after every change while it stands.
#pragma once

#include "platform/debugger.h"
#include <QtCore/QElapsedTimer>
#include <QtWidgets/QMainWindow>
#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QTimer;
class QTreeWidget;

namespace platform {

class debugger_window : public QMainWindow {
  public:
    debugger_window(debugger_listener &hears, const std::string &layout);
    void look(); // anew
    void come_to_front();
    std::string layout() const;

  protected:
    void closeEvent(QCloseEvent *e) override;
    void resizeEvent(QResizeEvent *e) override;
    bool eventFilter(QObject *of, QEvent *e) override;

  private:
    QTableWidget *make_table(int columns);
    void dock(const char *name, const QString &title, QWidget *inside, Qt::DockWidgetArea area);
    void make_actions();
    void make_listing();
    QWidget *make_registers();
    QWidget *make_memory();
    QWidget *make_points();
    QWidget *make_profile();
    QWidget *make_console();
    void make_view_menu();
    void set_colours(int which);
    void arrange();
    void act(debugger_action action, uint16_t value = 0);
    void listing_menu(const QPoint &at);
    void scroll_listing(int lines);
    uint16_t chosen_address() const;
    void go_to(const QString &text, bool in_memory);
    void command();
    void take_lines();
    void tell(const std::string &wrong);
    bool being_edited(const QWidget *table) const;
    void show_listing(const debugger_look &l);
    void show_registers(const debugger_look &l);
    void show_memory(const debugger_look &l);
    void show_points(const debugger_look &l);
    void show_devices(const debugger_look &l);
    void show_past();
    void show_profile(const debugger_look &l);
    void register_edited(int row);
    void memory_edited(int row, int column);
    void memory_text_edited(int row, const QString &text);
    debugger_request request() const;

    debugger_listener &listener;
    QTableWidget *listing = nullptr, *registers = nullptr, *memory = nullptr, *stack = nullptr,
                 *points = nullptr, *costs = nullptr;
    QTreeWidget *devices = nullptr;
    QPlainTextEdit *past = nullptr, *said = nullptr;
    QLineEdit *listing_address = nullptr, *memory_address = nullptr, *new_point = nullptr, *line = nullptr;
    QComboBox *area = nullptr, *by_address = nullptr;
    QPushButton *profile_goes = nullptr;
    QTimer *past_time = nullptr; // until the past is shown
    QLabel *state = nullptr, *place = nullptr;
    std::vector<QCheckBox *> flags;
    std::vector<std::pair<QAction *, bool>> actions; // true: only while the machine stands
    QAction *go = nullptr;
    debugger_look shown; // as last looked at
    bool follow = true, filling = false;
    uint16_t listing_at = 0;
    uint32_t memory_at = 0;
    uint64_t past_of = UINT64_MAX; // debugger_look::changes that the past is shown for
    bool profile_runs = false, profile_due = false;
    QElapsedTimer profile_age; // since it was shown
    enum { colours_of_desktop, light, dark };
    int colours = colours_of_desktop;
    std::vector<QAction *> colour_items;
    QStringList said_before; // lines of the console
    qsizetype said_at = 0;
};

} // namespace platform
