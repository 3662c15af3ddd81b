// The JPEG picture the emulated camera takes as a snapshot.
#pragma once

#include <string>

namespace qvemu {

std::string SnapshotPicture();

}  // namespace qvemu
