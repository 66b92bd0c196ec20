#include "machine/machine_boot.h"

#include "machine/kiv_machine.h"

#include <algorithm>
#include <cstring>

void machine_power_on(const sound_listener &listener, void (*video_lock)(), void (*video_unlock)()) {
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    host_callbacks_listen(listener);
    machine_init(machine, video_lock, video_unlock);
}

void machine_put_rom(rom_socket socket, const uint8_t *image, size_t size) {
    const struct {
        uint8_t *bytes;
        size_t size;
    } areas[] = {
        {machine.main_rom, rom_size}, {machine.nbasic_rom, rom_size}, {machine.ext_rom, ext_rom_size}};
    const auto &area = areas[static_cast<size_t>(socket)];
    if (size != 0) std::memcpy(area.bytes, image, std::min(size, area.size));
}

void machine_put_font(const uint8_t *font) {
    std::memcpy(machine.font_rom, font, font_size);
    for (uint32_t i = 0; i < font_work_size; ++i) machine.font_work[i] = font[i];
}

void machine_get_ready() {
    machine.timing_reset();
    machine.select_scanline_colours(machine.interlace);
    machine.init_ram(machine);
}
