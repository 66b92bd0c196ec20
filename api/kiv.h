/* The whole machine behind one flat C interface: boot it, run it a picture at a time, look, listen, type,
 * save and restore it exactly.
 *
 *     kiv_rom(KIV_ROM_MAIN, main_rom, size);  ...          or kiv_open_roms() of api/kiv_open_roms.h
 *     kiv_boot();
 *     for (;;) {
 *         kiv_run_frame();
 *         show(kiv_pixels());                              640 x 400 of 0x00RRGGBB
 *         play(kiv_samples(), kiv_sample_count());         16 bits, 96000 Hz, one channel
 *     }
 *
 * One machine a process. Every call belongs to one thread, or the caller sees to it that never two run at
 * once; none blocks and none may be made from within a callback. Nothing behind this header opens a file,
 * asks for the time, starts a thread or throws: what the machine needs of its host (images, date, a place for
 * log lines) is handed in, so that the same calls give the same bytes everywhere.
 *
 * Ownership: what is handed in is copied before the call returns. What is handed out (const pointers) belongs
 * to the library and is valid until the call that its comment names. Sizes count bytes unless something else
 * is said. Names and texts are UTF-8.
 *
 * A function that can fail returns a kiv_result: KIV_OK, or a negative code with kiv_error_text() telling
 * more. Before kiv_boot has succeeded, calls that need a machine return KIV_ERROR_NOT_BOOTED, a null pointer
 * or 0.
 */
#ifndef KIV_API_KIV_H
#define KIV_API_KIV_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KIV_API __attribute__((visibility("default")))
#else
#define KIV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Grows with every change of this header. What was there at a lower number stays as it was. */
#define KIV_API_VERSION 1

KIV_API uint32_t kiv_api_version(void); /* of the library that runs, to compare with KIV_API_VERSION */
KIV_API const char *kiv_version(void);  /* the program's, such as "2.0.9.0" */

/* ---- results ------------------------------------------------------------------------------------------ */

typedef int32_t kiv_result;
enum {
    KIV_OK = 0,
    KIV_ERROR_NOT_BOOTED = -1,
    KIV_ERROR_ARGUMENT = -2,  /* an index, a key or a value that there is not */
    KIV_ERROR_SIZE = -3,      /* data too long or too short for what they are said to be */
    KIV_ERROR_MEMORY = -4,    /* not enough of it */
    KIV_ERROR_CHARACTER = -5, /* no key types it; kiv_error_text names it */
    /* Why a snapshot was not taken; the running machine is as it was. */
    KIV_ERROR_NO_SNAPSHOT = -10, /* the bytes are none */
    KIV_ERROR_VERSION = -11,     /* written by another version of the format */
    KIV_ERROR_DAMAGED = -12,     /* cut off, or bytes changed */
    KIV_ERROR_OTHER_ROMS = -13,  /* made with other ROM images than the ones in the machine */
    KIV_ERROR_OTHER_TAPE = -14   /* made without its tape, and another one lies in the deck */
};

/* What the last failing call complains about, one line without a line end; "" before the first. Valid until
 * the next call that fails. */
KIV_API const char *kiv_error_text(void);

/* ---- before the boot ---------------------------------------------------------------------------------- */

enum {
    KIV_ROM_MAIN = 0,   /* Zun-BASIC, 0x0000-0x7FFF: the file 8801-zun.rom */
    KIV_ROM_NBASIC = 1, /* N-BASIC, 0x0000-0x7FFF: 8801-kiv.rom */
    KIV_ROM_EXT = 2,    /* expansion ROM, 0x6000-0x7FFF: 8801-4th.rom */
    KIV_ROM_FONT = 3    /* 256 character glyphs, then 256 semigraphic ones, 8 bytes each */
};

/* Puts an image into its socket, for the next boot. 0 to 32768 bytes, of KIV_ROM_EXT the first 8192 count; of
 * KIV_ROM_FONT exactly 4096 bytes. What an image does not fill is 0. The font is there from the start; a size
 * of 0 brings it back. A machine that runs is not touched. */
KIV_API kiv_result kiv_rom(int32_t socket, const void *data, size_t size);

/* The seed of the bytes that the refresh register shows, taken at the boot and at every reset. At first 1. */
KIV_API void kiv_seed(uint32_t seed);

/* A local date and time: month 1-12, day 1-31. */
typedef struct kiv_date {
    int32_t year, month, day, hour, minute, second;
} kiv_date;

/* What the calendar clock shows; the last of the three calls counts. At first it stands at 1981-12-01
 * 00:00:00. kiv_calendar_start: goes on from `date` with the machine's own time, so that a replay sees the
 * same again. kiv_calendar_host: asks `now` each time the program reads the clock, with the context given
 * here. */
