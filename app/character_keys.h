// Keys by character: what the person's layout prints is what the machine gets, Shift included.
//
// The machine's keyboard has its signs elsewhere than the host's, some of them with Shift where the host's
// have none and the other way round. So the machine's SHIFT is down as the sign of the last key needs it, for
// as long as that is held, and after that as the host's is. Window thread.
#pragma once

#include <cstdint>
#include <map>

class character_keys {
  public:
    // `character`: what the layout gives, UTF-32; 0, and what the machine does not have: the key counts by
    // its place.
    void press(uint32_t virtual_key, uint32_t character);
    void release(uint32_t virtual_key);
    void forget(); // the machine's keys were all released

  private:
    void shift(bool down);

    std::map<uint32_t, uint32_t> held; // host key to the machine's, where they differ
    bool host_shift = false, machine_shift = false;
    uint32_t decides = 0; // the host key whose sign the machine's SHIFT follows; 0: the host's
};
