// The data channel's 12-byte header.
#include "transfer/file_transfer_record.h"

namespace {

void PutLe32(uint32_t v, unsigned char* out) {
  for (int i = 0; i < 4; ++i) out[i] = static_cast<unsigned char>(v >> (8 * i));
}

uint32_t GetLe32(const unsigned char* in) {
  return static_cast<uint32_t>(in[0]) | static_cast<uint32_t>(in[1]) << 8 |
         static_cast<uint32_t>(in[2]) << 16 | static_cast<uint32_t>(in[3]) << 24;
}

}  // namespace

void EncodeDataChannelHeader(int32_t length, unsigned char out[kDataChannelHeaderSize]) {
  PutLe32(kDataChannelFlag, out);
  PutLe32(0, out + 4);
  PutLe32(static_cast<uint32_t>(length), out + 8);
}

void DecodeDataChannelHeader(const unsigned char in[kDataChannelHeaderSize], uint32_t* flag,
                             int32_t* length) {
  *flag = GetLe32(in);
  *length = static_cast<int32_t>(GetLe32(in + 8));
}
