/*
 * Media sections of the configuration: audio and video settings (element
 * MediaConfig) and the exchange functions for them and for the stream
 * services (element MediaStreamConfig, whose record lives in config_types.h
 * because discovery shares it).
 *
 * Plain fixed-size records, copied by value. Text members are zero-terminated
 * char arrays; readers keep at most size - 1 characters. Included from
 * quorvel.h (needs QV_API, QV_STATIC_ASSERT and config_types.h).
 *
 * Reading a record clears it, sets the defaults noted below, then stores
 * every known attribute of the element (numbers as atoi reads them, narrowed
 * to the member) and applies the checks noted below. Unknown attributes and
 * children are ignored; list entries beyond a list's capacity are ignored.
 */
#ifndef QUORVEL_CONFIG_MEDIA_H
#define QUORVEL_CONFIG_MEDIA_H

/* ------------------------------------------------------------------ */
/* Audio (element Audio: Capture, then Encode)                         */
/* ------------------------------------------------------------------ */

/* Audio capture (element Capture inside Audio). */
typedef struct AudioCaptureConfig {
  int Channels;        /* default 1 */
  int BitsPerSample;   /* default 16 */
  int SampleRate;      /* default 8000 */
  int Volume;
  int VolumePlay;      /* default 100 */
  int amplify;         /* default 1 */
  int ra_answer;
  int aec_enable;
  int mute_ptz_turn;
} AudioCaptureConfig;
QV_STATIC_ASSERT(sizeof(AudioCaptureConfig) == 36, "AudioCaptureConfig layout");

/* Audio encoding (element Encode inside Audio). */
typedef struct AudioEncodeConfig {
  int Enable;
  int SampleRate;
  char EncodeType[32];   /* for example "G711A" */
  int BitRate;
} AudioEncodeConfig;
QV_STATIC_ASSERT(sizeof(AudioEncodeConfig) == 44, "AudioEncodeConfig layout");

typedef struct AudioConfig {
  AudioCaptureConfig Capture;
  AudioEncodeConfig Encode;
} AudioConfig;
QV_STATIC_ASSERT(sizeof(AudioConfig) == 80, "AudioConfig layout");

/* ------------------------------------------------------------------ */
/* Video (element Video: Capture, Encode, JpegConfig, Overlay, Mask,   */
/* ROI, UserOverlay, YUV)                                              */
/* ------------------------------------------------------------------ */

/* Image, infrared-cut and exposure settings (element Capture inside Video).
 * Members in writing order. The four times are written "%02d:%02d:%02d" and
 * read as three decimal numbers separated by colons; a text without three
 * numbers leaves the default. */
typedef struct VideoCaptureConfig {
  int Brightness;
  int Contrast;
  int Saturation;
  int Sharpness;
  unsigned int TVSystem;
  unsigned int forct_antiflicker;
  unsigned int cropxpix;
  unsigned int cropypix;
  int HFlip;
  int VFlip;
  int rotate;
  int WB_RGB;
  int BackLight;
  int HLC;
  int TNF;
  int SNF;
  int IrcutMode;
  unsigned int IrcutSensitivity;
  unsigned int IrcutOpenLedDelay;
  unsigned int led_brightness_mode;
  unsigned int led_brightness_value;
  unsigned int led_brightness_alarm;
  DayTime IrcutNightStartTime;   /* default 18:00:00 */
  DayTime IrcutNightEndTime;     /* default 08:00:00 */
  int IrcutKeepColor;
  int led_mode;
  int ispadvmode;
  int bManualGain;
  int gainValue;
  int WDRMode;
  int WDRValue;                  /* default 128; outside 0..255 reads 0 */
  int DfrogFlag;                 /* outside 0..1 reads 0 */
  int DfrogValue;                /* default 128; outside 0..255 reads 0 */
  DayTime WDRStartTime;
  DayTime WDREndTime;
  int shutter_mode;
  int shutter_mode_night;
  int shutter_speed_day;
  int shutter_speed_night;
  int isp_mode_color;
  int isp_mode_night;
  int videoEncodeMode;
  unsigned int light_off_sensitivity;      /* low 8 bits kept */
  unsigned int face_exposure_sensitivity;  /* low 8 bits kept */
} VideoCaptureConfig;
QV_STATIC_ASSERT(sizeof(VideoCaptureConfig) == 208, "VideoCaptureConfig layout");

