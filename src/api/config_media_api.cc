// Exported exchange functions of the media and stream sections: readers and
// writers forwarded to the configuration model, and the configuration get
// and set messages with their section codes.
#include <cstdlib>
#include <cstring>

#include "base/debug_log.h"
#include "config/media_sections.h"
#include "quorvel/quorvel.h"

namespace {

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
QV_API char* IP_NET_DVR_XMLGET_MediaConfig(const MediaConfig* cfg) { return XMLGET_MediaConfig(cfg); }
QV_API char* IP_NET_DVR_XMLGET_AudioConfig(const AudioConfig* cfg) { return XMLGET_AudioConfig(cfg); }
QV_API char* IP_NET_DVR_XMLGET_AudioCaptureConfig(const AudioCaptureConfig* cfg) {
  return XMLGET_AudioCaptureConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_AudioEncodeConfig(const AudioEncodeConfig* cfg) {
  return XMLGET_AudioEncodeConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoConfig(const VideoConfig* cfg) { return XMLGET_VideoConfig(cfg); }
QV_API char* IP_NET_DVR_XMLGET_VideoCaptureConfig(const VideoCaptureConfig* cfg) {
  return XMLGET_VideoCaptureConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoEncodeConfig(const VideoEncodeConfig* cfg) {
  return XMLGET_VideoEncodeConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoOverlayConfig(const VideoOverlayConfig* cfg) {
  return XMLGET_VideoOverlayConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_VideoMaskConfig(const VideoMaskConfig* cfg) {
  return XMLGET_VideoMaskConfig(cfg);
}
QV_API char* IP_NET_DVR_XMLGET_MediaStreamConfig(const MediaStreamConfig* cfg) {
  return XMLGET_MediaStreamConfig(cfg);
}

// ---- gets
QV_API long IP_NET_DVR_GET_MediaConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_MEDIA);
}
QV_API long IP_NET_DVR_GET_VideoConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_VIDEO);
}
QV_API long IP_NET_DVR_GET_AudioConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_AUDIO);
}
QV_API long IP_NET_DVR_GET_VideoEncodeConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_VIDEO_ENCODE);
}
QV_API long IP_NET_DVR_GET_VideoCaptureConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_VIDEO_CAPTURE);
}
QV_API long IP_NET_DVR_GET_VideoOverlayConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_VIDEO_OVERLAY);
}
QV_API long IP_NET_DVR_GET_AudioCapture(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_AUDIO_CAPTURE);
}
QV_API long IP_NET_DVR_GET_AudioEncode(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_AUDIO_ENCODE);
}
QV_API long IP_NET_DVR_GET_VideoMaskConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_VIDEO_MASK);
}
QV_API long IP_NET_DVR_GET_VideoROIConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_VIDEO_ROI);
}
QV_API long IP_NET_DVR_GET_MediaStreamConfig(long userID) {
  return GetSection(__FUNCTION__, userID, QV_CFG_GET_MEDIA_STREAM);
}

// ---- sets
QV_API long IP_NET_DVR_SET_MediaConfig(long userID, const MediaConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_MEDIA, XMLGET_MediaConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoConfig(long userID, const VideoConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_VIDEO, XMLGET_VideoConfig(cfg));
}
QV_API long IP_NET_DVR_SET_AudioConfig(long userID, const AudioConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_AUDIO, XMLGET_AudioConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoEncodeConfig(long userID, const VideoEncodeConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_VIDEO_ENCODE, XMLGET_VideoEncodeConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoCaptureConfig(long userID, const VideoCaptureConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_VIDEO_CAPTURE, XMLGET_VideoCaptureConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoOSDConfig(long userID, const VideoOverlayConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_VIDEO_OSD, XMLGET_VideoOverlayConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoMaskConfig(long userID, const VideoMaskConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_VIDEO_MASK, XMLGET_VideoMaskConfig(cfg));
}
QV_API long IP_NET_DVR_SET_VideoUserOSDConfig(long userID, const VideoUserOverlayConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_VIDEO_USER_OSD, XMLGET_VideoUserOverlayConfig(cfg));
}
QV_API long IP_NET_DVR_SET_MediaStreamConfig(long userID, const MediaStreamConfig* cfg) {
  return SetSection(__FUNCTION__, userID, QV_CFG_SET_MEDIA_STREAM, XMLGET_MediaStreamConfig(cfg));
}
