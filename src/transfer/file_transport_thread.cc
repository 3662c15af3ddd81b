#include "transfer/file_transport_thread.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/time_scale.h"
#include "link/host_lookup.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"
#include "transfer/file_transfer_record.h"

namespace {

const int kChannelBuffer = 40960;      // SO_RCVBUF and SO_SNDBUF of the data channel
const int kChunk = 4096;
const int kReceiveBlock = 65536;       // most taken from the socket at once
const uint32_t kProgressStep = 204800;
const unsigned long kWaitMs = 1000;    // one counted wait
const int kMaxTimeouts = 10;
const unsigned long kChunkPauseMs = 10;
const unsigned long kPortPollMs = 10;
const unsigned long kRequestAgainMs = 5000;
const unsigned long kConnectTimeoutMs = 5000;
const int kSliceMs = 300;              // longest wait before the stop flag is read again
const int kLingerSteps = 10;
const int kLingerStepMs = 100;
const int kEndMessageMax = 256;
const int kRequestBufferSize = 10240;

struct FileCloser {
  void operator()(FILE* f) const {
    if (f != nullptr) fclose(f);
  }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

}  // namespace

CFileTransportThread::CFileTransportThread(CPTZControlClass* session) : session_(session) {
  SetDebugClassName("CFileTransportThread");
}

CFileTransportThread::~CFileTransportThread() { Kill(-1); }

int CFileTransportThread::IsRunning() {
  return (CThreadClass::IsRunning() && !StopFlag()) ? 1 : 0;
}

int CFileTransportThread::Thread() {
  if (session_ == nullptr) return -1;
  QV_LOG("[%s:%d]CFileTransportThread::Thread start...\n");
  timeouts_ = 0;
  session_->transfer_lock_.Lock();
  generation_ = session_->transfer_.generation;
  session_->transfer_lock_.Unlock();
  Job job;
  if (!WaitForPort(&job)) {
    session_->EndChannelTransfer(generation_);
    return 0;
  }

  // The wording names the camera's side of the transfer.
  if (job.upload) {
    QV_LOG("[%s:%d]CFileTransportThread::Thread begin download file %s...\n",
           job.local_name.c_str());
  } else {
    QV_LOG("[%s:%d]CFileTransportThread::Thread begin send file %s...\n",
           job.remote_name.c_str());
  }
  sock_ = Connect(job);
  if (sock_ < 0) {
    PostResult(job, false);
    return 0;
  }
  QV_LOG("[%s:%d]OK: connect socket OK!\n");
  QV_LOG("[%s:%d]FileTransportThread(): enter thread loop...\n");
  bool ok = job.upload ? SendFile(job) : ReceiveFile(job);
  QV_LOG("[%s:%d]FileTransportThread(): exit thread loop.\n");
  PostResult(job, ok);
  close(sock_);
  sock_ = -1;
  return 0;
}

bool CFileTransportThread::WaitForPort(Job* job) {
  unsigned long last_request = GetTickCount();
  for (;;) {
    session_->transfer_lock_.Lock();
    const FileTransferRecord& r = session_->transfer_;
    bool current = r.generation == generation_ && !r.done;
    job->upload = r.upload == 1;
    job->file_type = r.file_type;
    job->local_name = r.local_name;
    job->remote_name = r.remote_name;
    job->port = r.port;
    session_->transfer_lock_.Unlock();
    if (!current) return false;
    if (job->port != 0) return true;
    if (!IsRunning()) return false;
    if (GetTickCount() - last_request >= ScaledMs(kRequestAgainMs)) {
      last_request = GetTickCount();
      std::string body = job->upload ? "<REQUEST_PARAM\nFileType = \"" +
                                           std::to_string(job->file_type) + "\"\nFilePath= \"" +
                                           job->local_name + "\"\n/>"
                                     : "<REQUEST_PARAM\nFileName = \"" + job->remote_name +
                                           "\"\n/>";
      std::unique_ptr<char[]> request(new (std::nothrow) char[kRequestBufferSize]);
      if (request) {
        int len = MakeXMLRequest(request.get(), kRequestBufferSize, "SYSTEM_CONTROL_MESSAGE",
                                 job->upload ? "1022" : "1023", "0", body.c_str());
        session_->WriteActionString(request.get(), len);
      }
    }
    SleepMs(kPortPollMs);
  }
}

int CFileTransportThread::Connect(const Job& job) {
  int sock = socket(AF_INET, SOCK_STREAM, 0);
  if (sock < 0) {
    QV_LOG("[%s:%d]ERR %d: create socket failed!", errno);
    return -1;
  }
  int size = kChannelBuffer;
  int on = 1;
  const char* failure = nullptr;
  if (setsockopt(sock, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size)) != 0) {
    failure = "[%s:%d]ERR %d: set socket SO_RCVBUF option failed!\n";
  } else if (setsockopt(sock, SOL_SOCKET, SO_SNDBUF, &size, sizeof(size)) != 0) {
    failure = "[%s:%d]ERR %d: set socket SO_SNDBUF option failed!\n";
  } else if (setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) != 0) {
    failure = "[%s:%d]setsockopt SO_REUSEADDR, Err: %d";
  } else {
    struct sockaddr_in local;
    memset(&local, 0, sizeof(local));
    local.sin_family = AF_INET;
    if (bind(sock, reinterpret_cast<sockaddr*>(&local), sizeof(local)) != 0) {
      failure = "[%s:%d]ERR %d: bind socket failed!\n";
    }
  }
  if (failure != nullptr) {
    DebugLogLine(__FUNCTION__, __FILE__, __LINE__, failure, __FUNCTION__, __LINE__, errno);
    close(sock);
    return -1;
  }
  struct sockaddr_in peer;
  memset(&peer, 0, sizeof(peer));
  peer.sin_family = AF_INET;
  peer.sin_port = htons(job.port);
  peer.sin_addr.s_addr = ResolveHostAddress(session_->Host(), [this] { return IsRunning() != 0; });
  char shown[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &peer.sin_addr, shown, sizeof(shown));
  QV_LOG("[%s:%d]Connect %s:%d to upgrade!\n", shown, static_cast<int>(job.port));

  // The connect waits in slices, so that a stop is seen while a silent
  // address keeps it waiting.
  fcntl(sock, F_SETFL, fcntl(sock, F_GETFL, 0) | O_NONBLOCK);
  int ret = connect(sock, reinterpret_cast<sockaddr*>(&peer), sizeof(peer));
  int err = ret == 0 ? 0 : errno;
  if (err == EINPROGRESS) {
    unsigned long start = GetTickCount();
    err = ETIMEDOUT;
    while (IsRunning() && GetTickCount() - start < kConnectTimeoutMs) {
      struct pollfd p = {sock, POLLOUT, 0};
      int n = poll(&p, 1, kSliceMs);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) {
        err = errno;
        break;
      }
      if (n == 0) continue;
      socklen_t len = sizeof(err);
      if (getsockopt(sock, SOL_SOCKET, SO_ERROR, &err, &len) != 0) err = errno;
      break;
    }
  }
  if (err != 0) {
    QV_LOG("[%s:%d]ERR %d: connect socket failed!", err);
    close(sock);
    return -1;
  }
  return sock;
}

