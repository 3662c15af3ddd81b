// Name-to-number tables of the Wi-Fi settings.
#include <cstring>

#include "config/network_sections.h"

namespace {

struct NameNumber {
  const char* name;
  int number;
};

template <size_t N>
int Lookup(const NameNumber (&table)[N], const char* name) {
  if (!name) return -1;
  for (const NameNumber& e : table)
    if (strcmp(e.name, name) == 0) return e.number;
  return -1;
}

const NameNumber kMacModes[] = {{"MIXED", 1}, {"G", 2}, {"B", 3}, {"A", 4}};
// There is no region 4.
const NameNumber kRegions[] = {
    {"USA", 1}, {"TAIWAN", 2}, {"FRANCE", 3}, {"ISRAEL", 5}};
const NameNumber kWepAuthModes[] = {{"open system", 0}, {"shared key", 1}};

}  // namespace

int WirelessMacModeNameToInt(const char* name) { return Lookup(kMacModes, name); }
int WirelessRegionNameToInt(const char* name) { return Lookup(kRegions, name); }
int WepEncryptAuthModeNameToInt(const char* name) {
  return Lookup(kWepAuthModes, name);
}
