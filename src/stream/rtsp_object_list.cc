#include "stream/rtsp_object_list.h"

CRTSPObjectList::CRTSPObjectList() {}

CRTSPObjectList::~CRTSPObjectList() { ReleaseAll(-1); }

int CRTSPObjectList::ReleaseAll(int) { return 0; }

int CRTSPObjectList::GetLastErrorCode() {
  int code = last_error_;
  last_error_ = 0;
  return code;
}

int CRTSPObjectList::SetAutoReconnect(long handle, int on) {
  if (handle == 0) auto_reconnect_default_ = on;
  return -8999989;  // no pulls yet: every handle is unknown
}

int CRTSPObjectList::Reconnect(long) { return -8999989; }

int CRTSPObjectList::SetMessageHWND(int, long) { return 0; }
