// Exported helpers that read a camera's reply directly: media capabilities,
// system time and versions; the system time and capability requests; and the
// names of the status event codes.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "base/debug_log.h"
#include "link/xml_util.h"
#include "quorvel/quorvel.h"

namespace {

const unsigned long kSetTime = 1005;
const unsigned long kMediaCapability = 1031;
const unsigned long kGetTime = 1048;
const long kNoMemory = -8000000;
const int kMaxVideoCaps = 100;
const int kMaxAudioCaps = 10;
const size_t kVersionText = 256;

// Splits text at sep into its values (empty values included).
std::vector<std::string> ParseServerStr(const char* text, char sep) {
  std::vector<std::string> values;
  const char* start = text;
  for (const char* p = text;; ++p) {
    if (*p == sep || *p == 0) {
      values.emplace_back(start, p);
      if (*p == 0) break;
      start = p + 1;
    }
  }
  return values;
}

std::string Value(const std::vector<std::string>& values, size_t n) {
  return n - 1 < values.size() ? values[n - 1] : std::string();
}

int Number(const std::vector<std::string>& values, size_t n) {
  return atoi(Value(values, n).c_str());
}

// The first root-level RESPONSE_PARAM of a reply, or null.
const TiXmlElement* ResponseParam(const TiXmlDocument& doc) {
  for (const TiXmlElement* e = doc.RootElement(); e != nullptr; e = e->NextSiblingElement())
    if (strcmp(e->Value(), "RESPONSE_PARAM") == 0) return e;
  return nullptr;
}

// Calls take(values) for each entry of a CapList: entries split at ';' up to
// the first empty one, values at ','.
template <typename Take>
void ForEachCapEntry(const char* list, Take take) {
  if (list == nullptr) return;
  for (const std::string& entry : ParseServerStr(list, ';')) {
    if (entry.empty()) break;
    take(ParseServerStr(entry.c_str(), ','));
  }
}

template <typename Cap>
bool HandOver(const Cap* kept, int count, int* out_count, Cap** out_list) {
  if (count == 0 || out_list == nullptr) return true;
  Cap* list = new (std::nothrow) Cap[count];
  if (list == nullptr) return false;
  std::copy(kept, kept + count, list);
  *out_list = list;
  *out_count = count;
  return true;
}

struct EventName {
  int code;
  char name[36];
};

// Ordered by code, searched by halving.
const EventName kEventNames[] = {
    {0, "EVENT_CONNECTING"},
    {1, "EVENT_CONNECTOK"},
    {2, "EVENT_CONNECTFAILED"},
    {3, "EVENT_SOCKETERROR"},
    {4, "EVENT_LOGINOK"},
    {5, "EVENT_LOGINFAILED"},
    {6, "EVENT_STARTAUDIOOK"},
    {7, "EVENT_STARTAUDIOFAILED"},
    {8, "EVENT_STOPAUDIOOK"},
    {9, "EVENT_STOPAUDIOFAILED"},
    {10, "EVENT_SENDPTZOK"},
    {11, "EVENT_SENDPTZFAILED"},
    {12, "EVENT_SENDAUXOK"},
    {13, "EVENT_SENDAUXFAILED"},
    {14, "EVENT_UPLOADOK"},
    {15, "EVENT_UPLOADFAILED"},
    {16, "EVENT_DOWNLOADOK"},
    {17, "EVENT_DOWNLOADFAILED"},
    {18, "EVENT_REMOVEOK"},
    {19, "EVENT_REMOVEFAILED"},
    {20, "EVENT_SENDPTZERROR"},
    {21, "EVENT_PTZPRESETINFO"},
    {22, "EVNET_PTZNOPRESETINFO"},
    {23, "EVENT_PTZALARM"},
    {24, "EVENT_RECVVIDEOPARAM"},
    {25, "EVENT_RECVAUDIOPARAM"},
    {26, "EVENT_CONNECTRTSPERROR"},
    {27, "EVENT_CONNECTRTSPOK"},
    {28, "EVENT_RTSPTHREADEXIT"},
    {29, "EVENT_URLERROR"},
    {30, "EVENT_RECVVIDEOAUDIOPARAM"},
    {31, "EVENT_LOGIN_USERERROR"},
    {32, "EVENT_LOGOUT_FINISH"},
    {33, "EVENT_LOGIN_RECONNECT"},
    {34, "EVENT_LOGIN_HEARTBEAT_LOST"},
    {35, "EVENT_STARTAUDIO_ISBUSY"},
    {36, "EVENT_STARTAUDIO_PARAMERROR"},
    {37, "EVENT_STARTAUDIO_AUDIODDISABLED"},
    {38, "EVENT_CONNECT_RTSPSERVER_ERROR"},
    {39, "EVENT_CREATE_RTSPCLIENT_ERROR"},
    {40, "EVENT_GET_RTSP_CMDOPTION_ERROR"},
    {41, "EVENT_RTSP_AUTHERROR"},
    {42, "EVNET_RECORD_FILEBEGIN"},
    {43, "EVENT_RECORD_FILEEND"},
    {44, "EVENT_RECORD_TASKEND"},
    {45, "EVENT_RECORD_DISKFREESPACE_TOOLOW"},
    {46, "EVNET_RECORD_FILEBEGIN_ERROR"},
    {47, "EVNET_RECORD_WRITE_FILE_ERROR"},
    {48, "EVENT_RECORD_INITAVIHEAD_ERROR"},
    {49, "EVENT_RECORD_MEDIA_PARAM_ERROR"},
};
static_assert(sizeof(kEventNames) / sizeof(kEventNames[0]) == 50, "50 event names");

}  // namespace

