// The UDP sockets that discovery broadcasts from.
#pragma once

#include <cstdint>

// A broadcast socket for one interface: bound to the device when a name is
// given, otherwise bound to address:*port (network order address). The
// local port is read back into *port. The socket, or -1.
int CreateBroardcastSocket(const char* ifname, uint32_t address, unsigned short* port);
