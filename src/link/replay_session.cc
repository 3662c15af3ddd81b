// Remote playback of a session: the play and control requests, the
// camera's replay control replies and the media packets of a replay.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "link/message_readers.h"
#include "link/ptz_control_class.h"
#include "link/replay_param.h"
#include "link/xml_util.h"

namespace {

const int kRequestBufferSize = 10240;
const char kTimelinePlayName[] = "test";  // lets actions follow a play by time

enum Action { kPlay = 0, kSeek = 5, kStop = 7, kLastAction = 7 };

const char kPlayByName[] =
    "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\t<XML_VEXORA>\t<MESSAGE_HEADER\t"
    "Msg_type=\"REPLAY_CONTROL_MESSAGE\"\tMsg_code=\"%d\"\tMsg_flag=\"0\"\t/><MESSAGE_BODY>\t"
    "<REQUEST_PARAM\tFileName = \"%s\"\tStartPos=\"0\"\tPlayParam=\"1\"\t/>\t</MESSAGE_BODY>\t"
    "</XML_VEXORA>";

#define QV_TABS "\t\t\t\t\t\t"
const char kControlByName[] =
    "<?xml version=\"1.0\" encoding=\"GB2312\" ?>" QV_TABS " <XML_VEXORA>" QV_TABS
    " <MESSAGE_HEADER " QV_TABS " Msg_type=\"REPLAY_CONTROL_MESSAGE\"" QV_TABS
    " Msg_code=\"%ld\" " QV_TABS " Msg_flag=\"0\" " QV_TABS " /><MESSAGE_BODY>" QV_TABS
    " <REQUEST_PARAM " QV_TABS " FileName = \"%s\" " QV_TABS " StartPos=\"%d\" " QV_TABS
    " PlayParam=\"%ld\" " QV_TABS " />" QV_TABS " </MESSAGE_BODY>" QV_TABS " </XML_VEXORA>";
const char kControlByTime[] =
    "<?xml version=\"1.0\" encoding=\"GB2312\" ?>" QV_TABS " <XML_VEXORA>" QV_TABS
    " <MESSAGE_HEADER " QV_TABS " Msg_type=\"TIMELINE_REPLAY_CONTROL_MESSAGE\"" QV_TABS
    " Msg_code=\"%ld\" " QV_TABS " Msg_flag=\"0\" " QV_TABS " /><MESSAGE_BODY>" QV_TABS
    " <REQUEST_PARAM " QV_TABS " PlayTimestampInsec=\"%d\" " QV_TABS " PlayParam=\"%ld\" " QV_TABS
    " />" QV_TABS " </MESSAGE_BODY>" QV_TABS " </XML_VEXORA>";
#undef QV_TABS

}  // namespace

int CPTZControlClass::QueueReplayRequest(const char* format, ...) {
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[kRequestBufferSize]);
  if (!buffer) return QV_E_NO_MEMORY;
  va_list ap;
  va_start(ap, format);
  int len = vsnprintf(buffer.get(), kRequestBufferSize, format, ap);
  va_end(ap);
  if (len < 0 || len >= kRequestBufferSize) return QV_E_INVALID_ARG;  // a name that cannot fit
  int ret = WriteActionString(buffer.get(), len);
  if (ret == 0) WakeLinkThread();
  return ret;
}

int CPTZControlClass::PlayFile(const char* name) {
  if (replay_ability_ != 1) return QV_E_REPLAY_UNSUPPORTED;
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  if (name == nullptr) return QV_E_INVALID_ARG;
  replay_.Allocate();
  if ((ret = QueueReplayRequest(kPlayByName, 0, name)) != 0) return ret;
  state_lock_.Lock();
  play_file_name_ = name;
  state_lock_.Unlock();
  return 0;
}

int CPTZControlClass::PlayFile(long time) {
  if (replay_ability_ != 1) return QV_E_REPLAY_UNSUPPORTED;
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  replay_.Allocate();
  state_lock_.Lock();
  play_file_name_ = kTimelinePlayName;
  state_lock_.Unlock();
  return QueueReplayRequest(kControlByTime, 0L, static_cast<int>(time), 1L);
}

