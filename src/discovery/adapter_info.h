// Facts about this host's own network: its usable interfaces with address,
// mask and MAC, the default gateway from the kernel's routing table, and the
// DNS servers from the resolver configuration.
//
// An interface whose name begins with "lo:", "lo", "stf", "gif", "dummy" or
// "vmnet" is never used. Interfaces are listed with SIOCGIFCONF into a
// 512-byte buffer, so at most 12 addresses are seen.
#pragma once

#include <cstdint>
#include <map>
#include <string>

// One usable interface.
struct IP_ADAPTER_INFO {
  char name[32];
  unsigned char mac[6];
  uint32_t address;  // IPv4, network order
  uint32_t netmask;  // network order
  int flag;          // set: a broadcast route is added before use (never set here)
};

// Usable interfaces by IPv4 address (network order).
typedef std::map<uint32_t, IP_ADAPTER_INFO> NetcardList;

// Dotted text of an IPv4 address (network order).
std::string DottedAddress(uint32_t address);

// True when the interface name begins with one of the skipped prefixes.
bool IsSkippedInterface(const char* name);

// The gateway of the first default route in the routing table, as the kernel
// prints it (network order); 0xFFFFFFFF when there is none. 0, or -1 when
// the table cannot be read.
int get_gateway(uint32_t* gateway);

// The first two "nameserver" entries of the resolver configuration into the
// two 64-byte fields (later ones are ignored). When the file cannot be
// opened the fields stay as they are; otherwise both are emptied first. 0.
int get_DNS(char* dns1, char* dns2);

// The last usable interface in the kernel's order into name (32 bytes; left
// empty when there is none). 0.
int get_NetethName(char* name);

// Address, mask and MAC of the interface. 0, or -1 when the socket or the
// address query fails.
int get_adaptor_info(const char* name, IP_ADAPTER_INFO* info);

// Every usable interface with an address other than 0 and 255.255.255.255.
// Empty when none or when the interfaces cannot be listed.
NetcardList GetNetcardIPList();

// Route management for the broadcast address: not needed here. 0.
int interface_add_route(const char* name);
int interface_del_route(const char* name);

// The files read by get_gateway ("/proc/net/route") and get_DNS
// ("/etc/resolv.conf"); null restores the default. For tests.
void SetRouteTablePath(const char* path);
void SetResolverPath(const char* path);
