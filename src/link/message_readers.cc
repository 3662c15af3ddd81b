#include "link/message_readers.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "base/debug_log.h"
#include "link/xml_util.h"

namespace {

TiXmlNode* MessageBody(TiXmlDocument& doc) {
  return SelectNode(doc.RootElement(), "MESSAGE_BODY");
}

int AttribInt(const TiXmlNode* node, const char* name) {
  const char* v = GetAttribValue(node, name);
  return v != nullptr ? atoi(v) : 0;
}

void ReadAlarmItem(TiXmlNode* item, ALARM_ENTRY* entry) {
  for (TiXmlNode* child = item->FirstChild(); child != nullptr; child = child->NextSibling()) {
    if (child->ToElement() == nullptr) continue;
    if (strcmp(child->Value(), "ALARM_TIME") == 0) {
      entry->year = AttribInt(child, "Year");
      entry->month = AttribInt(child, "Month");
      entry->day = AttribInt(child, "Day");
      entry->wday = AttribInt(child, "WDay");
      entry->hour = AttribInt(child, "Hour");
      entry->minute = AttribInt(child, "Minute");
      entry->second = AttribInt(child, "Second");
    } else if (strcmp(child->Value(), "ALARM_INFO") == 0) {
      entry->alarm_code = AttribInt(child, "Alarm_code");
      entry->alarm_flag = AttribInt(child, "Alarm_flag");
      entry->alarm_level = AttribInt(child, "Alarm_level");
      CopyText(entry->alarm_data, sizeof(entry->alarm_data), GetAttribValue(child, "Alarm_data"));
    }
  }
}

}  // namespace

int TinyGetMessageHeader(char* message, char* type, char* code, char* flag) {
  if (message == nullptr || type == nullptr || code == nullptr || flag == nullptr) return -1;
  type[0] = code[0] = flag[0] = '\0';
  char* fragment = nullptr;
  if (CopyFragment(message, "<MESSAGE_HEADER", "/>", &fragment) != 0) return -1;
  TiXmlDocument doc;
  bool ok = ParseXml(doc, fragment);
  free(fragment);
  if (!ok) {
    const char* desc = doc.ErrorDesc();
    // The test is inverted on purpose: a parser that has a description
    // reports that it has none.
    if (desc == nullptr || desc[0] == '\0') {
      QV_LOG("[%s:%d]xml.doc:%s\n", "");
    } else {
      QV_LOG("[%s:%d]doc.ErrorDesc return NULL\n");
    }
    QV_LOG("[%s:%d]xml.doc err:row:%d, col:%d\n", doc.ErrorRow(), doc.ErrorCol());
    QV_LOG("[%s:%d]Invalid message, xml format error:\n%s\n\n", message);
    return -1;
  }
  TiXmlElement* root = doc.RootElement();
  if (root == nullptr || strcmp(root->Value(), "MESSAGE_HEADER") != 0) return -2;
  CopyText(type, kHeaderFieldMax + 1, root->Attribute("Msg_type"));
  CopyText(code, kHeaderFieldMax + 1, root->Attribute("Msg_code"));
  CopyText(flag, kHeaderFieldMax + 1, root->Attribute("Msg_flag"));
  if (type[0] == '\0') return -3;
  if (code[0] == '\0') return -4;
  if (flag[0] == '\0') return -5;
  return 0;
}

int GetMessageBody(char* message, char** body) {
  static const char kOpen[] = "<MESSAGE_BODY>";
  static const char kClose[] = "</MESSAGE_BODY>";
  if (message == nullptr || body == nullptr) return -1;
  const char* open = strstr(message, kOpen);
  const char* close = strstr(message, kClose);
  if (open == nullptr || close == nullptr) return -1;
  const char* begin = open + strlen(kOpen);
  if (close < begin) return -1;
  size_t n = static_cast<size_t>(close - begin);
  char* copy = new (std::nothrow) char[n + 1];
  if (copy == nullptr) return -1;
  memcpy(copy, begin, n);
  copy[n] = '\0';
  *body = copy;
  return 0;
}

