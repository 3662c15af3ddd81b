// Free space of a storage folder, read through a `df` pipe.
#pragma once

#include <string>

// Smallest free space a recording file may start on: 2,048 MB.
const unsigned long kRecordMinFreeKB = 2097152UL;

// 0 when `path` has at least kRecordMinFreeKB free; -2 for a path of at most
// one character, -3 when the pipe (or the command buffer) could not be had,
// -4 when the space is smaller. A folder that df cannot read counts as 0 KB.
int CheckDiskFreeSpace(const char* path);

// The free kilobytes that the command prints for path (0 when it prints
// nothing readable); -1 when the pipe could not be opened.
long long ReadDiskFreeKB(const char* path);

// The command line template, with one "%s" where the shell-quoted path goes.
// The default is "df %s | sed -n '2p'|awk '{print $4}'". A test replaces it,
// for instance with "echo 2097151 #%s". A template without exactly one "%s"
// (or with any other '%') is refused (-1); null restores the default. 0.
int SetDiskFreeCommand(const char* command_template);

// The folder part of a file path ("." when there is none).
std::string FolderOfFile(const std::string& file_path);
