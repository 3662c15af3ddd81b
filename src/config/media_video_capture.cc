// The video Capture element: image, infrared-cut, exposure and light
// settings.
#include <cstring>

#include "config/config_print.h"
#include "config/config_section.h"
#include "config/media_sections.h"

namespace qvconfig {
namespace {

const int kDefaultWdrValue = 128;
const int kDefaultDfrogValue = 128;
const DayTime kNightStart = {18, 0, 0};
const DayTime kNightEnd = {8, 0, 0};

#define CAPTURE(member) XML_FIELD(VideoCaptureConfig, member, #member)

// Attributes in writing order (also the member order).
const XmlField kVideoCaptureFields[] = {
    CAPTURE(Brightness),
    CAPTURE(Contrast),
    CAPTURE(Saturation),
    CAPTURE(Sharpness),
    CAPTURE(TVSystem),
    CAPTURE(forct_antiflicker),
    CAPTURE(cropxpix),
    CAPTURE(cropypix),
    CAPTURE(HFlip),
    CAPTURE(VFlip),
    CAPTURE(rotate),
    CAPTURE(WB_RGB),
    CAPTURE(BackLight),
    CAPTURE(HLC),
    CAPTURE(TNF),
    CAPTURE(SNF),
    CAPTURE(IrcutMode),
    CAPTURE(IrcutSensitivity),
    CAPTURE(IrcutOpenLedDelay),
    CAPTURE(led_brightness_mode),
    CAPTURE(led_brightness_value),
    CAPTURE(led_brightness_alarm),
    CAPTURE(IrcutNightStartTime),
    CAPTURE(IrcutNightEndTime),
    CAPTURE(IrcutKeepColor),
    CAPTURE(led_mode),
    CAPTURE(ispadvmode),
    CAPTURE(bManualGain),
    CAPTURE(gainValue),
    CAPTURE(WDRMode),
    CAPTURE(WDRValue),
    CAPTURE(DfrogFlag),
    CAPTURE(DfrogValue),
    CAPTURE(WDRStartTime),
    CAPTURE(WDREndTime),
    CAPTURE(shutter_mode),
    CAPTURE(shutter_mode_night),
    CAPTURE(shutter_speed_day),
    CAPTURE(shutter_speed_night),
    CAPTURE(isp_mode_color),
    CAPTURE(isp_mode_night),
    CAPTURE(videoEncodeMode),
    CAPTURE(light_off_sensitivity),
    CAPTURE(face_exposure_sensitivity),
};

#undef CAPTURE

// The infrared-cut settings are the attributes whose names begin so.
bool HasIrcutSettings(const IXML_Node* element) {
  for (IXML_Node* a = FirstAttribute(element); a; a = NextAttribute(a))
    if (strncmp(AttributeName(a), "Ircut", 5) == 0) return true;
  return false;
}

int InRangeOrZero(int value, int lo, int hi) {
  return value < lo || value > hi ? 0 : value;
}

}  // namespace

int ReadVideoCapture(const IXML_Node* element, VideoCaptureConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->WDRValue = kDefaultWdrValue;
  cfg->DfrogValue = kDefaultDfrogValue;
  cfg->IrcutNightStartTime = kNightStart;
  cfg->IrcutNightEndTime = kNightEnd;
  if (!HasIrcutSettings(element))
    CFG_PRINT("[%s:%u]no IRCUT config found, use default config!!!\n\n");
  ReadXmlFields(element, kVideoCaptureFields, FieldCount(kVideoCaptureFields), cfg);
  cfg->WDRValue = InRangeOrZero(cfg->WDRValue, 0, 255);
  cfg->DfrogValue = InRangeOrZero(cfg->DfrogValue, 0, 255);
  cfg->DfrogFlag = InRangeOrZero(cfg->DfrogFlag, 0, 1);
  cfg->light_off_sensitivity &= 0xFF;
  cfg->face_exposure_sensitivity &= 0xFF;
  return 0;
}

void WriteVideoCapture(XmlWriter& out, const VideoCaptureConfig* cfg) {
  WriteLineElement(out, "Capture", kVideoCaptureFields, FieldCount(kVideoCaptureFields),
                   cfg, "/>\r\n");
}

}  // namespace qvconfig

int Media_getVideoCaptureByXml(VideoCaptureConfig* cfg, const char* xml) {
  return READ_CHILD_RECORD_BY_XML(cfg, xml, "Video", "Capture", qvconfig::ReadVideoCapture);
}

char* XMLGET_VideoCaptureConfig(const VideoCaptureConfig* cfg) {
  return qvconfig::WriteRecordText<VideoCaptureConfig>(cfg, qvconfig::WriteVideoCapture);
}
