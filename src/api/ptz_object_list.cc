// The session table: login, lookup with the lock held, logout, release,
// the inert talk group and the per-device forwarders.
#include "api/ptz_object_list.h"

#include <cstdio>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "api/snapshot_task.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"

CPTZObjectList::CPTZObjectList() { InitializeCriticalSection(&talk_lock_); }

CPTZObjectList::~CPTZObjectList() {
  // A snapshot task notices the stop within one of its 100 ms pauses.
  StopSnapTaskThreads(5000);
  ReleaseAll(-1);  // also waits for logouts still finishing
  EnterCriticalSection(&talk_lock_);
  talk_map_.clear();
  LeaveCriticalSection(&talk_lock_);
  DeleteCriticalSection(&talk_lock_);
}

long CPTZObjectList::Add(const char* ip, long port, const char* user, const char* password,
                         long loginMode, long encrypt, const char* key) {
  if (ip == nullptr || port < 1 || port > 65534) {  // 65535 is refused on purpose
    QV_LOG("[%s:%d]input param error!\n");
    last_error_ = QV_E_INVALID_ARG;
    return 0;
  }
  ++session_count_;
  char port_text[32];
  snprintf(port_text, sizeof(port_text), ":%ld", port);
  std::string address = std::string(ip) + port_text;
  QV_LOG("[%s:%d]nowipport=%s\n\n", address.c_str());

  CPTZControlClass* session = nullptr;
  while ((session = new (std::nothrow) CPTZControlClass(this, auto_reconnect_default_,
                                                        static_cast<int>(encrypt), key)) ==
         nullptr) {
    SleepUs(10);
  }
  session->SetParam(ip, port, user, password, static_cast<int>(loginMode));
  session->SetAddressText(address);
  QV_LOG("[%s:%d]%s:%u\n\n", session->Host().c_str(), static_cast<unsigned>(session->Port()));
  long id = InsertItem(session);
  if (id > 0) return id;
  QV_LOG("[%s:%d]Cannot added to array for %s:%u\n\n", session->Host().c_str(),
         static_cast<unsigned>(session->Port()));
  delete session;
  return 0;
}

long CPTZObjectList::InsertItem(CPTZControlClass* session) {
  table_lock_.Lock();
  long id = -1;
  for (int i = 0; i < kMaxSessions; ++i) {
    if (table_[i] != nullptr || winding_down_[i]) continue;
    table_[i] = session;
    id = i + 1;
    session->SetUserID(id);
    session->StartThread();
    QV_LOG("[%s:%d]Get pos %d for %s:%u\n\n", i, session->Host().c_str(),
           static_cast<unsigned>(session->Port()));
    break;
  }
  table_lock_.Unlock();
  return id;
}

CPTZControlClass* CPTZObjectList::FindObjectByID(long id, int detach) {
  table_lock_.Lock();
  CPTZControlClass* session = nullptr;
  // Every ID outside 1..128 names no session.
  if (id >= 1 && id <= kMaxSessions) {
    session = table_[id - 1];
    if (session != nullptr && detach != 0) {
      table_[id - 1] = nullptr;
      winding_down_[id - 1] = true;
      session->MarkRetired();
    }
  }
  if (session != nullptr) return session;
  QV_LOG("[%s:%d]cannot found userid %ld\n\n", id);
  for (int i = 0; i < kMaxSessions; ++i) {
    if (table_[i] == nullptr) continue;
    QV_LOG("[%s:%d]%d: userid %ld, %s:%u\n\n", i, reinterpret_cast<long>(table_[i]),
           table_[i]->Host().c_str(), static_cast<unsigned>(table_[i]->Port()));
  }
  table_lock_.Unlock();
  return nullptr;
}

void CPTZObjectList::ReleaseObjLock() { table_lock_.Unlock(); }

CPTZControlClass* CPTZObjectList::FindObjectByIpstring(const char* ipPort) {
  table_lock_.Lock();
  for (int i = 0; ipPort != nullptr && i < kMaxSessions; ++i) {
    CPTZControlClass* session = table_[i];
    if (session == nullptr || session->AddressText() != ipPort) continue;
    QV_LOG("[%s:%d]%s: Get pos %d, IP %s:%u\n\n", ipPort, i, session->Host().c_str(),
           static_cast<unsigned>(session->Port()));
    return session;
  }
  table_lock_.Unlock();
  return nullptr;
}

