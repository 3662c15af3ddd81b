// Fuzz targets: one entry function per kind of input, registered by name.
//
// Each file of fuzz/targets/ defines one entry with QV_FUZZ_TARGET. Linked
// alone with fuzz_main.cc it becomes a libFuzzer program (fuzz_<name>);
// linked all together into test_fuzz_regressions, the same entries replay
// the kept inputs under the normal compiler.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qvfuzz {

using Entry = int (*)(const uint8_t* data, size_t size);

struct Target {
  std::string name;
  Entry entry;
};

// Adds a target (called by QV_FUZZ_TARGET at start-up). Always true.
bool Register(const char* name, Entry entry);
// Every registered target, in registration order.
const std::vector<Target>& Targets();

// The input as a zero-terminated text (readers take C strings; inner zero
// bytes stay and end the text early, as they would on the wire).
std::string Text(const uint8_t* data, size_t size);

// A folder of this process's own for the files the readers take, created on
// first use and removed (with whatever was put into it) at exit.
const std::string& ScratchDir();
// Writes the bytes to `name` inside ScratchDir and returns the path ("" on
// failure).
std::string WriteScratchFile(const char* name, const uint8_t* data, size_t size);

}  // namespace qvfuzz

#define QV_FUZZ_TARGET(name)                                                        \
  static int QvFuzzEntry_##name(const uint8_t* data, size_t size);                  \
  static const bool qv_fuzz_registered_##name =                                     \
      qvfuzz::Register(#name, QvFuzzEntry_##name);                                  \
  static int QvFuzzEntry_##name(const uint8_t* data, size_t size)
