// Queued requests own deep copies of their bytes.
#include "link/aux_msg_buffer.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(AuxMsgBuffer, EveryCopyIsDeepAndCounted) {
  long before = CAuxMsgBuffer::LiveCopies();
  char text[] = "abc";
  {
    CAuxMsgBuffer a(text, 1);
    text[0] = 'x';  // the buffer kept its own copy
    EXPECT_EQ(std::string(a.c_bytes(), a.length()), "abc");
    EXPECT_EQ(a.encrypted(), 1);
    CAuxMsgBuffer b(a);
    CAuxMsgBuffer c;
    c = b;
    c = c;  // self-assignment keeps the data
    EXPECT_NE(b.c_bytes(), a.c_bytes());
    EXPECT_EQ(std::string(c.c_bytes(), c.length()), "abc");
    EXPECT_EQ(c.encrypted(), 1);
    EXPECT_EQ(CAuxMsgBuffer::LiveCopies(), before + 3);
  }
  EXPECT_EQ(CAuxMsgBuffer::LiveCopies(), before);
}

TEST(AuxMsgBuffer, BinaryDataAndEmptyBuffers) {
  const char bytes[4] = {'\0', '\x01', '\0', '\x02'};
  CAuxMsgBuffer binary(bytes, 4, 0);
  ASSERT_EQ(binary.length(), 4);
  EXPECT_EQ(memcmp(binary.c_bytes(), bytes, 4), 0);
  CAuxMsgBuffer empty(bytes, 0, 0);
  EXPECT_EQ(empty.c_bytes(), nullptr);
  CAuxMsgBuffer null_text(static_cast<const char*>(nullptr), 0);
  EXPECT_EQ(null_text.c_bytes(), nullptr);
  EXPECT_EQ(CAuxMsgBuffer(std::string("xyz"), 0).length(), 3);
}

}  // namespace
