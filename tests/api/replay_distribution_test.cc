// Readers of the replay distribution replies, on texts as the AUX response
// callback hands them over.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "quorvel/quorvel.h"

namespace {

const char kDates[] =
    "\n<RESPONSE_PARAM SearchMode=\"10\" DateCount=\"4\">"
    "<DATE UtcTime=\"5\"/><DATE UtcTime=\"9\"/><DATE UtcTime=\"5\"/><DATE UtcTime=\"7\"/>"
    "</RESPONSE_PARAM>\n";

TEST(ReplayDistribution, SearchModeComesFromTheFirstParamThatHasOne) {
  EXPECT_EQ(IP_NET_DVR_GetReplay_SearchMode_ByXml(kDates), 10);
  EXPECT_EQ(IP_NET_DVR_GetReplay_SearchMode_ByXml(
                "<OTHER/><RESPONSE_PARAM/><RESPONSE_PARAM SearchMode=\"1\"/>"), 1);
  EXPECT_EQ(IP_NET_DVR_GetReplay_SearchMode_ByXml("<RESPONSE_PARAM/>"), QV_E_BAD_REPLY);
  EXPECT_EQ(IP_NET_DVR_GetReplay_SearchMode_ByXml("<a><b></a>"), QV_E_BAD_REPLY);
  EXPECT_EQ(IP_NET_DVR_GetReplay_SearchMode_ByXml(nullptr), QV_E_BAD_REPLY);
}

TEST(ReplayDistribution, DatesAreUniqueNewestFirstAndBoundedByCount) {
  unsigned int dates[3] = {1, 1, 1};
  ASSERT_EQ(IP_NET_DVR_GetReplay_Dates_DistributeByXml(kDates, dates, 2), 0);
  EXPECT_EQ(dates[0], 9u);
  EXPECT_EQ(dates[1], 7u);
  EXPECT_EQ(dates[2], 1u);  // beyond count: untouched
  ASSERT_EQ(IP_NET_DVR_GetReplay_Dates_DistributeByXml(kDates, dates, 3), 0);
  EXPECT_EQ(dates[2], 5u);
}

TEST(ReplayDistribution, DatesRefuseNoRoomAndOtherReplies) {
  unsigned int dates[2] = {3, 3};
  EXPECT_EQ(IP_NET_DVR_GetReplay_Dates_DistributeByXml(kDates, nullptr, 2), QV_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(IP_NET_DVR_GetReplay_Dates_DistributeByXml(kDates, dates, 0), QV_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(IP_NET_DVR_GetReplay_Dates_DistributeByXml("<RESPONSE_PARAM SearchMode=\"1\"/>",
                                                       dates, 2), QV_E_BAD_REPLY);
  EXPECT_EQ(dates[0], 0u);  // cleared before the reply was read
  EXPECT_EQ(IP_NET_DVR_GetReplay_Dates_DistributeByXml("<NOTHING/>", dates, 2), QV_E_BAD_REPLY);
}

TEST(ReplayDistribution, OneDayNeedsAMinuteABufferAndModeOne) {
  std::string minutes(1440, '0');
  minutes[600] = '1';
  std::string reply = "<RESPONSE_PARAM SearchMode=\"1\"><RECORD_DISTRIBUTE Distribute=\"" +
                      minutes + "\"/></RESPONSE_PARAM>";
  char small[1439];
  EXPECT_EQ(IP_NET_DVR_GetReplay_OneDay_DistributeByXml(reply.c_str(), small, sizeof(small)),
            QV_E_BUFFER_TOO_SMALL);
  char exact[1440];
  ASSERT_EQ(IP_NET_DVR_GetReplay_OneDay_DistributeByXml(reply.c_str(), exact, sizeof(exact)), 0);
  EXPECT_EQ(strlen(exact), 1439u);  // at most length - 1 characters
  char room[1500];
  ASSERT_EQ(IP_NET_DVR_GetReplay_OneDay_DistributeByXml(reply.c_str(), room, sizeof(room)), 0);
  EXPECT_EQ(std::string(room), minutes);
  EXPECT_EQ(IP_NET_DVR_GetReplay_OneDay_DistributeByXml(kDates, room, sizeof(room)),
            QV_E_BAD_REPLY);
  EXPECT_EQ(room[0], '\0');
}

}  // namespace
