// CRecordStreamPull: a pull without a stream source, fed frame by frame by
// the host (IP_NET_DVR_InputRecordStream) and recorded like a live stream.
// Its frames go only into the recording, not to any real-data callback.
#pragma once

#include "stream/pull_class.h"

class CRecordStreamPull : public CPullClass {
 public:
  CRecordStreamPull(CRTSPObjectList* owner, const __STREAM_AV_PARAM& param);
  ~CRecordStreamPull() override;

  // No delivery to callbacks. 0.
  int OnCallBack(unsigned char* data, int length, int flag, double timestamp, int type) override;
};
