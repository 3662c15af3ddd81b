#include "emu/file_service.h"

#include <tinyxml.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/compat.h"
#include "emu/camera_behaviour.h"
#include "emu/envelope.h"
#include "emu/frame_io.h"
#include "emu/hostile.h"
#include "emu/snapshot_picture.h"
#include "emu/system_replies.h"

namespace qvemu {
namespace {

const char kOkText[] = "FILE TRANSPORT OK!";
const char kCheckFailedText[] = "FILE CHECK FAILED!";
const char kConfigPath[] = "/mnt/nand/config.xml";
const long kFirmwareType = 1;
const long kConfigType = 0;
const size_t kLinkPiece = 32768;
const long kReserveLimit = 256L << 20;  // most set aside ahead for a link-mode upload
const size_t kMaxRecords = 200;
const unsigned long kGoWaitMs = 30000;
const int kSnapAlarm = 23;
const int kStallMs = 60000;  // how long a stalled link-mode upload goes unread

Reply Answer(const ReceivedFrame& f, int flag, const std::string& body = "") {
  return Reply{f.type, f.code, std::to_string(flag), body};
}

std::string Fmt(const char* fmt, long a, long b, long c = 0) {
  char text[256];
  snprintf(text, sizeof text, fmt, a, b, c);
  return text;
}

}  // namespace

struct FileService::Job {
  int connection = 0;
  std::atomic<bool> go{false};    // link mode: the reply went out
  std::atomic<bool> stop{false};  // the host stopped the transfer
  std::atomic<bool> finished{false};
  std::thread thread;
};

FileService::FileService(const CameraOptions& options, CameraBehaviour* behaviour, Hooks hooks)
    : options_(options), behaviour_(behaviour), hooks_(std::move(hooks)),
      store_(options.files_dir), mode_(options.file_mode) {
  using namespace std::placeholders;
  behaviour_->SetControlHandler(1022, std::bind(&FileService::OnUploadRequest, this, _1, _2, _3));
  behaviour_->SetControlHandler(1023,
                                std::bind(&FileService::OnDownloadRequest, this, _1, _2, _3));
  behaviour_->SetControlHandler(1043, std::bind(&FileService::OnSnapshot, this, _1, _2, _3));
  behaviour_->SetMediaHandler(1, std::bind(&FileService::OnUploadData, this, _1, _2, _3));
  behaviour_->SetMediaHandler(2, std::bind(&FileService::OnStop, this, _1, _2, _3));
}

FileService::~FileService() { Stop(); }

void FileService::Stop() {
  stop_ = true;
  std::list<std::unique_ptr<Job>> jobs;
  {
    std::lock_guard<std::mutex> lock(mu_);
    jobs.swap(jobs_);
  }
  for (auto& job : jobs) {
    job->stop = true;
    if (job->thread.joinable()) job->thread.join();
  }
  stop_ = false;
}

void FileService::SetMode(FileMode mode) {
  std::lock_guard<std::mutex> lock(mu_);
  mode_ = mode;
}

FileMode FileService::Mode() const {
  std::lock_guard<std::mutex> lock(mu_);
  return mode_;
}

DataChannelFault FileService::NextFaultLocked(std::string* bytes) {
  if (!options_.hostile) return fault_;
  HostileDice dice = DiceFor(options_.hostile_seed, "data", ++hostile_transfers_);
  DataChannelFault fault;
  int kind = DataChannelFault::kNone;
  std::string served = HostileFile(&dice, bytes != nullptr ? *bytes : std::string(), &kind,
                                   &fault.value);
  fault.kind = static_cast<DataChannelFault::Kind>(kind);
  if (bytes != nullptr) *bytes = std::move(served);
  return fault;
}

void FileService::SetFault(const DataChannelFault& fault) {
  std::lock_guard<std::mutex> lock(mu_);
  fault_ = fault;
}

void FileService::SetAnswerRequests(bool on) {
  std::lock_guard<std::mutex> lock(mu_);
  answer_requests_ = on;
}

std::vector<DataChannelRecord> FileService::DataChannels() const {
  std::lock_guard<std::mutex> lock(mu_);
  return records_;
}

FirmwareReport FileService::LastFirmware() const {
  std::lock_guard<std::mutex> lock(mu_);
  return firmware_;
}

int FileService::Snapshots() const {
  std::lock_guard<std::mutex> lock(mu_);
  return snapshots_;
}

int FileService::Uploads() const {
  std::lock_guard<std::mutex> lock(mu_);
  return uploads_;
}

bool FileService::WaitUploads(int count, int timeout_ms) const {
  std::unique_lock<std::mutex> lock(mu_);
  return changed_.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                           [&] { return uploads_ >= count; });
}

