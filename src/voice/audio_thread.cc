#include "voice/audio_thread.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"
#include "quorvel/quorvel.h"
#include "stream/ring_buffer.h"
#include "voice/talk_packet.h"

namespace {

const int kRingSlots = 30;
const unsigned long kBacklogCheckMs = 500;
const int kBacklogLimit = 10;
const int kBacklogKeep = 5;
const int kIdleWaitMs = 100;

}  // namespace

CAudioThread::CAudioThread(CPTZControlClass* session) : session_(session) {
  for (;;) {
    ring_ = new (std::nothrow) CRingBuffer(kRingSlots);
    if (ring_ != nullptr && ring_->GetCapacity() == kRingSlots) break;
    delete ring_;
    SleepUs(10);
  }
  SetDebugClassName("CAudioThread");
}

CAudioThread::~CAudioThread() {
  Kill(-1);
  delete ring_;
}

int CAudioThread::Kill(int wait) {
  {
    std::lock_guard<std::mutex> lock(wake_mu_);
    frame_waiting_ = true;
  }
  wake_.notify_all();
  return CThreadClass::Kill(wait);
}

long CAudioThread::AudioFrameData(const char* data, long length) {
  if (length == 0) return 0;
  if (data == nullptr || length < 0 || length > kMaxFrame) return QV_E_INVALID_ARG;
  if (ring_->Write(reinterpret_cast<const unsigned char*>(data), static_cast<int>(length), 0,
                   static_cast<double>(GetTickCount())) != 0) {
    return QV_E_NO_MEMORY;
  }
  {
    std::lock_guard<std::mutex> lock(wake_mu_);
    frame_waiting_ = true;
  }
  wake_.notify_one();
  return length;
}

int CAudioThread::Waiting() const { return ring_->GetReadCount(); }

void CAudioThread::WaitForFrame() {
  std::unique_lock<std::mutex> lock(wake_mu_);
  wake_.wait_for(lock, std::chrono::milliseconds(kIdleWaitMs),
                 [this] { return frame_waiting_; });
  frame_waiting_ = false;
}

void CAudioThread::DropBacklog(unsigned char* scratch) {
  int waiting = ring_->GetReadCount();
  if (waiting <= kBacklogLimit) return;
  int flag = 0;
  double ts = 0;
  for (int i = 0; i < waiting - kBacklogKeep; ++i) ring_->Read(scratch, kMaxFrame, &flag, &ts);
}

int CAudioThread::Thread() {
  unsigned char* frame = nullptr;
  while ((frame = new (std::nothrow) unsigned char[kMaxFrame]) == nullptr) {
    if (!IsRunning()) return -1;
    SleepUs(10);
  }
  srand(static_cast<unsigned>(GetTickCount()));
  session_->SetAudioSendTick(GetTickCount());
  unsigned long checked = GetTickCount();
  while (IsRunning()) {
    if (GetTickCount() - checked > kBacklogCheckMs) {
      checked = GetTickCount();
      DropBacklog(frame);
    }
    int flag = 0;
    double ts = 0;
    int len = ring_->Read(frame, kMaxFrame, &flag, &ts);
    if (len < 0) {
      QV_LOG("[%s:%d]%s buffer size =%d  error,skip it!\n", "CAudioThread", len);
      continue;
    }
    if (len == 0) {
      WaitForFrame();
      continue;
    }
    std::unique_ptr<TalkPacket> packet(new (std::nothrow) TalkPacket);
    char* copy = new (std::nothrow) char[static_cast<size_t>(len) + 4];
    if (!packet || copy == nullptr) {
      delete[] copy;
      continue;  // the frame is lost; the next may find memory
    }
    memcpy(copy, frame, static_cast<size_t>(len));
    packet->data.reset(copy);
    packet->length = len;
    packet->tick = GetTickCount();
    packet->sequence = sequence_++;
    packet->index = index_++;
    if (session_->TalkAudio().Append(std::move(packet))) session_->WakeLinkThread();
    session_->SetAudioSendTick(GetTickCount());
  }
  delete[] frame;
  return 0;
}
