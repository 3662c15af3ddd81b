// The snapshot task's thread, as the session table sees it.
#pragma once

// Asks a running snapshot task to stop and waits (at most wait_ms) until its
// thread no longer touches the session table. The table calls it when it is
// destroyed, so a task still running at process exit never reaches a table
// that is gone.
void StopSnapTaskThreads(unsigned long wait_ms);
