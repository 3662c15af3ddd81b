/*
 * Live streams: real play of a camera's RTSP stream, frame delivery to the
 * host, and the stream's parameter blocks.
 *
 * A real-play handle is the address of the library's stream object: never 0,
 * unique while the stream lives. Unknown handles answer QV_E_UNKNOWN_HANDLE.
 *
 * Every stream has a thread of its own that runs the RTSP client. It connects
 * to the stream address with the user name and password (percent-encoded
 * into the address, so any character may be used), and delivers each frame
 * to the stream's own callback or, for a stream opened without one, to the
 * callback of IP_NET_DVR_SetRealDataCallBack. Callbacks run on the stream's
 * thread. Once IP_NET_DVR_StopRealPlay has returned, the stream's callback is
 * not called again; a callback may stop its own stream (the call returns at
 * once and the stream ends when the callback returns).
 *
 * What a callback receives (type argument):
 *  - QV_FRAME_VIDEO: one video frame. H.264 arrives as an Annex-B access unit
 *    (00 00 00 01 start codes); every key frame carries the SPS and PPS ahead
 *    of its slices, so a recording or a decoder may start at any key frame.
 *    MPEG-4 Part 2 arrives as one VOP per frame; the VOL header is in the
 *    video parameter block. extra->flag is 1 for a key frame, else 0.
 *  - QV_FRAME_AUDIO: one audio frame: G.711 samples (mu-law or A-law, 8 bits
 *    each), or one raw AAC frame (no ADTS header; the AudioSpecificConfig is
 *    in the audio parameter block). extra->flag is 0.
 *  - QV_FRAME_AVPARAM: the whole __STREAM_AV_PARAM (812 bytes), each time the
 *    client learns or relearns the stream's parameters (first after connect).
 * extra->timestamp is in milliseconds on one clock for audio and video, taken
 * from the stream's own time stamps and increasing within each medium.
 * extra->user is the ClientInfo's user_data, or for the global callback the
 * user pointer given to IP_NET_DVR_SetRealDataCallBack. The bytes are valid
 * only during the call.
 *
 * Connection state is reported through the status event callback
 * (IP_NET_DVR_SetStatusEventCallBack) with the real-play handle as the id:
 * EVENT_CONNECTRTSPOK when the RTSP session is up; EVENT_CONNECTRTSPERROR
 * when the camera cannot be reached or the session fails; EVENT_RTSP_AUTHERROR
 * when the camera refuses the user name or password; EVENT_URLERROR when the
 * address cannot be used (no retry then); EVENT_RECVVIDEOAUDIOPARAM when the
 * parameter blocks were (re)filled; EVENT_RTSPTHREADEXIT when the stream's
 * thread ends. While auto-reconnect is on (the default), a lost or refused
 * connection is retried every 3 seconds.
 *
 * A watchdog looks at every stream each 3 seconds. A stream that has not
 * delivered a frame for 10 seconds since its last frame (or since its RTSP
 * session first came up) is stopped once; it stays registered, without
 * frames, until IP_NET_DVR_StopRealPlay.
 *
 * Streams may be started and stopped from any thread, but the host should
 * not start and stop the same stream from two threads at once.
 *
 * IP_NET_DVR_StopAllRealPlay and IP_NET_DVR_Cleanup stop every stream and
 * wait for their threads, those forgotten by IP_NET_DVR_SetAutoReconnect or
 * IP_NET_DVR_Reconnect included.
 */
#ifndef QUORVEL_STREAM_H
#define QUORVEL_STREAM_H

#include <stddef.h>

/* Data types of the real-data callback. */
#define QV_FRAME_VIDEO 0
#define QV_FRAME_AUDIO 1
#define QV_FRAME_AVPARAM 2

/* How the stream's media travels: */
#define QV_LINK_TCP 0 /* RTP interleaved in the RTSP TCP connection (default) */
#define QV_LINK_UDP 1 /* RTP over UDP; any other value is taken as QV_LINK_TCP */

/* What the host says about the stream it wants. */
typedef struct ClientInfo {
  int port;                     /* RTSP port of the camera */
  int link_mode;                /* QV_LINK_TCP or QV_LINK_UDP */
  unsigned short stream_index;  /* 0 main stream, 1..4 sub streams */
  unsigned short codec_family;  /* 0 MPEG-4 ("/mpeg4", "/mpeg4cif"); else H.264 */
  void* user_data;              /* returned in every FRAME_EXTDATA of the stream */
} ClientInfo;
QV_STATIC_ASSERT(sizeof(ClientInfo) == 24, "ClientInfo layout");
QV_STATIC_ASSERT(offsetof(ClientInfo, stream_index) == 8, "ClientInfo layout");
QV_STATIC_ASSERT(offsetof(ClientInfo, codec_family) == 10, "ClientInfo layout");
QV_STATIC_ASSERT(offsetof(ClientInfo, user_data) == 16, "ClientInfo layout");

/* Real-data callback: handle, data type (QV_FRAME_*), bytes, length, extra.
 * The result is ignored. */
typedef long (*QV_RealDataCallBack)(long handle, unsigned long type,
                                    char* data, unsigned long length,
                                    FRAME_EXTDATA* extra);

/* Opens the stream of the camera at `address` (a host name or dotted address;
 * text that contains "vxr://" is used as it stands, with its own scheme).
 * The stream address is "rtsp://<address>:<port><path>" where the path is
 * "/mpeg4" (codec_family 0, stream_index 0), "/mpeg4cif" (codec_family 0,
 * other indices), or empty for any non-zero codec_family. user and password
 * may be null (no credentials). `callback` is required. The last argument
 * is not used. Returns the real-play handle, or QV_E_REALPLAY_ARG when info,
 * address or callback is null. */
