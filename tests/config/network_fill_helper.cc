#include "config/network_fill_helper.h"

#include <cstdio>
#include <cstring>

namespace {

template <size_t N>
void Set(char (&dst)[N], const char* text) {
  snprintf(dst, N, "%s", text);
}

void FillEncrypt(WirelessEncrypt* e, int seed) {
  e->Enable = seed;
  Set(e->EncryptType, "WPA&WEP");
  Set(e->WEPAuthMode, "shared key");
  Set(e->WEPEncryptType, "WEP128");
  Set(e->WEPKeyMode, "ASCII");
  Set(e->WEPKeyValue, "k'e\"y<1>");
  e->WEPKeyIndex = seed + 2;
  Set(e->WPAEncryptType, "TKIP");
  Set(e->WPAAuthMode, "WPAPSK");
  Set(e->WPAKeyValue, "pass phrase & more");
}

}  // namespace

void FillNetworkConfig(NetworkConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  LANConfig& lan = cfg->LAN;
  Set(lan.MacAddress, "00:11:22:33:44:55");
  lan.DHCP = 1;
  lan.dhcpOffTime = -7;
  lan.ALLNET = 65535;
  Set(lan.IPAddress, "192.168.0.10");
  Set(lan.Netmask, "255.255.255.0");
  Set(lan.Gateway, "192.168.0.1");
  Set(lan.DNS1, "1.1.1.1");
  Set(lan.DNS2, "9.9.9.9");
  Set(lan.hostname, "cam<&>\"'");
  lan.MTU = 8192;

  WIFIConfig& wifi = cfg->WIFI;
  wifi.Enable = 0;
  Set(wifi.Version, "2.0");
  wifi.DHCP = 1;
  Set(wifi.IPAddress, "10.1.2.3");
  Set(wifi.Netmask, "255.255.0.0");
  Set(wifi.Gateway, "10.1.0.1");
  Set(wifi.OperationMode, "adhoc");
  Set(wifi.MacMode, "B");
  Set(wifi.BitRate, "11M");
  Set(wifi.ESSID, "\xE4\xB8\xAD\xE6\x96\x87 net&co");  // 中文
  Set(wifi.Region, "ISRAEL");
  wifi.ChannelNumber = 13;
  Set(wifi.MacAddress, "00:11:22:33:44:66");
  FillEncrypt(&wifi.Encrypt, 1);
  wifi.PingWatch.Enable = 1;
  Set(wifi.PingWatch.PingAddress, "8.8.8.8");
  wifi.PingWatch.Interval = 60;
  wifi.PingWatch.MaxFail = -5;

  WIFIApConfig& ap = cfg->WIFIAp;
  ap.Enable = 1;
  Set(ap.Version, "2.0");
  Set(ap.IPAddress, "192.168.100.1");
  Set(ap.Netmask, "255.255.255.128");
  Set(ap.MacMode, "A");
  Set(ap.BitRate, "300M");
  Set(ap.ESSID, "\xB2\xE2\xCA\xD4 ap");  // kept as it is (GB2312 bytes)
  Set(ap.Region, "TAIWAN");
  ap.ChannelNumber = 149;
  Set(ap.MacAddress, "00:11:22:33:44:77");
  FillEncrypt(&ap.Encrypt, 2);

  AlarmServerConfig& as = cfg->AlarmServer;
  Set(as.url, "http://host/path?a=1&b=2");
  Set(as.Username, "alarm-user");
  Set(as.Password, "alarm-pass");
  as.withattachment = 1;

  Set(cfg->ADSL.Username, "adsl<user>");
  Set(cfg->ADSL.Password, "adsl&pass");
  cfg->ADSL.Enable = 1;

  DDNSConfig& ddns = cfg->DDNS;
  ddns.Enable = 1;
  Set(ddns.Server, "members.example");
  Set(ddns.Domain, "my.example");
  Set(ddns.Username, "d'user");
  Set(ddns.Password, "d\"pass");
  ddns.FreshInterval = 3600;

  cfg->UPNP.Enable = 1;

  cfg->P2P.Enable = 1;
  cfg->P2P.Type = 3;
  Set(cfg->P2P.Authcode, "AUTH-0123456789");

  G3Config& g3 = cfg->G3;
  g3.Enable = 1;
  Set(g3.DialNumber, "*99***1#");
  Set(g3.APN, "cmnet");
  Set(g3.Username, "g3user");
  Set(g3.Password, "g3pass");
  g3.DialOption = 4;
  Set(g3.CenterNumber, "+8613900000000");
  Set(g3.SMSC, "+8613900000001");

  PPTPConfig& pptp = cfg->PPTP;
  pptp.Enable = 1;
  Set(pptp.Server, "vpn.example");
  Set(pptp.Username, "pptp-user");
  Set(pptp.Password, "pptp&pass");
  pptp.MTU = 1000;
}
