#include "config/section_fill_helper.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>

namespace {

// Hands out distinct values, one member after the other.
class Filler {
 public:
  void operator()(int& v) {
    ++n_;
    v = n_ % 2 ? -n_ * 7 : n_ * 13;
  }
  void operator()(unsigned& v) { v = 4000000000u + static_cast<unsigned>(++n_); }
  template <size_t N>
  void operator()(char (&s)[N]) {
    // GB2312 bytes and characters that need escaping, then padding up to
    // the longest text the member holds.
    std::string text = "\xD6\xD0" + std::to_string(++n_) + "<&\"'>";
    text.resize(N - 1, ' ');
    for (size_t i = text.find(' '); i != std::string::npos && i < text.size(); ++i)
      text[i] = static_cast<char>('a' + i % 26);
    memcpy(s, text.data(), N - 1);
    s[N - 1] = 0;
  }
  void operator()(TimeSpanCfg& t) {
    unsigned* days[] = {&t.day0, &t.day1, &t.day2, &t.day3, &t.day4, &t.day5, &t.day6};
    for (unsigned* d : days) *d = 0xFFFFFFu - static_cast<unsigned>(++n_);
  }
  void operator()(DayTime& t) {
    t.Hour = ++n_ % 24;
    t.Minute = ++n_ % 60;
    t.Second = ++n_ % 60;
  }
  void operator()(IOOutputAction& io) {
    io.Count = QV_MAX_OUTPUT_ACTIONS;
    for (OutputChannelAction& c : io.Channel) {
      (*this)(c.Enable);
      (*this)(c.PortIndex);
    }
  }
  void operator()(PTZAction& p) {
    (*this)(p.Enable);
    snprintf(p.ActionType, sizeof(p.ActionType), "%s", "PositionWalk");
  }
  void operator()(AudioPlayAction& a) {
    (*this)(a.Enable);
    (*this)(a.EnableNight);
    (*this)(a.Times);
    (*this)(a.Intervel);
    (*this)(a.FileName);
  }

 private:
  int n_ = 0;
};

template <typename... T>
void FillAll(Filler& f, T&... members) {
  (f(members), ...);
}

}  // namespace

