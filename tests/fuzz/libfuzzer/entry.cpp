// One libFuzzer program a target: built with KIV_FUZZ_TARGET naming the function.
#include "tests/fuzz/fuzz_targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    return KIV_FUZZ_TARGET(data, size);
}
