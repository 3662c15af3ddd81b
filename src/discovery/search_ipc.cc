// The search thread: its start and stop, and the loop that sends the
// queued messages and takes in the answers.
#include "discovery/search_ipc.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/compat.h"
#include "base/debug_log.h"
#include "discovery/broadcast_socket.h"
#include "discovery/search_message.h"
#include "link/discovery_readers.h"
#include "link/message_readers.h"

namespace {

const int kReplyBytes = 5120;
const int kRequestBytes = 5120;
const int kPollMs = 100;
const int kRepliesPerPass = 128;
const int kReceiveBufferBytes = 1 << 20;

// One socket of the search thread.
struct SearchSocket {
  int sock;
  int flag;
  char ifname[32];
};

// Interfaces to search on; the zero record (wildcard socket) when there is
// none.
NetcardList SearchInterfaces() {
  NetcardList cards = GetNetcardIPList();
  if (cards.empty()) {
    IP_ADAPTER_INFO zero;
    memset(&zero, 0, sizeof(zero));
    cards[0] = zero;
  }
  return cards;
}

}  // namespace

CCSearchIPC::CCSearchIPC() { InitializeCriticalSection(&queue_lock_); }

CCSearchIPC::~CCSearchIPC() {
  StopSearch();
  ReleaseIPCInfo();
  DeleteCriticalSection(&queue_lock_);
}

int CCSearchIPC::StartSearch(unsigned int interval_ms) {
  start_lock_.Lock();
  // The old thread is stopped before its table and map are emptied.
  StopThread();
  table_lock_.Lock();
  pending_.clear();
  table_lock_.Unlock();
  ReleaseIPCInfo();
  interval_ms_ = interval_ms;
  running_ = 1;
  if (pthread_create(&thread_, nullptr, &CCSearchIPC::SearchIPCThread, this) != 0) {
    QV_LOG("[%s:%d]pthread_create SearchIPCThread failed");
    running_ = 0;
    thread_ = 0;
    start_lock_.Unlock();
    return QV_E_THREAD;
  }
  has_thread_ = true;
  QV_LOG("[%s:%d]thread_media is started, threadid %d, enjoy!", static_cast<int>(thread_));
  start_lock_.Unlock();
  return 0;
}

int CCSearchIPC::StopSearch() {
  start_lock_.Lock();
  int result = StopThread();
  start_lock_.Unlock();
  return result;
}

int CCSearchIPC::StopThread() {
  running_ = 0;
  if (!has_thread_) return 0;
  if (pthread_join(thread_, nullptr) != 0) {
    QV_LOG("[%s:%d]join failed");
    return -1;
  }
  has_thread_ = false;
  thread_ = 0;
  return 0;
}

void* CCSearchIPC::SearchIPCThread(void* self) {
  prctl(PR_SET_NAME, "SearchIPCThread", 0, 0, 0);
  static_cast<CCSearchIPC*>(self)->SearchFunc();
  return nullptr;
}