void FileService::Print(const std::string& text) const {
  if (hooks_.print) hooks_.print(text);
}

FileService::Request FileService::ReadRequest(const ReceivedFrame& f) {
  // A first request is a REQUEST_PARAM; a re-announcement a RESPONSE_PARAM.
  BodyXml body(f.body);
  const TiXmlElement* e = body.First();
  Request r;
  r.type = atol(BodyXml::Attr(e, "FileType").c_str());
  r.name = BodyXml::Attr(e, "FilePath");
  if (r.name.empty()) r.name = BodyXml::Attr(e, "FileName");
  if (r.name.empty()) r.name = BodyXml::Attr(e, "RemoteFileName");
  r.length = atol(BodyXml::Attr(e, "FileLength").c_str());
  return r;
}

FileService::Job* FileService::Spawn(int connection, std::function<void(Job*)> body) {
  std::unique_ptr<Job> job(new Job);
  job->connection = connection;
  Job* raw = job.get();
  std::list<std::unique_ptr<Job>> finished;
  {
    std::lock_guard<std::mutex> lock(mu_);
    for (auto it = jobs_.begin(); it != jobs_.end();) {
      if ((*it)->finished) {
        finished.push_back(std::move(*it));
        it = jobs_.erase(it);
      } else {
        ++it;
      }
    }
    // Started under the lock: Stop, and a later Spawn reaping finished jobs,
    // take a job from the list only with its thread handle already set.
    raw->thread = std::thread([raw, body] {
      body(raw);
      raw->finished = true;
    });
    jobs_.push_back(std::move(job));
  }
  for (auto& done : finished) done->thread.join();
  return raw;
}

void FileService::AddRecord(const DataChannelRecord& record) {
  std::lock_guard<std::mutex> lock(mu_);
  records_.push_back(record);
  if (records_.size() > kMaxRecords) records_.erase(records_.begin());
}

bool FileService::FinishUpload(long type, const std::string& path, std::string upload,
                               bool locked) {
  auto kept = std::make_shared<const std::string>(std::move(upload));
  const std::string& bytes = *kept;
  std::string key = store_.PutUpload(path, kept);
  std::string note;
  bool accepted = true;
  if (type == kFirmwareType) {
    FirmwareReport report;
    report.checked = true;
    report.check = CheckFirmwareImage(bytes);
    report.name = key;
    report.size = bytes.size();
    accepted = report.check.ok;
    note = accepted ? "firmware image accepted, version " + std::to_string(report.check.version)
                    : "firmware image refused: " + report.check.reason;
    std::lock_guard<std::mutex> lock(mu_);
    firmware_ = report;
  } else if (type == kConfigType) {
    accepted = locked ? behaviour_->SetConfigDocumentLocked(bytes)
                      : behaviour_->SetConfigDocument(bytes);
    note = accepted ? "configuration file loaded" : "configuration file refused";
  } else {
    note = "file " + key + " stored (" + std::to_string(bytes.size()) + " bytes)";
  }
  if (locked) {
    behaviour_->NoteLocked(note);
  } else {
    behaviour_->AddNote(note);
  }
  Print(note);
  {
    std::lock_guard<std::mutex> lock(mu_);
    ++uploads_;
  }
  changed_.notify_all();
  return accepted;
}

