// The two process-wide registries. Both are defined in this one file so that
// they are built in a known order at load (sessions first) and destroyed in
// the reverse order at exit.
#include "api/ptz_object_list.h"
#include "stream/rtsp_object_list.h"

CPTZObjectList ObjectPtzList;
CRTSPObjectList OjbectRtspList;
