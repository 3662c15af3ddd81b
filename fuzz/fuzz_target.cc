#include "fuzz_target.h"

#include <ftw.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace qvfuzz {

namespace {

std::vector<Target>& Registry() {
  static std::vector<Target> targets;
  return targets;
}

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) {
  remove(path);
  return 0;
}

void RemoveScratch() {
  const std::string& dir = ScratchDir();
  if (!dir.empty()) nftw(dir.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace

bool Register(const char* name, Entry entry) {
  Registry().push_back(Target{name, entry});
  return true;
}

const std::vector<Target>& Targets() { return Registry(); }

std::string Text(const uint8_t* data, size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

const std::string& ScratchDir() {
  static const std::string dir = [] {
    const char* base = getenv("TMPDIR");
    std::string tmpl = std::string(base != nullptr && *base != '\0' ? base : "/tmp") +
                       "/quorvel-fuzz.XXXXXX";
    if (mkdtemp(&tmpl[0]) == nullptr) return std::string();
    return tmpl;
  }();
  static const bool cleanup = [] { return atexit(RemoveScratch) == 0; }();
  (void)cleanup;
  return dir;
}

std::string WriteScratchFile(const char* name, const uint8_t* data, size_t size) {
  if (ScratchDir().empty()) return "";
  std::string path = ScratchDir() + "/" + name;
  FILE* f = fopen(path.c_str(), "wb");
  if (f == nullptr) return "";
  bool ok = size == 0 || fwrite(data, 1, size, f) == size;
  if (fclose(f) != 0 || !ok) return "";
  return path;
}

}  // namespace qvfuzz
