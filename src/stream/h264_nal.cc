#include "stream/h264_nal.h"

namespace {
const uint8_t kStartCode[4] = {0, 0, 0, 1};

void AppendUnit(std::vector<uint8_t>* out, const uint8_t* data, size_t size) {
  out->insert(out->end(), kStartCode, kStartCode + 4);
  out->insert(out->end(), data, data + size);
}
}  // namespace

int IsH264KeyFrame(const unsigned char* data, int length) {
  if (data == nullptr || length < 7) return 0;
  if (data[0] != 0 || data[1] != 0 || data[2] != 0 || data[3] != 1) return 0;
  int type = data[4] & 0x1F;
  if (type == 7 || type == 8 || type == 5) return 1;
  if (type != 1) return 0;
  unsigned char b = data[5];
  if ((b & 0xB0) == 0xB0 || b == 0x88 || (b & 0x4C) == 0x4C) return 1;
  return 0;
}

std::vector<NalUnit> SplitAnnexB(const uint8_t* data, size_t size) {
  std::vector<NalUnit> units;
  size_t i = 0;
  size_t begin = 0;
  bool in_unit = false;
  while (i + 3 <= size) {
    if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1) {
      if (in_unit) {
        size_t end = i;
        // A 4-byte start code leaves its leading zero on the previous unit.
        while (end > begin && data[end - 1] == 0) --end;
        if (end > begin) units.push_back({data + begin, end - begin, data[begin] & 0x1F});
      }
      i += 3;
      begin = i;
      in_unit = true;
    } else {
      ++i;
    }
  }
  if (in_unit && size > begin) units.push_back({data + begin, size - begin, data[begin] & 0x1F});
  return units;
}

std::vector<uint8_t> AvcConfigToAnnexB(const uint8_t* data, size_t size, int* nal_length_size) {
  std::vector<uint8_t> out;
  if (data == nullptr || size < 7 || data[0] != 1) return out;
  if (nal_length_size != nullptr) *nal_length_size = (data[4] & 0x03) + 1;
  size_t pos = 5;
  for (int table = 0; table < 2; ++table) {
    if (pos >= size) return {};
    int count = table == 0 ? (data[pos] & 0x1F) : data[pos];
    ++pos;
    for (int k = 0; k < count; ++k) {
      if (pos + 2 > size) return {};
      size_t len = (static_cast<size_t>(data[pos]) << 8) | data[pos + 1];
      pos += 2;
      if (len == 0 || pos + len > size) return {};
      AppendUnit(&out, data + pos, len);
      pos += len;
    }
  }
  return out;
}

bool LengthPrefixedToAnnexB(const uint8_t* data, size_t size, int nal_length_size,
                            std::vector<uint8_t>* out) {
  if (nal_length_size < 1 || nal_length_size > 4) return false;
  out->clear();
  size_t pos = 0;
  while (pos < size) {
    if (pos + nal_length_size > size) return false;
    size_t len = 0;
    for (int k = 0; k < nal_length_size; ++k) len = (len << 8) | data[pos + k];
    pos += nal_length_size;
    if (len > size - pos) return false;
    if (len > 0) AppendUnit(out, data + pos, len);
    pos += len;
  }
  return true;
}

bool CH264ParamSets::Learn(const uint8_t* data, size_t size) {
  bool changed = false;
  for (const NalUnit& unit : SplitAnnexB(data, size)) {
    std::vector<uint8_t>* slot = unit.type == 7 ? &sps_ : unit.type == 8 ? &pps_ : nullptr;
    if (slot == nullptr) continue;
    std::vector<uint8_t> bytes(unit.data, unit.data + unit.size);
    if (*slot != bytes) {
      *slot = std::move(bytes);
      changed = true;
    }
  }
  return changed;
}

std::vector<uint8_t> CH264ParamSets::AnnexB() const {
  std::vector<uint8_t> out;
  if (!Known()) return out;
  AppendUnit(&out, sps_.data(), sps_.size());
  AppendUnit(&out, pps_.data(), pps_.size());
  return out;
}

bool CH264ParamSets::CompleteKeyFrame(const uint8_t* data, size_t size,
                                      std::vector<uint8_t>* out) const {
  if (!Known()) return false;
  std::vector<NalUnit> units = SplitAnnexB(data, size);
  bool idr = false;
  for (const NalUnit& unit : units) idr |= unit.type == 5;
  if (!idr) return false;
  if (units.size() >= 2 && units[0].type == 7 && units[1].type == 8 && data[0] == 0 &&
      data[1] == 0 && data[2] == 0 && data[3] == 1)
    return false;
  *out = AnnexB();
  for (const NalUnit& unit : units) {
    if (unit.type != 9 && unit.type != 7 && unit.type != 8) AppendUnit(out, unit.data, unit.size);
  }
  return true;
}
