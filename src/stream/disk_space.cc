#include "stream/disk_space.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "base/debug_log.h"

namespace {

const char kDefaultCommand[] = "df %s | sed -n '2p'|awk '{print $4}'";

std::mutex g_command_mutex;
std::string g_command = kDefaultCommand;

std::string CommandTemplate() {
  std::lock_guard<std::mutex> guard(g_command_mutex);
  return g_command;
}

// The path as one shell word: '...' with every ' written as '\''.
std::string ShellQuote(const char* path) {
  std::string quoted = "'";
  for (const char* p = path; *p != '\0'; ++p) {
    if (*p == '\'') {
      quoted += "'\\''";
    } else {
      quoted += *p;
    }
  }
  quoted += "'";
  return quoted;
}

}  // namespace

int SetDiskFreeCommand(const char* command_template) {
  if (command_template == nullptr) command_template = kDefaultCommand;
  const char* first = strchr(command_template, '%');
  if (first == nullptr || first[1] != 's' || strchr(first + 2, '%') != nullptr) return -1;
  std::lock_guard<std::mutex> guard(g_command_mutex);
  g_command = command_template;
  return 0;
}

long long ReadDiskFreeKB(const char* path) {
  std::string tmpl = CommandTemplate();
  std::string quoted = ShellQuote(path);
  size_t at = tmpl.find("%s");
  size_t size = quoted.size() + tmpl.size() + 128;
  char* command = static_cast<char*>(malloc(size));
  if (command == nullptr) {
    QV_LOG("[%s:%d]malloc size:%d fail\n", static_cast<int>(size));
    return -1;
  }
  snprintf(command, size, "%s%s%s", tmpl.substr(0, at).c_str(), quoted.c_str(),
           tmpl.substr(at + 2).c_str());
  QV_LOG("[%s:%d]popen:%s\n", command);
  FILE* pipe = popen(command, "r");
  if (pipe == nullptr) {
    QV_LOG("[%s:%d]popen:%s fail\n", command);
    free(command);
    return -1;
  }
  char line[64] = {};
  unsigned long kb = 0;
  if (fgets(line, sizeof(line), pipe) != nullptr) {
    errno = 0;
    kb = strtoul(line, nullptr, 10);
    if (errno != 0) kb = 0;
  }
  // Drain what is left so the command does not die of a broken pipe.
  char rest[256];
  while (fgets(rest, sizeof(rest), pipe) != nullptr) {
  }
  pclose(pipe);
  free(command);
  QV_LOG("[%s:%d]disk space left:%lu KB\n", kb);
  return static_cast<long long>(kb);
}

int CheckDiskFreeSpace(const char* path) {
  if (path == nullptr || strlen(path) <= 1) {
    QV_LOG("[%s:%d]StoragePath is invalid,path=%s!\n", path != nullptr ? path : "(null)");
    return -2;
  }
  long long kb = ReadDiskFreeKB(path);
  if (kb < 0) return -3;
  if (static_cast<unsigned long long>(kb) >= kRecordMinFreeKB) {
    QV_LOG("[%s:%d]freespace of %s is %d M, begin file start...\n", path,
           static_cast<int>(kb / 1024));
    return 0;
  }
  QV_LOG("[%s:%d]freespace of %s is less than %d M, begin file failed.\n", path, 2048);
  return -4;
}

std::string FolderOfFile(const std::string& file_path) {
  size_t slash = file_path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return file_path.substr(0, slash);
}