void FileService::OnUploadRequest(LinkState* link, const ReceivedFrame& f,
                                  std::vector<Reply>* out) {
  Request request = ReadRequest(f);
  FileMode mode;
  DataChannelFault fault;
  {
    std::lock_guard<std::mutex> lock(mu_);
    if (!answer_requests_) return;
    mode = mode_;
    fault = NextFaultLocked(nullptr);
  }
  if (mode == FileMode::kLink) {
    std::lock_guard<std::mutex> lock(mu_);
    LinkUpload& upload = link_uploads_[link->connection];
    upload = LinkUpload{request.type, request.name, ""};
    // Room for the announced length, so a large file is not moved as it grows.
    if (request.length > 0) upload.data.reserve(std::min(request.length, kReserveLimit));
    out->push_back(Answer(f, 0, Fmt("<RESPONSE_PARAM Port=\"%ld\" Type=\"%ld\" />",
                                    hooks_.control_port(), 1)));
    return;
  }
  auto channel = std::make_shared<DataChannel>();
  if (!channel->Listen(options_.bind_address)) {
    out->push_back(Answer(f, -1));
    return;
  }
  out->push_back(
      Answer(f, 0, Fmt("<RESPONSE_PARAM Port=\"%ld\" Type=\"%ld\" />", channel->port(), 0)));
  Spawn(link->connection, [this, channel, request, fault](Job* job) {
    ServeUpload(job, channel, request, fault);
  });
}

void FileService::ServeUpload(Job* job, std::shared_ptr<DataChannel> channel, Request request,
                              DataChannelFault fault) {
  DataChannelRecord record;
  record.upload = true;
  record.name = request.name;
  {
    std::lock_guard<std::mutex> lock(mu_);
    record.number = ++channels_;
  }
  if (!channel->Accept(job->stop)) return;
  std::string file;
  bool whole = channel->ReceiveFile(
      fault,
      [&](const std::string& bytes) {
        return FinishUpload(request.type, request.name, bytes, false) ? kOkText
                                                                      : kCheckFailedText;
      },
      job->stop, &record, &file);
  Print("data channel " + std::to_string(record.number) + ": upload of " + request.name +
        (whole ? " arrived" : " did not arrive whole"));
  AddRecord(record);
}

void FileService::OnDownloadRequest(LinkState* link, const ReceivedFrame& f,
                                    std::vector<Reply>* out) {
  Request request = ReadRequest(f);
  {
    std::lock_guard<std::mutex> lock(mu_);
    if (!answer_requests_) return;
  }
  std::shared_ptr<const std::string> served =
      request.name == kConfigPath
          ? std::make_shared<const std::string>(behaviour_->ConfigDocumentLocked())
          : store_.Share(request.name);
  if (!served) {
    out->push_back(Answer(f, -1));
    return;
  }
  FileMode mode;
  DataChannelFault fault;
  {
    std::lock_guard<std::mutex> lock(mu_);
    mode = mode_;
    if (options_.hostile) {
      std::string bytes = *served;  // a drawn fault may alter what is served
      fault = NextFaultLocked(&bytes);
      served = std::make_shared<const std::string>(std::move(bytes));
    } else {
      fault = NextFaultLocked(nullptr);
    }
  }
  long announced = static_cast<long>(served->size());
  if (fault.kind == DataChannelFault::kWrongLength) announced += fault.value;
  if (mode == FileMode::kLink) {
    Reply reply = Answer(f, 0, Fmt("<RESPONSE_PARAM Port=\"%ld\" Type=\"%ld\" FileLength=\"%ld\" />",
                                   hooks_.control_port(), 1, announced));
    Job* job = Spawn(link->connection, [this, served, fault](Job* j) {
      PushDownload(j, served, fault);
    });
    reply.after_sent = [job] { job->go = true; };
    out->push_back(reply);
    return;
  }
  auto channel = std::make_shared<DataChannel>();
  if (!channel->Listen(options_.bind_address)) {
    out->push_back(Answer(f, -1));
    return;
  }
  out->push_back(Answer(f, 0, Fmt("<RESPONSE_PARAM Port=\"%ld\" Type=\"%ld\" FileLength=\"%ld\" />",
                                  channel->port(), 0, announced)));
  Spawn(link->connection, [this, channel, request, served, fault](Job* job) {
    ServeDownload(job, channel, request, served, fault);
  });
}

void FileService::ServeDownload(Job* job, std::shared_ptr<DataChannel> channel, Request request,
                                std::shared_ptr<const std::string> bytes,
                                DataChannelFault fault) {
  DataChannelRecord record;
  record.name = request.name;
  {
    std::lock_guard<std::mutex> lock(mu_);
    record.number = ++channels_;
  }
  if (!channel->Accept(job->stop)) return;
  channel->SendFile(*bytes, fault, job->stop, &record);
  Print("data channel " + std::to_string(record.number) + ": download of " + request.name +
        (record.complete ? " sent" : " cut short"));
  AddRecord(record);
}

