// Changes sent to one camera by serial number, and the found cameras and the
// host's own settings as text for the host.
#include <arpa/inet.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "base/debug_log.h"
#include "discovery/modify_xml.h"
#include "discovery/search_ipc.h"
#include "discovery/search_message.h"
#include "link/discovery_readers.h"

namespace {

const int kInfoXmlBytes = 20480;
const int kNetworkParamBytes = 33;

// A text field of a host-given record, which may lack its terminator.
template <size_t N>
std::string FieldText(const char (&field)[N]) {
  return std::string(field, strnlen(field, N));
}

}  // namespace

int CCSearchIPC::ModifyIPCbySN(const char* serial, LANConfig* lan, MediaStreamConfig* stream,
                               unsigned short port) {
  if (serial == nullptr) {
    QV_LOG("[%s:%d]param error.");
    return QV_E_INVALID_ARG;
  }
  if (lan == nullptr && stream == nullptr) {
    QV_LOG("[%s:%d]param all NULL.");
    return QV_E_INVALID_ARG;
  }
  QV_LOG("[%s:%d]%s %d", "CSearchIPC", __LINE__);
  char body[kModifyBodyBytes];
  if (lan != nullptr) {
    if (MakeModifyIPCCfgXml(body, sizeof(body), serial, lan, nullptr) < 0) {
      QV_LOG("[%s:%d]Make LAN XML failed.");
      return QV_E_NO_MEMORY;
    }
    QV_LOG("[%s:%d]%s %d\n%s", "CSearchIPC", __LINE__, body);
    SendMsgToIPC(nullptr, 0, kModifyCode, body, port);
  }
  if (stream != nullptr) {
    if (MakeModifyIPCCfgXml(body, sizeof(body), serial, nullptr, stream) < 0) {
      QV_LOG("[%s:%d]Make MEDIA STREAM XML failed.");
      return QV_E_NO_MEMORY;
    }
    QV_LOG("[%s:%d]%s %d\n%s", "CSearchIPC", __LINE__, body);
    SendMsgToIPC(nullptr, 0, kModifyCode, body, port);
  }
  return 0;
}

int CCSearchIPC::ModifyIPCbyIndex(long index, IPC_ENTRY* entry) {
  if (entry == nullptr) return QV_E_INVALID_ARG;
  table_lock_.Lock();
  IPC_ENTRY* slot = EntryAt(index);
  if (slot == nullptr) {
    table_lock_.Unlock();
    return QV_E_INVALID_ARG;
  }
  QV_LOG("[%s:%d]%s %d", "CSearchIPC", __LINE__);
  if (slot != entry) *slot = *entry;
  IPC_ENTRY copy = *slot;
  table_lock_.Unlock();

  char body[kModifyBodyBytes];
  if (MakeModifyIPCCfgXml(body, sizeof(body), FieldText(copy.serial).c_str(), &copy.lan,
                          nullptr) < 0) {
    QV_LOG("[%s:%d]Make LAN XML failed.");
    return QV_E_NO_MEMORY;
  }
  SendMsgToIPC(nullptr, 0, kModifyCode, body, 0);
  return 0;
}

int CCSearchIPC::ModifyIPCXML(long index, const char* xml) {
  table_lock_.Lock();
  bool known = EntryAt(index) != nullptr;
  table_lock_.Unlock();
  if (!known) return QV_E_INVALID_ARG;
  if (xml == nullptr) return 0;
  LANConfig lan;
  if (TinyNetwork_getLANCfgByXml(&lan, xml) != 0) {
    QV_LOG("[%s:%d]bad xml str: %s", xml);
    return QV_E_BAD_REPLY;
  }
  table_lock_.Lock();
  IPC_ENTRY* slot = EntryAt(index);
  if (slot == nullptr) {  // released meanwhile
    table_lock_.Unlock();
    return QV_E_INVALID_ARG;
  }
  Unexclude(inet_addr(FieldText(slot->lan.IPAddress).c_str()));
  slot->lan = lan;
  Exclude(inet_addr(FieldText(lan.IPAddress).c_str()));
  std::string serial = FieldText(slot->serial);
  table_lock_.Unlock();

  char body[kModifyBodyBytes];
  if (MakeModifyIPCCfgXml(body, sizeof(body), serial.c_str(), &lan, nullptr) < 0) {
    QV_LOG("[%s:%d]Make LAN XML failed.");
    return QV_E_NO_MEMORY;
  }
  SendMsgToIPC(nullptr, 0, kModifyCode, body, 0);
  return 0;
}

int CCSearchIPC::GetIPCInfoXML(long index, char* buffer, int size) {
  table_lock_.Lock();
  const IPC_ENTRY* slot = EntryAt(index);
  if (slot == nullptr) {
    table_lock_.Unlock();
    return QV_E_INVALID_ARG;
  }
  IPC_ENTRY copy = *slot;
  table_lock_.Unlock();

  char lan[kModifyBodyBytes], stream[kModifyBodyBytes], users[kModifyBodyBytes];
  if (MakeModifyIPCCfgXml(lan, sizeof(lan), FieldText(copy.serial).c_str(), &copy.lan,
                          nullptr) < 0 ||
      MakeMediaStreamCfgXml(stream, sizeof(stream), &copy.stream) < 0 ||
      MakeUserCfgXml(users, sizeof(users), &copy.user) < 0) {
    QV_LOG("[%s:%d]Make XML failed.");
    return QV_E_NO_MEMORY;
  }
  std::unique_ptr<char[]> work(new (std::nothrow) char[kInfoXmlBytes]);
  if (!work) return QV_E_NO_MEMORY;
  int length = snprintf(work.get(), kInfoXmlBytes, "<IPC_INFO>\n%s\n%s\n%s</IPC_INFO>", lan,
                        stream, users);
  if (length < 0) return QV_E_NO_MEMORY;
  if (length >= kInfoXmlBytes) length = kInfoXmlBytes - 1;
  if (buffer == nullptr) return length + 1;
  if (length >= size) return QV_E_BUFFER_TOO_SMALL;
  memcpy(buffer, work.get(), static_cast<size_t>(length));
  buffer[length] = '\0';
  return length;
}

int CCSearchIPC::GetNetworkParam(int index, char* buffer, int size) {
  local_lock_.Lock();
  GetNetworkConfig(nullptr, &local_);
  LocalCardInfo info = local_;
  local_lock_.Unlock();
  const char* fields[] = {info.ip2, info.netmask, info.gateway, info.dns1, info.dns2, info.ip};
  if (index < 0 || index >= 6) {
    QV_LOG("[%s:%d]GetNetworkParam(): bad index: %d", index);
    return QV_E_INVALID_ARG;
  }
  if (buffer == nullptr) return kNetworkParamBytes;
  int length = static_cast<int>(strlen(fields[index]));
  if (size <= length) return QV_E_BUFFER_TOO_SMALL;
  memcpy(buffer, fields[index], static_cast<size_t>(length));
  buffer[length] = '\0';
  return length;
}

int CCSearchIPC::RebootbySN(const char* serial) {
  char body[kModifyBodyBytes];
  if (MakeSerialNumberXml(body, sizeof(body), serial) < 0) return QV_E_NO_MEMORY;
  SendMsgToIPC(nullptr, 0, kRebootCode, body, 0);
  return 0;
}

int CCSearchIPC::RestorebySN(const char* serial) {
  char body[kModifyBodyBytes];
  if (MakeSerialNumberXml(body, sizeof(body), serial) < 0) return QV_E_NO_MEMORY;
  SendMsgToIPC(nullptr, 0, kRestoreCode, body, 0);
  return 0;
}
