// A test fixture with one emulated camera on a free loopback port, the
// library's callbacks recorded, and helpers to log in and to look at what the
// camera received. Each test case runs in a process of its own, so the
// library's process-wide registry starts empty every time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/time_scale.h"
#include "emu/camera.h"
#include "link/event_recorder.h"
#include "quorvel/quorvel.h"
#include "support/time_factor.h"

namespace qvtest {

// Generous: the machine is shared and busy.
const int kWaitMs = static_cast<int>(10000 * TestTimeFactor());

class CameraFixture : public ::testing::Test {
 protected:
  // Timer scale of the case: 5 s protocol timers run in 5 s * scale
  // (stretched by the test time factor under emulation).
  virtual double Scale() const { return 0.02; }
  virtual qvemu::CameraOptions Options() const { return qvemu::CameraOptions(); }

  void SetUp() override {
    SetTimerScale(StretchedScale(Scale()));
    IP_NET_DVR_Init();
    camera_.reset(new qvemu::Camera(Options()));
    ASSERT_TRUE(camera_->Start());
    events_.Install();
  }

  void TearDown() override {
    IP_NET_DVR_Cleanup();
    camera_->Stop();
  }

  long Login(const char* user = "admin", const char* password = "admin") {
    return IP_NET_DVR_Login("127.0.0.1", camera_->Port(), const_cast<char*>(user),
                            const_cast<char*>(password), nullptr);
  }

  // Logs in and waits until the session is logged in and its first request
  // (the ability query) has been answered; the camera's record is cleared.
  long LoginReady() {
    long id = Login();
    EXPECT_GT(id, 0);
    EXPECT_TRUE(events_.WaitStatus(id, EVENT_LOGINOK, kWaitMs));
    EXPECT_TRUE(events_.WaitAux(id, 1020, kWaitMs));
    camera_->ClearReceived();
    return id;
  }

  std::string Label() const { return "ipc[127.0.0.1:" + std::to_string(camera_->Port()) + "]"; }

  // Waits for n frames of the type and returns them.
  std::vector<qvemu::ReceivedFrame> Frames(const std::string& type, size_t n = 1,
                                           int timeout_ms = kWaitMs) {
    camera_->WaitForFrames(
        [&](const std::vector<qvemu::ReceivedFrame>& all) {
          size_t count = 0;
          for (const auto& f : all) count += f.type == type ? 1 : 0;
          return count >= n;
        },
        timeout_ms);
    return camera_->ReceivedOfType(type);
  }

  // What the camera received, heartbeats left out (they come on their own
  // timer and may fall anywhere).
  static std::vector<qvemu::ReceivedFrame> WithoutHeartbeats(
      const std::vector<qvemu::ReceivedFrame>& all) {
    std::vector<qvemu::ReceivedFrame> out;
    for (const auto& f : all) {
      if (f.type != "AUXPTZ_HEARTBEAT_MESSAGE") out.push_back(f);
    }
    return out;
  }
  std::vector<qvemu::ReceivedFrame> Requests() const { return WithoutHeartbeats(camera_->Received()); }

  std::unique_ptr<qvemu::Camera> camera_;
  EventRecorder events_;
};

// The envelope the library sends, for exact comparisons.
inline std::string Envelope(const std::string& type, const std::string& code,
                            const std::string& body) {
  std::string head = "<?xml version=\"1.0\" encoding=\"GB2312\" ?><XML_VEXORA>\n<MESSAGE_HEADER\n"
                     "Msg_type=\"" + type + "\"\nMsg_code=\"" + code + "\"\nMsg_flag=\"0\"\n/>";
  if (body.empty()) return head + "<MESSAGE_BODY/>\n</XML_VEXORA>";
  return head + "<MESSAGE_BODY>\n" + body + "\n</MESSAGE_BODY>\n</XML_VEXORA>";
}

}  // namespace qvtest
