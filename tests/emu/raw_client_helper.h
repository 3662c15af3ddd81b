// A bare control-link client for driving an emulated camera byte by byte.
#pragma once

#include <cstdint>
#include <string>

namespace qvemu_test {

class RawClient {
 public:
  RawClient() = default;
  ~RawClient();
  bool Connect(uint16_t port);
  void Close();

  bool Send(const std::string& bytes);
  bool SendFrame(const std::string& payload, uint32_t flag = 0x51589158);
  bool SendMessage(const std::string& type, const std::string& code, const std::string& body,
                   uint32_t flag = 0x51589158);
  // The next frame's payload; false on time-out or close.
  bool ReadFrame(std::string* payload, int timeout_ms = 5000, uint32_t* flag = nullptr);
  // Exactly n bytes; false on time-out or close.
  bool ReadBytes(size_t n, std::string* out, int timeout_ms = 5000);
  // Sends a request and returns the reply payload ("" when none came).
  std::string Request(const std::string& type, const std::string& code,
                      const std::string& body = "", int timeout_ms = 5000);
  // Logs in; true when the reply's flag is 0.
  bool Login(const std::string& user = "admin", const std::string& password = "admin");
  // True once the peer has closed the connection.
  bool WaitClosed(int timeout_ms = 5000);

 private:
  int fd_ = -1;
};

// Msg_flag of a reply payload, or "" when it has none.
std::string FlagOf(const std::string& payload);

}  // namespace qvemu_test
