// The audio elements of the media section: Capture, Encode and their Audio
// container.
#include "config/config_section.h"
#include "config/media_sections.h"

namespace qvconfig {
namespace {

// Attributes in writing order.
const XmlField kAudioCaptureFields[] = {
    XML_FIELD(AudioCaptureConfig, Channels, "Channels"),
    XML_FIELD(AudioCaptureConfig, BitsPerSample, "BitsPerSample"),
    XML_FIELD(AudioCaptureConfig, SampleRate, "SampleRate"),
    XML_FIELD(AudioCaptureConfig, Volume, "Volume"),
    XML_FIELD(AudioCaptureConfig, VolumePlay, "VolumePlay"),
    XML_FIELD(AudioCaptureConfig, amplify, "amplify"),
    XML_FIELD(AudioCaptureConfig, ra_answer, "ra_answer"),
    XML_FIELD(AudioCaptureConfig, aec_enable, "aec_enable"),
    XML_FIELD(AudioCaptureConfig, mute_ptz_turn, "mute_ptz_turn"),
};

const XmlField kAudioEncodeFields[] = {
    XML_FIELD(AudioEncodeConfig, Enable, "Enable"),
    XML_FIELD(AudioEncodeConfig, SampleRate, "SampleRate"),
    XML_FIELD(AudioEncodeConfig, EncodeType, "EncodeType"),
    XML_FIELD(AudioEncodeConfig, BitRate, "BitRate"),
};

const ChildReader<AudioConfig> kAudioChildren[] = {
    CHILD_MEMBER(AudioConfig, "Capture", Capture, ReadAudioCapture),
    CHILD_MEMBER(AudioConfig, "Encode", Encode, ReadAudioEncode),
};

}  // namespace

int ReadAudioCapture(const IXML_Node* element, AudioCaptureConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->Channels = 1;
  cfg->BitsPerSample = 16;
  cfg->SampleRate = 8000;
  cfg->VolumePlay = 100;
  cfg->amplify = 1;
  ReadXmlFields(element, kAudioCaptureFields, FieldCount(kAudioCaptureFields), cfg);
  return 0;
}

void WriteAudioCapture(XmlWriter& out, const AudioCaptureConfig* cfg) {
  WriteLineElement(out, "Capture", kAudioCaptureFields, FieldCount(kAudioCaptureFields),
                   cfg, "/>\r\n");
}

int ReadAudioEncode(const IXML_Node* element, AudioEncodeConfig* cfg) {
  ReadPlainElement(element, kAudioEncodeFields, FieldCount(kAudioEncodeFields), cfg,
                   sizeof(*cfg));
  return 0;
}

void WriteAudioEncode(XmlWriter& out, const AudioEncodeConfig* cfg) {
  WriteLineElement(out, "Encode", kAudioEncodeFields, FieldCount(kAudioEncodeFields), cfg,
                   "/>\r\n");
}

int ReadAudioConfig(const IXML_Node* element, AudioConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kAudioChildren, cfg);
  return 0;
}

void WriteAudioConfig(XmlWriter& out, const AudioConfig* cfg) {
  out.Append("<Audio>\r\n");
  WriteAudioCapture(out, &cfg->Capture);
  WriteAudioEncode(out, &cfg->Encode);
  out.Append("</Audio>\r\n");
}

}  // namespace qvconfig

int Media_getAudioByXml(AudioConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "Audio", qvconfig::ReadAudioConfig);
}
int Media_getAudioCaptureByXml(AudioCaptureConfig* cfg, const char* xml) {
  return READ_CHILD_RECORD_BY_XML(cfg, xml, "Audio", "Capture", qvconfig::ReadAudioCapture);
}
int Media_getAudioEncodeByXml(AudioEncodeConfig* cfg, const char* xml) {
  return READ_CHILD_RECORD_BY_XML(cfg, xml, "Audio", "Encode", qvconfig::ReadAudioEncode);
}

char* XMLGET_AudioConfig(const AudioConfig* cfg) {
  return qvconfig::WriteRecordText<AudioConfig>(cfg, qvconfig::WriteAudioConfig);
}
char* XMLGET_AudioCaptureConfig(const AudioCaptureConfig* cfg) {
  return qvconfig::WriteRecordText<AudioCaptureConfig>(cfg, qvconfig::WriteAudioCapture);
}
char* XMLGET_AudioEncodeConfig(const AudioEncodeConfig* cfg) {
  return qvconfig::WriteRecordText<AudioEncodeConfig>(cfg, qvconfig::WriteAudioEncode);
}
