// Builders of the message envelope: the XML declaration, XML_VEXORA with its
// MESSAGE_HEADER (Msg_type, Msg_code, Msg_flag) and MESSAGE_BODY, written
// byte for byte the way cameras expect it (line feeds only, no trailing one).
#pragma once

#include <string>

// Writes the envelope into buffer, at most size - 1 characters (a longer
// message is cut off without notice), terminated; logs the request. The
// number of characters written.
int MakeXMLRequest(char* buffer, int size, const char* type, const char* code, const char* flag,
                   const char* body);

// The same text into out (replacing its contents), unbounded, without a log
// line. out.size().
int MakeXMLRequest(std::string& out, const char* type, const char* code, const char* flag,
                   const char* body);
int MakeXMLRequest(std::string& out, const char* type, long code, const char* flag,
                   const char* body);

// A talk data message: the envelope of REVERSE_AUDIO_MESSAGE / CMD_RA_DATA
// announcing `length` bytes, with the bytes copied straight behind the XML
// text. Only what fits into size bytes is copied. XML length + bytes copied.
int MakeAudioDataRequest(char* buffer, int size, const char* data, int length);
