#include "machine/kiv_machine.h"

#include <type_traits>

static_assert(std::is_trivially_copyable_v<kiv_machine>);

kiv_machine machine;
z80_cpu main_cpu;
