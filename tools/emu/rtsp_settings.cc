#include "emu/rtsp_settings.h"

#include <cstdio>

namespace qvemu {

bool SetCodeTouchesRtsp(long code) {
  return code == 520 || code == 521 || code == 523 || code == 620;
}

RtspOptions RtspOptionsFromConfig(const IPCConfig& cfg, const RtspOptions& options,
                                  const std::string& user, const std::string& password) {
  RtspOptions out = options;
  const VideoEncodeStream& main = cfg.media.Video.Encode.Stream[0];
  int width = 0, height = 0;
  char tail = 0;
  if (sscanf(main.Resolution, "%dx%d%c", &width, &height, &tail) == 2 && width >= 16 &&
      height >= 16 && width <= 4096 && height <= 4096) {
    out.width = width;
    out.height = height;
  }
  if (main.FrameRate >= 1 && main.FrameRate <= 60) out.fps = main.FrameRate;
  if (main.BitRate >= 16 && main.BitRate <= 100000) out.bitrate_kbps = main.BitRate;
  bool auth = cfg.mediaStream.StreamAccess.Auth != 0;
  out.user = auth ? user : "";
  out.password = auth ? password : "";
  return out;
}

}  // namespace qvemu
