#include "emu/firmware_image.h"

namespace qvemu {
namespace {

const char kMagic[] = "QVFW";
const size_t kHeaderSize = 16;

uint32_t Fnv1a(const char* data, size_t n) {
  uint32_t h = 2166136261u;
  for (size_t i = 0; i < n; ++i) {
    h ^= static_cast<unsigned char>(data[i]);
    h *= 16777619u;
  }
  return h;
}

uint32_t Le32(const std::string& s, size_t at) {
  uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = v << 8 | static_cast<unsigned char>(s[at + i]);
  return v;
}

void PutLe32(std::string* s, uint32_t v) {
  for (int i = 0; i < 4; ++i) s->push_back(static_cast<char>(v >> (8 * i)));
}

}  // namespace

FirmwareCheck CheckFirmwareImage(const std::string& image) {
  FirmwareCheck check;
  if (image.size() < kHeaderSize || image.compare(0, 4, kMagic) != 0) {
    check.reason = "not a firmware image";
    return check;
  }
  check.version = Le32(image, 4);
  if (Le32(image, 8) != image.size() - kHeaderSize) {
    check.reason = "image length does not match its header";
  } else if (Le32(image, 12) != Fnv1a(image.data() + kHeaderSize, image.size() - kHeaderSize)) {
    check.reason = "image checksum does not match";
  } else {
    check.ok = true;
  }
  return check;
}

std::string MakeFirmwareImage(uint32_t version, const std::string& payload) {
  std::string image(kMagic, 4);
  PutLe32(&image, version);
  PutLe32(&image, static_cast<uint32_t>(payload.size()));
  PutLe32(&image, Fnv1a(payload.data(), payload.size()));
  return image + payload;
}

}  // namespace qvemu
