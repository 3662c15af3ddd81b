// The exported readers of replies: media capabilities, system time, system
// version, and the names of the status event codes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "quorvel/quorvel.h"

namespace {

struct Caps {
  int nvideo = -1, naudio = -1;
  VideoCap* video = nullptr;
  AudioCap* audio = nullptr;
  long result = 0;
  ~Caps() {
    delete[] video;
    delete[] audio;
  }
};

void Read(const std::string& reply, Caps* caps) {
  caps->result = IP_NET_DVR_XMLGET_MediaCapability(reply.c_str(), &caps->nvideo, &caps->video,
                                                   &caps->naudio, &caps->audio);
}

std::string Reply(const std::string& video, const std::string& audio) {
  return "<RESPONSE_PARAM><VideoCap CapList=\"" + video + "\"/><AudioCap CapList=\"" + audio +
         "\"/></RESPONSE_PARAM>";
}

TEST(MediaCapability, EntriesKeptOnlyWithBothTextsAndAPositiveFifthAndSixthValue) {
  const struct {
    const char* entry;
    bool kept;
  } cases[] = {
      {"Main,H264,0,2,1920,1080,25,512,8192,2048,50,7", true},
      {"Main,H264,0,2,0,1080", false},     // fifth value 0
      {"Main,H264,0,2,1920", false},       // sixth value missing
      {"Main,H264,0,2,1920,-1", false},
      {",H264,0,2,1920,1080", false},      // empty name
      {"Main,,0,2,1920,1080", false},      // empty second text
      {"Main,H264,x,y,1,1", true},         // non-numeric values read as 0
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.entry);
    Caps caps;
    Read(Reply(c.entry, "G711A,8000"), &caps);
    ASSERT_EQ(caps.result, 0);
    EXPECT_EQ(caps.nvideo, c.kept ? 1 : -1);
    EXPECT_EQ(caps.video != nullptr, c.kept);
  }
  Caps caps;
  Read(Reply("Main,H264,0,2,1920,1080,25,512,8192,2048,50,7,99", ""), &caps);
  ASSERT_EQ(caps.nvideo, 1);
  const int expected[10] = {0, 2, 1920, 1080, 25, 512, 8192, 2048, 50, 7};
  EXPECT_EQ(memcmp(caps.video[0].value, expected, sizeof(expected)), 0);
  EXPECT_STREQ(caps.video[0].text2, "H264");
}

TEST(MediaCapability, ListsSplitAtSemicolonsUpToTheFirstEmptyEntry) {
  Caps caps;
  Read(Reply("A,B,0,0,1,1;C,D,0,0,2,2;;E,F,0,0,3,3",
             "G711A,8000,16,1,64;,8000;AAC,16000,16,1,32,1024,9"),
       &caps);
  ASSERT_EQ(caps.result, 0);
  ASSERT_EQ(caps.nvideo, 2);
  EXPECT_STREQ(caps.video[1].name, "C");
  ASSERT_EQ(caps.naudio, 2);  // the entry without a name is dropped
  EXPECT_STREQ(caps.audio[1].name, "AAC");
  const int aac[5] = {16000, 16, 1, 32, 1024};
  EXPECT_EQ(memcmp(caps.audio[1].value, aac, sizeof(aac)), 0);
}

TEST(MediaCapability, BoundsAndCuts) {
  std::string video, audio;
  for (int i = 0; i < 150; ++i) video += "V" + std::to_string(i) + ",H,0,0,1,1;";
  for (int i = 0; i < 30; ++i) audio += "A" + std::to_string(i) + ",1;";
  Caps caps;
  Read(Reply(video, audio), &caps);
  EXPECT_EQ(caps.nvideo, 100);
  EXPECT_EQ(caps.naudio, 10);
  EXPECT_STREQ(caps.video[99].name, "V99");
  Caps cut;
  Read(Reply(std::string(100, 'n') + "," + std::string(100, 't') + ",0,0,1,1", ""), &cut);
  ASSERT_EQ(cut.nvideo, 1);
  EXPECT_EQ(std::string(cut.video[0].name), std::string(31, 'n'));
  EXPECT_EQ(std::string(cut.video[0].text2), std::string(31, 't'));
}

