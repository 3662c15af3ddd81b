// Replays the kept fuzz inputs through the fuzz targets' own entries, built
// with the normal compiler: every input under fuzz/regressions/<target>/
// (each once crashed the library) and the hand-picked seeds of
// fuzz/corpus/<target>/. One case per target; a case fails by crashing, as
// the fuzzer would, or when the target has no inputs at all.
#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "fuzz_target.h"

namespace {

std::vector<std::string> FilesIn(const std::string& dir) {
  std::vector<std::string> files;
  DIR* d = opendir(dir.c_str());
  if (d == nullptr) return files;
  while (dirent* e = readdir(d)) {
    if (e->d_name[0] != '.') files.push_back(dir + "/" + e->d_name);
  }
  closedir(d);
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::string> TargetNames() {
  std::vector<std::string> names;
  for (const auto& t : qvfuzz::Targets()) names.push_back(t.name);
  return names;
}

class FuzzReplay : public ::testing::TestWithParam<std::string> {};

TEST_P(FuzzReplay, KeptInputsRunClean) {
  const qvfuzz::Target* target = nullptr;
  for (const auto& t : qvfuzz::Targets()) {
    if (t.name == GetParam()) target = &t;
  }
  ASSERT_NE(target, nullptr);
  std::string root = std::string(QUORVEL_SOURCE_DIR) + "/fuzz/";
  std::vector<std::string> files = FilesIn(root + "regressions/" + target->name);
  std::vector<std::string> seeds = FilesIn(root + "corpus/" + target->name);
  files.insert(files.end(), seeds.begin(), seeds.end());
  EXPECT_FALSE(files.empty()) << "no kept inputs for " << target->name;
  for (const std::string& path : files) {
    SCOPED_TRACE(path);
    std::ifstream in(path, std::ios::binary);
    ASSERT_TRUE(in.good());
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                               std::istreambuf_iterator<char>());
    // A buffer of exactly the input's size, as libFuzzer hands it over, so
    // that a read past its end is caught here too under the sanitizers.
    std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), exact.get());
    target->entry(exact.get(), bytes.size());
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay, ::testing::ValuesIn(TargetNames()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                           return info.param;
                         });

}  // namespace
