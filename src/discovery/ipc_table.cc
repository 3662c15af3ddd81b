// The table of found cameras: answers in, entries out.
#include <arpa/inet.h>

#include <cstring>
#include <ctime>
#include <new>

#include "base/debug_log.h"
#include "discovery/search_ipc.h"
#include "link/discovery_readers.h"
#include "link/xml_util.h"

int CCSearchIPC::ResponseMessageHandle(char* reply, int length, const char* ifname) {
  if (reply == nullptr || length < 0) return 0;
  IPC_ENTRY* entry = new (std::nothrow) IPC_ENTRY;
  if (entry == nullptr) return -1;
  memset(entry, 0, sizeof(*entry));
  entry->found_time = static_cast<long>(time(nullptr));
  CopyText(entry->interface_name, sizeof(entry->interface_name), ifname);

  char platform[32];
  int runtime = 0;
  if (TinyGetDeviceParam(entry->serial, platform, entry->p2p_id, &runtime, reply) != 0 ||
      TinyGetDeviceParam2(entry->device_type, entry->osd, reply) != 0) {
    delete entry;
    return -1;
  }
  if (strstr(entry->device_type, "NVR") != nullptr) {
    // A recorder, not a camera.
    table_lock_.Lock();
    auto pending = pending_.find(entry->serial);
    if (pending != pending_.end()) pending->second = 0;
    table_lock_.Unlock();
    delete entry;
    return -1;
  }
  const bool lan = TinyNetwork_getLANCfgByXml(&entry->lan, reply) == 0;
  if (!lan) QV_LOG("[%s:%d]lan config not found.");
  const bool stream = lan && TinyGetMediaStreamCfgByXml(&entry->stream, reply) == 0;
  if (lan && !stream) QV_LOG("[%s:%d]stream config not found.");
  const bool user = stream && TinySystem_getUserCfgByXml(&entry->user, reply) == 0;
  if (stream && !user) QV_LOG("[%s:%d]user config not found.");
  if (!user) {
    delete entry;
    return -1;
  }

  table_lock_.Lock();
  for (long i = 0; i < count_ && i < kMaxEntries; ++i) {
    if (table_[i] != nullptr && strcmp(table_[i]->serial, entry->serial) == 0) {
      // The table shows the latest answer of each camera.
      *table_[i] = *entry;
      table_lock_.Unlock();
      delete entry;
      return -1;
    }
  }
  if (count_ >= kMaxEntries) {
    table_lock_.Unlock();
    QV_LOG("[%s:%d]found new entry, but ipc count exceed %d", kMaxEntries);
    delete entry;
    return -1;
  }
  QV_LOG("[%s:%d][%s] found: mac=[%s], type=[%s], IP=[%s], P2PID=[%s]", entry->interface_name,
         entry->lan.MacAddress, entry->device_type, entry->lan.IPAddress, entry->p2p_id);
  delete table_[count_];
  table_[count_] = entry;
  ++count_;
  table_lock_.Unlock();
  return 0;
}

long CCSearchIPC::GetIPCCount() const {
  table_lock_.Lock();
  long count = count_;
  table_lock_.Unlock();
  return count;
}

IPC_ENTRY* CCSearchIPC::EntryAt(long index) const {
  if (index < 0 || index >= count_ || index >= kMaxEntries) return nullptr;
  return table_[index];
}

int CCSearchIPC::GetIPCInfo(long index, IPC_ENTRY* entry) {
  if (entry == nullptr) return QV_E_INVALID_ARG;
  table_lock_.Lock();
  const IPC_ENTRY* found = EntryAt(index);
  if (found != nullptr) *entry = *found;
  table_lock_.Unlock();
  return found != nullptr ? 0 : QV_E_INVALID_ARG;
}

int CCSearchIPC::ReleaseIPCInfo() {
  table_lock_.Lock();
  count_ = 0;
  for (IPC_ENTRY*& entry : table_) {
    delete entry;
    entry = nullptr;
  }
  table_lock_.Unlock();
  return 0;
}
