// The search protocol's message text: every message the library broadcasts
// (the search itself and the changes addressed to one camera) is one
// SYSTEM_SEARCHIPC_MESSAGE with root XML_BRELLWICK, sent to UDP port 3001.
#pragma once

// Message codes.
const int kSearchCode = 1;         // search request
const int kModifyCode = 2;         // new network or stream settings
const int kSearchReplyCode = 3;    // a camera's answer to a search
const int kRestoreCode = 5;        // back to factory settings
const int kRebootCode = 7;         // reboot

const unsigned short kSearchPort = 3001;
extern const char kSearchRoot[];   // "XML_BRELLWICK"

// Writes the message with this code and body (null: none) into buffer, at
// most size - 1 characters (a longer text is cut), terminated. The number of
// characters written.
int FormatSearchMessage(char* buffer, int size, int code, const char* body);