KIV_API kiv_result kiv_calendar_fix(const kiv_date *date);
KIV_API kiv_result kiv_calendar_start(const kiv_date *date);
KIV_API kiv_result kiv_calendar_host(void (*now)(void *context, kiv_date *date), void *context);

/* Log lines, without their line end; null: nobody hears. */
enum {
    KIV_LOG_TRACE = 0, /* what the emulator does */
    KIV_LOG_DEVICE = 1 /* what the emulated devices say (CRT controller set-up, DMA under-run), at the
                          program's pace; text as it comes, a line in several parts, line ends included */
};
KIV_API void kiv_log(void (*log)(void *context, int32_t kind, const char *text), void *context);

/* Settings, by the keys of KIV.INI that concern the machine, and two of our own. They may be set before the
 * boot, and then hold from there on, or while the machine stands; boot_rom is seen by the program when it
 * looks, as a rule after a reset.
 * - z80_no_wait  0/1  1: memory waits are not charged
 * - soft_volume  n    amplitude of the beeper in thousands; 1 at first
 * - dma_load     n    kept
 * - tenkeyless   0/1  1: host arrow keys press the ten-key's 4, 8, 6, 2; 1 at first
 * - interlace    0/1  1: odd lines at half brightness
 * - boot_rom     0/1  1: Zun-BASIC, 0: N-BASIC; 1 at first
 * - hires_crt    0/1  1: 24 kHz monitor, 0: 15 kHz; 1 at first. A change restarts the raster
 * - halt_waits   0/1  1: HALT waits for an interrupt, 0: it stops the processor
 * - steps_over   0/1  1: undefined instructions do nothing, 0: they stop the processor */
KIV_API kiv_result kiv_set_setting(const char *key, int32_t value);
KIV_API kiv_result kiv_get_setting(const char *key, int32_t *value);
KIV_API const char *kiv_setting_key(uint32_t index); /* null behind the last one */

/* ---- power and time ----------------------------------------------------------------------------------- */

/* Powers the machine on, or off and on again: everything starts over from the images, settings, seed and
 * calendar given. The deck is empty afterwards, the tape output too, the counters are 0. */
KIV_API kiv_result kiv_boot(void);

/* The machine's reset key: ROM images, planes, PCG tones, settings and counters stay; the tape is rewound. */
KIV_API kiv_result kiv_reset(void);

/* What ended a run. */
enum {
    KIV_RUN_FRAME = 0,  /* the vertical blank has ended: a picture is due */
    KIV_RUN_LIMIT = 1,  /* the T-states asked for have passed */
    KIV_RUN_STOPPED = 2 /* the processor has stopped: see kiv_stop_reason; only a reset or a snapshot helps */
};

/* Runs up to the next picture. Some programs keep the raster from ever ending one: after 798720 T-states
 * (0.2 s) the answer is KIV_RUN_LIMIT. */
KIV_API int32_t kiv_run_frame(void);

/* Runs until `t_states` have passed (1 at least, 798720 at most: what is beyond counts as that), a picture is
 * due or the processor stops, whichever comes first. An instruction is never cut: some T-states more may
 * pass, and kiv_run(1) is one instruction, or a few clocks that the display's DMA takes. */
KIV_API int32_t kiv_run(uint32_t t_states);

enum {
    KIV_STOP_NONE = 0,
    KIV_STOP_HALT = 1,
    KIV_STOP_UNDEFINED = 2,     /* an instruction that the processor does not define */
    KIV_STOP_UNIMPLEMENTED = 3, /* one that is not emulated */
    KIV_STOP_INTERRUPT_MODE = 4 /* an interrupt arrived in no interrupt mode */
};
KIV_API int32_t kiv_stop_reason(void);
KIV_API uint32_t
kiv_stop_address(void); /* of the instruction; while nothing stopped, of the last one executed */

KIV_API uint64_t kiv_t_states(void); /* since the boot, waits and DMA included */
KIV_API uint64_t kiv_frames(void);   /* since the boot */
KIV_API uint32_t kiv_clock_hz(void); /* T-states a second: 3993600 */
KIV_API uint32_t
kiv_frame_t_states(void); /* of one frame as the raster stands now: 72120 at 24 kHz, 25 rows */

/* ---- picture ------------------------------------------------------------------------------------------ */

#define KIV_WIDTH 640
#define KIV_HEIGHT 400

