// The configuration exchange end to end against the emulated camera, one
// test case per row of the exchange table: GET, the reply through the AUX
// response callback, reader, edit, writer, SET (its exact body on the wire
// and the camera's acceptance), then GET again shows the change.
#include <gtest/gtest.h>

#include "exchange/exchange_table.h"
#include "link/camera_fixture.h"

namespace {

using qvexchange::ExchangeRow;
using qvexchange::ExchangeTable;

class ExchangeCycle : public qvtest::CameraFixture,
                      public testing::WithParamInterface<ExchangeRow> {
 protected:
  // Sends the row's get and returns the reply's text.
  std::string Get(long id) {
    const ExchangeRow& row = GetParam();
    events_.Clear();
    EXPECT_GE(row.get(id), 0);
    qvtest::AuxEvent reply;
    EXPECT_TRUE(events_.WaitAux(id, row.get_code, qvtest::kWaitMs, &reply))
        << "no reply to get " << row.get_code;
    return reply.xml;
  }
};

TEST_P(ExchangeCycle, GetEditSetGetShowsTheChange) {
  const ExchangeRow& row = GetParam();
  long id = LoginReady();
  std::string reply = Get(id);
  ASSERT_EQ(row.read(reply), 0) << reply;

  events_.Clear();
  camera_->ClearReceived();
  std::string sent;
  ASSERT_GE(row.edit_and_set(id, &sent), 0);
  ASSERT_FALSE(sent.empty());
  EXPECT_TRUE(events_.WaitAux(id, row.set_code, qvtest::kWaitMs))
      << "set " << row.set_code << " not accepted";
  std::vector<qvemu::ReceivedFrame> sets = Frames("SYSTEM_CONFIG_SET_MESSAGE");
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0].code, std::to_string(row.set_code));
  EXPECT_EQ(sets[0].body, "\n" + sent + "\n");

  std::string again = Get(id);
  EXPECT_TRUE(row.shows_edit(again)) << again;
}

INSTANTIATE_TEST_SUITE_P(Sections, ExchangeCycle, testing::ValuesIn(ExchangeTable()),
                         [](const testing::TestParamInfo<ExchangeRow>& info) {
                           return info.param.name;
                         });

}  // namespace
