// The RecordConfig section: recording and snapshot rules.
#include "config/config_section.h"
#include "config/config_store.h"
#include "config/element_parts.h"
#include "config/service_sections.h"
#include "config/time_span.h"

namespace qvconfig {
namespace {

#define F(Rec, m) XML_FIELD(Rec, m, #m)

const XmlField kCommonFields[] = {
    F(RecordCommon, LocalEnable), F(RecordCommon, StorageSequence),
    F(RecordCommon, RemoteEnable), F(RecordCommon, MountParam),
    F(RecordCommon, StoragePolicy), F(RecordCommon, RecordFileSize),
    F(RecordCommon, recordFileKeeyDays), F(RecordCommon, timelapseEnable),
    F(RecordCommon, timelapseSec), F(RecordCommon, timelapseFps),
    F(RecordCommon, timelapseFileSize),
};
const XmlField kScheduleFields[] = {
    F(ScheduleRecord, Stream), F(ScheduleRecord, FileFormat), F(ScheduleRecord, MediaType),
    F(ScheduleRecord, LocalStore), F(ScheduleRecord, RemoteStore),
    F(ScheduleRecord, JpegInterval), F(ScheduleRecord, FtpUpload),
    F(ScheduleRecord, EmailUpload),
};
const XmlField kAlarmRecordFields[] = {
    F(AlarmRecordConfig, Stream), F(AlarmRecordConfig, FileFormat),
    F(AlarmRecordConfig, MediaType), F(AlarmRecordConfig, PreRecordTime),
    F(AlarmRecordConfig, RecordTime), F(AlarmRecordConfig, LocalStore),
    F(AlarmRecordConfig, RemoteStore), F(AlarmRecordConfig, FtpUpload),
    F(AlarmRecordConfig, EmailUpload), F(AlarmRecordConfig, alarmbits),
};
const XmlField kCaptureFields[] = {
    F(AlarmCaptureConfig, PreTakeTime), F(AlarmCaptureConfig, sendoutInterval),
    F(AlarmCaptureConfig, TotalTakeTime), F(AlarmCaptureConfig, LocalStore),
    F(AlarmCaptureConfig, RemoteStore), F(AlarmCaptureConfig, FtpUpload),
    F(AlarmCaptureConfig, EmailUpload), F(AlarmCaptureConfig, StopNoAlarm),
    F(AlarmCaptureConfig, Stream), F(AlarmCaptureConfig, alarmbits),
};

void ReadCommon(const IXML_Node* e, RecordConfig* cfg) {
  ReadPlainElement(e, kCommonFields, FieldCount(kCommonFields), &cfg->Common,
                   sizeof(cfg->Common));
}
void ReadSchedule(const IXML_Node* e, RecordConfig* cfg) {
  ScheduleRecord* s = &cfg->Schedule;
  ReadPlainElement(e, kScheduleFields, FieldCount(kScheduleFields), s, sizeof(*s));
  SetAllTimeSpan(&s->TimeSpan);
  IXML_Node* list = FirstChildNamed(e, "EnableTimeList");
  IXML_Node* span = list ? FirstChildNamed(list, "TimeSpanCfg") : nullptr;
  if (span) ReadTimeSpanCfg(span, &s->TimeSpan);
}
template <AlarmRecordConfig RecordConfig::*member>
void ReadAlarmRecord(const IXML_Node* e, RecordConfig* cfg) {
  ReadPlainElement(e, kAlarmRecordFields, FieldCount(kAlarmRecordFields), &(cfg->*member),
                   sizeof(AlarmRecordConfig));
}
template <AlarmCaptureConfig RecordConfig::*member>
void ReadCapture(const IXML_Node* e, RecordConfig* cfg) {
  ReadPlainElement(e, kCaptureFields, FieldCount(kCaptureFields), &(cfg->*member),
                   sizeof(AlarmCaptureConfig));
}

const ChildReader<RecordConfig> kRecordChildren[] = {
    {"Common", ReadCommon},
    {"ScheduleRecord", ReadSchedule},
    {"MotionDetectRecord", ReadAlarmRecord<&RecordConfig::MotionDetectRecord>},
    {"MotionDetectCapture", ReadCapture<&RecordConfig::MotionDetectCapture>},
    {"InputAlarmRecord", ReadAlarmRecord<&RecordConfig::InputAlarmRecord>},
    {"InputAlarmCapture", ReadCapture<&RecordConfig::InputAlarmCapture>},
};

}  // namespace

int ReadRecordConfig(const IXML_Node* element, RecordConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  SetAllTimeSpan(&cfg->Schedule.TimeSpan);
  ReadChildren(element, kRecordChildren, cfg);
  return 0;
}

void WriteRecordConfig(XmlWriter& out, const RecordConfig* cfg) {
  out.Append("<RecordConfig>\r\n");
  WriteLineElement(out, "Common", kCommonFields, FieldCount(kCommonFields), &cfg->Common,
                   "/>\r\n");
  WriteLineElement(out, "ScheduleRecord", kScheduleFields, FieldCount(kScheduleFields),
                   &cfg->Schedule, ">\r\n");
  out.Append("<EnableTimeList>\r\n");
  WriteTimeSpanCfg(out, &cfg->Schedule.TimeSpan);
  out.Append("\r\n</EnableTimeList>\r\n</ScheduleRecord>\r\n");
  WriteLineElement(out, "MotionDetectRecord", kAlarmRecordFields,
                   FieldCount(kAlarmRecordFields), &cfg->MotionDetectRecord, "/>\r\n");
  WriteLineElement(out, "MotionDetectCapture", kCaptureFields, FieldCount(kCaptureFields),
                   &cfg->MotionDetectCapture, "/>\r\n");
  WriteLineElement(out, "InputAlarmRecord", kAlarmRecordFields,
                   FieldCount(kAlarmRecordFields), &cfg->InputAlarmRecord, "/>\r\n");
  WriteLineElement(out, "InputAlarmCapture", kCaptureFields, FieldCount(kCaptureFields),
                   &cfg->InputAlarmCapture, "/>\r\n");
  out.Append("</RecordConfig>\r\n");
}

}  // namespace qvconfig

int GetRecordCfgByXml(RecordConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "RecordConfig", qvconfig::ReadRecordConfig);
}

char* XMLGET_RecordConfig(RecordConfig* cfg) {
  return qvconfig::WriteRecordText<RecordConfig>(cfg, qvconfig::WriteRecordConfig);
}

int GetRecordConfig(RecordConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("RecordConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadRecordConfig(node, cfg);
  });
}

int SetRecordConfig(RecordConfig* cfg) {
  return qvconfig::WriteConfigSectionText("RecordConfig", XMLGET_RecordConfig(cfg));
}
