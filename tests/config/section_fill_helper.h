// Records of the alarm, system, record, server, platform and GB28181
// sections with every member set to a distinct value (negative numbers,
// unsigned ones above INT_MAX, texts of full length holding GB2312 bytes and
// characters that need escaping) and every list at its capacity, for round
// trips.
#pragma once

#include "quorvel/quorvel.h"

void FillAlarmConfig(AlarmConfig* cfg);
void FillSystemConfig(SystemConfig* cfg);
void FillRecordConfig(RecordConfig* cfg);
void FillServerConfig(ServerConfig* cfg);
void FillPlatformConfig(PlatformConfig* cfg);
void FillGB28181Config(GB28181Config* cfg);
