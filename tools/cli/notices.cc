#include "notices.h"

#include <signal.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <vector>

namespace {

volatile sig_atomic_t g_interrupted = 0;

void OnSignal(int) { g_interrupted = 1; }

// Waits are cut into slices so that Ctrl-C is noticed promptly.
const int kSliceMs = 100;

std::mutex g_mu;
std::condition_variable g_cv;
std::vector<Notice> g_notices;

void Add(Notice n) {
  std::lock_guard<std::mutex> lock(g_mu);
  g_notices.push_back(std::move(n));
  g_cv.notify_all();
}

long OnStatus(long id, long code, const char* data, void*) {
  Notice n;
  n.kind = Notice::kStatus;
  n.id = id;
  n.code = code;
  if (code == EVENT_PTZALARM && data != nullptr) {
    n.has_alarm = true;
    memcpy(&n.alarm, data, sizeof(n.alarm));
  } else if (data != nullptr) {
    n.text = data;
  }
  Add(std::move(n));
  return 0;
}

long OnReply(long id, long code, const char* xml, void*) {
  Notice n;
  n.kind = Notice::kReply;
  n.id = id;
  n.code = code;
  if (xml != nullptr) n.text = xml;
  Add(std::move(n));
  return 0;
}

}  // namespace

Notices& Notices::Instance() {
  static Notices notices;
  return notices;
}

void Notices::Install() {
  IP_NET_DVR_SetStatusEventCallBack(OnStatus, nullptr);
  IP_NET_DVR_SetAUXResponseCallBack(OnReply, nullptr);
}

bool Notices::WaitFor(size_t* cursor, const std::function<bool(const Notice&)>& match,
                      int timeout_ms, Notice* found) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  std::unique_lock<std::mutex> lock(g_mu);
  for (;;) {
    while (*cursor < g_notices.size()) {
      const Notice& n = g_notices[(*cursor)++];
      if (match(n)) {
        if (found != nullptr) *found = n;
        return true;
      }
    }
    auto now = std::chrono::steady_clock::now();
    if (Interrupted() || now >= deadline) return false;
    auto slice = std::min(deadline, now + std::chrono::milliseconds(kSliceMs));
    g_cv.wait_until(lock, slice);
  }
}

size_t Notices::End() {
  std::lock_guard<std::mutex> lock(g_mu);
  return g_notices.size();
}

bool Interrupted() { return g_interrupted != 0; }

void InstallInterruptHandler() {
  struct sigaction sa;
  memset(&sa, 0, sizeof(sa));
  sa.sa_handler = OnSignal;
  sigaction(SIGINT, &sa, nullptr);
  sigaction(SIGTERM, &sa, nullptr);
}
