// The alarm section (AlarmConfig) and its fourteen alarm sources: readers
// from XML text, writers to XML text, the element-level readers and writers
// that the document load and save use, the channel lookups and the file
// store.
//
// Readers from text return 0, or -1 when the text does not parse or holds no
// such element. Writers return a text the caller releases with free(), or
// null for a null record.
#pragma once

#include <upnp/ixml.h>

#include "quorvel/quorvel.h"

// ---- readers from XML text (the first element of the name is read)
int Alarm_getInputByXml(InputAlarm* cfg, const char* xml);
int Alarm_getOutputByXml(OutPutAlarm* cfg, const char* xml);
int Alarm_getSMSByXml(SMSAlarm* cfg, const char* xml);
int InputAlarm_getAlarmChannelCfgByXml(AlarmChannel* cfg, const char* xml);
int OutputAlarm_getOutputChannelCfgByXml(OutputChannel* cfg, const char* xml);
int Alarm_getMotionDetectByXml(MotionDetectAlarm* cfg, const char* xml);
int Alarm_getVideoLostByXml(VideoLostAlarm* cfg, const char* xml);
int Alarm_getVideoCoverByXml(VideoCoverAlarm* cfg, const char* xml);
int Alarm_getStorageFullByXml(StorageFullAlarm* cfg, const char* xml);
int Alarm_getAudioByXml(AudioAlarm* cfg, const char* xml);
int Alarm_getVideoGateByXml(VideoGate* cfg, const char* xml);
int Alarm_getPdByXml(VideoPD* cfg, const char* xml);
int Alarm_getLprByXml(Lpr* cfg, const char* xml);
int Alarm_getFdByXml(FaceDetect* cfg, const char* xml);
int Alarm_getTempHumidityByXml(Temp_humidity* cfg, const char* xml);
int Alarm_getRegionAiByXml(VideoRegionAi* cfg, const char* xml);
int GetAlarmConfigByXml(AlarmConfig* cfg, const char* xml);

// ---- writers
char* XMLGET_AlarmConfig(AlarmConfig* cfg);
char* XMLGET_InputAlarmConfig(InputAlarm* cfg);
char* XMLGET_OutputAlarmConfig(OutPutAlarm* cfg);
char* XMLGET_MDAlarmConfig(MotionDetectAlarm* cfg);
char* XMLGET_VlAlarmConfig(VideoLostAlarm* cfg);
char* XMLGET_VCAlarmConfig(VideoCoverAlarm* cfg);
char* XMLGET_SFAlarmConfig(StorageFullAlarm* cfg);
char* XMLGET_AudioAlarmConfig(AudioAlarm* cfg);
char* XMLGET_VideoGateAlarmConfig(VideoGate* cfg);
char* XMLGET_PdAlarmConfig(VideoPD* cfg);
char* XMLGET_LprAlarmConfig(Lpr* cfg);
char* XMLGET_FdAlarmConfig(FaceDetect* cfg);
char* XMLGET_temp_humidityAlarmConfig(Temp_humidity* cfg);
char* XMLGET_RegionAiAlarmConfig(VideoRegionAi* cfg);
char* XMLGET_SMSAlarmConfig(SMSAlarm* cfg);

// ---- lookups: the used entry with this PortIndex, or null
AlarmChannel* GetAlarmChannelByID(InputAlarm* cfg, int id);
OutputChannel* GetOutputChannelByID(OutPutAlarm* cfg, int id);

// ---- file store (section read and section write of AlarmConfig)
int GetAlarmConfig(AlarmConfig* cfg);
int SetAlarmConfig(AlarmConfig* cfg);

// Prints the sizes of the alarm records; `detail` non-zero adds the action
// and schedule records.
void ShowAlarmSize(int detail);

namespace qvconfig {

class XmlWriter;

// ---- element level: readers clear the record, set its defaults (full-week
// schedules) and read the attributes and children; 0.
int ReadAlarmChannel(const IXML_Node* element, AlarmChannel* cfg);
int ReadInputAlarm(const IXML_Node* element, InputAlarm* cfg);
int ReadMotionDetectAlarm(const IXML_Node* element, MotionDetectAlarm* cfg);
int ReadVideoLostAlarm(const IXML_Node* element, VideoLostAlarm* cfg);
int ReadVideoCoverAlarm(const IXML_Node* element, VideoCoverAlarm* cfg);
int ReadStorageFullAlarm(const IXML_Node* element, StorageFullAlarm* cfg);
int ReadAudioAlarm(const IXML_Node* element, AudioAlarm* cfg);
int ReadVideoGate(const IXML_Node* element, VideoGate* cfg);
int ReadVideoRegionAi(const IXML_Node* element, VideoRegionAi* cfg);
int ReadVideoPD(const IXML_Node* element, VideoPD* cfg);
int ReadLpr(const IXML_Node* element, Lpr* cfg);
int ReadFaceDetect(const IXML_Node* element, FaceDetect* cfg);
int ReadTemp_humidity(const IXML_Node* element, Temp_humidity* cfg);
int ReadOutputChannel(const IXML_Node* element, OutputChannel* cfg);
int ReadOutPutAlarm(const IXML_Node* element, OutPutAlarm* cfg);
int ReadSMSAlarm(const IXML_Node* element, SMSAlarm* cfg);
int ReadAlarmConfig(const IXML_Node* element, AlarmConfig* cfg);

void WriteAlarmChannel(XmlWriter& out, const AlarmChannel* cfg);
void WriteInputAlarm(XmlWriter& out, const InputAlarm* cfg);
void WriteMotionDetectAlarm(XmlWriter& out, const MotionDetectAlarm* cfg);
void WriteVideoLostAlarm(XmlWriter& out, const VideoLostAlarm* cfg);
void WriteVideoCoverAlarm(XmlWriter& out, const VideoCoverAlarm* cfg);
void WriteStorageFullAlarm(XmlWriter& out, const StorageFullAlarm* cfg);
void WriteAudioAlarm(XmlWriter& out, const AudioAlarm* cfg);
void WriteVideoGate(XmlWriter& out, const VideoGate* cfg);
void WriteVideoRegionAi(XmlWriter& out, const VideoRegionAi* cfg);
void WriteVideoPD(XmlWriter& out, const VideoPD* cfg);
void WriteLpr(XmlWriter& out, const Lpr* cfg);
void WriteFaceDetect(XmlWriter& out, const FaceDetect* cfg);
void WriteTemp_humidity(XmlWriter& out, const Temp_humidity* cfg);
void WriteOutputChannel(XmlWriter& out, const OutputChannel* cfg);
void WriteOutPutAlarm(XmlWriter& out, const OutPutAlarm* cfg);
void WriteSMSAlarm(XmlWriter& out, const SMSAlarm* cfg);
void WriteAlarmConfig(XmlWriter& out, const AlarmConfig* cfg);

}  // namespace qvconfig
