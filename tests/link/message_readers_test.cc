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

std::vector<char> Mutable(const std::string& s) {
  std::vector<char> v(s.begin(), s.end());
  v.push_back('\0');
  return v;
}

struct Header {
  char type[256], code[256], flag[256];
  int Read(const std::string& text) {
    std::vector<char> m = Mutable(text);
    return TinyGetMessageHeader(m.data(), type, code, flag);
  }
};

TEST(MessageHeader, SplitsTheThreeAttributes) {
  Header h;
  EXPECT_EQ(h.Read(Message("")), 0);
  EXPECT_STREQ(h.type, "T");
  EXPECT_STREQ(h.code, "1");
  EXPECT_STREQ(h.flag, "0");
}

TEST(MessageHeader, ReportsTheFirstEmptyFieldAndKeepsTheOthers) {
  Header h;
  EXPECT_EQ(h.Read("<MESSAGE_HEADER Msg_type=\"A\" Msg_code=\"B\" />"), -5);
  EXPECT_STREQ(h.type, "A");
  EXPECT_STREQ(h.code, "B");
  EXPECT_EQ(h.Read("<MESSAGE_HEADER Msg_type=\"A\" Msg_flag=\"0\" />"), -4);
  EXPECT_EQ(h.Read("<MESSAGE_HEADER Msg_code=\"1\" Msg_flag=\"0\" />"), -3);
  EXPECT_EQ(h.Read("<MESSAGE_HEADERX Msg_type=\"A\" Msg_code=\"1\" Msg_flag=\"0\" />"), -2);
}

TEST(MessageHeader, MissingOrBrokenHeaderIsMinusOne) {
  Header h;
  EXPECT_EQ(h.Read("<XML_VEXORA/>"), -1);
  EXPECT_EQ(h.Read("<MESSAGE_HEADER Msg_type=\"A\""), -1);
  EXPECT_EQ(h.Read("<MESSAGE_HEADER Msg_type=\"A />"), -1);
  EXPECT_EQ(TinyGetMessageHeader(nullptr, h.type, h.code, h.flag), -1);
}

TEST(MessageHeader, LongFieldsAreCutAt255) {
  Header h;
  std::string longtype(1000, 'T');
  EXPECT_EQ(h.Read("<MESSAGE_HEADER Msg_type=\"" + longtype +
                   "\" Msg_code=\"1\" Msg_flag=\"0\" />"), 0);
  EXPECT_EQ(std::string(h.type), longtype.substr(0, 255));
}

TEST(MessageBody, CopiesTheTextBetweenTheTags) {
  std::vector<char> m = Mutable(Message("<A b=\"1\"/>"));
  char* body = nullptr;
  ASSERT_EQ(GetMessageBody(m.data(), &body), 0);
  EXPECT_STREQ(body, "\n<A b=\"1\"/>\n");
  delete[] body;
}

TEST(MessageBody, SelfClosingOrReversedTagsAreMissing) {
  char* body = nullptr;
  std::vector<char> empty = Mutable("<XML_VEXORA><MESSAGE_BODY/></XML_VEXORA>");
  EXPECT_EQ(GetMessageBody(empty.data(), &body), -1);
  std::vector<char> reversed = Mutable("</MESSAGE_BODY>x<MESSAGE_BODY>");
  EXPECT_EQ(GetMessageBody(reversed.data(), &body), -1);
  EXPECT_EQ(body, nullptr);
}

TEST(BinaryPosition, ReadsStartAndLength) {
  int start = 0, len = 0;
  std::vector<char> m = Mutable(Message("<POS StartPos=\"300\" DataLen=\"1024\" />"));
  EXPECT_EQ(GetXmlPosAndDataLen(m.data(), &start, &len), 0);
  EXPECT_EQ(start, 300);
  EXPECT_EQ(len, 1024);
  std::vector<char> nopos = Mutable(Message("<OTHER/>"));
  EXPECT_EQ(GetXmlPosAndDataLen(nopos.data(), &start, &len), -2);
  EXPECT_EQ(start, -1);
  EXPECT_EQ(len, 0);
  std::vector<char> bad = Mutable("<a><b></a>");
  EXPECT_EQ(GetXmlPosAndDataLen(bad.data(), &start, &len), -1);
}

const char kTwoAlarms[] =
    "<ALARM_REPORT_PARAM>"
    "<ALARM_ITEM><ALARM_TIME Year=\"2024\" Month=\"5\" Day=\"6\" WDay=\"1\" Hour=\"7\" "
    "Minute=\"8\" Second=\"9\"/><ALARM_INFO Alarm_code=\"23\" Alarm_flag=\"1\" "
    "Alarm_level=\"2\" Alarm_data=\"/mnt/a.jpg\"/></ALARM_ITEM>"
    "<ALARM_ITEM><ALARM_INFO Alarm_code=\"4\"/></ALARM_ITEM>"
    "</ALARM_REPORT_PARAM>";

