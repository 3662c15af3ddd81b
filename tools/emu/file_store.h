// The files an emulated camera serves and keeps: pictures it took, files
// put there by a test, uploads, and, with a folder, the files in that folder.
//
// A camera path is looked up by its key: backslashes become slashes and the
// leading slashes go ("/mnt/sd/a.avi" and "mnt\sd\a.avi" are the same file);
// a path with an empty or ".." part has no key. An upload is kept under the
// last part of the host's path, so that it can be fetched back by that name.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace qvemu {

class FileStore {
 public:
  // folder "" keeps everything in memory.
  explicit FileStore(std::string folder);

  static std::string Key(const std::string& camera_path);

  // Kept in memory (a picture, a file a test offers). false without a key.
  bool Put(const std::string& camera_path, std::string bytes);
  // Memory first, then the folder.
  bool Get(const std::string& camera_path, std::string* bytes) const;
  // The same without a copy of a file kept in memory; null when not found.
  std::shared_ptr<const std::string> Share(const std::string& camera_path) const;
  // Keeps an upload under the last part of host_path, in memory and in the
  // folder. The key it is kept under ("" when the name is unusable).
  std::string PutUpload(const std::string& host_path, std::shared_ptr<const std::string> bytes);

  const std::string& folder() const { return folder_; }

 private:
  const std::string folder_;
  mutable std::mutex mu_;
  std::map<std::string, std::shared_ptr<const std::string>> files_;
};

}  // namespace qvemu
