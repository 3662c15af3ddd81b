/*
 * Voice talk: audio from the host to a logged-in camera. Included by
 * quorvel.h.
 *
 * How talk runs: IP_NET_DVR_StartVoiceCom asks the camera; its answer comes
 * as a status event:
 *   6  "StartAudio OK, recv port=..., audiotype=..., samplerate=..., bits=...,
 *      channels=...,use same port=..." : talk runs, audio may be handed in;
 *   7  the start failed (after 35, 36 or 37, with the same text, or "...:
 *      startaudio ERROR,get audio param error!" for an unreadable answer);
 *   35 the camera is busy ("... StartAudio not allowed,for device is busy!");
 *   36 it refused the audio parameters; 37 its audio is disabled.
 * Talk stays requested after a refusal: the session asks again every 10 s
 * until IP_NET_DVR_StopVoiceCom. Frames handed in with IP_NET_DVR_InputAudioData
 * travel as they are (already encoded, G.711 or PCM as started) over the
 * control link. When no frame was sent for 8 s the sender stops, and the
 * session asks the camera again 10 s later. IP_NET_DVR_StopVoiceCom tells
 * the camera to stop; its answer is status 8 ("... Stop audio OK!") or 9.
 * While talk is requested, file transfers of the camera are refused.
 *
 * The talk group (IP_NET_DVR_AddTalk and the three beside it) is inert:
 * AddTalk accepts every ID but keeps none, so RemoveTalk never finds one.
 * Talk to a camera goes through its user ID alone.
 */
#ifndef QUORVEL_VOICE_H
#define QUORVEL_VOICE_H

/* ------------------------------------------------------------------ */
/* Talk to one camera                                                  */
/* ------------------------------------------------------------------ */

/* audioType below 3: G.711 (8000 Hz, one channel; the other two values are
 * not sent); 3 or more: PCM at sampleRate with channels. 0 once asked;
 * -8999986 (QV_E_TALK_BUSY) when talk is already requested. */
QV_API long IP_NET_DVR_StartVoiceCom(long userID, int audioType, int sampleRate, int channels);
/* 0; -8999998 (QV_E_TALK_NOT_RUNNING) when talk is not requested. */
QV_API long IP_NET_DVR_StopVoiceCom(long userID);
/* One frame of encoded audio (at most 102,400 bytes), copied. length; -1
 * while the camera has not accepted talk (before status 6, after a stop);
 * -8999992 for null data, a negative length or a larger frame. Frames
 * handed in faster than the link takes them are dropped, oldest first. */
QV_API long IP_NET_DVR_InputAudioData(long userID, const char* data, int length);
/* Not supported: -1. */
QV_API long IP_NET_DVR_SetVoiceComClientVolume(long userID, long volume);

/* ------------------------------------------------------------------ */
/* The talk group                                                      */
/* ------------------------------------------------------------------ */

/* Accepts the ID and keeps nothing. 0. */
QV_API long IP_NET_DVR_AddTalk(long userID);
/* -9000002 (QV_E_UNKNOWN_USER) for every ID: the group is always empty. */
QV_API long IP_NET_DVR_RemoveTalk(long userID);
/* Do nothing (the four values are ignored). 0. */
QV_API long IP_NET_DVR_StartTalk(int arg1, int arg2, int arg3, int arg4);
QV_API long IP_NET_DVR_StopTalk(void);

#endif /* QUORVEL_VOICE_H */
