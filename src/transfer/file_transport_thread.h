// CFileTransportThread: moves one file over the data channel, a TCP
// connection of its own to the port the camera named in its reply to the
// transfer request (channel mode).
//
// An upload sends the 12-byte header and the file in 4096-byte chunks, 10 ms
// apart, posting status 14 with the progress at every 204,800 bytes, and
// waits for the camera's "FILE TRANSPORT OK!". A download receives the
// header and the file into "<local name>.tmp", renames that to the local
// name (also when it is incomplete) and answers "FILE TRANSPORT OK!" when
// all bytes arrived. Every wait lasts 1 s; more than 10 of them end the
// transfer. The thread ends with status 14 / 15 (upload) or 16 / 17
// (download).
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "base/thread_class.h"

class CPTZControlClass;

class CFileTransportThread : public CThreadClass {
 public:
  explicit CFileTransportThread(CPTZControlClass* session);
  ~CFileTransportThread() override;

  int Thread() override;
  // Running, and not asked to stop through the stop flag (see
  // CPTZControlClass::Kill).
  int IsRunning() override;

 private:
  // What the thread moves, copied from the session's record at its start.
  struct Job {
    bool upload = false;
    long file_type = 0;
    std::string local_name;
    std::string remote_name;
    unsigned short port = 0;
  };
  enum Wait { kReady, kTimedOut, kFailed, kStopped };

  // Re-requests the transfer every 5 s until the camera's port is known,
  // then copies what to move into *job. false when the thread was stopped
  // or the transfer ended first.
  bool WaitForPort(Job* job);
  int Connect(const Job& job);
  bool SendFile(const Job& job);
  bool ReceiveFile(const Job& job);
  bool ReceiveBody(FILE* file, int32_t length, int32_t* received);
  // Reads the camera's answer to a whole upload.
  bool ReceiveEndMessage();
  // Lets the camera read "FILE TRANSPORT OK!" before the socket closes.
  void LingerForPeer();
  // Receives exactly n bytes with the counted 1 s waits.
  bool ReceiveExact(unsigned char* out, int n);
  // One wait of up to 1 s (scaled) for the socket, sliced so that a stop
  // is seen within 300 ms.
  Wait WaitSocket(bool for_write, unsigned long wait_ms);
  // Counts a time-out; false once more than 10 were counted.
  bool CountTimeout(bool sending);
  void PostUploadProgress(const Job& job, int progress);
  void PostResult(const Job& job, bool ok);

  CPTZControlClass* session_;
  int sock_ = -1;
  int timeouts_ = 0;
  unsigned generation_ = 0;  // the transfer this run moves
};
