#include "link/host_lookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "base/debug_log.h"

namespace {

const int kWaitSliceMs = 100;

bool SystemLookup(const char* name, in_addr_t* addr) {
  struct addrinfo hints;
  memset(&hints, 0, sizeof(hints));
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  struct addrinfo* found = nullptr;
  if (getaddrinfo(name, nullptr, &hints, &found) != 0 || found == nullptr) return false;
  *addr = reinterpret_cast<struct sockaddr_in*>(found->ai_addr)->sin_addr.s_addr;
  freeaddrinfo(found);
  return true;
}

std::atomic<HostLookupFn> g_lookup{SystemLookup};

// Shared by the waiting caller and the helper; whoever is last frees it.
struct Lookup {
  std::mutex mu;
  std::condition_variable cv;
  bool done = false;
  bool found = false;
  in_addr_t addr = 0;
};

}  // namespace

void SetHostLookup(HostLookupFn lookup) { g_lookup = lookup != nullptr ? lookup : SystemLookup; }

bool LookUpHost(const std::string& name, in_addr_t* addr,
                const std::function<bool()>& keep_waiting) {
  HostLookupFn lookup = g_lookup;
  auto state = std::make_shared<Lookup>();
  try {
    std::thread([state, name, lookup] {
      in_addr_t found = 0;
      bool ok = lookup(name.c_str(), &found);
      std::lock_guard<std::mutex> lock(state->mu);
      state->found = ok;
      state->addr = found;
      state->done = true;
      state->cv.notify_all();
    }).detach();
  } catch (const std::system_error&) {
    return lookup(name.c_str(), addr);  // no helper: look up here
  }
  std::unique_lock<std::mutex> lock(state->mu);
  while (!state->done) {
    if (!keep_waiting()) return false;
    state->cv.wait_for(lock, std::chrono::milliseconds(kWaitSliceMs));
  }
  if (state->found) *addr = state->addr;
  return state->found;
}

in_addr_t ResolveHostAddress(const std::string& host, const std::function<bool()>& keep_waiting) {
  in_addr_t addr = inet_addr(host.c_str());
  if (addr != INADDR_NONE) return addr;
  if (!LookUpHost(host, &addr, keep_waiting)) return inet_addr(host.c_str());
  struct in_addr shown;
  shown.s_addr = addr;
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &shown, text, sizeof(text));
  QV_LOG("[%s:%d]host %s ip str=%s\n", host.c_str(), text);
  return addr;
}
