// Messages of the configuration model go straight to standard output (not
// through the debug log), each format beginning with "[%s:%u]" for the
// function's name and the source line.
#pragma once

#include <cstdio>

namespace qvconfig {

// The model's messages are on unless a program that embeds the model for
// its own ends (the camera emulator) turns them off.
void SetConfigMessages(bool on);
bool ConfigMessages();

}  // namespace qvconfig

#define CFG_PRINT(fmt, ...)                                                          \
  do {                                                                               \
    if (qvconfig::ConfigMessages())                                                  \
      printf(fmt, __FUNCTION__, static_cast<unsigned>(__LINE__), ##__VA_ARGS__);    \
  } while (0)
