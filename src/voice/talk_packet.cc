#include "voice/talk_packet.h"

#include <cstdio>

namespace {

void Put16(std::string* out, uint32_t v) {
  out->push_back(static_cast<char>(v & 0xFF));
  out->push_back(static_cast<char>((v >> 8) & 0xFF));
}

void Put32(std::string* out, uint32_t v) {
  Put16(out, v & 0xFFFF);
  Put16(out, v >> 16);
}

}  // namespace

std::string MakeTalkMessage(const TalkPacket& packet) {
  char xml[512];
  int xml_len = snprintf(xml, sizeof(xml),
                         "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\n<XML_VEXORA>\n"
                         "<MESSAGE_HEADER\nMsg_type=\"MEDIA_DATA_MESSAGE\" Msg_code=\"3\" "
                         "Msg_flag=\"0\" />\n<MESSAGE_BODY>\n<POS\nStartPos=\"0\" DataLen=\"%d\" "
                         "/>\n</MESSAGE_BODY>\n</XML_VEXORA>",
                         packet.length + kTalkHeaderSize);
  std::string out;
  int audio = packet.length > 0 && packet.data ? packet.length : 0;
  out.reserve(static_cast<size_t>(xml_len) + 4 + kTalkHeaderSize + static_cast<size_t>(audio));
  out.append(xml, static_cast<size_t>(xml_len));
  out.append(4, '\0');
  uint32_t tick = static_cast<uint32_t>(packet.tick);
  Put32(&out, tick);
  Put32(&out, tick);
  Put16(&out, packet.sequence & 0xFFFF);
  Put16(&out, static_cast<uint32_t>(packet.length) & 0xFFFF);
  out.push_back(0x11);
  out.push_back(1);
  out.push_back(1);
  out.push_back(1);
  Put32(&out, packet.index);
  out.append(packet.data.get(), static_cast<size_t>(audio));
  return out;
}
