// The camera's configuration document: sections by code, set round trips.
#include "emu/config_store.h"

#include <gtest/gtest.h>

namespace qvemu {
namespace {

TEST(ConfigStoreTest, DefaultDocumentHoldsEveryReadableSection) {
  ConfigStore store;
  const long codes[] = {200, 201, 202, 203, 204, 205, 300, 305, 306, 310, 311, 312, 315,
                        400, 401, 402, 500, 501, 502, 503, 504, 505, 507, 508, 509, 510,
                        600, 650, 680, 700, 800, 801, 802, 803, 804, 805, 808};
  for (long code : codes) {
    std::string xml;
    EXPECT_TRUE(store.GetSection(code, &xml)) << code;
    EXPECT_EQ(xml.rfind("<" + ConfigStore::GetPath(code).back(), 0), 0u) << code << xml;
  }
}

TEST(ConfigStoreTest, SectionsWithTheSameNameAreToldApartByPath) {
  ConfigStore store;
  std::string video, audio;
  ASSERT_TRUE(store.GetSection(503, &video));
  ASSERT_TRUE(store.GetSection(508, &audio));
  EXPECT_NE(video.find("<EncodeConfig"), std::string::npos);
  EXPECT_NE(audio.find("EncodeType=\"G711A\""), std::string::npos);
}

TEST(ConfigStoreTest, RefusalsLeaveTheDocumentAsItWas) {
  ConfigStore store;
  std::string before = store.Text();
  std::string xml;
  EXPECT_FALSE(store.GetSection(999, &xml));
  EXPECT_FALSE(store.GetSection(325, &xml));  // a set code
  EXPECT_FALSE(store.SetSection(305, "<LANConfig DHCP=\"1\"/>"));  // a get code
  EXPECT_FALSE(store.SetSection(325, "<WIFIConfig Enable=\"1\"/>"));  // another element
  EXPECT_FALSE(store.SetSection(325, "<LANConfig DHCP=\"1\""));
  EXPECT_FALSE(store.SetSection(325, ""));
  EXPECT_EQ(store.Text(), before);
}

TEST(ConfigStoreTest, SetReplacesOrAddsTheSectionAndGetReturnsIt) {
  ConfigStore store;
  // As the library's writer sends it: one line, a trailing blank.
  ASSERT_TRUE(store.SetSection(325, "<LANConfig DHCP=\"1\" IPAddress=\"10.0.0.7\" MTU=\"1500\" /> "));
  std::string xml;
  ASSERT_TRUE(store.GetSection(305, &xml));
  EXPECT_EQ(xml, "<LANConfig DHCP=\"1\" IPAddress=\"10.0.0.7\" MTU=\"1500\" />");
  ASSERT_TRUE(store.GetSection(312, &xml));  // its siblings stay
  EXPECT_EQ(xml, "<UPNPConfig Enable=\"1\" />");

  ASSERT_TRUE(store.SetSection(828, "<VideoGate><Line1 fromx=\"1\"/></VideoGate>"));
  EXPECT_NE(store.Text().find("<Line1 fromx=\"1\" />"), std::string::npos);
  ASSERT_TRUE(store.Load("<IPCConfig/>"));
  ASSERT_TRUE(store.SetSection(822, "<MotionDetectAlarm Enable=\"1\"/>"));
  ASSERT_TRUE(store.GetSection(802, &xml));
  EXPECT_EQ(xml, "<MotionDetectAlarm Enable=\"1\" />");
}

TEST(ConfigStoreTest, LoadAcceptsBothRootsAndRefusesOthers) {
  ConfigStore store;
  EXPECT_TRUE(store.Load("<VEXORAConfig><MediaStreamConfig><StreamAccess VideoPort=\"8554\"/>"
                         "</MediaStreamConfig></VEXORAConfig>"));
  EXPECT_EQ(store.Attribute({"MediaStreamConfig", "StreamAccess"}, "VideoPort"), "8554");
  EXPECT_FALSE(store.Load("<Other/>"));
  EXPECT_FALSE(store.Load("<IPCConfig>"));
  EXPECT_EQ(store.Attribute({"MediaStreamConfig", "StreamAccess"}, "VideoPort"), "8554");
}

}  // namespace
}  // namespace qvemu