void CPTZObjectList::DestroySession(CPTZControlClass* session) {
  long id = session->UserID();
  if (!session->OnLinkThread()) {
    session->Shutdown();
    delete session;
    FreeEntry(id);
    return;
  }
  // Called from one of the session's own callbacks: its link thread cannot
  // wait for itself. It is asked to stop, and a helper waits and deletes;
  // clean-up and the registry's end wait for the helper.
  session->Kill(0);
  {
    std::lock_guard<std::mutex> lock(pending_mu_);
    ++pending_logouts_;
  }
  try {
    std::thread([this, session, id] {
      session->Shutdown();
      delete session;
      FreeEntry(id);
      std::lock_guard<std::mutex> lock(pending_mu_);
      if (--pending_logouts_ == 0) pending_cv_.notify_all();
    }).detach();
  } catch (const std::system_error&) {
    // The session stops by itself; its entry stays taken.
    QV_LOG("[%s:%d]no thread to finish the logout of %s\n", session->AddressText().c_str());
    std::lock_guard<std::mutex> lock(pending_mu_);
    if (--pending_logouts_ == 0) pending_cv_.notify_all();
  }
}

void CPTZObjectList::FreeEntry(long id) {
  if (id < 1 || id > kMaxSessions) return;
  table_lock_.Lock();
  winding_down_[id - 1] = false;
  table_lock_.Unlock();
}

int CPTZObjectList::PendingLogouts() {
  std::lock_guard<std::mutex> lock(pending_mu_);
  return pending_logouts_;
}

void CPTZObjectList::WaitForPendingLogouts() {
  // A link thread cannot wait here: the logout pending may be its own.
  if (CPTZControlClass::OnAnyLinkThread()) return;
  std::unique_lock<std::mutex> lock(pending_mu_);
  pending_cv_.wait(lock, [this] { return pending_logouts_ == 0; });
}

int CPTZObjectList::Delete(long id) {
  CPTZControlClass* session = FindObjectByID(id, 1);
  if (session == nullptr) return QV_E_UNKNOWN_USER;
  ReleaseObjLock();
  --session_count_;
  RemoveTalk(id);
  DestroySession(session);
  return 0;
}

int CPTZObjectList::ReleaseAll(int mode) {
  search_.StopSearch();
  std::vector<CPTZControlClass*> detached;
  table_lock_.Lock();
  for (CPTZControlClass* session : table_) {
    if (session != nullptr) session->Kill(0);
  }
  if (mode != 0) {
    for (int i = 0; i < kMaxSessions; ++i) {
      if (table_[i] == nullptr) continue;
      detached.push_back(table_[i]);
      table_[i]->MarkRetired();
      table_[i] = nullptr;
      winding_down_[i] = true;
    }
  }
  table_lock_.Unlock();
  // The sessions are waited for outside the lock, so that a callback of a
  // stopping session may still call into the registry.
  for (CPTZControlClass* session : detached) DestroySession(session);
  search_.StopSearch();
  if (mode != 0) WaitForPendingLogouts();
  return 0;
}

int CPTZObjectList::SetAutoReconnect(long id, int value) {
  if (id == 0) {
    auto_reconnect_default_ = value;
    return 0;
  }
  return Forward(id, [value](CPTZControlClass* s) { return s->SetAutoReconnect(value); });
}

int CPTZObjectList::SetMessageHWND(int, long) { return 0; }

long CPTZObjectList::AudioFrameData(char* data, long length) {
  EnterCriticalSection(&talk_lock_);
  for (auto& member : talk_map_) member.second->AudioFrameData(data, length);
  LeaveCriticalSection(&talk_lock_);
  return 0;
}

long CPTZObjectList::OnError(long, char*) {
  EnterCriticalSection(&talk_lock_);
  LeaveCriticalSection(&talk_lock_);
  return 0;
}

int CPTZObjectList::AddTalk(long) { return 0; }

int CPTZObjectList::StartTalk(int, int, int, int) { return 0; }

int CPTZObjectList::StopTalk() { return 0; }

int CPTZObjectList::RemoveTalk(long id) {
  EnterCriticalSection(&talk_lock_);
  CPTZControlClass* member = nullptr;
  auto found = talk_map_.find(id);
  if (found != talk_map_.end()) {
    member = found->second;
    talk_map_.erase(found);
  }
  LeaveCriticalSection(&talk_lock_);
  // AddTalk never inserts, so no ID is ever found.
  return member != nullptr ? member->StopAudio() : QV_E_UNKNOWN_USER;
}

template <typename Op>
int CPTZObjectList::Forward(long id, Op op) {
  CPTZControlClass* session = FindObjectByID(id, 0);
  if (session == nullptr) return QV_E_UNKNOWN_USER;
  int ret = op(session);
  ReleaseObjLock();
  return ret;
}

int CPTZObjectList::GetReplayAblity(long id) {
  return Forward(id, [](CPTZControlClass* s) { return s->GetReplayAblity(); });
}

int CPTZObjectList::ControlPlay(long id, int mode, long action, long parameter) {
  return Forward(id, [=](CPTZControlClass* s) { return s->ControlPlay(action, mode, parameter); });
}

