// The host's clock behind the calendar clock and behind the processor's random bytes. The machine itself asks
// nobody for the time.
#pragma once

// The calendar shows the host's local time, and every reset of the processor takes the seconds as its seed,
// until something else is fixed.
void use_host_clock();
