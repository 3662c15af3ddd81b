#include "config/time_span.h"

#include <cstring>

#include "config/config_print.h"
#include "config/config_section.h"

using qvconfig::AtoiValue;
using qvconfig::FieldCount;
using qvconfig::FindAttribute;
using qvconfig::FirstChildElement;
using qvconfig::IsElement;
using qvconfig::NextSiblingElement;
using qvconfig::XmlWriter;

namespace {

const unsigned kFullDay = 0xFFFFFF;
const int kHours = 24;
const int kEveryDay = 7;

unsigned* Masks(TimeSpanCfg* cfg) { return &cfg->day0; }
const unsigned* Masks(const TimeSpanCfg* cfg) { return &cfg->day0; }

const qvconfig::XmlField kTimeSpanFields[] = {
    XML_FIELD(TimeSpanCfg, day0, "day0"), XML_FIELD(TimeSpanCfg, day1, "day1"),
    XML_FIELD(TimeSpanCfg, day2, "day2"), XML_FIELD(TimeSpanCfg, day3, "day3"),
    XML_FIELD(TimeSpanCfg, day4, "day4"), XML_FIELD(TimeSpanCfg, day5, "day5"),
    XML_FIELD(TimeSpanCfg, day6, "day6"),
};

int Clamp(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

// "hh:mm:ss" (blank-padded numbers allowed); false when missing or not
// eight characters long.
bool ReadTime(const char* value, int* h, int* m, int* s) {
  char text[16];
  if (!value) {
    CFG_PRINT("[%s:%u]time string is null\n");
    return false;
  }
  StrCpy(text, sizeof(text), value);
  if (strlen(text) != 8) {
    CFG_PRINT("[%s:%u]time string length is invalid\n");
    return false;
  }
  return sscanf(text, "%2d:%2d:%2d", h, m, s) == 3;
}

void AddSpan(WorkDay* day, int sh, int sm, int ss, int eh, int em, int es) {
  if (day->SpanCount >= QV_MAX_WORKDAY_SPANS) return;
  WorkTimeSpan& span = day->Span[day->SpanCount++];
  span.StartHour = sh;
  span.StartMinute = sm;
  span.StartSecond = ss;
  span.EndHour = eh;
  span.EndMinute = em;
  span.EndSecond = es;
}

void ReadWorkDay(const IXML_Node* element, WorkDay* day) {
  memset(day, 0, sizeof(*day));
  day->Day = static_cast<int>(AtoiValue(FindAttribute(element, "Day")));
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    if (!IsElement(c, "TimeSpan") || day->SpanCount >= QV_MAX_WORKDAY_SPANS)
      continue;
    int sh, sm, ss, eh, em, es;
    if (ReadTime(FindAttribute(c, "StartTime"), &sh, &sm, &ss) &&
        ReadTime(FindAttribute(c, "EndTime"), &eh, &em, &es))
      AddSpan(day, sh, sm, ss, eh, em, es);
  }
}

time_t AtTime(const struct tm* now, int h, int m, int s) {
  struct tm t = *now;
  t.tm_hour = h;
  t.tm_min = m;
  t.tm_sec = s;
  t.tm_isdst = -1;
  return mktime(&t);
}

}  // namespace

void SetAllTimeSpan(TimeSpanCfg* cfg) {
  if (!cfg) return;
  for (int d = 0; d < 7; ++d) Masks(cfg)[d] = kFullDay;
}

void CheckTimeSpanValid(TimeSpanCfg* cfg) {
  if (!cfg) return;
  for (int d = 0; d < 7; ++d)
    if (Masks(cfg)[d] != 0) return;
  SetAllTimeSpan(cfg);
}

int qvconfig::ReadTimeSpanCfg(const IXML_Node* element, TimeSpanCfg* cfg) {
  ReadPlainElement(element, kTimeSpanFields, FieldCount(kTimeSpanFields), cfg,
                   sizeof(*cfg));
  CheckTimeSpanValid(cfg);
  return 0;
}

void qvconfig::WriteTimeSpanCfg(XmlWriter& out, const TimeSpanCfg* cfg) {
  out.Append("<TimeSpanCfg ");
  WriteXmlFields(out, kTimeSpanFields, FieldCount(kTimeSpanFields), cfg, " ");
  out.Append("/>");
}

int getTimeSpanByXml(TimeSpanCfg* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "TimeSpanCfg", qvconfig::ReadTimeSpanCfg);
}

int qvconfig::ReadWorkDayList(const IXML_Node* element, WorkDayList* list) {
  memset(list, 0, sizeof(*list));
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    if (!IsElement(c, "Workday") || list->Count >= QV_MAX_WORKDAYS) continue;
    ReadWorkDay(c, &list->Entry[list->Count++]);
  }
  if (list->Count == 0) {
    list->Count = 1;
    list->Entry[0].Day = kEveryDay;
    AddSpan(&list->Entry[0], 0, 0, 0, 23, 59, 59);
  }
  return 0;
}

