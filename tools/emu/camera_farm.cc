#include "emu/camera_farm.h"

#include <arpa/inet.h>

#include <cctype>
#include <cstdio>

#include "emu/config_store.h"

namespace qvemu {
namespace {

const char* const kLanPath[] = {"NetworkConfig", "LANConfig"};
const char* const kStreamPath[] = {"MediaStreamConfig", "StreamAccess"};

std::string Mac(int n) {
  char text[18];
  snprintf(text, sizeof(text), "02:51:56:%02x:%02x:%02x", (n >> 16) & 0xFF, (n >> 8) & 0xFF,
           n & 0xFF);
  return text;
}

// (address AND mask) + 1, or "" when either is not an address.
std::string FirstHost(const std::string& address, const std::string& mask) {
  in_addr a, m;
  if (inet_pton(AF_INET, address.c_str(), &a) != 1 || inet_pton(AF_INET, mask.c_str(), &m) != 1) {
    return "";
  }
  a.s_addr = htonl((ntohl(a.s_addr) & ntohl(m.s_addr)) | 1u);
  char text[INET_ADDRSTRLEN];
  inet_ntop(AF_INET, &a, text, sizeof(text));
  return text;
}

}  // namespace

std::string CameraFarm::NthSerial(const std::string& first, int n) {
  size_t digits = first.size();
  while (digits > 0 && isdigit(static_cast<unsigned char>(first[digits - 1]))) --digits;
  if (digits == first.size()) {
    if (n == 0) return first;
    char suffix[16];
    snprintf(suffix, sizeof(suffix), "-%04d", n + 1);
    return first + suffix;
  }
  std::string number = first.substr(digits);
  unsigned long long value = strtoull(number.c_str(), nullptr, 10) + static_cast<unsigned>(n);
  char text[32];
  snprintf(text, sizeof(text), "%0*llu", static_cast<int>(number.size()), value);
  return first.substr(0, digits) + text;
}

std::string CameraFarm::NthAddress(const std::string& first, int n) {
  in_addr a;
  if (inet_pton(AF_INET, first.c_str(), &a) != 1) return "";
  a.s_addr = htonl(ntohl(a.s_addr) + static_cast<uint32_t>(n));
  char text[INET_ADDRSTRLEN];
  inet_ntop(AF_INET, &a, text, sizeof(text));
  return text;
}

CameraFarm::CameraFarm(FarmOptions options) : options_(std::move(options)) {}

CameraFarm::~CameraFarm() { Stop(); }

bool CameraFarm::Start(std::string* error) {
  Stop();
  std::string base = options_.camera.config_document;
  if (base.empty()) base = ConfigStore::DefaultDocument();
  for (int i = 0; i < options_.cameras; ++i) {
    CameraOptions camera = options_.camera;
    std::string address = options_.bind_address;
    if (!options_.first_address.empty()) {
      address = NthAddress(options_.first_address, i);
      if (address.empty()) {
        *error = "not an IPv4 address: " + options_.first_address;
        Stop();
        return false;
      }
    }
    camera.bind_address = address;
    camera.port = options_.first_port == 0 ? 0 : static_cast<uint16_t>(options_.first_port + i);
    // What the camera announces: where it listens, its own MAC, its port.
    std::string document = base;
    SetDocumentAttribute(&document, kLanPath, 2, "IPAddress", address);
    SetDocumentAttribute(&document, kLanPath, 2, "Netmask", options_.netmask);
    std::string gateway = FirstHost(address, options_.netmask);
    if (!gateway.empty()) SetDocumentAttribute(&document, kLanPath, 2, "Gateway", gateway);
    SetDocumentAttribute(&document, kLanPath, 2, "MacAddress", Mac(i + 1));
    if (camera.port != 0) {
      SetDocumentAttribute(&document, kStreamPath, 2, "PTZPort", std::to_string(camera.port));
    }
    camera.config_document = document;
    std::unique_ptr<Camera> c(new Camera(camera));
    if (!c->Start()) {
      *error = "camera " + std::to_string(i + 1) + " cannot listen on " + address + ":" +
               std::to_string(camera.port);
      Stop();
      return false;
    }
    if (camera.port == 0) {
      SetDocumentAttribute(&document, kStreamPath, 2, "PTZPort", std::to_string(c->Port()));
      c->SetConfigDocument(document);
    }

    DiscoveryIdentity id = options_.identity;
    id.serial = NthSerial(options_.serial, i);
    identities_.push_back(id);
    addresses_.push_back(address);
    cameras_.push_back(std::move(c));
  }
  responder_.reset(new DiscoveryResponder(options_.discovery));
  for (size_t i = 0; i < cameras_.size(); ++i) {
    responder_->AddCamera(cameras_[i].get(), identities_[i], cameras_[i]->ConfigDocument());
  }
  if (!responder_->Start()) {
    *error = "cannot bind the discovery port " + std::to_string(options_.discovery.port);
    Stop();
    return false;
  }
  return true;
}

void CameraFarm::Stop() {
  if (responder_) responder_->Stop();
  for (auto& c : cameras_) c->Stop();
  responder_.reset();
  cameras_.clear();
  identities_.clear();
  addresses_.clear();
}

int CameraFarm::Size() const { return static_cast<int>(cameras_.size()); }
Camera& CameraFarm::At(int i) { return *cameras_.at(static_cast<size_t>(i)); }
const DiscoveryIdentity& CameraFarm::Identity(int i) const {
  return identities_.at(static_cast<size_t>(i));
}
const std::string& CameraFarm::Address(int i) const {
  return addresses_.at(static_cast<size_t>(i));
}
DiscoveryResponder& CameraFarm::Responder() { return *responder_; }

}  // namespace qvemu