/* The picture as 0x00RRGGBB, KIV_WIDTH x KIV_HEIGHT, pitch KIV_WIDTH * 4. It is composed here, of the machine
 * as it stands: pictures nobody looks at cost nothing, and looking changes nothing. Valid until the next call
 * that runs, changes or loads the machine. */
KIV_API const uint32_t *kiv_pixels(void);

/* The same into the caller's memory: `pitch` bytes from line to line, a multiple of the pixel's size, at
 * least a line's. Fastest at addresses that 32 divides. kiv_draw_indexed: a byte a pixel, an index into
 * kiv_palette. */
KIV_API kiv_result kiv_draw(uint32_t *pixels, size_t pitch);
KIV_API kiv_result kiv_draw_indexed(uint8_t *pixels, size_t pitch);
KIV_API const uint32_t *kiv_palette(void); /* 256 entries 0x00RRGGBB, the same for ever */

/* The text screen as a person would see it: a line a row, each with its line end, without blanks at the end;
 * semigraphics as Braille patterns. Writes at most `size` bytes, the ending 0 included, and returns the
 * length of the whole text without it. 0 while the text layer is off. `buffer` may be null to ask for the
 * length. */
KIV_API size_t kiv_text_screen(char *buffer, size_t size);
KIV_API int32_t kiv_text_cursor(void); /* row * 256 + column of the cursor; -1 while the program shows none */

/* ---- sound -------------------------------------------------------------------------------------------- */

#define KIV_SAMPLE_RATE 96000

/* What the last run brought, one channel. Sound is made in slices of 20 ms (1920 samples) as they end, so
 * that a frame brings none, one or two. Valid until the next run. */
KIV_API uint32_t kiv_sample_count(void);
KIV_API const int16_t *kiv_samples(void);

/* The same at another rate, band-limited: 8000 to 192000 samples a second, 0 (at first) for none. May be
 * changed at any time, by fractions too: a front end that holds the sound to its device's clock does so. */
KIV_API kiv_result kiv_set_sample_rate(double samples_per_second);
KIV_API uint32_t kiv_resampled_count(void);
KIV_API const int16_t *kiv_resampled(void);

/* ---- keys --------------------------------------------------------------------------------------------- */

/* A key of the host's keyboard by its virtual-key code (0x41 A, 0x0D return, 0x70 F1 ...), `down` 1 or 0.
 * 0x100 + row * 8 + bit is a key of the machine by its place, rows 0-10. A key that is pressed and released
 * at once stays down until the machine has seen it. Codes that stand for no key of the machine do nothing. */
KIV_API void kiv_key(uint32_t virtual_key, int32_t down);

/* A key of the machine, row 0-11 (port), bit 0-7, at once. */
KIV_API kiv_result kiv_matrix_key(uint32_t row, uint32_t bit, int32_t down);
KIV_API uint32_t kiv_matrix_row(uint32_t row); /* as the port shows it: a 0 bit is a key held down */
KIV_API void kiv_release_keys(void);

/* Types a text at the machine's pace: a key is held for 3 frames and 3 pass to the next. What is typed is
 * added to what waits. Known are ASCII and the yen sign, half-width katakana are not; a line feed is RETURN,
 * a tab TAB, 0x1B ESC. KIV_ERROR_CHARACTER: nothing is typed. */
KIV_API kiv_result kiv_type(const char *text);
KIV_API kiv_result kiv_type_key(uint32_t virtual_key, int32_t with_shift); /* any key, likewise */
KIV_API kiv_result kiv_type_pause(uint32_t frames);
KIV_API uint32_t kiv_type_waiting(void); /* keys and pauses that are not done yet */
KIV_API void kiv_type_cancel(void);      /* forgets them and releases the key in work */

/* ---- looking inside ----------------------------------------------------------------------------------- */

enum {
    KIV_AREA_CPU = 0,      /* 64 KB as the processor sees them now; reads and writes cost no time */
    KIV_AREA_RAM = 1,      /* 64 KB */
    KIV_AREA_MAIN_ROM = 2, /* 32 KB */
    KIV_AREA_NBASIC_ROM = 3,
    KIV_AREA_EXT_ROM = 4, /* 8 KB */
    KIV_AREA_BLUE = 5,    /* graphic planes, 16 KB each */
    KIV_AREA_RED = 6,
    KIV_AREA_GREEN = 7,
    KIV_AREA_FONT = 8, /* 4 KB */
    KIV_AREA_PCG = 9   /* 2 KB: the glyphs that are shown while the PCG is on */
};
KIV_API uint32_t kiv_area_size(int32_t area);

