// quorvel-emu: an emulated camera for trying the library without hardware.
#include <cstdio>

int main() {
  printf("quorvel-emu: nothing to emulate yet\n");
  return 0;
}
