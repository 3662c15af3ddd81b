#include "config/time_zone.h"

#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

#include "config/config_file.h"
#include "config/config_xml.h"

using qvconfig::ConfigXml;
using qvconfig::ElementText;
using qvconfig::FindAttribute;
using qvconfig::FirstChildElement;
using qvconfig::IsElement;
using qvconfig::NextSiblingElement;
using qvconfig::ReadConfigFile;

namespace {

const char kDefaultPath[] = "/opt/ch/qmr_tz.xml";
const size_t kPathSize = 256;

std::mutex g_path_lock;
char g_path[kPathSize] = "/opt/ch/qmr_tz.xml";

std::string CurrentPath() {
  std::lock_guard<std::mutex> hold(g_path_lock);
  return g_path;
}

void ParseOffset(DstConfig* record) {
  const char* paren = strchr(record->name, '(');
  if (!paren) return;
  std::string head(record->name, static_cast<size_t>(paren - record->name));
  char sign = 0;
  int hours = 0, minutes = 0;
  if (sscanf(head.c_str(), "GMT%c%02d:%02d", &sign, &hours, &minutes) != 3) {
    minutes = 0;
    if (sscanf(head.c_str(), "GMT%c%02d", &sign, &hours) != 2) return;
  }
  if (sign == '-') {
    hours = -hours;
    minutes = -minutes;
  }
  record->offset = (hours + 12) * 60 + minutes;
}

// "M%d.%d.%d/%d", or "M%d.%d.%d" with hour 0.
bool ParseRule(const char* text, unsigned char* month, unsigned char* week,
               unsigned char* weekday, unsigned char* hour) {
  int m = 0, w = 0, d = 0, h = 0;
  if (sscanf(text, "M%d.%d.%d/%d", &m, &w, &d, &h) != 4) {
    h = 0;
    if (sscanf(text, "M%d.%d.%d", &m, &w, &d) != 3) return false;
  }
  *month = static_cast<unsigned char>(m);
  *week = static_cast<unsigned char>(w);
  *weekday = static_cast<unsigned char>(d);
  *hour = static_cast<unsigned char>(h);
  return true;
}

void ParseSummerTime(DstConfig* record) {
  std::string rule(record->rule, strnlen(record->rule, sizeof(record->rule)));
  size_t start = rule.find(",M");
  if (start == std::string::npos) return;
  size_t end = rule.find(",M", start + 1);
  if (end == std::string::npos) return;
  std::string start_rule = rule.substr(start + 1, end - start - 1);
  std::string end_rule = rule.substr(end + 1);
  ParseRule(start_rule.c_str(), &record->start_month, &record->start_week,
            &record->start_weekday, &record->start_hour);
  ParseRule(end_rule.c_str(), &record->end_month, &record->end_week,
            &record->end_weekday, &record->end_hour);
}

}  // namespace

const char* TimeZoneTablePath() { return g_path; }

int SetTimeZoneTablePath(const char* path) {
  if (!path) path = kDefaultPath;
  size_t n = strlen(path);
  if (n >= kPathSize) return -1;
  std::lock_guard<std::mutex> hold(g_path_lock);
  memcpy(g_path, path, n + 1);
  return 0;
}

void qvconfig::ParseTimeZoneRecord(DstConfig* record) {
  if (!record) return;
  record->name[sizeof(record->name) - 1] = 0;
  record->rule[sizeof(record->rule) - 1] = 0;
  ParseOffset(record);
  ParseSummerTime(record);
}

DstConfig* ReadSummerTimeListFromXML() {
  std::string text;
  if (!ReadConfigFile(CurrentPath().c_str(), &text)) {
    printf("open file failed.\n");
    return nullptr;
  }
  ConfigXml doc;
  if (!doc.Parse(text.data(), text.size())) {
    printf("parse file failed.\n");
    return nullptr;
  }
  const IXML_Node* tz = doc.First("tz");
  if (!tz) {
    printf("xmlDocument_getElementsByTagName(tz) return NULL!\n");
    return nullptr;
  }
  DstConfig* head = nullptr;
  DstConfig** tail = &head;
  size_t count = 0;
  for (IXML_Node* item = FirstChildElement(tz); item && count < qvconfig::kMaxTimeZones;
       item = NextSiblingElement(item)) {
    if (!IsElement(item, "item")) continue;
    DstConfig* record = new (std::nothrow) DstConfig();
    if (!record) break;
    record->offset = -1;
    StrCpy(record->rule, sizeof(record->rule), FindAttribute(item, "value"));
    ElementText(item, record->name, sizeof(record->name));
    if (!record->name[0] && !record->rule[0]) {
      delete record;
      continue;
    }
    qvconfig::ParseTimeZoneRecord(record);
    *tail = record;
    tail = &record->next;
    ++count;
  }
  return head;
}

void FreeSummerTimeList(DstConfig* head) {
  while (head) {
    DstConfig* next = head->next;
    delete head;
    head = next;
  }
}
