#include "stream/ring_buffer.h"

#include <climits>
#include <cstring>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"

namespace {

const int kInitialSlotSize = 65536;
const int kGrownSlotSize = 131072;
const int kBigFrameMargin = 10240;
const int kMaxSlotSize = 524288;
const int kWriteAllocAttempts = 10;
const int kLockWriteAllocAttempts = 40;
const int kLockWriteMargin = 100;

}  // namespace

CRingBuffer::CRingBuffer(int slots) {
  InitializeCriticalSection(&lock_);
  capacity_ = slots;
  count_ = 0;
  delay_count_ = 1;
  reserved_ = 0;
  waiting_ = 1;
  locked_write_ = nullptr;
  locked_read_ = nullptr;
  strcpy(name_, "CRingBuffer");
  Init(slots);
}

CRingBuffer::~CRingBuffer() {
  Release();
  DeleteCriticalSection(&lock_);
}

void CRingBuffer::Init(int slots) {
  Release();
  CriticalSectionGuard guard(&lock_);
  RING_BUFFER_ITEM* items = nullptr;
  if (slots > 0) items = new (std::nothrow) RING_BUFFER_ITEM[slots]();
  if (items == nullptr) {
    capacity_ = 0;
    QV_LOG("[%s:%d]%s new RING_BUFFER_ITEM[%d] return NULL\n", name_, slots);
    return;
  }
  capacity_ = slots;
  for (int i = 0; i < slots; ++i) {
    items[i].next = &items[(i + 1) % slots];
    items[i].prev = &items[(i + slots - 1) % slots];
  }
  items_ = write_item_ = read_item_ = items;
  for (int i = 0; i < slots; ++i) {
    items[i].data = new (std::nothrow) unsigned char[kInitialSlotSize];
    items[i].alloc_size = items[i].data != nullptr ? kInitialSlotSize : 0;
  }
}

int CRingBuffer::Release() {
  CriticalSectionGuard guard(&lock_);
  if (items_ != nullptr) {
    for (int i = 0; i < capacity_; ++i) delete[] items_[i].data;
    delete[] items_;
  }
  items_ = write_item_ = read_item_ = nullptr;
  capacity_ = 0;
  count_ = 0;
  locked_read_ = nullptr;
  locked_write_ = nullptr;
  return 0;
}

void CRingBuffer::SetBufferName(const char* name) {
  if (name == nullptr || name[0] == '\0') return;
  strncpy(name_, name, sizeof(name_) - 1);
  name_[sizeof(name_) - 1] = '\0';
}

void CRingBuffer::SetDelayCount(int n) { delay_count_ = n < capacity_ ? n : capacity_ - 1; }

bool CRingBuffer::BufferIsFull() const { return count_ >= capacity_ - 1; }

bool CRingBuffer::CanRead() const {
  if (waiting_) return count_ >= delay_count_ && delay_count_ > 0;
  return count_ > 0;
}

void CRingBuffer::CommitWriteSlot(int length, int flag, double timestamp, bool copied) {
  write_item_->length = length;
  write_item_->flag = flag;
  write_item_->timestamp = timestamp;
  write_item_ = write_item_->next;
  write_item_->length = 0;
  if (write_item_ == read_item_ && count_ >= capacity_ - 1) {
    count_ = capacity_ - 1;
    read_item_ = read_item_->next;
    if (copied) {
      QV_LOG("[%s:%d]%s,overflow buffer skip it 2\n", name_);
    } else {
      QV_LOG("[%s:%d]%s overflow buffer skip it\n", name_);
    }
    return;
  }
  count_ += 1;
  if (waiting_ && count_ >= delay_count_) waiting_ = 0;
}

int CRingBuffer::Write(const unsigned char* data, int length, int flag, double timestamp) {
  // An empty frame is a frame like any other; bytes without a source are not.
  if (length < 0 || (data == nullptr && length > 0)) return 0;
  EnterCriticalSection(&lock_);
  if (write_item_ == nullptr) {
    LeaveCriticalSection(&lock_);
    return -1;
  }
  RING_BUFFER_ITEM* slot = write_item_;
  if (slot->data != nullptr && length > slot->alloc_size) {
    delete[] slot->data;
    slot->data = nullptr;
    slot->alloc_size = 0;
  }
  if (slot->data == nullptr) {
    int size = kGrownSlotSize;
    if (length > kGrownSlotSize) {
      // In 64 bits: a host may hand in any length up to INT_MAX.
      long long wanted = static_cast<long long>(length) + kBigFrameMargin;
      int logged = wanted > INT_MAX ? INT_MAX : static_cast<int>(wanted);
      QV_LOG("[%s:%d]big frame, size :%d\n\n", logged);
      if (wanted > kMaxSlotSize) {
        QV_LOG("[%s:%d]can't alloc this :%d\n", logged);
        LeaveCriticalSection(&lock_);
        return 0;  // discarded on purpose: the producer carries on
      }
      size = static_cast<int>(wanted);
    }
    for (int attempt = 0; attempt < kWriteAllocAttempts && slot->data == nullptr; ++attempt) {
      if (attempt > 0) SleepMs(10);
      slot->data = new (std::nothrow) unsigned char[size];
      QV_LOG("[%s:%d]new char file:%s,line:%d, newfreesize:%d, i= %d\n", "RingBuffer",
             __LINE__, size, attempt);
    }
    if (slot->data == nullptr) {
      LeaveCriticalSection(&lock_);
      QV_LOG("[%s:%d]%s,new char[%d] return NULL in CRingBuffer::Write!\n", name_, size);
      return -1;
    }
    slot->alloc_size = size;
  }
  if (length > 0) memcpy(slot->data, data, static_cast<size_t>(length));
  CommitWriteSlot(length, flag, timestamp, true);
  LeaveCriticalSection(&lock_);
  return 0;
}

