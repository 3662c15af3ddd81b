// Media and stream sections with every member set to a distinct value that
// survives a round trip, for the round-trip tests.
#pragma once

#include "quorvel/quorvel.h"

// Texts hold characters that need escaping. Checked members hold values the
// readers keep; derived members (IsH265, Stream) agree with what a reader
// sets; unused user text lines stay zero.
void FillMediaConfig(MediaConfig* cfg);
void FillMediaStreamConfig(MediaStreamConfig* cfg);
