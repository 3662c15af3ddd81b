// The session table on its own: unknown IDs, the inert talk group and the
// composition of PTZ reply codes.
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"
#include "support/scratch.h"

namespace {

// Every ID outside 1..128, and every free one, is unknown to each exported
// function; none of them leaves the table's lock taken (the next call would
// block on it).
TEST(RegistryTable, UnknownIdsAreAnsweredAndLogged) {
  char buffer[8];
  int length = sizeof(buffer);
  for (long id : {0L, -1L, 129L, 1000L, LONG_MIN, LONG_MAX, 42L}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_UP, 1, 1), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_RebootDVR(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_GetDVRConfig(id, 305, 0, nullptr, 0, nullptr), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_GetUserData(id, buffer, &length), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_SnapPic(id, 0, 50, "/tmp/x.jpg", 0), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_EXCHANGE_Encrypt(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_Reconnect(id), QV_E_UNKNOWN_USER);
  }
  EXPECT_EQ(ObjectPtzList.FindObjectByIpstring("127.0.0.1:1"), nullptr);
  EXPECT_EQ(IP_NET_DVR_SetAutoReconnect(0, 1), 0);
  // Logout of ID 0 writes only its opening line.
  DebugLogSwitch(1);
  std::string log = testsupport::CapturedStdout([] {
    EXPECT_EQ(IP_NET_DVR_Logout(0), 0);
    EXPECT_EQ(IP_NET_DVR_Logout(9), QV_E_UNKNOWN_USER);
  });
  DebugLogSwitch(0);
  EXPECT_NE(log.find("IP_NET_DVR_Logout(0) begin...\n"), std::string::npos);
  EXPECT_EQ(log.find("IP_NET_DVR_Logout(0) end,use tick="), std::string::npos);
  EXPECT_NE(log.find("cannot found userid 9\n\n"), std::string::npos);
  EXPECT_NE(log.find("IP_NET_DVR_Logout(9) end,use tick="), std::string::npos);
  EXPECT_EQ(IP_NET_DVR_LogoutAll(), 0);
}

TEST(RegistryTable, TalkGroupStaysEmpty) {
  CPTZObjectList registry;
  EXPECT_EQ(registry.AddTalk(1), 0);
  EXPECT_EQ(registry.RemoveTalk(1), QV_E_UNKNOWN_USER);
  EXPECT_EQ(registry.StartTalk(1, 2, 3, 4), 0);
  EXPECT_EQ(registry.StopTalk(), 0);
  char frame[4] = {1, 2, 3, 4};
  EXPECT_EQ(registry.AudioFrameData(frame, 4), 0);
}

long g_code = 0;
std::string g_text;
long Aux(long, long code, const char* xml, void*) {
  g_code = code;
  g_text = xml;
  return 8;
}

// (The AUX code composition is checked end to end with the emulated camera.)
TEST(RegistryTable, PtzReplyCodeKeepsTheLow24BitsOfTheCodeAndTheHigh8OfTheFlag) {
  CPTZObjectList registry;
  EXPECT_EQ(registry.PostAuxResponseMsg(nullptr, 1, 0, "x"), -1);  // no callback
  registry.SetAUXResponseCallBack(Aux, nullptr);
  registry.PostPTZResponseMsg(nullptr, 0x7000001020L, 0x01000000L, "y");
  EXPECT_EQ(g_code, 0x01001020L);
  EXPECT_EQ(g_text, "y");
}

}  // namespace