int GetXmlPosAndDataLen(char* message, int* startPos, int* dataLen) {
  *startPos = -1;
  *dataLen = 0;
  TiXmlDocument doc;
  if (!ParseXml(doc, message)) return -1;
  TiXmlNode* pos = SelectNode(MessageBody(doc), "POS");
  if (pos == nullptr) return -2;
  const char* start = GetAttribValue(pos, "StartPos");
  const char* len = GetAttribValue(pos, "DataLen");
  if (start != nullptr) *startPos = static_cast<int>(atol(start));
  if (len != nullptr) *dataLen = static_cast<int>(atol(len));
  return 0;
}

int GetAlarmList(char* message, ALARM_ENTRY** list) {
  if (list == nullptr) return -1;
  *list = nullptr;
  TiXmlDocument doc;
  if (!ParseXml(doc, message)) return -1;
  TiXmlNode* report = SelectNode(MessageBody(doc), "ALARM_REPORT_PARAM");
  if (report == nullptr) return -2;
  TiXmlNode* first = report->FirstChild("ALARM_ITEM");
  if (first == nullptr) return -3;
  int count = 0;
  for (TiXmlNode* n = first; n != nullptr && count < kMaxAlarmItems; n = n->NextSibling()) {
    if (n->ToElement() != nullptr && strcmp(n->Value(), "ALARM_ITEM") == 0) ++count;
  }
  ALARM_ENTRY* entries = new (std::nothrow) ALARM_ENTRY[count]();
  if (entries == nullptr) return -1;
  // One record position per sibling node: a node that is not an ALARM_ITEM
  // leaves its position zero, and the walk stops at the counted records.
  int index = 0;
  for (TiXmlNode* n = first; n != nullptr && index < count; n = n->NextSibling(), ++index) {
    if (n->ToElement() != nullptr && strcmp(n->Value(), "ALARM_ITEM") == 0) {
      ReadAlarmItem(n, &entries[index]);
    }
  }
  *list = entries;
  return count;
}

int GetAudioRTPParam(char* message, int* rtpRecvPort, int* codec, int* sampleRate,
                     int* bitsPerSample, int* channels, int* connectionType) {
  *codec = 0;
  *sampleRate = 8000;
  *bitsPerSample = 16;
  *channels = 1;
  *connectionType = 0;
  TiXmlDocument doc;
  if (!ParseXml(doc, message)) return -1;
  TiXmlNode* reply = SelectNode(MessageBody(doc), "RA_START_RESPONSE");
  if (reply == nullptr) return -2;
  const char* v = GetAttribValue(reply, "AudioCodec");
  if (v != nullptr && strstr(v, "AAC") != nullptr) *codec = 1;
  if ((v = GetAttribValue(reply, "Samplerate")) != nullptr) *sampleRate = atoi(v);
  if ((v = GetAttribValue(reply, "BitsPerSample")) != nullptr) *bitsPerSample = atoi(v);
  if ((v = GetAttribValue(reply, "Channels")) != nullptr) *channels = atoi(v);
  if ((v = GetAttribValue(reply, "RTPRecvPort")) != nullptr) *rtpRecvPort = atoi(v);
  if ((v = GetAttribValue(reply, "ConnectionType")) != nullptr) *connectionType = atoi(v);
  return 0;
}

int GetFileTransportPort(const char* xml, unsigned short* port, int* type,
                         unsigned long* fileLength) {
  *port = 0;
  *type = 0;
  *fileLength = 0;
  TiXmlDocument doc;
  if (!ParseXml(doc, xml)) return -1;
  TiXmlElement* root = doc.RootElement();
  if (root == nullptr) return -2;
  *port = static_cast<unsigned short>(AttribInt(root, "Port"));
  *type = AttribInt(root, "Type");
  // A 32-bit conversion, widened afterwards.
  *fileLength = static_cast<unsigned long>(static_cast<long>(AttribInt(root, "FileLength")));
  return 0;
}

int GetSessionID(char* message, std::string& id) {
  id.clear();
  TiXmlDocument doc;
  if (!ParseXml(doc, message)) return -1;
  TiXmlNode* reply = SelectNode(MessageBody(doc), "USER_AUTH_RESPONSE");
  if (reply == nullptr) return -2;
  if (reply->ToElement() == nullptr) return -3;
  const char* v = GetAttribValue(reply, "Sessionid");
  if (v != nullptr) id = v;
  return 0;
}
