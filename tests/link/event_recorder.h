// Records what the library reports through its process-wide callbacks
// (status events and AUX responses), and waits on it with deadlines.
// Header-only: the session tests of tests/link and tests/api share it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "base/compat.h"
#include "quorvel/quorvel.h"

namespace qvtest {

struct StatusEvent {
  long id;
  long code;
  std::string text;   // empty for alarms
  ALARM_ENTRY alarm;  // filled for code 23
  unsigned long tick; // GetTickCount() when the callback was entered
};

struct AuxEvent {
  long id;
  long code;
  std::string xml;
};

class EventRecorder {
 public:
  // Registers both callbacks with this recorder.
  void Install() {
    IP_NET_DVR_SetStatusEventCallBack(&EventRecorder::OnStatus, this);
    IP_NET_DVR_SetAUXResponseCallBack(&EventRecorder::OnAux, this);
  }

  // Runs on the link thread inside the status callback (before recording).
  void SetStatusHook(std::function<void(long id, long code)> hook) {
    std::lock_guard<std::mutex> lock(mu_);
    hook_ = std::move(hook);
  }

  std::vector<StatusEvent> Status() const {
    std::lock_guard<std::mutex> lock(mu_);
    return status_;
  }
  // Status events of one session, codes only, in order.
  std::vector<long> Codes(long id) const {
    std::vector<long> codes;
    for (const StatusEvent& e : Status()) {
      if (e.id == id) codes.push_back(e.code);
    }
    return codes;
  }
  // The first status event `code` of session id (code -1 when there is none).
  StatusEvent First(long id, long code) const {
    for (const StatusEvent& e : Status()) {
      if (e.id == id && e.code == code) return e;
    }
    return StatusEvent{id, -1, "", ALARM_ENTRY(), 0};
  }
  int Count(long id, long code) const {
    std::lock_guard<std::mutex> lock(mu_);
    return CountLocked(id, code);
  }

  void Clear() {
    std::lock_guard<std::mutex> lock(mu_);
    status_.clear();
    aux_.clear();
  }

  // Waits for the count-th status event `code` of session id.
  bool WaitStatus(long id, long code, int timeout_ms, int count = 1) {
    std::unique_lock<std::mutex> lock(mu_);
    return cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                        [&] { return CountLocked(id, code) >= count; });
  }

  // Waits for an AUX response `code` of session id; the first one in *out.
  bool WaitAux(long id, long code, int timeout_ms, AuxEvent* out = nullptr) {
    std::unique_lock<std::mutex> lock(mu_);
    const AuxEvent* found = nullptr;
    cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [&] {
      for (const AuxEvent& e : aux_) {
        if (e.id == id && e.code == code) return (found = &e) != nullptr;
      }
      return false;
    });
    if (found != nullptr && out != nullptr) *out = *found;
    return found != nullptr;
  }

 private:
  int CountLocked(long id, long code) const {
    int n = 0;
    for (const StatusEvent& e : status_) n += e.id == id && e.code == code ? 1 : 0;
    return n;
  }

  static long OnStatus(long id, long code, const char* data, void* user) {
    EventRecorder* self = static_cast<EventRecorder*>(user);
    unsigned long tick = GetTickCount();
    std::function<void(long, long)> hook;
    {
      std::lock_guard<std::mutex> lock(self->mu_);
      hook = self->hook_;
    }
    if (hook) hook(id, code);
    StatusEvent e{id, code, "", ALARM_ENTRY(), tick};
    if (code == EVENT_PTZALARM) {
      memcpy(&e.alarm, data, sizeof(ALARM_ENTRY));
    } else if (data != nullptr) {
      e.text = data;
    }
    std::lock_guard<std::mutex> lock(self->mu_);
    self->status_.push_back(e);
    self->cv_.notify_all();
    return 0;
  }

  static long OnAux(long id, long code, const char* xml, void* user) {
    EventRecorder* self = static_cast<EventRecorder*>(user);
    std::lock_guard<std::mutex> lock(self->mu_);
    self->aux_.push_back(AuxEvent{id, code, xml != nullptr ? xml : ""});
    self->cv_.notify_all();
    return 0;
  }

  mutable std::mutex mu_;
  std::condition_variable cv_;
  std::vector<StatusEvent> status_;
  std::vector<AuxEvent> aux_;
  std::function<void(long, long)> hook_;
};

}  // namespace qvtest
