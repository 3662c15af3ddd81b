// The header that opens a file's data channel: flag and length decoded as
// the receiving side decodes them, and encoded back for a valid flag.
#include <cstdlib>
#include <cstring>

#include "fuzz_target.h"
#include "transfer/file_transfer_record.h"

QV_FUZZ_TARGET(data_channel) {
  if (size < static_cast<size_t>(kDataChannelHeaderSize)) return 0;
  uint32_t flag = 0;
  int32_t length = 0;
  DecodeDataChannelHeader(data, &flag, &length);
  if (flag == kDataChannelFlag && memcmp(data + 4, "\0\0\0\0", 4) == 0) {
    unsigned char again[kDataChannelHeaderSize];
    EncodeDataChannelHeader(length, again);
    if (memcmp(again, data, kDataChannelHeaderSize) != 0) abort();
  }
  return 0;
}
