// CGetFrameActionClass: how frames and record events reach a stream's owner.
// A stream source delivers every frame through it; a record task reports its
// events through it.
#pragma once

class CGetFrameActionClass {
 public:
  virtual ~CGetFrameActionClass() = default;
  // One video frame; flag is the key-frame mark, timestamp in milliseconds.
  virtual int OnGetVideoFrame(unsigned char* data, int length, int flag, double timestamp) = 0;
  // One audio frame.
  virtual int OnGetAudioFrame(unsigned char* data, int length, int flag, double timestamp) = 0;
  // A record event (42..49) with its text.
  virtual int OnRecordEvent(int event, const char* text) = 0;
};
