// Configuration exchange against the in-process emulated camera: one
// section's GET/SET round trip (get, reply through the AUX response
// callback, reader, edit, writer, set, the camera's acceptance), median and
// 99th percentile; and the alarm section through its writer and reader in
// memory.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "config/alarm_sections.h"
#include "emu/camera.h"
#include "quorvel/quorvel.h"

namespace {

// Keeps the latest AUX reply of each code and wakes waiters.
class Replies {
 public:
  void Install() {
    IP_NET_DVR_SetAUXResponseCallBack(&Replies::OnAux, this);
    IP_NET_DVR_SetStatusEventCallBack(&Replies::OnStatus, this);
  }
  // Waits for the next reply of `code` after `seen` replies of it.
  bool Wait(long code, int seen, std::string* xml, int timeout_ms = 10000) {
    std::unique_lock<std::mutex> lock(mu_);
    bool ok = cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                           [&] { return Count(code) > seen; });
    if (ok && xml) *xml = last_[code];
    return ok;
  }
  bool WaitLogin(int timeout_ms = 10000) {
    std::unique_lock<std::mutex> lock(mu_);
    return cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [&] { return logged_in_; });
  }

 private:
  int Count(long code) {
    for (auto& c : counts_)
      if (c.first == code) return c.second;
    return 0;
  }
  static long OnAux(long, long code, const char* xml, void* user) {
    Replies* self = static_cast<Replies*>(user);
    std::lock_guard<std::mutex> lock(self->mu_);
    bool found = false;
    for (auto& c : self->counts_)
      if (c.first == code) found = (++c.second, true);
    if (!found) self->counts_.push_back({code, 1});
    if (code >= 0 && code < 2000) self->last_[code] = xml ? xml : "";
    self->cv_.notify_all();
    return 0;
  }
  static long OnStatus(long, long code, const char*, void* user) {
    Replies* self = static_cast<Replies*>(user);
    std::lock_guard<std::mutex> lock(self->mu_);
    if (code == EVENT_LOGINOK) self->logged_in_ = true;
    self->cv_.notify_all();
    return 0;
  }
  std::mutex mu_;
  std::condition_variable cv_;
  std::vector<std::pair<long, int>> counts_;
  std::string last_[2000];
  bool logged_in_ = false;
};

double Percentile(std::vector<double> v, double p) {
  if (v.empty()) return 0;
  std::sort(v.begin(), v.end());
  size_t i = static_cast<size_t>(p * static_cast<double>(v.size() - 1) + 0.5);
  return v[std::min(i, v.size() - 1)];
}

void BM_SectionGetSetRoundTrip(benchmark::State& state) {
  IP_NET_DVR_Init();
  qvemu::Camera camera;
  camera.Start();
  Replies replies;
  replies.Install();
  long id = IP_NET_DVR_Login("127.0.0.1", camera.Port(), const_cast<char*>("admin"),
                             const_cast<char*>("admin"), nullptr);
  if (!replies.WaitLogin()) state.SkipWithError("no login");
  std::vector<double> micros;
  int round = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    std::string xml;
    IP_NET_DVR_GET_MotionDetectAlarm(id);
    if (!replies.Wait(802, round, &xml)) {
      state.SkipWithError("no reply to the get");
      break;
    }
    MotionDetectAlarm md;
    IP_NET_DVR_Alarm_getMotionDetectByXml(&md, xml.c_str());
    md.Sensitivity = round % 6;
    IP_NET_DVR_SET_MotionDetectAlarm(id, &md);
    if (!replies.Wait(822, round, nullptr)) {
      state.SkipWithError("set not accepted");
      break;
    }
    ++round;
    micros.push_back(std::chrono::duration<double, std::micro>(
                         std::chrono::steady_clock::now() - start).count());
  }
  state.counters["median_us"] = Percentile(micros, 0.5);
  state.counters["p99_us"] = Percentile(micros, 0.99);
  IP_NET_DVR_Cleanup();
  camera.Stop();
}
BENCHMARK(BM_SectionGetSetRoundTrip)->Iterations(500)->UseRealTime()->Unit(benchmark::kMicrosecond);

void BM_AlarmSectionToXmlAndBack(benchmark::State& state) {
  AlarmConfig cfg;
  memset(&cfg, 0, sizeof(cfg));
  cfg.Input.Count = QV_MAX_INPUT_CHANNELS;
  cfg.Output.Count = QV_MAX_OUTPUT_CHANNELS;
  char* text = XMLGET_AlarmConfig(&cfg);
  state.counters["bytes"] = static_cast<double>(strlen(text));
  free(text);
  for (auto _ : state) {
    char* xml = XMLGET_AlarmConfig(&cfg);
    GetAlarmConfigByXml(&cfg, xml);
    free(xml);
  }
}
BENCHMARK(BM_AlarmSectionToXmlAndBack)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
