// The alarm elements, each described once: attributes in writing order,
// schedule, AlarmAction attributes and action children.
#include "config/alarm_element.h"
#include "config/alarm_sections.h"
#include "config/config_section.h"

namespace qvconfig {
namespace {

#define F(Rec, m) XML_FIELD(Rec, m, #m)
#define OFF(Rec, m) static_cast<int>(offsetof(Rec, m))
#define FIELDS(a) a, FieldCount(a)

// ---- AlarmChannel (inside InputAlarm)
const XmlField kChannelFields[] = {
    F(AlarmChannel, PortIndex), F(AlarmChannel, ChannelType),
    F(AlarmChannel, TriggerType), F(AlarmChannel, Enable),
};
const XmlField kChannelAction[] = {
    F(AlarmChannel, light_twinkle), F(AlarmChannel, notify_alarmserver),
    F(AlarmChannel, notify_sms),
};
const AlarmElementLayout kChannel = {
    "AlarmChannel", FIELDS(kChannelFields), nullptr, 0, nullptr,
    OFF(AlarmChannel, TimeSpan), true, FIELDS(kChannelAction),
    OFF(AlarmChannel, IOOutput), OFF(AlarmChannel, PTZ), OFF(AlarmChannel, AudioPlay)};

// ---- MotionDetectAlarm
const XmlField kMdFields[] = {
    F(MotionDetectAlarm, Enable), F(MotionDetectAlarm, BlockCount),
    F(MotionDetectAlarm, BlockConfig), F(MotionDetectAlarm, Sensitivity),
    F(MotionDetectAlarm, AlarmThreshold), F(MotionDetectAlarm, DayNightSwitch),
    F(MotionDetectAlarm, NightSensitivity), F(MotionDetectAlarm, NightAlarmThreshold),
};
const TimeAttr kMdTimes[] = {
    TIME_ATTR(MotionDetectAlarm, NightStartTime, "NightStartTime"),
    TIME_ATTR(MotionDetectAlarm, NightEndTime, "NightEndTime"),
};
const XmlField kMdAction[] = {
    F(MotionDetectAlarm, light_twinkle), F(MotionDetectAlarm, notify_alarmserver),
    F(MotionDetectAlarm, alarm_led), F(MotionDetectAlarm, alarm_push),
};
const AlarmElementLayout kMotionDetect = {
    "MotionDetectAlarm", FIELDS(kMdFields), FIELDS(kMdTimes), nullptr,
    OFF(MotionDetectAlarm, TimeSpan), true, FIELDS(kMdAction),
    OFF(MotionDetectAlarm, IOOutput), OFF(MotionDetectAlarm, PTZ),
    OFF(MotionDetectAlarm, AudioPlay)};

// ---- VideoLostAlarm
const XmlField kVlFields[] = {F(VideoLostAlarm, Enable)};
const AlarmElementLayout kVideoLost = {
    "VideoLostAlarm", FIELDS(kVlFields), nullptr, 0, nullptr,
    OFF(VideoLostAlarm, TimeSpan), true, nullptr, 0,
    OFF(VideoLostAlarm, IOOutput), kNone, kNone};

// ---- VideoCoverAlarm
const XmlField kVcFields[] = {
    F(VideoCoverAlarm, Enable), F(VideoCoverAlarm, Sensitivity),
    F(VideoCoverAlarm, threadhold_second), F(VideoCoverAlarm, backgroundUpdateSecond),
};
const AlarmElementLayout kVideoCover = {
    "VideoCoverAlarm", FIELDS(kVcFields), nullptr, 0, nullptr,
    OFF(VideoCoverAlarm, TimeSpan), true, nullptr, 0,
    OFF(VideoCoverAlarm, IOOutput), kNone, OFF(VideoCoverAlarm, AudioPlay)};

// ---- StorageFullAlarm
const XmlField kSfFields[] = {F(StorageFullAlarm, Enable), F(StorageFullAlarm, Threshold)};
const AlarmElementLayout kStorageFull = {
    "StorageFullAlarm", FIELDS(kSfFields), nullptr, 0, nullptr, kNone, true, nullptr, 0,
    OFF(StorageFullAlarm, IOOutput), kNone, kNone};

// ---- AudioAlarm
const XmlField kAudioFields[] = {
    F(AudioAlarm, enable_babycry), F(AudioAlarm, sensity_babycry),
    F(AudioAlarm, enable_lsd), F(AudioAlarm, sensity_lsd),
};
const AlarmElementLayout kAudio = {
    "AudioAlarm", FIELDS(kAudioFields), nullptr, 0, nullptr, kNone, false, nullptr, 0,
    kNone, kNone, kNone};

// ---- VideoGate
const XmlField kLineFields[] = {
    F(VideoGateLine, fromx), F(VideoGateLine, fromy), F(VideoGateLine, tox),
    F(VideoGateLine, toy), F(VideoGateLine, EnableDay), F(VideoGateLine, EnableNight),
    F(VideoGateLine, sensitivity), F(VideoGateLine, type), F(VideoGateLine, direction),
};
const NumberedChildren kLines = {"Line%d", QV_VIDEO_GATE_LINES, OFF(VideoGate, Line),
                                 sizeof(VideoGateLine), FIELDS(kLineFields)};
const XmlField kGateAction[] = {
    F(VideoGate, drawrect), F(VideoGate, draw_target), F(VideoGate, light_twinkle),
    F(VideoGate, notify_alarmserver), F(VideoGate, alarm_led), F(VideoGate, alarm_push),
};
const AlarmElementLayout kVideoGate = {
    "VideoGate", nullptr, 0, nullptr, 0, &kLines, OFF(VideoGate, TimeSpan), true,
    FIELDS(kGateAction), OFF(VideoGate, IOOutput), kNone, OFF(VideoGate, AudioPlay)};

// ---- VideoRegionAi
const XmlField kRuleFields[] = {
    F(RegionAiRule, enable), F(RegionAiRule, sensitivity), F(RegionAiRule, type_filter),
    F(RegionAiRule, mode), F(RegionAiRule, stayseconds),
};
const NumberedChildren kRules = {"Rule%d", QV_REGION_AI_RULES, OFF(VideoRegionAi, Rule),
                                 sizeof(RegionAiRule), FIELDS(kRuleFields)};
const XmlField kRegionAction[] = {
    F(VideoRegionAi, drawrect), F(VideoRegionAi, draw_target),
    F(VideoRegionAi, light_twinkle), F(VideoRegionAi, notify_alarmserver),
    F(VideoRegionAi, alarm_led), F(VideoRegionAi, alarm_push),
};
const AlarmElementLayout kRegionAi = {
    "VideoRegionAi", nullptr, 0, nullptr, 0, &kRules, OFF(VideoRegionAi, TimeSpan), true,
    FIELDS(kRegionAction), OFF(VideoRegionAi, IOOutput), kNone,
    OFF(VideoRegionAi, AudioPlay)};

// ---- VideoPD
const XmlField kPdFields[] = {
    F(VideoPD, EnableDay), F(VideoPD, EnableNight), F(VideoPD, Type),
    F(VideoPD, Threshold), F(VideoPD, Sensitivity), F(VideoPD, minTargetRate),
    F(VideoPD, nonMotionFilter), F(VideoPD, xPos), F(VideoPD, yPos),
    F(VideoPD, width), F(VideoPD, height),
};
const XmlField kPdAction[] = {
    F(VideoPD, drawrect), F(VideoPD, draw_human), F(VideoPD, track_human),
    F(VideoPD, auto_zoom), F(VideoPD, rect_twinkle), F(VideoPD, light_twinkle),
    F(VideoPD, notify_alarmserver), F(VideoPD, alarm_led), F(VideoPD, alarm_push),
};
const AlarmElementLayout kPersonDetect = {
    "VideoPD", FIELDS(kPdFields), nullptr, 0, nullptr, OFF(VideoPD, TimeSpan), true,
    FIELDS(kPdAction), OFF(VideoPD, IOOutput), kNone, OFF(VideoPD, AudioPlay)};

// ---- Lpr
const XmlField kLprFields[] = {F(Lpr, Enable), F(Lpr, Sensitivity)};
const XmlField kLprAction[] = {F(Lpr, drawosd), F(Lpr, playvoice)};
const AlarmElementLayout kLpr = {
    "Lpr", FIELDS(kLprFields), nullptr, 0, nullptr, OFF(Lpr, TimeSpan), true,
    FIELDS(kLprAction), OFF(Lpr, IOOutput), kNone, kNone};

// ---- FaceDetect
const XmlField kFdFields[] = {
    F(FaceDetect, EnableDay), F(FaceDetect, EnableNight), F(FaceDetect, Threshold),
    F(FaceDetect, Sensitivity), F(FaceDetect, xPos), F(FaceDetect, yPos),
    F(FaceDetect, width), F(FaceDetect, height),
};
const XmlField kFdAction[] = {F(FaceDetect, drawrect)};
const AlarmElementLayout kFaceDetect = {
    "FaceDetect", FIELDS(kFdFields), nullptr, 0, nullptr, OFF(FaceDetect, TimeSpan), true,
    FIELDS(kFdAction), OFF(FaceDetect, IOOutput), kNone, OFF(FaceDetect, AudioPlay)};

// ---- Temp_humidity
const XmlField kThFields[] = {
    F(Temp_humidity, temp_enable), F(Temp_humidity, temp_upper_limit),
    F(Temp_humidity, temp_lower_limit), F(Temp_humidity, temp_range_lower),
    F(Temp_humidity, temp_range_upper), F(Temp_humidity, humidity_enable),
    F(Temp_humidity, humidity_upper_limit), F(Temp_humidity, humidity_lower_limit),
    F(Temp_humidity, humidity_range_lower), F(Temp_humidity, humidity_range_upper),
    F(Temp_humidity, voc_enable), F(Temp_humidity, voc_good),
    F(Temp_humidity, voc_TracePollution), F(Temp_humidity, voc_LightPollution),
    F(Temp_humidity, voc_ModeratePollution), F(Temp_humidity, voc_HeavyPollution),
};
const AlarmElementLayout kTempHumidity = {
    "Temp_humidity", FIELDS(kThFields), nullptr, 0, nullptr, kNone, true, nullptr, 0,
    OFF(Temp_humidity, IOOutput), kNone, kNone};

// ---- OutputChannel (inside OutputAlarm)
const XmlField kOutputFields[] = {
    F(OutputChannel, PortIndex), F(OutputChannel, ChannelType),
    F(OutputChannel, TriggerType), F(OutputChannel, Duration),
    F(OutputChannel, DayEnable), F(OutputChannel, NightEnable),
    F(OutputChannel, EnableDay), F(OutputChannel, EnableNight),
};
const AlarmElementLayout kOutputChannel = {
    "OutputChannel", FIELDS(kOutputFields), nullptr, 0, nullptr, kNone, false, nullptr, 0,
    kNone, kNone, kNone};

// ---- SMSAlarm
const XmlField kSmsFields[] = {
    F(SMSAlarm, enable), F(SMSAlarm, min_interval), F(SMSAlarm, playresult),
    F(SMSAlarm, dstnumber), F(SMSAlarm, content),
};
const AlarmElementLayout kSms = {
    "SMSAlarm", FIELDS(kSmsFields), nullptr, 0, nullptr, kNone, false, nullptr, 0,
    kNone, kNone, kNone};

}  // namespace

#define ALARM_ELEMENT(Rec, layout)                                   \
  int Read##Rec(const IXML_Node* element, Rec* cfg) {              \
    ReadAlarmElement(layout, element, cfg, sizeof(*cfg));            \
    return 0;                                                      \
  }                                                                \
  void Write##Rec(XmlWriter& out, const Rec* cfg) {                \
    WriteAlarmElement(layout, out, cfg);                             \
  }

ALARM_ELEMENT(AlarmChannel, kChannel)
ALARM_ELEMENT(MotionDetectAlarm, kMotionDetect)
ALARM_ELEMENT(VideoLostAlarm, kVideoLost)
ALARM_ELEMENT(VideoCoverAlarm, kVideoCover)
ALARM_ELEMENT(StorageFullAlarm, kStorageFull)
ALARM_ELEMENT(AudioAlarm, kAudio)
ALARM_ELEMENT(VideoGate, kVideoGate)
ALARM_ELEMENT(VideoRegionAi, kRegionAi)
ALARM_ELEMENT(VideoPD, kPersonDetect)
ALARM_ELEMENT(Lpr, kLpr)
ALARM_ELEMENT(FaceDetect, kFaceDetect)
ALARM_ELEMENT(Temp_humidity, kTempHumidity)
ALARM_ELEMENT(OutputChannel, kOutputChannel)
ALARM_ELEMENT(SMSAlarm, kSms)

}  // namespace qvconfig
