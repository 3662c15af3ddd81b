// A camera that misbehaves during a transfer: a data channel that lies
// about its length, stalls or closes early, hostile replies to the
// transfer requests, and broken frames of a link-mode download. Each ends
// the transfer with its failure status, leaves the files as documented, and
// lets the next transfer run.
#include <gtest/gtest.h>

#include <string>

#include "emu/envelope.h"
#include "transfer/transfer_fixture.h"

namespace qvtest {
namespace {

using Fault = qvemu::DataChannelFault;

class TransferFaults : public TransferFixture {
 protected:
  // 1 s waits in 20 ms, the 60 s stall rule in 1.2 s.
  double Scale() const override { return 0.02; }

  // After a failure the session takes the next transfer as usual.
  void ExpectNextTransferWorks() {
    Files().SetFault(Fault());
    Files().SetMode(qvemu::FileMode::kChannel);
    events_.Clear();
    std::string bytes = TestBytes(1000, 9);
    ASSERT_EQ(EVENT_DOWNLOADOK, Download("next.bin", bytes));
    EXPECT_EQ(bytes, testsupport::ReadFile(dir_ / "next.bin"));
  }
};

TEST_F(TransferFaults, DataChannelThatBreaksItsWordFailsTheDownload) {
  const std::string bytes = TestBytes(300000, 4);
  struct Case {
    const char* name;
    Fault fault;
    size_t kept;  // bytes the local file holds afterwards
  } cases[] = {
      {"announces more than it sends", {Fault::kWrongLength, 5000}, bytes.size()},
      {"stalls", {Fault::kStall, 100000}, 100000},
      {"stays silent", {Fault::kStall, 0}, 0},
      {"closes early", {Fault::kCloseEarly, 4096}, 4096},
      {"opens with the wrong flag", {Fault::kWrongFlag, 0}, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    events_.Clear();
    Files().SetFault(c.fault);
    ASSERT_EQ(EVENT_DOWNLOADFAILED, Download("cut.bin", bytes));
    // The partial file is renamed all the same; only the status tells.
    std::string local = dir_ / "cut.bin";
    EXPECT_EQ(bytes.substr(0, c.kept), testsupport::ReadFile(local));
    EXPECT_FALSE(FileExists(local + ".tmp"));
    EXPECT_EQ("<RESPONSE_PARAM\nRemoteFileName=\"/mnt/sd/cut.bin\"\nLocalFileName=\"" + local +
                  "\"\n/>",
              events_.First(id_, EVENT_DOWNLOADFAILED).text);
    EXPECT_EQ(101, IP_NET_DVR_GetDownloadPos(id_));
  }
  ExpectNextTransferWorks();
}

TEST_F(TransferFaults, DataChannelThatStopsTakingFailsTheUpload) {
  std::string path = UploadPath("big.bin", TestBytes(2000000, 2));
  const Fault faults[] = {{Fault::kStall, 0}, {Fault::kCloseEarly, 50000}};
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.kind == Fault::kStall ? "stall" : "close");
    events_.Clear();
    Files().SetFault(fault);
    ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, path.c_str()));
    ASSERT_TRUE(WaitEnd(EVENT_UPLOADFAILED));
    EXPECT_EQ("<RESPONSE_PARAM\nFileType=\"2\"\nFileName=\"" + path + "\"\nProgress=\"-1\"\n/>",
              events_.First(id_, EVENT_UPLOADFAILED).text);
  }
  ExpectNextTransferWorks();
}

TEST_F(TransferFaults, HostileRepliesFailTheTransferCleanly) {
  Files().SetMode(qvemu::FileMode::kLink);  // FileLength matters in link mode
  std::string upload = UploadPath("u.bin", "payload");
  struct Case {
    const char* name;
    int flag;
    const char* body;
  } cases[] = {
      {"refused", -1, "<RESPONSE_PARAM Port=\"5000\" Type=\"0\" />"},
      {"no port", 0, "<RESPONSE_PARAM Type=\"0\" />"},
      {"port 0", 0, "<RESPONSE_PARAM Port=\"0\" Type=\"1\" FileLength=\"10\" />"},
      {"no body", 0, ""},
      {"not XML", 0, "<RESPONSE_PARAM Port=\"5000"},
      {"negative length", 0, "<RESPONSE_PARAM Port=\"5000\" Type=\"1\" FileLength=\"-5\" />"},
      {"huge length", 0,
       "<RESPONSE_PARAM Port=\"5000\" Type=\"1\" FileLength=\"99999999999999999999\" />"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    events_.Clear();
    camera_->ClearReplies();
    camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1022, c.flag, c.body);
    camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1023, c.flag, c.body);
    bool length_only = std::string(c.name).find("length") != std::string::npos;
    if (!length_only) {
      ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, upload.c_str()));
      ASSERT_TRUE(WaitEnd(EVENT_UPLOADFAILED));
      EXPECT_EQ("<RESPONSE_PARAM\nFileType=\"2\" FileName=\"" + upload + "\" />",
                events_.First(id_, EVENT_UPLOADFAILED).text);
    }
    std::string remote = "/mnt/sd/h.bin";
    ASSERT_EQ(0, IP_NET_DVR_GetFileByName(id_, 2, &remote[0], dir_.path().c_str()));
    // A length that cannot be right fails at once.
    ASSERT_EQ(EVENT_DOWNLOADFAILED, WaitDownloadEnd());
    EXPECT_FALSE(FileExists(dir_ / "h.bin"));
  }
  camera_->ClearReplies();
  ExpectNextTransferWorks();
}

TEST_F(TransferFaults, BrokenLinkModeFramesFailTheDownload) {
  Files().SetMode(qvemu::FileMode::kLink);
  // The camera sends the first 32,768 of 100,000 bytes and then nothing.
  Files().SetFault({Fault::kStall, 32768});
  struct Case {
    const char* name;
    int position;
    int length;
    size_t data;  // bytes behind the XML text and its 4 zero bytes
    const char* error;
  } cases[] = {
      {"wrong position", 100, 10, 10, "recv file pos!=file write pos"},
      {"length beyond the frame", 32768, 5000, 10, "recv file data length error"},
      {"negative length", 32768, -10, 10, "recv file data length error"},
      {"nothing more comes", -1, 0, 0, "60 seconds not recv buffer"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    events_.Clear();
    std::string remote = "/mnt/sd/l.bin";
    Files().Store().Put(remote, TestBytes(100000));
    ASSERT_EQ(0, IP_NET_DVR_GetFileByName(id_, 2, &remote[0], dir_.path().c_str()));
    ASSERT_TRUE(testsupport::WaitFor([&] { return IP_NET_DVR_GetDownloadPos(id_) == 32; }));
    if (c.position >= 0) {
      std::string payload = qvemu::MakeEnvelope(
          "MEDIA_DATA_MESSAGE", "0", "0",
          "<POS StartPos=\"" + std::to_string(c.position) + "\" DataLen=\"" +
              std::to_string(c.length) + "\" />");
      payload += std::string(4, '\0') + TestBytes(c.data);
      ASSERT_TRUE(camera_->SendFrame(payload));
    }
    ASSERT_EQ(EVENT_DOWNLOADFAILED, WaitDownloadEnd());
    std::string text = events_.First(id_, EVENT_DOWNLOADFAILED).text;
    EXPECT_NE(std::string::npos, text.find(std::string("errormsg=\"") + c.error + "\"")) << text;
    // A failed download inside the link removes its file.
    EXPECT_FALSE(FileExists(dir_ / "l.bin"));
  }
  ExpectNextTransferWorks();
}

}  // namespace
}  // namespace qvtest
