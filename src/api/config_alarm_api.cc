// Exported configuration exchange of the alarm section: readers, writers,
// get and set requests.
#include "api/config_exchange.h"
#include "config/alarm_sections.h"
#include "quorvel/quorvel.h"

QV_CONFIG_READER(Alarm_getInputByXml, InputAlarm)
QV_CONFIG_READER(Alarm_getMotionDetectByXml, MotionDetectAlarm)
QV_CONFIG_READER_AS(Alarm_getPersonDetectByXml, Alarm_getPdByXml, VideoPD)
QV_CONFIG_READER(Alarm_getVideoLostByXml, VideoLostAlarm)
QV_CONFIG_READER(Alarm_getVideoCoverByXml, VideoCoverAlarm)
QV_CONFIG_READER(Alarm_getStorageFullByXml, StorageFullAlarm)
QV_CONFIG_READER(GetAlarmConfigByXml, AlarmConfig)
QV_CONFIG_READER(InputAlarm_getAlarmChannelCfgByXml, AlarmChannel)

QV_CONFIG_WRITER(AlarmConfig, AlarmConfig)
QV_CONFIG_WRITER(InputAlarmConfig, InputAlarm)
QV_CONFIG_WRITER(MDAlarmConfig, MotionDetectAlarm)
QV_CONFIG_WRITER_AS(PDAlarmConfig, PdAlarmConfig, VideoPD)
QV_CONFIG_WRITER(VlAlarmConfig, VideoLostAlarm)
QV_CONFIG_WRITER(VCAlarmConfig, VideoCoverAlarm)
QV_CONFIG_WRITER(SFAlarmConfig, StorageFullAlarm)

QV_CONFIG_GET(AlarmConfig, QV_CFG_GET_ALARM)
QV_CONFIG_GET(InputAlarm, QV_CFG_GET_INPUT_ALARM)
QV_CONFIG_GET(MotionDetectAlarm, QV_CFG_GET_MOTION_DETECT)
QV_CONFIG_GET(VideoCoverAlarm, QV_CFG_GET_VIDEO_COVER)
QV_CONFIG_GET(VideoLostAlarm, QV_CFG_GET_VIDEO_LOST)
QV_CONFIG_GET(StorageFullAlarm, QV_CFG_GET_STORAGE_FULL)
QV_CONFIG_GET(PersonDetectAlarm, QV_CFG_GET_PERSON_DETECT)

QV_CONFIG_SET(AlarmConfig, QV_CFG_SET_ALARM, AlarmConfig, XMLGET_AlarmConfig)
QV_CONFIG_SET(InputAlarmConfig, QV_CFG_SET_INPUT_ALARM, InputAlarm, XMLGET_InputAlarmConfig)
QV_CONFIG_SET(MotionDetectAlarm, QV_CFG_SET_MOTION_DETECT, MotionDetectAlarm,
              XMLGET_MDAlarmConfig)
QV_CONFIG_SET(VCAlarmConfig, QV_CFG_SET_VIDEO_COVER, VideoCoverAlarm, XMLGET_VCAlarmConfig)
QV_CONFIG_SET(VlAlarmConfig, QV_CFG_SET_VIDEO_LOST, VideoLostAlarm, XMLGET_VlAlarmConfig)
QV_CONFIG_SET(VideoGateAlarmConfig, QV_CFG_SET_VIDEO_GATE, VideoGate,
              XMLGET_VideoGateAlarmConfig)
QV_CONFIG_SET(PersonDetectAlarm, QV_CFG_SET_PERSON_DETECT, VideoPD, XMLGET_PdAlarmConfig)
QV_CONFIG_SET(OutputAlarmConfig, QV_CFG_SET_OUTPUT_ALARM, OutPutAlarm, XMLGET_OutputAlarmConfig)
