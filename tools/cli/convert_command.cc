// quorvel convert IN OUT: a recording of the library (or the .tmp a crash
// left behind) into a standard container. Runs the library's converter
// itself, not through the exported functions.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <cstring>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

#include "cli.h"
#include "converter_log.h"
#include "report.h"
#include "stream/avi_converter.h"

namespace {

struct ConvertOptions {
  int fps = 0;
  bool alaw = false;
  bool mulaw = false;
  std::string aac_config;
  std::string in, out;
};

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

int RunConvert(const Cli& cli, const ConvertOptions& o) {
  SetConverterLog(cli.log.console);
  AviConvertOptions options;
  if (o.fps > 0) options.frame_rate = o.fps;
  if (o.alaw) options.g711_law = kG711ALaw;
  if (o.mulaw) options.g711_law = kG711MuLaw;
  if (!o.aac_config.empty()) ParseHex(o.aac_config, &options.aac_config);  // checked when read
  av_log_set_level(AV_LOG_ERROR);
  CAviConverter converter(options);
  if (converter.Convert(o.in, o.out) != 0) return Fail("convert failed: " + converter.Error());
  PrintReport(o.out, converter.Report());
  return 0;
}

}  // namespace

void AddConvertCommand(Cli& cli) {
  auto o = std::make_shared<ConvertOptions>();
  CLI::App* convert = cli.Add(
      &cli.app, "convert",
      "turn a recording (or a .tmp left by a crash) into a standard .avi/.mp4/.mov/.mkv",
      [&cli, o] { return RunConvert(cli, *o); });
  convert->add_option("IN", o->in, "the recording")->required();
  convert->add_option("OUT", o->out, "the file to write; its extension picks the container")
      ->required();
  convert->add_option("--fps", o->fps, "play the video at N frames per second (default: the "
                                       "recording's)")
      ->type_name("N")->check(CLI::Range(1, 1000));
  auto* alaw = convert->add_flag("--alaw", o->alaw, "the G.711 audio is A-law");
  convert->add_flag("--mulaw", o->mulaw, "the G.711 audio is mu-law (default: told from the "
                                         "samples)")
      ->excludes(alaw);
  convert->add_option("--aac-config", o->aac_config,
                      "the stream's AudioSpecificConfig in hexadecimal, as in "
                      "QV_AUDIO_PARAM.config (default: AAC-LC at the recording's rate and "
                      "channels)")
      ->type_name("HEX")
      ->check(CLI::Validator(
          [](std::string& text) {
            std::vector<uint8_t> bytes;
            return ParseHex(text, &bytes) ? std::string()
                                          : "wants 1 to 64 bytes of hexadecimal, as 1408";
          },
          "HEX"));
}
