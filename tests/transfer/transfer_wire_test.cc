// What the library puts on the wire for a transfer, byte for byte: the
// requests and their re-announcement, the data channel's header and end
// text, and the frames of a link-mode upload.
#include <gtest/gtest.h>

#include <string>

#include "transfer/transfer_fixture.h"

namespace qvtest {
namespace {

using TransferWire = TransferFixture;

std::string Le32(uint32_t v) {
  std::string s;
  for (int i = 0; i < 4; ++i) s.push_back(static_cast<char>(v >> (8 * i)));
  return s;
}

std::string UploadFrameXml(int position, int length) {
  return "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\n<XML_VEXORA>\n<MESSAGE_HEADER\n"
         "\t\t\t\t\tMsg_type=\"MEDIA_DATA_MESSAGE\" \nMsg_code=\"1\" Msg_flag=\"0\" />\n"
         "\t\t\t\t\t<MESSAGE_BODY>\n<POS\nStartPos=\"" + std::to_string(position) +
         "\"  DataLen=\"" + std::to_string(length) + "\" />\n</MESSAGE_BODY>\n</XML_VEXORA>";
}

TEST_F(TransferWire, RequestsAreExact) {
  std::string path = UploadPath("up.bin", "12345");
  ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, path.c_str()));
  auto up = Frames("SYSTEM_CONTROL_MESSAGE");
  ASSERT_FALSE(up.empty());
  EXPECT_EQ(Envelope("SYSTEM_CONTROL_MESSAGE", "1022",
                     "<REQUEST_PARAM\nFileType=\"2\" FilePath= \"" + path +
                         "\"  FileLength=\"5\" \n/>"),
            up[0].payload);
  ASSERT_TRUE(WaitEnd(EVENT_UPLOADOK));

  camera_->ClearReceived();
  ASSERT_EQ(EVENT_DOWNLOADOK, Download("a.jpg", "x"));
  auto down = camera_->ReceivedOfType("SYSTEM_CONTROL_MESSAGE");
  ASSERT_FALSE(down.empty());
  EXPECT_EQ(Envelope("SYSTEM_CONTROL_MESSAGE", "1023",
                     "<REQUEST_PARAM\nFileName = \"/mnt/sd/a.jpg\" StartPos=\"0\" />"),
            down[0].payload);
}

TEST_F(TransferWire, UnansweredRequestIsAnnouncedAgainEveryFiveSeconds) {
  Files().SetAnswerRequests(false);
  std::string path = UploadPath("up.bin", "12345");
  ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, path.c_str()));
  auto frames = Frames("SYSTEM_CONTROL_MESSAGE", 3);
  ASSERT_GE(frames.size(), 3u);
  std::string again = Envelope("SYSTEM_CONTROL_MESSAGE", "1022",
                               "<RESPONSE_PARAM\nFileType=\"2\" FileName=\"" + path +
                                   "\" StartPos=\"0\" />");
  EXPECT_EQ(again, frames[1].payload);
  EXPECT_EQ(again, frames[2].payload);
  // 5 s at the case's timer scale, give or take the machine's load.
  unsigned long gap = frames[2].tick - frames[1].tick;
  EXPECT_GE(gap, 450u);

  // A download waiting for its reply is announced with both names.
  ASSERT_EQ(0, IP_NET_DVR_CloseUpgradeHandle(id_));
  camera_->ClearReceived();
  std::string remote = "/mnt/sd/b.avi";
  ASSERT_EQ(0, IP_NET_DVR_GetFileByName(id_, 2, &remote[0], dir_.path().c_str()));
  frames = Frames("SYSTEM_CONTROL_MESSAGE", 2);
  ASSERT_GE(frames.size(), 2u);
  EXPECT_EQ(Envelope("SYSTEM_CONTROL_MESSAGE", "1023",
                     "<RESPONSE_PARAM\nRemoteFileName=\"/mnt/sd/b.avi\" LocalFileName=\"" +
                         (dir_ / "b.avi") + "\" StartPos=\"0\" />"),
            frames[1].payload);
}

TEST_F(TransferWire, DataChannelCarriesHeaderFileAndEndText) {
  std::string bytes = TestBytes(5000, 3);
  std::string path = UploadPath("up.bin", bytes);
  ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, path.c_str()));
  ASSERT_TRUE(WaitEnd(EVENT_UPLOADOK));
  ASSERT_EQ(EVENT_DOWNLOADOK, Download("d.bin", TestBytes(300)));

  auto channels = Files().DataChannels();
  ASSERT_EQ(2u, channels.size());
  // The sender's header: flag 18 95 58 31, four zero bytes, the length.
  EXPECT_EQ(std::string("\x18\x95\x58\x31\0\0\0\0", 8) + Le32(5000) + bytes,
            channels[0].received);
  // The receiver of a whole file answers with the 18 bytes and nothing else.
  EXPECT_EQ("FILE TRANSPORT OK!", channels[1].received);
}

TEST_F(TransferWire, LinkModeUploadFrames) {
  Files().SetMode(qvemu::FileMode::kLink);
  std::string bytes = TestBytes(40000, 5);
  std::string path = UploadPath("up.bin", bytes);
  ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, path.c_str()));
  ASSERT_TRUE(WaitEnd(EVENT_UPLOADOK));
  auto frames = Frames("MEDIA_DATA_MESSAGE", 3);
  ASSERT_EQ(3u, frames.size());
  const std::string gap(4, '\0');
  EXPECT_EQ(UploadFrameXml(0, 32768) + gap + bytes.substr(0, 32768), frames[0].payload);
  EXPECT_EQ(UploadFrameXml(32768, 40000 - 32768) + gap + bytes.substr(32768), frames[1].payload);
  EXPECT_EQ(UploadFrameXml(40000, 0) + gap, frames[2].payload);
}

}  // namespace
}  // namespace qvtest
