// The session's file transfers as the host and the camera's replies see
// them: starting an upload or a download, progress, stopping, the replies
// to the transfer requests (1022, 1023) and the end of a link-mode transfer.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ipc_link_thread.h"
#include "link/message_readers.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"
#include "transfer/file_transport_thread.h"

namespace {

const long kUploadCode = 1022;
const long kDownloadCode = 1023;
const int kThreadStack = 0x100000;
const char kFileLock[] = "download_file_handle";
const char kStopFrame[] =
    "<?xml version=\"1.0\" encoding=\"GB2312\" ?><XML_VEXORA><MESSAGE_HEADER\n"
    "Msg_type=\"MEDIA_DATA_MESSAGE\" Msg_code=\"2\" Msg_flag=\"0\" /><MESSAGE_BODY>"
    "<POS StartPos=\"0\" DataLen=\"-1\" />\n</MESSAGE_BODY>\n</XML_VEXORA>";

std::string Format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  va_list copy;
  va_copy(copy, ap);
  int n = vsnprintf(nullptr, 0, fmt, copy);
  va_end(copy);
  std::string out(n > 0 ? static_cast<size_t>(n) : 0, '\0');
  if (n > 0) vsnprintf(&out[0], out.size() + 1, fmt, ap);
  va_end(ap);
  return out;
}

}  // namespace

void CPTZControlClass::LockTransferFile() {
  if (link_thread_ != nullptr) link_thread_->Lock(kFileLock);
}

void CPTZControlClass::UnlockTransferFile() {
  if (link_thread_ != nullptr) link_thread_->UnLock(kFileLock);
}

void CPTZControlClass::EnsureFileThread() {
  while (file_send_thread_ == nullptr) {
    file_send_thread_ = new (std::nothrow) CFileTransportThread(this);
    if (file_send_thread_ == nullptr) SleepUs(10);
  }
}

int CPTZControlClass::UploadFile(long file_type, const char* local_file) {
  if (local_file == nullptr) {
    QV_LOG("[%s:%d]upload file name is null return error,code=%d\n", QV_E_FILE_MISSING);
    return QV_E_FILE_MISSING;
  }
  transfer_lock_.Lock();
  if (!transfer_.done) {
    bool upload = transfer_.upload == 1;
    std::string running = upload ? transfer_.local_name : transfer_.remote_name;
    transfer_lock_.Unlock();
    if (upload) {
      QV_LOG("[%s:%d]Upload File %s,new file can not be upload!\n", running.c_str());
      return QV_E_UPLOAD_BUSY;
    }
    QV_LOG("[%s:%d]download File %s,file can not be upload!\n", running.c_str());
    return QV_E_DOWNLOAD_BUSY;
  }
  FILE* file = fopen(local_file, "rb");
  long size = -1;
  if (file != nullptr) {
    if (fseek(file, 0, SEEK_END) == 0) size = ftell(file);
    fclose(file);
  }
  if (size < 0 || size > INT32_MAX) {
    transfer_lock_.Unlock();
    QV_LOG("[%s:%d]file: %s not found!\n", local_file);
    return QV_E_FILE_MISSING;
  }
  transfer_.done = false;
  transfer_.upload = 1;
  transfer_.file_type = file_type;
  transfer_.local_name = local_file;
  transfer_.remote_name.clear();
  transfer_.port = 0;
  transfer_.mode = 0;
  transfer_.total = static_cast<uint32_t>(size);
  transfer_.position = 0;
  transfer_.announce_tick = GetTickCount();
  ++transfer_.generation;
  EnsureFileThread();
  transfer_lock_.Unlock();
  std::string body = Format("<REQUEST_PARAM\nFileType=\"%ld\" FilePath= \"%s\"  FileLength=\"%d\" \n/>",
                            file_type, local_file, static_cast<int>(size));
  WriteAUXStringEx("SYSTEM_CONTROL_MESSAGE", kUploadCode, 0, body.c_str());
  return 0;
}

int CPTZControlClass::DownloadFile(long file_type, const char* remote_file,
                                   const char* local_file) {
  if (remote_file == nullptr || local_file == nullptr) return QV_E_INVALID_ARG;
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  transfer_lock_.Lock();
  if (!transfer_.done) {
    bool upload = transfer_.upload == 1;
    std::string running = upload ? transfer_.local_name : transfer_.remote_name;
    transfer_lock_.Unlock();
    if (upload) {
      QV_LOG("[%s:%d]upload file %s now,not allow download a new file!\n", running.c_str());
      return QV_E_UPLOAD_BUSY;
    }
    QV_LOG("[%s:%d]download file %s now,not allow download a new file!\n", running.c_str());
    return QV_E_DOWNLOAD_BUSY;
  }
  if (TalkRequested()) {
    transfer_lock_.Unlock();
    QV_LOG("[%s:%d]is talking now,not allow download file!\n");
    return QV_E_TALK_BUSY;
  }
  transfer_.done = false;
  transfer_.upload = 0;
  transfer_.file_type = file_type;
  transfer_.local_name = local_file;
  transfer_.remote_name = remote_file;
  transfer_.port = 0;
  transfer_.mode = 0;
  transfer_.total = 0;
  transfer_.position = 0;
  transfer_.announce_tick = GetTickCount();
  unsigned generation = ++transfer_.generation;
  transfer_lock_.Unlock();
  std::string body = std::string("<REQUEST_PARAM\nFileName = \"") + remote_file +
                     "\" StartPos=\"0\" />";
  ret = WriteAUXStringEx("SYSTEM_CONTROL_MESSAGE", kDownloadCode, 0, body.c_str());
  if (ret != 0) {
    // Nothing went out: the transfer never started.
    transfer_lock_.Lock();
    if (transfer_.generation == generation) transfer_.done = true;
    transfer_lock_.Unlock();
  }
  return ret;
}

