// Name look-up for the link thread. The resolver may take its whole
// time-out; the look-up runs on a helper thread so that the link thread
// keeps noticing a stop while it waits.
#pragma once

#include <netinet/in.h>

#include <functional>
#include <string>

// The first IPv4 address of name in *addr: true. False when the name is
// unknown, or when keep_waiting (asked at least every 300 ms) says to stop
// waiting; the helper then finishes on its own.
bool LookUpHost(const std::string& name, in_addr_t* addr,
                const std::function<bool()>& keep_waiting);

// The blocking look-up the helper runs: getaddrinfo unless tests put a
// stand-in here (null restores getaddrinfo).
using HostLookupFn = bool (*)(const char* name, in_addr_t* addr);
void SetHostLookup(HostLookupFn lookup);

// The IPv4 address of a camera's host text: dotted text directly, else the
// first address of the name (logged), else whatever inet_addr makes of the
// text. keep_waiting as for LookUpHost.
in_addr_t ResolveHostAddress(const std::string& host, const std::function<bool()>& keep_waiting);
