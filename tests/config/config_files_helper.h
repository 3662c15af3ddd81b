// Temporary folders and files for the configuration tests.
#pragma once

#include <string>

#include "config/config_file.h"

// A fresh folder under the system's temporary folder, removed with its
// contents at the end of the scope.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  std::string Path(const std::string& name) const { return dir_ + "/" + name; }

 private:
  std::string dir_;
};

// Entries of a folder, "." and ".." not counted.
int CountEntries(const std::string& dir);

std::string ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::string& bytes);
std::string FixturePath(const std::string& name);

// Points CONFIG_FILE_PATH at a file for the scope; the default comes back
// afterwards.
class ScopedConfigPath {
 public:
  explicit ScopedConfigPath(const std::string& path) { SetConfigFilePath(path.c_str()); }
  ~ScopedConfigPath() { SetConfigFilePath(nullptr); }
};

// Runs `fn` and returns what it printed to standard output.
template <typename Fn>
std::string CapturedStdout(Fn fn);

#include <gtest/gtest.h>

template <typename Fn>
std::string CapturedStdout(Fn fn) {
  testing::internal::CaptureStdout();
  fn();
  return testing::internal::GetCapturedStdout();
}
