// Stream threads that end by themselves. A pull or a record task stopped
// from inside its own thread (a host callback that stops its stream or its
// recording) cannot be joined there: the thread finishes its work, destroys
// its object and ends on its own. Such threads are counted here, so that the
// registry's release can wait for them before the library is cleaned up.
#pragma once

namespace ending_threads {

// The calling thread is left to end by itself.
void Add();
// The calling thread has destroyed its object; nothing of it is used after.
void Done();
// Waits until every such thread but the calling one has called Done.
void WaitAll();

}  // namespace ending_threads
