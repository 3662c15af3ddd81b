// Every refusal of the file functions: one transfer at a time, none while
// talk is requested, missing files, nothing to stop, the wrong direction,
// unusable arguments and unknown sessions.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "api/ptz_object_list.h"
#include "link/ptz_control_class.h"
#include "transfer/transfer_fixture.h"

namespace qvtest {
namespace {

class TransferRefusal : public TransferFixture {
 protected:
  void SetUp() override {
    TransferFixture::SetUp();
    // Requests stay unanswered, so a started transfer keeps running.
    Files().SetAnswerRequests(false);
    upload_ = UploadPath("u.bin", "data");
  }

  long StartDownload() {
    std::string remote = "/mnt/sd/r.bin";
    return IP_NET_DVR_GetFileByName(id_, 2, &remote[0], dir_.path().c_str());
  }

  std::string upload_;
};

TEST_F(TransferRefusal, OneTransferAtATime) {
  struct Case {
    const char* running;
    const char* name;
    std::function<long()> start;
    long expected;
  };
  auto upload = [this] { return IP_NET_DVR_UploadFile(id_, 2, upload_.c_str()); };
  auto upgrade = [this] { return IP_NET_DVR_Upgrade(id_, upload_.c_str()); };
  auto download = [this] { return StartDownload(); };
  auto config = [this] { return IP_NET_DVR_GetConfigFile(id_, (dir_ / "c.xml").c_str()); };
  const Case cases[] = {
      {"upload", "upload", upload, QV_E_UPLOAD_BUSY},
      {"upload", "upgrade", upgrade, QV_E_UPLOAD_BUSY},
      {"upload", "download", download, QV_E_UPLOAD_BUSY},
      {"upload", "config file", config, QV_E_UPLOAD_BUSY},
      {"download", "upload", upload, QV_E_DOWNLOAD_BUSY},
      {"download", "download", download, QV_E_DOWNLOAD_BUSY},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " while an " + c.running + " runs");
    bool up = std::string(c.running) == "upload";
    ASSERT_EQ(0, up ? upload() : download());
    EXPECT_EQ(c.expected, c.start());
    // The other direction's progress is refused, its own is a percentage.
    EXPECT_EQ(QV_E_WRONG_DIRECTION,
              up ? IP_NET_DVR_GetDownloadPos(id_) : IP_NET_DVR_GetUpgradeProgress(id_));
    EXPECT_EQ(0, up ? IP_NET_DVR_GetUpgradeProgress(id_) : IP_NET_DVR_GetDownloadPos(id_));
    EXPECT_EQ(0, IP_NET_DVR_CloseUpgradeHandle(id_));
    EXPECT_EQ(QV_E_TRANSFER_STOP, IP_NET_DVR_CloseUpgradeHandle(id_));
    EXPECT_EQ(101, IP_NET_DVR_GetDownloadPos(id_));
  }
}

TEST_F(TransferRefusal, NoDownloadWhileTalkIsRequested) {
  CPTZControlClass* session = ObjectPtzList.FindObjectByID(id_, 0);
  ASSERT_NE(nullptr, session);
  session->SetTalkRequested(true);
  ObjectPtzList.ReleaseObjLock();
  EXPECT_EQ(QV_E_TALK_BUSY, StartDownload());
  // A snapshot's picture is a download too: the wait ends with the refusal.
  EXPECT_EQ(QV_E_TALK_BUSY, IP_NET_DVR_SnapPic(id_, 0, 50, (dir_ / "s.jpg").c_str(), kWaitMs));
  EXPECT_FALSE(FileExists(dir_ / "s.jpg"));
  // Uploads are not held back by talk.
  EXPECT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, upload_.c_str()));
}

TEST_F(TransferRefusal, BadArguments) {
  std::string missing = dir_ / "missing.bin";
  std::string remote = "/mnt/sd/r.bin";
  std::string not_xml = UploadPath("bad.xml", "<a><b></a>");
  std::string no_root = UploadPath("empty.xml", "<!-- nothing -->");
  struct Case {
    const char* name;
    long result;
    long expected;
  } cases[] = {
      {"upload of nothing", IP_NET_DVR_UploadFile(id_, 2, nullptr), QV_E_FILE_MISSING},
      {"upload of a missing file", IP_NET_DVR_UploadFile(id_, 2, missing.c_str()), QV_E_FILE_MISSING},
      {"upgrade of nothing", IP_NET_DVR_Upgrade(id_, nullptr), QV_E_FILE_MISSING},
      {"upgrade of a missing file", IP_NET_DVR_Upgrade(id_, missing.c_str()), QV_E_FILE_MISSING},
      {"download of nothing", IP_NET_DVR_GetFileByName(id_, 2, nullptr, dir_.path().c_str()),
       QV_E_INVALID_ARG},
      {"download into nothing", IP_NET_DVR_GetFileByName(id_, 2, &remote[0], nullptr),
       QV_E_INVALID_ARG},
      {"configuration that is not XML", IP_NET_DVR_SetConfigFile(id_, not_xml.c_str()), -1},
      {"configuration without a root", IP_NET_DVR_SetConfigFile(id_, no_root.c_str()), -2},
      {"stop with nothing running", IP_NET_DVR_CloseUpgradeHandle(id_), QV_E_TRANSFER_STOP},
      {"progress with nothing running", IP_NET_DVR_GetUpgradeProgress(id_), 101},
      {"unknown user: upload", IP_NET_DVR_UploadFile(99, 2, upload_.c_str()), QV_E_UNKNOWN_USER},
      {"unknown user: download", IP_NET_DVR_GetFileByName(99, 2, &remote[0], "/tmp"),
       QV_E_UNKNOWN_USER},
      {"unknown user: progress", IP_NET_DVR_GetDownloadPos(0), QV_E_UNKNOWN_USER},
      {"unknown user: stop", IP_NET_DVR_CloseUpgradeHandle(129), QV_E_UNKNOWN_USER},
      {"state functions", IP_NET_DVR_GetDownloadState(99) + IP_NET_DVR_GetUpgradeState(99) +
                              IP_NET_DVR_StopGetFile(99), 0},
  };
  for (const Case& c : cases) EXPECT_EQ(c.expected, c.result) << c.name;
  EXPECT_TRUE(Requests().empty());
}

}  // namespace
}  // namespace qvtest
