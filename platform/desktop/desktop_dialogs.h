// The program's dialogs. All run until the person has answered; the owner may be null.
#pragma once

#include "platform/host.h"

class QWidget;

namespace platform {

void show_error_box(QWidget *owner, const std::string &text, const std::string &caption);
int show_question_box(QWidget *owner, const question_box &question); // as host::ask
std::string choose_folder(QWidget *owner, const std::string &title); // empty: cancelled
// A path, UTF-8; empty: cancelled.
std::string choose_file(QWidget *owner, const file_dialog_options &options, bool for_saving);
// True: OK, and the values in `dialog` are the chosen ones.
bool run_settings_dialog(QWidget *owner, settings_dialog &dialog);
bool run_pad_dialog(QWidget *owner, pad_dialog &dialog); // likewise
void run_help_dialog(QWidget *owner, const help_dialog &dialog);
std::unique_ptr<long_work> make_work_dialog(QWidget *owner, const std::string &text); // as host::begin_work

} // namespace platform