void FileService::PushDownload(Job* job, std::shared_ptr<const std::string> served,
                               DataChannelFault fault) {
  const std::string& bytes = *served;
  unsigned long start = GetTickCount();
  while (!job->go && !job->stop && GetTickCount() - start < kGoWaitMs) SleepMs(1);
  if (!job->go) return;
  size_t limit = bytes.size();
  if (fault.kind == DataChannelFault::kStall) {
    limit = std::min(limit, static_cast<size_t>(std::max(0L, fault.value)));
  }
  // An empty file is one empty frame.
  for (size_t at = 0; at < limit || (at == 0 && bytes.empty());) {
    if (job->stop) return;
    size_t n = std::min(kLinkPiece, limit - at);
    std::string payload = MakeEnvelope(
        "MEDIA_DATA_MESSAGE", "0", "0",
        Fmt("<POS StartPos=\"%ld\" DataLen=\"%ld\" />", static_cast<long>(at),
            static_cast<long>(n)));
    payload.append(4, '\0');
    payload.append(bytes, at, n);
    if (!hooks_.send(job->connection, EncodeFrame(payload)) || bytes.empty()) return;
    at += n;
  }
}

void FileService::OnUploadData(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out) {
  std::unique_lock<std::mutex> lock(mu_);
  auto it = link_uploads_.find(link->connection);
  if (it == link_uploads_.end()) return;
  BodyXml body(f.body);
  const TiXmlElement* pos = body.Find("POS");
  long start = atol(BodyXml::Attr(pos, "StartPos").c_str());
  long length = atol(BodyXml::Attr(pos, "DataLen").c_str());
  size_t xml_end = f.payload.find('\0');
  LinkUpload& upload = it->second;
  if (xml_end == std::string::npos || length < 0 ||
      f.payload.size() != xml_end + 4 + static_cast<size_t>(length) ||
      start != static_cast<long>(upload.data.size())) {
    link_uploads_.erase(it);
    lock.unlock();
    behaviour_->NoteLocked("upload data out of order, upload dropped");
    out->push_back(Reply{"SYSTEM_CONTROL_MESSAGE", "1022", "-1", ""});
    return;
  }
  if (length > 0) {
    upload.data.append(f.payload, xml_end + 4, static_cast<size_t>(length));
    if (fault_.kind == DataChannelFault::kStall &&
        upload.data.size() >= static_cast<size_t>(std::max(0L, fault_.value))) {
      link->pause_reading_ms = kStallMs;
    }
    return;
  }
  LinkUpload done = std::move(upload);
  link_uploads_.erase(it);
  lock.unlock();
  if (!FinishUpload(done.type, done.path, std::move(done.data), true)) {
    out->push_back(Reply{"SYSTEM_CONTROL_MESSAGE", "1022", "-1",
                         "<RESPONSE_PARAM errormsg=\"file check failed\" />"});
  }
}

void FileService::OnStop(LinkState* link, const ReceivedFrame&, std::vector<Reply>*) {
  std::lock_guard<std::mutex> lock(mu_);
  link_uploads_.erase(link->connection);
  for (auto& job : jobs_) {
    if (job->connection == link->connection) job->stop = true;
  }
}

void FileService::OnSnapshot(LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
  int number;
  {
    std::lock_guard<std::mutex> lock(mu_);
    number = ++snapshots_;
  }
  char name[64];
  snprintf(name, sizeof name, "/mnt/sd/snapshot/snap_%04d.jpg", number);
  store_.Put(name, SnapshotPicture());
  behaviour_->NoteLocked(std::string("snapshot taken: ") + name);
  out->push_back(Answer(f, 0));
  time_t now = behaviour_->CameraNowLocked();
  struct tm t;
  gmtime_r(&now, &t);
  AlarmSpec alarm = AlarmAt(t, kSnapAlarm);
  alarm.data = name;
  out->push_back(Reply{"ALARM_REPORT_MESSAGE", "CMD_REPORT_ALARM", "0", AlarmBody({alarm})});
}

}  // namespace qvemu