CFileTransportThread::Wait CFileTransportThread::WaitSocket(bool for_write,
                                                            unsigned long wait_ms) {
  unsigned long start = GetTickCount();
  for (;;) {
    if (!IsRunning()) return kStopped;
    unsigned long passed = GetTickCount() - start;
    if (passed >= wait_ms) return kTimedOut;
    unsigned long left = wait_ms - passed;
    struct pollfd p = {sock_, static_cast<short>(for_write ? POLLOUT : POLLIN), 0};
    int n = poll(&p, 1, static_cast<int>(left < static_cast<unsigned long>(kSliceMs) ? left : kSliceMs));
    if (n < 0) {
      if (errno == EINTR) continue;
      return kFailed;
    }
    if (n > 0) return kReady;  // errors and a closed peer show in the send or receive
  }
}

bool CFileTransportThread::CountTimeout(bool sending) {
  if (sending) {
    QV_LOG("[%s:%d]wait send time out.\n");
  } else {
    QV_LOG("[%s:%d]wait recv time out.\n");
  }
  if (++timeouts_ <= kMaxTimeouts) return true;
  if (sending) {
    QV_LOG("[%s:%d]wait send time out more than %d times, stop sending.\n", kMaxTimeouts);
  } else {
    QV_LOG("[%s:%d]wait recv time out more than %d times, stop recving.\n", kMaxTimeouts);
  }
  return false;
}

