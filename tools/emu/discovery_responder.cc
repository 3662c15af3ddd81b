#include "emu/discovery_responder.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

#include "base/compat.h"
#include "emu/camera.h"
#include "emu/config_store.h"
#include "emu/envelope.h"
#include "emu/hostile.h"
#include "link/discovery_readers.h"

namespace qvemu {
namespace {

const size_t kDatagramBytes = 65536;
const size_t kRecordLimit = 10000;

// One camera behind the port.
struct Member {
  Camera* camera;
  DiscoveryIdentity id;
  std::string factory_document;
  unsigned long started;    // tick of AddCamera, for the runtime
  std::string cached_document;
  std::string cached_settings;
  std::string cached_address;  // the IPAddress the settings announce
  int answers = 0, modifications = 0, reboots = 0, restores = 0;
};

// An answer waiting for its moment.
struct PendingAnswer {
  unsigned long due;
  size_t member;
  sockaddr_in to;
  int ifindex;
};

std::string AnnouncedAddress(const std::string& settings) {
  std::vector<char> text(settings.begin(), settings.end());
  text.push_back('\0');
  LANConfig lan;
  if (TinyNetwork_getLANCfgByXml(&lan, text.data()) != 0) return "";
  return lan.IPAddress;
}

// The message header of one datagram: its bytes, its peer and room for
// control data.
struct DatagramHeader {
  DatagramHeader(sockaddr_in* peer, char* data, size_t length, char* control, size_t room) {
    iov.iov_base = data;
    iov.iov_len = length;
    memset(&msg, 0, sizeof(msg));
    msg.msg_name = peer;
    msg.msg_namelen = sizeof(*peer);
    msg.msg_iov = &iov;
    msg.msg_iovlen = 1;
    msg.msg_control = control;
    msg.msg_controllen = room;
  }
  DatagramHeader(const DatagramHeader&) = delete;
  DatagramHeader& operator=(const DatagramHeader&) = delete;
  iovec iov;
  msghdr msg;
};

std::string Text(const sockaddr_in& a) {
  char host[INET_ADDRSTRLEN] = "?";
  inet_ntop(AF_INET, &a.sin_addr, host, sizeof(host));
  return std::string(host) + ":" + std::to_string(ntohs(a.sin_port));
}

}  // namespace

class DiscoveryResponder::Impl {
 public:
  explicit Impl(DiscoveryOptions options) : options_(std::move(options)) {}
  ~Impl() { Stop(); }

  bool Start();
  void Stop();
  void Loop();
  void OnDatagram(const std::string& payload, const sockaddr_in& from, int ifindex);
  void SendDue();
  void Answer(Member& m, const PendingAnswer& p);
  void Change(const std::string& code, const std::string& serial, const std::string& payload);
  void Print(const std::string& text) const;
  int Count(const std::string& serial, int Member::*field) const;

  const DiscoveryOptions options_;
  mutable std::mutex mu_;
  mutable std::condition_variable changed_;
  std::vector<Member> members_;
  std::vector<DiscoveryDatagram> received_;
  std::vector<PendingAnswer> pending_;  // touched by the loop only

