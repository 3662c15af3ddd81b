// Readers of received messages: header, body, binary position, alarms,
// talk reply, transfer port, session ID, live stream description.
#include "link/message_readers.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "link/live_stream_param.h"

namespace {

std::string Message(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"GB2312\" ?><XML_VEXORA>\n<MESSAGE_HEADER\n"
         "Msg_type=\"T\"\nMsg_code=\"1\"\nMsg_flag=\"0\"\n/><MESSAGE_BODY>\n" +
         body + "\n</MESSAGE_BODY>\n</XML_VEXORA>";
}

// A text in a buffer the readers may write into.
struct Text {
  explicit Text(const std::string& s) : bytes(s.begin(), s.end()) { bytes.push_back('\0'); }
  operator char*() { return bytes.data(); }
  std::vector<char> bytes;
};

TEST(MessageHeader, ThreeAttributesOrTheFirstMissingOne) {
  const struct {
    std::string text;
    int ret;
    const char *type, *code;  // null: not looked at
  } cases[] = {
      {Message(""), 0, "T", "1"},
      {"<MESSAGE_HEADER Msg_type=\"A\" Msg_code=\"B\" />", -5, "A", "B"},
      {"<MESSAGE_HEADER Msg_type=\"A\" Msg_flag=\"0\" />", -4, nullptr, nullptr},
      {"<MESSAGE_HEADER Msg_code=\"1\" Msg_flag=\"0\" />", -3, nullptr, nullptr},
      {"<MESSAGE_HEADERX Msg_type=\"A\" Msg_code=\"1\" Msg_flag=\"0\" />", -2, nullptr, nullptr},
      {"<XML_VEXORA/>", -1, nullptr, nullptr},
      {"<MESSAGE_HEADER Msg_type=\"A\"", -1, nullptr, nullptr},
      {"<MESSAGE_HEADER Msg_type=\"A />", -1, nullptr, nullptr},
  };
  char type[256], code[256], flag[256];
  for (const auto& c : cases) {
    EXPECT_EQ(TinyGetMessageHeader(Text(c.text), type, code, flag), c.ret) << c.text;
    if (c.ret == 0) {
      EXPECT_STREQ(flag, "0");
    }
    if (c.type != nullptr) {
      EXPECT_STREQ(type, c.type) << c.text;
      EXPECT_STREQ(code, c.code) << c.text;
    }
  }
  EXPECT_EQ(TinyGetMessageHeader(nullptr, type, code, flag), -1);
  // Long fields are cut at 255.
  std::string longtype(1000, 'T');
  EXPECT_EQ(TinyGetMessageHeader(Text("<MESSAGE_HEADER Msg_type=\"" + longtype +
                                      "\" Msg_code=\"1\" Msg_flag=\"0\" />"),
                                 type, code, flag),
            0);
  EXPECT_EQ(std::string(type), longtype.substr(0, 255));
}

TEST(MessageBody, TextBetweenTheTagsOrMissing) {
  char* body = nullptr;
  ASSERT_EQ(GetMessageBody(Text(Message("<A b=\"1\"/>")), &body), 0);
  EXPECT_STREQ(body, "\n<A b=\"1\"/>\n");
  delete[] body;
  body = nullptr;
  EXPECT_EQ(GetMessageBody(Text("<XML_VEXORA><MESSAGE_BODY/></XML_VEXORA>"), &body), -1);
  EXPECT_EQ(GetMessageBody(Text("</MESSAGE_BODY>x<MESSAGE_BODY>"), &body), -1);
  EXPECT_EQ(body, nullptr);
}

TEST(BinaryPosition, ReadsStartAndLength) {
  int start = 0, len = 0;
  EXPECT_EQ(GetXmlPosAndDataLen(Text(Message("<POS StartPos=\"300\" DataLen=\"1024\" />")),
                                &start, &len), 0);
  EXPECT_EQ(start, 300);
  EXPECT_EQ(len, 1024);
  EXPECT_EQ(GetXmlPosAndDataLen(Text(Message("<OTHER/>")), &start, &len), -2);
  EXPECT_EQ(start, -1);
  EXPECT_EQ(len, 0);
  EXPECT_EQ(GetXmlPosAndDataLen(Text("<a><b></a>"), &start, &len), -1);
}

// Every field of an alarm is checked end to end in the reply tests.
TEST(AlarmList, ItemsMissingPartsAndForeignSiblings) {
  ALARM_ENTRY* list = nullptr;
  ASSERT_EQ(GetAlarmList(Text(Message(
                "<ALARM_REPORT_PARAM><ALARM_ITEM><ALARM_TIME Year=\"2024\"/><ALARM_INFO "
                "Alarm_code=\"1\" Alarm_data=\"/mnt/a.jpg\"/></ALARM_ITEM><OTHER/><ALARM_ITEM>"
                "<ALARM_INFO Alarm_code=\"3\"/></ALARM_ITEM></ALARM_REPORT_PARAM>")),
                         &list),
            2);
  EXPECT_EQ(list[0].year, 2024);
  EXPECT_EQ(list[0].alarm_code, 1);
  EXPECT_STREQ(list[0].alarm_data, "/mnt/a.jpg");
  // A foreign sibling takes a position that stays zero.
  EXPECT_EQ(list[1].alarm_code, 0);
  delete[] list;

  list = reinterpret_cast<ALARM_ENTRY*>(1);
  EXPECT_EQ(GetAlarmList(Text(Message("<ALARM_REPORT_PARAM></ALARM_REPORT_PARAM>")), &list), -3);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(GetAlarmList(Text(Message("<X/>")), &list), -2);
  EXPECT_EQ(GetAlarmList(Text("<a><b></a>"), &list), -1);
  EXPECT_EQ(GetAlarmList(Text(Message("<X/>")), nullptr), -1);
}

TEST(AlarmList, LongDataAndLongListsAreBounded) {
  std::string items;
  for (int i = 0; i < kMaxAlarmItems + 50; ++i) {
    items += "<ALARM_ITEM><ALARM_INFO Alarm_data=\"" + std::string(500, 'd') + "\"/></ALARM_ITEM>";
  }
  ALARM_ENTRY* list = nullptr;
  ASSERT_EQ(GetAlarmList(Text(Message("<ALARM_REPORT_PARAM>" + items + "</ALARM_REPORT_PARAM>")),
                         &list),
            kMaxAlarmItems);
  EXPECT_EQ(strlen(list[kMaxAlarmItems - 1].alarm_data), 127u);
  delete[] list;
}

TEST(AudioReply, DefaultsThenAttributes) {
  int port = 77, codec = -1, rate = 0, bits = 0, ch = 0, conn = -1;
  EXPECT_EQ(GetAudioRTPParam(Text(Message("<RA_START_RESPONSE AudioCodec=\"G711\" Channels=\"2\"/>")),
                             &port, &codec, &rate, &bits, &ch, &conn),
            0);
  EXPECT_EQ(port, 77);
  EXPECT_EQ(codec, 0);
  EXPECT_EQ(rate, 8000);
  EXPECT_EQ(bits, 16);
  EXPECT_EQ(ch, 2);
  EXPECT_EQ(conn, 0);
  EXPECT_EQ(GetAudioRTPParam(Text(Message("<RA_START_RESPONSE AudioCodec=\"MPEG4-AAC-LC\" "
                                          "Samplerate=\"16000\" RTPRecvPort=\"9\"/>")),
                             &port, &codec, &rate, &bits, &ch, &conn),
            0);
  EXPECT_EQ(codec, 1);
  EXPECT_EQ(rate, 16000);
  EXPECT_EQ(port, 9);
  EXPECT_EQ(GetAudioRTPParam(Text(Message("<X/>")), &port, &codec, &rate, &bits, &ch, &conn), -2);
}

TEST(TransferPort, ReadsTheRootAttributes) {
  unsigned short port = 1;
  int type = 1;
  unsigned long len = 1;
  EXPECT_EQ(GetFileTransportPort("<RESPONSE_PARAM Port=\"6001\" Type=\"1\" FileLength=\"4096\"/>",
                                 &port, &type, &len), 0);
  EXPECT_EQ(port, 6001);
  EXPECT_EQ(type, 1);
  EXPECT_EQ(len, 4096u);
  EXPECT_EQ(GetFileTransportPort("<!-- no element -->", &port, &type, &len), -2);
  EXPECT_EQ(port, 0);
  EXPECT_EQ(GetFileTransportPort("<a><b></a>", &port, &type, &len), -1);
}

TEST(SessionId, ReadsSessionidAndTellsTheFailures) {
  std::string id = "old";
  EXPECT_EQ(GetSessionID(Text(Message("<USER_AUTH_RESPONSE Sessionid=\"abc-1\"/>")), id), 0);
  EXPECT_EQ(id, "abc-1");
  EXPECT_EQ(GetSessionID(Text(Message("<!--USER_AUTH_RESPONSE-->")), id), -3);
  EXPECT_EQ(id, "");
  EXPECT_EQ(GetSessionID(Text(Message("<X/>")), id), -2);
  EXPECT_EQ(GetSessionID(Text("<a>"), id), -1);
}

TEST(HostileXml, DeepNestingIsRefusedWithoutParsing) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<a>";
  Text m(Message(deep));
  char* body = nullptr;
  ALARM_ENTRY* list = nullptr;
  EXPECT_EQ(GetAlarmList(m, &list), -1);
  std::string id;
  EXPECT_EQ(GetSessionID(m, id), -1);
  EXPECT_EQ(GetMessageBody(m, &body), 0);  // a text search, no parse
  delete[] body;
}

