// libFuzzer glue: the one target linked into this program receives every
// input. Standard output (where several readers print) is discarded;
// libFuzzer reports on standard error.
#include <cstdio>
#include <cstdlib>

#include "fuzz_target.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (freopen("/dev/null", "w", stdout) == nullptr) perror("stdout");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto& targets = qvfuzz::Targets();
  if (targets.size() != 1) {
    fprintf(stderr, "a fuzz program needs exactly one target, it has %zu\n", targets.size());
    abort();
  }
  targets.front().entry(data, size);
  return 0;
}