/* Streams a video encoder serves: 0 main, 1 sub, 2 third. */
#define QV_MAX_ENCODE_STREAMS 3

/* One stream's encoding (element EncodeConfig). */
typedef struct VideoEncodeStream {
  int Stream;                /* stream index; the reader sets it to the slot */
  int Enable;
  char Resolution[32];       /* for example "1920x1080" */
  char EncodeFormat[32];     /* "H264", "H265", ... */
  char BitRateControl[32];   /* "CBR", "VBR", ... */
  int Initquant;
  int BitRateQuality;
  int qp_enable;
  int qp_min;
  int qp_max;
  int BitRate;
  int FrameRate;
  int lbr_enable;
  int lbr_style;
  int lbr_bitratemode;
  int lbr_bitrate;
  int lbr_motionlevel;
  int lbr_noicelevel;
  int IsH265;                /* set by the reader: EncodeFormat is "H265"; not written */
} VideoEncodeStream;
QV_STATIC_ASSERT(sizeof(VideoEncodeStream) == 160, "VideoEncodeStream layout");

/* Encoder settings common to the streams (element AdvanceEncodeConfig). */
typedef struct VideoAdvanceEncode {
  int EncodeProfile;
  int DisablePrivateData;
  int EncMode;
  int NoiceLevel;
  int TwoLensWorkMode;
  int OptimumDistance;
} VideoAdvanceEncode;
QV_STATIC_ASSERT(sizeof(VideoAdvanceEncode) == 24, "VideoAdvanceEncode layout");

/* Video encoding (element Encode inside Video). An EncodeConfig goes to the
 * slot of its Stream attribute; one naming another stream is ignored. All
 * three slots are written, in stream order. */
typedef struct VideoEncodeConfig {
  VideoEncodeStream Stream[QV_MAX_ENCODE_STREAMS];
  VideoAdvanceEncode Advance;
} VideoEncodeConfig;
QV_STATIC_ASSERT(sizeof(VideoEncodeConfig) == 504, "VideoEncodeConfig layout");

/* Snapshots (element JpegConfig). */
typedef struct JpegEncodeConfig {
  int Enable;
  int Quality;
} JpegEncodeConfig;
QV_STATIC_ASSERT(sizeof(JpegEncodeConfig) == 8, "JpegEncodeConfig layout");

/* Areas of a mask or of the regions of interest. */
#define QV_MAX_VIDEO_AREAS 4

/* Area n (1 to 4) is the attributes Area<n>PosX, Area<n>PosY, Area<n>Width
 * and Area<n>Height; Area[0] holds area 1. */
typedef struct VideoArea {
  int PosX;
  int PosY;
  int Width;
  int Height;
} VideoArea;
QV_STATIC_ASSERT(sizeof(VideoArea) == 16, "VideoArea layout");

/* Privacy masks (element Mask with children MainStream and SubStream). */
typedef struct VideoMaskConfig {
  VideoArea MainStream[QV_MAX_VIDEO_AREAS];
  VideoArea SubStream[QV_MAX_VIDEO_AREAS];
} VideoMaskConfig;
QV_STATIC_ASSERT(sizeof(VideoMaskConfig) == 128, "VideoMaskConfig layout");

/* Regions of interest (element ROI). */
typedef struct VideoROIConfig {
  int Enable;
  VideoArea Area[QV_MAX_VIDEO_AREAS];
} VideoROIConfig;
QV_STATIC_ASSERT(sizeof(VideoROIConfig) == 68, "VideoROIConfig layout");

/* The clock overlay (element TimeOverlay inside Overlay). */
typedef struct TimeOverlayConfig {
  int PosX;
  int PosY;
  char Format[32];          /* for example "YYYY-MM-DD hh:mm:ss" */
  int PosType;
} TimeOverlayConfig;
QV_STATIC_ASSERT(sizeof(TimeOverlayConfig) == 44, "TimeOverlayConfig layout");

/* The title overlay (element TitleOverlay inside Overlay). Both texts are
 * kept as the document holds them. */
