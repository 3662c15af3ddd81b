#include "discovery/modify_xml.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/debug_log.h"
#include "discovery/adapter_info.h"

namespace {

// Appends formatted text to a buffer and cuts what does not fit.
class BoundedText {
 public:
  BoundedText(char* buffer, int size) : buffer_(buffer), size_(size) { buffer_[0] = '\0'; }

  void Add(const char* fmt, ...) QV_PRINTF(2, 3) {
    if (used_ >= size_ - 1) return;
    va_list args;
    va_start(args, fmt);
    int n = vsnprintf(buffer_ + used_, static_cast<size_t>(size_ - used_), fmt, args);
    va_end(args);
    if (n > 0) used_ = (used_ + n < size_) ? used_ + n : size_ - 1;
  }
  int Length() const { return used_; }

 private:
  char* buffer_;
  int size_;
  int used_ = 0;
};

// The precision that keeps "%.*s" inside a fixed text field.
template <size_t N>
int Field(const char (&)[N]) {
  return static_cast<int>(N);
}

// inet_addr of a fixed field that may lack its terminator.
template <size_t N>
in_addr_t ParseField(const char (&field)[N]) {
  char text[N + 1];
  memcpy(text, field, N);
  text[N] = '\0';
  return inet_addr(text);
}

}  // namespace

std::string LanGatewayText(const LANConfig* lan) {
  in_addr_t gateway = ParseField(lan->Gateway);
  if (gateway != 0 && gateway != INADDR_NONE) {
    return std::string(lan->Gateway, strnlen(lan->Gateway, sizeof(lan->Gateway)));
  }
  in_addr_t subnet = ParseField(lan->IPAddress) & ParseField(lan->Netmask);
  std::string text = DottedAddress(htonl(ntohl(subnet) | 1u));
  QV_LOG("[%s:%d]gateway %s", text.c_str());
  if (text == "0.0.0.0" || text == "255.255.255.255") text = "192.168.1.1";
  return text;
}

int MakeSerialNumberXml(char* buffer, int size, const char* serial) {
  if (buffer == nullptr || size <= 0 || serial == nullptr) return -1;
  BoundedText out(buffer, size);
  out.Add("<IPC_SERIALNUMBER\r\nSerialNumber=\"%s\"\r\n/>\r\n", serial);
  return out.Length();
}

int MakeNetworkLANCfgXml(char* buffer, int size, const LANConfig* lan) {
  if (buffer == nullptr || size <= 0 || lan == nullptr) return -1;
  BoundedText out(buffer, size);
  std::string gateway = LanGatewayText(lan);
  out.Add("<LANConfig\r\n");
  out.Add("MacAddress=\"%.*s\"\r\n", Field(lan->MacAddress), lan->MacAddress);
  out.Add("DHCP=\"%d\"\r\n", lan->DHCP);
  out.Add("IPAddress=\"%.*s\"\r\n", Field(lan->IPAddress), lan->IPAddress);
  out.Add("Netmask=\"%.*s\"\r\n", Field(lan->Netmask), lan->Netmask);
  out.Add("Gateway=\"%s\"\r\n", gateway.c_str());
  out.Add("DNS1=\"%.*s\"\r\n", Field(lan->DNS1), lan->DNS1);
  out.Add("DNS2=\"%.*s\"\r\n", Field(lan->DNS2), lan->DNS2);
  out.Add("/>\r\n");
  return out.Length();
}

int MakeModifyMediaStreamCfgXml(char* buffer, int size, const MediaStreamConfig* stream) {
  if (buffer == nullptr || size <= 0 || stream == nullptr) return -1;
  const StreamAccessConfig& s = stream->StreamAccess;
  BoundedText out(buffer, size);
  out.Add("<MediaStreamConfig>\r\n<StreamAccess\r\n");
  out.Add("Auth=\"%d\"\r\n", s.Auth);
  out.Add("VideoPort=\"%d\"\r\n", s.VideoPort);
  out.Add("RTPOverRTSP=\"%d\"\r\n", s.RTPOverRTSP);
  out.Add("PTZPort=\"%d\"\r\n", s.PTZPort);
  out.Add("WEBPort=\"%d\"\r\n", s.WEBPort);
  out.Add("/>\r\n</MediaStreamConfig>\r\n");
  return out.Length();
}

