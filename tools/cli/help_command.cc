// quorvel help [COMMAND]
#include <cstdio>
#include <cstring>

#include "command.h"

int RunHelp(int argc, char** argv) {
  if (argc >= 2) {
    for (const CliCommand* c = kCliCommands; c->name != nullptr; ++c) {
      if (strcmp(argv[1], c->name) == 0) {
        printf("usage: quorvel %s %s\n  %s\n", c->name, c->usage, c->summary);
        return 0;
      }
    }
    fprintf(stderr, "quorvel: unknown command '%s'\n", argv[1]);
    return 2;
  }
  printf("usage: quorvel COMMAND [ARGS...]\n\ncommands:\n");
  for (const CliCommand* c = kCliCommands; c->name != nullptr; ++c) {
    printf("  %-8s %s\n           %s\n", c->name, c->usage, c->summary);
  }
  return 0;
}
