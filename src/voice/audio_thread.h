// CAudioThread: the audio send thread of a session's voice talk.
//
// Host threads hand audio frames in through AudioFrameData; they wait in a
// ring of 30 frames. The thread turns each frame into a talk packet on the
// session's talk audio list and wakes the link thread, which sends it. When
// the host hands in faster than the link drains (more than 10 frames
// waiting at a check, every 500 ms), only the 5 newest are kept.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "base/thread_class.h"

class CPTZControlClass;
class CRingBuffer;

class CAudioThread : public CThreadClass {
 public:
  // Largest frame the thread takes (its frame buffer).
  static const int kMaxFrame = 102400;

  explicit CAudioThread(CPTZControlClass* session);
  ~CAudioThread() override;

  int Thread() override;
  // Also ends the thread's idle wait at once.
  int Kill(int wait) override;

  // Stores one frame in the ring with the current tick. length, 0 for an
  // empty frame, -8999992 for null data or a frame outside 0..kMaxFrame,
  // -8999994 when the ring has no memory for it.
  long AudioFrameData(const char* data, long length);
  // Frames handed in and not yet taken by the thread.
  int Waiting() const;

  // G.711 mu-law from 16-bit linear samples: byte_count / 2 samples of in
  // become as many bytes, packed in order into the words of out (an even
  // byte in the low half of its word, which it overwrites; an odd one in
  // the high half). Returns byte_count / 2.
  static short AUDIO_g711Encode(short* out, const short* in, short byte_count);

 private:
  // Keeps the 5 newest frames when more than 10 wait.
  void DropBacklog(unsigned char* scratch);
  // Waits up to 100 ms for a frame, or until the thread is stopped.
  void WaitForFrame();

  CPTZControlClass* session_;
  CRingBuffer* ring_ = nullptr;
  uint32_t sequence_ = 0;  // first packet counter
  uint32_t index_ = 0;     // second packet counter
  std::mutex wake_mu_;
  std::condition_variable wake_;
  bool frame_waiting_ = false;
};
