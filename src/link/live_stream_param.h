// LIVE_STREAM_PARAM: a live stream description as a camera announces it in
// MESSAGE_BODY/TRANS_PARAM, VIDEO_PARAM and AUDIO_PARAM, and its reader.
// Part of the message vocabulary; nothing in the library sends the request
// that this answers.
#pragma once

typedef struct LIVE_STREAM_PARAM {
  int stream_id;
  int video_stream;
  int audio_enable;            // non-zero: the stream has audio
  int multicast;               // non-zero: multicast delivery
  unsigned int multicast_address;  // inet_addr form (network byte order)
  int video_port;
  int audio_port;
  int use_tcp;                 // non-zero: stream over TCP
  char video_encoder[257];     // up to 256 characters, terminated
  int width;
  int height;
  int frame_rate;
  int bit_rate;
  unsigned char config[256];   // decoded from the hexadecimal Config text
  int config_length;
  char audio_encoder[257];     // up to 256 characters, terminated
  int sample_rate;
  int sample_width;
  int channels;
  int audio_bit_rate;
} LIVE_STREAM_PARAM;

// Clears *param and fills it. 0; -1 unparsable message, an announced
// attribute without a value, multicast without an address or audio without
// a port (unless over TCP); -2 TRANS_PARAM, VIDEO_PARAM or (with audio)
// AUDIO_PARAM missing.
int GetLiveStreamParam(char* message, LIVE_STREAM_PARAM* param);
