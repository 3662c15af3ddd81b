/*
 * Logged-in cameras: login and logout, pan-tilt-zoom, system commands,
 * configuration requests, user data, snapshots, the replay distribution
 * queries and link control. Included by quorvel.h.
 *
 * How a device command works: every function below that takes a user ID
 * only queues a request on the camera's session and returns; the session's
 * link thread sends it on its next turn (one request per turn, action
 * requests before PTZ before the rest). The camera's reply comes back on the
 * link thread through the callbacks:
 *   - status events (IP_NET_DVR_SetStatusEventCallBack): link state changes,
 *     10 when a queued request went out whole (20 when it did not), PTZ reply
 *     results (10 / 11), PTZ preset information (21, 22) and alarms (23, data
 *     pointing to an ALARM_ENTRY that is valid during the call only);
 *   - AUX responses (IP_NET_DVR_SetAUXResponseCallBack): replies to system
 *     control and configuration requests, with the reply's body text.
 *
 * Results common to every per-device function: -9000002 (QV_E_UNKNOWN_USER)
 * for an ID that names no logged-in camera (0, negative and above 128
 * included), -8999997 before the TCP link is up, -8999996 between connect
 * and login, -8999992 for a missing argument.
 *
 * All per-device calls are serialised by one lock, held for the whole call
 * (including the waits of IP_NET_DVR_GetUserData and IP_NET_DVR_SnapPic).
 * Callbacks may call these functions, but a callback that waits for another
 * thread's call into the library can stall both.
 *
 * Status events of a session (eventCode, data text):
 *   1  "ipc[<ip>:<port>] connect socket OK!"
 *   2  connect failed, or no heartbeat reply for about 20 s
 *   3  socket error
 *   4  "ipc[<ip>:<port>]: OK: authentication OK!"   (logged in)
 *   5  login refused (flag other than -1) or login resend failed
 *   31 login refused with flag -1 (wrong user or password); the next
 *      attempt follows after 10 s
 *   32 the link thread ended (logout, or link lost with auto-reconnect off)
 *   33 link lost, reconnecting (auto-reconnect on, the default)
 *   34 no login reply after 10 resends 5 s apart; the link is reset
 */
#ifndef QUORVEL_DEVICE_H
#define QUORVEL_DEVICE_H

/* ------------------------------------------------------------------ */
/* Login and logout                                                    */
/* ------------------------------------------------------------------ */

/* Starts a session with the camera at ip (dotted IPv4 or a host name) and
 * port (1..65534) and returns its user ID (1..128, the lowest free one), or
 * 0 for a null address, a bad port or 128 sessions in use. Connecting and
 * logging in happen afterwards on the session's link thread; the outcome
 * arrives as status events (4 = logged in). Every call makes a new session,
 * even for a camera that is already logged in. The last argument is
 * ignored. */
QV_API long IP_NET_DVR_Login(const char* ip, unsigned short port, char* user, char* password,
                             void* reserved);

/* As IP_NET_DVR_Login, advertising encryption; after login the session
 * offers key (announced as 32 characters) in a key exchange, whose reply
 * arrives as AUX response 150. */
QV_API long IP_NET_DVR_Login_Encrypt(const char* ip, unsigned short port, char* user,
                                     char* password, void* reserved, const char* key);

/* Sends the key exchange again. */
QV_API long IP_NET_DVR_EXCHANGE_Encrypt(long userID);

/* Stops the session and waits for its link thread (status 32 is the last
 * event). 0, also for userID 0; -9000002 when the ID names no session, as
 * for a second logout of the same ID. May be called from a callback of the
 * same camera: the ID is gone at once, the session ends after the callback
 * returns, and the ID is not handed out again before it has. */
QV_API long IP_NET_DVR_Logout(long userID);

/* id 0: the auto-reconnect default for streams and sessions started later.
 * Otherwise a live-stream handle or a user ID: with it on (the default) a
 * lost link is re-established, with it off the link thread ends. */
QV_API long IP_NET_DVR_SetAutoReconnect(long id, int value);

/* Restarts a live stream or a session's link thread; -8999990 when that is
 * refused (for example from the session's own callback). */
QV_API long IP_NET_DVR_Reconnect(long id);

/* ------------------------------------------------------------------ */
/* Pan, tilt, zoom                                                     */
/* ------------------------------------------------------------------ */

