// Scale of the library's long protocol timers (login resend and refusal
// pauses, heartbeat and its watch, reconnect pause, stream watchdog). 1.0 in
// the shipped library, whatever its environment; tests, tools and benchmarks
// that link the library's internals shrink it so that a 10 s rule runs in a
// fraction of that. Set it before starting sessions or streams.
#pragma once

void SetTimerScale(double scale);  // values <= 0 are ignored
double GetTimerScale();
// ms multiplied by the scale, at least 1 when ms > 0.
unsigned long ScaledMs(unsigned long ms);
