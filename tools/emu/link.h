// One accepted control link of an emulated camera: its socket and the
// thread that reads frames, records them and sends the camera's replies.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace qvemu {

class CameraBehaviour;
class FrameLog;

class Link {
 public:
  // What a link reports to and asks of its camera; all outlive the link.
  struct Hooks {
    CameraBehaviour* behaviour;
    FrameLog* log;
    std::atomic<uint64_t>* skipped_bytes;
    std::atomic<int>* bad_lengths;
    std::function<void(const std::string&)> print;  // may be empty
    bool hostile = false;                           // replies turn hostile (hostile.h)
    uint64_t hostile_seed = 0;
  };

  Link(int fd, int connection, Hooks hooks);  // takes the socket
  ~Link();                                    // closes and joins

  void Start();
  void Close();                 // shuts the socket down; the thread ends soon after
  bool Finished() const { return finished_; }
  bool LoggedIn() const { return logged_in_; }
  int connection() const { return connection_; }
  // Writes bytes whole (5 s at most), serialised with the link's replies.
  bool Send(const std::string& bytes);

  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

 private:
  void Run();
  void Print(const std::string& text) const;
  // Waits until end unless the link is stopped first.
  void PauseUntil(std::chrono::steady_clock::time_point end) const;

  const int fd_;
  const int connection_;
  const Hooks hooks_;
  std::atomic<bool> stop_{false};
  std::atomic<bool> finished_{false};
  std::atomic<bool> logged_in_{false};
  std::mutex write_mu_;
  std::thread thread_;
};

}  // namespace qvemu
