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

void ReadAction(const AlarmElementLayout& layout, const IXML_Node* element, void* record) {
  ReadXmlFields(element, layout.action_fields, layout.action_field_count, record);
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    const char* name = ElementName(c);
    if (layout.io_output != kNone && strcmp(name, "IOOutputAction") == 0)
      ReadIOOutput(c, At<IOOutputAction>(record, layout.io_output));
    else if (layout.ptz != kNone && strcmp(name, "PTZAction") == 0)
      ReadPtzAction(c, At<PTZAction>(record, layout.ptz));
    else if (layout.audio_play != kNone && strcmp(name, "AudioPlayAction") == 0)
      ReadAudioPlay(c, At<AudioPlayAction>(record, layout.audio_play));
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

void WriteAction(const AlarmElementLayout& layout, XmlWriter& out, const void* record) {
  WriteInlineStart(out, "AlarmAction", layout.action_fields, layout.action_field_count,
                   record, ">\r\n");
  if (layout.io_output != kNone) {
    const IOOutputAction* io = At<IOOutputAction>(record, layout.io_output);
    out.Append("<IOOutputAction>\r\n");
    for (int i = 0; i < ListCount(io->Count, QV_MAX_OUTPUT_ACTIONS); ++i)
      WriteInlineStart(out, "OutputChannelAction", kOutputActionFields,
                       FieldCount(kOutputActionFields), &io->Channel[i], "/>\r\n");
    out.Append("</IOOutputAction>\r\n");
  }
  if (layout.ptz != kNone)
    WriteInlineStart(out, "PTZAction", kPtzActionFields, FieldCount(kPtzActionFields),
                     At<PTZAction>(record, layout.ptz), "/>\r\n");
  if (layout.audio_play != kNone)
    WriteInlineStart(out, "AudioPlayAction", kAudioPlayFields,
                     FieldCount(kAudioPlayFields),
                     At<AudioPlayAction>(record, layout.audio_play), "/>\r\n");
  out.Append("</AlarmAction>\r\n");
}

}  // namespace

void ReadAlarmElement(const AlarmElementLayout& layout, const IXML_Node* element,
                      void* record, size_t size) {
  memset(record, 0, size);
  if (layout.schedule != kNone) SetAllTimeSpan(At<TimeSpanCfg>(record, layout.schedule));
  ReadXmlFields(element, layout.fields, layout.field_count, record);
  ReadTimeAttrs(element, layout.times, layout.time_count, record);
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    const char* name = ElementName(c);
    if (layout.schedule != kNone && strcmp(name, "EnableTimeList") == 0) {
      IXML_Node* span = FirstChildNamed(c, "TimeSpanCfg");
      if (span) ReadTimeSpanCfg(span, At<TimeSpanCfg>(record, layout.schedule));
    } else if (layout.action && strcmp(name, "AlarmAction") == 0) {
      ReadAction(layout, c, record);
    } else if (layout.numbered) {
      const NumberedChildren& n = *layout.numbered;
      int i = NumberedIndex(n, name);
      if (i < 0) continue;
      void* entry = At<char>(record, n.offset + i * static_cast<int>(n.size));
      memset(entry, 0, n.size);
      ReadXmlFields(c, n.fields, n.field_count, entry);
    }
  }
}

void WriteAlarmElement(const AlarmElementLayout& layout, XmlWriter& out,
                       const void* record) {
  bool empty = !layout.numbered && layout.schedule == kNone && !layout.action;
  size_t attrs = layout.field_count + layout.time_count;
  if (attrs == 0) {
    out.Append("<%s%s", layout.name, empty ? "/>\r\n" : ">\r\n");
  } else {
    out.Append("<%s ", layout.name);
    WriteXmlFields(out, layout.fields, layout.field_count, record, " ");
    WriteTimeAttrs(out, layout.times, layout.time_count, record, " ");
    out.Append("%s", empty ? "/>\r\n" : ">\r\n");
  }
  if (empty) return;
  if (layout.numbered) {
    const NumberedChildren& n = *layout.numbered;
    char name[32];
    for (int i = 0; i < n.count; ++i) {
      snprintf(name, sizeof(name), n.format, i + 1);
      WriteInlineStart(out, name, n.fields, n.field_count,
                       At<char>(record, n.offset + i * static_cast<int>(n.size)), "/>\r\n");
    }
  }
  if (layout.schedule != kNone) {
    out.Append("<EnableTimeList>\r\n");
    WriteTimeSpanCfg(out, At<TimeSpanCfg>(record, layout.schedule));
    out.Append("\r\n</EnableTimeList>\r\n");
  }
  if (layout.action) WriteAction(layout, out, record);
  out.Append("</%s>\r\n", layout.name);
}

}  // namespace qvconfig
