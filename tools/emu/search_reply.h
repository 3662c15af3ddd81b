// What an emulated camera says on the discovery port: its answer to a
// search, built from its configuration document, and the changes a
// modification message makes to that document.
#pragma once

#include <string>

namespace qvemu {

// What a camera tells about itself in a search answer besides its
// configuration.
struct DiscoveryIdentity {
  std::string serial = "QVEMU-0001";   // the key hosts address changes with
  std::string device_type = "IPC";     // "NVR" in it: a recorder, which hosts skip
  std::string osd = "EMULATED CAMERA"; // sent in hexadecimal
  std::string p2p_id;
  std::string platform_id = "QVEMU";
};

// The document's LANConfig, MediaStreamConfig and UserConfig elements as the
// document holds them, one after another: the settings part of an answer.
std::string ReplySettings(const std::string& document);

// The answer (Msg_code 3) under root element `root`: the identity, then the
// settings (see ReplySettings). runtime_s is the camera's time since start.
std::string SearchReplyText(const std::string& root, const DiscoveryIdentity& id,
                            const std::string& settings, long runtime_s);

// The serial number a change message is addressed to ("" when it has none).
std::string AddressedSerial(const std::string& message);

// Applies a modification (Msg_code 2) to the document: the network settings
// of a LANConfig element (DHCP, address, mask, gateway, DNS servers; the MAC
// stays) and the stream ports of a MediaStreamConfig element (Auth,
// VideoPort, RTPOverRTSP, PTZPort, WEBPort). false, leaving the document as
// it is, when the message carries neither or the document lacks the section.
bool ApplyModification(const std::string& message, std::string* document);

// Sets one attribute of the element at a path below the document's root
// (for example {"NetworkConfig", "LANConfig"}). false when the document does
// not parse or lacks the element.
bool SetDocumentAttribute(std::string* document, const char* const* path, int depth,
                          const char* name, const std::string& value);

}  // namespace qvemu
