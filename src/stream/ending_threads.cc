#include "stream/ending_threads.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace ending_threads {
namespace {

struct State {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<pthread_t> threads;
};

// Never destroyed: threads may still report at process exit.
State& Shared() {
  static State* state = new State;
  return *state;
}

bool OthersLeft(const std::vector<pthread_t>& threads) {
  pthread_t self = pthread_self();
  return std::any_of(threads.begin(), threads.end(),
                     [self](pthread_t t) { return !pthread_equal(t, self); });
}

}  // namespace

void Add() {
  State& s = Shared();
  std::lock_guard<std::mutex> guard(s.mutex);
  s.threads.push_back(pthread_self());
}

void Done() {
  State& s = Shared();
  std::lock_guard<std::mutex> guard(s.mutex);
  pthread_t self = pthread_self();
  auto it = std::find_if(s.threads.begin(), s.threads.end(),
                         [self](pthread_t t) { return pthread_equal(t, self); });
  if (it != s.threads.end()) s.threads.erase(it);
  s.changed.notify_all();
}

void WaitAll() {
  State& s = Shared();
  std::unique_lock<std::mutex> lock(s.mutex);
  s.changed.wait(lock, [&s] { return !OthersLeft(s.threads); });
}

}  // namespace ending_threads
