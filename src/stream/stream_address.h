// Stream addresses: the path a camera serves for a codec family and stream
// index, the RTSP address real play builds, and the address the RTSP client
// opens (with the credentials percent-encoded into it).
#pragma once

#include <string>

// "/mpeg4" for codec family 0 and index 0, "/mpeg4cif" for family 0 and any
// other index, and "" (no path) for every other family.
std::string StreamPathFor(unsigned short codec_family, unsigned short stream_index);

// "<address>:<port><path>" when the address contains "vxr://" and
// `keep_scheme` is set; otherwise "rtsp://<address>:<port><path>".
std::string BuildStreamAddress(const char* address, int port, const std::string& path,
                               bool keep_scheme);

// Every byte except ALPHA, DIGIT and "-._~" as %XX (upper-case hex).
std::string PercentEncode(const std::string& text);

// The address with "user:password@" (each percent-encoded) after "://".
// Unchanged when the user is empty, when there is no "://", or when the
// authority already holds credentials.
std::string AddressWithCredentials(const std::string& address, const std::string& user,
                                   const std::string& password);
