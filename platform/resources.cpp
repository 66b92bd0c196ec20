#include "platform/resources.h"

namespace platform {

namespace {

// Zero-initialised and without constructors that run, so that registering works before main.
struct entry {
    resource_type type;
    uint16_t id;
    resource content;
};
constinit entry entries[16] = {};

} // namespace

void register_resource(resource_type type, uint16_t id, resource r) {
    entry *free_entry = nullptr;
    for (entry &e : entries) {
        if (!e.content.data) {
            if (!free_entry) free_entry = &e;
        } else if (e.type == type && e.id == id) {
            e.content = r;
            return;
        }
    }
    // A full table drops the resource: looking it up then fails as for any missing one.
    if (free_entry) *free_entry = {type, id, r};
}

resource find_resource(resource_type type, uint16_t id) {
    for (const entry &e : entries)
        if (e.content.data && e.type == type && e.id == id) return e.content;
    return {};
}

} // namespace platform
