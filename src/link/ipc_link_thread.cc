#include "link/ipc_link_thread.h"

#include "link/ptz_control_class.h"

CIpcLinkThread::CIpcLinkThread(CPTZControlClass* session) : session_(session) {
  SetDebugClassName("CIpcLinkThread");
}

CIpcLinkThread::~CIpcLinkThread() { Kill(-1); }

int CIpcLinkThread::Thread() { return session_ != nullptr ? session_->LinkThread() : -1; }

int CIpcLinkThread::IsRunning() { return (CThreadClass::IsRunning() && !StopFlag()) ? 1 : 0; }

int CIpcLinkThread::Kill(int wait) {
  SetStopFlag();
  if (session_ != nullptr) session_->WakeLinkThread();
  return CThreadClass::Kill(wait);
}
