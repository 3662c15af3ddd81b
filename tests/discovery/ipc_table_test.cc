// Answers into the table of found cameras: the keys, the limits and
// whatever a hostile or broken camera may send.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "base/debug_log.h"
#include "discovery/search_ipc.h"
#include "discovery/reply_texts.h"
#include "support/scratch.h"

namespace {

using qvtest::Reply;
using qvtest::ReplyFrom;
using qvtest::ReplyShape;
using qvtest::Replaced;
using qvtest::Writable;

int Take(CCSearchIPC& search, const std::string& text, const char* ifname = "eth0") {
  Writable w(text);
  return search.ResponseMessageHandle(w.data(), w.length(), ifname);
}

std::string Nested(int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += "<a>";
  return text;
}

IPC_ENTRY Entry(CCSearchIPC& search, long index) {
  IPC_ENTRY e;
  memset(&e, 0xAB, sizeof(e));
  EXPECT_EQ(search.GetIPCInfo(index, &e), 0);
  return e;
}

TEST(SearchTable, AnAnswerBecomesAnEntry) {
  CCSearchIPC search;
  ReplyShape shape;
  shape.serial = "QV-100";
  shape.ip = "10.20.30.40";
  shape.osd = "Front door";
  ASSERT_EQ(Take(search, Reply(shape), "qvh0"), 0);
  ASSERT_EQ(search.GetIPCCount(), 1);
  IPC_ENTRY e = Entry(search, 0);
  EXPECT_STREQ(e.interface_name, "qvh0");
  EXPECT_STREQ(e.serial, "QV-100");
  EXPECT_STREQ(e.device_type, "IPC");
  EXPECT_STREQ(e.p2p_id, "P2P-QV-100");
  EXPECT_STREQ(reinterpret_cast<const char*>(e.osd), "Front door");
  EXPECT_STREQ(e.lan.IPAddress, "10.20.30.40");
  EXPECT_STREQ(e.lan.MacAddress, "02:51:56:00:00:01");
  EXPECT_EQ(e.stream.StreamAccess.VideoPort, 554);
  EXPECT_EQ(e.stream.StreamAccess.PTZPort, 5000);
  EXPECT_EQ(e.user.nAccount, 2);
  EXPECT_STREQ(e.user.Account[1].Username, "guest");
  EXPECT_GT(e.found_time, 1700000000L);
}

TEST(SearchTable, TheSameSerialReplacesItsEntry) {
  CCSearchIPC search;
  ASSERT_EQ(Take(search, ReplyFrom("A", "10.0.0.1")), 0);
  ASSERT_EQ(Take(search, ReplyFrom("B", "10.0.0.2")), 0);
  EXPECT_EQ(Take(search, ReplyFrom("A", "10.0.0.9"), "eth1"), -1);
  EXPECT_EQ(search.GetIPCCount(), 2);
  IPC_ENTRY a = Entry(search, 0);
  EXPECT_STREQ(a.serial, "A");
  EXPECT_STREQ(a.lan.IPAddress, "10.0.0.9");
  EXPECT_STREQ(a.interface_name, "eth1");
  EXPECT_STREQ(Entry(search, 1).lan.IPAddress, "10.0.0.2");
}

TEST(SearchTable, RecordersNeverEnter) {
  CCSearchIPC search;
  for (const char* type : {"NVR", "NVR-16", "HYBRID_NVR"}) {
    ReplyShape shape;
    shape.type = type;
    EXPECT_EQ(Take(search, Reply(shape)), -1) << type;
  }
  ReplyShape nvr_lower;
  nvr_lower.type = "nvr";  // the rule is case-sensitive
  EXPECT_EQ(Take(search, Reply(nvr_lower)), 0);
  EXPECT_EQ(search.GetIPCCount(), 1);
}

TEST(SearchTable, TheHundredAndFirstCameraAndAFloodAfterItAreRefused) {
  CCSearchIPC search;
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(Take(search, ReplyFrom("CAM-" + std::to_string(i))), 0) << i;
  }
  DebugLogSwitch(1);
  std::string out = testsupport::CapturedStdout(
      [&] { EXPECT_EQ(Take(search, ReplyFrom("CAM-100")), -1); });
  DebugLogSwitch(0);
  EXPECT_NE(out.find("found new entry, but ipc count exceed 100"), std::string::npos) << out;
  // A flood of distinct serials after it changes nothing either.
  for (int i = 0; i < 900; ++i) Take(search, ReplyFrom("FLOOD-" + std::to_string(i)));
  EXPECT_EQ(search.GetIPCCount(), 100);
  EXPECT_STREQ(Entry(search, 99).serial, "CAM-99");
  IPC_ENTRY e;
  EXPECT_EQ(search.GetIPCInfo(100, &e), QV_E_INVALID_ARG);
  // A camera already known still refreshes its entry.
  EXPECT_EQ(Take(search, ReplyFrom("CAM-7", "10.7.7.7")), -1);
  EXPECT_STREQ(Entry(search, 7).lan.IPAddress, "10.7.7.7");
}

