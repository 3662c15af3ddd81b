// Exchange rows of the media and stream sections, and of the user text
// lines, which have a set code only and show in the video section.
#include <cstdio>
#include <cstring>

#include "config/media_sections.h"
#include "exchange/exchange_table.h"
#include "quorvel/quorvel.h"

namespace qvexchange {
namespace {

const ExchangeRows kRows({
    MakeRow<MediaConfig>("MediaConfig", 500, 520, IP_NET_DVR_GET_MediaConfig,
                         IP_NET_DVR_GetMediaCfgByXml, IP_NET_DVR_XMLGET_MediaConfig,
                         IP_NET_DVR_SET_MediaConfig, [](MediaConfig* c) {
                           c->Video.Capture.Brightness = 11;
                           c->Audio.Capture.Volume = 33;
                         }),
    MakeRow<VideoConfig>("VideoConfig", 501, 521, IP_NET_DVR_GET_VideoConfig,
                         IP_NET_DVR_Media_getVideoByXml, IP_NET_DVR_XMLGET_VideoConfig,
                         IP_NET_DVR_SET_VideoConfig, [](VideoConfig* c) { c->YUV.FrameRate = 5; }),
    MakeRow<AudioConfig>("AudioConfig", 502, 522, IP_NET_DVR_GET_AudioConfig,
                         IP_NET_DVR_Media_getAudioByXml, IP_NET_DVR_XMLGET_AudioConfig,
                         IP_NET_DVR_SET_AudioConfig,
                         [](AudioConfig* c) { snprintf(c->Encode.EncodeType, sizeof(c->Encode.EncodeType), "G711U"); }),
    MakeRow<VideoEncodeConfig>("VideoEncodeConfig", 503, 523, IP_NET_DVR_GET_VideoEncodeConfig,
                               IP_NET_DVR_Media_getVideoEncodeByXml,
                               IP_NET_DVR_XMLGET_VideoEncodeConfig,
                               IP_NET_DVR_SET_VideoEncodeConfig, [](VideoEncodeConfig* c) {
                                 VideoEncodeStream* sub = GetVideoEncodeCfgByID(c, 1);
                                 sub->BitRate = 768;
                                 snprintf(sub->EncodeFormat, sizeof(sub->EncodeFormat), "H265");
                                 sub->IsH265 = 1;
                               }),
    MakeRow<VideoCaptureConfig>("VideoCaptureConfig", 504, 524, IP_NET_DVR_GET_VideoCaptureConfig,
                                IP_NET_DVR_Media_getVideoCaptureByXml,
                                IP_NET_DVR_XMLGET_VideoCaptureConfig,
                                IP_NET_DVR_SET_VideoCaptureConfig, [](VideoCaptureConfig* c) {
                                  c->IrcutNightStartTime = {19, 30, 0};
                                }),
    MakeRow<VideoOverlayConfig>("VideoOverlayConfig", 505, 525, IP_NET_DVR_GET_VideoOverlayConfig,
                                IP_NET_DVR_Media_getVideoOverlayByXml,
                                IP_NET_DVR_XMLGET_VideoOverlayConfig, IP_NET_DVR_SET_VideoOSDConfig,
                                [](VideoOverlayConfig* c) {
                                  snprintf(c->Title.Title, sizeof(c->Title.Title),
                                           "gate <2> & \"B\"");
                                }),
    MakeRow<VideoMaskConfig>("VideoMaskConfig", 509, 529, IP_NET_DVR_GET_VideoMaskConfig,
                             IP_NET_DVR_Media_getVideoMaskByXml, IP_NET_DVR_XMLGET_VideoMaskConfig,
                             IP_NET_DVR_SET_VideoMaskConfig,
                             [](VideoMaskConfig* c) { c->SubStream[2] = {10, 20, 30, 40}; }),
    MakeRow<VideoUserOverlayConfig>("VideoUserOSDConfig", 501, 531, IP_NET_DVR_GET_VideoConfig,
                                    Media_getVideoUserOverlayByXml, XMLGET_VideoUserOverlayConfig,
                                    IP_NET_DVR_SET_VideoUserOSDConfig,
                                    [](VideoUserOverlayConfig* c) {
                                      c->Count = 2;
                                      snprintf(c->UserOSD[1].TitleUtf8,
                                               sizeof(c->UserOSD[1].TitleUtf8), "second line");
                                    }),
    MakeRow<MediaStreamConfig>("MediaStreamConfig", 600, 620, IP_NET_DVR_GET_MediaStreamConfig,
                               IP_NET_DVR_GetMediaStreamCfgByXml,
                               IP_NET_DVR_XMLGET_MediaStreamConfig,
                               IP_NET_DVR_SET_MediaStreamConfig, [](MediaStreamConfig* c) {
                                 c->StreamAccess.enable_rtmp = 1;
                                 snprintf(c->StreamAccess.rtmp_streamid,
                                          sizeof(c->StreamAccess.rtmp_streamid), "key&1");
                                 c->StreamAccess.Rtmp.TimeSpan.day2 = 0xFF00;
                               }),
});

}  // namespace
}  // namespace qvexchange
