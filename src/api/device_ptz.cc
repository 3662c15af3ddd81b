// Exported pan-tilt-zoom and preset commands.
#include <cstdio>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"

namespace {

struct CommandWord {
  long number;
  const char* word;
};

const CommandWord kPtzCommands[] = {
    {11, "zoomtele"}, {12, "zoomwide"}, {13, "FocusNearAutoOff"}, {14, "FocusFarAutoOff"},
    {15, "IrisOpenAutoOff"}, {16, "IrisCloseAutoOff"}, {17, "up"}, {18, "down"},
    {19, "left"}, {20, "right"}, {21, "left_up"}, {22, "right_up"},
    {23, "left_down"}, {24, "right_down"}, {26, "stop"},
};

const CommandWord kPresetCommands[] = {{8, "setpreset"}, {9, "clearpreset"}, {39, "callpreset"}};

template <size_t N>
const char* Lookup(const CommandWord (&table)[N], long number) {
  for (const CommandWord& entry : table) {
    if (entry.number == number) return entry.word;
  }
  return nullptr;
}

}  // namespace

QV_API long IP_NET_DVR_PTZControlEx(long userID, const char* xml) {
  QV_LOG("[%s:%d]%s(%d) pXml:%s\n\n", __FUNCTION__, static_cast<int>(userID),
         xml != nullptr ? xml : "");
  return ObjectPtzList.PTZControlEx(userID, xml);
}

QV_API long IP_NET_DVR_PTZControl(long userID, long command, long tiltSpeed, long panSpeed) {
  QV_LOG("[%s:%d]%s(userID: %d) enter function\n\n", __FUNCTION__, static_cast<int>(userID));
  const char* word = Lookup(kPtzCommands, command);
  if (word == nullptr) return QV_E_UNKNOWN_PTZ_CMD;
  char xml[256];
  // The pan speed is the fourth argument and the tilt speed the third.
  snprintf(xml, sizeof(xml),
           "<xml>\n<cmd>%s</cmd><panspeed>%ld</panspeed><tiltspeed>%ld</tiltspeed></xml>", word,
           panSpeed, tiltSpeed);
  return IP_NET_DVR_PTZControlEx(userID, xml);
}

QV_API long IP_NET_DVR_PTZPreset(long userID, long command, long preset) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  const char* word = Lookup(kPresetCommands, command);
  if (word == nullptr) return QV_E_UNKNOWN_PTZ_CMD;
  if (static_cast<unsigned long>(preset) > 255) return QV_E_INVALID_ARG;
  char xml[256];
  snprintf(xml, sizeof(xml), "<xml>\n<cmd>%s</cmd><preset>%ld</preset><flag>1</flag></xml>\n",
           word, preset);
  return IP_NET_DVR_PTZControlEx(userID, xml);
}
