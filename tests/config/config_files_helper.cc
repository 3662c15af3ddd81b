#include "config/config_files_helper.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

void RemoveTree(const std::string& path) {
  struct stat st;
  if (lstat(path.c_str(), &st) != 0) return;
  if (S_ISDIR(st.st_mode)) {
    if (DIR* d = opendir(path.c_str())) {
      while (struct dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (name != "." && name != "..") RemoveTree(path + "/" + name);
      }
      closedir(d);
    }
    chmod(path.c_str(), 0700);
    rmdir(path.c_str());
  } else {
    unlink(path.c_str());
  }
}

}  // namespace

TempDir::TempDir() {
  const char* base = getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/qvcfgXXXXXX";
  char* made = mkdtemp(&pattern[0]);
  dir_ = made ? made : "";
}

TempDir::~TempDir() {
  if (!dir_.empty()) RemoveTree(dir_);
}

int CountEntries(const std::string& dir) {
  int n = 0;
  if (DIR* d = opendir(dir.c_str())) {
    while (struct dirent* e = readdir(d)) {
      std::string name = e->d_name;
      if (name != "." && name != "..") ++n;
    }
    closedir(d);
  }
  return n;
}

std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  return all.str();
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string FixturePath(const std::string& name) {
  return std::string(QUORVEL_SOURCE_DIR) + "/tests/config/data/" + name;
}
