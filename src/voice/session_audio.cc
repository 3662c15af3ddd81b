// Voice talk of a session: the host's start and stop, the camera's talk
// replies, and the talk steps of the link thread's turn.
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
#include "voice/audio_thread.h"

namespace {

const int kRequestBufferSize = 10240;
const int kLinkTimeoutMs = 5000;
const int kThreadStack = 0x100000;
const int kPcmTypes = 3;                      // audio types from 3 on are PCM
const unsigned long kStartRepeatMs = 10000;   // start request repeated while refused
const unsigned long kSilenceLimitMs = 8001;   // no packet for this long stops the thread
const int kSilenceSeconds = 8;
const int kPacketsPerTurn = 40;
const size_t kQueueLimit = 30;                // more waiting than this ...
const size_t kQueueKeep = 5;                  // ... keeps only the newest 5
const int kExitStopTries = 2;

const char kStopBody[] = "<RA_STOP_PARAM\nSessionid=\"%s\" />";
const char kExitStopBody[] = "<RA_STOP_PARAM\nSessionid=\"%s\" />\n";

enum TalkRefusal { kBusy = -1, kParamError = -2, kDisabled = -3 };

}  // namespace

std::string CPTZControlClass::TalkStartRequest() {
  std::string id = SessionID();
  char body[512];
  if (talk_.audio_type >= kPcmTypes) {
    snprintf(body, sizeof(body),
             "<RA_START_PARAM\nAudioForamt=\"PCM\" Channels=\"%d\" SampleRate=\"%d\" "
             "Bitrate=\"16000\" RTPSendPort=\"%d\"  ConnectType=\"1\" Sessionid=\"%s\" />",
             talk_.asked_channels, talk_.asked_sample_rate, 0, id.c_str());
  } else {
    snprintf(body, sizeof(body),
             "<RA_START_PARAM\nAudioForamt=\"G711\" Channels=\"1\" SampleRate=\"8000\" "
             "Bitrate=\"64000\" RTPSendPort=\"%d\"  ConnectType=\"1\" Sessionid=\"%s\" />",
             0, id.c_str());
  }
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[kRequestBufferSize]);
  if (!buffer) return std::string();
  int len = MakeXMLRequest(buffer.get(), kRequestBufferSize, "REVERSE_AUDIO_MESSAGE",
                           "CMD_RA_START", "0", body);
  return std::string(buffer.get(), static_cast<size_t>(len));
}

std::string CPTZControlClass::TalkStopRequest(const char* body_format) {
  std::string id = SessionID();
  char body[512];
  snprintf(body, sizeof(body), body_format, id.c_str());
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[kRequestBufferSize]);
  if (!buffer) return std::string();
  int len = MakeXMLRequest(buffer.get(), kRequestBufferSize, "REVERSE_AUDIO_MESSAGE",
                           "CMD_RA_STOP", "0", body);
  return std::string(buffer.get(), static_cast<size_t>(len));
}

int CPTZControlClass::QueueAction(const std::string& message) {
  if (message.empty()) return QV_E_NO_MEMORY;
  int ret = WriteActionString(message.data(), static_cast<int>(message.size()));
  if (ret == 0) WakeLinkThread();
  return ret;
}

bool CPTZControlClass::AudioThreadRunning() {
  talk_lock_.Lock();
  bool running = audio_send_thread_ != nullptr && audio_send_thread_->IsRunning();
  talk_lock_.Unlock();
  return running;
}

int CPTZControlClass::StartAudio(int audio_type, int sample_rate, int channels) {
  if (talk_.requested) return QV_E_TALK_BUSY;
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  talk_lock_.Lock();
  talk_.audio_type = audio_type;
  talk_.asked_sample_rate = sample_rate;
  talk_.asked_channels = channels;
  talk_.last_send_tick = 0;
  std::string request = TalkStartRequest();
  talk_lock_.Unlock();
  // Requested before the request can leave: the camera's answer may be read
  // on the link thread before QueueAction has even returned.
  talk_.start_request_tick = GetTickCount();
  talk_.requested = 1;
  if ((ret = QueueAction(request)) != 0) {
    talk_.requested = 0;
    return ret;
  }
  return 0;
}

int CPTZControlClass::StopAudio() {
  talk_lock_.Lock();
  if (!talk_.requested) {
    talk_lock_.Unlock();
    return QV_E_TALK_NOT_RUNNING;
  }
  talk_.requested = 0;
  QueueAction(TalkStopRequest(kStopBody));
  if (audio_send_thread_ != nullptr) {
    audio_send_thread_->Kill(0);
    audio_send_thread_->Kill(-1);
    // Its ring holds 2 MB: a session that talked once would keep it for
    // life. Once nothing is left in it, the next talk makes a new one.
    if (audio_send_thread_->Waiting() == 0) {
      delete audio_send_thread_;
      audio_send_thread_ = nullptr;
    }
  }
  talk_.ClearValues();
  talk_lock_.Unlock();
  return 0;
}

long CPTZControlClass::AudioFrameData(const char* data, long length) {
  talk_lock_.Lock();
  long ret = -1;
  if (audio_send_thread_ != nullptr && audio_send_thread_->IsRunning()) {
    ret = audio_send_thread_->AudioFrameData(data, length);
  }
  talk_lock_.Unlock();
  return ret;
}