TEST(SearchTable, BrokenAnswersAreDropped) {
  const std::string good = ReplyFrom("GOOD");
  const struct {
    const char* what;
    std::string text;
  } cases[] = {
      {"cut in half", good.substr(0, good.size() / 2)},
      {"cut inside the identity", good.substr(0, good.find("PLATFORMID"))},
      {"empty serial number", Replaced(good, "SerialNumber=\"GOOD\"", "SerialNumber=\"\"")},
      {"no serial number attribute", Replaced(good, "SerialNumber=\"GOOD\"", "")},
      {"no identity element", Replaced(good, "<IPC_SERIALNUMBER", "<IPC_SERIAL_NO")},
      {"no device type", Replaced(good, "DeviceType=\"IPC\"", "DeviceType=\"\"")},
      {"no device type element", Replaced(good, "<DEVICE_TYPE", "<DEVICE")},
      {"broken identity", Replaced(good, "SerialNumber=\"GOOD\"", "SerialNumber=\"GOOD")},
      {"broken LAN element", Replaced(good, "<LANConfig ", "<LANConfig <")},
      {"no LAN element", Replaced(good, "<LANConfig", "<LAN_Config")},
      {"no stream element", Replaced(good, "<MediaStreamConfig>", "<MediaStream>")},
      {"broken stream element", Replaced(good, "<StreamAccess", "<StreamAccess =")},
      {"no user element", Replaced(good, "<UserConfig>", "<Users>")},
      {"user element without its end", Replaced(good, "</UserConfig>", "")},
      {"users nested too deep", Replaced(good, "<UserConfig>", "<UserConfig>" + Nested(5000))},
      {"empty", ""},
      {"binary", std::string("\x01\x02\xff\xfe", 4) + "<IPC_SERIALNUMBER"},
  };
  for (const auto& c : cases) {
    CCSearchIPC search;
    EXPECT_EQ(Take(search, c.text), -1) << c.what;
    EXPECT_EQ(search.GetIPCCount(), 0) << c.what;
  }
  CCSearchIPC search;
  EXPECT_EQ(search.ResponseMessageHandle(nullptr, 10, "eth0"), 0);
  Writable w(good);
  EXPECT_EQ(search.ResponseMessageHandle(w.data(), -1, "eth0"), 0);
  EXPECT_EQ(search.GetIPCCount(), 0);
}

TEST(SearchTable, OverlongTextsStayInsideTheirFields) {
  CCSearchIPC search;
  std::string text = ReplyFrom("S");
  text = Replaced(text, "SerialNumber=\"S\"", "SerialNumber=\"" + std::string(200, 's') + "\"");
  text = Replaced(text, "P2PID=\"P2P-S\"", "P2PID=\"" + std::string(200, 'p') + "\"");
  text = Replaced(text, "DeviceType=\"IPC\"", "DeviceType=\"" + std::string(200, 't') + "\"");
  text = Replaced(text, "OSD=\"47415445\"", "OSD=\"" + std::string(3000, '4') + "\"");
  text = Replaced(text, "IPAddress=\"192.168.1.88\"", "IPAddress=\"" + std::string(500, '9') + "\"");
  std::string accounts;
  for (int i = 0; i < 40; ++i) {
    accounts += "<Account Username=\"" + std::string(100, 'u') + "\" Password=\"" +
                std::string(100, 'w') + "\" Group=\"" + std::string(100, 'g') + "\" />";
  }
  text = Replaced(text, "<UserConfig>", "<UserConfig>" + accounts);
  ASSERT_EQ(Take(search, text, std::string(100, 'i').c_str()), 0);
  IPC_ENTRY e = Entry(search, 0);
  EXPECT_EQ(strlen(e.interface_name), 31u);
  EXPECT_EQ(strlen(e.serial), 31u);
  EXPECT_EQ(strlen(e.p2p_id), 47u);
  EXPECT_EQ(strlen(e.device_type), 31u);
  EXPECT_EQ(strnlen(reinterpret_cast<const char*>(e.osd), sizeof(e.osd)), 255u);
  EXPECT_EQ(strlen(e.lan.IPAddress), 63u);
  EXPECT_EQ(e.user.nAccount, QV_MAX_USER_ACCOUNTS);
  EXPECT_EQ(strlen(e.user.Account[9].Username), 39u);
  EXPECT_EQ(strlen(e.user.Account[9].Status), 7u);
}

TEST(SearchTable, ReadsAreBoundedByTheCount) {
  CCSearchIPC search;
  ASSERT_EQ(Take(search, ReplyFrom("ONE")), 0);
  IPC_ENTRY e;
  for (long index : {-1L, 1L, 99L, 100L, 1L << 40}) {
    EXPECT_EQ(search.GetIPCInfo(index, &e), QV_E_INVALID_ARG) << index;
  }
  EXPECT_EQ(search.GetIPCInfo(0, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(search.ReleaseIPCInfo(), 0);
  EXPECT_EQ(search.GetIPCCount(), 0);
  EXPECT_EQ(search.GetIPCInfo(0, &e), QV_E_INVALID_ARG);
  EXPECT_EQ(Take(search, ReplyFrom("ONE")), 0);  // a released table fills again
}

}  // namespace
