// The link thread: connection rounds, the main loop (login watch, one
// queued request per turn, heartbeat, receive, heartbeat watch) and the
// thread's exit.
#include <poll.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/time_scale.h"
#include "link/ipc_link_thread.h"
#include "link/message_readers.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"
#include "voice/audio_thread.h"
#include "transfer/file_transport_thread.h"

namespace {

const int kReportedErrorCode = 100863;  // printed where an error code is expected
const int kRequestBufferSize = 10240;
const int kLinkTimeoutMs = 5000;
const int kMaxLoginResends = 10;
const unsigned long kLoginResendMs = 5000;
const unsigned long kHeartbeatMs = 10000;
const unsigned long kHeartbeatWatchMs = 20000;
const unsigned long kFirstReconnectPauseMs = 10;
const int kReceiveSliceMs = 5;   // the turn without a wake-up descriptor
const int kBusyWaitMs = 300;     // longest receive wait while talk or a transfer runs

enum Origin { kFromAction = 1, kFromAux = 2, kFromPtz = 3 };

bool Pop(std::list<CAuxMsgBuffer>& queue, CBkMutex& lock, CAuxMsgBuffer* out) {
  lock.Lock();
  bool found = !queue.empty();
  if (found) {
    *out = queue.front();
    queue.pop_front();
  }
  lock.Unlock();
  return found;
}

}  // namespace

namespace {
thread_local bool t_link_thread = false;
}  // namespace

bool CPTZControlClass::OnAnyLinkThread() { return t_link_thread; }

bool CPTZControlClass::Running() { return link_thread_ != nullptr && link_thread_->IsRunning(); }

long CPTZControlClass::PostStatus(long code, const char* fmt, ...) {
  char text[1024];
  va_list ap;
  va_start(ap, fmt);
  vsnprintf(text, sizeof(text), fmt, ap);
  va_end(ap);
  status_text_ = text;
  return PostStatusMsg(code, text);
}

int CPTZControlClass::LinkThread() {
  t_link_thread = true;
  char label[300];
  snprintf(label, sizeof(label), "ipc[%s:%d]", host_.c_str(), static_cast<int>(port_));
  log_label_ = label;
  framing_.SetDeviceName(log_label_);
  QV_LOG("[%s:%d]%s LinkThread start ...", log_label_.c_str());
  last_recv_tick_ = GetTickCount();
  reconnect_pause_ = kFirstReconnectPauseMs;
  replay_ability_ = -1;
  char* request = nullptr;
  while ((request = new (std::nothrow) char[kRequestBufferSize]) == nullptr) SleepUs(10);

  while (Running()) {
    talk_lock_.Lock();  // StopAudio may release the sender meanwhile
    if (audio_send_thread_ != nullptr && audio_send_thread_->IsRunning()) {
      audio_send_thread_->Kill(-1);
    }
    talk_lock_.Unlock();
    link_state_ = kNotConnected;
    RoundResult round = ConnectPhase(request, kRequestBufferSize);
    if (round == kRoundStop) break;
    if (round == kRoundReady) {
      MainLoop(request, kRequestBufferSize);
      if (!EndRound()) break;
    }
    link_thread_->SleepThread(static_cast<int>(reconnect_pause_), 100);
  }

  delete[] request;
  ThreadExit();
  return 0;
}

void CPTZControlClass::MainLoop(char* request, int request_size) {
  while (Running()) {
    bool sent = false;
    if (link_state_ != kLoggedIn && !LoginWatch(request, request_size, &sent)) return;
    if (link_state_ >= kLoggedIn) {
      TalkUpkeep();
      if (!SendOneRequest(&sent)) return;
      if (!sent && GetTickCount() - heartbeat_tick_ > ScaledMs(kHeartbeatMs) &&
          !Heartbeat(request, request_size)) {
        return;
      }
    }
    SendTalkPackets();
    FileTransferUpkeep(sent);
    if (!ReceiveTurn()) return;
    long silent = static_cast<long>(heartbeat_tick_ - last_recv_tick_);
    if (silent > static_cast<long>(ScaledMs(kHeartbeatWatchMs))) {
      CloseSocket();
      PostStatus(EVENT_CONNECTFAILED,
                 "%s: no heartbeat long time, last_heartbeat_tick:%lu "
                 "m_nLastRecvHeartBeatTick:%lu ",
                 log_label_.c_str(), heartbeat_tick_, last_recv_tick_);
      return;
    }
  }
}

