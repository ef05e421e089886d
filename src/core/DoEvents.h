#pragma once

// Runs the event loop by hand from inside a long operation.
// ms == -1: one pass over pending events (timers, sockets, drawing), then return.
// ms > 0: keep serving events for that many milliseconds.
void DoEvents(int ms);