/* A byte, or -1 where there is none. Looking never changes anything. */
KIV_API int32_t kiv_peek(int32_t area, uint32_t address);
KIV_API kiv_result kiv_poke(int32_t area, uint32_t address, uint8_t value);
/* `size` bytes from `address` on, which must lie within the area. */
KIV_API kiv_result kiv_read(int32_t area, uint32_t address, void *buffer, size_t size);
KIV_API kiv_result kiv_write(int32_t area, uint32_t address, const void *data, size_t size);

/* Ports: what an IN would read, without what a real one does to the device; a real IN; a real OUT. None costs
 * T-states. */
KIV_API uint8_t kiv_port_peek(uint16_t port);
KIV_API uint8_t kiv_port_in(uint16_t port);
KIV_API void kiv_port_out(uint16_t port, uint8_t value);

enum {
    KIV_REG_BC,
    KIV_REG_DE,
    KIV_REG_HL,
    KIV_REG_AF,
    KIV_REG_BC_ALT,
    KIV_REG_DE_ALT,
    KIV_REG_HL_ALT,
    KIV_REG_AF_ALT,
    KIV_REG_IX,
    KIV_REG_IY,
    KIV_REG_PC,
    KIV_REG_SP, /* so far 16 bits */
    KIV_REG_I,
    KIV_REG_R,  /* 8 bits; R: the step counter */
    KIV_REG_IM, /* 0-2 */
    KIV_REG_IFF1,
    KIV_REG_IFF2, /* 0-1 */
    KIV_REGISTERS
};
KIV_API uint32_t kiv_get_register(int32_t index);
KIV_API kiv_result kiv_set_register(int32_t index, uint32_t value); /* what does not fit is cut off */

/* ---- tape --------------------------------------------------------------------------------------------- */

/* Puts a tape (the bytes as the interface receives them) into the deck, rewound, ready to play; or takes it
 * out. */
KIV_API kiv_result kiv_tape_insert(const void *data, size_t size);
KIV_API void kiv_tape_eject(void);
KIV_API int32_t kiv_tape_inserted(void); /* 1, 0 */
KIV_API const uint8_t *
kiv_tape_data(void); /* null without one; valid until the next one, or a snapshot is loaded */
KIV_API size_t kiv_tape_size(void);
KIV_API size_t kiv_tape_position(void); /* of the next byte read */
KIV_API kiv_result kiv_tape_seek(size_t position);
KIV_API int32_t kiv_tape_motor(void); /* 1 while the program lets it run */

/* What the machine has written to its cassette since the last clear; nothing while recording is off. Off at
 * first and after a boot, for what nobody takes away grows. Valid until the next run, clear or load. */
KIV_API void kiv_tape_record(int32_t on);
KIV_API const uint8_t *kiv_tape_output(void);
KIV_API size_t kiv_tape_output_size(void);
KIV_API void kiv_tape_output_clear(void);

/* A memory dump (the .KIV form: upper half of RAM and the registers), 32612 bytes; writing returns them, or 0
 * when `size` is less. Loading points the processor at the dump's program. */
#define KIV_DUMP_SIZE 32612
KIV_API size_t kiv_dump_save(void *buffer, size_t size);
KIV_API kiv_result kiv_dump_load(const void *data, size_t size);

/* ---- snapshots ---------------------------------------------------------------------------------------- */

/* All that decides the machine's future, and nothing else: N frames after a load are equal to the byte to the
 * N frames that followed the save (pixels, samples, tape output). Not in it: ROM images (their checksums are,
 * and the ones in the machine must be the same), keys that are waiting to be typed (the one in work is down
 * and stays so: kiv_release_keys lifts it), the host's calendar, the seed for later resets, the settings
 * halt_waits, steps_over and tenkeyless, and what concerns the host alone. The form is told in
 * docs/snapshot-format.md; it is the same on every kind of machine. */
enum {
    KIV_SNAPSHOT_WHOLE = 0,
    KIV_SNAPSHOT_WITHOUT_TAPE =
        1 /* the tape by its checksum only: it must lie in the deck when this is loaded */
};

KIV_API size_t kiv_snapshot_size(int32_t what);  /* of one taken now */
KIV_API size_t kiv_snapshot_limit(int32_t what); /* of any taken while this tape lies in the deck and the tape
                                                    output is cleared every frame */
/* Writes the snapshot and returns its size; 0 when `size` is less than that. Takes some ten microseconds. */
KIV_API size_t kiv_snapshot_save(int32_t what, void *buffer, size_t size);
/* On failure the running machine is as it was. Counters go back, too; samples and typing are forgotten. */
KIV_API kiv_result kiv_snapshot_load(const void *data, size_t size);

#ifdef __cplusplus
}
#endif

#endif
