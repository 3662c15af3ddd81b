/*
 * Remote playback: recordings stored on a logged-in camera, played back
 * over its control link. Included by quorvel.h.
 *
 * IP_NET_DVR_ReplayByTime asks the camera to play from a time; from then on
 * the camera streams the recording and the library hands every whole frame
 * to the replay data callback (IP_NET_DVR_SetReplayDataCallBack), on the
 * session's link thread:
 *
 *   kind QV_REPLAY_KIND_PARAM (2): once per start, before any frame, when the
 *     camera's start reply carries both parameter blocks: one QV_REPLAY_PARAM
 *     (length 1360). extra->flag and extra->timestamp are 0.
 *   kind 0 (video) or the camera's non-zero audio kind (normally 1): one
 *     frame. data points to the frame's bytes followed by a 16-byte
 *     QV_REPLAY_TRAILER; length counts both (frame bytes + 16).
 *     extra->flag is 1 for a video key frame, extra->timestamp the frame's
 *     tick as the camera sent it (milliseconds). The bytes are valid during
 *     the call only.
 *
 * Replies to the camera's replay requests reach the replay event callback
 * (IP_NET_DVR_SetReplayEventCallBack) with the user ID, the reply's code (the
 * action it answers), its flag and its body (null when there is none). The
 * camera's answer to a start (code 0 with a body) is not passed there: it
 * becomes the QV_REPLAY_PARAM record above.
 *
 * A frame is dropped, never handed over damaged: a packet out of sequence,
 * a packet of another frame, a packet longer than the bytes that carry it
 * or a frame larger than 2 MiB costs that frame (with a line in the debug
 * log) and nothing else.
 */
#ifndef QUORVEL_REPLAY_H
#define QUORVEL_REPLAY_H

/* Media kinds of the replay data callback. */
#define QV_REPLAY_KIND_VIDEO 0
#define QV_REPLAY_KIND_AUDIO 1 /* any non-zero kind but 2 is audio */
#define QV_REPLAY_KIND_PARAM 2

/* The 16 bytes behind every frame handed to the replay data callback. */
typedef struct QV_REPLAY_TRAILER {
  unsigned int magic;       /* 0x1A2B3C4D */
  unsigned int reserved;    /* 0 */
  unsigned int frame_index; /* the camera's index of this frame */
  unsigned int key_index;   /* video: index of the latest key frame (this one
                             * when it is a key frame); audio: frame_index */
} QV_REPLAY_TRAILER;
QV_STATIC_ASSERT(sizeof(QV_REPLAY_TRAILER) == 16, "QV_REPLAY_TRAILER layout");
#define QV_REPLAY_TRAILER_MAGIC 0x1A2B3C4Du

/* What a camera said about the recording it starts to play. */
typedef struct QV_REPLAY_PARAM {
  /* The stream's parameter blocks in their current form (536 and 276 bytes,
   * see stream_params.h), converted field by field from the camera's blocks
   * of other sizes. av.video is zero when the camera sent a legacy video
   * block (below 316 bytes), av.audio when its audio block was legacy
   * (below 56 bytes) or failed the check of audio_valid. */
  __STREAM_AV_PARAM av;
  int video_seconds;  /* VideoSeconds of the start reply: the recording's
                       * length in seconds; 0 when not given */
  int video_size;     /* bytes of the camera's decoded VideoParam */
  int audio_size;     /* bytes of its decoded AudioParam */
  int audio_valid;    /* 1: av.audio has 1 to 8 channels, a sample width of
                       * 16, 24 or more bits (a multiple of 8) and a rate of
                       * whole kHz from 8000 on; else 0 */
  unsigned char legacy_video[316]; /* a legacy VideoParam as sent (video_size bytes) */
  unsigned char legacy_audio[56];  /* a legacy AudioParam as sent (audio_size bytes) */
  unsigned char reserved[160];     /* 0 */
} QV_REPLAY_PARAM;
QV_STATIC_ASSERT(sizeof(QV_REPLAY_PARAM) == 1360, "QV_REPLAY_PARAM layout");

/* Actions of IP_NET_DVR_ControlReplay. The library only decides what goes
 * with each: 0 and 7 send no parameter (0), 5 sends the parameter as the
 * position to seek to, the others send it as the play parameter. What each
 * does is the camera's; the names are how the emulator reads them. */
enum {
  QV_REPLAY_PLAY = 0,   /* play on at normal speed */
  QV_REPLAY_PAUSE = 1,
  QV_REPLAY_RESUME = 2,
  QV_REPLAY_FAST = 3,   /* parameter: speed factor */
  QV_REPLAY_SLOW = 4,   /* parameter: slow-down factor */
  QV_REPLAY_SEEK = 5,   /* parameter: time to continue from (seconds, as given
                         * to IP_NET_DVR_ReplayByTime) */
  QV_REPLAY_STEP = 6,   /* parameter: frames to advance while paused */
  QV_REPLAY_STOP = 7
};

/* -1 not known yet (before the camera's ability answer after login), 0 the
 * camera cannot replay, 1 it can; -9000002 for an unknown ID. */
QV_API long IP_NET_DVR_GetReplayAblity(long userID);

/* Asks the camera to play its recordings from `time` (seconds, on the
 * camera's clock as the replay distribution replies count it). 0 once
 * asked; -8999979 unless the camera can replay (ability 1); -8999997 /
 * -8999996 before login. */
QV_API long IP_NET_DVR_ReplayByTime(long userID, long time);

/* Sends a replay action (above) with its parameter. 0 once asked;
 * -8999981 before any IP_NET_DVR_ReplayByTime of this session; -8999980 for
 * an action outside 0..7; -8999997 / -8999996 before login. */
QV_API long IP_NET_DVR_ControlReplay(long userID, long action, long parameter);

/* Does nothing: playing by file name is not offered through this call. 0. */
QV_API long IP_NET_DVR_PlayDeviceFile(char* device, char* file);

#endif /* QUORVEL_REPLAY_H */
