// This host's own settings: address and mask of an interface, the default
// gateway and the DNS servers.
#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "base/debug_log.h"
#include "discovery/search_ipc.h"
#include "link/xml_util.h"

namespace {

// Used until the resolver configuration is read.
const char kDefaultDns1[] = "202.96.134.133";
const char kDefaultDns2[] = "8.8.8.8";

void PutAddress(char* field, size_t cap, const sockaddr& address) {
  const sockaddr_in* in = reinterpret_cast<const sockaddr_in*>(&address);
  CopyText(field, cap, DottedAddress(in->sin_addr.s_addr).c_str());
}

}  // namespace

int CCSearchIPC::GetNetworkConfig(const char* ifname, LocalCardInfo* info) {
  CopyText(info->dns1, sizeof(info->dns1), kDefaultDns1);
  CopyText(info->dns2, sizeof(info->dns2), kDefaultDns2);
  char name[32] = "";
  if (ifname != nullptr && ifname[0] != '\0') {
    CopyText(name, sizeof(name), ifname);
  } else {
    get_NetethName(name);
  }
  QV_LOG("[%s:%d]get ethname:%s", name);

  int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    perror("SearchIPC Error");
    return 0;
  }
  ifreq r;
  memset(&r, 0, sizeof(r));
  CopyText(r.ifr_name, sizeof(r.ifr_name), name);
  if (ioctl(fd, SIOCGIFADDR, &r) != 0) {
    perror("SearchIPC Error");
    close(fd);
    return 0;
  }
  PutAddress(info->ip, sizeof(info->ip), r.ifr_addr);
  QV_LOG("[%s:%d]get inet addr: %s", info->ip);
  if (ioctl(fd, SIOCGIFNETMASK, &r) != 0) {
    perror("searchIPC Error");
    close(fd);
    return 0;
  }
  close(fd);
  PutAddress(info->netmask, sizeof(info->netmask), r.ifr_netmask);
  QV_LOG("[%s:%d]get Mask: %s", info->netmask);

  uint32_t gateway = 0;
  get_gateway(&gateway);
  CopyText(info->gateway, sizeof(info->gateway), DottedAddress(gateway).c_str());
  QV_LOG("[%s:%d]get gateway address %s  ", info->gateway);
  get_DNS(info->dns1, info->dns2);
  QV_LOG("[%s:%d]get dns1 %s \ndns2 %s ", info->dns1, info->dns2);
  return 1;
}
