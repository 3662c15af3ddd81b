#include "link/aux_msg_buffer.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "base/debug_log.h"

namespace {
std::atomic<long> g_live_copies{0};
}  // namespace

CAuxMsgBuffer::CAuxMsgBuffer(int encrypted) : encrypted_(encrypted) {}

CAuxMsgBuffer::CAuxMsgBuffer(const char* text, int encrypted) {
  construct(text, text != nullptr ? static_cast<int>(strlen(text)) : 0, encrypted);
}

CAuxMsgBuffer::CAuxMsgBuffer(const std::string& text, int encrypted) {
  construct(text.data(), static_cast<int>(text.size()), encrypted);
}

CAuxMsgBuffer::CAuxMsgBuffer(const char* data, int length, int encrypted) {
  construct(data, length, encrypted);
}

CAuxMsgBuffer::CAuxMsgBuffer(const CAuxMsgBuffer& other) {
  construct(other.data_, other.length_, other.encrypted_);
}

CAuxMsgBuffer& CAuxMsgBuffer::operator=(const CAuxMsgBuffer& other) {
  if (this == &other) return *this;
  release();
  construct(other.data_, other.length_, other.encrypted_);
  return *this;
}

CAuxMsgBuffer::~CAuxMsgBuffer() { release(); }

long CAuxMsgBuffer::LiveCopies() { return g_live_copies; }

void CAuxMsgBuffer::construct(const char* data, int length, int encrypted) {
  encrypted_ = encrypted;
  length_ = length;
  data_ = nullptr;
  if (length < 1) return;
  data_ = static_cast<char*>(malloc(static_cast<size_t>(length)));
  if (data_ == nullptr || data == nullptr) {
    free(data_);
    data_ = nullptr;
    QV_LOG("[%s:%d]Duplicate data fail, len:%d\n", length);
    return;
  }
  memcpy(data_, data, static_cast<size_t>(length));
  ++g_live_copies;
}

void CAuxMsgBuffer::release() {
  if (data_ == nullptr) return;
  free(data_);
  data_ = nullptr;
  --g_live_copies;
}
