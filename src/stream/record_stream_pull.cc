#include "stream/record_stream_pull.h"

CRecordStreamPull::CRecordStreamPull(CRTSPObjectList* owner, const __STREAM_AV_PARAM& param)
    : CPullClass(owner, 1, 0) {
  SetDebugClassName("CRecordStreamPull");
  SetAvParam(param);
  SetMainStream(1);
}

CRecordStreamPull::~CRecordStreamPull() { Kill(-1); }

int CRecordStreamPull::OnCallBack(unsigned char*, int, int, double, int) { return 0; }
