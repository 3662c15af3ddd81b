// The debug log's configuration file, "./player_dbg.cfg".
//
// Each setting is a key ending in '=', its value and a ';', found anywhere in
// the text (first occurrence, plain substring search). A key without a ';'
// after it leaves its setting as it was; an absent key gives the default of
// the table in GetDebugConfig.
#pragma once

namespace debuglog {

// The largest file read; a longer one is read up to this size.
const long kMaxConfigSize = 1 << 20;

// Reads the configuration file (DebugSetConfigPath changes its name) and
// applies it with GetDebugConfig. false when there is no readable regular
// file.
bool ReadDebugConfigFile();

}  // namespace debuglog
