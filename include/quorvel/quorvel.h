/*
 * Quorvel: client library for IP cameras.
 *
 * This is the one header a host includes. It is plain C (C11 or later) and
 * C++; every function is exported from libquorvel.so under its plain name.
 *
 * Rules that hold for the whole interface:
 *  - `long` and pointers are 64-bit (LP64 targets: aarch64, x86-64).
 *  - A result of 0, or a positive user ID or handle, is success. Failures
 *    are the negative QV_E_* codes below; some functions document others.
 *  - No function throws or aborts the process on bad input or on anything
 *    a camera sends.
 *  - Callbacks run on the library's own threads (a session's link thread,
 *    a stream's thread) and must not block for long. Register them before
 *    logging in: the setters take no lock.
 *  - Ownership: arrays returned by readers are released by the caller with
 *    delete[] (from C++) ; texts returned by the XMLGET writers with free().
 *  - Call IP_NET_DVR_Init before anything that touches the network: it makes
 *    the process ignore SIGPIPE, so that writing to a socket a camera has
 *    closed returns an error instead of ending the host process.
 */
#ifndef QUORVEL_QUORVEL_H
#define QUORVEL_QUORVEL_H

#if defined(__cplusplus)
#define QV_EXTERN_C extern "C"
#define QV_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define QV_EXTERN_C extern
#define QV_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

/* The one export macro: everything else in the library is hidden. */
#define QV_API QV_EXTERN_C __attribute__((visibility("default")))

QV_STATIC_ASSERT(sizeof(long) == 8, "Quorvel needs an LP64 target");
QV_STATIC_ASSERT(sizeof(void*) == 8, "Quorvel needs an LP64 target");

/* ------------------------------------------------------------------ */
/* Result codes                                                        */
/* ------------------------------------------------------------------ */
#define QV_OK                           0
#define QV_E_UNKNOWN_USER        (-9000002) /* the user ID names no logged-in device */
#define QV_E_TALK_NOT_RUNNING    (-8999998) /* voice talk is not running */
#define QV_E_NOT_CONNECTED       (-8999997) /* the session's TCP link is not up */
#define QV_E_NOT_LOGGED_IN       (-8999996) /* connected but not logged in */
#define QV_E_MSG_TYPE            (-8999995) /* message type not allowed */
#define QV_E_NO_MEMORY           (-8999994) /* a request could not be built or queued */
#define QV_E_INVALID_ARG         (-8999992) /* invalid argument */
#define QV_E_THREAD              (-8999990) /* a worker could not be started, or reconnect refused */
#define QV_E_UNKNOWN_HANDLE      (-8999989) /* unknown real-play handle */
#define QV_E_UPLOAD_BUSY         (-8999988) /* an upload is in progress */
#define QV_E_DOWNLOAD_BUSY       (-8999987) /* a download is in progress */
#define QV_E_TALK_BUSY           (-8999986) /* voice talk is running, or already started */
#define QV_E_TRANSFER_STOP       (-8999985) /* transfer stop refused */
#define QV_E_WRONG_DIRECTION     (-8999984) /* progress asked for the other transfer direction */
#define QV_E_UNKNOWN_PTZ_CMD     (-8999983) /* unknown PTZ or preset command */
#define QV_E_FILE_MISSING        (-8999982) /* local file missing or not openable */
#define QV_E_NO_PLAY_FILE        (-8999981) /* remote playback: no file is playing */
#define QV_E_PLAY_ACTION         (-8999980) /* remote playback: unknown control action */
#define QV_E_REPLAY_UNSUPPORTED  (-8999979) /* remote playback: device cannot replay */
#define QV_E_BUFFER_TOO_SMALL    (-8999978) /* the caller's buffer is too small */
#define QV_E_BAD_REPLY           (-8999977) /* the reply XML is unusable */
#define QV_E_RECORD_FIRST        (-8999973) /* recording failures run from here ... */
#define QV_E_RECORD_LAST         (-8999963) /* ... to here */
#define QV_E_BAD_RECORD_NAME     (-8999963) /* record name of at most one character */
#define QV_E_SNAP_TIMEOUT        (-8999961) /* snapshot timed out */
#define QV_E_SOCKET              (-1234567) /* socket error, or no callback registered */
#define QV_E_REALPLAY_ARG         (-100234) /* bad real-play argument or login handle */
#define QV_E_UNSUPPORTED               (-1) /* not supported, or a generic failure */

