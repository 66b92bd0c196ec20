/* The open ROM set, linked in by fronts that want a machine without asking for images. A library of its own,
 * kiv_open_roms: whoever brings images does not carry it. */
#ifndef KIV_API_KIV_OPEN_ROMS_H
#define KIV_API_KIV_OPEN_ROMS_H

#include "api/kiv.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Puts the three images of the open ROM set into their sockets, for the next boot. */
KIV_API kiv_result kiv_open_roms(void);

#ifdef __cplusplus
}
#endif

#endif
