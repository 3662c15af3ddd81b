// CAuxMsgBuffer: one queued request of a session, an owned deep copy of the
// bytes to send plus the flag that marks the frame as encrypted.
#pragma once

#include <string>

class CAuxMsgBuffer {
 public:
  explicit CAuxMsgBuffer(int encrypted = 0);
  CAuxMsgBuffer(const char* text, int encrypted);          // strlen bytes, no terminator
  CAuxMsgBuffer(const std::string& text, int encrypted);
  CAuxMsgBuffer(const char* data, int length, int encrypted);
  CAuxMsgBuffer(const CAuxMsgBuffer& other);
  CAuxMsgBuffer& operator=(const CAuxMsgBuffer& other);
  virtual ~CAuxMsgBuffer();

  const char* c_bytes() const { return data_; }  // null when empty or when the copy failed
  int length() const { return length_; }
  int encrypted() const { return encrypted_; }

  // Copies currently alive, over the whole process.
  static long LiveCopies();

 private:
  // The one deep copy: a length below 1 leaves data null; a failed
  // allocation is logged and leaves data null with the length kept.
  void construct(const char* data, int length, int encrypted);
  void release();

  char* data_ = nullptr;
  int length_ = 0;
  int encrypted_ = 0;
};