/* ------------------------------------------------------------------ */
/* Status events (eventCode of the status event callback)              */
/* The spellings are the system's own, "EVNET" included.               */
/* ------------------------------------------------------------------ */
enum {
  EVENT_CONNECTING = 0,
  EVENT_CONNECTOK = 1,
  EVENT_CONNECTFAILED = 2,
  EVENT_SOCKETERROR = 3,
  EVENT_LOGINOK = 4,
  EVENT_LOGINFAILED = 5,
  EVENT_STARTAUDIOOK = 6,
  EVENT_STARTAUDIOFAILED = 7,
  EVENT_STOPAUDIOOK = 8,
  EVENT_STOPAUDIOFAILED = 9,
  EVENT_SENDPTZOK = 10,
  EVENT_SENDPTZFAILED = 11,
  EVENT_SENDAUXOK = 12,
  EVENT_SENDAUXFAILED = 13,
  EVENT_UPLOADOK = 14,
  EVENT_UPLOADFAILED = 15,
  EVENT_DOWNLOADOK = 16,
  EVENT_DOWNLOADFAILED = 17,
  EVENT_REMOVEOK = 18,
  EVENT_REMOVEFAILED = 19,
  EVENT_SENDPTZERROR = 20,
  EVENT_PTZPRESETINFO = 21,
  EVNET_PTZNOPRESETINFO = 22,
  EVENT_PTZALARM = 23,
  EVENT_RECVVIDEOPARAM = 24,
  EVENT_RECVAUDIOPARAM = 25,
  EVENT_CONNECTRTSPERROR = 26,
  EVENT_CONNECTRTSPOK = 27,
  EVENT_RTSPTHREADEXIT = 28,
  EVENT_URLERROR = 29,
  EVENT_RECVVIDEOAUDIOPARAM = 30,
  EVENT_LOGIN_USERERROR = 31,
  EVENT_LOGOUT_FINISH = 32,
  EVENT_LOGIN_RECONNECT = 33,
  EVENT_LOGIN_HEARTBEAT_LOST = 34,
  EVENT_STARTAUDIO_ISBUSY = 35,
  EVENT_STARTAUDIO_PARAMERROR = 36,
  EVENT_STARTAUDIO_AUDIODDISABLED = 37,
  EVENT_CONNECT_RTSPSERVER_ERROR = 38,
  EVENT_CREATE_RTSPCLIENT_ERROR = 39,
  EVENT_GET_RTSP_CMDOPTION_ERROR = 40,
  EVENT_RTSP_AUTHERROR = 41,
  EVNET_RECORD_FILEBEGIN = 42,
  EVENT_RECORD_FILEEND = 43,
  EVENT_RECORD_TASKEND = 44,
  EVENT_RECORD_DISKFREESPACE_TOOLOW = 45,
  EVNET_RECORD_FILEBEGIN_ERROR = 46,
  EVNET_RECORD_WRITE_FILE_ERROR = 47,
  EVENT_RECORD_INITAVIHEAD_ERROR = 48,
  EVENT_RECORD_MEDIA_PARAM_ERROR = 49
};

#include "quorvel/records.h"
#include "quorvel/config_types.h"
#include "quorvel/config_alarm.h"
#include "quorvel/config_system.h"
#include "quorvel/config_media.h"
#include "quorvel/config_document.h"
#include "quorvel/stream_params.h"
#include "quorvel/stream.h"

/* ------------------------------------------------------------------ */
/* Host callbacks                                                      */
/* ------------------------------------------------------------------ */

/* A session (id = user ID) or a live stream reports a state change. data is
 * a text, or for EVENT_PTZALARM a pointer to an ALARM_ENTRY. The result goes
 * back to the reporter. */
typedef long (*QV_StatusEventCallBack)(long id, long eventCode,
                                       const char* data, void* user);

