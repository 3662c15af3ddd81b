// Exported configuration exchange of the network section: readers, writers,
// get and set requests.
#include "api/config_exchange.h"
#include "config/network_sections.h"
#include "quorvel/quorvel.h"

QV_CONFIG_READER(GetNetworkCfgByXml, NetworkConfig)
QV_CONFIG_READER(Network_getLANCfgByXml, LANConfig)
QV_CONFIG_READER(Network_getWIFICfgByXml, WIFIConfig)
QV_CONFIG_READER(Network_getADSLCfgByXml, ADSLConfig)
QV_CONFIG_READER(Network_getDDNSCfgByXml, DDNSConfig)
QV_CONFIG_READER(Network_getUPNPCfgByXml, UPNPConfig)
QV_CONFIG_READER(Network_getP2PCfgByXml, P2PConfig)
QV_CONFIG_READER(GetNetworkStatusByXml, NetworkStatus)

QV_CONFIG_WRITER(NetworkConfig, NetworkConfig)
QV_CONFIG_WRITER(NetworkLANConfig, LANConfig)
QV_CONFIG_WRITER(NetworkWIFIConfig, WIFIConfig)
QV_CONFIG_WRITER(NetworkADSLConfig, ADSLConfig)
QV_CONFIG_WRITER(NetworkDDNSConfig, DDNSConfig)
QV_CONFIG_WRITER(NetworkUPNPConfig, UPNPConfig)
QV_CONFIG_WRITER(NetworkP2PConfig, P2PConfig)

QV_CONFIG_GET(NetworkConfig, QV_CFG_GET_NETWORK)
QV_CONFIG_GET(NetworkLANConfig, QV_CFG_GET_LAN)
QV_CONFIG_GET(NetworkWIFIConfig, QV_CFG_GET_WIFI)
QV_CONFIG_GET(NetworkADSLConfig, QV_CFG_GET_ADSL)
QV_CONFIG_GET(NetworkDDNSConfig, QV_CFG_GET_DDNS)
QV_CONFIG_GET(NetworkUPNPConfig, QV_CFG_GET_UPNP)
QV_CONFIG_GET(NetworkP2PConfig, QV_CFG_GET_P2P)

QV_CONFIG_SET(NetworkConfig, QV_CFG_SET_NETWORK, NetworkConfig, XMLGET_NetworkConfig)
QV_CONFIG_SET(NetworkLANConfig, QV_CFG_SET_LAN, LANConfig, XMLGET_NetworkLANConfig)
QV_CONFIG_SET(NetworkWIFIConfig, QV_CFG_SET_WIFI, WIFIConfig, XMLGET_NetworkWIFIConfig)
