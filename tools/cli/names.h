// Names of the library's numbers, for people: result codes and status
// events, kept in one table.
#pragma once

#include <string>

// "QV_E_UNKNOWN_USER" for -9000002; "" for a code the table does not hold.
const char* ResultName(long code);
// What a result code means, in plain words; "" when unknown.
const char* ResultMeaning(long code);
// "EVENT_LOGINOK" for 4, as the library names it; "" when unknown.
std::string EventName(long code);
// What an event means, in plain words; "" when unknown.
const char* EventMeaning(long code);
// "-9000002 QV_E_UNKNOWN_USER (the user ID names no logged-in camera)".
std::string DescribeResult(long code);
// "31 EVENT_LOGIN_USERERROR (login refused: wrong user or password)".
std::string DescribeEvent(long code);