bool CPTZControlClass::LoginWatch(char* request, int request_size, bool* sent) {
  if (GetTickCount() - login_send_tick_ <= ScaledMs(kLoginResendMs)) return true;
  if (login_resends_ >= kMaxLoginResends) {
    PostStatus(EVENT_LOGIN_HEARTBEAT_LOST,
               "%s Not got auth response after 10 times resend,connection need to be reset!",
               log_label_.c_str());
    return false;
  }
  if (!SendLogin(request, request_size, false)) {
    PostStatus(EVENT_LOGINFAILED, "%s: send auth request failed, error code =%d",
               log_label_.c_str(), kReportedErrorCode);
    return false;
  }
  login_send_tick_ = GetTickCount();
  ++login_resends_;
  QV_LOG("[%s:%d]%s: send auth message again, count=%d\n\n", log_label_.c_str(), login_resends_);
  *sent = true;
  return true;
}

bool CPTZControlClass::PopRequest(CAuxMsgBuffer* out, int* origin) {
  if (Pop(action_queue_, action_lock_, out)) {
    *origin = kFromAction;
  } else if (Pop(ptz_queue_, ptz_lock_, out)) {
    *origin = kFromPtz;
  } else if (Pop(aux_queue_, aux_lock_, out)) {
    *origin = kFromAux;
    QV_LOG("[%s:%d]get a aux msg\n");
  } else {
    return false;
  }
  return true;
}

bool CPTZControlClass::SendOneRequest(bool* sent) {
  CAuxMsgBuffer msg;
  int origin = 0;
  if (!PopRequest(&msg, &origin)) return true;
  const char* label = log_label_.c_str();
  QV_LOG("[%s:%d]%s from =%d\n\n", label, origin);
  QV_LOG("[%s:%d]%s:%d write xml\n", label, msg.length());
  *sent = true;
  // An empty request is a bare header; a negative length cannot be
  // followed by its payload and counts as a short send.
  int ret = framing_.send_with_header(sock_, msg.c_bytes(), msg.length(), kLinkTimeoutMs,
                                      msg.encrypted());
  if (ret != msg.length() || (msg.length() > 0 && msg.c_bytes() == nullptr)) {
    // This line carries no function and line prefix.
    DebugLogLine(__FUNCTION__, __FILE__, __LINE__, "%s: send request failed, error code =%d",
                 label, kReportedErrorCode);
    // Empty texts, not formatted: the last formatted text stays.
    PostStatusMsg(EVENT_SENDPTZERROR, "");
    return false;
  }
  PostStatusMsg(EVENT_SENDPTZOK, "");
  return true;
}

bool CPTZControlClass::Heartbeat(char* request, int request_size) {
  int len = MakeXMLRequest(request, request_size, "AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT",
                           "0", "");
  if (framing_.send_with_header(sock_, request, len, kLinkTimeoutMs, 0) != len) {
    PostStatus(EVENT_SOCKETERROR, "%s: send heartbeat data failed, error code =%d",
               log_label_.c_str(), kReportedErrorCode);
    return false;
  }
  QV_LOG("[%s:%d]%s: send heartbeat data ok!\n", log_label_.c_str());
  heartbeat_tick_ = GetTickCount();
  return true;
}

bool CPTZControlClass::RequestsQueued() {
  const std::pair<std::list<CAuxMsgBuffer>*, CBkMutex*> queues[] = {
      {&action_queue_, &action_lock_}, {&ptz_queue_, &ptz_lock_}, {&aux_queue_, &aux_lock_}};
  for (const auto& q : queues) {
    q.second->Lock();
    bool any = !q.first->empty();
    q.second->Unlock();
    if (any) return true;
  }
  return false;
}

