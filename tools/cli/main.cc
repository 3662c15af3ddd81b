// quorvel: command-line client of the library. "quorvel COMMAND ARGS...";
// "quorvel help" lists the commands.
#include <cstdio>
#include <cstring>

#include "command.h"

const CliCommand kCliCommands[] = {
    {"convert", "[--fps N] [--alaw|--mulaw] [--aac-config HEX] IN OUT",
     "turn a recording (or a .tmp left by a crash) into a standard .avi/.mp4/.mov/.mkv", RunConvert},
    {"help", "[COMMAND]", "show the commands, or one command's usage", RunHelp},
    {nullptr, nullptr, nullptr, nullptr},
};

int main(int argc, char** argv) {
  if (argc < 2) {
    RunHelp(1, argv);
    return 2;
  }
  for (const CliCommand* c = kCliCommands; c->name != nullptr; ++c) {
    if (strcmp(argv[1], c->name) == 0) return c->run(argc - 1, argv + 1);
  }
  if (strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "-h") == 0) return RunHelp(1, argv);
  fprintf(stderr, "quorvel: unknown command '%s' (see 'quorvel help')\n", argv[1]);
  return 2;
}
