// Exported queries of which minutes and days hold recordings on a camera,
// and the readers of their replies.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "link/xml_util.h"
#include "quorvel/quorvel.h"

namespace {

const unsigned long kRecordSearch = 1021;
const unsigned int kMinutesPerDay = 1440;

// The first top-level RESPONSE_PARAM of a reply (with want_mode, the first
// that has a SearchMode); null when none.
const TiXmlElement* ResponseParam(const TiXmlDocument& doc, bool want_mode) {
  for (const TiXmlElement* e = doc.RootElement(); e != nullptr; e = e->NextSiblingElement()) {
    if (strcmp(e->Value(), "RESPONSE_PARAM") != 0) continue;
    if (!want_mode || e->Attribute("SearchMode") != nullptr) return e;
  }
  return nullptr;
}

// The reply's RESPONSE_PARAM with search mode `mode`; null (with the result
// code in *error) otherwise.
const TiXmlElement* ReplyOfMode(TiXmlDocument& doc, const char* reply, int mode, long* error) {
  *error = QV_E_BAD_REPLY;
  if (!ParseXml(doc, reply)) return nullptr;
  const TiXmlElement* param = ResponseParam(doc, false);
  if (param == nullptr) return nullptr;
  const char* text = param->Attribute("SearchMode");
  int found = text != nullptr ? atoi(text) : 0;
  if (found != mode) {
    QV_LOG("[%s:%d]Search mode not correct:%d.\n", found);
    return nullptr;
  }
  *error = 0;
  return param;
}

}  // namespace

QV_API long IP_NET_DVR_GetReplay_OneDay_Distribute(long userID, int year, int month, int day) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  char body[400];
  // No blank before MediaType: cameras read the request this way.
  snprintf(body, sizeof(body),
           "<REQUEST_PARAM SearchMode=\"1\" RecordMode=\"ALL\" StartTime=\"%04d%02d%02d "
           "00:00:00\" EndTime=\"%04d%02d%02d 23:59:59\"MediaType=\"VIDEO\" MinSize=\"-1\" "
           "MaxSize=\"-1\" Page=\"0\"/>",
           year, month, day, year, month, day);
  return ObjectPtzList.SystemControl(userID, kRecordSearch, 0, body);
}

QV_API long IP_NET_DVR_GetReplay_Dates_Distribute(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.SystemControl(
      userID, kRecordSearch, 0,
      "<REQUEST_PARAM SearchMode=\"10\" RecordMode=\"ALL\" MediaType=\"VIDEO\" Page=\"0\"/>");
}

QV_API long IP_NET_DVR_GetReplay_SearchMode_ByXml(const char* reply) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  TiXmlDocument doc;
  if (!ParseXml(doc, reply)) return QV_E_BAD_REPLY;
  const TiXmlElement* param = ResponseParam(doc, true);
  if (param == nullptr) return QV_E_BAD_REPLY;
  int mode = atoi(param->Attribute("SearchMode"));
  QV_LOG("[%s:%d]Search mode %d.\n", mode);
  return mode;
}

QV_API long IP_NET_DVR_GetReplay_OneDay_DistributeByXml(const char* reply, char* buffer,
                                                        unsigned int length) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  if (buffer == nullptr || length < kMinutesPerDay) {
    QV_LOG("[%s:%d]buflen %d too small. should bigger than %d.\n", static_cast<int>(length),
           static_cast<int>(kMinutesPerDay));
    return QV_E_BUFFER_TOO_SMALL;
  }
  memset(buffer, 0, length);
  TiXmlDocument doc;
  long error = 0;
  const TiXmlElement* param = ReplyOfMode(doc, reply, 1, &error);
  if (param == nullptr) return error;
  const TiXmlElement* record = param->FirstChildElement("RECORD_DISTRIBUTE");
  if (record != nullptr) CopyText(buffer, length, record->Attribute("Distribute"));
  return 0;
}

QV_API long IP_NET_DVR_GetReplay_Dates_DistributeByXml(const char* reply, unsigned int* dates,
                                                       unsigned int count) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  if (dates == nullptr || count == 0) {
    QV_LOG("[%s:%d]input date array %#x is NULL, or buflen %u too small. should bigger than %d.\n",
           static_cast<unsigned>(reinterpret_cast<uintptr_t>(dates)), count, 0);
    return QV_E_BUFFER_TOO_SMALL;
  }
  memset(dates, 0, sizeof(*dates) * count);
  TiXmlDocument doc;
  long error = 0;
  const TiXmlElement* param = ReplyOfMode(doc, reply, 10, &error);
  if (param == nullptr) return error;
  const char* date_count = param->Attribute("DateCount");
  QV_LOG("[%s:%d]Get date count: %d\n", date_count != nullptr ? atoi(date_count) : 0);
  std::set<unsigned int> days;  // ordered, without repeats
  for (const TiXmlElement* d = param->FirstChildElement("DATE"); d != nullptr;
       d = d->NextSiblingElement("DATE")) {
    const char* utc = d->Attribute("UtcTime");
    if (utc != nullptr) days.insert(static_cast<unsigned int>(strtoul(utc, nullptr, 10)));
  }
  unsigned int n = 0;
  for (auto it = days.rbegin(); it != days.rend() && n < count; ++it) dates[n++] = *it;
  return 0;
}