int CPTZControlClass::TurnWaitMs() {
  if (wake_fd_ < 0) return kReceiveSliceMs;
  if (RequestsQueued()) return 0;
  // The heartbeat watch ends the link right after this receive.
  if (static_cast<long>(heartbeat_tick_ - last_recv_tick_) >
      static_cast<long>(ScaledMs(kHeartbeatWatchMs))) {
    return 0;
  }
  // The heartbeat (logged in) or the login resend (before) is due once more
  // than its interval has passed.
  unsigned long due = link_state_ == kLoggedIn ? heartbeat_tick_ + ScaledMs(kHeartbeatMs)
                                               : login_send_tick_ + ScaledMs(kLoginResendMs);
  long left = static_cast<long>(due + 1 - GetTickCount());
  if (left <= 0) return 0;
  // Talk and transfers keep timers of their own (start repeat, silence,
  // re-announcement, stall): the turn comes round often enough for them.
  // A stop needs no turn: it always writes the wake-up descriptor.
  if (left > kBusyWaitMs && (talk_.requested != 0 || TransferNeedsTurns())) return kBusyWaitMs;
  return static_cast<int>(left);
}

bool CPTZControlClass::TransferNeedsTurns() {
  transfer_lock_.Lock();
  bool busy = transfer_.Pending() || transfer_.InLink();
  transfer_lock_.Unlock();
  return busy;
}

bool CPTZControlClass::ReceiveTurn() {
  // The socket and the wake-up descriptor: queued work, a stop or the
  // camera's data end the wait.
  struct pollfd pfd[2];
  pfd[0].fd = sock_;
  pfd[0].events = POLLIN | POLLPRI;
  pfd[0].revents = 0;
  pfd[1].fd = wake_fd_;
  pfd[1].events = POLLIN;
  pfd[1].revents = 0;
  int n = poll(pfd, wake_fd_ >= 0 ? 2 : 1, TurnWaitMs());
  if (n < 0) {
    if (errno == EINTR) return true;
    PostStatus(EVENT_SOCKETERROR, "%s: select failed, error code=%d", log_label_.c_str(),
               kReportedErrorCode);
    return false;
  }
  if (wake_fd_ >= 0 && (pfd[1].revents & POLLIN) != 0) DrainWake();
  if (pfd[0].revents == 0) return true;
  // Urgent data is the exception; a closed or reset peer reads as readable
  // (the receive then fails).
  if ((pfd[0].revents & POLLPRI) != 0 || (pfd[0].revents & (POLLIN | POLLERR | POLLHUP)) == 0) {
    PostStatus(EVENT_SOCKETERROR, "%s send auth request failed, error code =%d",
               log_label_.c_str(), kReportedErrorCode);
    return false;
  }
  last_recv_tick_ = GetTickCount();
  char* payload = nullptr;
  int len = framing_.recv_with_header(sock_, &payload, kLinkTimeoutMs);
  if (len <= 0) {
    delete[] payload;
    QV_LOG("[%s:%d]ptzcontrolclass.cpp recv_with_head :failed len<=0\n\n");
    if (len == CPacketFraming::kSocketError) {
      // Reports the last status text again, as it stands.
      std::string text = status_text_;
      PostStatusMsg(EVENT_SOCKETERROR, text.c_str());
      return false;
    }
    return true;
  }
  payload[len] = '\0';
  bool go_on = Dispatch(payload, len);
  delete[] payload;
  return go_on;
}

bool CPTZControlClass::EndRound() {
  const char* label = log_label_.c_str();
  QV_LOG("[%s:%d]%s closesocket,exit login connect loop....\n\n", label);
  CloseSocket();
  if (!Running()) {
    QV_LOG("[%s:%d]%s exit login connect loop for thread is not running!\n\n", label);
    return true;  // the outer loop sees the stop itself
  }
  if (!auto_reconnect_) {
    QV_LOG("[%s:%d]%s closesocket,exit login connect loop for not allow auto recconect\n\n",
           label);
    return false;
  }
  PostStatus(EVENT_LOGIN_RECONNECT, "%s login thread reconnecting...\n", label);
  return true;
}

void CPTZControlClass::ThreadExit() {
  if (file_send_thread_ != nullptr) file_send_thread_->Kill(-1);
  TalkAtThreadExit();
  talk_lock_.Lock();
  if (audio_send_thread_ != nullptr) audio_send_thread_->Kill(-1);
  talk_lock_.Unlock();
  CloseSocket();
  link_state_ = kNotConnected;
  PostStatus(EVENT_LOGOUT_FINISH, "%s login thread exit.\n", log_label_.c_str());
  QV_LOG("[%s:%d]%s login thread exit...\n\n", log_label_.c_str());
}
