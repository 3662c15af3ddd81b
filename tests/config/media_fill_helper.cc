#include "config/media_fill_helper.h"

#include <cstdio>
#include <cstring>

namespace {

template <size_t N>
void Set(char (&dst)[N], const char* text) {
  snprintf(dst, N, "%s", text);
}

// The run of consecutive members of one type from `first` to `last` (the
// records lay such runs out without padding) gets seed, seed + 1, ...
template <typename T>
long long Number(T* first, T* last, long long seed) {
  for (T* p = first; p <= last; ++p) *p = static_cast<T>(seed++);
  return seed;
}

void FillVideoCapture(VideoCaptureConfig* c) {
  Number(&c->Brightness, &c->Sharpness, -4);
  Number(&c->TVSystem, &c->cropypix, 1000);
  Number(&c->HFlip, &c->IrcutMode, 20);
  Number(&c->IrcutSensitivity, &c->led_brightness_alarm, 4000000000u - 10);
  c->IrcutNightStartTime = {19, 5, 7};
  c->IrcutNightEndTime = {6, 45, 0};
  Number(&c->IrcutKeepColor, &c->WDRMode, 40);
  c->WDRValue = 255;
  c->DfrogFlag = 1;
  c->DfrogValue = 7;
  c->WDRStartTime = {1, 2, 3};
  c->WDREndTime = {23, 59, 58};
  Number(&c->shutter_mode, &c->videoEncodeMode, -70);
  c->light_off_sensitivity = 255;
  c->face_exposure_sensitivity = 3;
}

void FillEncode(VideoEncodeConfig* e) {
  const char* formats[QV_MAX_ENCODE_STREAMS] = {"H265", "H264", "MJPEG"};
  for (int i = 0; i < QV_MAX_ENCODE_STREAMS; ++i) {
    VideoEncodeStream& s = e->Stream[i];
    s.Stream = i;
    s.Enable = i != 1;
    snprintf(s.Resolution, sizeof(s.Resolution), "%dx%d", 1920 >> i, 1080 >> i);
    Set(s.EncodeFormat, formats[i]);
    Set(s.BitRateControl, i ? "VBR<&>" : "CBR");
    Number(&s.Initquant, &s.lbr_noicelevel, 100 * (i + 1));
    s.IsH265 = i == 0;
  }
  Number(&e->Advance.EncodeProfile, &e->Advance.OptimumDistance, 7);
}

void FillAreas(VideoArea* areas, long long seed) {
  for (int i = 0; i < QV_MAX_VIDEO_AREAS; ++i) seed = Number(&areas[i].PosX, &areas[i].Height, seed);
}

void FillVideo(VideoConfig* v) {
  FillVideoCapture(&v->Capture);
  FillEncode(&v->Encode);
  v->Jpeg = {1, 85};

  VideoOverlayConfig& o = v->Overlay;
  Number(&o.Enable, &o.Style, 1);
  o.Time = {-16, 32, "", 3};
  Set(o.Time.Format, "YYYY/MM/DD \"hh\"");
  o.Title.PosX = 10;
  o.Title.PosY = 1040;
  o.Title.PosType = 2;
  o.Title.TitleType = 1;
  Set(o.Title.TitleUtf8, "\xE4\xB8\xAD & title");       // 中 & title
  Set(o.Title.Title, "\xD6\xD0 <gate 'A'>");             // GB2312 中

  FillAreas(v->Mask.MainStream, 1);
  FillAreas(v->Mask.SubStream, 101);
  v->ROI.Enable = 1;
  FillAreas(v->ROI.Area, -50);

  VideoUserOverlayConfig& u = v->UserOverlay;
  u.Count = 3;
  for (int i = 0; i < u.Count; ++i) {
    UserOSDConfig& line = u.UserOSD[i];
    Number(&line.enable, &line.titleType, 10 * i + 1);
    line.color_front = 16777215;
    snprintf(line.TitleUtf8, sizeof(line.TitleUtf8), "line %d: \"quoted\" & more", i);
  }

  v->YUV.Enable = 1;
  Set(v->YUV.Resolution, "640x360");
  v->YUV.FrameRate = 12;
  v->YUV.Format = 2;
}

}  // namespace

void FillMediaConfig(MediaConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  FillVideo(&cfg->Video);
  AudioConfig& a = cfg->Audio;
  Number(&a.Capture.Channels, &a.Capture.mute_ptz_turn, 2);
  a.Encode.Enable = 1;
  a.Encode.SampleRate = 16000;
  Set(a.Encode.EncodeType, "G711U&AAC");
  a.Encode.BitRate = 128;
}

void FillMediaStreamConfig(MediaStreamConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  StreamAccessConfig& s = cfg->StreamAccess;
  Number(&s.Auth, &s.OnvifAuth, 2);
  s.VideoPort = 8554;
  s.WEBPort = 8080;
  s.httpsPort = 8443;
  s.h5Port = 9000;
  Set(s.httpsCertificate, "/etc/ssl/cam&1.crt");
  Set(s.httpsKey, "/etc/ssl/<cam>.key");
  s.enable_comm = 1;
  s.PTZPort = 5001;
  s.rtmp_port = 1936;
  s.enable_hik = 0;
  s.hik_port = 8001;
  s.dh_port = 37778;
  s.hik_auth = 1;
  s.enable_dh = 0;
  s.dh_auth = 1;
  s.enable_tst = 1;
  s.enable_rtmp = 1;
  s.streamno = 1;
  s.rtmp_type = 2;
  Set(s.rtmp_server, "rtmp://push.example/live");
  Set(s.rtmp_appname, "app'1");
  Set(s.rtmp_streamid, "stream?key=a&b=\"c\"");
  s.Multicast0_enable = 1;
  s.Multicast1_enable = 1;
  s.Multicast0_port = 5004;
  s.Multicast1_port = 65535;
  s.Multicast0_IP = 0xE0000001u;  // 224.0.0.1
  s.Multicast1_IP = 0xEFFFFFFAu;
  s.Rtmp.TimeSpan = {1, 2, 4, 8, 16, 32, 0xFFFFFF};
}