unsigned char* CRingBuffer::LockWriteBuffer(int length) {
  if (length < 0) return nullptr;
  EnterCriticalSection(&lock_);
  RING_BUFFER_ITEM* slot = write_item_;
  if (slot == nullptr || length > 0x7FFFFFFF - kLockWriteMargin) {
    LeaveCriticalSection(&lock_);
    return nullptr;
  }
  if (slot->data != nullptr && length > slot->alloc_size) {
    delete[] slot->data;
    slot->data = nullptr;
    slot->alloc_size = 0;
  }
  if (slot->data == nullptr) {
    int size = length + kLockWriteMargin;
    for (int attempt = 0; attempt < kLockWriteAllocAttempts && slot->data == nullptr; ++attempt) {
      if (attempt > 0) SleepMs(1);
      slot->data = new (std::nothrow) unsigned char[size];
    }
    if (slot->data == nullptr) {
      LeaveCriticalSection(&lock_);
      QV_LOG("[%s:%d]%s,new char[%d] return NULL in CRingBuffer::Write!\n", name_, size);
      return nullptr;
    }
    slot->alloc_size = size;
  }
  locked_write_ = slot->data;
  LeaveCriticalSection(&lock_);
  return locked_write_;
}

int CRingBuffer::UnLockWriteBuffer(unsigned char* buf, int length, int flag, double timestamp) {
  CriticalSectionGuard guard(&lock_);
  if (buf == nullptr || buf != locked_write_ || write_item_ == nullptr ||
      write_item_->data != buf || length < 0 || length > write_item_->alloc_size) {
    return -1;
  }
  CommitWriteSlot(length, flag, timestamp, false);
  return 0;
}

int CRingBuffer::Read(unsigned char* dest, int, int* flag, double* timestamp) {
  if (waiting_) return 0;
  if (count_ > 0) {
    CriticalSectionGuard guard(&lock_);
    if (count_ <= 0 || read_item_ == nullptr) return 0;
    RING_BUFFER_ITEM* slot = read_item_;
    int length = slot->length;
    if (length > 0 && slot->data != nullptr && dest != nullptr) {
      memcpy(dest, slot->data, static_cast<size_t>(length));
    }
    if (flag != nullptr) *flag = slot->flag;
    if (timestamp != nullptr) *timestamp = slot->timestamp;
    slot->length = 0;
    read_item_ = slot->next;
    count_ -= 1;
    return length;
  }
  waiting_ = 1;
  return 0;
}

unsigned char* CRingBuffer::LockReadBuffer(int* length, int* flag, double* timestamp) {
  if (waiting_) return nullptr;
  if (count_ > 0) {
    CriticalSectionGuard guard(&lock_);
    if (count_ <= 0 || read_item_ == nullptr) return nullptr;
    RING_BUFFER_ITEM* slot = read_item_;
    if (length != nullptr) *length = slot->length;
    if (flag != nullptr) *flag = slot->flag;
    if (timestamp != nullptr) *timestamp = slot->timestamp;
    locked_read_ = slot->data;
    return locked_read_;
  }
  waiting_ = 1;
  return nullptr;
}

int CRingBuffer::UnLockReadBuffer(unsigned char* buf) {
  CriticalSectionGuard guard(&lock_);
  if (buf == nullptr || buf != locked_read_ || read_item_ == nullptr || count_ <= 0) return -1;
  read_item_->length = 0;
  read_item_ = read_item_->next;
  count_ -= 1;
  locked_read_ = nullptr;
  return 0;
}

unsigned char* CRingBuffer::TakeReadBuffer(unsigned char* spare, int spare_size, int* length,
                                           int* flag, double* timestamp, int* size) {
  if (waiting_) return nullptr;
  if (count_ > 0) {
    CriticalSectionGuard guard(&lock_);
    if (count_ <= 0 || read_item_ == nullptr) return nullptr;
    RING_BUFFER_ITEM* slot = read_item_;
    unsigned char* taken = slot->data;
    if (taken == nullptr) {
      // No buffer to hand over (not seen in practice): the frame goes, the
      // spare stays with the caller.
      slot->length = 0;
      read_item_ = slot->next;
      count_ -= 1;
      return nullptr;
    }
    if (length != nullptr) *length = slot->length;
    if (flag != nullptr) *flag = slot->flag;
    if (timestamp != nullptr) *timestamp = slot->timestamp;
    if (size != nullptr) *size = slot->alloc_size;
    if (taken == locked_read_) locked_read_ = nullptr;
    slot->data = spare;
    slot->alloc_size = spare != nullptr ? spare_size : 0;
    slot->length = 0;
    read_item_ = slot->next;
    count_ -= 1;
    return taken;
  }
  waiting_ = 1;
  return nullptr;
}

int CRingBuffer::GetReadTimeStamp(double* timestamp) {
  if (count_ < delay_count_ || count_ <= 0) return 0;
  CriticalSectionGuard guard(&lock_);
  if (read_item_ == nullptr || count_ <= 0) return 0;
  if (timestamp != nullptr) *timestamp = read_item_->timestamp;
  return 1;
}

int CRingBuffer::IsKeyFrame(int* flag) {
  if (count_ < delay_count_ || count_ <= 0) return 0;
  CriticalSectionGuard guard(&lock_);
  if (read_item_ == nullptr || count_ <= 0) return 0;
  if (flag != nullptr) *flag = read_item_->flag;
  return 1;
}

int CRingBuffer::ResetContent() {
  CriticalSectionGuard guard(&lock_);
  count_ = 0;
  write_item_ = read_item_ = items_;
  locked_read_ = nullptr;
  locked_write_ = nullptr;
  return 0;
}