TEST(LiveStreamParam, ReadsTransportVideoAndAudio) {
  LIVE_STREAM_PARAM p;
  ASSERT_EQ(GetLiveStreamParam(
                Text(Message("<TRANS_PARAM StreamID=\"1\" VideoStream=\"0\" AudioEnable=\"1\" "
                             "Multicast=\"1\" MulticastAddress=\"239.1.2.3\" VideoPort=\"5000\" "
                             "AudioPort=\"5002\" UseTcp=\"0\"/><VIDEO_PARAM Encoder=\"H264\" "
                             "Width=\"1920\" Height=\"1080\" Framerate=\"25\" Bitrate=\"4096\" "
                             "Config=\"0a0B\" Extra=\"x\"/><AUDIO_PARAM Encoder=\"G711\" "
                             "SampleRate=\"8000\" SampleWidth=\"16\" Channels=\"1\" "
                             "Bitrate=\"64\"/>")),
                &p),
            0);
  EXPECT_EQ(p.stream_id, 1);
  EXPECT_EQ(p.audio_enable, 1);
  EXPECT_EQ(p.multicast_address, 0x030201EFu);
  EXPECT_EQ(p.video_port, 5000);
  EXPECT_STREQ(p.video_encoder, "H264");
  EXPECT_EQ(p.width, 1920);
  EXPECT_EQ(p.config_length, 2);
  EXPECT_EQ(p.config[0], 0x0a);
  EXPECT_EQ(p.config[1], 0x0b);
  EXPECT_STREQ(p.audio_encoder, "G711");
  EXPECT_EQ(p.channels, 1);
  // Config beyond the record is cut; an encoder name keeps 256 characters.
  ASSERT_EQ(GetLiveStreamParam(Text(Message("<TRANS_PARAM/><VIDEO_PARAM Config=\"" +
                                            std::string(2000, 'f') + "\" Encoder=\"" +
                                            std::string(300, 'e') + "\"/>")),
                               &p),
            0);
  EXPECT_EQ(p.config_length, 256);
  EXPECT_EQ(std::string(p.video_encoder), std::string(256, 'e'));
}

TEST(LiveStreamParam, RefusesIncompleteDescriptions) {
  const struct {
    const char* body;
    int ret;
  } cases[] = {
      {"<VIDEO_PARAM/>", -2},
      {"<TRANS_PARAM Multicast=\"1\"/><VIDEO_PARAM/>", -1},     // no address
      {"<TRANS_PARAM AudioEnable=\"1\"/><VIDEO_PARAM/>", -1},   // no audio port
      // audio wanted over TCP, AUDIO_PARAM missing
      {"<TRANS_PARAM AudioEnable=\"1\" UseTcp=\"1\"/><VIDEO_PARAM/>", -2},
      {"<TRANS_PARAM StreamID=\"\"/><VIDEO_PARAM/>", -1},
      {"<TRANS_PARAM StreamID=\"1\"/>", -2},
  };
  for (const auto& c : cases) {
    LIVE_STREAM_PARAM p;
    EXPECT_EQ(GetLiveStreamParam(Text(Message(c.body)), &p), c.ret) << c.body;
  }
}

}  // namespace