/* PTZ command numbers of IP_NET_DVR_PTZControl. 25 is refused. */
enum {
  QV_PTZ_ZOOM_TELE = 11,
  QV_PTZ_ZOOM_WIDE = 12,
  QV_PTZ_FOCUS_NEAR = 13,
  QV_PTZ_FOCUS_FAR = 14,
  QV_PTZ_IRIS_OPEN = 15,
  QV_PTZ_IRIS_CLOSE = 16,
  QV_PTZ_UP = 17,
  QV_PTZ_DOWN = 18,
  QV_PTZ_LEFT = 19,
  QV_PTZ_RIGHT = 20,
  QV_PTZ_LEFT_UP = 21,
  QV_PTZ_RIGHT_UP = 22,
  QV_PTZ_LEFT_DOWN = 23,
  QV_PTZ_RIGHT_DOWN = 24,
  QV_PTZ_STOP = 26
};

/* Preset command numbers of IP_NET_DVR_PTZPreset. */
enum { QV_PRESET_SET = 8, QV_PRESET_CLEAR = 9, QV_PRESET_CALL = 39 };

/* Moves the head: command as above. Note the argument order: the third
 * argument is the tilt speed and the fourth the pan speed. A stop is sent
 * six times, 50 ms apart (the call takes about 250 ms). -8999983 for an
 * unknown command. */
QV_API long IP_NET_DVR_PTZControl(long userID, long command, long tiltSpeed, long panSpeed);

/* Sets, clears or calls preset 0..255. -8999983 for an unknown command,
 * -8999992 for a preset outside 0..255. */
QV_API long IP_NET_DVR_PTZPreset(long userID, long command, long preset);

/* Sends a PTZ command body as it is (wrapped as a PTZ_CMD message). */
QV_API long IP_NET_DVR_PTZControlEx(long userID, const char* xml);

/* ------------------------------------------------------------------ */
/* System commands (replies arrive as AUX responses with the code)     */
/* ------------------------------------------------------------------ */

/* A SYSTEM_CONTROL_MESSAGE with code, flag and body (null: empty). */
QV_API long IP_NET_DVR_SystemControl(long userID, unsigned long code, int flag,
                                     const char* body);
QV_API long IP_NET_DVR_RebootDVR(long userID);          /* code 1007 */
QV_API long IP_NET_DVR_ShutDownDVR(long userID);        /* not supported: -1 */
/* code 1017; disk 0 "sd1", 1 "sd2", 2 "usb", any other value no body */
QV_API long IP_NET_DVR_FormatDisk(long userID, long disk);
QV_API long IP_NET_DVR_GetFormatProgress(long userID, long disk, long* progress,
                                         long* state);  /* not supported: -1 */
/* code 1046; mode < 1 night, otherwise day */
QV_API long IP_NET_DVR_Ircut_switch_daynight(long userID, int mode);
QV_API long IP_NET_DVR_RestoreConfig(long userID);      /* code 1002 */
QV_API long IP_NET_DVR_FindDVRLogFile(long userID);     /* code 1025 */
/* code 1112: turns the deterrence sound and light off */
QV_API long IP_NET_DVR_SCARE_OFF(long userID, int playSound, int ledOn, int time);
/* A configuration get of code 1020 (the camera's abilities). */
QV_API long IP_NET_DVR_GetDeviceAbility(long userID);

/* Configuration get / set: a SYSTEM_CONFIG_GET_MESSAGE or
 * SYSTEM_CONFIG_SET_MESSAGE with the code and the text in body as message
 * body (read up to size / length bytes when those are non-zero, else up to
 * its terminator). The reply arrives as an AUX response; channel and
 * returned are not used. */
QV_API long IP_NET_DVR_GetDVRConfig(long userID, unsigned long code, long channel, void* body,
                                    unsigned long size, unsigned long* returned);
QV_API long IP_NET_DVR_SetDVRConfig(long userID, unsigned long code, long channel,
                                    const void* xml, unsigned long length);

/* A message of type SYSTEM_CONFIG_SET_MESSAGE, SYSTEM_CONFIG_GET_MESSAGE,
 * SYSTEM_CONTROL_MESSAGE, VOD_CONTROL_MESSAGE or SYSTEM_ENCRYPT_MESSAGE;
 * -8999995 for any other type. A message longer than 51,199 characters is
 * cut there. */