int CPTZObjectList::PlayDeviceFile(long, char*) { return 0; }

int CPTZObjectList::PlayDeviceFile(long id, long time) {
  return Forward(id, [=](CPTZControlClass* s) { return s->PlayFile(time); });
}

int CPTZObjectList::StartAudio(long id, int audio_type, int sample_rate, int channels) {
  return Forward(id, [=](CPTZControlClass* s) {
    return s->StartAudio(audio_type, sample_rate, channels);
  });
}

int CPTZObjectList::StopAudio(long id) {
  return Forward(id, [](CPTZControlClass* s) { return s->StopAudio(); });
}

int CPTZObjectList::InputAudioData(long id, const char* data, int length) {
  return Forward(id, [=](CPTZControlClass* s) {
    return static_cast<int>(s->AudioFrameData(data, length));
  });
}

int CPTZObjectList::GetUserData(unsigned long id, char* buffer, int* length) {
  return Forward(static_cast<long>(id),
                 [=](CPTZControlClass* s) { return s->GetUserData(buffer, length); });
}

int CPTZObjectList::SetUserData(unsigned long id, char* data, int length) {
  return Forward(static_cast<long>(id),
                 [=](CPTZControlClass* s) { return s->SetUserData(data, length); });
}

int CPTZObjectList::CreateIFrame(unsigned long id, int stream) {
  return Forward(static_cast<long>(id), [=](CPTZControlClass* s) { return s->CreateIFrame(stream); });
}

// The restart waits for the old link thread, whose last callbacks may call
// into the registry: the lock is let go first and the session pinned.
int CPTZObjectList::Reconnect(long id) {
  CPTZControlClass* session = FindObjectByID(id, 0);
  if (session == nullptr) return QV_E_UNKNOWN_USER;
  session->Pin();
  ReleaseObjLock();
  int ret = session->Reconnect();
  session->Unpin();
  return ret;
}

int CPTZObjectList::GetDVRConfig(long id, unsigned long code, long channel, void* body,
                                 unsigned long size, unsigned long* returned) {
  return Forward(id, [=](CPTZControlClass* s) {
    return s->GetDVRConfig(code, channel, body, size, returned);
  });
}

int CPTZObjectList::SetDVRConfig(long id, unsigned long code, long channel, const void* body,
                                 unsigned long size) {
  return Forward(id, [=](CPTZControlClass* s) { return s->SetDVRConfig(code, channel, body, size); });
}

int CPTZObjectList::SendEncryptRawData(long id, const char* message) {
  return Forward(id, [=](CPTZControlClass* s) { return s->SendEncryptRawData(message); });
}

int CPTZObjectList::SystemControl(long id, unsigned long code, int flag, const char* body) {
  return Forward(id, [=](CPTZControlClass* s) { return s->SystemControl(code, flag, body); });
}

int CPTZObjectList::WriteAUXString(long id, const char* message) {
  return Forward(id, [=](CPTZControlClass* s) { return s->WriteAUXString(message, 0); });
}

int CPTZObjectList::WriteAUXStringEx(long id, char* type, long code, long flag, const char* body) {
  return Forward(id, [=](CPTZControlClass* s) { return s->WriteAUXStringEx(type, code, flag, body); });
}

int CPTZObjectList::WriteAUXStringEx1(long id, const char* data, int length) {
  return Forward(id, [=](CPTZControlClass* s) { return s->WriteAUXStringEx1(data, length); });
}

int CPTZObjectList::PTZControlEx(long id, const char* xml) {
  return Forward(id, [=](CPTZControlClass* s) { return s->WritePTZString(xml); });
}

int CPTZObjectList::SnapPic(long id, int stream, int quality, const char* path, int timeout_ms) {
  return Forward(id, [=](CPTZControlClass* s) {
    return s->SnapPic(stream, quality, path, timeout_ms);
  });
}

int CPTZObjectList::ExchangeEncrypt(long id) {
  return Forward(id, [](CPTZControlClass* s) { return s->ExchangeEncrypt(); });
}

int CPTZObjectList::UploadFile(long id, long type, const char* path) {
  return Forward(id, [=](CPTZControlClass* s) { return s->UploadFile(type, path); });
}

int CPTZObjectList::DownloadFile(long id, long type, const char* remote, const char* local) {
  return Forward(id, [=](CPTZControlClass* s) { return s->DownloadFile(type, remote, local); });
}

int CPTZObjectList::GetProcessPos(long id, long direction) {
  return Forward(id, [=](CPTZControlClass* s) { return s->GetDownloadPos(direction); });
}

int CPTZObjectList::StopUpload(long id) {
  return Forward(id, [](CPTZControlClass* s) { return s->StopDownload(1); });
}
