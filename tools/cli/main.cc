// quorvel: command-line client of the library.
#include <cstdio>

int main() {
  printf("quorvel: no commands yet\n");
  return 0;
}
