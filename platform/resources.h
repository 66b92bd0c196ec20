// The program's embedded resources.
#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

enum class resource_type { font, bitmap, icon, version, translation };

constexpr uint16_t english_translation_id = 1; // a compiled translation of the texts

struct resource {
    const uint8_t *data = nullptr; // null: no such resource
    size_t size = 0;
};

// Adds a resource; the program does so at its start, tests may replace one (data null removes
// it). Not while other threads look resources up.
void register_resource(resource_type type, uint16_t id, resource r);

resource find_resource(resource_type type, uint16_t id);

} // namespace platform
