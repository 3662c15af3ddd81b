#include "raw_client_helper.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "emu/envelope.h"
#include "emu/frame_io.h"

namespace qvemu_test {
namespace {

int MsLeft(std::chrono::steady_clock::time_point deadline) {
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - std::chrono::steady_clock::now());
  return left.count() < 0 ? 0 : static_cast<int>(left.count());
}

}  // namespace

RawClient::~RawClient() { Close(); }

bool RawClient::Connect(uint16_t port) {
  Close();
  fd_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(port);
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return fd_ >= 0 && connect(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
}

void RawClient::Close() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
}

bool RawClient::Send(const std::string& bytes) {
  return qvemu::WriteAll(fd_, bytes, 5000, nullptr);
}

bool RawClient::SendFrame(const std::string& payload, uint32_t flag) {
  return Send(qvemu::EncodeFrame(payload, flag));
}

bool RawClient::SendMessage(const std::string& type, const std::string& code,
                            const std::string& body, uint32_t flag) {
  return SendFrame(qvemu::MakeEnvelope(type, code, "0", body), flag);
}

bool RawClient::ReadBytes(size_t n, std::string* out, int timeout_ms) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  out->clear();
  char buf[4096];
  while (out->size() < n) {
    pollfd p{fd_, POLLIN, 0};
    if (poll(&p, 1, MsLeft(deadline)) <= 0) return false;
    ssize_t got = recv(fd_, buf, std::min(sizeof buf, n - out->size()), 0);
    if (got <= 0) return false;
    out->append(buf, static_cast<size_t>(got));
  }
  return true;
}

bool RawClient::ReadFrame(std::string* payload, int timeout_ms, uint32_t* flag) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  std::string header;
  if (!ReadBytes(8, &header, timeout_ms)) return false;
  const unsigned char* h = reinterpret_cast<const unsigned char*>(header.data());
  uint32_t len = h[4] | (h[5] << 8) | (h[6] << 16) | (static_cast<uint32_t>(h[7]) << 24);
  if (flag) *flag = h[0] | (h[1] << 8) | (h[2] << 16) | (static_cast<uint32_t>(h[3]) << 24);
  return ReadBytes(len, payload, MsLeft(deadline));
}

std::string RawClient::Request(const std::string& type, const std::string& code,
                               const std::string& body, int timeout_ms) {
  std::string reply;
  if (!SendMessage(type, code, body) || !ReadFrame(&reply, timeout_ms)) return "";
  return reply;
}

bool RawClient::Login(const std::string& user, const std::string& password) {
  std::string reply = Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                              "<USER_AUTH_PARAM\nUsername=\"" + user + "\" Password=\"" +
                                  password + "\" AuthMethod=\"1\"/>");
  return FlagOf(reply) == "0";
}

bool RawClient::WaitClosed(int timeout_ms) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  char buf[4096];
  for (;;) {
    pollfd p{fd_, POLLIN, 0};
    if (poll(&p, 1, MsLeft(deadline)) <= 0) return false;
    if (recv(fd_, buf, sizeof buf, 0) <= 0) return true;
  }
}

std::string FlagOf(const std::string& payload) {
  std::string type, code, flag;
  qvemu::ParseHeader(payload, &type, &code, &flag);
  return flag;
}

}  // namespace qvemu_test
