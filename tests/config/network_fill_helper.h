// A network section with every member set to a distinct value, for round
// trips.
#pragma once

#include "quorvel/quorvel.h"

// Fills every member (texts hold characters that need escaping, where the
// writer escapes them). G3 Type is left 0: it is written, never read back.
void FillNetworkConfig(NetworkConfig* cfg);