void FillAlarmConfig(AlarmConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  Filler f;
  cfg->Input.Count = QV_MAX_INPUT_CHANNELS;
  for (int i = 0; i < QV_MAX_INPUT_CHANNELS; ++i) {
    AlarmChannel& c = cfg->Input.Channel[i];
    FillAll(f, c.ChannelType, c.TriggerType, c.Enable, c.TimeSpan, c.light_twinkle,
            c.notify_alarmserver, c.notify_sms, c.IOOutput, c.PTZ, c.AudioPlay);
    c.PortIndex = i + 1;
  }
  MotionDetectAlarm& md = cfg->MotionDetect;
  FillAll(f, md.Enable, md.BlockCount, md.BlockConfig, md.Sensitivity, md.AlarmThreshold,
          md.DayNightSwitch, md.NightSensitivity, md.NightAlarmThreshold, md.NightStartTime,
          md.NightEndTime, md.TimeSpan, md.light_twinkle, md.notify_alarmserver, md.alarm_led,
          md.alarm_push, md.IOOutput, md.PTZ, md.AudioPlay);
  VideoLostAlarm& vl = cfg->VideoLost;
  FillAll(f, vl.Enable, vl.TimeSpan, vl.IOOutput);
  VideoCoverAlarm& vc = cfg->VideoCover;
  FillAll(f, vc.Enable, vc.Sensitivity, vc.threadhold_second, vc.backgroundUpdateSecond,
          vc.TimeSpan, vc.IOOutput, vc.AudioPlay);
  StorageFullAlarm& sf = cfg->StorageFull;
  FillAll(f, sf.Enable, sf.Threshold, sf.IOOutput);
  AudioAlarm& au = cfg->Audio;
  FillAll(f, au.enable_babycry, au.sensity_babycry, au.enable_lsd, au.sensity_lsd);
  VideoGate& vg = cfg->Gate;
  for (VideoGateLine& l : vg.Line)
    FillAll(f, l.fromx, l.fromy, l.tox, l.toy, l.EnableDay, l.EnableNight, l.sensitivity,
            l.type, l.direction);
  FillAll(f, vg.TimeSpan, vg.drawrect, vg.draw_target, vg.light_twinkle, vg.notify_alarmserver,
          vg.alarm_led, vg.alarm_push, vg.IOOutput, vg.AudioPlay);
  VideoRegionAi& ra = cfg->RegionAi;
  for (RegionAiRule& r : ra.Rule)
    FillAll(f, r.enable, r.sensitivity, r.type_filter, r.mode, r.stayseconds);
  FillAll(f, ra.TimeSpan, ra.drawrect, ra.draw_target, ra.light_twinkle, ra.notify_alarmserver,
          ra.alarm_led, ra.alarm_push, ra.IOOutput, ra.AudioPlay);
  VideoPD& pd = cfg->PersonDetect;
  FillAll(f, pd.EnableDay, pd.EnableNight, pd.Type, pd.Threshold, pd.Sensitivity,
          pd.minTargetRate, pd.nonMotionFilter, pd.xPos, pd.yPos, pd.width, pd.height,
          pd.TimeSpan, pd.drawrect, pd.draw_human, pd.track_human, pd.auto_zoom,
          pd.rect_twinkle, pd.light_twinkle, pd.notify_alarmserver, pd.alarm_led,
          pd.alarm_push, pd.IOOutput, pd.AudioPlay);
  Lpr& lpr = cfg->LicencePlate;
  FillAll(f, lpr.Enable, lpr.Sensitivity, lpr.TimeSpan, lpr.drawosd, lpr.playvoice,
          lpr.IOOutput);
  FaceDetect& fd = cfg->Face;
  FillAll(f, fd.EnableDay, fd.EnableNight, fd.Threshold, fd.Sensitivity, fd.xPos, fd.yPos,
          fd.width, fd.height, fd.TimeSpan, fd.drawrect, fd.IOOutput, fd.AudioPlay);
  cfg->Output.Count = QV_MAX_OUTPUT_CHANNELS;
  for (int i = 0; i < QV_MAX_OUTPUT_CHANNELS; ++i) {
    OutputChannel& o = cfg->Output.Channel[i];
    FillAll(f, o.ChannelType, o.TriggerType, o.Duration, o.DayEnable, o.NightEnable,
            o.EnableDay, o.EnableNight);
    o.PortIndex = 10 + i;
  }
  Temp_humidity& th = cfg->TempHumidity;
  FillAll(f, th.temp_enable, th.temp_upper_limit, th.temp_lower_limit, th.temp_range_lower,
          th.temp_range_upper, th.humidity_enable, th.humidity_upper_limit,
          th.humidity_lower_limit, th.humidity_range_lower, th.humidity_range_upper,
          th.voc_enable, th.voc_good, th.voc_TracePollution, th.voc_LightPollution,
          th.voc_ModeratePollution, th.voc_HeavyPollution, th.IOOutput);
  SMSAlarm& sms = cfg->SMS;
  FillAll(f, sms.enable, sms.min_interval, sms.playresult, sms.dstnumber, sms.content);
}