int MakeMediaStreamCfgXml(char* buffer, int size, const MediaStreamConfig* stream) {
  if (buffer == nullptr || size <= 0 || stream == nullptr) return -1;
  const StreamAccessConfig& s = stream->StreamAccess;
  BoundedText out(buffer, size);
  out.Add("<MediaStreamConfig>\r\n<StreamAccess ");
  out.Add("Auth=\"%d\" VideoPort=\"%d\" RTPOverRTSP=\"%d\" enable_rtsp=\"%d\" \r\n", s.Auth,
          s.VideoPort, s.RTPOverRTSP, s.enable_rtsp);
  out.Add("enable_onvif=\"%d\" enable_web=\"%d\" OnvifAuth=\"%d\" WEBPort=\"%d\" \r\n",
          s.enable_onvif, s.enable_web, s.OnvifAuth, s.WEBPort);
  out.Add("enable_comm=\"%d\" PTZPort=\"%d\" \r\n", s.enable_comm, s.PTZPort);
  out.Add("enable_hik=\"%d\" hik_port=\"%d\" hik_auth=\"%d\" \r\n", s.enable_hik, s.hik_port,
          s.hik_auth);
  out.Add("enable_rtmp=\"%d\" rtmp_port=\"%d\" streamno=\"%d\" rtmp_type=\"%d\" ",
          s.enable_rtmp, s.rtmp_port, s.streamno, s.rtmp_type);
  out.Add("rtmp_server=\"%.*s\" rtmp_appname=\"%.*s\" rtmp_streamid=\"%.*s\" \r\n",
          Field(s.rtmp_server), s.rtmp_server, Field(s.rtmp_appname), s.rtmp_appname,
          Field(s.rtmp_streamid), s.rtmp_streamid);
  out.Add("Multicast0_enable=\"%d\" Multicast0_port=\"%u\" Multicast0_IP=\"%u\" ",
          s.Multicast0_enable, s.Multicast0_port, s.Multicast0_IP);
  out.Add("Multicast1_enable=\"%d\" Multicast1_port=\"%u\" Multicast1_IP=\"%u\" \r\n",
          s.Multicast1_enable, s.Multicast1_port, s.Multicast1_IP);
  out.Add("/>\r\n</MediaStreamConfig>\r\n");
  return out.Length();
}

int MakeUserCfgXml(char* buffer, int size, const UserConfig* users) {
  if (buffer == nullptr || size <= 0 || users == nullptr) return -1;
  int count = users->nAccount;
  if (count < 0) count = 0;
  if (count > QV_MAX_USER_ACCOUNTS) count = QV_MAX_USER_ACCOUNTS;
  BoundedText out(buffer, size);
  out.Add("<UserConfig>\r\n");
  for (int i = 0; i < count; ++i) {
    const UserAccount& a = users->Account[i];
    out.Add("<Account\r\n");
    out.Add("Username=\"%.*s\"\r\n", Field(a.Username), a.Username);
    out.Add("Password=\"%.*s\"\r\n", Field(a.Password), a.Password);
    out.Add("Group=\"%.*s\"\r\n", Field(a.Group), a.Group);
    out.Add("Status=\"%.*s\"\r\n", Field(a.Status), a.Status);
    out.Add("/>\r\n");
  }
  out.Add("</UserConfig>\r\n");
  return out.Length();
}

int MakeModifyIPCCfgXml(char* buffer, int size, const char* serial, const LANConfig* lan,
                        const MediaStreamConfig* stream) {
  int n = MakeSerialNumberXml(buffer, size, serial);
  if (n < 0) return -1;
  if (lan != nullptr) {
    int m = MakeNetworkLANCfgXml(buffer + n, size - n, lan);
    if (m < 0) return -1;
    n += m;
  }
  if (stream != nullptr) {
    int m = MakeModifyMediaStreamCfgXml(buffer + n, size - n, stream);
    if (m < 0) return -1;
    n += m;
  }
  return n;
}
