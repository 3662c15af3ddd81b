// A live-stream description: transport, video and audio parameters, the
// video configuration decoded from hexadecimal.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_target.h"
#include "link/live_stream_param.h"

QV_FUZZ_TARGET(live_stream) {
  std::string message = qvfuzz::Text(data, size);
  LIVE_STREAM_PARAM param;
  GetLiveStreamParam(&message[0], &param);
  if (param.config_length < 0 ||
      param.config_length > static_cast<int>(sizeof(param.config)) ||
      strnlen(param.video_encoder, sizeof(param.video_encoder)) == sizeof(param.video_encoder) ||
      strnlen(param.audio_encoder, sizeof(param.audio_encoder)) == sizeof(param.audio_encoder))
    abort();
  return 0;
}
