// The TimeConfig element: time mode and zone, NTP server and summer time.
#include "config/config_section.h"
#include "config/system_sections.h"

namespace qvconfig {
namespace {

#define F(Rec, m) XML_FIELD(Rec, m, #m)

const XmlField kTimeFields[] = {F(TimeConfig, TimeMode), F(TimeConfig, TimeZone)};
const XmlField kNtpFields[] = {
    F(NTPConfig, ServerIP), F(NTPConfig, ServerPort), F(NTPConfig, RefreshInterval),
};
const XmlField kSummerFields[] = {
    F(SummerTimeConfig, enable),
    XML_FIELD(SummerTimeConfig, Auto, "auto"),
    F(SummerTimeConfig, offset),
};
const XmlField kRuleFields[] = {
    F(SummerTimeRule, month), F(SummerTimeRule, week), F(SummerTimeRule, weekday),
    F(SummerTimeRule, hour),
};

void ReadRule(const IXML_Node* element, SummerTimeRule* rule) {
  ReadPlainElement(element, kRuleFields, FieldCount(kRuleFields), rule, sizeof(*rule));
}
void ReadStart(const IXML_Node* element, SummerTimeConfig* cfg) { ReadRule(element, &cfg->start); }
void ReadEnd(const IXML_Node* element, SummerTimeConfig* cfg) { ReadRule(element, &cfg->end); }
const ChildReader<SummerTimeConfig> kSummerChildren[] = {
    {"start", ReadStart},
    {"end", ReadEnd},
};

void ReadNtp(const IXML_Node* element, TimeConfig* cfg) {
  ReadPlainElement(element, kNtpFields, FieldCount(kNtpFields), &cfg->NTP, sizeof(cfg->NTP));
}
void ReadSummer(const IXML_Node* element, TimeConfig* cfg) {
  ReadPlainElement(element, kSummerFields, FieldCount(kSummerFields), &cfg->Summer,
                   sizeof(cfg->Summer));
  ReadChildren(element, kSummerChildren, &cfg->Summer);
}
const ChildReader<TimeConfig> kTimeChildren[] = {
    {"NTPConfig", ReadNtp},
    {"SummerTime", ReadSummer},
};

}  // namespace

int ReadTimeConfig(const IXML_Node* element, TimeConfig* cfg) {
  ReadPlainElement(element, kTimeFields, FieldCount(kTimeFields), cfg, sizeof(*cfg));
  ReadChildren(element, kTimeChildren, cfg);
  return 0;
}

void WriteTimeConfig(XmlWriter& out, const TimeConfig* cfg) {
  WriteLineElement(out, "TimeConfig", kTimeFields, FieldCount(kTimeFields), cfg, ">\r\n");
  WriteLineElement(out, "NTPConfig", kNtpFields, FieldCount(kNtpFields), &cfg->NTP, "/>\r\n");
  WriteLineElement(out, "SummerTime", kSummerFields, FieldCount(kSummerFields), &cfg->Summer,
                   ">\r\n");
  WriteLineElement(out, "start", kRuleFields, FieldCount(kRuleFields), &cfg->Summer.start,
                   "/>\r\n");
  WriteLineElement(out, "end", kRuleFields, FieldCount(kRuleFields), &cfg->Summer.end,
                   "/>\r\n");
  out.Append("</SummerTime>\r\n</TimeConfig>\r\n");
}

}  // namespace qvconfig

int System_getTimeCfgByXml(TimeConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "TimeConfig", qvconfig::ReadTimeConfig);
}

char* XMLGET_TimeConfig(TimeConfig* cfg) {
  return qvconfig::WriteRecordText<TimeConfig>(cfg, qvconfig::WriteTimeConfig);
}
