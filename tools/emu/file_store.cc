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
  files_[key] = std::move(bytes);
  return true;
}

bool FileStore::Get(const std::string& camera_path, std::string* bytes) const {
  std::string key = Key(camera_path);
  if (key.empty()) return false;
  {
    std::lock_guard<std::mutex> lock(mu_);
    auto it = files_.find(key);
    if (it != files_.end()) {
      *bytes = it->second;
      return true;
    }
  }
  if (folder_.empty()) return false;
  std::ifstream in(folder_ + "/" + key, std::ios::binary);
  if (!in) return false;
  std::ostringstream s;
  s << in.rdbuf();
  *bytes = s.str();
  return true;
}

std::string FileStore::PutUpload(const std::string& host_path, const std::string& bytes) {
  std::string key = Key(host_path);
  key = key.substr(key.rfind('/') + 1);  // the last part (npos + 1 is 0)
  if (key.empty()) return "";
  {
    std::lock_guard<std::mutex> lock(mu_);
    files_[key] = bytes;
  }
  if (!folder_.empty()) {
    std::ofstream out(folder_ + "/" + key, std::ios::binary | std::ios::trunc);
    out << bytes;
  }
  return key;
}

}  // namespace qvemu