long CPTZControlClass::GetDownloadPos(long direction) {
  transfer_lock_.Lock();
  FileTransferRecord r = transfer_;
  transfer_lock_.Unlock();
  if (r.done) return 101;
  if ((direction == 1) != (r.upload == 1)) return QV_E_WRONG_DIRECTION;
  if (r.total == 0) {
    QV_LOG("[%s:%d]m_FileUploadParam.m_nFileTransTotalSize == 0??\n");
    return 0;
  }
  QV_LOG("[%s:%d]m_nFileTransTotalSize:%u m_nFileTransSize:%u\n", r.total, r.position);
  return static_cast<long>(static_cast<double>(r.position) * 100.0 / r.total);
}

int CPTZControlClass::GetUploadFileProgress(const char* name) {
  if (name == nullptr) return -1;
  int state = link_state_;
  if (state < kConnected) {
    QV_LOG("[%s:%d]failed, not connected!\n");
    return -2;
  }
  if (state == kConnected) {
    QV_LOG("[%s:%d]failed, not log in!\n");
    return -3;
  }
  transfer_lock_.Lock();
  uint64_t position = transfer_.position, total = transfer_.total;
  transfer_lock_.Unlock();
  return total == 0 ? 0 : static_cast<int>(position * 100 / total);
}

int CPTZControlClass::UploadFileStop() {
  transfer_lock_.Lock();
  bool running = !transfer_.done && file_send_thread_ != nullptr;
  transfer_lock_.Unlock();
  if (running) file_send_thread_->Kill(-1);
  return 0;
}

int CPTZControlClass::StopDownload(int) {
  transfer_lock_.Lock();
  if (transfer_.done) {
    transfer_lock_.Unlock();
    return QV_E_TRANSFER_STOP;
  }
  transfer_.done = true;
  bool link_mode = transfer_.mode != 0;
  transfer_lock_.Unlock();
  if (file_send_thread_ != nullptr) file_send_thread_->Kill(-1);
  if (link_mode) WriteActionString(kStopFrame, static_cast<int>(sizeof(kStopFrame) - 1));
  LockTransferFile();
  transfer_lock_.Lock();
  FILE* file = transfer_.file;
  transfer_.file = nullptr;
  transfer_.port = 0;
  transfer_.position = 0;
  transfer_.total = 0;
  transfer_lock_.Unlock();
  if (file != nullptr) fclose(file);
  UnlockTransferFile();
  return 0;
}

void CPTZControlClass::SetTransferProgress(unsigned generation, uint32_t position,
                                           uint32_t total) {
  transfer_lock_.Lock();
  if (transfer_.generation == generation) {
    transfer_.position = position;
    transfer_.total = total;
  }
  transfer_lock_.Unlock();
}

void CPTZControlClass::EndChannelTransfer(unsigned generation) {
  transfer_lock_.Lock();
  if (transfer_.generation == generation) {
    transfer_.done = true;
    transfer_.port = 0;
  }
  transfer_lock_.Unlock();
}

int CPTZControlClass::OnFileTransportStatus(int code, const char* text) {
  // The file is closed before the transfer counts as done: whoever waits for
  // that finds it complete on disk.
  LockTransferFile();
  transfer_lock_.Lock();
  FILE* file = transfer_.file;
  transfer_.file = nullptr;
  transfer_lock_.Unlock();
  if (file != nullptr) fclose(file);
  transfer_lock_.Lock();
  transfer_.done = true;
  transfer_.port = 0;
  FileTransferRecord r = transfer_;
  transfer_lock_.Unlock();
  UnlockTransferFile();
  const char* msg = text != nullptr ? text : "";
  std::string status;
  if (r.upload == 1) {
    if (code != 0) {
      status = Format("<RESPONSE_PARAM\nFileType=\"%ld\" FileName=\"%s\" StartPos=\"%d\" "
                      "ErrorCode=\"%d\" errormsg=\"%s\" \n/>",
                      r.file_type, r.local_name.c_str(), 0, code, msg);
    } else {
      status = Format("<RESPONSE_PARAM\nFileType=\"%ld\" FileName=\"%s\" StartPos=\"%d\" "
                      "ErrorCode=\"%d\"  \n/>",
                      r.file_type, r.local_name.c_str(), 0, code);
    }
    PostStatusMsg(code != 0 ? EVENT_UPLOADFAILED : EVENT_UPLOADOK, status.c_str());
    return 0;
  }
  if (code != 0) {
    remove(r.local_name.c_str());
    status = Format("<RESPONSE_PARAM\nRemoteFileName=\"%s\" LocalFileName=\"%s\" StartPos=\"%d\" "
                    "ErrorCode=\"%d\" errormsg=\"%s\" \n/>",
                    r.remote_name.c_str(), r.local_name.c_str(), 0, code, msg);
  } else {
    status = Format("<RESPONSE_PARAM\nRemoteFileName=\"%s\" LocalFileName=\"%s\" StartPos=\"%d\" "
                    "ErrorCode=\"%d\" />",
                    r.remote_name.c_str(), r.local_name.c_str(), 0, code);
  }
  PostStatusMsg(code != 0 ? EVENT_DOWNLOADFAILED : EVENT_DOWNLOADOK, status.c_str());
  return 0;
}