typedef struct TitleOverlayConfig {
  int PosX;
  int PosY;
  int PosType;
  int TitleType;
  char TitleUtf8[300];      /* room for 199 GB2312 bytes as UTF-8 */
  char Title[200];          /* GB2312 */
} TitleOverlayConfig;
QV_STATIC_ASSERT(sizeof(TitleOverlayConfig) == 516, "TitleOverlayConfig layout");

/* Text overlays (element Overlay with children TimeOverlay, TitleOverlay). */
typedef struct VideoOverlayConfig {
  int Enable;
  int Transparency;
  int RealTransparency;
  int time24or12;
  int ovlayfps;
  int Week;
  int Fontsize;
  int Style;
  TimeOverlayConfig Time;
  TitleOverlayConfig Title;
} VideoOverlayConfig;
QV_STATIC_ASSERT(sizeof(VideoOverlayConfig) == 592, "VideoOverlayConfig layout");

/* One user text line (element UserOSD). */
typedef struct UserOSDConfig {
  int enable;
  int PosType;
  int pos_xscale;
  int pos_yscale;
  int color_front;
  int color_back;
  int transparency;
  int Fontsize;
  int linegap;
  int titleType;
  char TitleUtf8[200];
} UserOSDConfig;
QV_STATIC_ASSERT(sizeof(UserOSDConfig) == 240, "UserOSDConfig layout");

/* User text lines a record holds. */
#define QV_MAX_USER_OSD 8

/* User text lines (element UserOverlay, a list of UserOSD in document
 * order; entries past QV_MAX_USER_OSD are ignored). */
typedef struct VideoUserOverlayConfig {
  int Count;                             /* used entries of UserOSD */
  UserOSDConfig UserOSD[QV_MAX_USER_OSD];
} VideoUserOverlayConfig;
QV_STATIC_ASSERT(sizeof(VideoUserOverlayConfig) == 1924, "VideoUserOverlayConfig layout");

/* Raw picture output (element YUV). */
typedef struct VideoYuvConfig {
  int Enable;
  char Resolution[32];
  int FrameRate;
  int Format;
} VideoYuvConfig;
QV_STATIC_ASSERT(sizeof(VideoYuvConfig) == 44, "VideoYuvConfig layout");

typedef struct VideoConfig {
  VideoCaptureConfig Capture;
  VideoEncodeConfig Encode;
  JpegEncodeConfig Jpeg;
  VideoOverlayConfig Overlay;
  VideoMaskConfig Mask;
  VideoROIConfig ROI;
  VideoUserOverlayConfig UserOverlay;
  VideoYuvConfig YUV;
} VideoConfig;
QV_STATIC_ASSERT(sizeof(VideoConfig) == 3476, "VideoConfig layout");

/* The media section (element MediaConfig: Video, then Audio). */
typedef struct MediaConfig {
  VideoConfig Video;
  AudioConfig Audio;
} MediaConfig;
QV_STATIC_ASSERT(sizeof(MediaConfig) == 3556, "MediaConfig layout");

/* ------------------------------------------------------------------ */
/* Exchange with a camera                                              */
/* ------------------------------------------------------------------ */

/* Section codes (Msg_code of the configuration get and set messages). */
enum {
  QV_CFG_GET_MEDIA = 500, QV_CFG_GET_VIDEO = 501, QV_CFG_GET_AUDIO = 502,
  QV_CFG_GET_VIDEO_ENCODE = 503, QV_CFG_GET_VIDEO_CAPTURE = 504,
  QV_CFG_GET_VIDEO_OVERLAY = 505, QV_CFG_GET_AUDIO_CAPTURE = 507,
  QV_CFG_GET_AUDIO_ENCODE = 508, QV_CFG_GET_VIDEO_MASK = 509, QV_CFG_GET_VIDEO_ROI = 510,
  QV_CFG_SET_MEDIA = 520, QV_CFG_SET_VIDEO = 521, QV_CFG_SET_AUDIO = 522,
  QV_CFG_SET_VIDEO_ENCODE = 523, QV_CFG_SET_VIDEO_CAPTURE = 524,
  QV_CFG_SET_VIDEO_OSD = 525, QV_CFG_SET_VIDEO_MASK = 529, QV_CFG_SET_VIDEO_USER_OSD = 531,
  QV_CFG_GET_MEDIA_STREAM = 600, QV_CFG_SET_MEDIA_STREAM = 620
};

