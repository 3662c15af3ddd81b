// Where the camera's configuration and its RTSP server overlap: the main
// stream's picture size, frame rate and bit rate (EncodeConfig of stream 0)
// and whether clients must authenticate (StreamAccess Auth).
#pragma once

#include <string>

#include "emu/rtsp_server.h"
#include "quorvel/quorvel.h"

namespace qvemu {

// True for the set codes that can change those settings (media, video,
// video encode, stream access).
bool SetCodeTouchesRtsp(long code);

// `options` with the configuration's settings applied: the size when it reads
// as WxH within 16..4096, the frame rate within 1..60, the bit rate within
// 16..100000 kbit/s (others keep their value); authentication with user and
// password, or none when Auth is 0.
RtspOptions RtspOptionsFromConfig(const IPCConfig& cfg, const RtspOptions& options,
                                  const std::string& user, const std::string& password);

}  // namespace qvemu
