// The AlarmConfig container, its two lists (InputAlarm, OutputAlarm), the
// readers and writers from and to text, the lookups and the file store.
#include <cstdio>

#include "config/alarm_sections.h"
#include "config/config_section.h"
#include "config/config_store.h"
#include "config/element_parts.h"
#include "config/time_span.h"

namespace qvconfig {
namespace {

template <typename Child, Child AlarmConfig::*member, int (*read)(const IXML_Node*, Child*)>
void ReadMember(const IXML_Node* element, AlarmConfig* cfg) {
  read(element, &(cfg->*member));
}

#define ALARM_CHILD(name, Type, member) \
  { name, ReadMember<Type, &AlarmConfig::member, Read##Type> }

const ChildReader<AlarmConfig> kAlarmChildren[] = {
    ALARM_CHILD("InputAlarm", InputAlarm, Input),
    ALARM_CHILD("MotionDetectAlarm", MotionDetectAlarm, MotionDetect),
    ALARM_CHILD("VideoLostAlarm", VideoLostAlarm, VideoLost),
    ALARM_CHILD("VideoCoverAlarm", VideoCoverAlarm, VideoCover),
    ALARM_CHILD("StorageFullAlarm", StorageFullAlarm, StorageFull),
    ALARM_CHILD("AudioAlarm", AudioAlarm, Audio),
    ALARM_CHILD("VideoGate", VideoGate, Gate),
    ALARM_CHILD("VideoRegionAi", VideoRegionAi, RegionAi),
    ALARM_CHILD("VideoPD", VideoPD, PersonDetect),
    ALARM_CHILD("Lpr", Lpr, LicencePlate),
    ALARM_CHILD("FaceDetect", FaceDetect, Face),
    ALARM_CHILD("OutputAlarm", OutPutAlarm, Output),
    ALARM_CHILD("Temp_humidity", Temp_humidity, TempHumidity),
    ALARM_CHILD("SMSAlarm", SMSAlarm, SMS),
};

}  // namespace

int ReadInputAlarm(const IXML_Node* element, InputAlarm* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->Count = ReadListChildren(element, "AlarmChannel", cfg->Channel,
                                QV_MAX_INPUT_CHANNELS, ReadAlarmChannel);
  return 0;
}

void WriteInputAlarm(XmlWriter& out, const InputAlarm* cfg) {
  out.Append("<InputAlarm>\r\n");
  for (int i = 0; i < ListCount(cfg->Count, QV_MAX_INPUT_CHANNELS); ++i)
    WriteAlarmChannel(out, &cfg->Channel[i]);
  out.Append("</InputAlarm>\r\n");
}

int ReadOutPutAlarm(const IXML_Node* element, OutPutAlarm* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->Count = ReadListChildren(element, "OutputChannel", cfg->Channel,
                                QV_MAX_OUTPUT_CHANNELS, ReadOutputChannel);
  return 0;
}

void WriteOutPutAlarm(XmlWriter& out, const OutPutAlarm* cfg) {
  out.Append("<OutputAlarm>\r\n");
  for (int i = 0; i < ListCount(cfg->Count, QV_MAX_OUTPUT_CHANNELS); ++i)
    WriteOutputChannel(out, &cfg->Channel[i]);
  out.Append("</OutputAlarm>\r\n");
}

int ReadAlarmConfig(const IXML_Node* element, AlarmConfig* cfg) {
  // Sources the element lacks read as an empty element would.
  memset(cfg, 0, sizeof(*cfg));
  SetAllTimeSpan(&cfg->MotionDetect.TimeSpan);
  SetAllTimeSpan(&cfg->VideoLost.TimeSpan);
  SetAllTimeSpan(&cfg->VideoCover.TimeSpan);
  SetAllTimeSpan(&cfg->Gate.TimeSpan);
  SetAllTimeSpan(&cfg->RegionAi.TimeSpan);
  SetAllTimeSpan(&cfg->PersonDetect.TimeSpan);
  SetAllTimeSpan(&cfg->LicencePlate.TimeSpan);
  SetAllTimeSpan(&cfg->Face.TimeSpan);
  ReadChildren(element, kAlarmChildren, cfg);
  return 0;
}

void WriteAlarmConfig(XmlWriter& out, const AlarmConfig* cfg) {
  out.Append("<AlarmConfig>\r\n");
  WriteInputAlarm(out, &cfg->Input);
  WriteMotionDetectAlarm(out, &cfg->MotionDetect);
  WriteVideoLostAlarm(out, &cfg->VideoLost);
  WriteVideoCoverAlarm(out, &cfg->VideoCover);
  WriteStorageFullAlarm(out, &cfg->StorageFull);
  WriteAudioAlarm(out, &cfg->Audio);
  WriteVideoGate(out, &cfg->Gate);
  WriteVideoRegionAi(out, &cfg->RegionAi);
  WriteVideoPD(out, &cfg->PersonDetect);
  WriteLpr(out, &cfg->LicencePlate);
  WriteFaceDetect(out, &cfg->Face);
  WriteTemp_humidity(out, &cfg->TempHumidity);
  WriteOutPutAlarm(out, &cfg->Output);
  WriteSMSAlarm(out, &cfg->SMS);
  out.Append("</AlarmConfig>\r\n");
}

}  // namespace qvconfig

using qvconfig::WriteRecordText;

#define ALARM_TEXT(reader, writer, Rec, tag)                          \
  int reader(Rec* cfg, const char* xml) {                             \
    return READ_RECORD_BY_XML(cfg, xml, tag, qvconfig::Read##Rec);    \
  }                                                                   \
  char* writer(Rec* cfg) { return WriteRecordText<Rec>(cfg, qvconfig::Write##Rec); }

ALARM_TEXT(Alarm_getInputByXml, XMLGET_InputAlarmConfig, InputAlarm, "InputAlarm")
ALARM_TEXT(Alarm_getOutputByXml, XMLGET_OutputAlarmConfig, OutPutAlarm, "OutputAlarm")
ALARM_TEXT(Alarm_getSMSByXml, XMLGET_SMSAlarmConfig, SMSAlarm, "SMSAlarm")
ALARM_TEXT(Alarm_getMotionDetectByXml, XMLGET_MDAlarmConfig, MotionDetectAlarm,
           "MotionDetectAlarm")
ALARM_TEXT(Alarm_getVideoLostByXml, XMLGET_VlAlarmConfig, VideoLostAlarm, "VideoLostAlarm")
ALARM_TEXT(Alarm_getVideoCoverByXml, XMLGET_VCAlarmConfig, VideoCoverAlarm, "VideoCoverAlarm")
ALARM_TEXT(Alarm_getStorageFullByXml, XMLGET_SFAlarmConfig, StorageFullAlarm,
           "StorageFullAlarm")
ALARM_TEXT(Alarm_getAudioByXml, XMLGET_AudioAlarmConfig, AudioAlarm, "AudioAlarm")
ALARM_TEXT(Alarm_getVideoGateByXml, XMLGET_VideoGateAlarmConfig, VideoGate, "VideoGate")
ALARM_TEXT(Alarm_getPdByXml, XMLGET_PdAlarmConfig, VideoPD, "VideoPD")
ALARM_TEXT(Alarm_getLprByXml, XMLGET_LprAlarmConfig, Lpr, "Lpr")
ALARM_TEXT(Alarm_getFdByXml, XMLGET_FdAlarmConfig, FaceDetect, "FaceDetect")
ALARM_TEXT(Alarm_getTempHumidityByXml, XMLGET_temp_humidityAlarmConfig, Temp_humidity,
           "Temp_humidity")
ALARM_TEXT(Alarm_getRegionAiByXml, XMLGET_RegionAiAlarmConfig, VideoRegionAi,
           "VideoRegionAi")
ALARM_TEXT(GetAlarmConfigByXml, XMLGET_AlarmConfig, AlarmConfig, "AlarmConfig")

int InputAlarm_getAlarmChannelCfgByXml(AlarmChannel* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "AlarmChannel", qvconfig::ReadAlarmChannel);
}

int OutputAlarm_getOutputChannelCfgByXml(OutputChannel* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "OutputChannel", qvconfig::ReadOutputChannel);
}

AlarmChannel* GetAlarmChannelByID(InputAlarm* cfg, int id) {
  if (!cfg) return nullptr;
  return qvconfig::FindEntry(cfg->Channel, cfg->Count, QV_MAX_INPUT_CHANNELS,
                             &AlarmChannel::PortIndex, id);
}

OutputChannel* GetOutputChannelByID(OutPutAlarm* cfg, int id) {
  if (!cfg) return nullptr;
  return qvconfig::FindEntry(cfg->Channel, cfg->Count, QV_MAX_OUTPUT_CHANNELS,
                             &OutputChannel::PortIndex, id);
}

int GetAlarmConfig(AlarmConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("AlarmConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadAlarmConfig(node, cfg);
  });
}

int SetAlarmConfig(AlarmConfig* cfg) {
  return qvconfig::WriteConfigSectionText("AlarmConfig", XMLGET_AlarmConfig(cfg));
}

void ShowAlarmSize(int detail) {
#define SHOW_SIZE(T) printf("sizeof(" #T ") = %zu\n", sizeof(T))
  SHOW_SIZE(AlarmConfig);
  SHOW_SIZE(InputAlarm);
  SHOW_SIZE(AlarmChannel);
  SHOW_SIZE(MotionDetectAlarm);
  SHOW_SIZE(VideoLostAlarm);
  SHOW_SIZE(VideoCoverAlarm);
  SHOW_SIZE(StorageFullAlarm);
  SHOW_SIZE(AudioAlarm);
  SHOW_SIZE(VideoGate);
  SHOW_SIZE(VideoRegionAi);
  SHOW_SIZE(VideoPD);
  SHOW_SIZE(Lpr);
  SHOW_SIZE(FaceDetect);
  SHOW_SIZE(OutPutAlarm);
  SHOW_SIZE(OutputChannel);
  SHOW_SIZE(Temp_humidity);
  SHOW_SIZE(SMSAlarm);
  if (detail) {
    SHOW_SIZE(IOOutputAction);
    SHOW_SIZE(PTZAction);
    SHOW_SIZE(AudioPlayAction);
    SHOW_SIZE(TimeSpanCfg);
    SHOW_SIZE(VideoGateLine);
    SHOW_SIZE(RegionAiRule);
  }
#undef SHOW_SIZE
}
