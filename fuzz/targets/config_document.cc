// A whole configuration file: loaded into the record as the library loads
// the configuration file, then written back out as a save would write it
// and that text loaded again.
#include <memory>
#include <string>

#include "config/config_store.h"
#include "fuzz_target.h"

QV_FUZZ_TARGET(config_document) {
  static std::unique_ptr<IPCConfig> cfg(new IPCConfig());
  std::string path = qvfuzz::WriteScratchFile("config.xml", data, size);
  if (path.empty()) return 0;
  if (ParseConfigXML(path.c_str(), cfg.get()) != 0) return 0;
  std::string text;
  if (qvconfig::BuildConfigDocument(cfg.get(), &text)) {
    qvconfig::LoadConfigDocument(text, cfg.get());
  }
  return 0;
}
