// Free-address search: ICMP echo probes of candidate addresses.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "base/compat.h"
#include "base/debug_log.h"
#include "discovery/search_ipc.h"
#include "link/xml_util.h"

namespace {

const int kAddressTextBytes = 33;
const int kEchoBytes = 12;
const int kProbeTries = 5;
const int kProbeWaitMs = 100;
const int kProbeReceiveBytes = 256;

// Copies text into buffer (at most cap - 1 characters); the length.
int CopyOut(char* buffer, int cap, const std::string& text) {
  CopyText(buffer, static_cast<size_t>(cap), text.c_str());
  return static_cast<int>(strlen(buffer));
}

}  // namespace

unsigned short ChkSum(const unsigned short* words, int length) {
  const unsigned char* bytes = reinterpret_cast<const unsigned char*>(words);
  unsigned long sum = 0;
  while (length > 1) {
    unsigned short word;
    memcpy(&word, bytes, sizeof(word));
    sum += word;
    bytes += 2;
    length -= 2;
  }
  if (length == 1) sum += *bytes;
  sum = (sum >> 16) + (sum & 0xFFFF);
  sum += sum >> 16;
  return static_cast<unsigned short>(~sum);
}

int CCSearchIPC::PintTest(uint32_t address) {
  int fd = socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMP);
  if (fd <= 0) {
    if (fd == 0) close(fd);
    return -1;
  }
  std::string target = DottedAddress(address);
  sockaddr_in to;
  memset(&to, 0, sizeof(to));
  to.sin_family = AF_INET;
  to.sin_addr.s_addr = address;
  unsigned short sequence = 0;
  for (int attempt = 0; attempt < kProbeTries; ++attempt) {
    unsigned char packet[kEchoBytes] = {8, 0};
    memcpy(packet + 4, &sequence, 2);  // identifier
    memcpy(packet + 6, &sequence, 2);  // sequence number
    ++sequence;
    uint32_t tick = static_cast<uint32_t>(GetTickCount());
    memcpy(packet + 8, &tick, 4);
    unsigned short sum = ChkSum(reinterpret_cast<const unsigned short*>(packet), kEchoBytes);
    memcpy(packet + 2, &sum, 2);
    if (sendto(fd, packet, kEchoBytes, 0, reinterpret_cast<sockaddr*>(&to), sizeof(to)) !=
        kEchoBytes) {
      QV_LOG("[%s:%d]PintTest(): sendto failed.");
      close(fd);
      return -1;
    }
    pollfd p = {fd, POLLIN, 0};
    int ready = poll(&p, 1, kProbeWaitMs);
    if (ready < 0) {
      QV_LOG("[%s:%d]PintTest(): select failed.");
      close(fd);
      return -1;
    }
    if (ready == 0) continue;
    if ((p.revents & (POLLIN | POLLERR)) == 0) {
      QV_LOG("[%s:%d]PintTest(): socket not readable.");
      close(fd);
      return -1;
    }
    unsigned char reply[kProbeReceiveBytes];
    sockaddr_in from;
    socklen_t from_len = sizeof(from);
    memset(&from, 0, sizeof(from));
    ssize_t n = recvfrom(fd, reply, sizeof(reply), 0, reinterpret_cast<sockaddr*>(&from),
                         &from_len);
    if (n <= 0) {
      QV_LOG("[%s:%d]PintTest(): recvfrom failed.");
      close(fd);
      return -1;
    }
    if (from.sin_addr.s_addr != address) {
      // Prints the probed address, not the sender's.
      QV_LOG("[%s:%d]PintTest(): recv packet not from dest ip, but from: %s", target.c_str());
    } else {
      int header = (reply[0] * 4) & 60;
      if (n <= header + 7) {
        QV_LOG("[%s:%d]PintTest(): recv bad length.");
      } else if (reply[header] == 0) {
        QV_LOG("[%s:%d]got replay from ip: %s", target.c_str());
        close(fd);
        return 0;
      } else {
        QV_LOG("[%s:%d]recv not icmp packet.");
      }
    }
    SleepUs(100);
  }
  QV_LOG("[%s:%d]PintTest(): no replay recv, ip %s is usable.", target.c_str());
  close(fd);
  return 1;
}

bool CCSearchIPC::IsExcluded(uint32_t address) {
  excluded_lock_.Lock();
  bool found = false;
  for (uint64_t slot : excluded_) found = found || slot == address;
  excluded_lock_.Unlock();
  return found;
}

void CCSearchIPC::Exclude(uint32_t address) {
  excluded_lock_.Lock();
  for (uint64_t& slot : excluded_) {
    if (slot == 0) {
      slot = address;
      break;
    }
  }
  excluded_lock_.Unlock();
}

void CCSearchIPC::Unexclude(uint32_t address) {
  excluded_lock_.Lock();
  for (uint64_t& slot : excluded_) {
    if (slot == address) slot = 0;
  }
  excluded_lock_.Unlock();
}

int CCSearchIPC::ScanFreeAddress(uint32_t base, uint32_t gateway, char* buffer, int size) {
  for (uint32_t n = 254; n >= 1; --n) {
    uint32_t candidate = htonl((ntohl(base) & 0xFFFFFF00u) | n);
    if (candidate == base || candidate == gateway) continue;
    bool found_camera = false;
    table_lock_.Lock();
    for (long i = 0; i < count_ && i < kMaxEntries && !found_camera; ++i) {
      if (table_[i] == nullptr) continue;
      char ip[sizeof(table_[i]->lan.IPAddress) + 1] = {};
      memcpy(ip, table_[i]->lan.IPAddress, sizeof(table_[i]->lan.IPAddress));
      found_camera = inet_addr(ip) == candidate;
    }
    table_lock_.Unlock();
    if (found_camera || IsExcluded(candidate)) continue;
    if (PintTest(candidate) == 1) {
      std::string text = DottedAddress(candidate);
      QV_LOG("[%s:%d]got one ip: %s", text.c_str());
      return CopyOut(buffer, size < kAddressTextBytes ? size : kAddressTextBytes, text);
    }
  }
  return -1;
}

int CCSearchIPC::GetOneIPAddress(char* buffer, int size) {
  if (buffer == nullptr) return kAddressTextBytes;
  if (size < kAddressTextBytes) return QV_E_BUFFER_TOO_SMALL;
  local_lock_.Lock();
  GetNetworkConfig(nullptr, &local_);
  LocalCardInfo info = local_;
  local_lock_.Unlock();
  // The base is the second address field, which nothing fills: it reads as
  // 255.255.255.255, no candidate can be probed, and the answer is that
  // field's empty text.
  int length = ScanFreeAddress(inet_addr(info.ip2), inet_addr(info.gateway), buffer, size);
  if (length >= 0) return length;
  return CopyOut(buffer, size, info.ip2);
}

int CCSearchIPC::GetFreeIPAddress(const char* ifname, char* buffer, int size) {
  if (buffer == nullptr) return kAddressTextBytes;
  if (size < kAddressTextBytes) return QV_E_BUFFER_TOO_SMALL;
  LocalCardInfo info = {};
  if (GetNetworkConfig(ifname, &info) == 0) return -1;
  int length = ScanFreeAddress(inet_addr(info.ip), inet_addr(info.gateway), buffer, size);
  if (length >= 0) return length;
  buffer[0] = '\0';
  return 0;
}
