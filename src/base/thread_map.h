// The process-wide table of started threads. A handle is joined at most
// once: it is added after creation and removed right before the join.
#pragma once

void thread_map_lock();
void thread_map_unlock();
void thread_add_map(unsigned long id);
void thread_del_map(unsigned long id);
int thread_in_map(unsigned long id);  // 1 when present
