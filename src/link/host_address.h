// The IPv4 address of a camera's host text: dotted text directly, else the
// first address of the name, else whatever inet_addr makes of the text.
#pragma once

#include <netinet/in.h>

#include <string>

in_addr_t ResolveHostAddress(const std::string& host);
