// CCSearchIPC: LAN discovery. A search thread ("SearchIPCThread") holds one
// broadcast socket per usable interface, sends the search request each
// interval and whatever else is queued, and takes the cameras' answers into a
// table of at most 100 entries keyed by serial number. The same object
// builds the messages that change a camera, probes addresses with ICMP echo
// and knows this host's own network settings.
//
// One object lives in the session registry. Host threads call every public
// operation; the search thread owns its sockets. The table is guarded by a
// CBkMutex, the outgoing queue by a critical section.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "base/bk_mutex.h"
#include "base/critical_section.h"
#include "discovery/adapter_info.h"
#include "quorvel/quorvel.h"

// This host's own settings, as GetNetworkConfig reads them.
struct LocalCardInfo {
  char ip[32];        // IPv4 address of the interface
  char ip2[64];       // a second address field, never filled
  char netmask[64];
  char gateway[64];
  char dns1[64];
  char dns2[64];
};

class CCSearchIPC {
 public:
  static const int kMaxEntries = QV_MAX_SEARCH_ENTRIES;
  static const int kExcludedAddresses = 255;
  static const unsigned int kMinInterval = 200;

  CCSearchIPC();
  virtual ~CCSearchIPC();  // stops the search and frees the table
  CCSearchIPC(const CCSearchIPC&) = delete;
  CCSearchIPC& operator=(const CCSearchIPC&) = delete;

  // ---- search ------------------------------------------------------------
  // Empties the table, stops a running search, starts the thread with this
  // send interval. 0, or -8999990 when the thread cannot be created.
  int StartSearch(unsigned int interval_ms);
  // Stops and joins the thread. 0 (also when none runs), -1 when the join
  // fails.
  int StopSearch();
  static void* SearchIPCThread(void* self);  // thread entry
  void SearchFunc();                         // the send and receive loop
  unsigned int GetInterval() const { return interval_ms_; }
  // The interval the next search is started with (3000 ms until set;
  // values below 200 are taken as 200).
  void SetSearchInterval(unsigned int interval_ms) {
    search_interval_ms_ = interval_ms < kMinInterval ? kMinInterval : interval_ms;
  }
  unsigned int SearchInterval() const { return search_interval_ms_; }
  bool Searching() const { return running_ != 0; }
  // The root accepted besides XML_VEXORA and XML_BRELLWICK; surrounding
  // blanks are dropped.
  void SetSearchRootName(const char* name);
  std::string SearchRootName() const;

  // ---- messages ----------------------------------------------------------
  // Formats a message with this code and body into buffer (null: a
  // 2048-byte one of its own) and queues it for the search thread, or sends
  // it at once on every interface when no search runs. 0.
  int SendMsgToIPC(char* buffer, int size, int code, const char* body, unsigned short port);
  // Broadcasts one message on one socket. 0 once it went out (whole or not),
  // -1 when the socket did not become writable.
  int SendDataHandle(int sock, const char* ifname, const char* message);
  // Opens a broadcast socket per interface, sends the message on each and
  // closes them.
  virtual void SendBroardcastDirectly(const char* message, unsigned short port);

  // ---- the table ---------------------------------------------------------
  // One received datagram (terminated, length bytes before the zero):
  // dropped unless its root and header make it a search answer, else taken
  // as ResponseMessageHandle takes it, whose result it returns (-1 when
  // dropped).
  int TakeDatagram(char* text, int length, const char* ifname);
  // Takes one answer received on interface ifname into the table. 0 for a
  // new camera; -1 when the answer replaced an entry, was dropped or the
  // table is full.
  int ResponseMessageHandle(char* reply, int length, const char* ifname);
  long GetIPCCount() const;
  // Copies the entry at index. 0, or -8999992 (bad index, empty slot, null
  // destination).
  int GetIPCInfo(long index, IPC_ENTRY* entry);
  int ReleaseIPCInfo();  // empties the table; 0

  // ---- changes -----------------------------------------------------------
  int ModifyIPCbySN(const char* serial, LANConfig* lan, MediaStreamConfig* stream,
                    unsigned short port);
  int ModifyIPCbyIndex(long index, IPC_ENTRY* entry);
  int ModifyIPCXML(long index, const char* xml);
  int GetIPCInfoXML(long index, char* buffer, int size);
  int GetNetworkParam(int index, char* buffer, int size);
  int RebootbySN(const char* serial);
  int RestorebySN(const char* serial);

  // ---- addresses ---------------------------------------------------------
  // The free-address scan of the host's subnet as the library runs it: based
  // on the second address field, hence an empty text. Length written; 33 for
  // a null buffer; -8999978 for a size below 33.
  int GetOneIPAddress(char* buffer, int size);
  // The same scan based on the IPv4 address of the interface (null or
  // empty: the default one): a free address of its /24 from .254 down, as
  // dotted text. Length written, 0 when none is free, 33 for a null buffer,
  // -8999978 for a size below 33, -1 when the interface has no address.
  int GetFreeIPAddress(const char* ifname, char* buffer, int size);
  // ICMP echo to address (network order), five tries 100 ms apart. 1: no
  // answer (the address is free); 0: answered; -1: the probe failed.
  int PintTest(uint32_t address);
  // Reads the interface's (null or empty: the default one's) address, mask,
  // gateway and DNS servers into info. 1, or 0 when the interface has no
  // address or mask.
  int GetNetworkConfig(const char* ifname, LocalCardInfo* info);

 private:
  int StopThread();  // StopSearch without the start lock
  // Reads the answers waiting on one search socket into the table.
  void ReceiveReplies(int sock, const char* ifname, std::vector<char>* buffer);
  // Candidates base.254 down to base.1; see GetOneIPAddress.
  int ScanFreeAddress(uint32_t base, uint32_t gateway, char* buffer, int size);
  bool IsExcluded(uint32_t address);
  void Exclude(uint32_t address);
  void Unexclude(uint32_t address);
  // The entry at index, or null; the table mutex must be held.
  IPC_ENTRY* EntryAt(long index) const;

  // The camera table.
  IPC_ENTRY* table_[kMaxEntries] = {};
  long count_ = 0;
  mutable CBkMutex table_lock_;

  // Messages waiting for the search thread.
  std::list<std::string> queue_;
  CRITICAL_SECTION queue_lock_;

  // Pending modifications by serial number.
  std::map<std::string, long> pending_;

  CBkMutex start_lock_;  // StartSearch and StopSearch
  std::atomic<int> running_{0};
  pthread_t thread_ = 0;
  bool has_thread_ = false;
  std::atomic<unsigned int> interval_ms_{1000};
  std::atomic<unsigned int> search_interval_ms_{3000};

  std::string root_name_;
  mutable CBkMutex root_lock_;
  LocalCardInfo local_ = {};
  CBkMutex local_lock_;
  uint64_t excluded_[kExcludedAddresses] = {};
  CBkMutex excluded_lock_;
};

// The Internet checksum of length bytes (a trailing odd byte is added as
// it is).
unsigned short ChkSum(const unsigned short* words, int length);
