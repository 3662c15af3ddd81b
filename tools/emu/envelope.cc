#include "emu/envelope.h"

#include <tinyxml.h>

#include <cstdio>

#include "base/base64.h"

namespace qvemu {
namespace {

constexpr size_t kHeaderFieldMax = 255;

std::string Field(const TiXmlElement* e, const char* name) {
  const char* v = e->Attribute(name);
  std::string s = v ? v : "";
  if (s.size() > kHeaderFieldMax) s.resize(kHeaderFieldMax);
  return s;
}

}  // namespace

std::string MakeEnvelope(const std::string& type, const std::string& code,
                         const std::string& flag, const std::string& body) {
  std::string out = "<?xml version=\"1.0\" encoding=\"GB2312\" ?>";
  out += "<XML_VEXORA>\n<MESSAGE_HEADER\nMsg_type=\"" + type + "\"\nMsg_code=\"" + code +
         "\"\nMsg_flag=\"" + flag + "\"\n/>";
  if (body.empty()) {
    out += "<MESSAGE_BODY/>\n</XML_VEXORA>";
  } else {
    out += "<MESSAGE_BODY>\n" + body + "\n</MESSAGE_BODY>\n</XML_VEXORA>";
  }
  return out;
}

bool ParseHeader(const std::string& payload, std::string* type,
                 std::string* code, std::string* flag) {
  type->clear();
  code->clear();
  flag->clear();
  size_t start = payload.find("<MESSAGE_HEADER");
  if (start == std::string::npos) return false;
  size_t end = payload.find("/>", start);
  if (end == std::string::npos) return false;
  TiXmlDocument doc;
  doc.Parse(payload.substr(start, end + 2 - start).c_str());
  const TiXmlElement* root = doc.RootElement();
  if (doc.Error() || !root || root->ValueStr() != "MESSAGE_HEADER") return false;
  *type = Field(root, "Msg_type");
  *code = Field(root, "Msg_code");
  *flag = Field(root, "Msg_flag");
  return true;
}

std::string ExtractBody(const std::string& payload) {
  static const std::string kOpen = "<MESSAGE_BODY>";
  size_t start = payload.find(kOpen);
  size_t end = payload.find("</MESSAGE_BODY>");
  if (start == std::string::npos || end == std::string::npos || end < start + kOpen.size())
    return "";
  return payload.substr(start + kOpen.size(), end - start - kOpen.size());
}

std::string EscapeAttr(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string HexEncode(const std::string& bytes) {
  std::string out;
  char two[3];
  for (unsigned char c : bytes) {
    snprintf(two, sizeof two, "%02x", c);
    out += two;
  }
  return out;
}

std::string Base64Encode(const std::string& bytes) {
  CBase64 codec;
  std::string out(bytes.size() * 4 / 3 + 8, '\0');
  int n = codec.Encode(bytes.data(), &out[0], static_cast<int>(bytes.size()));
  out.resize(static_cast<size_t>(n));
  return out;
}

BodyXml::BodyXml(const std::string& body) : doc_(new TiXmlDocument) {
  // A wrapper element lets several top-level elements parse as one document.
  doc_->Parse(("<BODY>" + body + "</BODY>").c_str());
  ok_ = !doc_->Error() && doc_->RootElement() != nullptr;
}

BodyXml::~BodyXml() = default;

const TiXmlElement* BodyXml::First() const {
  return ok_ ? doc_->RootElement()->FirstChildElement() : nullptr;
}

const TiXmlElement* BodyXml::Find(const char* name) const {
  return ok_ ? doc_->RootElement()->FirstChildElement(name) : nullptr;
}

std::string BodyXml::Attr(const TiXmlElement* e, const char* name) {
  const char* v = e ? e->Attribute(name) : nullptr;
  return v ? v : "";
}

}  // namespace qvemu
