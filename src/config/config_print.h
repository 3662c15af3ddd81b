// Messages of the configuration model go straight to standard output (not
// through the debug log), each format beginning with "[%s:%u]" for the
// function's name and the source line.
#pragma once

#include <cstdio>

#define CFG_PRINT(fmt, ...) \
  printf(fmt, __FUNCTION__, static_cast<unsigned>(__LINE__), ##__VA_ARGS__)
