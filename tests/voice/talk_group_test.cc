// The registry's talk group: accepted, never filled, and no harm to a
// session's own talk.
#include <gtest/gtest.h>

#include "link/camera_fixture.h"

namespace qvtest {
namespace {

class TalkGroupTest : public CameraFixture {};

TEST_F(TalkGroupTest, AddTalkKeepsNothingSoRemoveTalkNeverFindsTheDevice) {
  long id = LoginReady();
  EXPECT_EQ(IP_NET_DVR_RemoveTalk(id), QV_E_UNKNOWN_USER);
  EXPECT_EQ(IP_NET_DVR_AddTalk(id), 0);
  EXPECT_EQ(IP_NET_DVR_StartTalk(0, 8000, 1, 0), 0);
  EXPECT_EQ(IP_NET_DVR_RemoveTalk(id), QV_E_UNKNOWN_USER);
  EXPECT_EQ(IP_NET_DVR_StopTalk(), 0);
  // Unknown IDs are accepted the same way.
  EXPECT_EQ(IP_NET_DVR_AddTalk(0), 0);
  EXPECT_EQ(IP_NET_DVR_RemoveTalk(0), QV_E_UNKNOWN_USER);
  // The group sent nothing to the camera and the session is unharmed.
  EXPECT_TRUE(Requests().empty());
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
}

}  // namespace
}  // namespace qvtest
