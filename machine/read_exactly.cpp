#include "machine/read_exactly.h"

#include "support/kel_fstream.h"

bool read_exactly(kel_fstream &file, uint8_t *buffer, uint32_t bytes) {
    try {
        while (bytes != 0) { // one request of the host transfers 2 GiB at most
            const uint32_t done = file.read(buffer, 1, bytes);
            if (done == 0) return false;
            buffer += done;
            bytes -= done;
        }
        return true;
    } catch (const kel_exception &) {
        return false;
    }
}
