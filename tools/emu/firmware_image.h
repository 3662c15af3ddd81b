// The emulated camera's firmware image: a 16-byte header and the payload.
//
//   offset 0  4 bytes  "QVFW"
//   offset 4  4 bytes  version (little-endian)
//   offset 8  4 bytes  payload length (little-endian)
//   offset 12 4 bytes  FNV-1a 32-bit hash of the payload (little-endian)
//   offset 16          payload
//
// An upgrade is accepted when all four fields agree with what arrived.
#pragma once

#include <cstdint>
#include <string>

namespace qvemu {

struct FirmwareCheck {
  bool ok = false;
  uint32_t version = 0;
  std::string reason;  // why an image was refused; empty when accepted
};

FirmwareCheck CheckFirmwareImage(const std::string& image);

// An image that passes the check (for tests, the demo and the command line).
std::string MakeFirmwareImage(uint32_t version, const std::string& payload);

}  // namespace qvemu
