// The PTZConfig element: the head's serial line, auto focus and the list of
// preset-bound functions.
#include "config/config_section.h"
#include "config/element_parts.h"
#include "config/system_sections.h"

namespace qvconfig {
namespace {

#define F(Rec, m) XML_FIELD(Rec, m, #m)

const XmlField kCommonFields[] = {
    F(PTZCommonConfig, Protocol), F(PTZCommonConfig, ComPort),
    F(PTZCommonConfig, BaudRate), F(PTZCommonConfig, DataBits),
    F(PTZCommonConfig, StopBits), F(PTZCommonConfig, Verify),
    F(PTZCommonConfig, FlowControl), F(PTZCommonConfig, BootAction),
};
const XmlField kAfFields[] = {
    F(PTZAfConfig, enable), F(PTZAfConfig, type), F(PTZAfConfig, bSendOnStart),
};
const XmlField kFunctionFields[] = {
    F(PTZFunctionConfig, FunctionName), F(PTZFunctionConfig, PresetNumber),
    F(PTZFunctionConfig, Function), F(PTZFunctionConfig, ReserveValue),
    F(PTZFunctionConfig, PresetNumber2), F(PTZFunctionConfig, Function2),
    F(PTZFunctionConfig, interval_sec),
};

int ReadFunction(const IXML_Node* element, PTZFunctionConfig* cfg) {
  ReadPlainElement(element, kFunctionFields, FieldCount(kFunctionFields), cfg, sizeof(*cfg));
  return 0;
}

void ReadAfChild(const IXML_Node* element, PTZConfig* cfg) { ReadPTZAfConfig(element, &cfg->Af); }
void ReadAdvanceChild(const IXML_Node* element, PTZConfig* cfg) {
  ReadPTZAdvanceConfig(element, &cfg->Advance);
}
const ChildReader<PTZConfig> kPtzChildren[] = {
    {"AfConfig", ReadAfChild},
    {"AdvanceConfig", ReadAdvanceChild},
};

}  // namespace

int ReadPTZCommonConfig(const IXML_Node* element, PTZCommonConfig* cfg) {
  ReadPlainElement(element, kCommonFields, FieldCount(kCommonFields), cfg, sizeof(*cfg));
  return 0;
}

int ReadPTZAfConfig(const IXML_Node* element, PTZAfConfig* cfg) {
  ReadPlainElement(element, kAfFields, FieldCount(kAfFields), cfg, sizeof(*cfg));
  return 0;
}

int ReadPTZAdvanceConfig(const IXML_Node* element, PTZAdvanceConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->Count = ReadListChildren(element, "FunctionConfig", cfg->Function,
                                QV_MAX_PTZ_FUNCTIONS, ReadFunction);
  return 0;
}

int ReadPTZConfig(const IXML_Node* element, PTZConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadPTZCommonConfig(element, &cfg->Common);
  ReadChildren(element, kPtzChildren, cfg);
  return 0;
}

void WritePTZAfConfig(XmlWriter& out, const PTZAfConfig* cfg) {
  WriteLineElement(out, "AfConfig", kAfFields, FieldCount(kAfFields), cfg, "/>\r\n");
}

void WritePTZAdvanceConfig(XmlWriter& out, const PTZAdvanceConfig* cfg) {
  out.Append("<AdvanceConfig>\r\n");
  for (int i = 0; i < ListCount(cfg->Count, QV_MAX_PTZ_FUNCTIONS); ++i)
    WriteLineElement(out, "FunctionConfig", kFunctionFields, FieldCount(kFunctionFields),
                     &cfg->Function[i], "/>\r\n");
  out.Append("</AdvanceConfig>\r\n");
}

void WritePTZConfig(XmlWriter& out, const PTZConfig* cfg) {
  WriteLineElement(out, "PTZConfig", kCommonFields, FieldCount(kCommonFields), &cfg->Common,
                   ">\r\n");
  WritePTZAfConfig(out, &cfg->Af);
  WritePTZAdvanceConfig(out, &cfg->Advance);
  out.Append("</PTZConfig>\r\n");
}

}  // namespace qvconfig

int System_getPTZCfgByXml(PTZConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "PTZConfig", qvconfig::ReadPTZConfig);
}
int System_getPTZCommonCfgByXml(PTZCommonConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "PTZConfig", qvconfig::ReadPTZCommonConfig);
}
int System_getPTZAfCfgByXml(PTZAfConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "AfConfig", qvconfig::ReadPTZAfConfig);
}
int System_getPTZAdvanceCfgByXml(PTZAdvanceConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "AdvanceConfig", qvconfig::ReadPTZAdvanceConfig);
}

char* XMLGET_PTZConfig(PTZConfig* cfg) {
  return qvconfig::WriteRecordText<PTZConfig>(cfg, qvconfig::WritePTZConfig);
}
char* XMLGET_PTZAFConfig(PTZAfConfig* cfg) {
  return qvconfig::WriteRecordText<PTZAfConfig>(cfg, qvconfig::WritePTZAfConfig);
}
char* XMLGET_PTZAdvanceConfig(PTZAdvanceConfig* cfg) {
  return qvconfig::WriteRecordText<PTZAdvanceConfig>(cfg, qvconfig::WritePTZAdvanceConfig);
}
