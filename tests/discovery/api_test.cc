// The exported discovery functions' answers that need no network: argument
// checks, buffer sizes and settings.
#include <cstring>

#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "quorvel/quorvel.h"

namespace {

TEST(DiscoveryApi, BufferSizeAnswers) {
  char buffer[64];
  EXPECT_EQ(IP_NET_DVR_GetOneIPAddress(nullptr, 0), 33);
  EXPECT_EQ(IP_NET_DVR_GetOneIPAddress(buffer, 32), QV_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(IP_NET_DVR_GetNetworkParam(0, nullptr, 0), 33);
  EXPECT_EQ(IP_NET_DVR_GetNetworkParam(6, buffer, sizeof(buffer)), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_GetNetworkParam(-1, buffer, sizeof(buffer)), QV_E_INVALID_ARG);
  // The second address field is never filled.
  memset(buffer, 'x', sizeof(buffer));
  EXPECT_EQ(IP_NET_DVR_GetNetworkParam(0, buffer, 1), 0);
  EXPECT_EQ(buffer[0], '\0');
  EXPECT_EQ(IP_NET_DVR_GetIPCInfoXML(0, nullptr, 0), QV_E_INVALID_ARG);
}

TEST(DiscoveryApi, AnEmptyTableAnswersEveryIndexWithInvalidArgument) {
  IPC_ENTRY entry;
  EXPECT_EQ(IP_NET_DVR_GetSearchIPCCount(), 0);
  for (long index : {-1L, 0L, 99L, 100L}) {
    EXPECT_EQ(IP_NET_DVR_GetIPCInfo(index, &entry), QV_E_INVALID_ARG) << index;
    EXPECT_EQ(IP_NET_DVR_ModifyIPCByIndex(index, &entry), QV_E_INVALID_ARG) << index;
    EXPECT_EQ(IP_NET_DVR_ModifyIPCXML(index, "<LANConfig/>"), QV_E_INVALID_ARG) << index;
  }
  EXPECT_EQ(IP_NET_DVR_GetIPCInfo(0, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_SearchIPCReleaseInfo(), 0);
  EXPECT_EQ(IP_NET_DVR_ModifyIPCBySN("SN", nullptr, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_StopSearchIPC(), 0);  // nothing to stop
}

TEST(DiscoveryApi, SearchSettings) {
  CCSearchIPC& search = ObjectPtzList.Search();
  EXPECT_EQ(search.SearchInterval(), 3000u);
  EXPECT_EQ(search.GetInterval(), 1000u);  // until a search starts
  EXPECT_EQ(IP_NET_DVR_SetSearchInterval(50), 0);
  EXPECT_EQ(search.SearchInterval(), 200u);
  EXPECT_EQ(IP_NET_DVR_SetSearchInterval(1500), 0);
  EXPECT_EQ(search.SearchInterval(), 1500u);
  EXPECT_EQ(IP_NET_DVR_Set_Search_ROOTNAME("  VENDOR_ROOT \t"), 0);
  EXPECT_EQ(search.SearchRootName(), "VENDOR_ROOT");
  EXPECT_EQ(IP_NET_DVR_Set_Search_ROOTNAME(nullptr), 0);
  EXPECT_EQ(search.SearchRootName(), "");
}

}  // namespace