QV_API long IP_NET_DVR_GET_MediaCapability(long userID) {
  return IP_NET_DVR_SystemControl(userID, kMediaCapability, 0, "");
}

QV_API long IP_NET_DVR_XMLGET_MediaCapability(const char* reply, int* videoCount,
                                              VideoCap** videoList, int* audioCount,
                                              AudioCap** audioList) {
  if (reply == nullptr || *reply == 0 || videoCount == nullptr || audioCount == nullptr)
    return QV_E_INVALID_ARG;
  std::unique_ptr<VideoCap[]> video(new (std::nothrow) VideoCap[kMaxVideoCaps]);
  std::unique_ptr<AudioCap[]> audio(new (std::nothrow) AudioCap[kMaxAudioCaps]);
  if (!video || !audio) {
    QV_LOG("[%s:%d]new failed.\n");
    return kNoMemory;
  }
  TiXmlDocument doc;
  if (!ParseXml(doc, reply)) return 0;
  const TiXmlElement* param = ResponseParam(doc);
  if (param == nullptr) return 0;
  int nvideo = 0, naudio = 0;
  for (const TiXmlElement* e = param->FirstChildElement(); e; e = e->NextSiblingElement()) {
    const char* list = e->Attribute("CapList");
    if (strcmp(e->Value(), "VideoCap") == 0) {
      ForEachCapEntry(list, [&](const std::vector<std::string>& v) {
        if (nvideo >= kMaxVideoCaps) return;
        VideoCap cap = {};
        CopyText(cap.name, sizeof(cap.name), Value(v, 1).c_str());
        CopyText(cap.text2, sizeof(cap.text2), Value(v, 2).c_str());
        for (int i = 0; i < 10; ++i) cap.value[i] = Number(v, 3 + i);
        if (cap.name[0] && cap.text2[0] && cap.value[2] > 0 && cap.value[3] > 0)
          video[nvideo++] = cap;
      });
    } else if (strcmp(e->Value(), "AudioCap") == 0) {
      ForEachCapEntry(list, [&](const std::vector<std::string>& v) {
        if (naudio >= kMaxAudioCaps) return;
        AudioCap cap = {};
        CopyText(cap.name, sizeof(cap.name), Value(v, 1).c_str());
        for (int i = 0; i < 5; ++i) cap.value[i] = Number(v, 2 + i);
        if (cap.name[0]) audio[naudio++] = cap;
      });
    }
  }
  if (!HandOver(video.get(), nvideo, videoCount, videoList) ||
      !HandOver(audio.get(), naudio, audioCount, audioList))
    QV_LOG("[%s:%d]new failed.\n");
  return 0;
}

QV_API long IP_NET_DVR_GET_SYSTEMTIME(long userID) {
  return IP_NET_DVR_SystemControl(userID, kGetTime, 0, "");
}

QV_API long IP_NET_DVR_XMLGET_SYSTEMTIME(const char* reply, int* time) {
  if (time == nullptr) return QV_E_INVALID_ARG;
  static const char* const kNames[] = {"TimeZone", "Year", "Month", "Day",
                                       "Hour", "Minute", "Second"};
  memset(time, 0, sizeof(int) * 7);
  TiXmlDocument doc;
  if (reply == nullptr || !ParseXml(doc, reply)) return QV_E_BAD_REPLY;
  const TiXmlElement* param = ResponseParam(doc);
  if (param == nullptr) return QV_E_BAD_REPLY;
  for (int i = 0; i < 7; ++i) {
    const char* value = param->Attribute(kNames[i]);
    time[i] = value ? atoi(value) : 0;
  }
  return 0;
}

QV_API long IP_NET_DVR_SET_SYSTEMTIME(long userID, const int* time) {
  if (time == nullptr) return QV_E_INVALID_ARG;
  char when[64];
  snprintf(when, sizeof(when), "%04d%02d%02d %02d:%02d:%02d", time[1], time[2], time[3],
           time[4], time[5], time[6]);
  char body[160];
  snprintf(body, sizeof(body), "<REQUEST_PARAM Time=\"%s\" TimeZone=\"%d\"/>", when, time[0]);
  return IP_NET_DVR_SystemControl(userID, kSetTime, 0, body);
}

QV_API long IP_NET_DVR_GetSystemVersionByXml(char* output, const char* reply) {
  if (output == nullptr) return QV_E_INVALID_ARG;
  memset(output, 0, 2 * kVersionText);
  TiXmlDocument doc;
  if (reply == nullptr || !ParseXml(doc, reply)) return QV_E_BAD_REPLY;
  const TiXmlElement* param = ResponseParam(doc);
  if (param == nullptr) return QV_E_BAD_REPLY;
  CopyText(output, kVersionText, param->Attribute("KernelVersion"));
  CopyText(output + kVersionText, kVersionText, param->Attribute("FileSystemVersion"));
  return 0;
}

QV_API const char* IP_NET_DVR_GET_EVENTNAME(unsigned int code) {
  const EventName* end = kEventNames + sizeof(kEventNames) / sizeof(kEventNames[0]);
  const EventName* found =
      std::lower_bound(kEventNames, end, code, [](const EventName& e, unsigned int c) {
        return static_cast<unsigned int>(e.code) < c;
      });
  return found != end && static_cast<unsigned int>(found->code) == code ? found->name : "";
}
