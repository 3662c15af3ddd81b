// Progress of a long task: a bar redrawn in place on a terminal, plain lines
// (one each tenth of the way) otherwise, so that logs and pipes stay short.
#pragma once

#include <string>

class Progress {
 public:
  // label: what is moving ("upload firmware.bin"); on standard error when
  // to_stderr (the result itself goes to standard output).
  explicit Progress(std::string label, bool to_stderr = false);
  ~Progress();  // ends the bar's line
  // Percent done, 0 to 100; detail is shown after it ("3.0 of 5 s").
  void Update(int percent, const std::string& detail = "");
  // Ends the line once (done or not).
  void Finish();

 private:
  std::string label_;
  bool terminal_;
  bool to_stderr_;
  int shown_ = -1;  // last percent shown
  bool finished_ = false;
};
