// Exported exchange functions of the media and stream sections: readers and
// writers forwarded to the configuration model, and the configuration get
// and set messages with their section codes.
#include <cstdlib>
#include <cstring>

#include "base/debug_log.h"
#include "config/media_sections.h"
#include "quorvel/quorvel.h"

namespace {

// Section codes of the configuration get and set messages.
enum : unsigned long {
  kGetMedia = 500,
  kGetVideo = 501,
  kGetAudio = 502,
  kGetVideoEncode = 503,
  kGetVideoCapture = 504,
  kGetVideoOverlay = 505,
  kGetAudioCapture = 507,
  kGetAudioEncode = 508,
  kGetVideoMask = 509,
  kGetVideoROI = 510,
  kGetMediaStream = 600,
  kSetMedia = 520,
  kSetVideo = 521,
  kSetAudio = 522,
  kSetVideoEncode = 523,
  kSetVideoCapture = 524,
  kSetVideoOSD = 525,
  kSetVideoMask = 529,
  kSetVideoUserOSD = 531,
  kSetMediaStream = 620,
};

long GetSection(const char* func, long userID, unsigned long code) {
  QV_LOG("[%s:%d]%s(%d)\n", func, static_cast<int>(userID));
  char empty[1] = "";
  return IP_NET_DVR_GetDVRConfig(userID, code, 0, empty, 0, nullptr);
}

// Sends the writer's text, which it releases.
long SetSection(const char* func, long userID, unsigned long code, char* xml) {
  QV_LOG("[%s:%d]%s(%d)\n", func, static_cast<int>(userID));
  if (!xml) return QV_E_INVALID_ARG;
  long ret = IP_NET_DVR_SetDVRConfig(userID, code, 0, xml, strlen(xml));
  free(xml);
  return ret;
}

}  // namespace

// ---- readers
QV_API int IP_NET_DVR_GetMediaCfgByXml(MediaConfig* cfg, const char* xml) {
  return GetMediaCfgByXml(cfg, xml);
}
QV_API int IP_NET_DVR_Media_getAudioByXml(AudioConfig* cfg, const char* xml) {
  return Media_getAudioByXml(cfg, xml);
}
QV_API int IP_NET_DVR_Media_getVideoByXml(VideoConfig* cfg, const char* xml) {
  return Media_getVideoByXml(cfg, xml);
}
QV_API int IP_NET_DVR_Media_getVideoCaptureByXml(VideoCaptureConfig* cfg, const char* xml) {
  return Media_getVideoCaptureByXml(cfg, xml);
}
QV_API int IP_NET_DVR_Media_getVideoOverlayByXml(VideoOverlayConfig* cfg, const char* xml) {
  return Media_getVideoOverlayByXml(cfg, xml);
}
QV_API int IP_NET_DVR_Media_getVideoEncodeByXml(VideoEncodeConfig* cfg, const char* xml) {
  return Media_getVideoEncodeByXml(cfg, xml);
}
QV_API int IP_NET_DVR_Media_getJpegEncodeByXml(JpegEncodeConfig* cfg, const char* xml) {
  return Media_getJpegEncodeByXml(cfg, xml);
}
QV_API int IP_NET_DVR_Media_getVideoMaskByXml(VideoMaskConfig* cfg, const char* xml) {
  return Media_getVideoMaskByXml(cfg, xml);
}
QV_API int IP_NET_DVR_GetMediaStreamCfgByXml(MediaStreamConfig* cfg, const char* xml) {
  return GetMediaStreamCfgByXml(cfg, xml);
}

// ---- writers
QV_API char* IP_NET_DVR_XMLGET_MediaConfig(MediaConfig* cfg) { return XMLGET_MediaConfig(cfg); }
QV_API char* IP_NET_DVR_XMLGET_AudioConfig(AudioConfig* cfg) { return XMLGET_AudioConfig(cfg); }
QV_API char* IP_NET_DVR_XMLGET_AudioCaptureConfig(AudioCaptureConfig* cfg) {
  return XMLGET_AudioCaptureConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_AudioEncodeConfig(AudioEncodeConfig* cfg) {
  return XMLGET_AudioEncodeConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoConfig(VideoConfig* cfg) { return XMLGET_VideoConfig(cfg); }
QV_API char* IP_NET_DVR_XMLGET_VideoCaptureConfig(VideoCaptureConfig* cfg) {
  return XMLGET_VideoCaptureConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoEncodeConfig(VideoEncodeConfig* cfg) {
  return XMLGET_VideoEncodeConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoOverlayConfig(VideoOverlayConfig* cfg) {
  return XMLGET_VideoOverlayConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoMaskConfig(VideoMaskConfig* cfg) {
  return XMLGET_VideoMaskConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_MediaStreamConfig(MediaStreamConfig* cfg) {
  return XMLGET_MediaStreamConfig(cfg);
}

// ---- gets
QV_API long IP_NET_DVR_GET_MediaConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetMedia);
}
QV_API long IP_NET_DVR_GET_VideoConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetVideo);
}
QV_API long IP_NET_DVR_GET_AudioConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetAudio);
}
QV_API long IP_NET_DVR_GET_VideoEncodeConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetVideoEncode);
}
QV_API long IP_NET_DVR_GET_VideoCaptureConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetVideoCapture);
}
QV_API long IP_NET_DVR_GET_VideoOverlayConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetVideoOverlay);
}
QV_API long IP_NET_DVR_GET_AudioCapture(long userID) {
  return GetSection(__FUNCTION__, userID, kGetAudioCapture);
}
QV_API long IP_NET_DVR_GET_AudioEncode(long userID) {
  return GetSection(__FUNCTION__, userID, kGetAudioEncode);
}
QV_API long IP_NET_DVR_GET_VideoMaskConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetVideoMask);
}
QV_API long IP_NET_DVR_GET_VideoROIConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetVideoROI);
}
QV_API long IP_NET_DVR_GET_MediaStreamConfig(long userID) {
  return GetSection(__FUNCTION__, userID, kGetMediaStream);
}

// ---- sets
QV_API long IP_NET_DVR_SET_MediaConfig(long userID, MediaConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetMedia, XMLGET_MediaConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoConfig(long userID, VideoConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetVideo, XMLGET_VideoConfig(cfg));
}
QV_API long IP_NET_DVR_SET_AudioConfig(long userID, AudioConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetAudio, XMLGET_AudioConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoEncodeConfig(long userID, VideoEncodeConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetVideoEncode, XMLGET_VideoEncodeConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoCaptureConfig(long userID, VideoCaptureConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetVideoCapture, XMLGET_VideoCaptureConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoOSDConfig(long userID, VideoOverlayConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetVideoOSD, XMLGET_VideoOverlayConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoMaskConfig(long userID, VideoMaskConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetVideoMask, XMLGET_VideoMaskConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoUserOSDConfig(long userID, VideoUserOverlayConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetVideoUserOSD, XMLGET_VideoUserOverlayConfig(cfg));
}
QV_API long IP_NET_DVR_SET_MediaStreamConfig(long userID, MediaStreamConfig* cfg) {
  return SetSection(__FUNCTION__, userID, kSetMediaStream, XMLGET_MediaStreamConfig(cfg));
}
