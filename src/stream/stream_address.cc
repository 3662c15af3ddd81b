#include "stream/stream_address.h"

#include <cstdio>
#include <cstring>

std::string StreamPathFor(unsigned short codec_family, unsigned short stream_index) {
  if (codec_family == 0) return stream_index == 0 ? "/mpeg4" : "/mpeg4cif";
  // Deliberately no path for H.264: the table of H.264 paths ("/h264-01"
  // to "/h264-05") hangs on a test of the family's upper half-word that a
  // 16-bit family never passes, and cameras serve H.264 at the root.
  return "";
}

std::string BuildStreamAddress(const char* address, int port, const std::string& path,
                               bool keep_scheme) {
  char port_text[16];
  snprintf(port_text, sizeof(port_text), "%d", port);
  std::string out;
  if (!(keep_scheme && strstr(address, "vxr://") != nullptr)) out = "rtsp://";
  out += address;
  out += ':';
  out += port_text;
  out += path;
  return out;
}

std::string PercentEncode(const std::string& text) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : text) {
    bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                 c == '-' || c == '.' || c == '_' || c == '~';
    if (plain) {
      out += static_cast<char>(c);
    } else {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 0x0F];
    }
  }
  return out;
}

std::string AddressWithCredentials(const std::string& address, const std::string& user,
                                   const std::string& password) {
  if (user.empty()) return address;
  size_t scheme_end = address.find("://");
  if (scheme_end == std::string::npos) return address;
  size_t authority = scheme_end + 3;
  size_t authority_end = address.find('/', authority);
  if (authority_end == std::string::npos) authority_end = address.size();
  if (address.find('@', authority) < authority_end) return address;
  std::string credentials = PercentEncode(user);
  if (!password.empty()) credentials += ':' + PercentEncode(password);
  return address.substr(0, authority) + credentials + '@' + address.substr(authority);
}
