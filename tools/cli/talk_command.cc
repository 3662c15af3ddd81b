// quorvel talk FILE.wav: play a WAV file through the camera's speaker, at
// the pace of its audio.
#include <chrono>
#include <cstdio>
#include <memory>
#include <set>
#include <thread>

#include "camera_session.h"
#include "progress.h"
#include "report.h"
#include "wav_file.h"

namespace {

// PCM talk (the library's audio types 3 and up carry rate and channels).
const int kPcmAudioType = 3;
const int kFrameMs = 40;
const int kDrainMs = 300;

struct TalkOptions {
  std::string path;
};

// Waits for one of codes on this session; false (reported) on time-out,
// interruption or a lost link.
bool AwaitTalkEvent(CameraSession& session, const std::string& what, size_t since,
                    const std::set<long>& codes, Notice* found) {
  return session.AwaitEvent(what, since, [&](const Notice& n) { return codes.count(n.code) > 0; },
                            session.TimeoutMs(), found);
}

int RunTalk(const Cli& cli, const TalkOptions& o) {
  std::string what = "talk " + o.path;
  WavAudio wav;
  std::string error;
  if (!ReadWav(o.path, &wav, &error)) return Fail(what + " failed: " + error);
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  long id = session.id();

  size_t since = Notices::Instance().End();
  long started = IP_NET_DVR_StartVoiceCom(id, kPcmAudioType, wav.sample_rate, wav.channels);
  if (started < 0) return FailResult(what, started);
  Notice answer;
  bool answered = AwaitTalkEvent(
      session, what, since,
      {EVENT_STARTAUDIOOK, EVENT_STARTAUDIOFAILED, EVENT_STARTAUDIO_ISBUSY,
       EVENT_STARTAUDIO_PARAMERROR, EVENT_STARTAUDIO_AUDIODDISABLED},
      &answer);
  if (!answered || answer.code != EVENT_STARTAUDIOOK) {
    // A refused talk stays requested (the library asks again): withdraw it.
    IP_NET_DVR_StopVoiceCom(id);
    return answered ? FailEvent(what, answer) : 1;
  }
  printf("talk: the camera accepted %d Hz, %d channel%s\n", wav.sample_rate, wav.channels,
         wav.channels == 1 ? "" : "s");

  size_t frame_bytes = static_cast<size_t>(wav.sample_rate) * wav.channels * 2 * kFrameMs / 1000;
  frame_bytes -= frame_bytes % (2 * static_cast<size_t>(wav.channels));
  size_t total = wav.samples.size();
  size_t sent = 0;
  long frames = 0;
  auto start = std::chrono::steady_clock::now();
  {
    Progress progress(what);
    while (sent < total && !Interrupted()) {
      size_t n = std::min(frame_bytes, total - sent);
      long r = IP_NET_DVR_InputAudioData(id, wav.samples.data() + sent, static_cast<int>(n));
      if (r < 0 && r != -1) {
        IP_NET_DVR_StopVoiceCom(id);
        return FailResult(what, r);
      }
      sent += n;
      ++frames;
      progress.Update(static_cast<int>(sent * 100 / total));
      std::this_thread::sleep_until(start + std::chrono::milliseconds(frames * kFrameMs));
    }
  }
  // The library cannot tell when its last frame left, and a stop drops the
  // frames still waiting: give the sender a moment to empty its queue.
  if (!Interrupted()) std::this_thread::sleep_for(std::chrono::milliseconds(kDrainMs));
  since = Notices::Instance().End();
  long stopped = IP_NET_DVR_StopVoiceCom(id);
  if (stopped < 0) return FailResult(what + " stop", stopped);
  if (!AwaitTalkEvent(session, what + " stop", since,
                      {EVENT_STOPAUDIOOK, EVENT_STOPAUDIOFAILED}, &answer)) {
    return 1;
  }
  if (answer.code != EVENT_STOPAUDIOOK) return FailEvent(what + " stop", answer);
  if (Interrupted()) return Fail(what + " interrupted");
  double seconds = static_cast<double>(total) / (wav.sample_rate * wav.channels * 2);
  printf("talk: sent %.1f s of audio (%zu bytes in %ld frames); the camera stopped talk\n",
         seconds, sent, frames);
  return 0;
}

}  // namespace

void AddTalkCommand(Cli& cli) {
  auto o = std::make_shared<TalkOptions>();
  CLI::App* talk = cli.Add(&cli.app, "talk", "play a 16-bit PCM WAV file through the camera",
                           [&cli, o] { return RunTalk(cli, *o); });
  talk->add_option("FILE", o->path, "the WAV file (16-bit PCM, one or two channels)")->required();
}
