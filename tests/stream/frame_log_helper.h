// A thread-safe record of what a real-data callback and the status event
// callback received, with waits on a condition and a deadline.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "quorvel/quorvel.h"

struct Frame {
  long handle;
  unsigned long type;
  std::vector<unsigned char> bytes;
  int flag;
  double timestamp;
  void* user;
};

struct StatusEvent {
  long id;
  long code;
  std::string text;
};

class FrameLog {
 public:
  // Real-data callback; the user pointer must be the FrameLog (per-stream
  // user_data or the global callback's user).
  static long OnFrame(long handle, unsigned long type, char* data, unsigned long length,
                      FRAME_EXTDATA* extra);
  // Status callback (user: the FrameLog).
  static long OnStatus(long id, long code, const char* text, void* user);

  void Add(Frame frame);
  void AddStatus(StatusEvent event);
  // Waits until pred(frames) holds; false after timeout_ms.
  bool WaitFor(const std::function<bool(const std::vector<Frame>&)>& pred, int timeout_ms);
  bool WaitForStatus(long code, int timeout_ms);
  std::vector<Frame> Frames();
  std::vector<StatusEvent> Statuses();
  int Count(unsigned long type);
  int StatusCount(long code);

 private:
  std::mutex mu_;
  std::condition_variable cv_;
  std::vector<Frame> frames_;
  std::vector<StatusEvent> statuses_;
};

// A ClientInfo for a camera's RTSP port (link mode TCP).
ClientInfo StreamInfo(int port, unsigned short codec_family, unsigned short stream_index,
                      void* user_data);

// Counts of each type in a frame list.
int CountType(const std::vector<Frame>& frames, unsigned long type);
