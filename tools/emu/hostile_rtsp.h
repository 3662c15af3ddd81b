// A TCP relay in front of the emulated camera's RTSP server for hostile
// mode: clients connect to it, it connects to the server for each, and
// passes the bytes on, turning what the server sends hostile now and then
// (flipped bytes, or a cut followed by closing both sides), in a sequence
// fixed by the seed and the connection's number.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qvemu {

class HostileRtspProxy {
 public:
  HostileRtspProxy() = default;
  ~HostileRtspProxy();  // stops
  HostileRtspProxy(const HostileRtspProxy&) = delete;
  HostileRtspProxy& operator=(const HostileRtspProxy&) = delete;

  // Listens on 127.0.0.1:port (0: a free port) and relays to
  // 127.0.0.1:server_port. false when it cannot listen.
  bool Start(int server_port, uint64_t seed, int port = 0);
  int Port() const { return port_; }
  int Connections() const { return connections_; }
  int Cuts() const { return cuts_; }  // connections it cut short
  // Closes every relayed connection and the listener; joins its threads.
  void Stop();

 private:
  void AcceptLoop();
  void Relay(int client, int number);

  int server_port_ = 0;
  uint64_t seed_ = 0;
  int port_ = 0;
  int listen_fd_ = -1;
  std::atomic<bool> stop_{true};
  std::atomic<int> connections_{0};
  std::atomic<int> cuts_{0};
  std::thread accept_thread_;
  std::mutex mu_;
  std::vector<std::thread> relays_;
};

}  // namespace qvemu