bool CFileTransportThread::SendFile(const Job& job) {
  FilePtr file(fopen(job.local_name.c_str(), "rb"));
  if (!file) {
    QV_LOG("[%s:%d]open file %s for read failed, error code = %d\n", job.local_name.c_str(),
           errno);
    return false;
  }
  fseek(file.get(), 0, SEEK_END);
  long measured = ftell(file.get());
  fseek(file.get(), 0, SEEK_SET);
  if (measured < 0 || measured > INT32_MAX) {
    QV_LOG("[%s:%d]upload flen=%d\n", -1);
    return false;
  }
  const int32_t length = static_cast<int32_t>(measured);
  QV_LOG("[%s:%d]upload flen=%d\n", length);
  unsigned char header[kDataChannelHeaderSize];
  EncodeDataChannelHeader(length, header);
  if (send(sock_, header, 8, MSG_NOSIGNAL) != 8) {
    QV_LOG("[%s:%d]send flag failed, error code = %d\n", errno);
    return false;
  }
  if (send(sock_, header + 8, 4, MSG_NOSIGNAL) != 4) {
    QV_LOG("[%s:%d]send length failed, error code = %d\n", errno);
    return false;
  }
  session_->SetTransferProgress(generation_, 0, static_cast<uint32_t>(length));

  char chunk[kChunk];
  uint32_t position = 0;
  while (position < static_cast<uint32_t>(length)) {
    Wait w = WaitSocket(true, ScaledMs(kWaitMs));
    if (w == kStopped) return false;
    if (w == kTimedOut) {
      if (!CountTimeout(true)) return false;
      continue;
    }
    if (w == kFailed) {
      QV_LOG("[%s:%d]wait send select failed, error code = %d\n", errno);
      return false;
    }
    size_t read_len = fread(chunk, 1, sizeof(chunk), file.get());
    if (read_len == 0) {
      QV_LOG("[%s:%d]read file failed, read_len=%d, error code = %d\n",
             static_cast<int>(read_len), errno);
      return false;
    }
    ssize_t sent = send(sock_, chunk, read_len, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) {
      if (errno != EAGAIN && errno != EWOULDBLOCK) {
        QV_LOG("[%s:%d]send data failed, error code = %d\n", errno);
        return false;
      }
      sent = 0;
    }
    position += static_cast<uint32_t>(sent);
    if (static_cast<size_t>(sent) < read_len) fseek(file.get(), position, SEEK_SET);
    session_->SetTransferProgress(generation_, position, static_cast<uint32_t>(length));
    if (sent > 0 && position % kProgressStep == 0) {
      QV_LOG("[%s:%d]send out %d/%d\n", static_cast<int>(position), length);
      PostUploadProgress(job, static_cast<int>(static_cast<uint64_t>(position) * 100 / length));
    }
    if (position < static_cast<uint32_t>(length)) SleepMs(ScaledMs(kChunkPauseMs));
  }
  return ReceiveEndMessage();
}

bool CFileTransportThread::ReceiveEndMessage() {
  char text[kEndMessageMax + 1];
  int got = 0;
  // The answer may arrive in pieces; it is complete at 18 bytes or when the
  // camera closes.
  while (got < kTransportOkLength) {
    Wait w = WaitSocket(false, ScaledMs(kWaitMs));
    if (w == kStopped) return false;
    if (w == kTimedOut) {
      if (!CountTimeout(false)) {
        QV_LOG("[%s:%d]recv file tranport end message failed, ret = %d, error=%d\n", got,
               ETIMEDOUT);
        return false;
      }
      continue;
    }
    if (w == kFailed) {
      QV_LOG("[%s:%d]recv file tranport end message failed, ret = %d, error=%d\n", -1, errno);
      return false;
    }
    ssize_t n = recv(sock_, text + got, kEndMessageMax - got, MSG_DONTWAIT);
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (n < 0) {
      QV_LOG("[%s:%d]recv file tranport end message failed, ret = %d, error=%d\n",
             static_cast<int>(n), errno);
      return false;
    }
    if (n == 0) break;
    got += static_cast<int>(n);
  }
  text[got] = '\0';
  if (got == 0) {
    QV_LOG("[%s:%d]recv file transport end message while peer close socket.\n");
    return true;
  }
  if (got >= kTransportOkLength && memcmp(text, kTransportOkText, kTransportOkLength) == 0) {
    QV_LOG("[%s:%d]recv file tranport end message OK.\n");
    return true;
  }
  QV_LOG("[%s:%d]recv bad file tranport end message: %s \n", text);
  return false;
}

