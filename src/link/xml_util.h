// Small helpers shared by the message readers: guarded TinyXML parsing,
// node and attribute look-up, fragment cutting, bounded copies and
// hexadecimal decoding.
#pragma once

#include <cstddef>

#include <tinyxml.h>

// Deepest element nesting a received text may have; deeper texts are
// refused before TinyXML sees them (its parser recurses per level).
const int kMaxXmlDepth = 200;

// Parses text byte-wise (messages are GB2312). False on a parse error or a
// text nested deeper than kMaxXmlDepth; doc then holds the error.
bool ParseXml(TiXmlDocument& doc, const char* text);

// The attribute's value, or null (also for a null node or a non-element).
const char* GetAttribValue(const TiXmlNode* node, const char* name);

// The first child named name, or null for a null node.
TiXmlNode* SelectNode(TiXmlNode* node, const char* name);

// Cuts the span from `open` to the end of the first `close` after it out of
// message into a new malloc'd, terminated text (*out, free() it). Logs and
// returns -1 when either text is missing (silently for a missing opening
// when quiet_open) or the copy cannot be allocated; 0 otherwise.
int CopyFragment(const char* message, const char* open, const char* close, char** out,
                 bool quiet_open = false);

// Copies at most cap - 1 characters of src (null counts as "") and
// terminates. cap must be at least 1.
void CopyText(char* dst, size_t cap, const char* src);

// Decodes pairs of hexadecimal digits (high digit first; 0-9, a-f, A-F, any
// other character counts as 0) into out, at most cap bytes; an odd trailing
// digit is ignored. The number of bytes written.
size_t DecodeHex(const char* text, unsigned char* out, size_t cap);