QV_API long IP_NET_DVR_WriteAUXStringEx(long userID, char* type, long code, long flag,
                                        const char* body);
/* length bytes sent as one frame, exactly as given: a length of 0 sends a
 * bare frame header; a negative length sends a header that cannot be
 * followed by its payload, so the link drops (status 20) and reconnects. */
QV_API long IP_NET_DVR_SendRawMsg(long userID, const char* message, int length);
/* A finished message text sent in an encrypted frame (flag 0x52598157). */
QV_API long IP_NET_DVR_SEND_ENCRYPPT_RAWDATA(long userID, char* data);
/* Asks for a key frame on stream (code 1032). */
QV_API long IP_NET_DVR_CreateIFrame(long userID, int stream);

/* Asks for the camera's user data (code 1034) and waits up to 5 s: at most
 * *length - 1 bytes are copied and terminated, *length becomes the count
 * (0 when no reply came). The reply also arrives as AUX response 1034. */
QV_API long IP_NET_DVR_GetUserData(long userID, char* buffer, int* length);
/* Not supported by the cameras: prints a note and returns 0 (-1 for null
 * data). */
QV_API long IP_NET_DVR_SetUserData(long userID, char* data, int length);

/* ------------------------------------------------------------------ */
/* Snapshots                                                           */
/* ------------------------------------------------------------------ */

/* Asks for a picture of stream (0 or 1) at quality 0..100 (code 1043).
 * timeout 0: returns once asked; the camera announces the picture with
 * alarm 23. Otherwise waits up to timeout ms (a negative timeout means 200)
 * for that alarm, fetches the picture to path as a download (files.h) and
 * returns 0 once it is stored there (status 16), or when the wait ends
 * while it is still arriving (status 16 or 17 follows). The download's
 * refusal (for example -8999987 while another transfer runs), or -8999961
 * when the picture was not announced in time. */
QV_API long IP_NET_DVR_SnapPic(long userID, int stream, int quality, const char* path,
                               int timeout);

/* A snapshot round over several cameras, repeated until stopped. */
typedef struct SNAPPIC_TASK {
  long userID[64];     /* cameras, in order */
  int count;           /* used entries, 0..64 */
  int stream;          /* stream number of the requests */
  int quality;         /* picture quality of the requests */
  char* buffer[64];    /* one caller-owned picture buffer per camera */
  int bufferSize[64];  /* size of each buffer */
  int interval;        /* pause after each camera, ms */
} SNAPPIC_TASK;

/* Starts the one snapshot task (the record is copied). -1 when a task runs
 * or task is null. */
QV_API long IP_NET_DVR_SnapPicTaskStart(const SNAPPIC_TASK* task);
/* Stops the task (waits 300 ms for it to notice). 0. */
QV_API long IP_NET_DVR_SnapPicTaskStop(void);

/* ------------------------------------------------------------------ */
/* Recordings on the camera: which minutes and days hold video         */
/* ------------------------------------------------------------------ */

/* Asks which minutes of one day hold recordings (code 1021, mode 1). */
QV_API long IP_NET_DVR_GetReplay_OneDay_Distribute(long userID, int year, int month, int day);
/* Asks which days hold recordings (code 1021, mode 10). */
QV_API long IP_NET_DVR_GetReplay_Dates_Distribute(long userID);

/* Readers of those replies (the AUX response text). */
/* The reply's search mode, or -8999977 for an unusable reply. */
QV_API long IP_NET_DVR_GetReplay_SearchMode_ByXml(const char* reply);
/* One character per minute of the day into buffer (length >= 1440, else
 * -8999978); -8999977 for an unusable reply or another search mode. */
QV_API long IP_NET_DVR_GetReplay_OneDay_DistributeByXml(const char* reply, char* buffer,
                                                        unsigned int length);
/* The days (UTC seconds), newest first and without repeats, at most count
 * of them into dates (cleared first). -8999978 for no array or count 0;
 * -8999977 for an unusable reply or another search mode. */
QV_API long IP_NET_DVR_GetReplay_Dates_DistributeByXml(const char* reply, unsigned int* dates,
                                                       unsigned int count);

#endif /* QUORVEL_DEVICE_H */
