// The debug log's configuration file ("./player_dbg.cfg"). A folder it
// names is created: the process works inside its scratch folder, and folder
// names lose their slashes so that nothing is created outside it. Every
// setting goes back to its default afterwards (no log file, nothing sent).
#include <unistd.h>

#include <string>

#include "base/debug_log.h"
#include "base/debug_log_config.h"
#include "fuzz_target.h"

QV_FUZZ_TARGET(debug_config) {
  static const bool inside = !qvfuzz::ScratchDir().empty() &&
                             chdir(qvfuzz::ScratchDir().c_str()) == 0;
  if (!inside) return 0;
  std::string text = qvfuzz::Text(data, size);
  for (char& c : text) {
    if (c == '/') c = '_';
  }
  std::string path = qvfuzz::WriteScratchFile(
      "player_dbg.cfg", reinterpret_cast<const uint8_t*>(text.data()), text.size());
  if (path.empty()) return 0;
  DebugSetConfigPath(path.c_str());
  debuglog::ReadDebugConfigFile();
  GetDebugConfig("");
  return 0;
}