void CCSearchIPC::SearchFunc() {
  std::map<uint32_t, SearchSocket> sockets;
  for (const auto& card : SearchInterfaces()) {
    if (sockets.count(card.first) != 0) continue;
    SearchSocket s;
    memset(&s, 0, sizeof(s));
    memcpy(s.ifname, card.second.name, sizeof(s.ifname));
    s.ifname[sizeof(s.ifname) - 1] = '\0';
    s.flag = card.second.flag;
    unsigned short port = 0;
    s.sock = CreateBroardcastSocket(s.ifname, card.second.address, &port);
    if (s.sock < 0) continue;
    // Room for the answers of many cameras at once, where the system allows.
    int room = kReceiveBufferBytes;
    setsockopt(s.sock, SOL_SOCKET, SO_RCVBUF, &room, sizeof(room));
    if (s.flag != 0) interface_add_route(s.ifname);
    sockets[card.first] = s;
  }

  QV_LOG("[%s:%d]enter send and recv loop...");
  std::vector<char> request(kRequestBytes);
  std::vector<char> reply(kReplyBytes + 1);
  std::vector<pollfd> fds;
  std::vector<const SearchSocket*> polled;
  unsigned long last_search = 0;
  bool searched = false;
  while (running_ != 0) {
    unsigned long now = GetTickCount();
    if (!searched || now - last_search > interval_ms_) {
      QV_LOG("[%s:%d]Send search req");
      SendMsgToIPC(request.data(), kRequestBytes, kSearchCode, nullptr, 0);
      last_search = now;
      searched = true;
    }

    std::string message;
    bool have_message = false;
    EnterCriticalSection(&queue_lock_);
    if (!queue_.empty()) {
      message.swap(queue_.front());
      queue_.pop_front();
      have_message = true;
    }
    LeaveCriticalSection(&queue_lock_);
    if (have_message) {
      QV_LOG("[%s:%d]send broardcast");
      for (const auto& s : sockets) {
        if (s.second.sock >= 0) SendDataHandle(s.second.sock, s.second.ifname, message.c_str());
      }
    }

    fds.clear();
    polled.clear();
    for (const auto& s : sockets) {
      fds.push_back(pollfd{s.second.sock, POLLIN | POLLPRI, 0});
      polled.push_back(&s.second);
    }
    int ready = poll(fds.data(), fds.size(), kPollMs);
    if (ready < 0) {
      QV_LOG("[%s:%d]SearchIPCThread(): select failed, error=%d", 100863);
      SleepMs(10);
      continue;
    }
    for (size_t i = 0; ready > 0 && i < fds.size(); ++i) {
      short events = fds[i].revents;
      if ((events & (POLLPRI | POLLNVAL)) != 0) {
        QV_LOG("[%s:%d]SearchIPCThread(): select sock find socket error");
      }
      if ((events & (POLLIN | POLLERR)) != 0) ReceiveReplies(fds[i].fd, polled[i]->ifname, &reply);
    }
    SleepMs(1);
  }

  for (const auto& s : sockets) close(s.second.sock);
  sockets.clear();
  QV_LOG("[%s:%d]exit main loop");
}

void CCSearchIPC::ReceiveReplies(int sock, const char* ifname, std::vector<char>* buffer) {
  // Everything that is waiting is taken in one go (a bounded number), so
  // that a hundred answers to one search are read before the socket's
  // buffer overflows.
  for (int taken = 0; taken < kRepliesPerPass; ++taken) {
    ssize_t n = recvfrom(sock, buffer->data(), kReplyBytes, MSG_DONTWAIT, nullptr, nullptr);
    if (n < 0) {
      if (taken == 0) QV_LOG("[%s:%d]SearchIPCThread(): recvfrom failed, error=%d", 100863);
      return;
    }
    char* text = buffer->data();
    text[n] = '\0';
    TakeDatagram(text, static_cast<int>(n), ifname);
  }
}

int CCSearchIPC::TakeDatagram(char* text, int length, const char* ifname) {
  if (TinyGetMessageRootType(SearchRootName(), text) < 0) {
    QV_LOG("[%s:%d]Get root failed.");
    return -1;
  }
  char type[256], code[256], flag[256];
  if (TinyGetMessageHeader(text, type, code, flag) != 0 || atoi(code) != kSearchReplyCode) {
    QV_LOG("[%s:%d]recv message: %s", text);
    return -1;
  }
  return ResponseMessageHandle(text, length, ifname);
}

void CCSearchIPC::SetSearchRootName(const char* name) {
  std::string text = name != nullptr ? name : "";
  size_t begin = text.find_first_not_of(" \t\r\n");
  size_t end = text.find_last_not_of(" \t\r\n");
  root_lock_.Lock();
  root_name_ = begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
  root_lock_.Unlock();
}

std::string CCSearchIPC::SearchRootName() const {
  root_lock_.Lock();
  std::string name = root_name_;
  root_lock_.Unlock();
  return name;
}
