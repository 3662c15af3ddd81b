#include "report.h"

#include <cstdio>

#include "names.h"
#include "notices.h"

int FailResult(const std::string& what, long code) {
  fprintf(stderr, "quorvel: %s failed: %s\n", what.c_str(), DescribeResult(code).c_str());
  return 1;
}

int FailEvent(const std::string& what, const Notice& event) {
  std::string text = event.text.empty() ? "" : ": " + event.text;
  fprintf(stderr, "quorvel: %s failed: event %s%s\n", what.c_str(),
          DescribeEvent(event.code).c_str(), text.c_str());
  return 1;
}

int Fail(const std::string& text) {
  fprintf(stderr, "quorvel: %s\n", text.c_str());
  return 1;
}
