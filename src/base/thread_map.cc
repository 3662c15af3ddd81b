#include "base/thread_map.h"

#include <pthread.h>

#include <atomic>
#include <map>

#include "base/debug_log.h"

namespace {

pthread_mutex_t g_map_mutex = PTHREAD_MUTEX_INITIALIZER;
std::map<unsigned long, void*>* g_map = nullptr;
// Set once the map exists; read without the lock on every call.
std::atomic<int> g_map_created{0};

}  // namespace

void thread_map_lock() {
  if (!g_map_created) {
    pthread_mutex_lock(&g_map_mutex);
    if (!g_map_created) {
      g_map = new std::map<unsigned long, void*>();
      g_map_created = 1;
    }
    pthread_mutex_unlock(&g_map_mutex);
  }
  pthread_mutex_lock(&g_map_mutex);
}

void thread_map_unlock() {
  if (g_map_created) pthread_mutex_unlock(&g_map_mutex);
}

void thread_add_map(unsigned long id) {
  thread_map_lock();
  (*g_map)[id] = nullptr;
  QV_LOG("[%s:%d]add thread id %#x to map\n\n", static_cast<unsigned>(id));
  thread_map_unlock();
}

void thread_del_map(unsigned long id) {
  thread_map_lock();
  auto it = g_map->find(id);
  if (it != g_map->end()) {
    g_map->erase(it);
    QV_LOG("[%s:%d]remove thread id %#x from map\n\n", static_cast<unsigned>(id));
  } else {
    QV_LOG("[%s:%d]thread id %#x not in map\n\n", static_cast<unsigned>(id));
  }
  thread_map_unlock();
}

int thread_in_map(unsigned long id) {
  thread_map_lock();
  int found = g_map->count(id) ? 1 : 0;
  thread_map_unlock();
  return found;
}
