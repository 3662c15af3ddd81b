// Whether the converter's log lines are printed (on standard error).
#pragma once

void SetConverterLog(bool on);
