// Snapshots fetched to the caller's path within the wait, firmware images
// the camera checks, and the configuration file both ways.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "emu/firmware_image.h"
#include "emu/snapshot_picture.h"
#include "transfer/transfer_fixture.h"

namespace qvtest {
namespace {

using SnapshotUpgrade = TransferFixture;

TEST_F(SnapshotUpgrade, SnapshotIsStoredAtThePathWithinTheWait) {
  const qvemu::FileMode modes[] = {qvemu::FileMode::kChannel, qvemu::FileMode::kLink};
  int n = 0;
  for (qvemu::FileMode mode : modes) {
    SCOPED_TRACE(mode == qvemu::FileMode::kLink ? "link" : "channel");
    Files().SetMode(mode);
    camera_->ClearReceived();
    std::string path = dir_ / ("pic" + std::to_string(++n) + ".jpg");
    ASSERT_EQ(0, IP_NET_DVR_SnapPic(id_, 1, 80, path.c_str(), kWaitMs));
    EXPECT_EQ(qvemu::SnapshotPicture(), testsupport::ReadFile(path));

    auto requests = Frames("SYSTEM_CONTROL_MESSAGE", 2);
    ASSERT_EQ(2u, requests.size());
    EXPECT_EQ(Envelope("SYSTEM_CONTROL_MESSAGE", "1043",
                       "<REQUEST_PARAM Stream=\"1\" Quality=\"80\"/>"),
              requests[0].payload);
    std::string remote = "/mnt/sd/snapshot/snap_000" + std::to_string(n) + ".jpg";
    EXPECT_EQ(Envelope("SYSTEM_CONTROL_MESSAGE", "1023",
                       "<REQUEST_PARAM\nFileName = \"" + remote + "\" StartPos=\"0\" />"),
              requests[1].payload);
    // The host hears of the picture as alarm 23 naming the camera's file.
    EXPECT_TRUE(events_.WaitStatus(id_, EVENT_PTZALARM, kWaitMs, n));
    EXPECT_TRUE(events_.WaitStatus(id_, EVENT_DOWNLOADOK, kWaitMs, n));
  }
  StatusEvent alarm = events_.First(id_, EVENT_PTZALARM);
  EXPECT_EQ(23, alarm.alarm.alarm_code);
  EXPECT_STREQ("/mnt/sd/snapshot/snap_0001.jpg", alarm.alarm.alarm_data);
}

TEST_F(SnapshotUpgrade, SnapshotWaitEndsWithTimeoutOrTheDownloadsRefusal) {
  // A camera that acknowledges but never announces a picture.
  camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1043, 0, "");
  EXPECT_EQ(QV_E_SNAP_TIMEOUT, IP_NET_DVR_SnapPic(id_, 0, 50, (dir_ / "a.jpg").c_str(), 300));
  camera_->ClearReplies();

  // While another download waits for its reply the picture cannot be fetched.
  Files().SetAnswerRequests(false);
  std::string remote = "/mnt/sd/r.bin";
  ASSERT_EQ(0, IP_NET_DVR_GetFileByName(id_, 2, &remote[0], dir_.path().c_str()));
  EXPECT_EQ(QV_E_DOWNLOAD_BUSY, IP_NET_DVR_SnapPic(id_, 0, 50, (dir_ / "b.jpg").c_str(), kWaitMs));
  EXPECT_FALSE(FileExists(dir_ / "b.jpg"));
}

TEST_F(SnapshotUpgrade, CameraChecksTheFirmwareImage) {
  const std::string good = qvemu::MakeFirmwareImage(7, TestBytes(300000, 11));
  std::string bad = good;
  bad[1000] ^= 0x5a;
  struct Case {
    qvemu::FileMode mode;
    const std::string* image;
    int ok;      // status 14 events that say success
    int failed;  // status 15 events
  } cases[] = {
      {qvemu::FileMode::kChannel, &good, 1, 0},
      {qvemu::FileMode::kChannel, &bad, 0, 1},
      {qvemu::FileMode::kLink, &good, 1, 0},
      // Inside the link the upload itself succeeds; the camera then refuses it.
      {qvemu::FileMode::kLink, &bad, 1, 1},
  };
  int uploads = 0;
  for (const Case& c : cases) {
    bool link = c.mode == qvemu::FileMode::kLink;
    SCOPED_TRACE(std::string(link ? "link, " : "channel, ") + (c.image == &good ? "good" : "bad"));
    events_.Clear();
    Files().SetMode(c.mode);
    std::string path = UploadPath("fw.bin", *c.image);
    ASSERT_EQ(0, IP_NET_DVR_Upgrade(id_, path.c_str()));
    ASSERT_TRUE(Files().WaitUploads(++uploads, kWaitMs));
    ASSERT_TRUE(WaitEnd(c.failed ? EVENT_UPLOADFAILED : EVENT_UPLOADOK));
    if (c.ok) {
      std::string final_text = link ? "<RESPONSE_PARAM\nFileType=\"1\" FileName=\"" + path +
                                          "\" StartPos=\"0\" ErrorCode=\"0\"  \n/>"
                                    : "<RESPONSE_PARAM\nFileType=\"1\"\nFileName=\"" + path +
                                          "\"\nProgress=\"100\"\n/>";
      ASSERT_TRUE(events_.WaitStatus(id_, EVENT_UPLOADOK, kWaitMs));
      bool found = false;
      for (const StatusEvent& e : events_.Status()) found |= e.text == final_text;
      EXPECT_TRUE(found);
    }
    EXPECT_EQ(c.failed, events_.Count(id_, EVENT_UPLOADFAILED));
    qvemu::FirmwareReport report = Files().LastFirmware();
    EXPECT_TRUE(report.checked);
    EXPECT_EQ(c.image == &good, report.check.ok) << report.check.reason;
    EXPECT_EQ(7u, report.check.version);
  }
}

TEST_F(SnapshotUpgrade, ConfigurationFileBothWays) {
  std::string local = dir_ / "config.xml";
  ASSERT_EQ(0, IP_NET_DVR_GetConfigFile(id_, local.c_str()));
  ASSERT_EQ(EVENT_DOWNLOADOK, WaitDownloadEnd());
  std::string document = testsupport::ReadFile(local);
  EXPECT_EQ(camera_->ConfigDocument(), document);
  auto requests = Frames("SYSTEM_CONTROL_MESSAGE");
  ASSERT_FALSE(requests.empty());
  EXPECT_NE(std::string::npos, requests[0].body.find("FileName = \"/mnt/nand/config.xml\""));

  // Sent back with another host name, the camera takes it as its document.
  size_t at = document.find("hostname=\"quorvel-emu\"");
  ASSERT_NE(std::string::npos, at);
  document.replace(at, strlen("hostname=\"quorvel-emu\""), "hostname=\"qv-uploaded\"");
  testsupport::WriteFile(local, document);
  ASSERT_EQ(0, IP_NET_DVR_SetConfigFile(id_, local.c_str()));
  ASSERT_TRUE(WaitEnd(EVENT_UPLOADOK));
  EXPECT_NE(std::string::npos, camera_->ConfigDocument().find("hostname=\"qv-uploaded\""));
  EXPECT_NE(std::string::npos, camera_->ReceivedOfType("SYSTEM_CONTROL_MESSAGE").back().body.find(
                                   "FileType=\"0\""));
}

}  // namespace
}  // namespace qvtest
