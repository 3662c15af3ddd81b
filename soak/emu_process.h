// One quorvel-emu program run by the soak as a separate process: started
// with its arguments, its control (and RTSP) port read from its first lines,
// killed and started again on the same ports.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace qvsoak {

class EmuProcess {
 public:
  // program: the quorvel-emu binary; log: where its standard error goes.
  EmuProcess(std::string program, std::vector<std::string> args, std::string log, bool rtsp);
  ~EmuProcess();  // stops
  EmuProcess(const EmuProcess&) = delete;
  EmuProcess& operator=(const EmuProcess&) = delete;

  // Starts it (on the ports of the previous run, if any) and waits up to
  // 30 s for the lines naming its ports. false when it did not come up.
  bool Start();
  void Kill();   // SIGKILL, reaped
  void Stop();   // SIGTERM, then SIGKILL after 5 s; reaped
  bool Restart() { Kill(); return Start(); }

  int port() const { return port_; }
  int rtsp_port() const { return rtsp_port_; }  // 0 without RTSP
  int starts() const { return starts_; }

 private:
  const std::string program_;
  const std::vector<std::string> args_;
  const std::string log_;
  const bool rtsp_;
  pid_t pid_ = -1;
  int port_ = 0;
  int rtsp_port_ = 0;
  int starts_ = 0;
};

}  // namespace qvsoak
