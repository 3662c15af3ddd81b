#include "api/config_exchange.h"

#include <cstdlib>
#include <cstring>

#include "quorvel/quorvel.h"

namespace qvapi {

long ConfigGet(long userID, unsigned long code) {
  char empty[1] = "";
  return IP_NET_DVR_GetDVRConfig(userID, code, 0, empty, 0, nullptr);
}

long ConfigSet(long userID, unsigned long code, char* xml) {
  if (xml == nullptr) return QV_E_INVALID_ARG;
  long ret = IP_NET_DVR_SetDVRConfig(userID, code, 0, xml, strlen(xml));
  free(xml);
  return ret;
}

}  // namespace qvapi
