// Scale of the library's long protocol timers (login resend and refusal
// pauses, heartbeat watch, stream watchdog). 1.0 in production; tests shrink
// it so that a 10 s rule runs in a fraction of that. Set it before starting
// sessions or streams. The environment variable QUORVEL_TIMER_SCALE, read
// once at load, sets the initial value (for trying the emulator by hand).
#pragma once

void SetTimerScale(double scale);  // values <= 0 are ignored
double GetTimerScale();
// ms multiplied by the scale, at least 1 when ms > 0.
unsigned long ScaledMs(unsigned long ms);
