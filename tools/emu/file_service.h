// File transfers of an emulated camera: downloads from its file store and
// uploads into it (transfer requests 1022 and 1023, answered in channel or
// link mode), firmware upgrades checked as they arrive, and snapshots
// (request 1043, reported with alarm 23 naming a picture the store serves).
//
// Channel mode: the reply names a port of a data channel that the camera
// opens for the one transfer (see data_channel.h). Link mode: the reply
// names the control port with Type 1, and the file travels as
// MEDIA_DATA_MESSAGE frames on the control link: the XML text with POS
// StartPos (file position) and DataLen, 4 zero bytes, then the data; an
// upload ends with a frame of DataLen 0, a download when the announced
// length arrived. A MEDIA_DATA_MESSAGE of code 2 from the host stops it.
//
// An upload of type 1 is a firmware image (firmware_image.h) and of type 0
// a configuration document; both are checked once whole. A bad one is
// refused: in channel mode with "FILE CHECK FAILED!" instead of "FILE
// TRANSPORT OK!", in link mode with a 1022 reply of flag -1.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "emu/camera.h"
#include "emu/data_channel.h"
#include "emu/file_store.h"
#include "emu/firmware_image.h"

namespace qvemu {

class CameraBehaviour;
struct LinkState;
struct Reply;

// The outcome of the last firmware upgrade.
struct FirmwareReport {
  bool checked = false;  // an image arrived whole
  FirmwareCheck check;
  std::string name;      // where the store keeps it
  size_t size = 0;
};

class FileService {
 public:
  struct Hooks {
    // Sends bytes on one link (by connection number); true when taken whole.
    std::function<bool(int connection, const std::string& bytes)> send;
    std::function<uint16_t()> control_port;
    std::function<void(const std::string&)> print;  // may be empty
  };

  // Registers its handlers with behaviour.
  FileService(const CameraOptions& options, CameraBehaviour* behaviour, Hooks hooks);
  ~FileService();
  FileService(const FileService&) = delete;
  FileService& operator=(const FileService&) = delete;

  // Ends every transfer and waits for its thread.
  void Stop();

  // How the next transfers travel.
  void SetMode(FileMode mode);
  FileMode Mode() const;
  // Fault of the transfers that start afterwards. In link mode only the
  // wrong length (of a download's announcement) and the stall apply (a
  // download's frames stop; an upload's link is not read for a minute).
  void SetFault(const DataChannelFault& fault);
  // Off: transfer requests (1022, 1023) go unanswered.
  void SetAnswerRequests(bool on);

  FileStore& Store() { return store_; }
  // What the data channels carried, oldest first.
  std::vector<DataChannelRecord> DataChannels() const;
  FirmwareReport LastFirmware() const;
  int Snapshots() const;     // pictures taken
  int Uploads() const;       // uploads that arrived whole
  // Waits until uploads that arrived whole reach count. false on time-out.
  bool WaitUploads(int count, int timeout_ms) const;

 private:
  struct Job;
  struct LinkUpload {
    long type = 0;
    std::string path;
    std::string data;
  };
  struct Request {
    long type = 0;
    std::string name;  // FilePath (upload) or FileName (download)
    long length = 0;   // FileLength of a first upload request
  };

  static Request ReadRequest(const ReceivedFrame& f);
  void OnUploadRequest(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnDownloadRequest(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnSnapshot(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnUploadData(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnStop(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);

  // Starts body on a thread of its own, joined by Stop.
  Job* Spawn(int connection, std::function<void(Job*)> body);
  void ServeUpload(Job* job, std::shared_ptr<DataChannel> channel, Request request,
                   DataChannelFault fault);
  // The served file is shared, not copied: it may be many megabytes.
  void ServeDownload(Job* job, std::shared_ptr<DataChannel> channel, Request request,
                     std::shared_ptr<const std::string> bytes, DataChannelFault fault);
  void PushDownload(Job* job, std::shared_ptr<const std::string> bytes, DataChannelFault fault);
  // Keeps a whole upload and checks it; false when the camera refuses it.
  // locked: called from a handler (the behaviour's lock is held).
  bool FinishUpload(long type, const std::string& path, std::string bytes, bool locked);
  void AddRecord(const DataChannelRecord& record);
  // The fault of a transfer starting now (the one set, or in hostile mode a
  // drawn one, which may also alter the served *bytes); mu_ held.
  DataChannelFault NextFaultLocked(std::string* bytes);
  void Print(const std::string& text) const;

  const CameraOptions options_;
  CameraBehaviour* const behaviour_;
  const Hooks hooks_;
  FileStore store_;

  mutable std::mutex mu_;
  mutable std::condition_variable changed_;
  FileMode mode_;
  DataChannelFault fault_;
  uint64_t hostile_transfers_ = 0;
  bool answer_requests_ = true;
  std::vector<DataChannelRecord> records_;
  int channels_ = 0;
  FirmwareReport firmware_;
  int snapshots_ = 0;
  int uploads_ = 0;
  std::map<int, LinkUpload> link_uploads_;  // by connection
  std::list<std::unique_ptr<Job>> jobs_;
  std::atomic<bool> stop_{false};
};

}  // namespace qvemu
