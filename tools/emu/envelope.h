// The XML envelope of control-link messages as the camera writes and reads
// it, and small helpers for the bodies it carries.
#pragma once

#include <memory>
#include <string>

class TiXmlDocument;
class TiXmlElement;

namespace qvemu {

// The envelope, byte for byte as the library writes it: declaration, the
// MESSAGE_HEADER with one attribute a line, then the body wrapped in line
// feeds, or "<MESSAGE_BODY/>" for an empty body. No line feed at the end.
std::string MakeEnvelope(const std::string& type, const std::string& code,
                         const std::string& flag, const std::string& body);

// Msg_type, Msg_code and Msg_flag of the header element (the text from
// "<MESSAGE_HEADER" to the next "/>"). Outputs are cleared first and keep
// at most 255 characters; false when the fragment is missing or unparsable.
bool ParseHeader(const std::string& payload, std::string* type,
                 std::string* code, std::string* flag);

// The text between the first "<MESSAGE_BODY>" and the first
// "</MESSAGE_BODY>" (so including the line feeds the envelope puts around
// it); empty when either tag is missing.
std::string ExtractBody(const std::string& payload);

// Text escaped for a double-quoted attribute value.
std::string EscapeAttr(const std::string& text);

// Two lower-case hexadecimal digits a byte.
std::string HexEncode(const std::string& bytes);

// Base64, as the camera writes parameter blocks into its replies.
std::string Base64Encode(const std::string& bytes);

// A message body parsed as a sequence of elements (a body may hold more
// than one top-level element, as the encrypted login does).
class BodyXml {
 public:
  explicit BodyXml(const std::string& body);
  ~BodyXml();
  bool ok() const { return ok_; }
  // The first top-level element, or the first with that name; null if none.
  const TiXmlElement* First() const;
  const TiXmlElement* Find(const char* name) const;
  // The attribute's value, or "" (also for a null element).
  static std::string Attr(const TiXmlElement* e, const char* name);

 private:
  std::unique_ptr<TiXmlDocument> doc_;
  bool ok_ = false;
};

}  // namespace qvemu
