// The table of configuration sections that the exchange cycle runs against
// the emulated camera, one row per set code. Rows are added from any
// *_helper.cc file of this folder with a static ExchangeRows object; each
// row becomes a test case of its own.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qvexchange {

// One section's cycle, bound to its record type.
struct ExchangeRow {
  std::string name;   // test name: letters, digits and '_' only
  long get_code;      // the get whose reply holds the section
  long set_code;
  std::function<long(long user)> get;
  // Reads a reply into the record; 0 on success.
  std::function<int(const std::string& reply)> read;
  // Edits the record read last and sends it; the set's result. *sent gets
  // the writer's text of the edited record.
  std::function<long(long user, std::string* sent)> edit_and_set;
  // Reads a reply and compares it with the edited record.
  std::function<testing::AssertionResult(const std::string& reply)> shows_edit;
};

// Builds a row from the section's functions. `edit` must change the record.
template <typename Rec>
ExchangeRow MakeRow(const std::string& name, long get_code, long set_code,
                    long (*get)(long), int (*read)(Rec*, const char*),
                    char* (*write)(const Rec*), long (*set)(long, const Rec*),
                    void (*edit)(Rec*)) {
  struct State {
    Rec read;
    Rec edited;
  };
  auto state = std::make_shared<State>();
  ExchangeRow row;
  row.name = name;
  row.get_code = get_code;
  row.set_code = set_code;
  row.get = get;
  row.read = [state, read](const std::string& reply) {
    memset(&state->read, 0x5A, sizeof(Rec));
    return read(&state->read, reply.c_str());
  };
  row.edit_and_set = [state, write, set, edit](long user, std::string* sent) {
    state->edited = state->read;
    edit(&state->edited);
    EXPECT_NE(memcmp(&state->edited, &state->read, sizeof(Rec)), 0) << "the edit changes nothing";
    char* text = write(&state->edited);
    *sent = text ? text : "";
    free(text);
    return set(user, &state->edited);
  };
  row.shows_edit = [state, read](const std::string& reply) {
    Rec back;
    memset(&back, 0x5A, sizeof(Rec));
    if (read(&back, reply.c_str()) != 0) return testing::AssertionFailure() << "unreadable";
    const unsigned char* a = reinterpret_cast<const unsigned char*>(&back);
    const unsigned char* b = reinterpret_cast<const unsigned char*>(&state->edited);
    for (size_t i = 0; i < sizeof(Rec); ++i)
      if (a[i] != b[i])
        return testing::AssertionFailure()
               << "the reply does not hold the edited record (byte " << i << ": "
               << int(a[i]) << " instead of " << int(b[i]) << ")";
    return testing::AssertionSuccess();
  };
  return row;
}

// Rows print as their name in test output.
inline void PrintTo(const ExchangeRow& row, std::ostream* os) { *os << row.name; }

// Every row added so far.
std::vector<ExchangeRow>& ExchangeTable();

// Adds rows at static initialisation.
struct ExchangeRows {
  explicit ExchangeRows(std::vector<ExchangeRow> rows) {
    for (ExchangeRow& r : rows) ExchangeTable().push_back(std::move(r));
  }
};

}  // namespace qvexchange
