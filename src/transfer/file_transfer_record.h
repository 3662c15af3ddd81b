// The file transfer record of a session: the one upload or download it
// runs (or ran last), shared by the host thread that starts or stops it, the
// link thread that negotiates it (and moves link-mode data) and the file
// send thread that moves channel-mode data. Every field is read and written
// under the session's transfer lock.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

struct FileTransferRecord {
  bool done = true;            // no transfer running
  int upload = 0;              // 1 upload, 0 download
  long file_type = 0;          // announced type of an upload (1 firmware, 0 configuration)
  std::string local_name;      // file on this side
  std::string remote_name;     // file on the camera (downloads)
  unsigned short port = 0;     // data port from the camera's reply; 0 while pending
  int mode = 0;                // non-zero: the data travels inside the control link
  uint32_t total = 0;          // bytes to move
  uint32_t position = 0;       // bytes moved
  FILE* file = nullptr;        // open local file of a link-mode transfer
  unsigned long transfer_tick = 0;  // last progress of a link-mode transfer
  unsigned long announce_tick = 0;  // last (re-)announcement while pending
  unsigned generation = 0;     // counts transfers, so that a late worker never touches the next
  unsigned thread_generation = 0;  // the transfer the file send thread was last started for

  bool Pending() const { return !done && port == 0; }
  bool InLink() const { return !done && port != 0 && mode != 0; }
};

// The 12-byte header that opens the data channel, sent by the side that
// sends the file: flag, four bytes the receiver ignores (zeros), the file
// length (signed 32-bit), all little-endian.
const uint32_t kDataChannelFlag = 0x31589518u;  // bytes 18 95 58 31
const int kDataChannelHeaderSize = 12;
// What the receiver of a whole file answers (18 bytes, no terminator).
const char kTransportOkText[] = "FILE TRANSPORT OK!";
const int kTransportOkLength = 18;

void EncodeDataChannelHeader(int32_t length, unsigned char out[kDataChannelHeaderSize]);
// Flag and length of a received header.
void DecodeDataChannelHeader(const unsigned char in[kDataChannelHeaderSize], uint32_t* flag,
                             int32_t* length);
