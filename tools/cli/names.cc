#include "names.h"

#include "quorvel/quorvel.h"

namespace {

enum class Kind { kResult, kEvent };

struct Name {
  Kind kind;
  long code;
  const char* name;
  const char* meaning;
};

#define RESULT(code, meaning) {Kind::kResult, code, #code, meaning}
#define EVENT(code, meaning) {Kind::kEvent, code, #code, meaning}

const Name kNames[] = {
    RESULT(QV_E_UNKNOWN_USER, "the user ID names no logged-in camera"),
    RESULT(QV_E_TALK_NOT_RUNNING, "voice talk is not running"),
    RESULT(QV_E_NOT_CONNECTED, "the camera's link is not up"),
    RESULT(QV_E_NOT_LOGGED_IN, "connected but not logged in"),
    RESULT(QV_E_MSG_TYPE, "message type not allowed"),
    RESULT(QV_E_NO_MEMORY, "the request could not be built or queued"),
    RESULT(QV_E_INVALID_ARG, "invalid argument"),
    RESULT(QV_E_THREAD, "a worker could not be started"),
    RESULT(QV_E_UNKNOWN_HANDLE, "unknown real-play handle"),
    RESULT(QV_E_UPLOAD_BUSY, "an upload is in progress"),
    RESULT(QV_E_DOWNLOAD_BUSY, "a download is in progress"),
    RESULT(QV_E_TALK_BUSY, "voice talk is running"),
    RESULT(QV_E_TRANSFER_STOP, "no transfer to stop"),
    RESULT(QV_E_WRONG_DIRECTION, "a transfer in the other direction is running"),
    RESULT(QV_E_UNKNOWN_PTZ_CMD, "unknown PTZ or preset command"),
    RESULT(QV_E_FILE_MISSING, "the local file is missing or cannot be opened"),
    RESULT(QV_E_NO_PLAY_FILE, "no recording is playing"),
    RESULT(QV_E_PLAY_ACTION, "unknown playback action"),
    RESULT(QV_E_REPLAY_UNSUPPORTED, "the camera cannot play recordings"),
    RESULT(QV_E_BUFFER_TOO_SMALL, "the buffer is too small"),
    RESULT(QV_E_BAD_REPLY, "the camera's reply is unusable"),
    RESULT(QV_E_RECORD_RUNNING, "the stream is already recording"),
    RESULT(QV_E_RECORD_NOT_RUNNING, "the stream is not recording"),
    RESULT(QV_E_RECORD_THREAD, "the record thread did not start"),
    RESULT(QV_E_BAD_RECORD_NAME, "bad recording name"),
    RESULT(QV_E_SNAP_TIMEOUT, "the snapshot timed out"),
    RESULT(QV_E_SOCKET, "socket error"),
    RESULT(QV_E_REALPLAY_ARG, "bad live-stream argument"),
    RESULT(QV_E_UNSUPPORTED, "not supported, or failed"),

    EVENT(EVENT_CONNECTING, "connecting"),
    EVENT(EVENT_CONNECTOK, "connected"),
    EVENT(EVENT_CONNECTFAILED, "connection failed or lost"),
    EVENT(EVENT_SOCKETERROR, "socket error"),
    EVENT(EVENT_LOGINOK, "logged in"),
    EVENT(EVENT_LOGINFAILED, "login failed"),
    EVENT(EVENT_STARTAUDIOOK, "talk started"),
    EVENT(EVENT_STARTAUDIOFAILED, "talk could not start"),
    EVENT(EVENT_STOPAUDIOOK, "talk stopped"),
    EVENT(EVENT_STOPAUDIOFAILED, "talk stop failed"),
    EVENT(EVENT_SENDPTZOK, "command sent"),
    EVENT(EVENT_SENDPTZFAILED, "PTZ command refused"),
    EVENT(EVENT_SENDAUXOK, "request sent"),
    EVENT(EVENT_SENDAUXFAILED, "request failed"),
    EVENT(EVENT_UPLOADOK, "upload progress or success"),
    EVENT(EVENT_UPLOADFAILED, "upload failed"),
    EVENT(EVENT_DOWNLOADOK, "download complete"),
    EVENT(EVENT_DOWNLOADFAILED, "download failed"),
    EVENT(EVENT_REMOVEOK, "removed"),
    EVENT(EVENT_REMOVEFAILED, "remove failed"),
    EVENT(EVENT_SENDPTZERROR, "a request did not go out whole"),
    EVENT(EVENT_PTZPRESETINFO, "PTZ reply"),
    EVENT(EVNET_PTZNOPRESETINFO, "PTZ reply without preset information"),
    EVENT(EVENT_PTZALARM, "alarm"),
    EVENT(EVENT_RECVVIDEOPARAM, "video parameters received"),
    EVENT(EVENT_RECVAUDIOPARAM, "audio parameters received"),
    EVENT(EVENT_CONNECTRTSPERROR, "stream connection failed"),
    EVENT(EVENT_CONNECTRTSPOK, "stream connected"),
    EVENT(EVENT_RTSPTHREADEXIT, "stream thread ended"),
    EVENT(EVENT_URLERROR, "unusable stream address"),
    EVENT(EVENT_RECVVIDEOAUDIOPARAM, "stream parameters received"),
    EVENT(EVENT_LOGIN_USERERROR, "login refused: wrong user or password"),
    EVENT(EVENT_LOGOUT_FINISH, "session ended"),
    EVENT(EVENT_LOGIN_RECONNECT, "link lost, reconnecting"),
    EVENT(EVENT_LOGIN_HEARTBEAT_LOST, "no login reply"),
    EVENT(EVENT_STARTAUDIO_ISBUSY, "talk refused: the camera is busy"),
    EVENT(EVENT_STARTAUDIO_PARAMERROR, "talk refused: audio parameters"),
    EVENT(EVENT_STARTAUDIO_AUDIODDISABLED, "talk refused: audio disabled"),
    EVENT(EVENT_CONNECT_RTSPSERVER_ERROR, "stream server unreachable"),
    EVENT(EVENT_CREATE_RTSPCLIENT_ERROR, "stream client failed"),
    EVENT(EVENT_GET_RTSP_CMDOPTION_ERROR, "stream options failed"),
    EVENT(EVENT_RTSP_AUTHERROR, "stream refused the user or password"),
    EVENT(EVNET_RECORD_FILEBEGIN, "recording file started"),
    EVENT(EVENT_RECORD_FILEEND, "recording file finished"),
    EVENT(EVENT_RECORD_TASKEND, "recording ended"),
    EVENT(EVENT_RECORD_DISKFREESPACE_TOOLOW, "recording stopped: disk nearly full"),
    EVENT(EVNET_RECORD_FILEBEGIN_ERROR, "recording file could not be started"),
    EVENT(EVNET_RECORD_WRITE_FILE_ERROR, "recording file could not be written"),
    EVENT(EVENT_RECORD_INITAVIHEAD_ERROR, "recording header failed"),
    EVENT(EVENT_RECORD_MEDIA_PARAM_ERROR, "recording: unusable stream parameters"),
};

#undef RESULT
#undef EVENT

const Name* Find(Kind kind, long code) {
  for (const Name& n : kNames) {
    if (n.kind == kind && n.code == code) return &n;
  }
  return nullptr;
}

std::string Describe(long code, const std::string& name, const char* meaning) {
  std::string text = std::to_string(code);
  if (!name.empty()) text += " " + name;
  if (meaning[0] != '\0') text += std::string(" (") + meaning + ")";
  return text;
}

}  // namespace

const char* ResultName(long code) {
  const Name* n = Find(Kind::kResult, code);
  return n ? n->name : "";
}

const char* ResultMeaning(long code) {
  const Name* n = Find(Kind::kResult, code);
  return n ? n->meaning : "";
}

std::string EventName(long code) {
  const Name* n = Find(Kind::kEvent, code);
  return n ? n->name : "";
}

const char* EventMeaning(long code) {
  const Name* n = Find(Kind::kEvent, code);
  return n ? n->meaning : "";
}

std::string DescribeResult(long code) {
  return Describe(code, ResultName(code), ResultMeaning(code));
}

std::string DescribeEvent(long code) {
  return Describe(code, EventName(code), EventMeaning(code));
}
