// The commands of the quorvel program. Each command lives in its own file
// and is listed once in main.cc.
#pragma once

struct CliCommand {
  const char* name;
  const char* usage;    // arguments, as shown by "quorvel help"
  const char* summary;  // one line
  // argv[0] is the command's name. Returns the process exit status.
  int (*run)(int argc, char** argv);
};

// The table of commands (main.cc), ended by an entry with a null name.
extern const CliCommand kCliCommands[];

int RunConvert(int argc, char** argv);
int RunHelp(int argc, char** argv);
