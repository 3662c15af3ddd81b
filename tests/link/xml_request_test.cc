// The request envelope, byte for byte, and its bounds.
#include "link/xml_request.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace {

const char kReboot[] =
    "<?xml version=\"1.0\" encoding=\"GB2312\" ?><XML_VEXORA>\n"
    "<MESSAGE_HEADER\n"
    "Msg_type=\"SYSTEM_CONTROL_MESSAGE\"\n"
    "Msg_code=\"1007\"\n"
    "Msg_flag=\"0\"\n"
    "/><MESSAGE_BODY/>\n"
    "</XML_VEXORA>";

TEST(XmlRequest, BothFormsWithAndWithoutABody) {
  const std::string ptz =
      "<?xml version=\"1.0\" encoding=\"GB2312\" ?><XML_VEXORA>\n<MESSAGE_HEADER\n"
      "Msg_type=\"PTZ_CONTROL_MESSAGE\"\nMsg_code=\"PTZ_CMD\"\nMsg_flag=\"0\"\n/>"
      "<MESSAGE_BODY>\n<xml/>\n</MESSAGE_BODY>\n</XML_VEXORA>";
  char buf[1024];
  std::string s;
  for (const char* body : {"", static_cast<const char*>(nullptr)}) {  // the self-closing body
    EXPECT_EQ(MakeXMLRequest(buf, sizeof(buf), "SYSTEM_CONTROL_MESSAGE", "1007", "0", body),
              static_cast<int>(strlen(kReboot)));
    EXPECT_STREQ(buf, kReboot);
    EXPECT_EQ(MakeXMLRequest(s, "SYSTEM_CONTROL_MESSAGE", 1007L, "0", body),
              static_cast<int>(strlen(kReboot)));
    EXPECT_EQ(s, kReboot);
  }
  MakeXMLRequest(buf, sizeof(buf), "PTZ_CONTROL_MESSAGE", "PTZ_CMD", "0", "<xml/>");
  EXPECT_EQ(buf, ptz);
  MakeXMLRequest(s, "PTZ_CONTROL_MESSAGE", "PTZ_CMD", "0", "<xml/>");
  EXPECT_EQ(s, ptz);
}

TEST(XmlRequest, NeverWritesMoreThanSizeMinusOne) {
  char buf[64];
  memset(buf, 'Z', sizeof(buf));
  int n = MakeXMLRequest(buf, 40, "SYSTEM_CONTROL_MESSAGE", "1007", "0", "<long body/>");
  EXPECT_EQ(n, 39);
  EXPECT_EQ(strlen(buf), 39u);
  EXPECT_EQ(buf[40], 'Z');
  EXPECT_EQ(std::string(buf), std::string(kReboot).substr(0, 39));
}

TEST(XmlRequest, AudioDataFollowsTheXmlTextAndIsBounded) {
  char buf[400];
  const char data[4] = {'\0', '\x01', '\x02', '\x03'};
  int n = MakeAudioDataRequest(buf, sizeof(buf), data, 4);
  std::string xml(buf);
  EXPECT_NE(xml.find("Msg_type=\"REVERSE_AUDIO_MESSAGE\"\nMsg_code=\"CMD_RA_DATA\""),
            std::string::npos);
  EXPECT_NE(xml.find("<RA_DATA_PARAM\nDataLength=\"4\"/>"), std::string::npos);
  ASSERT_EQ(n, static_cast<int>(xml.size()) + 4);
  EXPECT_EQ(memcmp(buf + xml.size(), data, 4), 0);

  char small[300];
  int m = MakeAudioDataRequest(small, sizeof(small), data, 4);
  EXPECT_LE(m, static_cast<int>(sizeof(small)));
}

}  // namespace
