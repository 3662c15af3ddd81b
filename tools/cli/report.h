// Failure reports on standard error, and the exit status that goes with
// them.
#pragma once

#include <string>

struct Notice;

// "quorvel: WHAT failed: CODE NAME (meaning)"; returns 1.
int FailResult(const std::string& what, long code);
// "quorvel: WHAT failed: EVENT NAME (meaning): TEXT"; returns 1.
int FailEvent(const std::string& what, const Notice& event);
// "quorvel: TEXT"; returns 1.
int Fail(const std::string& text);
