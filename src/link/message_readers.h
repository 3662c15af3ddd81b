// Readers of received control-link messages. Every message text is
// zero-terminated; readers report by result code and leave what they had
// already filled in place.
#pragma once

#include <string>

#include "quorvel/quorvel.h"

// Longest header field kept (the output buffers hold 256 bytes).
const int kHeaderFieldMax = 255;
// Most alarms taken from one report; further items are ignored.
const int kMaxAlarmItems = 256;

// Splits MESSAGE_HEADER (parsed alone, cut from "<MESSAGE_HEADER" to the
// next "/>") into Msg_type, Msg_code, Msg_flag, each into a 256-byte buffer.
// 0; -1 null argument / missing or unparsable header; -2 not a
// MESSAGE_HEADER; -3, -4, -5 empty type, code, flag.
int TinyGetMessageHeader(char* message, char* type, char* code, char* flag);

// The text between "<MESSAGE_BODY>" and "</MESSAGE_BODY>" as a new array
// (delete[]). 0, or -1 when either tag is missing ("<MESSAGE_BODY/>" counts
// as missing).
int GetMessageBody(char* message, char** body);

// StartPos and DataLen of MESSAGE_BODY/POS: where a binary payload behind
// the XML starts in the packet and how long it is. Outputs -1 and 0 first.
// 0; -2 without POS; -1 when the XML does not parse.
int GetXmlPosAndDataLen(char* message, int* startPos, int* dataLen);

// The alarms of MESSAGE_BODY/ALARM_REPORT_PARAM as a new array (delete[]),
// at most kMaxAlarmItems. The count; -1 null list or unparsable; -2 no
// ALARM_REPORT_PARAM; -3 no ALARM_ITEM (list stays null).
int GetAlarmList(char* message, ALARM_ENTRY** list);

// The talk start reply MESSAGE_BODY/RA_START_RESPONSE. Defaults first:
// codec 0, 8000 Hz, 16 bits, 1 channel, connection type 0 (the port is
// left). Codec 1 when AudioCodec contains "AAC". 0; -2 without
// RA_START_RESPONSE; -1 when the XML does not parse.
int GetAudioRTPParam(char* message, int* rtpRecvPort, int* codec, int* sampleRate,
                     int* bitsPerSample, int* channels, int* connectionType);

// Port, Type and FileLength of a body fragment's root element (all 0
// first). 0; -2 without a root element; -1 when the XML does not parse.
int GetFileTransportPort(const char* xml, unsigned short* port, int* type,
                         unsigned long* fileLength);

// Sessionid of MESSAGE_BODY/USER_AUTH_RESPONSE (id cleared first). 0; -3
// USER_AUTH_RESPONSE not an element; -2 missing; -1 unparsable.
int GetSessionID(char* message, std::string& id);
