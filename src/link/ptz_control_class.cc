// Session set-up, link control and teardown.
#include "link/ptz_control_class.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ipc_link_thread.h"
#include "voice/audio_thread.h"
#include "transfer/file_transport_thread.h"

namespace {

const int kThreadStack = 0x100000;

unsigned AddressBits(const void* p) {
  return static_cast<unsigned>(reinterpret_cast<uintptr_t>(p));
}

// wait 0 only raises the stop flag; otherwise stops and joins.
void StopThread(CThreadClass* thread, int wait) {
  if (thread == nullptr) return;
  if (wait == 0) {
    thread->SetStopFlag();
  } else {
    thread->Kill(wait);
  }
}

}  // namespace

CPTZControlClass::CPTZControlClass(CPTZObjectList* owner, int auto_reconnect, int encrypt,
                                   const char* key)
    : owner_(owner), encrypt_(encrypt), key_(key != nullptr ? key : ""),
      auto_reconnect_(auto_reconnect) {
  // Without it the link thread turns every few milliseconds instead.
  wake_fd_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
}

CPTZControlClass::~CPTZControlClass() {
  Kill(-1);
  delete audio_send_thread_;
  delete file_send_thread_;
  delete link_thread_;
  if (wake_fd_ >= 0) close(wake_fd_);
  free(user_data_);
  delete[] upload_packet_;
  if (transfer_.file != nullptr) fclose(transfer_.file);
  aux_queue_.clear();
  ptz_queue_.clear();
  action_queue_.clear();
}

int CPTZControlClass::Kill(int wait) {
  QV_LOG("[%s:%d]%#x: m_pAudioSendThread\n", AddressBits(audio_send_thread_));
  talk_lock_.Lock();
  StopThread(audio_send_thread_, wait);
  talk_lock_.Unlock();
  QV_LOG("[%s:%d]%#x: m_pFileSendThread\n", AddressBits(file_send_thread_));
  StopThread(file_send_thread_, wait);
  QV_LOG("[%s:%d]%#x: m_pLinkThread\n", AddressBits(link_thread_));
  if (link_thread_ != nullptr) {
    // The stop flag first, then the wake-up: the thread leaves its receive
    // wait at once rather than at its next check.
    link_thread_->SetStopFlag();
    WakeLinkThread();
    if (wait != 0) link_thread_->Kill(wait);
  }
  return 0;
}

void CPTZControlClass::WakeLinkThread() {
  if (wake_fd_ < 0) return;
  uint64_t one = 1;
  ssize_t n = write(wake_fd_, &one, sizeof(one));
  (void)n;  // a full counter still wakes the thread
}

void CPTZControlClass::DrainWake() {
  uint64_t count = 0;
  ssize_t n = read(wake_fd_, &count, sizeof(count));
  (void)n;
}

int CPTZControlClass::SetParam(const char* host, long port, const char* user,
                               const char* password, int) {
  host_ = host != nullptr ? host : "";
  port_ = port;
  user_ = user != nullptr ? user : "";
  password_ = password != nullptr ? password : "";
  return 0;
}

int CPTZControlClass::StartThread() {
  if (link_thread_ == nullptr) {
    while ((link_thread_ = new (std::nothrow) CIpcLinkThread(this)) == nullptr) SleepUs(50);
    framing_.WatchThread(link_thread_);
  }
  if (link_thread_->IsRunning()) return 0;
  return link_thread_->Start(kThreadStack);
}

int CPTZControlClass::Reconnect() {
  if (link_thread_ == nullptr) return QV_E_NOT_LOGGED_IN;
  // The thread cannot stop and restart itself from inside its own callback.
  if (OnLinkThread()) return QV_E_THREAD;
  std::lock_guard<std::mutex> restart(restart_mu_);
  if (retired_) return QV_E_UNKNOWN_USER;
  link_thread_->SetStopFlag();
  WakeLinkThread();
  link_thread_->Kill(0);  // the thread object's Kill: stops and waits
  // A callback of the old thread may have logged the session out.
  if (retired_) return QV_E_UNKNOWN_USER;
  return link_thread_->Start(kThreadStack) == 0 ? 0 : QV_E_THREAD;
}

void CPTZControlClass::Pin() {
  std::lock_guard<std::mutex> lock(pin_mu_);
  ++pins_;
}

void CPTZControlClass::Unpin() {
  std::lock_guard<std::mutex> lock(pin_mu_);
  if (--pins_ == 0) pin_cv_.notify_all();
}

void CPTZControlClass::Shutdown() {
  retired_ = true;
  {
    std::lock_guard<std::mutex> restart(restart_mu_);
    Kill(-1);
  }
  std::unique_lock<std::mutex> lock(pin_mu_);
  pin_cv_.wait(lock, [this] { return pins_ == 0; });
}

int CPTZControlClass::SetAutoReconnect(int on) {
  auto_reconnect_ = on;
  return 0;
}

bool CPTZControlClass::OnLinkThread() const {
  pthread_t self = pthread_self();
  auto is_self = [self](const CThreadClass* t) {
    return t != nullptr && t->Handle() != 0 && pthread_equal(t->Handle(), self);
  };
  // The file send thread posts the events of its transfers as well.
  return is_self(link_thread_) || is_self(file_send_thread_);
}

std::string CPTZControlClass::SessionID() const {
  state_lock_.Lock();
  std::string id = session_id_;
  state_lock_.Unlock();
  return id;
}

std::string CPTZControlClass::AbilityList() const {
  state_lock_.Lock();
  std::string list = ability_list_;
  state_lock_.Unlock();
  return list;
}
