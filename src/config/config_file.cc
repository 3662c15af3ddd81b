#include "config/config_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "config/config_print.h"

namespace qvconfig {
namespace {

char g_config_path[kConfigPathSize] = "./config.xml";
std::atomic<unsigned> g_temp_counter{0};

bool WriteAll(int fd, const char* data, size_t n) {
  while (n > 0) {
    ssize_t w = write(fd, data, n);
    if (w < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += w;
    n -= static_cast<size_t>(w);
  }
  return true;
}

}  // namespace

std::mutex& ConfigFileLock() {
  static std::mutex lock;
  return lock;
}

bool ReadConfigFile(const char* path, std::string* text) {
  if (!path || !text) return false;
  int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  text->clear();
  // Sized by the file's length where it has one, then read to its end (a
  // file that grows meanwhile is still bounded).
  struct stat st;
  if (fstat(fd, &st) == 0 && st.st_size > 0 && static_cast<size_t>(st.st_size) <= kMaxConfigFile) {
    text->reserve(static_cast<size_t>(st.st_size));
  }
  char chunk[16384];
  bool ok = true;
  for (;;) {
    ssize_t n = read(fd, chunk, sizeof(chunk));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      ok = false;
      break;
    }
    if (n == 0) break;
    if (text->size() + static_cast<size_t>(n) > kMaxConfigFile) {
      ok = false;
      break;
    }
    text->append(chunk, static_cast<size_t>(n));
  }
  close(fd);
  return ok;
}

int SaveConfigText(const char* path, std::string text) {
  if (!path || !*path) {
    CFG_PRINT("[%s:%u]open error\n\n");
    return -1;
  }
  for (char& c : text)
    if (c == '\r') c = ' ';

  char temp[kConfigPathSize + 48];
  snprintf(temp, sizeof(temp), "%s.tmp%ld.%u", path,
           static_cast<long>(getpid()), g_temp_counter.fetch_add(1));
  int fd = open(temp, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) {
    CFG_PRINT("[%s:%u]open error\n\n");
    return -1;
  }
  struct stat old;
  if (stat(path, &old) == 0) fchmod(fd, old.st_mode & 07777);
  bool ok = WriteAll(fd, text.data(), text.size()) && fsync(fd) == 0;
  ok = (close(fd) == 0) && ok;
  if (!ok || rename(temp, path) != 0) {
    unlink(temp);
    return -1;
  }
  return 0;
}

}  // namespace qvconfig

char* CONFIG_FILE_PATH() { return qvconfig::g_config_path; }

int SetConfigFilePath(const char* path) {
  if (!path) path = "./config.xml";
  size_t n = strlen(path);
  if (n >= qvconfig::kConfigPathSize) return -1;
  memcpy(qvconfig::g_config_path, path, n + 1);
  return 0;
}