 private:
  int fd_ = -1;
  std::atomic<bool> stop_{true};
  std::thread thread_;
};

bool DiscoveryResponder::Impl::Start() {
  if (!stop_) return false;
  int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  int on = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
  setsockopt(fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof(on));
  setsockopt(fd, IPPROTO_IP, IP_PKTINFO, &on, sizeof(on));
  sockaddr_in local;
  memset(&local, 0, sizeof(local));
  local.sin_family = AF_INET;
  local.sin_port = htons(options_.port);
  if (bind(fd, reinterpret_cast<sockaddr*>(&local), sizeof(local)) != 0) {
    close(fd);
    return false;
  }
  fd_ = fd;
  stop_ = false;
  thread_ = std::thread(&Impl::Loop, this);
  return true;
}

void DiscoveryResponder::Impl::Stop() {
  if (stop_.exchange(true)) return;
  thread_.join();
  close(fd_);
  fd_ = -1;
}

void DiscoveryResponder::Impl::Loop() {
  std::vector<char> buffer(kDatagramBytes);
  while (!stop_) {
    int wait_ms = 100;
    if (!pending_.empty()) {
      unsigned long now = GetTickCount(), first = pending_.front().due;
      for (const PendingAnswer& p : pending_) first = p.due < first ? p.due : first;
      wait_ms = first <= now ? 0 : static_cast<int>(first - now < 100 ? first - now : 100);
    }
    pollfd p = {fd_, POLLIN, 0};
    if (poll(&p, 1, wait_ms) > 0 && (p.revents & POLLIN) != 0) {
      sockaddr_in from;
      memset(&from, 0, sizeof(from));
      char control[256];
      DatagramHeader header(&from, buffer.data(), buffer.size(), control, sizeof(control));
      msghdr& msg = header.msg;
      ssize_t n = recvmsg(fd_, &msg, 0);
      if (n >= 0) {
        int ifindex = 0;
        for (cmsghdr* c = CMSG_FIRSTHDR(&msg); c != nullptr; c = CMSG_NXTHDR(&msg, c)) {
          if (c->cmsg_level == IPPROTO_IP && c->cmsg_type == IP_PKTINFO) {
            in_pktinfo info;
            memcpy(&info, CMSG_DATA(c), sizeof(info));
            ifindex = info.ipi_ifindex;
          }
        }
        OnDatagram(std::string(buffer.data(), static_cast<size_t>(n)), from, ifindex);
      }
    }
    SendDue();
  }
}

void DiscoveryResponder::Impl::OnDatagram(const std::string& payload, const sockaddr_in& from,
                                          int ifindex) {
  DiscoveryDatagram d;
  d.payload = payload;
  std::string flag;
  ParseHeader(payload, &d.type, &d.code, &flag);
  d.from = Text(from);
  char name[IF_NAMESIZE] = "";
  if (ifindex > 0 && if_indextoname(static_cast<unsigned>(ifindex), name) != nullptr) {
    d.interface_name = name;
  }
  bool ours = d.type == "SYSTEM_SEARCHIPC_MESSAGE";
  if (ours && d.code != "1") d.serial = AddressedSerial(payload);
  {
    std::lock_guard<std::mutex> lock(mu_);
    if (received_.size() >= kRecordLimit) received_.erase(received_.begin());
    received_.push_back(d);
  }
  changed_.notify_all();
  if (!ours) return;
  if (d.code == "1") {
    Print("discovery <- search from " + d.from + " on " + d.interface_name);
    std::lock_guard<std::mutex> lock(mu_);
    unsigned long now = GetTickCount();
    size_t count = members_.size();
    for (size_t i = 0; i < count; ++i) {
      unsigned long delay =
          count > 1 ? static_cast<unsigned long>(options_.reply_spread_ms) * i / count : 0;
      pending_.push_back(PendingAnswer{now + delay, i, from, ifindex});
    }
    return;
  }
  if (d.code == "2" || d.code == "5" || d.code == "7") Change(d.code, d.serial, payload);
}

void DiscoveryResponder::Impl::Change(const std::string& code, const std::string& serial,
                                      const std::string& payload) {
  std::unique_lock<std::mutex> lock(mu_);
  for (Member& m : members_) {
    if (serial.empty() || m.id.serial != serial) continue;
    if (code == "2") {
      std::string document = m.camera->ConfigDocument();
      if (!ApplyModification(payload, &document) || !m.camera->SetConfigDocument(document)) {
        Print("discovery: " + serial + ": modification not applicable");
        continue;
      }
      ++m.modifications;
      Print("discovery: " + serial + " modified");
    } else if (code == "5") {
      std::string factory = m.factory_document;
      if (factory.empty()) factory = m.camera->Options().config_document;
      if (factory.empty()) factory = ConfigStore::DefaultDocument();
      m.camera->SetConfigDocument(factory);
      m.camera->CloseLinks();
      ++m.restores;
      Print("discovery: " + serial + " restored to factory settings");
    } else {
      m.camera->CloseLinks();
      ++m.reboots;
      Print("discovery: " + serial + " rebooted");
    }
  }
  lock.unlock();
  changed_.notify_all();
}

void DiscoveryResponder::Impl::SendDue() {
  if (pending_.empty()) return;
  unsigned long now = GetTickCount();
  std::vector<PendingAnswer> later;
  std::lock_guard<std::mutex> lock(mu_);
  for (const PendingAnswer& p : pending_) {
    if (p.due > now) {
      later.push_back(p);
    } else if (p.member < members_.size()) {
      Answer(members_[p.member], p);
    }
  }
  pending_.swap(later);
}

void DiscoveryResponder::Impl::Answer(Member& m, const PendingAnswer& p) {
  std::string document = m.camera->ConfigDocument();
  if (document != m.cached_document) {
    m.cached_settings = ReplySettings(document);
    m.cached_address = AnnouncedAddress(m.cached_settings);
    m.cached_document = document;
  }
  long runtime = static_cast<long>((GetTickCount() - m.started) / 1000);
  std::string text = SearchReplyText(options_.reply_root, m.id, m.cached_settings, runtime);
  if (m.camera->Options().hostile) {
    HostileDice dice = DiceFor(m.camera->Options().hostile_seed, "discovery",
                               (static_cast<uint64_t>(p.member) << 32) | m.answers);
    text = HostileDatagram(&dice, text);
    if (text.empty()) text = " ";
  }

  sockaddr_in to = p.to;
  to.sin_addr.s_addr = htonl(INADDR_BROADCAST);
  char control[CMSG_SPACE(sizeof(in_pktinfo))];
  DatagramHeader header(&to, &text[0], text.size(), control, sizeof(control));
  msghdr& msg = header.msg;
  // From the camera's own address when it is local here, else from the
  // interface's.
  in_addr own;
  bool have_own = inet_pton(AF_INET, m.cached_address.c_str(), &own) == 1;
  for (int attempt = 0; attempt < 2; ++attempt) {
    memset(control, 0, sizeof(control));
    cmsghdr* c = CMSG_FIRSTHDR(&msg);
    c->cmsg_level = IPPROTO_IP;
    c->cmsg_type = IP_PKTINFO;
    c->cmsg_len = CMSG_LEN(sizeof(in_pktinfo));
    in_pktinfo info;
    memset(&info, 0, sizeof(info));
    info.ipi_ifindex = p.ifindex;
    if (attempt == 0 && have_own) info.ipi_spec_dst = own;
    memcpy(CMSG_DATA(c), &info, sizeof(info));
    if (sendmsg(fd_, &msg, MSG_NOSIGNAL) == static_cast<ssize_t>(text.size())) {
      ++m.answers;
      return;
    }
  }
  // No broadcast on that interface (loopback): straight back to the sender.
  if (sendto(fd_, text.data(), text.size(), MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&p.to), sizeof(p.to)) ==
      static_cast<ssize_t>(text.size())) {
    ++m.answers;
  }
}

