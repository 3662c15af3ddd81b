#include "link/replay_assembler.h"

#include <cstring>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"

namespace {

const uint32_t kTrailerMagic = 0x1A2B3C4D;

uint32_t Le32(const unsigned char* p) {
  return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

uint16_t Le16(const unsigned char* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }

void Put32(unsigned char* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

// Header fields.
uint32_t Tick(const unsigned char* h) { return Le32(h); }
uint16_t Sequence(const unsigned char* h) { return Le16(h + 8); }
uint16_t DataLength(const unsigned char* h) { return Le16(h + 10); }
int Type(const unsigned char* h) { return h[12]; }
int KeyFlag(const unsigned char* h) { return h[13]; }
int Kind(const unsigned char* h) { return h[14]; }
uint32_t Index(const unsigned char* h) { return Le32(h + 16); }

}  // namespace

CReplayAssembler::~CReplayAssembler() { delete[] buffer_.load(); }

void CReplayAssembler::Allocate() {
  if (Allocated()) return;
  unsigned char* buffer = nullptr;
  while ((buffer = new (std::nothrow) unsigned char[kBufferSize]) == nullptr) SleepUs(10);
  buffer_.store(buffer, std::memory_order_release);
}

bool CReplayAssembler::Fits(int more) const {
  return count_ + more + kTrailerSize <= kBufferSize;
}

bool CReplayAssembler::Add(const unsigned char* packet, int length, Frame* frame) {
  unsigned char* buffer = buffer_.load(std::memory_order_acquire);
  if (buffer == nullptr) return false;
  if (length < kHeaderSize || DataLength(packet) > length - kHeaderSize) {
    QV_LOG("[%s:%d]pack type=%d,data len=%d,packet len=%d,bad length, dropped!\n",
           length >= kHeaderSize ? Type(packet) : -1,
           length >= kHeaderSize ? DataLength(packet) : -1, length);
    return false;
  }
  if (has_header_ && Kind(buffer) == 0) {
    latest_video_tick_ = Tick(buffer);
    if (first_video_tick_ == 0) first_video_tick_ = latest_video_tick_;
  }
  int data_len = DataLength(packet);
  int type = Type(packet);
  switch (type) {
    case kWhole:
    case kFirst:
      assembling_ = false;
      count_ = 0;
      if (!Fits(kHeaderSize + data_len)) return false;  // cannot happen: data is below 64 KiB
      memcpy(buffer, packet, static_cast<size_t>(kHeaderSize + data_len));
      count_ = kHeaderSize + data_len;
      has_header_ = true;
      if (type == kFirst) {
        assembling_ = true;
        return false;
      }
      Finish(frame);
      return true;
    case kMiddle:
    case kLast:
      return Append(packet, data_len, type == kLast, frame);
    default:
      QV_LOG("[%s:%d]pack type=%d,frame index=%d,last pack frame index=%d,recv data error!\n",
             type, static_cast<int>(Index(packet)),
             has_header_ ? static_cast<int>(Index(buffer)) : 0);
      return false;
  }
}

bool CReplayAssembler::Append(const unsigned char* packet, int data_len, bool last,
                              Frame* frame) {
  unsigned char* buffer = buffer_.load(std::memory_order_relaxed);
  if (!assembling_ || Index(packet) != Index(buffer)) {
    QV_LOG("[%s:%d]pack type=%d,frame index=%d,last pack frame index=%d,recv data error!\n",
           Type(packet), static_cast<int>(Index(packet)),
           has_header_ ? static_cast<int>(Index(buffer)) : 0);
    return false;
  }
  uint16_t expected = static_cast<uint16_t>(Sequence(buffer) + 1);
  if (Sequence(packet) != expected) {
    if (last) {
      QV_LOG("[%s:%d]pack seq=%d!=%d,error----------2\n", expected, Sequence(packet));
    } else {
      QV_LOG("[%s:%d]pack seq=%d!=%d,error----------1\n", expected, Sequence(packet));
    }
    return false;
  }
  if (!Fits(data_len)) {
    // The frame cannot be whole: it is given up.
    QV_LOG("[%s:%d]frame index=%u,size=%d too big for the assembly buffer, dropped!\n",
           Index(buffer), count_ + data_len);
    assembling_ = false;
    return false;
  }
  buffer[8] = packet[8];
  buffer[9] = packet[9];
  memcpy(buffer + count_, packet + kHeaderSize, static_cast<size_t>(data_len));
  count_ += data_len;
  if (!last) return false;
  buffer[12] = kWhole;
  Finish(frame);
  QV_LOG("[%s:%d]recv frame audio=%d,index=%u,size=%d\n", frame->kind, frame->index,
         static_cast<int>(frame->length));
  return true;
}

void CReplayAssembler::Finish(Frame* frame) {
  unsigned char* buffer = buffer_.load(std::memory_order_relaxed);
  uint32_t index = Index(buffer);
  uint32_t key_index = index;
  if (Kind(buffer) == 0) {
    if (KeyFlag(buffer) == 1) last_key_index_ = index;
    key_index = last_key_index_;
  }
  unsigned char* trailer = buffer + count_;
  Put32(trailer, kTrailerMagic);
  Put32(trailer + 4, 0);
  Put32(trailer + 8, index);
  Put32(trailer + 12, key_index);
  count_ += kTrailerSize;
  frame->kind = Kind(buffer);
  frame->key = KeyFlag(buffer);
  frame->tick = Tick(buffer);
  frame->index = index;
  frame->data = reinterpret_cast<const char*>(buffer + kHeaderSize);
  frame->length = static_cast<unsigned long>(count_ - kHeaderSize);
  count_ = 0;
  assembling_ = false;
}
