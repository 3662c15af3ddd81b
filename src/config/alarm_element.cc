#include "config/alarm_element.h"

#include <cstdio>
#include <cstring>

#include "config/config_print.h"
#include "config/config_xml.h"
#include "config/time_span.h"
#include "config/xml_writer.h"

namespace qvconfig {
namespace {

const char* const kPtzActionTypes[] = {"PositionLoop", "PresetPosition", "PositionWalk"};

const XmlField kOutputActionFields[] = {
    XML_FIELD(OutputChannelAction, Enable, "Enable"),
    XML_FIELD(OutputChannelAction, PortIndex, "PortIndex"),
};
const XmlField kPtzActionFields[] = {
    XML_FIELD(PTZAction, Enable, "Enable"),
    XML_FIELD(PTZAction, ActionType, "ActionType"),
};
const XmlField kAudioPlayFields[] = {
    XML_FIELD(AudioPlayAction, Enable, "Enable"),
    XML_FIELD(AudioPlayAction, EnableNight, "EnableNight"),
    XML_FIELD(AudioPlayAction, Times, "Times"),
    XML_FIELD(AudioPlayAction, Intervel, "Intervel"),
    XML_FIELD(AudioPlayAction, FileName, "FileName"),
};

template <typename T>
T* At(void* record, int offset) {
  return reinterpret_cast<T*>(static_cast<char*>(record) + offset);
}
template <typename T>
const T* At(const void* record, int offset) {
  return reinterpret_cast<const T*>(static_cast<const char*>(record) + offset);
}

int ReadOutputAction(const IXML_Node* element, OutputChannelAction* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadXmlFields(element, kOutputActionFields, FieldCount(kOutputActionFields), cfg);
  return 0;
}

void ReadIOOutput(const IXML_Node* element, IOOutputAction* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->Count = ReadListChildren(element, "OutputChannelAction", cfg->Channel,
                                QV_MAX_OUTPUT_ACTIONS, ReadOutputAction);
}

void ReadPtzAction(const IXML_Node* element, PTZAction* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadXmlFields(element, kPtzActionFields, FieldCount(kPtzActionFields), cfg);
  for (const char* known : kPtzActionTypes)
    if (strcmp(cfg->ActionType, known) == 0) return;
  CFG_PRINT("[%s:%u]unknown pzt action type %s\n\n", cfg->ActionType);
}

void ReadAudioPlay(const IXML_Node* element, AudioPlayAction* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadXmlFields(element, kAudioPlayFields, FieldCount(kAudioPlayFields), cfg);
}

void ReadAction(const AlarmElementSpec& spec, const IXML_Node* element, void* record) {
  ReadXmlFields(element, spec.action_fields, spec.action_field_count, record);
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    const char* name = ElementName(c);
    if (spec.io_output != kNone && strcmp(name, "IOOutputAction") == 0)
      ReadIOOutput(c, At<IOOutputAction>(record, spec.io_output));
    else if (spec.ptz != kNone && strcmp(name, "PTZAction") == 0)
      ReadPtzAction(c, At<PTZAction>(record, spec.ptz));
    else if (spec.audio_play != kNone && strcmp(name, "AudioPlayAction") == 0)
      ReadAudioPlay(c, At<AudioPlayAction>(record, spec.audio_play));
  }
}

// The index (0-based) of a numbered child's name, or -1.
int NumberedIndex(const NumberedChildren& n, const char* name) {
  char expected[32];
  for (int i = 0; i < n.count; ++i) {
    snprintf(expected, sizeof(expected), n.format, i + 1);
    if (strcmp(expected, name) == 0) return i;
  }
  return -1;
}

void WriteAction(const AlarmElementSpec& spec, XmlWriter& out, const void* record) {
  WriteInlineStart(out, "AlarmAction", spec.action_fields, spec.action_field_count,
                   record, ">\r\n");
  if (spec.io_output != kNone) {
    const IOOutputAction* io = At<IOOutputAction>(record, spec.io_output);
    out.Append("<IOOutputAction>\r\n");
    for (int i = 0; i < ListCount(io->Count, QV_MAX_OUTPUT_ACTIONS); ++i)
      WriteInlineStart(out, "OutputChannelAction", kOutputActionFields,
                       FieldCount(kOutputActionFields), &io->Channel[i], "/>\r\n");
    out.Append("</IOOutputAction>\r\n");
  }
  if (spec.ptz != kNone)
    WriteInlineStart(out, "PTZAction", kPtzActionFields, FieldCount(kPtzActionFields),
                     At<PTZAction>(record, spec.ptz), "/>\r\n");
  if (spec.audio_play != kNone)
    WriteInlineStart(out, "AudioPlayAction", kAudioPlayFields,
                     FieldCount(kAudioPlayFields),
                     At<AudioPlayAction>(record, spec.audio_play), "/>\r\n");
  out.Append("</AlarmAction>\r\n");
}

}  // namespace

void ReadAlarmElement(const AlarmElementSpec& spec, const IXML_Node* element,
                      void* record, size_t size) {
  memset(record, 0, size);
  if (spec.schedule != kNone) SetAllTimeSpan(At<TimeSpanCfg>(record, spec.schedule));
  ReadXmlFields(element, spec.fields, spec.field_count, record);
  ReadTimeAttrs(element, spec.times, spec.time_count, record);
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    const char* name = ElementName(c);
    if (spec.schedule != kNone && strcmp(name, "EnableTimeList") == 0) {
      IXML_Node* span = FirstChildNamed(c, "TimeSpanCfg");
      if (span) ReadTimeSpanCfg(span, At<TimeSpanCfg>(record, spec.schedule));
    } else if (spec.action && strcmp(name, "AlarmAction") == 0) {
      ReadAction(spec, c, record);
    } else if (spec.numbered) {
      const NumberedChildren& n = *spec.numbered;
      int i = NumberedIndex(n, name);
      if (i < 0) continue;
      void* entry = At<char>(record, n.offset + i * static_cast<int>(n.size));
      memset(entry, 0, n.size);
      ReadXmlFields(c, n.fields, n.field_count, entry);
    }
  }
}

void WriteAlarmElement(const AlarmElementSpec& spec, XmlWriter& out,
                       const void* record) {
  bool empty = !spec.numbered && spec.schedule == kNone && !spec.action;
  size_t attrs = spec.field_count + spec.time_count;
  if (attrs == 0) {
    out.Append("<%s%s", spec.name, empty ? "/>\r\n" : ">\r\n");
  } else {
    out.Append("<%s ", spec.name);
    WriteXmlFields(out, spec.fields, spec.field_count, record, " ");
    WriteTimeAttrs(out, spec.times, spec.time_count, record, " ");
    out.Append("%s", empty ? "/>\r\n" : ">\r\n");
  }
  if (empty) return;
  if (spec.numbered) {
    const NumberedChildren& n = *spec.numbered;
    char name[32];
    for (int i = 0; i < n.count; ++i) {
      snprintf(name, sizeof(name), n.format, i + 1);
      WriteInlineStart(out, name, n.fields, n.field_count,
                       At<char>(record, n.offset + i * static_cast<int>(n.size)), "/>\r\n");
    }
  }
  if (spec.schedule != kNone) {
    out.Append("<EnableTimeList>\r\n");
    WriteTimeSpanCfg(out, At<TimeSpanCfg>(record, spec.schedule));
    out.Append("\r\n</EnableTimeList>\r\n");
  }
  if (spec.action) WriteAction(spec, out, record);
  out.Append("</%s>\r\n", spec.name);
}

}  // namespace qvconfig