TEST(MediaCapability, BadRepliesAndArguments) {
  int n = 0;
  VideoCap* v = nullptr;
  AudioCap* a = nullptr;
  EXPECT_EQ(IP_NET_DVR_XMLGET_MediaCapability(nullptr, &n, &v, &n, &a), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_XMLGET_MediaCapability("", &n, &v, &n, &a), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_XMLGET_MediaCapability("<R/>", nullptr, &v, &n, &a), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_XMLGET_MediaCapability("<R/>", &n, &v, nullptr, &a), QV_E_INVALID_ARG);
  // Unusable replies: 0 and nothing written.
  for (const char* reply : {"<RESPONSE_PARAM><VideoCap", "no xml at all", "<OTHER/>",
                            "<RESPONSE_PARAM><VideoCap/><Other CapList=\"a,b,0,0,1,1\"/>"
                            "</RESPONSE_PARAM>"}) {
    Caps caps;
    Read(reply, &caps);
    EXPECT_EQ(caps.result, 0) << reply;
    EXPECT_EQ(caps.nvideo, -1) << reply;
    EXPECT_EQ(caps.naudio, -1) << reply;
  }
  // A null list skips its kind.
  int nv = -1, na = -1;
  AudioCap* audio = nullptr;
  EXPECT_EQ(IP_NET_DVR_XMLGET_MediaCapability(Reply("a,b,0,0,1,1", "G,1").c_str(), &nv, nullptr,
                                              &na, &audio),
            0);
  EXPECT_EQ(nv, -1);
  EXPECT_EQ(na, 1);
  delete[] audio;
}

TEST(SystemTimeReply, SevenValuesInOrder) {
  int t[7];
  memset(t, 0x55, sizeof(t));
  ASSERT_EQ(IP_NET_DVR_XMLGET_SYSTEMTIME(
                "<RESPONSE_PARAM Second=\"9\" TimeZone=\"-3\" Year=\"2024\" Month=\"3\" Day=\"5\" "
                "Hour=\"7\" Minute=\"8\"/>",
                t),
            0);
  const int expected[7] = {-3, 2024, 3, 5, 7, 8, 9};
  EXPECT_EQ(memcmp(t, expected, sizeof(t)), 0);
  for (const char* bad : {"<OTHER Year=\"1\"/>", "<RESPONSE_PARAM", "", "plain"}) {
    memset(t, 0x55, sizeof(t));
    EXPECT_EQ(IP_NET_DVR_XMLGET_SYSTEMTIME(bad, t), QV_E_BAD_REPLY) << bad;
    for (int v : t) EXPECT_EQ(v, 0) << bad;
  }
  EXPECT_EQ(IP_NET_DVR_XMLGET_SYSTEMTIME(nullptr, t), QV_E_BAD_REPLY);
  EXPECT_EQ(IP_NET_DVR_XMLGET_SYSTEMTIME("<RESPONSE_PARAM/>", nullptr), QV_E_INVALID_ARG);
}

TEST(SystemVersionReply, TwoHalvesOf256Bytes) {
  char out[512];
  memset(out, 'x', sizeof(out));
  std::string reply = "<RESPONSE_PARAM KernelVersion=\"" + std::string(300, 'k') +
                      "\" FileSystemVersion=\"fs-1.2\"/>";
  ASSERT_EQ(IP_NET_DVR_GetSystemVersionByXml(out, reply.c_str()), 0);
  EXPECT_EQ(std::string(out), std::string(255, 'k'));
  EXPECT_STREQ(out + 256, "fs-1.2");
  EXPECT_EQ(out[511], 0);
  memset(out, 'x', sizeof(out));
  EXPECT_EQ(IP_NET_DVR_GetSystemVersionByXml(out, "<VERSION/>"), QV_E_BAD_REPLY);
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[300], 0);
  EXPECT_EQ(IP_NET_DVR_GetSystemVersionByXml(nullptr, "<RESPONSE_PARAM/>"), QV_E_INVALID_ARG);
}

TEST(EventNames, EveryCodeHasItsNameAndOthersNone) {
  const struct {
    unsigned code;
    const char* name;
  } cases[] = {
      {0, "EVENT_CONNECTING"},          {22, "EVNET_PTZNOPRESETINFO"},
      {23, "EVENT_PTZALARM"},           {37, "EVENT_STARTAUDIO_AUDIODDISABLED"},
      {42, "EVNET_RECORD_FILEBEGIN"},   {45, "EVENT_RECORD_DISKFREESPACE_TOOLOW"},
      {46, "EVNET_RECORD_FILEBEGIN_ERROR"}, {47, "EVNET_RECORD_WRITE_FILE_ERROR"},
      {49, "EVENT_RECORD_MEDIA_PARAM_ERROR"}, {50, ""}, {0xFFFFFFFFu, ""}, {1000, ""},
  };
  for (const auto& c : cases) EXPECT_STREQ(IP_NET_DVR_GET_EVENTNAME(c.code), c.name) << c.code;
  for (unsigned code = 0; code < 50; ++code) {
    const char* name = IP_NET_DVR_GET_EVENTNAME(code);
    EXPECT_TRUE(strncmp(name, "EVENT_", 6) == 0 || strncmp(name, "EVNET_", 6) == 0) << code;
    EXPECT_LE(strlen(name), 35u);
  }
}

}  // namespace