void CPTZControlClass::OnTalkReply(const char* code, long flag, const char* flag_text,
                                   char* message) {
  const char* label = log_label_.c_str();
  if (strcmp(code, "CMD_RA_START") == 0) {
    if (talk_.requested) OnTalkStartReply(flag, message);
    return;
  }
  if (strcmp(code, "CMD_RA_STOP") != 0) return;
  if (flag != 0) {
    PostStatus(EVENT_STOPAUDIOFAILED, "%s Stop audio error,code=%s!", label, flag_text);
  } else {
    PostStatus(EVENT_STOPAUDIOOK, "%s Stop audio OK!", label);
  }
  talk_lock_.Lock();
  if (audio_send_thread_ != nullptr) audio_send_thread_->Kill(-1);
  talk_.same_port = 0;
  talk_lock_.Unlock();
}

void CPTZControlClass::OnTalkStartReply(long flag, char* message) {
  const char* label = log_label_.c_str();
  if (flag != 0) {
    std::string stop = TalkStopRequest(kStopBody);
    char text[512] = "";
    if (flag == kBusy) {
      snprintf(text, sizeof(text), "%s StartAudio not allowed,for device is busy!", label);
      PostStatus(EVENT_STARTAUDIO_ISBUSY, "%s", text);
      QueueAction(stop);
    } else if (flag == kParamError) {
      snprintf(text, sizeof(text), "%s StartAudio not allowed for audio param error!", label);
      PostStatus(EVENT_STARTAUDIO_PARAMERROR, "%s", text);
    } else if (flag == kDisabled) {
      snprintf(text, sizeof(text), "%s StartAudio not allow for device's audio disabled!",
               label);
      PostStatus(EVENT_STARTAUDIO_AUDIODDISABLED, "%s", text);
    }
    PostStatus(EVENT_STARTAUDIOFAILED, "%s", text);
    return;
  }
  talk_lock_.Lock();
  int port = talk_.recv_port;
  int codec = 0, rate = 0, bits = 0, channels = 0, same_port = 0;
  bool ok = GetAudioRTPParam(message, &port, &codec, &rate, &bits, &channels, &same_port) == 0;
  if (ok) {
    talk_.recv_port = port;
    talk_.reply_audio_type = codec;
    talk_.sample_rate = rate;
    talk_.bits = bits;
    talk_.channels = channels;
    talk_.same_port = same_port;
  }
  talk_lock_.Unlock();
  if (!ok) {
    PostStatus(EVENT_STARTAUDIOFAILED, "%s: startaudio ERROR,get audio param error!", label);
    return;
  }
  // Status 6 goes out before the thread starts and without the talk lock:
  // the host may stop talk from inside the callback.
  PostStatus(EVENT_STARTAUDIOOK,
             "StartAudio OK, recv port=%d, audiotype=%d, samplerate=%d, bits=%d, channels=%d,"
             "use same port=%d",
             port, codec, rate, bits, channels, same_port);
  talk_lock_.Lock();
  if (talk_.requested) {
    while (audio_send_thread_ == nullptr) {
      audio_send_thread_ = new (std::nothrow) CAudioThread(this);
      if (audio_send_thread_ == nullptr) SleepUs(10);
    }
    if (same_port) {
      QV_LOG("[%s:%d]use default auxptz socket(port=%d) to send audio buffer to ipc!\n",
             static_cast<int>(port_));
    } else {
      QV_LOG("[%s:%d]use port=%d to send audio buffer to ipc!\n", port);
    }
    audio_send_thread_->Start(kThreadStack);
    talk_.last_send_tick = GetTickCount();
  }
  talk_lock_.Unlock();
}

void CPTZControlClass::TalkUpkeep() {
  if (!talk_.requested) return;
  unsigned long now = GetTickCount();
  if (!AudioThreadRunning()) {
    if (now - talk_.start_request_tick < ScaledMs(kStartRepeatMs)) return;
    action_lock_.Lock();
    bool idle = action_queue_.empty();
    action_lock_.Unlock();
    if (!idle) return;
    talk_lock_.Lock();
    std::string request = TalkStartRequest();
    talk_lock_.Unlock();
    if (QueueAction(request) == 0) talk_.start_request_tick = now;
    return;
  }
  if (now - talk_.last_send_tick < ScaledMs(kSilenceLimitMs)) return;
  talk_lock_.Lock();
  if (audio_send_thread_ != nullptr) audio_send_thread_->Kill(-1);
  talk_lock_.Unlock();
  // The repeat timer counts from here, so that talk starts again 10 s on.
  talk_.start_request_tick = now;
  QV_LOG("[%s:%d]audio send to ipc fail more than %d seconds\n", kSilenceSeconds);
}

void CPTZControlClass::SendTalkPackets() {
  for (int i = 0; i < kPacketsPerTurn; ++i) {
    std::unique_ptr<TalkPacket> packet = talk_audio_.Take();
    if (!packet) break;
    std::string message = MakeTalkMessage(*packet);
    int len = static_cast<int>(message.size());
    bool sent = framing_.send_with_header(sock_, message.data(), len, kLinkTimeoutMs, 0) == len;
    talk_.last_send_tick = GetTickCount();
    if (!sent) {
      QV_LOG("[%s:%d]send audio data error!\n");
      break;  // the link is in trouble: the rest wait for the next turn
    }
  }
  talk_audio_.Trim(kQueueLimit, kQueueKeep);
}

void CPTZControlClass::TalkAtThreadExit() {
  if (!talk_.requested) return;
  talk_lock_.Lock();
  if (audio_send_thread_ != nullptr) audio_send_thread_->Kill(-1);
  talk_lock_.Unlock();
  if (link_state_ == kLoggedIn && sock_ >= 0) {
    std::string stop = TalkStopRequest(kExitStopBody);
    int len = static_cast<int>(stop.size());
    for (int i = 0; i < kExitStopTries; ++i) {
      if (framing_.send_with_header(sock_, stop.data(), len, kLinkTimeoutMs, 0) == len) break;
    }
  }
  CloseSocket();
  talk_.requested = 0;
}