bool CFileTransportThread::ReceiveExact(unsigned char* out, int n) {
  int got = 0;
  while (got < n) {
    Wait w = WaitSocket(false, ScaledMs(kWaitMs));
    if (w == kStopped || w == kFailed) return false;
    if (w == kTimedOut) {
      if (!CountTimeout(false)) return false;
      continue;
    }
    ssize_t r = recv(sock_, out + got, n - got, MSG_DONTWAIT);
    if (r < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (r <= 0) return false;
    got += static_cast<int>(r);
  }
  return true;
}

bool CFileTransportThread::ReceiveFile(const Job& job) {
  std::string tmp = job.local_name + ".tmp";
  FILE* file = fopen(tmp.c_str(), "wb");
  if (file == nullptr) {
    QV_LOG("[%s:%d]open file %s for write failed, error code = %d\n", tmp.c_str(), errno);
    return false;
  }
  int32_t length = -1;
  int32_t received = 0;
  bool complete = false;
  unsigned char header[kDataChannelHeaderSize];
  if (ReceiveExact(header, 8)) {
    uint32_t flag;
    DecodeDataChannelHeader(header, &flag, &length);
    if (flag != kDataChannelFlag) {
      // The line names another constant than the one compared; both stay so.
      QV_LOG("[%s:%d]recv flag = %08x != 0x31589158\n", flag);
    } else if (ReceiveExact(header + 8, 4)) {
      DecodeDataChannelHeader(header, &flag, &length);
      QV_LOG("[%s:%d]recv len=%d\n", length);
      if (length >= 0) {
        session_->SetTransferProgress(generation_, 0, static_cast<uint32_t>(length));
        complete = ReceiveBody(file, length, &received);
      }
    }
  }
  fclose(file);
  // The local name always ends up holding what arrived, complete or not.
  remove(job.local_name.c_str());
  rename(tmp.c_str(), job.local_name.c_str());
  if (!complete) return false;
  ssize_t sent = send(sock_, kTransportOkText, kTransportOkLength, MSG_NOSIGNAL);
  if (sent != kTransportOkLength) {
    QV_LOG("[%s:%d]send file tranport end message failed, ret=%d, error=%d\n",
           static_cast<int>(sent), errno);
  } else {
    QV_LOG("[%s:%d]send file tranport end message OK!\n");
    LingerForPeer();
  }
  return true;
}

bool CFileTransportThread::ReceiveBody(FILE* file, int32_t length, int32_t* received) {
  // What the socket holds is taken in one receive of up to kReceiveBlock
  // bytes (never past the announced length) and written at once; it is
  // counted in pieces of 4096, as if received piece by piece, so the
  // progress lines fall where they always did.
  std::unique_ptr<char[]> block(new (std::nothrow) char[kReceiveBlock]);
  if (!block) return false;
  while (*received < length) {
    Wait w = WaitSocket(false, ScaledMs(kWaitMs));
    if (w == kStopped || w == kFailed) return false;
    if (w == kTimedOut) {
      if (!CountTimeout(false)) return false;
      continue;
    }
    int32_t want = length - *received < kReceiveBlock ? length - *received : kReceiveBlock;
    ssize_t n = recv(sock_, block.get(), static_cast<size_t>(want), MSG_DONTWAIT);
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (n <= 0) return false;  // closed early, or failed
    if (fwrite(block.get(), 1, static_cast<size_t>(n), file) != static_cast<size_t>(n)) {
      QV_LOG("[%s:%d]write file failed, error code = %d\n", errno);
      return false;
    }
    for (ssize_t at = 0; at < n; at += kChunk) {
      *received += static_cast<int32_t>(n - at < kChunk ? n - at : kChunk);
      if (*received % kProgressStep == 0) QV_LOG("[%s:%d]recv in %d/%d\n", *received, length);
    }
    session_->SetTransferProgress(generation_, static_cast<uint32_t>(*received),
                                  static_cast<uint32_t>(length));
  }
  return true;
}

void CFileTransportThread::LingerForPeer() {
  // Done as soon as the camera has closed its side, at most 10 x 100 ms.
  for (int i = 0; i < kLingerSteps && IsRunning(); ++i) {
    struct pollfd p = {sock_, POLLIN, 0};
    if (poll(&p, 1, kLingerStepMs) > 0) {
      char byte;
      if (recv(sock_, &byte, 1, MSG_DONTWAIT) <= 0) return;
    }
  }
}

void CFileTransportThread::PostUploadProgress(const Job& job, int progress) {
  char text[kRequestBufferSize];
  snprintf(text, sizeof(text), "<RESPONSE_PARAM\nFileType=\"%ld\"\nFileName=\"%s\"\nProgress=\"%d\"\n/>",
           job.file_type, job.local_name.c_str(), progress);
  session_->PostStatusMsg(EVENT_UPLOADOK, text);
}

void CFileTransportThread::PostResult(const Job& job, bool ok) {
  // The transfer is over before the host hears of it, so that the host may
  // start the next one from its callback.
  session_->EndChannelTransfer(generation_);
  if (job.upload) {
    if (ok) {
      PostUploadProgress(job, 100);
    } else {
      char text[kRequestBufferSize];
      snprintf(text, sizeof(text),
               "<RESPONSE_PARAM\nFileType=\"%ld\"\nFileName=\"%s\"\nProgress=\"%d\"\n/>",
               job.file_type, job.local_name.c_str(), -1);
      session_->PostStatusMsg(EVENT_UPLOADFAILED, text);
    }
    return;
  }
  char text[kRequestBufferSize];
  snprintf(text, sizeof(text), "<RESPONSE_PARAM\nRemoteFileName=\"%s\"\nLocalFileName=\"%s\"\n/>",
           job.remote_name.c_str(), job.local_name.c_str());
  session_->PostStatusMsg(ok ? EVENT_DOWNLOADOK : EVENT_DOWNLOADFAILED, text);
}
