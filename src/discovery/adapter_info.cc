#include "discovery/adapter_info.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "base/debug_log.h"
#include "link/xml_util.h"

namespace {

const char kDefaultRoutePath[] = "/proc/net/route";
const char kDefaultResolverPath[] = "/etc/resolv.conf";
const int kIfconfBytes = 512;

std::mutex g_paths_mu;
std::string g_route_path = kDefaultRoutePath;
std::string g_resolver_path = kDefaultResolverPath;

std::string PathOf(const std::string& path) {
  std::lock_guard<std::mutex> lock(g_paths_mu);
  return path;
}

// Lists the interfaces with their IPv4 addresses. The number of entries
// filled, or -1 when no socket could be had.
int ListInterfaces(ifreq* entries, int capacity) {
  int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    perror("socket");
    return -1;
  }
  ifconf conf;
  memset(&conf, 0, sizeof(conf));
  conf.ifc_len = capacity * static_cast<int>(sizeof(ifreq));
  conf.ifc_req = entries;
  int count = 0;
  if (ioctl(fd, SIOCGIFCONF, &conf) == 0) count = conf.ifc_len / static_cast<int>(sizeof(ifreq));
  close(fd);
  return count;
}

uint32_t AddressOf(const ifreq& r) {
  return reinterpret_cast<const sockaddr_in*>(&r.ifr_addr)->sin_addr.s_addr;
}

}  // namespace

std::string DottedAddress(uint32_t address) {
  char text[INET_ADDRSTRLEN];
  in_addr a;
  a.s_addr = address;
  inet_ntop(AF_INET, &a, text, sizeof(text));
  return text;
}

bool IsSkippedInterface(const char* name) {
  static const char* const kSkipped[] = {"lo:", "lo", "stf", "gif", "dummy", "vmnet"};
  for (const char* prefix : kSkipped) {
    if (strncmp(name, prefix, strlen(prefix)) == 0) return true;
  }
  return false;
}

void SetRouteTablePath(const char* path) {
  std::lock_guard<std::mutex> lock(g_paths_mu);
  g_route_path = path != nullptr ? path : kDefaultRoutePath;
}

void SetResolverPath(const char* path) {
  std::lock_guard<std::mutex> lock(g_paths_mu);
  g_resolver_path = path != nullptr ? path : kDefaultResolverPath;
}

int get_gateway(uint32_t* gateway) {
  *gateway = 0xFFFFFFFFu;
  FILE* f = fopen(PathOf(g_route_path).c_str(), "re");
  if (f == nullptr) return -1;
  char line[256];
  if (fgets(line, sizeof(line), f) == nullptr) {  // the title line
    fclose(f);
    return 0;
  }
  while (fgets(line, sizeof(line), f) != nullptr) {
    char name[64];
    unsigned long destination = 0, via = 0;
    if (sscanf(line, "%63s\t%lX\t%lX", name, &destination, &via) == 3 && destination == 0) {
      *gateway = static_cast<uint32_t>(via);
      break;
    }
  }
  fclose(f);
  return 0;
}

int get_DNS(char* dns1, char* dns2) {
  std::string path = PathOf(g_resolver_path);
  FILE* f = fopen(path.c_str(), "re");
  if (f == nullptr) {
    QV_LOG("[%s:%d]get_DNS open(%s) fail ", path.c_str());
    return 0;
  }
  dns1[0] = '\0';
  dns2[0] = '\0';
  char line[256];
  while (fgets(line, sizeof(line), f) != nullptr) {
    char key[64] = "", value[64] = "";
    if (sscanf(line, "%63s\t%63s", key, value) < 1) continue;
    QV_LOG("[%s:%d]get_DNS sname:%s  sip:%s", key, value);
    if (strcmp(key, "nameserver") != 0) continue;
    if (dns1[0] == '\0') {
      CopyText(dns1, 64, value);
    } else if (dns2[0] == '\0') {
      CopyText(dns2, 64, value);
    }
  }
  fclose(f);
  return 0;
}

int get_NetethName(char* name) {
  name[0] = '\0';
  ifreq entries[kIfconfBytes / sizeof(ifreq)];
  int count = ListInterfaces(entries, static_cast<int>(sizeof(entries) / sizeof(entries[0])));
  for (int i = 0; i < count; ++i) {
    if (IsSkippedInterface(entries[i].ifr_name)) continue;
    CopyText(name, 32, entries[i].ifr_name);
    QV_LOG("[%s:%d]Get interface %s", name);
  }
  return 0;
}

int get_adaptor_info(const char* name, IP_ADAPTER_INFO* info) {
  int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    QV_LOG("[%s:%d]socket error");
    return -1;
  }
  ifreq r;
  memset(&r, 0, sizeof(r));
  CopyText(r.ifr_name, sizeof(r.ifr_name), name);
  CopyText(info->name, sizeof(info->name), name);
  if (ioctl(fd, SIOCGIFADDR, &r) != 0) {
    QV_LOG("[%s:%d]ioctl SIOCGIFADDR");
    close(fd);
    return -1;
  }
  info->address = AddressOf(r);
  if (ioctl(fd, SIOCGIFNETMASK, &r) != 0) {
    QV_LOG("[%s:%d]ioctl SIOCGIFNETMASK");
    close(fd);
    return -1;
  }
  info->netmask = reinterpret_cast<const sockaddr_in*>(&r.ifr_netmask)->sin_addr.s_addr;
  if (ioctl(fd, SIOCGIFHWADDR, &r) != 0) {
    QV_LOG("[%s:%d]ioctl SIOCGIFHWADDR");
    close(fd);
    return -1;
  }
  memcpy(info->mac, r.ifr_hwaddr.sa_data, sizeof(info->mac));
  close(fd);
  const unsigned char* m = info->mac;
  QV_LOG("[%s:%d]%s: IP %s, mask %s, MAC %02x:%02x:%02x:%02x:%02x:%02x", info->name,
         DottedAddress(info->address).c_str(), DottedAddress(info->netmask).c_str(), m[0], m[1],
         m[2], m[3], m[4], m[5]);
  return 0;
}

NetcardList GetNetcardIPList() {
  NetcardList list;
  ifreq entries[kIfconfBytes / sizeof(ifreq)];
  int count = ListInterfaces(entries, static_cast<int>(sizeof(entries) / sizeof(entries[0])));
  for (int i = 0; i < count; ++i) {
    uint32_t address = AddressOf(entries[i]);
    if (IsSkippedInterface(entries[i].ifr_name) || address == 0 || address == 0xFFFFFFFFu) {
      continue;
    }
    IP_ADAPTER_INFO info;
    memset(&info, 0, sizeof(info));
    if (get_adaptor_info(entries[i].ifr_name, &info) == 0) list[address] = info;
  }
  return list;
}

int interface_add_route(const char*) { return 0; }
int interface_del_route(const char*) { return 0; }
