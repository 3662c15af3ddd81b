#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace {

const int kBarWidth = 30;

}  // namespace

Progress::Progress(std::string label, bool to_stderr)
    : label_(std::move(label)),
      terminal_(isatty(to_stderr ? STDERR_FILENO : STDOUT_FILENO) == 1),
      to_stderr_(to_stderr) {}

Progress::~Progress() { Finish(); }

void Progress::Update(int percent, const std::string& detail) {
  if (finished_) return;
  if (percent < 0) percent = 0;
  if (percent > 100) percent = 100;
  FILE* out = to_stderr_ ? stderr : stdout;
  if (terminal_) {
    int filled = percent * kBarWidth / 100;
    std::string bar(filled, '#');
    bar.append(kBarWidth - filled, ' ');
    fprintf(out, "\r%s [%s] %3d%% %s\033[K", label_.c_str(), bar.c_str(), percent,
            detail.c_str());
    fflush(out);
    shown_ = percent;
    return;
  }
  // Plain lines: the start, each tenth, and the end.
  if (shown_ >= 0 && percent / 10 == shown_ / 10 && percent != 100) return;
  if (percent == shown_) return;
  fprintf(out, "%s: %d%%%s%s\n", label_.c_str(), percent, detail.empty() ? "" : " ",
          detail.c_str());
  fflush(out);
  shown_ = percent;
}

void Progress::Finish() {
  if (finished_) return;
  finished_ = true;
  if (terminal_ && shown_ >= 0) {
    FILE* out = to_stderr_ ? stderr : stdout;
    fprintf(out, "\n");
    fflush(out);
  }
}
