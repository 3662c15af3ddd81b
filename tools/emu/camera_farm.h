// Many emulated cameras in one process, each with its own serial number,
// control port and (when given a first address) its own address, all
// answering discovery through one DiscoveryResponder. A farm of one is a
// single camera that answers discovery.
//
// Camera i (from 0) gets serial number `serial` counted up by i (the
// trailing digits of "QVEMU-0001" give QVEMU-0002, ...), listens on
// first_address + i (or on bind_address when no first address is given) and
// first_port + i (or a free port), and announces in its configuration the
// address it listens on, a MAC address of its own and its control port as
// PTZPort. The addresses must be local: assigned to an interface, or inside
// a local route.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "emu/camera.h"
#include "emu/discovery_responder.h"

namespace qvemu {

struct FarmOptions {
  int cameras = 1;
  std::string serial = "QVEMU-0001";  // of the first camera
  std::string bind_address = "127.0.0.1";
  std::string first_address;          // empty: every camera on bind_address
  std::string netmask = "255.255.255.0";
  uint16_t first_port = 0;            // 0: free ports
  CameraOptions camera;               // user, password, document, ... of every camera
  DiscoveryIdentity identity;         // device type, OSD, P2P id of every camera
  DiscoveryOptions discovery;
};

class CameraFarm {
 public:
  explicit CameraFarm(FarmOptions options);
  ~CameraFarm();  // stops
  CameraFarm(const CameraFarm&) = delete;
  CameraFarm& operator=(const CameraFarm&) = delete;

  // Starts every camera, then the discovery port. false (with *error set and
  // nothing left running) when a camera cannot listen or the port cannot be
  // bound.
  bool Start(std::string* error);
  void Stop();

  int Size() const;
  Camera& At(int i);
  const DiscoveryIdentity& Identity(int i) const;
  const std::string& Address(int i) const;  // where camera i listens
  DiscoveryResponder& Responder();

  // The serial number `first` counted up by n.
  static std::string NthSerial(const std::string& first, int n);
  // The dotted address `first` counted up by n; "" when first is no address.
  static std::string NthAddress(const std::string& first, int n);

 private:
  FarmOptions options_;
  std::vector<std::unique_ptr<Camera>> cameras_;
  std::vector<DiscoveryIdentity> identities_;
  std::vector<std::string> addresses_;
  std::unique_ptr<DiscoveryResponder> responder_;
};

}  // namespace qvemu