/* Readers: parse a camera's reply (or any XML text) and fill the record from
 * the first element of the section's name. 0, or -1 when the text does not
 * parse, lacks the element or the record is null. Capture and Encode exist
 * under both Video and Audio: the video readers take those under a Video
 * element when the text has one, the first of the name otherwise. */
QV_API int IP_NET_DVR_GetMediaCfgByXml(MediaConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Media_getAudioByXml(AudioConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Media_getVideoByXml(VideoConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Media_getVideoCaptureByXml(VideoCaptureConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Media_getVideoOverlayByXml(VideoOverlayConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Media_getVideoEncodeByXml(VideoEncodeConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Media_getJpegEncodeByXml(JpegEncodeConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Media_getVideoMaskByXml(VideoMaskConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_GetMediaStreamCfgByXml(MediaStreamConfig* cfg, const char* xml);

/* Writers: the section's XML text, newly allocated; the caller releases it
 * with free(). Null for a null record or when memory runs out. */
QV_API char* IP_NET_DVR_XMLGET_MediaConfig(const MediaConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_AudioConfig(const AudioConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_AudioCaptureConfig(const AudioCaptureConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_AudioEncodeConfig(const AudioEncodeConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_VideoConfig(const VideoConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_VideoCaptureConfig(const VideoCaptureConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_VideoEncodeConfig(const VideoEncodeConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_VideoOverlayConfig(const VideoOverlayConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_VideoMaskConfig(const VideoMaskConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_MediaStreamConfig(const MediaStreamConfig* cfg);

/* Gets: ask the camera for a section (a configuration get message with the
 * code in brackets); the reply arrives through the AUX response callback.
 * The queueing result, or -9000002 for an unknown user ID. */
QV_API long IP_NET_DVR_GET_MediaConfig(long userID);           /* 500 */
QV_API long IP_NET_DVR_GET_VideoConfig(long userID);           /* 501 */
QV_API long IP_NET_DVR_GET_AudioConfig(long userID);           /* 502 */
QV_API long IP_NET_DVR_GET_VideoEncodeConfig(long userID);     /* 503 */
QV_API long IP_NET_DVR_GET_VideoCaptureConfig(long userID);    /* 504 */
QV_API long IP_NET_DVR_GET_VideoOverlayConfig(long userID);    /* 505 */
QV_API long IP_NET_DVR_GET_AudioCapture(long userID);          /* 507 */
QV_API long IP_NET_DVR_GET_AudioEncode(long userID);           /* 508 */
QV_API long IP_NET_DVR_GET_VideoMaskConfig(long userID);       /* 509 */
QV_API long IP_NET_DVR_GET_VideoROIConfig(long userID);        /* 510 */
QV_API long IP_NET_DVR_GET_MediaStreamConfig(long userID);     /* 600 */

/* Sets: write the record as XML and send it in a configuration set message
 * with the code in brackets. The queueing result, -9000002 for an unknown
 * user ID, or -8999992 when the record is null or cannot be written. */
QV_API long IP_NET_DVR_SET_MediaConfig(long userID, const MediaConfig* cfg);              /* 520 */
QV_API long IP_NET_DVR_SET_VideoConfig(long userID, const VideoConfig* cfg);              /* 521 */
QV_API long IP_NET_DVR_SET_AudioConfig(long userID, const AudioConfig* cfg);              /* 522 */
QV_API long IP_NET_DVR_SET_VideoEncodeConfig(long userID, const VideoEncodeConfig* cfg);  /* 523 */
QV_API long IP_NET_DVR_SET_VideoCaptureConfig(long userID, const VideoCaptureConfig* cfg); /* 524 */
QV_API long IP_NET_DVR_SET_VideoOSDConfig(long userID, const VideoOverlayConfig* cfg);    /* 525 */
QV_API long IP_NET_DVR_SET_VideoMaskConfig(long userID, const VideoMaskConfig* cfg);      /* 529 */
QV_API long IP_NET_DVR_SET_VideoUserOSDConfig(long userID,
                                              const VideoUserOverlayConfig* cfg);         /* 531 */
QV_API long IP_NET_DVR_SET_MediaStreamConfig(long userID, const MediaStreamConfig* cfg);  /* 620 */

#endif /* QUORVEL_CONFIG_MEDIA_H */
