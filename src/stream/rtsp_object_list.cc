#include "stream/rtsp_object_list.h"

CRTSPObjectList::CRTSPObjectList() {}

CRTSPObjectList::~CRTSPObjectList() { ReleaseAll(-1); }

int CRTSPObjectList::ReleaseAll(int) { return 0; }

int CRTSPObjectList::GetLastErrorCode() {
  int code = last_error_;
  last_error_ = 0;
  return code;
}

int CRTSPObjectList::SetMessageHWND(int, long) { return 0; }
