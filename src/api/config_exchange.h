// The get and set requests of the configuration exchange: a section code
// asked for with an empty body, or a writer's text sent with a set code.
// The exported IP_NET_DVR_GET_ and IP_NET_DVR_SET_ functions are one line
// each on top of these.
#pragma once

namespace qvapi {

// IP_NET_DVR_GetDVRConfig(userID, code, 0, "", 0, null).
long ConfigGet(long userID, unsigned long code);

// IP_NET_DVR_SetDVRConfig(userID, code, 0, xml, strlen(xml)), then frees
// xml; -8999992 (nothing sent) when xml is null.
long ConfigSet(long userID, unsigned long code, char* xml);

}  // namespace qvapi

// Exported forwarders to the configuration model: readers and writers under
// the model function's name with the IP_NET_DVR_ prefix. Writers take the
// record as const; the model's writers only read it.
#define QV_CONFIG_READER(name, Rec)                          \
  QV_API int IP_NET_DVR_##name(Rec* cfg, const char* xml) {  \
    return static_cast<int>(name(cfg, xml));                 \
  }
#define QV_CONFIG_READER_AS(name, model, Rec)                \
  QV_API int IP_NET_DVR_##name(Rec* cfg, const char* xml) {  \
    return static_cast<int>(model(cfg, xml));                \
  }
#define QV_CONFIG_WRITER(name, Rec)                          \
  QV_API char* IP_NET_DVR_XMLGET_##name(const Rec* cfg) {    \
    return XMLGET_##name(const_cast<Rec*>(cfg));             \
  }
#define QV_CONFIG_WRITER_AS(name, model, Rec)                \
  QV_API char* IP_NET_DVR_XMLGET_##name(const Rec* cfg) {    \
    return XMLGET_##model(const_cast<Rec*>(cfg));            \
  }
#define QV_CONFIG_GET(name, code) \
  QV_API long IP_NET_DVR_GET_##name(long userID) { return qvapi::ConfigGet(userID, code); }
#define QV_CONFIG_SET(name, code, Rec, writer)                              \
  QV_API long IP_NET_DVR_SET_##name(long userID, const Rec* cfg) {          \
    return qvapi::ConfigSet(userID, code, writer(const_cast<Rec*>(cfg)));   \
  }
