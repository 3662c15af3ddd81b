// The emulated camera's configuration in the model: sections by code, sets
// read with the model, refusals, and whole documents.
#include "emu/config_store.h"

#include <gtest/gtest.h>

namespace qvemu {
namespace {

TEST(ConfigStoreTest, EveryGetCodeAnswersItsSection) {
  ConfigStore store;
  const long codes[] = {200, 201, 202, 203, 204, 205, 300, 305, 306, 310, 311, 312, 315,
                        400, 401, 402, 500, 501, 502, 503, 504, 505, 507, 508, 509, 510,
                        600, 650, 680, 700, 800, 801, 802, 803, 804, 805, 808};
  for (long code : codes) {
    std::string xml;
    ASSERT_TRUE(store.GetSection(code, &xml)) << code;
    std::string name = ConfigStore::GetSectionName(code);
    EXPECT_EQ(xml.compare(0, name.size() + 1, "<" + name), 0) << code << "\n" << xml;
  }
  // Elements of the same name are told apart by their code.
  std::string video, audio;
  ASSERT_TRUE(store.GetSection(503, &video));
  ASSERT_TRUE(store.GetSection(508, &audio));
  EXPECT_NE(video.find("<EncodeConfig"), std::string::npos) << video;
  EXPECT_NE(audio.find("EncodeType=\"G711A\""), std::string::npos) << audio;
}

TEST(ConfigStoreTest, TheCamerasOwnSectionSetBackChangesNothing) {
  // Every set code, given what the matching get answers.
  const struct {
    long set, get;
  } pairs[] = {{222, 202}, {223, 203}, {227, 205}, {320, 300}, {325, 305}, {326, 306},
               {520, 500}, {521, 501}, {522, 502}, {523, 503}, {524, 504}, {525, 505},
               {529, 509}, {531, 501}, {620, 600}, {670, 650}, {681, 680}, {820, 800},
               {821, 801}, {822, 802}, {823, 803}, {824, 804}, {828, 800}, {829, 808},
               {830, 800}};
  ConfigStore store;
  std::string before = store.Text();
  for (const auto& p : pairs) {
    std::string xml;
    ASSERT_TRUE(store.GetSection(p.get, &xml)) << p.get;
    EXPECT_TRUE(store.SetSection(p.set, xml)) << p.set;
    EXPECT_EQ(store.Text(), before) << p.set;
  }
}

TEST(ConfigStoreTest, RefusalsLeaveTheConfigurationAsItWas) {
  ConfigStore store;
  std::string before = store.Text();
  std::string xml;
  EXPECT_FALSE(store.GetSection(999, &xml));
  EXPECT_FALSE(store.GetSection(325, &xml));                         // a set code
  EXPECT_FALSE(store.SetSection(305, "<LANConfig DHCP=\"1\"/>"));    // a get code
  EXPECT_FALSE(store.SetSection(325, "<WIFIConfig Enable=\"1\"/>"));  // another element
  EXPECT_FALSE(store.SetSection(325, "<LANConfig DHCP=\"1\""));
  EXPECT_FALSE(store.SetSection(325, ""));
  EXPECT_EQ(store.Text(), before);
}

TEST(ConfigStoreTest, ASetChangesLaterAnswersAndOnlyItsSection) {
  ConfigStore store;
  std::string upnp;
  ASSERT_TRUE(store.GetSection(312, &upnp));
  // As the library's writer sends it: one line, a trailing blank.
  ASSERT_TRUE(store.SetSection(325, "<LANConfig DHCP=\"1\" IPAddress=\"10.0.0.7\" MTU=\"9000\" /> "));
  EXPECT_STREQ(store.Config().network.LAN.IPAddress, "10.0.0.7");
  EXPECT_EQ(store.Config().network.LAN.MTU, 1400u);  // the model's check applies
  std::string xml;
  ASSERT_TRUE(store.GetSection(305, &xml));
  EXPECT_NE(xml.find("IPAddress=\"10.0.0.7\""), std::string::npos) << xml;
  ASSERT_TRUE(store.GetSection(312, &xml));
  EXPECT_EQ(xml, upnp);
  ASSERT_TRUE(store.SetSection(828, "<VideoGate><Line1 fromx=\"1\"/></VideoGate>"));
  EXPECT_EQ(store.Config().alarm.Gate.Line[0].fromx, 1);
  EXPECT_NE(store.Text().find("<Line1 fromx=\"1\" "), std::string::npos);
}

TEST(ConfigStoreTest, LoadAcceptsBothRootsAndRefusesOthers) {
  ConfigStore store;
  EXPECT_TRUE(store.Load("<VEXORAConfig><MediaStreamConfig><StreamAccess VideoPort=\"8554\"/>"
                         "</MediaStreamConfig></VEXORAConfig>"));
  EXPECT_EQ(store.Config().mediaStream.StreamAccess.VideoPort, 8554);
  EXPECT_FALSE(store.Load("<Other/>"));
  EXPECT_FALSE(store.Load("<IPCConfig>"));
  EXPECT_EQ(store.Config().mediaStream.StreamAccess.VideoPort, 8554);
  // The whole document as the model writes it reads back the same.
  ConfigStore copy;
  ASSERT_TRUE(copy.Load(ConfigStore().Text()));
  EXPECT_EQ(copy.Text(), ConfigStore().Text());
}

}  // namespace
}  // namespace qvemu
