// quorvel convert [--fps N] [--alaw|--mulaw] [--aac-config HEX] IN OUT
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

#include "command.h"
#include "stream/avi_converter.h"

namespace {

int Usage() {
  fprintf(stderr,
          "usage: quorvel convert [--fps N] [--alaw|--mulaw] [--aac-config HEX] IN OUT\n"
          "  OUT's extension picks the container: .avi, .mp4, .mov or .mkv\n"
          "  --fps N    play the video at N frames per second (default: the recording's)\n"
          "  --alaw, --mulaw  the G.711 law (default: told from the samples)\n"
          "  --aac-config HEX  the stream's AudioSpecificConfig, as in QV_AUDIO_PARAM.config\n"
          "             (default: AAC-LC at the recording's rate and channels)\n");
  return 2;
}

// "1408" -> {0x14, 0x08}; false for anything but 1 to 64 bytes of hex.
bool ParseHex(const std::string& text, std::vector<uint8_t>* out) {
  if (text.empty() || text.size() % 2 != 0 || text.size() > 128) return false;
  out->clear();
  for (size_t i = 0; i < text.size(); i += 2) {
    char pair[3] = {text[i], text[i + 1], '\0'};
    char* end = nullptr;
    long byte = strtol(pair, &end, 16);
    if (*end != '\0' || !isxdigit(static_cast<unsigned char>(pair[0]))) return false;
    out->push_back(static_cast<uint8_t>(byte));
  }
  return true;
}

void PrintReport(const std::string& out, const AviConvertReport& r) {
  printf("wrote %s (%s, %.1f s)\n", out.c_str(), r.container.c_str(), r.seconds);
  if (!r.video_codec.empty()) {
    printf("  video: %s %dx%d at %g fps, %d frames", r.video_codec.c_str(), r.width, r.height,
           r.frame_rate, r.video_frames);
    if (r.skipped_video > 0) printf(" (%d left out)", r.skipped_video);
    printf("\n");
  }
  if (!r.audio_in.empty()) {
    printf("  audio: %s", r.audio_in.c_str());
    if (r.audio_out != r.audio_in) printf(" -> %s", r.audio_out.c_str());
    printf(", %d frames", r.audio_frames);
    if (r.skipped_audio > 0) printf(" (%d left out)", r.skipped_audio);
    printf("\n");
  }
  if (r.recovered) printf("  recovered: the recording was not closed (no index)\n");
  if (!r.damage.empty()) printf("  stopped early: %s\n", r.damage.c_str());
}

}  // namespace

int RunConvert(int argc, char** argv) {
  AviConvertOptions options;
  const char* files[2] = {nullptr, nullptr};
  int n = 0;
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--fps" && i + 1 < argc) {
      char* end = nullptr;
      long fps = strtol(argv[++i], &end, 10);
      if (*end != '\0' || fps < 1 || fps > 1000) return Usage();
      options.frame_rate = static_cast<int>(fps);
    } else if (a == "--alaw") {
      options.g711_law = kG711ALaw;
    } else if (a == "--mulaw") {
      options.g711_law = kG711MuLaw;
    } else if (a == "--aac-config" && i + 1 < argc) {
      if (!ParseHex(argv[++i], &options.aac_config)) return Usage();
    } else if (a.size() > 1 && a[0] == '-') {
      return Usage();
    } else if (n < 2) {
      files[n++] = argv[i];
    } else {
      return Usage();
    }
  }
  if (n != 2) return Usage();
  av_log_set_level(AV_LOG_ERROR);
  CAviConverter converter(options);
  if (converter.Convert(files[0], files[1]) != 0) {
    fprintf(stderr, "quorvel convert: %s\n", converter.Error().c_str());
    return 1;
  }
  PrintReport(files[1], converter.Report());
  return 0;
}
