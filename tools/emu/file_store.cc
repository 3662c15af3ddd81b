#include "emu/file_store.h"

#include <fstream>
#include <sstream>
#include <utility>

namespace qvemu {

FileStore::FileStore(std::string folder) : folder_(std::move(folder)) {}

std::string FileStore::Key(const std::string& camera_path) {
  std::string key, part;
  std::string path = camera_path + "/";
  for (char c : path) {
    if (c != '/' && c != '\\') {
      part += c;
      continue;
    }
    if (part == "..") return "";
    if (!part.empty() && part != ".") key += (key.empty() ? "" : "/") + part;
    part.clear();
  }
  return key;
}

bool FileStore::Put(const std::string& camera_path, std::string bytes) {
  std::string key = Key(camera_path);
  if (key.empty()) return false;
  std::lock_guard<std::mutex> lock(mu_);
  files_[key] = std::make_shared<const std::string>(std::move(bytes));
  return true;
}

bool FileStore::Get(const std::string& camera_path, std::string* bytes) const {
  std::shared_ptr<const std::string> file = Share(camera_path);
  if (!file) return false;
  *bytes = *file;
  return true;
}

std::shared_ptr<const std::string> FileStore::Share(const std::string& camera_path) const {
  std::string key = Key(camera_path);
  if (key.empty()) return nullptr;
  {
    std::lock_guard<std::mutex> lock(mu_);
    auto it = files_.find(key);
    if (it != files_.end()) return it->second;
  }
  if (folder_.empty()) return nullptr;
  std::ifstream in(folder_ + "/" + key, std::ios::binary);
  if (!in) return nullptr;
  std::ostringstream s;
  s << in.rdbuf();
  return std::make_shared<const std::string>(s.str());
}

std::string FileStore::PutUpload(const std::string& host_path,
                                 std::shared_ptr<const std::string> bytes) {
  std::string key = Key(host_path);
  key = key.substr(key.rfind('/') + 1);  // the last part (npos + 1 is 0)
  if (key.empty()) return "";
  {
    std::lock_guard<std::mutex> lock(mu_);
    files_[key] = bytes;
  }
  if (!folder_.empty()) {
    std::ofstream out(folder_ + "/" + key, std::ios::binary | std::ios::trunc);
    out << *bytes;
  }
  return key;
}

}  // namespace qvemu
