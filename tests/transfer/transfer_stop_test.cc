// Stopping a transfer midway, in both directions and both modes: what the
// camera is told, which status follows, what stays on disk, and progress
// while it runs.
#include <gtest/gtest.h>

#include <string>

#include "transfer/transfer_fixture.h"

namespace qvtest {
namespace {

using Fault = qvemu::DataChannelFault;

class TransferStop : public TransferFixture {
 protected:
  // Starts a 300,000-byte download that stalls after `sent` bytes and waits
  // until that much has arrived.
  void StartStalledDownload(size_t sent, long percent) {
    Files().SetFault({Fault::kStall, static_cast<long>(sent)});
    std::string remote = "/mnt/sd/s.bin";
    Files().Store().Put(remote, bytes_);
    ASSERT_EQ(0, IP_NET_DVR_GetFileByName(id_, 2, &remote[0], dir_.path().c_str()));
    ASSERT_TRUE(testsupport::WaitFor([&] { return IP_NET_DVR_GetDownloadPos(id_) == percent; }));
    EXPECT_EQ(QV_E_WRONG_DIRECTION, IP_NET_DVR_GetUpgradeProgress(id_));
  }

  const std::string bytes_ = TestBytes(300000, 6);
};

TEST_F(TransferStop, ChannelDownloadStopsWithStatus17AndKeepsWhatArrived) {
  StartStalledDownload(60000, 20);
  EXPECT_EQ(0, IP_NET_DVR_CloseUpgradeHandle(id_));
  EXPECT_EQ(EVENT_DOWNLOADFAILED, WaitDownloadEnd());
  EXPECT_EQ(bytes_.substr(0, 60000), testsupport::ReadFile(dir_ / "s.bin"));
  EXPECT_FALSE(FileExists(dir_ / "s.bin.tmp"));
  EXPECT_EQ(QV_E_TRANSFER_STOP, IP_NET_DVR_CloseUpgradeHandle(id_));
  EXPECT_EQ(101, IP_NET_DVR_GetDownloadPos(id_));
}

TEST_F(TransferStop, LinkDownloadStopTellsTheCamera) {
  Files().SetMode(qvemu::FileMode::kLink);
  StartStalledDownload(32768, 10);
  camera_->ClearReceived();
  EXPECT_EQ(0, IP_NET_DVR_CloseUpgradeHandle(id_));
  auto frames = Frames("MEDIA_DATA_MESSAGE");
  ASSERT_EQ(1u, frames.size());
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"GB2312\" ?><XML_VEXORA><MESSAGE_HEADER\n"
            "Msg_type=\"MEDIA_DATA_MESSAGE\" Msg_code=\"2\" Msg_flag=\"0\" /><MESSAGE_BODY>"
            "<POS StartPos=\"0\" DataLen=\"-1\" />\n</MESSAGE_BODY>\n</XML_VEXORA>",
            frames[0].payload);
  // The file is closed where it stood; no status follows a stop in the link.
  EXPECT_EQ(bytes_.substr(0, 32768), testsupport::ReadFile(dir_ / "s.bin"));
  EXPECT_EQ(0, events_.Count(id_, EVENT_DOWNLOADFAILED) + events_.Count(id_, EVENT_DOWNLOADOK));
  EXPECT_EQ(QV_E_TRANSFER_STOP, IP_NET_DVR_CloseUpgradeHandle(id_));
}

TEST_F(TransferStop, UploadStopsWithStatus15) {
  const qvemu::FileMode modes[] = {qvemu::FileMode::kChannel, qvemu::FileMode::kLink};
  std::string path = UploadPath("big.bin", TestBytes(3000000, 8));
  for (qvemu::FileMode mode : modes) {
    SCOPED_TRACE(mode == qvemu::FileMode::kLink ? "link" : "channel");
    events_.Clear();
    Files().SetMode(mode);
    // The camera stops reading after 200,000 bytes.
    Files().SetFault({Fault::kStall, 200000});
    ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, path.c_str()));
    ASSERT_TRUE(testsupport::WaitFor([&] { return IP_NET_DVR_GetUpgradeProgress(id_) > 0; }));
    EXPECT_EQ(QV_E_WRONG_DIRECTION, IP_NET_DVR_GetDownloadPos(id_));
    EXPECT_EQ(0, IP_NET_DVR_CloseUpgradeHandle(id_));
    EXPECT_EQ(101, IP_NET_DVR_GetUpgradeProgress(id_));
    if (mode == qvemu::FileMode::kChannel) {
      EXPECT_TRUE(events_.WaitStatus(id_, EVENT_UPLOADFAILED, kWaitMs));
    }
    for (const StatusEvent& e : events_.Status()) {
      if (e.code != EVENT_UPLOADOK) continue;
      EXPECT_EQ(std::string::npos, e.text.find("Progress=\"100\"")) << e.text;
      EXPECT_EQ(std::string::npos, e.text.find("ErrorCode=\"0\"")) << e.text;
    }
  }
  // The camera never had the whole file.
  EXPECT_EQ(0, Files().Uploads());
}

TEST_F(TransferStop, LogoutFromTheTransfersOwnCallback) {
  // The event of a transfer over the data channel comes from the file send
  // thread; logging out from there finishes on a helper thread.
  events_.SetStatusHook([](long id, long code) {
    if (code == EVENT_DOWNLOADOK) {
      EXPECT_EQ(0, IP_NET_DVR_Logout(id));
    }
  });
  ASSERT_EQ(EVENT_DOWNLOADOK, Download("x.bin", TestBytes(5000)));
  EXPECT_TRUE(events_.WaitStatus(id_, EVENT_LOGOUT_FINISH, kWaitMs));
  EXPECT_EQ(QV_E_UNKNOWN_USER, IP_NET_DVR_GetDownloadPos(id_));
}

}  // namespace
}  // namespace qvtest