/* A PTZ or auxiliary reply arrived. code: low 24 bits are the reply's message
 * code, high 8 bits the high 8 bits of the reply's flag (sign-extended). */
typedef long (*QV_AUXResponseCallBack)(long userID, long code,
                                       const char* xml, void* user);

/* Kept and cleared with the others, but never called: this platform has no
 * window messages to deliver exceptions through. */
typedef long (*QV_ExceptionCallBack)(long userID, long code, void* user);

/* Remote playback events: user ID, code, flag, body (or null), user. */
typedef long (*QV_ReplayEventCallBack)(long userID, long code, long flag,
                                       char* body, void* user);

/* Remote playback data: user ID, media kind, bytes, length, extra record.
 * The registered user pointer arrives in extra->user. */
typedef long (*QV_ReplayDataCallBack)(long userID, unsigned long kind,
                                      char* data, unsigned long length,
                                      FRAME_EXTDATA* extra);

/* ------------------------------------------------------------------ */
/* Library lifecycle                                                   */
/* ------------------------------------------------------------------ */

/* Ignores SIGPIPE for the process and starts the debug log (counted: each
 * Init wants one Cleanup). Always 0. */
QV_API int IP_NET_DVR_Init(void);

/* Clears the status, AUX-response and exception callbacks, stops every
 * session and live stream (all are signalled first, then each is waited
 * for), and releases the debug log. Safe without Init and when repeated.
 * Returns the OR of the two registries' release results (0). */
QV_API int IP_NET_DVR_Cleanup(void);

/* Logs out every device. 0. */
QV_API long IP_NET_DVR_LogoutAll(void);

/* Asks every live stream to stop and logs out every device. */
QV_API long IP_NET_DVR_StopAllRealPlay(void);

/* 120524100 */
QV_API long IP_NET_DVR_GetSDKVersion(void);
/* 2012052413 */
QV_API long IP_NET_DVR_GetSDKBuildVersion(void);
/* Milliseconds of the monotonic clock. */
QV_API long IP_NET_DVR_Get_Timestamp(void);

/* Log sinks. mode 0: file and UDP output off. Otherwise the log folder
 * becomes `directory` (at most 255 characters), bit value 2 turns UDP output
 * (to the monitor address, port 3000) on, bit value 1 file output on, and if
 * neither is on afterwards, file output is turned on. With file output on,
 * every log line of the library is written to
 * <dir>/Quorvel_<yyyy><mm><dd>_<hhmmss>_<n>.log, where the month counts from
 * 00 and a new file starts each day and after 20,000 lines. The third
 * argument is ignored. 0. */
QV_API long IP_NET_DVR_SetLogToFile(unsigned long mode, char* directory,
                                    int reserved);
/* Console log output on / off (off by default). 0. */
QV_API long IP_NET_DVR_LOG_OPEN(void);
QV_API long IP_NET_DVR_LOG_CLOSE(void);

/* The last error of the live-stream functions, cleared by reading. */
QV_API long IP_NET_DVR_GetLastErrorCode(void);

/* Callback registration: each replaces the previous pair; 0. */
QV_API long IP_NET_DVR_SetStatusEventCallBack(QV_StatusEventCallBack cb,
                                              void* user);
QV_API long IP_NET_DVR_SetAUXResponseCallBack(QV_AUXResponseCallBack cb,
                                              void* user);
QV_API long IP_NET_DVR_SetExceptionCallBack(unsigned int window,
                                            unsigned int message,
                                            QV_ExceptionCallBack cb,
                                            void* user);
QV_API long IP_NET_DVR_SetReplayEventCallBack(QV_ReplayEventCallBack cb,
                                              void* user);
QV_API long IP_NET_DVR_SetReplayDataCallBack(QV_ReplayDataCallBack cb,
                                             void* user);

#include "quorvel/device.h"
#include "quorvel/voice.h"
#include "quorvel/config_exchange.h"
#include "quorvel/discovery.h"
#include "quorvel/files.h"
#include "quorvel/replay.h"

#endif /* QUORVEL_QUORVEL_H */