int CPTZControlClass::ControlPlay(long action, int mode, long parameter) {
  state_lock_.Lock();
  std::string name = play_file_name_;
  state_lock_.Unlock();
  if (name.empty()) return QV_E_NO_PLAY_FILE;
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  if (action < kPlay || action > kLastAction) return QV_E_PLAY_ACTION;
  int start = 0;
  long play = parameter;
  if (action == kPlay || action == kStop) {
    play = 0;
  } else if (action == kSeek) {
    start = static_cast<int>(parameter);
    play = 0;
  }
  if (mode == 0) return QueueReplayRequest(kControlByName, action, name.c_str(), start, play);
  if (mode == 1) return QueueReplayRequest(kControlByTime, action, start, play);
  return QV_E_INVALID_ARG;
}

void CPTZControlClass::OnReplayReply(long code, long flag, char* body) {
  if (code != 0 || body == nullptr) {
    if (owner_ != nullptr) owner_->OnPlayEventCallBack(user_id_, code, flag, body);
    return;
  }
  // The start reply: the recording's length and its parameter blocks.
  replay_.ClearFirstVideoTick();
  TiXmlDocument doc;
  if (!ParseXml(doc, body) || doc.RootElement() == nullptr) return;
  const TiXmlElement* root = doc.RootElement();
  const char* seconds = root->Attribute("VideoSeconds");
  if (seconds != nullptr) video_seconds_ = atoi(seconds);
  const char* video_text = root->Attribute("VideoParam");
  const char* audio_text = root->Attribute("AudioParam");
  if (video_text == nullptr || audio_text == nullptr) return;
  int video_len = 0, audio_len = 0;
  std::unique_ptr<unsigned char[]> video(DecodeParamBlock(video_text, &video_len));
  std::unique_ptr<unsigned char[]> audio(DecodeParamBlock(audio_text, &audio_len));
  std::unique_ptr<QV_REPLAY_PARAM> param(new (std::nothrow) QV_REPLAY_PARAM);
  if (!video || !audio || !param) return;
  MakeReplayParam(video.get(), video_len, audio.get(), audio_len, video_seconds_, param.get());
  FRAME_EXTDATA extra = {0, 0.0, nullptr};
  if (owner_ != nullptr) {
    owner_->OnPlayBackDataRecvCallBack(user_id_, QV_REPLAY_KIND_PARAM,
                                       reinterpret_cast<char*>(param.get()), sizeof(*param),
                                       &extra);
  }
}

void CPTZControlClass::OnMediaDataMessage(char* message, int length) {
  // Media messages carry a binary packet behind their text: POS names
  // where it starts in the payload and how long it is.
  int start = -1, data_len = 0;
  if (GetXmlPosAndDataLen(message, &start, &data_len) != 0) return;
  int text_len = static_cast<int>(strlen(message));
  if (start < text_len || data_len <= 0 || data_len > length - start) {
    QV_LOG("[%s:%d]%s media data StartPos=%d DataLen=%d outside the %d-byte message, dropped\n",
           log_label_.c_str(), start, data_len, length);
    return;
  }
  OnRecvMediaData(reinterpret_cast<unsigned char*>(message) + start, data_len);
}

int CPTZControlClass::OnRecvMediaData(const unsigned char* packet, int length) {
  if (!replay_.Allocated()) {
    QV_LOG("[%s:%d]have not call playfile,but recv playback data\n");
    return -1;
  }
  CReplayAssembler::Frame frame;
  if (!replay_.Add(packet, length, &frame) || owner_ == nullptr) return 0;
  FRAME_EXTDATA extra = {frame.key, static_cast<double>(frame.tick), nullptr};
  owner_->OnPlayBackDataRecvCallBack(user_id_, static_cast<unsigned long>(frame.kind),
                                     const_cast<char*>(frame.data), frame.length, &extra);
  return 0;
}