TEST(AlarmList, ReadsEveryItem) {
  std::vector<char> m = Mutable(Message(kTwoAlarms));
  ALARM_ENTRY* list = nullptr;
  ASSERT_EQ(GetAlarmList(m.data(), &list), 2);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list[0].year, 2024);
  EXPECT_EQ(list[0].month, 5);
  EXPECT_EQ(list[0].day, 6);
  EXPECT_EQ(list[0].wday, 1);
  EXPECT_EQ(list[0].hour, 7);
  EXPECT_EQ(list[0].minute, 8);
  EXPECT_EQ(list[0].second, 9);
  EXPECT_EQ(list[0].alarm_code, 23);
  EXPECT_EQ(list[0].alarm_flag, 1);
  EXPECT_EQ(list[0].alarm_level, 2);
  EXPECT_STREQ(list[0].alarm_data, "/mnt/a.jpg");
  EXPECT_EQ(list[1].alarm_code, 4);
  EXPECT_EQ(list[1].year, 0);
  delete[] list;
}

TEST(AlarmList, MissingPartsGiveTheirCodes) {
  ALARM_ENTRY* list = reinterpret_cast<ALARM_ENTRY*>(1);
  std::vector<char> none = Mutable(Message("<ALARM_REPORT_PARAM></ALARM_REPORT_PARAM>"));
  EXPECT_EQ(GetAlarmList(none.data(), &list), -3);
  EXPECT_EQ(list, nullptr);
  std::vector<char> noparam = Mutable(Message("<X/>"));
  EXPECT_EQ(GetAlarmList(noparam.data(), &list), -2);
  std::vector<char> bad = Mutable("<a><b></a>");
  EXPECT_EQ(GetAlarmList(bad.data(), &list), -1);
  EXPECT_EQ(GetAlarmList(noparam.data(), nullptr), -1);
}

TEST(AlarmList, AForeignSiblingTakesAPositionThatStaysZero) {
  std::vector<char> m = Mutable(Message(
      "<ALARM_REPORT_PARAM><ALARM_ITEM><ALARM_INFO Alarm_code=\"1\"/></ALARM_ITEM><OTHER/>"
      "<ALARM_ITEM><ALARM_INFO Alarm_code=\"3\"/></ALARM_ITEM></ALARM_REPORT_PARAM>"));
  ALARM_ENTRY* list = nullptr;
  ASSERT_EQ(GetAlarmList(m.data(), &list), 2);
  EXPECT_EQ(list[0].alarm_code, 1);
  EXPECT_EQ(list[1].alarm_code, 0);
  delete[] list;
}

TEST(AlarmList, LongDataAndLongListsAreBounded) {
  std::string items;
  for (int i = 0; i < kMaxAlarmItems + 50; ++i) {
    items += "<ALARM_ITEM><ALARM_INFO Alarm_data=\"" + std::string(500, 'd') + "\"/></ALARM_ITEM>";
  }
  std::vector<char> m = Mutable(Message("<ALARM_REPORT_PARAM>" + items + "</ALARM_REPORT_PARAM>"));
  ALARM_ENTRY* list = nullptr;
  ASSERT_EQ(GetAlarmList(m.data(), &list), kMaxAlarmItems);
  EXPECT_EQ(strlen(list[kMaxAlarmItems - 1].alarm_data), 127u);
  delete[] list;
}

