// Exported discovery functions: search, the table of found cameras, remote
// changes and the free-address search. All act on the registry's one
// CCSearchIPC.
#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "discovery/search_ipc.h"
#include "quorvel/quorvel.h"

namespace {

CCSearchIPC& Search() { return ObjectPtzList.Search(); }

}  // namespace

QV_API long IP_NET_DVR_SetSearchInterval(unsigned int interval_ms) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(interval_ms));
  Search().SetSearchInterval(interval_ms);
  return 0;
}

QV_API long IP_NET_DVR_Set_Search_ROOTNAME(const char* name) {
  QV_LOG("[%s:%d]%s (%s)\n", __FUNCTION__, name != nullptr ? name : "");
  Search().SetSearchRootName(name);
  return 0;
}

QV_API long IP_NET_DVR_StartSearchIPC(void) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return Search().StartSearch(Search().SearchInterval());
}

QV_API long IP_NET_DVR_StopSearchIPC(void) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return Search().StopSearch();
}

QV_API long IP_NET_DVR_GetSearchIPCCount(void) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return Search().GetIPCCount();
}

QV_API long IP_NET_DVR_GetIPCInfo(long index, IPC_ENTRY* entry) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(index));
  return Search().GetIPCInfo(index, entry);
}

QV_API long IP_NET_DVR_SearchIPCReleaseInfo(void) {
  QV_LOG("[%s:%d]%s()\n", __FUNCTION__);
  return Search().ReleaseIPCInfo();
}

QV_API long IP_NET_DVR_ModifyIPCBySN(const char* serial, LANConfig* lan,
                                     MediaStreamConfig* stream) {
  QV_LOG("[%s:%d]%s (%s)\n", __FUNCTION__, serial != nullptr ? serial : "");
  return Search().ModifyIPCbySN(serial, lan, stream, 0);
}

QV_API long IP_NET_DVR_ModifyIPCByIndex(long index, IPC_ENTRY* entry) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(index));
  return Search().ModifyIPCbyIndex(index, entry);
}

QV_API long IP_NET_DVR_ModifyIPCXML(long index, const char* xml) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(index));
  return Search().ModifyIPCXML(index, xml);
}

QV_API long IP_NET_DVR_GetIPCInfoXML(long index, char* buffer, int size) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(index));
  return Search().GetIPCInfoXML(index, buffer, size);
}

QV_API long IP_NET_DVR_GetNetworkParam(int index, char* buffer, int size) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, index);
  return Search().GetNetworkParam(index, buffer, size);
}

QV_API long IP_NET_DVR_RebootIPCBySN(const char* serial) {
  QV_LOG("[%s:%d]%s (%s)\n", __FUNCTION__, serial != nullptr ? serial : "");
  return Search().RebootbySN(serial);
}

QV_API long IP_NET_DVR_RestoreIPCBySN(const char* serial) {
  QV_LOG("[%s:%d]%s (%s)\n", __FUNCTION__, serial != nullptr ? serial : "");
  return Search().RestorebySN(serial);
}

QV_API long IP_NET_DVR_GetOneIPAddress(char* buffer, int size) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, size);
  return Search().GetOneIPAddress(buffer, size);
}
