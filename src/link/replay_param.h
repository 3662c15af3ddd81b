// The parameter record of a replay start: the camera's Base64 VideoParam and
// AudioParam blocks, decoded and brought into the current block layouts.
#pragma once

#include "quorvel/quorvel.h"

// Fills *out (zeroed first) from the decoded blocks. A video block of 316
// bytes or more (536 is the current size) is taken field by field, with a
// configuration area of its size minus the 52 bytes ahead of it; a shorter
// one is kept as it is in legacy_video. The audio block likewise from 56
// bytes on (276 current), and it must also pass the audio check, else
// av.audio stays zero and audio_valid 0.
void MakeReplayParam(const unsigned char* video, int video_len, const unsigned char* audio,
                     int audio_len, int video_seconds, QV_REPLAY_PARAM* out);

// Decodes a Base64 text into a new array (delete[]); its length in *len.
// Null for a null text.
unsigned char* DecodeParamBlock(const char* text, int* len);
