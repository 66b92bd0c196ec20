/* Boots the open ROM set, types a line, and shows the text screen; then goes back and finds the same again.
 */
#include "api/kiv.h"
#include "api/kiv_open_roms.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char screen[8192];

static void run(int frames) {
    while (frames-- > 0 && kiv_run_frame() != KIV_RUN_STOPPED) {
        /* kiv_pixels() would show, kiv_samples() play */
    }
    kiv_text_screen(screen, sizeof screen);
}

int main(void) {
    if (kiv_open_roms() != KIV_OK || kiv_boot() != KIV_OK)
        return fprintf(stderr, "%s\n", kiv_error_text()), 1;
    run(120);
    kiv_type("PRINT 6*7\n");
    run(120);
    puts(screen);

    size_t size = kiv_snapshot_size(KIV_SNAPSHOT_WHOLE);
    void *snapshot = malloc(size);
    kiv_snapshot_save(KIV_SNAPSHOT_WHOLE, snapshot, size);
    uint64_t t_states = kiv_t_states();
    run(50);
    uint64_t later = kiv_t_states();
    if (kiv_snapshot_load(snapshot, size) != KIV_OK || kiv_t_states() != t_states) return 1;
    run(50);
    free(snapshot);
    return kiv_t_states() == later ? 0 : 1;
}
