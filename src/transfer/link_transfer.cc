// File transfers on the link thread: the re-announcement of a transfer the
// camera has not answered yet, the 60 s stall rule, and the data of
// link-mode transfers, which travels inside the control link as
// MEDIA_DATA_MESSAGE frames: the XML text with the file position and the
// data length, 4 zero bytes, then the data.
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/time_scale.h"
#include "link/message_readers.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"

namespace {

const unsigned long kAnnounceMs = 5000;
const unsigned long kStallMs = 60000;
const int kLinkTimeoutMs = 5000;
const int kPacketBufferSize = 65536;
const int kPacketData = 32768;
const int kXmlRoom = 1024;  // room for the XML text ahead of the data
const int kGap = 4;         // zero bytes between the XML text and the data

const char kUploadXml[] =
    "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\n<XML_VEXORA>\n<MESSAGE_HEADER\n"
    "\t\t\t\t\tMsg_type=\"MEDIA_DATA_MESSAGE\" \nMsg_code=\"1\" Msg_flag=\"0\" />\n"
    "\t\t\t\t\t<MESSAGE_BODY>\n<POS\nStartPos=\"%d\"  DataLen=\"%d\" />\n</MESSAGE_BODY>\n"
    "</XML_VEXORA>";

}  // namespace

void CPTZControlClass::FileTransferUpkeep(bool sent) {
  unsigned long now = GetTickCount();
  transfer_lock_.Lock();
  const FileTransferRecord& r = transfer_;
  if (r.Pending() && now - r.announce_tick >= ScaledMs(kAnnounceMs)) {
    transfer_.announce_tick = now;
    bool upload = r.upload == 1;
    char position[16];
    snprintf(position, sizeof(position), "%d", static_cast<int>(r.position));
    std::string body =
        upload ? "<RESPONSE_PARAM\nFileType=\"" + std::to_string(r.file_type) + "\" FileName=\"" +
                     r.local_name + "\" StartPos=\"" + position + "\" />"
               : "<RESPONSE_PARAM\nRemoteFileName=\"" + r.remote_name + "\" LocalFileName=\"" +
                     r.local_name + "\" StartPos=\"" + position + "\" />";
    transfer_lock_.Unlock();
    SystemControl(upload ? 1022 : 1023, 0, body.c_str());
    return;
  }
  if (!r.InLink()) {
    transfer_lock_.Unlock();
    return;
  }
  bool upload = r.upload == 1;
  bool stalled = now - r.transfer_tick > ScaledMs(kStallMs);
  transfer_lock_.Unlock();
  if (stalled) {
    OnFileTransportStatus(-123, upload ? "60 seconds not send buffer" : "60 seconds not recv buffer");
  } else if (upload && !sent && link_state_ == kLoggedIn) {
    SendUploadPacket();
  }
}

void CPTZControlClass::SendUploadPacket() {
  while (upload_packet_ == nullptr) {
    upload_packet_ = new (std::nothrow) char[kPacketBufferSize];
    if (upload_packet_ == nullptr) SleepUs(10);
  }
  char* data = upload_packet_ + kXmlRoom;
  LockTransferFile();
  transfer_lock_.Lock();
  FILE* file = transfer_.InLink() && transfer_.upload == 1 ? transfer_.file : nullptr;
  uint32_t position = transfer_.position;
  unsigned generation = transfer_.generation;
  std::string local = transfer_.local_name;
  transfer_lock_.Unlock();
  if (file == nullptr) {
    UnlockTransferFile();
    return;
  }
  size_t n = 0;
  bool read_failed = fseek(file, static_cast<long>(position), SEEK_SET) != 0;
  if (!read_failed) {
    n = fread(data, 1, kPacketData, file);
    read_failed = n == 0 && ferror(file);
  }
  UnlockTransferFile();
  if (read_failed) {
    OnFileTransportStatus(-1, "read upload file error");
    return;
  }
  char xml[kXmlRoom];
  int xml_len = snprintf(xml, sizeof(xml), kUploadXml, static_cast<int>(position),
                         static_cast<int>(n));
  char* frame = data - kGap - xml_len;
  memcpy(frame, xml, static_cast<size_t>(xml_len));
  memset(data - kGap, 0, kGap);
  int len = xml_len + kGap + static_cast<int>(n);
  bool whole = framing_.send_with_header(sock_, frame, len, kLinkTimeoutMs, 0) == len;
  transfer_lock_.Lock();
  bool current = transfer_.generation == generation && transfer_.InLink();
  transfer_lock_.Unlock();
  if (!current) return;  // stopped while the frame went out
  if (n == 0) {
    // The empty packet closes the upload.
    if (!whole) {
      QV_LOG("[%s:%d]send last upload file pack error!\n");
      OnFileTransportStatus(-3, "send last upload file pack error!");
      return;
    }
    char text[1024];
    snprintf(text, sizeof(text), "upload file[%s] ok!", local.c_str());
    OnFileTransportStatus(0, text);
    return;
  }
  if (!whole) {
    OnFileTransportStatus(-2, "send upload file pack error");
    return;
  }
  transfer_lock_.Lock();
  if (transfer_.generation == generation && transfer_.InLink()) {
    transfer_.position = position + static_cast<uint32_t>(n);
    transfer_.transfer_tick = GetTickCount();
  }
  transfer_lock_.Unlock();
  // More data is waiting: the next turn need not wait for the camera.
  WakeLinkThread();
}

bool CPTZControlClass::OnFileMediaData(char* message, int length) {
  transfer_lock_.Lock();
  bool taken = transfer_.InLink() && transfer_.upload == 0;
  uint32_t position = transfer_.position;
  unsigned generation = transfer_.generation;
  transfer_lock_.Unlock();
  if (!taken) return false;

  int start = -1, data_len = 0;
  long offset = static_cast<long>(strlen(message)) + kGap;
  if (GetXmlPosAndDataLen(message, &start, &data_len) != 0 || data_len < 0 ||
      offset + data_len > length) {
    QV_LOG("[%s:%d]%s recv file data length error, len=%d\n", log_label_.c_str(), data_len);
    OnFileTransportStatus(-2, "recv file data length error");
    return true;
  }
  if (static_cast<uint32_t>(start) != position || start < 0) {
    QV_LOG("[%s:%d]recv file pos %d != file write pos %u\n", start, position);
    OnFileTransportStatus(-2, "recv file pos!=file write pos");
    return true;
  }
  LockTransferFile();
  transfer_lock_.Lock();
  FILE* file = transfer_.generation == generation ? transfer_.file : nullptr;
  transfer_lock_.Unlock();
  bool written = file != nullptr &&
                 fwrite(message + offset, 1, static_cast<size_t>(data_len), file) ==
                     static_cast<size_t>(data_len);
  bool complete = false;
  std::string remote, local;
  transfer_lock_.Lock();
  if (written && transfer_.generation == generation) {
    transfer_.position = position + static_cast<uint32_t>(data_len);
    transfer_.transfer_tick = GetTickCount();
    complete = transfer_.position >= transfer_.total;
    remote = transfer_.remote_name;
    local = transfer_.local_name;
  }
  transfer_lock_.Unlock();
  UnlockTransferFile();
  if (file == nullptr) return true;  // stopped meanwhile
  if (!written) {
    OnFileTransportStatus(-1, "write file failed");
  } else if (complete) {
    char text[1024];
    snprintf(text, sizeof(text), "download OK, remote file %s, local %s!", remote.c_str(),
             local.c_str());
    OnFileTransportStatus(0, text);
  }
  return true;
}
