// The camera's end of one data channel: the TCP connection a host opens to
// the port named in a transfer reply, carrying one file after a 12-byte
// header (flag 0x31589518, four ignored bytes, the length), answered by the
// receiver with "FILE TRANSPORT OK!". Fault switches make the camera lie
// about the length, stall or close early.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace qvemu {

struct DataChannelFault {
  enum Kind {
    kNone,
    kWrongLength,  // the announced length is the real one plus value
    kStall,        // after value bytes of the file the camera neither sends nor reads
    kCloseEarly,   // after value bytes of the file the camera closes the connection
    kWrongFlag,    // the header opens with 0x31589158 instead of 0x31589518
  };
  Kind kind = kNone;
  long value = 0;
};

// What one data connection carried, as the camera saw it.
struct DataChannelRecord {
  int number = 0;         // 1 for the first data connection of the camera, 2 for the next, ...
  bool upload = false;    // the host sent the file
  std::string name;       // the camera path of a download, the host path of an upload
  std::string received;   // every byte the camera received on it
  bool complete = false;  // the whole file moved
};

class DataChannel {
 public:
  DataChannel() = default;
  ~DataChannel();  // closes both sockets
  DataChannel(const DataChannel&) = delete;
  DataChannel& operator=(const DataChannel&) = delete;

  // Listens on address, a free port. false on failure.
  bool Listen(const std::string& address);
  uint16_t port() const { return port_; }
  // Waits up to 30 s for the host's connection. false on time-out or stop.
  bool Accept(const std::atomic<bool>& stop);

  // Sends bytes as the file, then reads the host's answer into
  // record->received. complete when all of it went out.
  void SendFile(const std::string& bytes, const DataChannelFault& fault,
                const std::atomic<bool>& stop, DataChannelRecord* record);
  // Receives a file into *file (every byte also into record->received);
  // once it is whole, sends answer(*file). true when it arrived whole.
  bool ReceiveFile(const DataChannelFault& fault,
                   const std::function<std::string(const std::string&)>& answer,
                   const std::atomic<bool>& stop, DataChannelRecord* record, std::string* file);

 private:
  // Reads what comes within wait_ms into out: >0 bytes, 0 closed or failed,
  // -1 nothing yet.
  long ReadSome(std::string* out, size_t limit, int wait_ms);
  // Keeps the connection open without reading until the host closes it,
  // stop, or a minute passes.
  void Hold(const std::atomic<bool>& stop);
  // Reads until the host closes or `until` bytes were received in all (at
  // most 5 s), keeping what arrives.
  void Drain(const std::atomic<bool>& stop, DataChannelRecord* record, size_t until);

  int listen_fd_ = -1;
  int fd_ = -1;
  uint16_t port_ = 0;
};

}  // namespace qvemu