QV_API long IP_NET_DVR_RealPlayEx(const char* address, const char* user,
                                  const char* password,
                                  QV_RealDataCallBack callback,
                                  ClientInfo* info, int unused);

/* Opens the stream of a logged-in camera (user_id from IP_NET_DVR_Login):
 * the camera's address, user name and password are those of its session,
 * and the stream address is always "rtsp://<camera address>:<port><path>"
 * with the port and path from `info` as for IP_NET_DVR_RealPlayEx (no
 * "vxr://" rule here). The session only lends its address and credentials:
 * the stream runs on its own and outlives a logout. The session need not be
 * logged in yet. The second and last arguments are not used. Returns the
 * real-play handle, or QV_E_REALPLAY_ARG for an unknown user_id, a null info
 * or a null callback. */
QV_API long IP_NET_DVR_RealPlay(long user_id, int unused, QV_RealDataCallBack callback,
                                ClientInfo* info, int unused2);

/* Stops the stream, waits for its thread, forgets the handle. 0, or
 * QV_E_UNKNOWN_HANDLE. */
QV_API long IP_NET_DVR_StopRealPlay(long handle);

/* The fallback callback, for streams that have none of their own. The open
 * functions above require a callback, so it is not called by them; it is
 * kept for hosts written against it. Replaces the previous pair. 0. */
QV_API long IP_NET_DVR_SetRealDataCallBack(QV_RealDataCallBack callback,
                                           void* user);

/* Copies the stream's 536-byte video block / 276-byte audio block as the
 * client knows them (all zero before the stream's parameters are known).
 * 0, QV_E_UNKNOWN_HANDLE, or QV_E_INVALID_ARG for a null destination. */
QV_API long IP_NET_DVR_GetVideoParam(long handle, QV_VIDEO_PARAM* video);
QV_API long IP_NET_DVR_GetAudioParam(long handle, QV_AUDIO_PARAM* audio);

/* Appends the stream statistics table header to the file (and prints it).
 * 0, or -1 for a null or empty path or a file that cannot be opened. */
QV_API long IP_NET_DVR_WriteTestResult(const char* path);

/* ------------------------------------------------------------------ */
/* Recording to AVI files                                              */
/* ------------------------------------------------------------------ */
/* Where files go, their names, lengths, free-space rule, format and the
 * record events (status callback, id = the handle) are described in
 * docs/recording.md. */

#define QV_E_RECORD_RUNNING     (-8999973) /* the stream is already recording */
#define QV_E_RECORD_NOT_RUNNING (-8999972) /* the stream is not recording */
#define QV_E_RECORD_THREAD      (-8999971) /* the record thread did not start */

/* Records a playing stream. `name` ending in ".avi" or ".AVI" (and longer
 * than 4 characters): exactly one file of that name, recording `a` seconds
 * (b is ignored). Any other name: a storage directory, files of `a` seconds
 * each for `b` seconds in all. The recording describes the stream by its
 * parameters as they are known when it starts (the callback of type
 * QV_FRAME_AVPARAM); started before they have arrived, it records with the
 * defaults of docs/recording.md. 0; QV_E_BAD_RECORD_NAME for a name of at
 * most one character; QV_E_RECORD_RUNNING; QV_E_RECORD_THREAD;
 * QV_E_UNKNOWN_HANDLE. Stopping the stream stops its recording. */
QV_API long IP_NET_DVR_StartRecord(long handle, const char* name, int a, int b);

/* Ends the recording; the open file is closed and given its final name
 * before this returns. Called from the status callback of a record event
 * (which runs on the recording's own thread) it returns at once, and the
 * file is closed when the callback has returned; the same holds for
 * IP_NET_DVR_StopRealPlay and IP_NET_DVR_StopRecordStream there. 0,
 * QV_E_RECORD_NOT_RUNNING or QV_E_UNKNOWN_HANDLE. */
QV_API long IP_NET_DVR_StopRecord(long handle);

/* Recording of frames that the host supplies (from its own source or a
 * file), with the same recorder, names and events as IP_NET_DVR_StartRecord.
 * `param` describes the stream as a QV_FRAME_AVPARAM block would (codec
 * names "H264" or "MPEG4", "G711U"/"G711A" or "AAC", sizes, rates, the
 * MPEG-4 VOL header in video.config); name, a and b as for
 * IP_NET_DVR_StartRecord. Returns a handle of its own (positive) for the
 * two calls below, or a negative code (QV_E_INVALID_ARG for a null param,
 * or one of IP_NET_DVR_StartRecord's). The handle is not a real-play handle
 * of a camera: no callback receives its frames. */
QV_API long IP_NET_DVR_StartRecordStream(const __STREAM_AV_PARAM* param,
                                         const char* name, int a, int b);

/* One frame of a host-fed recording: type QV_FRAME_VIDEO (one access unit
 * or VOP; flag 1 for a key frame: recording starts at the first one) or
 * QV_FRAME_AUDIO (flag 0); timestamp in milliseconds on one clock for both.
 * The bytes are copied. The recorder keeps up to 29 frames of each kind in
 * hand; a faster host loses the oldest. 0; QV_E_INVALID_ARG for another
 * type, null data or length <= 0; QV_E_RECORD_NOT_RUNNING after
 * IP_NET_DVR_StopRecord on the handle; QV_E_UNKNOWN_HANDLE. */
QV_API long IP_NET_DVR_InputRecordStream(long handle, int type,
                                         const unsigned char* data, int length,
                                         int flag, double timestamp);

/* Ends a host-fed recording (the open file is closed and renamed) and
 * forgets the handle. 0 or QV_E_UNKNOWN_HANDLE. */
QV_API long IP_NET_DVR_StopRecordStream(long handle);

#endif /* QUORVEL_STREAM_H */
