// Records what the library hands to the replay callbacks: every delivery
// of the data callback (copied) and every replay event, with waits.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "quorvel/quorvel.h"

namespace qvtest {

struct ReplayDelivery {
  long id;
  unsigned long kind;
  std::string bytes;   // length bytes as handed over
  int flag;
  double timestamp;
  void* user;
};

struct ReplayEvent {
  long id, code, flag;
  bool has_body;
  std::string body;
};

class ReplayRecorder {
 public:
  void Install() {
    IP_NET_DVR_SetReplayDataCallBack(&ReplayRecorder::OnData, this);
    IP_NET_DVR_SetReplayEventCallBack(&ReplayRecorder::OnEvent, this);
  }
  ~ReplayRecorder() {
    IP_NET_DVR_SetReplayDataCallBack(nullptr, nullptr);
    IP_NET_DVR_SetReplayEventCallBack(nullptr, nullptr);
  }

  std::vector<ReplayDelivery> Data() const {
    std::lock_guard<std::mutex> lock(mu_);
    return data_;
  }
  std::vector<ReplayEvent> Events() const {
    std::lock_guard<std::mutex> lock(mu_);
    return events_;
  }
  void Clear() {
    std::lock_guard<std::mutex> lock(mu_);
    data_.clear();
    events_.clear();
  }

  // Waits until done(deliveries, events) holds.
  bool WaitFor(const std::function<bool(const std::vector<ReplayDelivery>&,
                                        const std::vector<ReplayEvent>&)>& done,
               int timeout_ms) {
    std::unique_lock<std::mutex> lock(mu_);
    return cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                        [&] { return done(data_, events_); });
  }
  // Waits for an event with that code.
  bool WaitEvent(long code, int timeout_ms, ReplayEvent* out = nullptr) {
    const ReplayEvent* found = nullptr;
    bool ok = WaitFor(
        [&](const std::vector<ReplayDelivery>&, const std::vector<ReplayEvent>& events) {
          for (const ReplayEvent& e : events) {
            if (e.code == code) return (found = &e) != nullptr;
          }
          return false;
        },
        timeout_ms);
    std::lock_guard<std::mutex> lock(mu_);
    if (ok && out != nullptr) {
      for (const ReplayEvent& e : events_) {
        if (e.code == code) {
          *out = e;
          break;
        }
      }
    }
    return ok;
  }
  // Waits for video frame `index` (by its trailer).
  bool WaitVideoFrame(uint32_t index, int timeout_ms);

 private:
  static long OnData(long id, unsigned long kind, char* data, unsigned long length,
                     FRAME_EXTDATA* extra) {
    ReplayRecorder* self = static_cast<ReplayRecorder*>(extra->user);
    ReplayDelivery d{id, kind, std::string(data, length), extra->flag, extra->timestamp,
                     extra->user};
    std::lock_guard<std::mutex> lock(self->mu_);
    self->data_.push_back(std::move(d));
    self->cv_.notify_all();
    return 0;
  }
  static long OnEvent(long id, long code, long flag, char* body, void* user) {
    ReplayRecorder* self = static_cast<ReplayRecorder*>(user);
    std::lock_guard<std::mutex> lock(self->mu_);
    self->events_.push_back(ReplayEvent{id, code, flag, body != nullptr, body ? body : ""});
    self->cv_.notify_all();
    return 0;
  }

  mutable std::mutex mu_;
  std::condition_variable cv_;
  std::vector<ReplayDelivery> data_;
  std::vector<ReplayEvent> events_;
};

// The trailer behind a delivered frame.
inline QV_REPLAY_TRAILER TrailerOf(const ReplayDelivery& d) {
  QV_REPLAY_TRAILER t = {};
  if (d.bytes.size() >= sizeof t) memcpy(&t, d.bytes.data() + d.bytes.size() - sizeof t, sizeof t);
  return t;
}

inline bool ReplayRecorder::WaitVideoFrame(uint32_t index, int timeout_ms) {
  return WaitFor(
      [index](const std::vector<ReplayDelivery>& data, const std::vector<ReplayEvent>&) {
        for (const ReplayDelivery& d : data) {
          if (d.kind == QV_REPLAY_KIND_VIDEO && TrailerOf(d).frame_index == index) return true;
        }
        return false;
      },
      timeout_ms);
}

}  // namespace qvtest
