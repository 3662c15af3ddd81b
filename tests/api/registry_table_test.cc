// The session table on its own: login arguments, unknown IDs, the inert talk
// group and the forwarding of events to the host's callbacks.
#include <climits>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"

namespace {

struct Seen {
  long id = 0, code = 0;
  std::string text;
  void* user = nullptr;
  FRAME_EXTDATA* extra = nullptr;
};

long Status(long id, long code, const char* data, void* user) {
  Seen* s = static_cast<Seen*>(user);
  s->id = id;
  s->code = code;
  s->text = code == EVENT_PTZALARM ? "alarm" : data;
  return 7;
}

long Aux(long id, long code, const char* xml, void* user) {
  Seen* s = static_cast<Seen*>(user);
  s->id = id;
  s->code = code;
  s->text = xml;
  return 8;
}

long ReplayData(long id, unsigned long kind, char*, unsigned long, FRAME_EXTDATA* extra) {
  Seen* s = static_cast<Seen*>(extra->user);
  s->id = id;
  s->code = static_cast<long>(kind);
  s->extra = extra;
  return 9;
}

TEST(RegistryTable, BadLoginArgumentsAreRefusedBeforeAnySession) {
  CPTZObjectList registry;
  EXPECT_EQ(registry.Add(nullptr, 5000, "a", "b", 1, 0, nullptr), 0);
  EXPECT_EQ(registry.Add("127.0.0.1", 0, "a", "b", 1, 0, nullptr), 0);
  EXPECT_EQ(registry.Add("127.0.0.1", 65535, "a", "b", 1, 0, nullptr), 0);
  EXPECT_EQ(registry.LastError(), QV_E_INVALID_ARG);
  EXPECT_EQ(registry.SessionCount(), 0);
  EXPECT_EQ(IP_NET_DVR_Login("127.0.0.1", 0, const_cast<char*>("a"), const_cast<char*>("b"),
                             nullptr), 0);
  EXPECT_EQ(IP_NET_DVR_Login("127.0.0.1", 65535, const_cast<char*>("a"), const_cast<char*>("b"),
                             nullptr), 0);
  // Only the stream registry's error is what the host reads.
  EXPECT_EQ(IP_NET_DVR_GetLastErrorCode(), 0);
}

TEST(RegistryTable, EveryIdOutsideTheTableIsUnknownAndLeavesTheLockFree) {
  CPTZObjectList registry;
  for (long id : {0L, -1L, 129L, 1000L, LONG_MIN, LONG_MAX, 5L}) {
    EXPECT_EQ(registry.FindObjectByID(id, 0), nullptr) << id;
    EXPECT_EQ(registry.SystemControl(id, 1007, 0, ""), QV_E_UNKNOWN_USER) << id;
    EXPECT_EQ(registry.Delete(id), QV_E_UNKNOWN_USER) << id;
  }
  EXPECT_EQ(registry.FindObjectByIpstring("127.0.0.1:1"), nullptr);
  EXPECT_EQ(registry.ReleaseAll(-1), 0);  // would block on a leaked lock
}

TEST(RegistryTable, ExportedFunctionsAnswerUnknownIds) {
  char buffer[8];
  int length = sizeof(buffer);
  for (long id : {0L, -3L, 129L, 42L}) {
    EXPECT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_UP, 1, 1), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_RebootDVR(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_GetDVRConfig(id, 305, 0, nullptr, 0, nullptr), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_GetUserData(id, buffer, &length), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_SnapPic(id, 0, 50, "/tmp/x.jpg", 0), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_EXCHANGE_Encrypt(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_Reconnect(id), QV_E_UNKNOWN_USER);
  }
  EXPECT_EQ(IP_NET_DVR_Logout(0), 0);
  EXPECT_EQ(IP_NET_DVR_Logout(42), QV_E_UNKNOWN_USER);
  EXPECT_EQ(IP_NET_DVR_SetAutoReconnect(0, 1), 0);
}

TEST(RegistryTable, LogoutOfIdZeroWritesOnlyItsOpeningLine) {
  DebugLogSwitch(1);
  testing::internal::CaptureStdout();
  EXPECT_EQ(IP_NET_DVR_Logout(0), 0);
  EXPECT_EQ(IP_NET_DVR_Logout(9), QV_E_UNKNOWN_USER);
  std::string log = testing::internal::GetCapturedStdout();
  DebugLogSwitch(0);
  EXPECT_NE(log.find("IP_NET_DVR_Logout(0) begin...\n"), std::string::npos);
  EXPECT_EQ(log.find("IP_NET_DVR_Logout(0) end,use tick="), std::string::npos);
  EXPECT_NE(log.find("cannot found userid 9\n\n"), std::string::npos);
  EXPECT_NE(log.find("IP_NET_DVR_Logout(9) end,use tick="), std::string::npos);
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

TEST(RegistryTable, AuxCodeIsComposedIn32BitsAndSignExtended) {
  CPTZObjectList registry;
  Seen seen;
  EXPECT_EQ(registry.PostAuxResponseMsg(nullptr, 1, 0, "x"), -1);  // no callback
  registry.SetAUXResponseCallBack(Aux, &seen);
  EXPECT_EQ(registry.PostAuxResponseMsg(nullptr, 0x12345678L, 0xAB000001L, "x"), 8);
  EXPECT_EQ(seen.code, static_cast<long>(static_cast<int32_t>(0xAB345678u)));
  EXPECT_LT(seen.code, 0);
  registry.PostPTZResponseMsg(nullptr, 0x7000001020L, 0x01000000L, "y");
  EXPECT_EQ(seen.code, 0x01001020L);
  EXPECT_EQ(seen.text, "y");
}

TEST(RegistryTable, EventsReachTheirCallbacksOrAnswerTheNoCallbackValue) {
  CPTZObjectList registry;
  Seen seen;
  ALARM_ENTRY alarm = {};
  EXPECT_EQ(registry.PostStatusMsg(3, 1, "t"), -1);
  EXPECT_EQ(registry.PostAlarmMsg(nullptr, &alarm), -1);
  EXPECT_EQ(registry.OnPlayEventCallBack(1, 2, 3, nullptr), QV_E_SOCKET);
  FRAME_EXTDATA extra = {1, 2.0, nullptr};
  EXPECT_EQ(registry.OnPlayBackDataRecvCallBack(1, 0, nullptr, 0, &extra), QV_E_SOCKET);

  registry.SetStatusEventCallBack(Status, &seen);
  EXPECT_EQ(registry.PostStatusMsg(3, 33, "again"), 7);
  EXPECT_EQ(seen.id, 3);
  EXPECT_EQ(seen.text, "again");
  EXPECT_EQ(registry.PostAlarmMsg(nullptr, &alarm), 7);
  EXPECT_EQ(seen.code, EVENT_PTZALARM);

  registry.SetReplayDataCallBack(ReplayData, &seen);
  EXPECT_EQ(registry.OnPlayBackDataRecvCallBack(4, 2, nullptr, 0, &extra), 9);
  EXPECT_EQ(extra.user, &seen);  // the user pointer travels in the extra record
  EXPECT_EQ(seen.id, 4);
}

}  // namespace
