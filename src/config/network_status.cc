// A camera's network status reply and the 3G/4G modem status text.
#include "config/config_print.h"
#include "config/config_section.h"
#include "config/network_sections.h"

using qvconfig::ConfigXml;
using qvconfig::FieldCount;
using qvconfig::ReadXmlFields;
using qvconfig::WriteRecordText;
using qvconfig::WriteXmlFields;
using qvconfig::XmlField;
using qvconfig::XmlWriter;

namespace {

const XmlField kWireFields[] = {
    XML_FIELD(WireNetworkStatus, MacAddress, "MacAddress"),
    XML_FIELD(WireNetworkStatus, IPType, "IPType"),
    XML_FIELD(WireNetworkStatus, IPAddress, "IPAddress"),
    XML_FIELD(WireNetworkStatus, Netmask, "Netmask"),
    XML_FIELD(WireNetworkStatus, Gateway, "Gateway"),
    XML_FIELD(WireNetworkStatus, Dns1, "Dns1"),
    XML_FIELD(WireNetworkStatus, Dns2, "Dns2"),
};

const XmlField kWirelessFields[] = {
    XML_FIELD(WirelessNetworkStatus, MacAddress, "MacAddress"),
    XML_FIELD(WirelessNetworkStatus, IPAddress, "IPAddress"),
    XML_FIELD(WirelessNetworkStatus, Netmask, "Netmask"),
    XML_FIELD(WirelessNetworkStatus, Gateway, "Gateway"),
    XML_FIELD(WirelessNetworkStatus, ESSID, "ESSID"),
    XML_FIELD(WirelessNetworkStatus, OperationMode, "OperationMode"),
    XML_FIELD(WirelessNetworkStatus, AccessPoint, "AccessPoint"),
    XML_FIELD(WirelessNetworkStatus, Bitrate, "Bitrate"),
    XML_FIELD(WirelessNetworkStatus, Frequency, "Frequency"),
    XML_FIELD(WirelessNetworkStatus, EncrptType, "EncrptType"),
    XML_FIELD(WirelessNetworkStatus, LinkQuality, "LinkQuality"),
    XML_FIELD(WirelessNetworkStatus, SignalLevel, "SignalLevel"),
    XML_FIELD(WirelessNetworkStatus, Noise, "Noise"),
};

const XmlField kCloudFields[] = {
    XML_FIELD(CloudStatus, Enable, "Enable"),
    XML_FIELD(CloudStatus, Type, "Type"),
    XML_FIELD(CloudStatus, LoginStatus, "LoginStatus"),
    XML_FIELD(CloudStatus, ID, "ID"),
};

const XmlField k4GFields[] = {
    XML_FIELD(Network4GStatus, Manufacturer, "Manufacturer"),
    XML_FIELD(Network4GStatus, Model, "Model"),
    XML_FIELD(Network4GStatus, ICCID, "ICCID"),
    XML_FIELD(Network4GStatus, IMEI, "IMEI"),
    XML_FIELD(Network4GStatus, IMSI, "IMSI"),
    XML_FIELD(Network4GStatus, MSISDN, "MSISDN"),
    XML_FIELD(Network4GStatus, WorkMode, "WorkMode"),
    XML_FIELD(Network4GStatus, Operator, "Operator"),
    XML_FIELD(Network4GStatus, nSvrStatus, "nSvrStatus"),
    XML_FIELD(Network4GStatus, nDialStatus, "nDialStatus"),
    XML_FIELD(Network4GStatus, nSimStatus, "nSimStatus"),
    XML_FIELD(Network4GStatus, nSignalLevel, "nSignalLevel"),
};

// Reads the first element `tag` into `record`; false when it is absent.
bool ReadStatusElement(const ConfigXml& doc, const char* tag,
                       const XmlField* fields, size_t count, void* record) {
  const IXML_Node* node = doc.First(tag);
  if (!node) return false;
  ReadXmlFields(node, fields, count, record);
  return true;
}

void Write4GStatus(XmlWriter& out, const Network4GStatus* status) {
  out.Append("<Network4GStatus ");
  WriteXmlFields(out, k4GFields, FieldCount(k4GFields), status, " ");
  out.Append("/>");
}

}  // namespace

int GetNetworkStatusByXml(NetworkStatus* status, const char* xml) {
  if (!status) return -1;
  memset(status, 0, sizeof(*status));
  ConfigXml doc;
  if (!doc.Parse(xml)) {
    CFG_PRINT("[%s:%u]xml error\n");
    return -1;
  }
  bool wire = ReadStatusElement(doc, "WIRE_NETWORK", kWireFields,
                                FieldCount(kWireFields), &status->Wire);
  bool wireless = ReadStatusElement(doc, "WIRELESS_NETWORK", kWirelessFields,
                                    FieldCount(kWirelessFields), &status->Wireless);
  bool cloud = ReadStatusElement(doc, "CLOUD", kCloudFields,
                                 FieldCount(kCloudFields), &status->Cloud);
  return (wire || wireless || cloud) ? 0 : -1;
}

char* XMLGET_4GNetworkStatus(Network4GStatus* status) {
  return WriteRecordText<Network4GStatus>(status, Write4GStatus);
}