void FillSystemConfig(SystemConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  Filler f;
  PTZCommonConfig& c = cfg->PTZ.Common;
  FillAll(f, c.Protocol, c.ComPort, c.BaudRate, c.DataBits, c.StopBits, c.Verify,
          c.FlowControl, c.BootAction);
  FillAll(f, cfg->PTZ.Af.enable, cfg->PTZ.Af.type, cfg->PTZ.Af.bSendOnStart);
  cfg->PTZ.Advance.Count = QV_MAX_PTZ_FUNCTIONS;
  for (PTZFunctionConfig& fn : cfg->PTZ.Advance.Function)
    FillAll(f, fn.FunctionName, fn.PresetNumber, fn.Function, fn.ReserveValue,
            fn.PresetNumber2, fn.Function2, fn.interval_sec);
  TimeConfig& t = cfg->Time;
  FillAll(f, t.TimeMode, t.TimeZone, t.NTP.ServerIP, t.NTP.ServerPort, t.NTP.RefreshInterval,
          t.Summer.enable, t.Summer.Auto, t.Summer.offset, t.Summer.start.month,
          t.Summer.start.week, t.Summer.start.weekday, t.Summer.start.hour, t.Summer.end.month,
          t.Summer.end.week, t.Summer.end.weekday, t.Summer.end.hour);
  cfg->User.nAccount = QV_MAX_USER_ACCOUNTS;
  for (UserAccount& a : cfg->User.Account) FillAll(f, a.Username, a.Password, a.Group, a.Status);
  SystemLogConfig& log = cfg->SystemLog;
  FillAll(f, log.LogLevel, log.MaxDay, log.StoreMedia, log.StorePolicy, log.AutoBackup,
          log.BackupWay);
  f(cfg->Misc.Language);
  FillAll(f, cfg->Maintain.Enable, cfg->Maintain.Day, cfg->Maintain.Time);
  f(cfg->AlowIp.Enable);
  for (unsigned& ip : cfg->AlowIp.ipaddr) f(ip);
  AlarmOnEveryHour& h = cfg->AlarmClock.EveryHour;
  FillAll(f, h.enable, h.from_hour, h.from_minute, h.from_second, h.to_hour, h.to_minute,
          h.to_second);
  for (AlarmClock& k : cfg->AlarmClock.Clock) FillAll(f, k.enable, k.hour, k.minute, k.second);
}

void FillRecordConfig(RecordConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  Filler f;
  RecordCommon& c = cfg->Common;
  FillAll(f, c.LocalEnable, c.StorageSequence, c.RemoteEnable, c.MountParam, c.StoragePolicy,
          c.RecordFileSize, c.recordFileKeeyDays, c.timelapseEnable, c.timelapseSec,
          c.timelapseFps, c.timelapseFileSize);
  ScheduleRecord& s = cfg->Schedule;
  FillAll(f, s.Stream, s.FileFormat, s.MediaType, s.LocalStore, s.RemoteStore, s.JpegInterval,
          s.FtpUpload, s.EmailUpload, s.TimeSpan);
  for (AlarmRecordConfig* r : {&cfg->MotionDetectRecord, &cfg->InputAlarmRecord})
    FillAll(f, r->Stream, r->FileFormat, r->MediaType, r->PreRecordTime, r->RecordTime,
            r->LocalStore, r->RemoteStore, r->FtpUpload, r->EmailUpload, r->alarmbits);
  for (AlarmCaptureConfig* k : {&cfg->MotionDetectCapture, &cfg->InputAlarmCapture})
    FillAll(f, k->PreTakeTime, k->sendoutInterval, k->TotalTakeTime, k->LocalStore,
            k->RemoteStore, k->FtpUpload, k->EmailUpload, k->StopNoAlarm, k->Stream,
            k->alarmbits);
}

void FillServerConfig(ServerConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  Filler f;
  cfg->FTP.Count = QV_MAX_FTP_SERVERS;
  for (FTPConfig& s : cfg->FTP.Server)
    FillAll(f, s.Index, s.ServerIP, s.ServerPort, s.Username, s.Password, s.FilePath,
            s.FileSize);
  SMTPList& m = cfg->SMTP;
  FillAll(f, m.ServerIP, m.ServerPort, m.Auth, m.Username, m.Password, m.FromEmail);
  m.Count = QV_MAX_SMTP_RECEIVERS;
  for (SMTPConfig& r : m.Receiver) FillAll(f, r.Index, r.ToEmail, r.CcEmail, r.Subject);
}

void FillPlatformConfig(PlatformConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  Filler f;
  VexoraConfig& v = cfg->Vexora;
  FillAll(f, v.Enable, v.Server, v.Port, v.Username, v.Password, v.PlayTone, v.InRingTimes,
          v.reserved, v.keyPressTimeLen, v.FileName);
}

void FillGB28181Config(GB28181Config* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  Filler f;
  GB28181& g = cfg->Gb;
  FillAll(f, g.Enable, g.nstreams, g.nChannelNum, g.hcId, g.hcIp, g.hcName, g.hcPwd, g.hcPort,
          g.lcId, g.lcName, g.lcPwd, g.lcPort, g.camId, g.alarmId, g.deviceName);
}
