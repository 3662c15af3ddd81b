#include "base/debug_log_config.h"

#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/debug_log_state.h"

namespace debuglog {

namespace {

// Finds "key" and the ';' that ends its value. False when either is missing.
bool FindSetting(const char* text, const char* key, const char** begin, const char** end) {
  const char* k = strstr(text, key);
  if (k == nullptr) return false;
  const char* v = k + strlen(key);
  const char* semi = strchr(v, ';');
  if (semi == nullptr) return false;
  *begin = v;
  *end = semi;
  return true;
}

// The value as an int, read like atoi (leading blanks, sign, digits) but
// clamped to the int range instead of overflowing.
int ParseInt(const char* begin, const char* end) {
  while (begin < end && (*begin == ' ' || *begin == '\t' || *begin == '\r' || *begin == '\n'))
    ++begin;
  bool negative = false;
  if (begin < end && (*begin == '-' || *begin == '+')) negative = *begin++ == '-';
  long long v = 0;
  for (; begin < end && *begin >= '0' && *begin <= '9'; ++begin) {
    v = v * 10 + (*begin - '0');
    if (v > static_cast<long long>(INT_MAX) + 1) v = static_cast<long long>(INT_MAX) + 1;
  }
  if (negative) v = -v;
  if (v > INT_MAX) v = INT_MAX;
  return static_cast<int>(v);
}

// A numeric setting: an absent key gives `absent`, a key without its ';'
// leaves `current`.
int IntSetting(const char* text, const char* key, int absent, int current) {
  if (strstr(text, key) == nullptr) return absent;
  const char* b;
  const char* e;
  if (!FindSetting(text, key, &b, &e)) return current;
  return ParseInt(b, e);
}

// A text setting copied into dst (cap bytes with its zero). Returns false
// when the value does not fit; dst then holds its first cap - 1 characters.
bool CopyValue(char* dst, size_t cap, const char* begin, const char* end) {
  size_t n = static_cast<size_t>(end - begin);
  bool fits = n < cap;
  if (!fits) n = cap - 1;
  memcpy(dst, begin, n);
  dst[n] = '\0';
  return fits;
}

// The folder test of the log's first layout. It always answers "missing",
// so a configured folder is created but the log stays in "./".
int FolderExist(const char*) { return 0; }

}  // namespace

bool ReadDebugConfigFile() {
  FILE* f = fopen(config_path, "rb");
  if (f == nullptr) return false;
  struct stat info;
  if (fstat(fileno(f), &info) != 0 || !S_ISREG(info.st_mode)) {
    fclose(f);
    return false;
  }
  long len = info.st_size > kMaxConfigSize ? kMaxConfigSize : static_cast<long>(info.st_size);
  char* text = nullptr;
  for (int attempt = 0; attempt < 200 && text == nullptr; ++attempt) {
    text = static_cast<char*>(malloc(static_cast<size_t>(len) + 1));
    if (text == nullptr) SleepMs(1);
  }
  if (text != nullptr) {
    size_t got = fread(text, 1, static_cast<size_t>(len), f);
    text[got] = '\0';
    GetDebugConfig(text);
    free(text);
  }
  fclose(f);
  return true;
}

}  // namespace debuglog

using namespace debuglog;

void GetDebugConfig(const char* text) {
  if (text == nullptr) return;
  to_file = IntSetting(text, "file=", 0, to_file) != 0 ? 1 : 0;
  to_network = IntSetting(text, "network=", 0, to_network) != 0 ? 1 : 0;
  level = IntSetting(text, "level=", 0, level);
  const char* b;
  const char* e;
  if (strstr(text, "monitor_ip=") == nullptr) {
    monitor_ip[0] = '\0';
  } else if (FindSetting(text, "monitor_ip=", &b, &e)) {
    CopyValue(monitor_ip, sizeof(monitor_ip), b, e);
  }
  if (strstr(text, "debugfilepath=") == nullptr) {
    // An absent folder clears the monitor address: kept as it always was.
    monitor_ip[0] = '\0';
  } else if (FindSetting(text, "debugfilepath=", &b, &e)) {
    char dir[kDirSize];
    // A folder name too long to keep is not created under a cut name.
    if (CopyValue(dir, sizeof(dir), b, e) && dir[0] != '\0') mkdir(dir, 0755);
    if (!FolderExist(dir)) {
      CriticalSectionGuard guard(&log_lock);
      snprintf(log_dir, sizeof(log_dir), "%s", "./");
    }
  }
  show_file_line = IntSetting(text, "showfileline=", 0, show_file_line);
}
