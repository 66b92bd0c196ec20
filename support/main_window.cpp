#include "support/main_window.h"

main_window *the_main_window = nullptr;