long CPTZControlClass::OnTransferReply(long code, long flag, const char* body) {
  bool upload = code == kUploadCode;
  unsigned short port = 0;
  int mode = 0;
  unsigned long length = 0;
  bool usable = flag == 0 && body != nullptr &&
                GetFileTransportPort(body, &port, &mode, &length) == 0 && port != 0;
  // A link-mode download has to know how much is coming.
  if (usable && !upload && mode != 0 && static_cast<long>(length) < 0) usable = false;

  LockTransferFile();
  transfer_lock_.Lock();
  FileTransferRecord& r = transfer_;
  bool active = !r.done && r.upload == (upload ? 1 : 0);
  if (!usable) {
    FILE* file = r.file;
    r.file = nullptr;
    r.done = true;
    r.port = 0;
    FileTransferRecord copy = r;
    transfer_lock_.Unlock();
    if (file != nullptr) fclose(file);
    UnlockTransferFile();
    std::string text =
        upload ? Format("<RESPONSE_PARAM\nFileType=\"%ld\" FileName=\"%s\" />", copy.file_type,
                        copy.local_name.c_str())
               : Format("<RESPONSE_PARAM\nRemoteFileName=\"%s\" LocalFileName=\"%s\" />",
                        copy.remote_name.c_str(), copy.local_name.c_str());
    PostStatusMsg(upload ? EVENT_UPLOADFAILED : EVENT_DOWNLOADFAILED, text.c_str());
    return 0;
  }
  if (!active) {
    transfer_lock_.Unlock();
    UnlockTransferFile();
    if (!upload && r.done) {
      QV_LOG("[%s:%d]%s Download task got port response but the task has been canceled.\n\n",
             log_label_.c_str());
    }
    return 0;
  }
  r.port = port;
  r.mode = mode;
  r.position = 0;
  r.transfer_tick = GetTickCount();
  if (!upload) r.total = static_cast<uint32_t>(length);
  bool failed = false;
  if (mode != 0) {
    // The data travels inside the control link, moved by the link thread.
    if (r.file != nullptr) fclose(r.file);
    r.file = fopen(r.local_name.c_str(), upload ? "rb+" : "wb");
    failed = r.file == nullptr;
    if (failed) {
      r.done = true;
      r.port = 0;
    }
  } else {
    EnsureFileThread();
  }
  // One file send thread run per transfer: a repeated reply changes nothing.
  bool start_thread = !failed && mode == 0 && r.thread_generation != r.generation;
  if (start_thread) r.thread_generation = r.generation;
  FileTransferRecord copy = r;
  transfer_lock_.Unlock();
  UnlockTransferFile();

  if (failed) {
    std::string text =
        upload ? Format("<RESPONSE_PARAM\nFileType=\"%ld\" errormsg=\"can not open input file\" "
                        "\nFileName=\"%s\" />",
                        copy.file_type, copy.local_name.c_str())
               : Format("<RESPONSE_PARAM\nRemoteFileName=\"%s\" LocalFileName=\"%s\" />",
                        copy.remote_name.c_str(), copy.local_name.c_str());
    PostStatusMsg(upload ? EVENT_UPLOADFAILED : EVENT_DOWNLOADFAILED, text.c_str());
  } else if (mode != 0) {
    if (upload) WakeLinkThread();
  } else if (start_thread) {
    // A run that is still finishing the previous transfer ends first.
    file_send_thread_->Start(kThreadStack);
  }
  return 0;
}

void CPTZControlClass::WaitSnapshotStored(unsigned long start, unsigned long wait_ms) {
  // The picture is at the caller's path once its download has ended (the
  // status event tells whether it arrived whole).
  for (;;) {
    transfer_lock_.Lock();
    bool done = transfer_.done;
    transfer_lock_.Unlock();
    if (done || GetTickCount() - start >= wait_ms) return;
    SleepMs(1);
  }
}
