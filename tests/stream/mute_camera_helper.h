// A loopback RTSP camera that answers every request of the handshake
// (OPTIONS, DESCRIBE with one G.711 audio track, SETUP over TCP, PLAY) and
// then never sends a packet: a session that is up and silent from the start.
#pragma once

#include <atomic>
#include <string>
#include <thread>

class MuteCamera {
 public:
  MuteCamera() = default;
  ~MuteCamera();  // stops
  MuteCamera(const MuteCamera&) = delete;
  MuteCamera& operator=(const MuteCamera&) = delete;

  bool Start();  // listens on 127.0.0.1, a free port
  void Stop();
  int Port() const { return port_; }
  // PLAY requests answered so far.
  int Plays() const { return plays_; }

 private:
  void Serve();
  // Answers every whole request in `pending`; false when the client is gone.
  bool Answer(int fd, std::string* pending);

  int listen_fd_ = -1;
  int port_ = 0;
  std::atomic<bool> stop_{false};
  std::atomic<int> plays_{0};
  std::thread thread_;
};
