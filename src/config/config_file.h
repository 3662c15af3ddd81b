// The configuration file: its path, whole reads and safe whole writes.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>

// The configuration file's path: a writable process-wide text of 256 bytes
// (terminator included), "./config.xml" at start.
char* CONFIG_FILE_PATH();

// Points CONFIG_FILE_PATH at another file (null restores the default).
// Paths of 256 bytes or more are refused: -1. Else 0.
int SetConfigFilePath(const char* path);

namespace qvconfig {

// Capacity of the path text, terminator included.
const size_t kConfigPathSize = 256;

// Largest configuration file that is read (bytes).
const size_t kMaxConfigFile = 8 * 1024 * 1024;

// Serialises whole-file operations of the store (read-modify-write of a
// section included) within the process.
std::mutex& ConfigFileLock();

// Reads the file whole (at most kMaxConfigFile bytes). False when it cannot
// be opened or read, or is larger.
bool ReadConfigFile(const char* path, std::string* text);

// Saves a document: every carriage return becomes a blank, then the text is
// written to a new file beside `path` that replaces `path` only once it is
// complete, so a failure leaves the old file as it was. Logs
// "[%s:%u]open error\n\n" when the file cannot be created. 0 or -1.
int SaveConfigText(const char* path, std::string text);

}  // namespace qvconfig
