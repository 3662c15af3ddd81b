// Files for the configuration tests: the shared scratch helpers, the
// fixtures folder and a scoped CONFIG_FILE_PATH.
#pragma once

#include <string>

#include "config/config_file.h"
#include "support/scratch.h"

using testsupport::CapturedStdout;
using testsupport::ListDir;
using testsupport::ReadFile;
using testsupport::ScratchDir;
using testsupport::WriteFile;

inline std::string FixturePath(const std::string& name) {
  return std::string(QUORVEL_SOURCE_DIR) + "/tests/config/data/" + name;
}

// Points CONFIG_FILE_PATH at a file for the scope; the default comes back
// afterwards.
class ScopedConfigPath {
 public:
  explicit ScopedConfigPath(const std::string& path) { SetConfigFilePath(path.c_str()); }
  ~ScopedConfigPath() { SetConfigFilePath(nullptr); }
};