void DiscoveryResponder::Impl::Print(const std::string& text) const {
  if (!options_.verbose) return;
  printf("%s\n", text.c_str());
  fflush(stdout);
}

int DiscoveryResponder::Impl::Count(const std::string& serial, int Member::*field) const {
  std::lock_guard<std::mutex> lock(mu_);
  int total = 0;
  for (const Member& m : members_) {
    if (m.id.serial == serial) total += m.*field;
  }
  return total;
}

DiscoveryResponder::DiscoveryResponder(DiscoveryOptions options)
    : impl_(new Impl(std::move(options))) {}
DiscoveryResponder::~DiscoveryResponder() = default;

bool DiscoveryResponder::Start() { return impl_->Start(); }
void DiscoveryResponder::Stop() { impl_->Stop(); }

void DiscoveryResponder::AddCamera(Camera* camera, const DiscoveryIdentity& id,
                                   const std::string& factory_document) {
  std::lock_guard<std::mutex> lock(impl_->mu_);
  Member m;
  m.camera = camera;
  m.id = id;
  m.factory_document = factory_document;
  m.started = GetTickCount();
  impl_->members_.push_back(m);
}

int DiscoveryResponder::Answers(const std::string& serial) const {
  return impl_->Count(serial, &Member::answers);
}
int DiscoveryResponder::Modifications(const std::string& serial) const {
  return impl_->Count(serial, &Member::modifications);
}
int DiscoveryResponder::Reboots(const std::string& serial) const {
  return impl_->Count(serial, &Member::reboots);
}
int DiscoveryResponder::Restores(const std::string& serial) const {
  return impl_->Count(serial, &Member::restores);
}

std::vector<DiscoveryDatagram> DiscoveryResponder::Received() const {
  std::lock_guard<std::mutex> lock(impl_->mu_);
  return impl_->received_;
}

bool DiscoveryResponder::WaitFor(
    const std::function<bool(const std::vector<DiscoveryDatagram>&)>& done,
    int timeout_ms) const {
  std::unique_lock<std::mutex> lock(impl_->mu_);
  return impl_->changed_.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                                  [&] { return done(impl_->received_); });
}

}  // namespace qvemu
