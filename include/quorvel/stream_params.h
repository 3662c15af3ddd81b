/*
 * Parameter blocks of a live stream, as the stream source learns them.
 * IP_NET_DVR_GetVideoParam copies the 536-byte video block and
 * IP_NET_DVR_GetAudioParam the 276-byte audio block; a real-data callback of
 * type 2 carries the whole __STREAM_AV_PARAM. The recorder copies the whole
 * record when a recording starts.
 */
#ifndef QUORVEL_STREAM_PARAMS_H
#define QUORVEL_STREAM_PARAMS_H

typedef struct QV_VIDEO_PARAM {
  char codec[32];        /* "H264", "MPEG4", ...; empty: no video (yet) */
  int width;             /* pixels; 0 unknown */
  int height;
  int frame_rate;        /* frames per second, rounded; 0 unknown (a stream that
                          * names none gets it from its first frames' time
                          * stamps, in a parameter block of its own) */
  int bit_rate;          /* bits per second; 0 unknown */
  int config_len;        /* valid bytes in config */
  /* Codec configuration: for H.264 the SPS and PPS as Annex-B NAL units
   * (00 00 00 01 start codes); for MPEG-4 Part 2 the VOL header. */
  unsigned char config[484];
} QV_VIDEO_PARAM;
QV_STATIC_ASSERT(sizeof(QV_VIDEO_PARAM) == 536, "QV_VIDEO_PARAM layout");

typedef struct QV_AUDIO_PARAM {
  char codec[32];        /* "G711U" (mu-law), "G711A" (A-law), "AAC"; empty: no audio */
  int sample_rate;       /* Hz */
  int bits_per_sample;   /* 8 for G.711, 16 for AAC */
  int channels;
  int bit_rate;          /* bits per second; 0 unknown */
  int config_len;        /* valid bytes in config */
  unsigned char config[224]; /* AAC AudioSpecificConfig */
} QV_AUDIO_PARAM;
QV_STATIC_ASSERT(sizeof(QV_AUDIO_PARAM) == 276, "QV_AUDIO_PARAM layout");

typedef struct __STREAM_AV_PARAM {
  QV_VIDEO_PARAM video;
  QV_AUDIO_PARAM audio;
} __STREAM_AV_PARAM;
QV_STATIC_ASSERT(sizeof(__STREAM_AV_PARAM) == 812, "__STREAM_AV_PARAM layout");

#endif /* QUORVEL_STREAM_PARAMS_H */