TEST(AudioReply, DefaultsThenAttributes) {
  int port = 77, codec = -1, rate = 0, bits = 0, ch = 0, conn = -1;
  std::vector<char> m = Mutable(Message("<RA_START_RESPONSE AudioCodec=\"G711\" Channels=\"2\"/>"));
  EXPECT_EQ(GetAudioRTPParam(m.data(), &port, &codec, &rate, &bits, &ch, &conn), 0);
  EXPECT_EQ(port, 77);
  EXPECT_EQ(codec, 0);
  EXPECT_EQ(rate, 8000);
  EXPECT_EQ(bits, 16);
  EXPECT_EQ(ch, 2);
  EXPECT_EQ(conn, 0);
  std::vector<char> aac = Mutable(Message(
      "<RA_START_RESPONSE AudioCodec=\"MPEG4-AAC-LC\" Samplerate=\"16000\" RTPRecvPort=\"9\"/>"));
  EXPECT_EQ(GetAudioRTPParam(aac.data(), &port, &codec, &rate, &bits, &ch, &conn), 0);
  EXPECT_EQ(codec, 1);
  EXPECT_EQ(rate, 16000);
  EXPECT_EQ(port, 9);
  std::vector<char> missing = Mutable(Message("<X/>"));
  EXPECT_EQ(GetAudioRTPParam(missing.data(), &port, &codec, &rate, &bits, &ch, &conn), -2);
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
  std::vector<char> m = Mutable(Message("<USER_AUTH_RESPONSE Sessionid=\"abc-1\"/>"));
  EXPECT_EQ(GetSessionID(m.data(), id), 0);
  EXPECT_EQ(id, "abc-1");
  std::vector<char> comment = Mutable(Message("<!--USER_AUTH_RESPONSE-->"));
  EXPECT_EQ(GetSessionID(comment.data(), id), -3);
  EXPECT_EQ(id, "");
  std::vector<char> missing = Mutable(Message("<X/>"));
  EXPECT_EQ(GetSessionID(missing.data(), id), -2);
  std::vector<char> bad = Mutable("<a>");
  EXPECT_EQ(GetSessionID(bad.data(), id), -1);
}

TEST(HostileXml, DeepNestingIsRefusedWithoutParsing) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<a>";
  std::vector<char> m = Mutable(Message(deep));
  char* body = nullptr;
  ALARM_ENTRY* list = nullptr;
  EXPECT_EQ(GetAlarmList(m.data(), &list), -1);
  std::string id;
  EXPECT_EQ(GetSessionID(m.data(), id), -1);
  EXPECT_EQ(GetMessageBody(m.data(), &body), 0);  // a text search, no parse
  delete[] body;
}

const char kLiveStream[] =
    "<TRANS_PARAM StreamID=\"1\" VideoStream=\"0\" AudioEnable=\"1\" Multicast=\"1\" "
    "MulticastAddress=\"239.1.2.3\" VideoPort=\"5000\" AudioPort=\"5002\" UseTcp=\"0\"/>"
    "<VIDEO_PARAM Encoder=\"H264\" Width=\"1920\" Height=\"1080\" Framerate=\"25\" "
    "Bitrate=\"4096\" Config=\"0a0B\" Extra=\"x\"/>"
    "<AUDIO_PARAM Encoder=\"G711\" SampleRate=\"8000\" SampleWidth=\"16\" Channels=\"1\" "
    "Bitrate=\"64\"/>";

TEST(LiveStreamParam, ReadsTransportVideoAndAudio) {
  std::vector<char> m = Mutable(Message(kLiveStream));
  LIVE_STREAM_PARAM p;
  ASSERT_EQ(GetLiveStreamParam(m.data(), &p), 0);
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
}

TEST(LiveStreamParam, RefusesIncompleteDescriptions) {
  LIVE_STREAM_PARAM p;
  std::vector<char> notrans = Mutable(Message("<VIDEO_PARAM/>"));
  EXPECT_EQ(GetLiveStreamParam(notrans.data(), &p), -2);
  std::vector<char> noaddr = Mutable(Message("<TRANS_PARAM Multicast=\"1\"/><VIDEO_PARAM/>"));
  EXPECT_EQ(GetLiveStreamParam(noaddr.data(), &p), -1);
  std::vector<char> noport = Mutable(Message("<TRANS_PARAM AudioEnable=\"1\"/><VIDEO_PARAM/>"));
  EXPECT_EQ(GetLiveStreamParam(noport.data(), &p), -1);
  std::vector<char> tcp = Mutable(Message(
      "<TRANS_PARAM AudioEnable=\"1\" UseTcp=\"1\"/><VIDEO_PARAM/>"));
  EXPECT_EQ(GetLiveStreamParam(tcp.data(), &p), -2);  // audio wanted, AUDIO_PARAM missing
  std::vector<char> empty = Mutable(Message("<TRANS_PARAM StreamID=\"\"/><VIDEO_PARAM/>"));
  EXPECT_EQ(GetLiveStreamParam(empty.data(), &p), -1);
  std::vector<char> novideo = Mutable(Message("<TRANS_PARAM StreamID=\"1\"/>"));
  EXPECT_EQ(GetLiveStreamParam(novideo.data(), &p), -2);
}

TEST(LiveStreamParam, ConfigBeyondTheRecordIsCut) {
  std::string hex(2000, 'f');
  std::vector<char> m = Mutable(Message("<TRANS_PARAM/><VIDEO_PARAM Config=\"" + hex + "\"/>"));
  LIVE_STREAM_PARAM p;
  ASSERT_EQ(GetLiveStreamParam(m.data(), &p), 0);
  EXPECT_EQ(p.config_length, 256);
}

}  // namespace
