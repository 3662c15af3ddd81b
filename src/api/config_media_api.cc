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

// The exported name of each function is the model's name behind IP_NET_DVR_.
#define QV_MEDIA_READER(Rec, name) \
  QV_API int IP_NET_DVR_##name(Rec* cfg, const char* xml) { return name(cfg, xml); }
#define QV_MEDIA_WRITER(Rec, name) \
  QV_API char* IP_NET_DVR_##name(const Rec* cfg) { return name(cfg); }
#define QV_MEDIA_GET(name, code) \
  QV_API long IP_NET_DVR_GET_##name(long userID) { return GetSection(__FUNCTION__, userID, code); }
#define QV_MEDIA_SET(name, Rec, code, writer)                           \
  QV_API long IP_NET_DVR_SET_##name(long userID, const Rec* cfg) {      \
    return SetSection(__FUNCTION__, userID, code, writer(cfg));         \
  }

QV_MEDIA_READER(MediaConfig, GetMediaCfgByXml)
QV_MEDIA_READER(AudioConfig, Media_getAudioByXml)
QV_MEDIA_READER(VideoConfig, Media_getVideoByXml)
QV_MEDIA_READER(VideoCaptureConfig, Media_getVideoCaptureByXml)
QV_MEDIA_READER(VideoOverlayConfig, Media_getVideoOverlayByXml)
QV_MEDIA_READER(VideoEncodeConfig, Media_getVideoEncodeByXml)
QV_MEDIA_READER(JpegEncodeConfig, Media_getJpegEncodeByXml)
QV_MEDIA_READER(VideoMaskConfig, Media_getVideoMaskByXml)
QV_MEDIA_READER(MediaStreamConfig, GetMediaStreamCfgByXml)

QV_MEDIA_WRITER(MediaConfig, XMLGET_MediaConfig)
QV_MEDIA_WRITER(AudioConfig, XMLGET_AudioConfig)
QV_MEDIA_WRITER(AudioCaptureConfig, XMLGET_AudioCaptureConfig)
QV_MEDIA_WRITER(AudioEncodeConfig, XMLGET_AudioEncodeConfig)
QV_MEDIA_WRITER(VideoConfig, XMLGET_VideoConfig)
QV_MEDIA_WRITER(VideoCaptureConfig, XMLGET_VideoCaptureConfig)
QV_MEDIA_WRITER(VideoEncodeConfig, XMLGET_VideoEncodeConfig)
QV_MEDIA_WRITER(VideoOverlayConfig, XMLGET_VideoOverlayConfig)
QV_MEDIA_WRITER(VideoMaskConfig, XMLGET_VideoMaskConfig)
QV_MEDIA_WRITER(MediaStreamConfig, XMLGET_MediaStreamConfig)

QV_MEDIA_GET(MediaConfig, QV_CFG_GET_MEDIA)
QV_MEDIA_GET(VideoConfig, QV_CFG_GET_VIDEO)
QV_MEDIA_GET(AudioConfig, QV_CFG_GET_AUDIO)
QV_MEDIA_GET(VideoEncodeConfig, QV_CFG_GET_VIDEO_ENCODE)
QV_MEDIA_GET(VideoCaptureConfig, QV_CFG_GET_VIDEO_CAPTURE)
QV_MEDIA_GET(VideoOverlayConfig, QV_CFG_GET_VIDEO_OVERLAY)
QV_MEDIA_GET(AudioCapture, QV_CFG_GET_AUDIO_CAPTURE)
QV_MEDIA_GET(AudioEncode, QV_CFG_GET_AUDIO_ENCODE)
QV_MEDIA_GET(VideoMaskConfig, QV_CFG_GET_VIDEO_MASK)
QV_MEDIA_GET(VideoROIConfig, QV_CFG_GET_VIDEO_ROI)
QV_MEDIA_GET(MediaStreamConfig, QV_CFG_GET_MEDIA_STREAM)

QV_MEDIA_SET(MediaConfig, MediaConfig, QV_CFG_SET_MEDIA, XMLGET_MediaConfig)
QV_MEDIA_SET(VideoConfig, VideoConfig, QV_CFG_SET_VIDEO, XMLGET_VideoConfig)
QV_MEDIA_SET(AudioConfig, AudioConfig, QV_CFG_SET_AUDIO, XMLGET_AudioConfig)
QV_MEDIA_SET(VideoEncodeConfig, VideoEncodeConfig, QV_CFG_SET_VIDEO_ENCODE,
             XMLGET_VideoEncodeConfig)
QV_MEDIA_SET(VideoCaptureConfig, VideoCaptureConfig, QV_CFG_SET_VIDEO_CAPTURE,
             XMLGET_VideoCaptureConfig)
QV_MEDIA_SET(VideoOSDConfig, VideoOverlayConfig, QV_CFG_SET_VIDEO_OSD, XMLGET_VideoOverlayConfig)
QV_MEDIA_SET(VideoMaskConfig, VideoMaskConfig, QV_CFG_SET_VIDEO_MASK, XMLGET_VideoMaskConfig)
QV_MEDIA_SET(VideoUserOSDConfig, VideoUserOverlayConfig, QV_CFG_SET_VIDEO_USER_OSD,
             XMLGET_VideoUserOverlayConfig)
QV_MEDIA_SET(MediaStreamConfig, MediaStreamConfig, QV_CFG_SET_MEDIA_STREAM,
             XMLGET_MediaStreamConfig)
