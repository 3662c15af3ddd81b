// The discovery port of emulated cameras: one UDP socket (port 3001 unless
// told otherwise) that answers search requests for every camera added to it
// and applies the changes addressed to one camera by serial number:
// modification (new network settings or stream ports in its configuration
// document), reboot (its control links drop) and restore (its factory
// document comes back and its links drop). Changes for other serial numbers
// are ignored.
//
// Answers are broadcast (255.255.255.255, to the port the request came from)
// through the interface the request came in on, from the camera's own
// address when that address is local, so that a host finds a camera even when
// the camera's address lies in another subnet. Everything received is
// recorded for tests.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "emu/search_reply.h"

namespace qvemu {

class Camera;

struct DiscoveryOptions {
  uint16_t port = 3001;
  std::string reply_root = "XML_BRELLWICK";  // root element of the answers
  int reply_spread_ms = 0;  // camera i answers i * spread / cameras ms after the request
  bool verbose = false;     // print one line per request and change
};

// One datagram the discovery port received.
struct DiscoveryDatagram {
  std::string payload;  // the exact bytes
  std::string type, code;  // MESSAGE_HEADER attributes ("" when not parsable)
  std::string serial;   // the serial number the message addresses ("" for a search)
  std::string from;     // sender "address:port"
  std::string interface_name;  // interface it came in on
};

class DiscoveryResponder {
 public:
  explicit DiscoveryResponder(DiscoveryOptions options = {});
  ~DiscoveryResponder();  // stops
  DiscoveryResponder(const DiscoveryResponder&) = delete;
  DiscoveryResponder& operator=(const DiscoveryResponder&) = delete;

  // Binds the port on every address of the calling thread's network
  // namespace and starts answering. false when the port cannot be bound.
  bool Start();
  void Stop();

  // The camera answers as id; a restore brings factory_document back (empty:
  // the camera's own start document). May be called at any time.
  void AddCamera(Camera* camera, const DiscoveryIdentity& id,
                 const std::string& factory_document = "");

  // Counts per serial number.
  int Answers(const std::string& serial) const;        // search answers sent
  int Modifications(const std::string& serial) const;  // modifications applied
  int Reboots(const std::string& serial) const;
  int Restores(const std::string& serial) const;
  // What the port received, in order.
  std::vector<DiscoveryDatagram> Received() const;
  // Waits until done(received) holds or the timeout passes; done's last answer.
  bool WaitFor(const std::function<bool(const std::vector<DiscoveryDatagram>&)>& done,
               int timeout_ms) const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qvemu
