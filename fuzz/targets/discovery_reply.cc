// Answers to a LAN search, several to one search: each is taken into the
// camera table as the search thread takes a datagram, then every entry is
// read back, as a record and as the XML text the host asks for. Answers are
// separated by a line holding only "--" (a datagram carries at most 5120
// bytes).
#include <cstring>
#include <string>
#include <vector>

#include "discovery/search_ipc.h"
#include "fuzz_target.h"

namespace {

const size_t kDatagramBytes = 5120;

std::vector<std::string> Split(const std::string& all) {
  std::vector<std::string> parts;
  size_t from = 0;
  for (;;) {
    size_t at = all.find("\n--\n", from);
    parts.push_back(all.substr(from, at == std::string::npos ? std::string::npos : at - from));
    if (at == std::string::npos) break;
    from = at + 4;
  }
  return parts;
}

}  // namespace

QV_FUZZ_TARGET(discovery_reply) {
  CCSearchIPC search;
  if (size > 2) search.SetSearchRootName(size % 2 ? "root" : "XML_LOCAL");
  for (std::string& reply : Split(qvfuzz::Text(data, size))) {
    if (reply.size() > kDatagramBytes) reply.resize(kDatagramBytes);
    std::vector<char> datagram(reply.begin(), reply.end());
    datagram.push_back('\0');
    search.TakeDatagram(datagram.data(), static_cast<int>(reply.size()), "lo");
  }
  for (long i = 0; i < search.GetIPCCount(); ++i) {
    IPC_ENTRY entry;
    search.GetIPCInfo(i, &entry);
    std::vector<char> xml(8192);
    search.GetIPCInfoXML(i, xml.data(), static_cast<int>(xml.size()));
  }
  return 0;
}