void qvconfig::WriteWorkDayList(XmlWriter& out, const WorkDayList* list) {
  out.Append("<TimeSpanCfg>\r\n");
  int count = Clamp(list->Count, 0, QV_MAX_WORKDAYS);
  for (int i = 0; i < count; ++i) {
    const WorkDay& day = list->Entry[i];
    out.Append("<Workday Day=\"%d\">\r\n", day.Day);
    int spans = Clamp(day.SpanCount, 0, QV_MAX_WORKDAY_SPANS);
    for (int j = 0; j < spans; ++j) {
      const WorkTimeSpan& s = day.Span[j];
      out.Append(
          "<TimeSpan StartTime=\"%2d:%2d:%2d\" EndTime=\"%2d:%2d:%2d\"/>\r\n",
          Clamp(s.StartHour, 0, 99), Clamp(s.StartMinute, 0, 99),
          Clamp(s.StartSecond, 0, 99), Clamp(s.EndHour, 0, 99),
          Clamp(s.EndMinute, 0, 99), Clamp(s.EndSecond, 0, 99));
    }
    out.Append("</Workday>\r\n");
  }
  out.Append("</TimeSpanCfg>\r\n");
}

int getWorkDayListByXml(WorkDayList* list, const char* xml) {
  return READ_RECORD_BY_XML(list, xml, "TimeSpanCfg", qvconfig::ReadWorkDayList);
}

void TransTimeSpan2New(const WorkDayList* list, TimeSpanCfg* cfg) {
  if (!list || !cfg) return;
  memset(cfg, 0, sizeof(*cfg));
  int count = Clamp(list->Count, 0, QV_MAX_WORKDAYS);
  for (int i = 0; i < count; ++i) {
    const WorkDay& day = list->Entry[i];
    if (day.Day < 0 || day.Day > kEveryDay) continue;
    int spans = Clamp(day.SpanCount, 0, QV_MAX_WORKDAY_SPANS);
    for (int j = 0; j < spans; ++j) {
      const WorkTimeSpan& s = day.Span[j];
      if (s.StartHour < 0 || s.StartHour >= 25 || s.EndHour < 0 ||
          s.EndHour >= 25)
        continue;
      int first = s.StartHour + (s.StartMinute > 59 ? 1 : 0);
      int end = s.EndHour + (s.EndMinute > 0 ? 1 : 0);
      unsigned bits = 0;
      for (int h = first; h < end && h < kHours; ++h) bits |= 1u << h;
      for (int d = 0; d < 7; ++d)
        if (day.Day == kEveryDay || day.Day == d) Masks(cfg)[d] |= bits;
    }
  }
  CheckTimeSpanValid(cfg);
}

void TransTimeSpan2Old(const TimeSpanCfg* cfg, WorkDayList* list) {
  if (!cfg || !list) return;
  memset(list, 0, sizeof(*list));
  const unsigned* masks = Masks(cfg);
  int first_partial = -1;
  for (int d = 0; d < 7 && first_partial < 0; ++d)
    if ((masks[d] & kFullDay) != kFullDay) first_partial = d;
  if (first_partial < 0) {
    list->Count = 1;
    list->Entry[0].Day = kEveryDay;
    AddSpan(&list->Entry[0], 0, 0, 0, 23, 59, 0);
    return;
  }
  CFG_PRINT("[%s:%u]workday %d: %#x, bAllSet=0\n", first_partial,
            masks[first_partial]);
  for (int d = 0; d < 7; ++d) {
    WorkDay& day = list->Entry[list->Count];
    memset(&day, 0, sizeof(day));
    day.Day = d;
    unsigned mask = masks[d] & kFullDay;
    for (int h = 0; h < kHours;) {
      if (!(mask & (1u << h))) {
        ++h;
        continue;
      }
      int run_end = h;
      while (run_end + 1 < kHours && (mask & (1u << (run_end + 1)))) ++run_end;
      AddSpan(&day, h, 0, 0, run_end, 59, 0);
      h = run_end + 1;
    }
    if (day.SpanCount > 0) ++list->Count;
  }
}

int IsInTimeScope(const WorkDayList* list, const struct tm* now) {
  if (!list || !now) return 0;
  struct tm today = *now;
  today.tm_isdst = -1;
  time_t t = mktime(&today);
  int last = list->Count < QV_MAX_WORKDAYS - 1 ? list->Count : QV_MAX_WORKDAYS - 1;
  for (int i = 0; i <= last; ++i) {
    const WorkDay& day = list->Entry[i];
    if (day.Day != kEveryDay && day.Day != now->tm_wday) continue;
    int spans = Clamp(day.SpanCount, 0, QV_MAX_WORKDAY_SPANS);
    for (int j = 0; j < spans; ++j) {
      const WorkTimeSpan& s = day.Span[j];
      time_t start = AtTime(now, s.StartHour, s.StartMinute, s.StartSecond);
      time_t end = AtTime(now, s.EndHour, s.EndMinute, s.EndSecond);
      if (t > start && t < end) return 1;
    }
  }
  return 0;
}
