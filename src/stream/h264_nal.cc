#include "stream/h264_nal.h"

#include <cstring>

namespace {
const uint8_t kStartCode[4] = {0, 0, 0, 1};

void AppendUnit(std::vector<uint8_t>* out, const uint8_t* data, size_t size) {
  size_t at = out->size();
  out->resize(at + sizeof(kStartCode) + size);
  memcpy(out->data() + at, kStartCode, sizeof(kStartCode));
  if (size > 0) memcpy(out->data() + at + sizeof(kStartCode), data, size);
}

// Units a completed key frame leaves out: access unit delimiters and the
// in-band parameter sets (the known ones lead it instead).
bool DroppedFromKeyFrame(int type) { return type == 9 || type == 7 || type == 8; }
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

CNalScanner::CNalScanner(const uint8_t* data, size_t size) : data_(data), size_(size) {
  size_t first = data != nullptr ? FindStartCode(0) : size;
  begin_ = first < size ? first + 3 : size;
}

// Start codes are found through their first zero, with memchr: frames are
// scanned in full, most of their bytes are slice data, and zeros are rarer
// there than ones.
static size_t FindStartCode(const uint8_t* data, size_t size, size_t from) {
  while (from + 3 <= size) {
    const void* zero = memchr(data + from, 0, size - from - 2);
    if (zero == nullptr) return size;
    size_t at = static_cast<size_t>(static_cast<const uint8_t*>(zero) - data);
    if (data[at + 1] == 0 && data[at + 2] == 1) return at;
    from = at + 1;
  }
  return size;
}

size_t CNalScanner::FindStartCode(size_t from) const { return ::FindStartCode(data_, size_, from); }

NalLead ScanToFirstSlice(const uint8_t* data, size_t size) {
  NalLead lead{false, 0};
  if (data == nullptr) return lead;
  // An empty unit reads as type 0 here (its "header" is the next start
  // code's zero), which is neither a slice nor a parameter set.
  for (size_t at = FindStartCode(data, size, 0); at + 3 < size;
       at = FindStartCode(data, size, at + 3)) {
    int type = data[at + 3] & 0x1F;
    if (type >= 1 && type <= 5) {
      lead.slice_type = type;
      break;
    }
    lead.sets |= type == 7 || type == 8;
  }
  return lead;
}

bool CNalScanner::Next(NalUnit* unit) {
  while (begin_ < size_) {
    size_t begin = begin_;
    size_t start = FindStartCode(begin);
    size_t end = start;
    if (start < size_) {
      // A 4-byte start code leaves its leading zero on the previous unit.
      while (end > begin && data_[end - 1] == 0) --end;
      begin_ = start + 3;
    } else {
      begin_ = size_;
    }
    if (end > begin) {
      *unit = {data_ + begin, end - begin, data_[begin] & 0x1F};
      return true;
    }
  }
  return false;
}

std::vector<NalUnit> SplitAnnexB(const uint8_t* data, size_t size) {
  std::vector<NalUnit> units;
  CNalScanner scanner(data, size);
  NalUnit unit;
  while (scanner.Next(&unit)) units.push_back(unit);
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
  CNalScanner scanner(data, size);
  NalUnit unit;
  while (scanner.Next(&unit)) {
    std::vector<uint8_t>* slot = unit.type == 7 ? &sps_ : unit.type == 8 ? &pps_ : nullptr;
    if (slot == nullptr) continue;
    if (slot->size() != unit.size || memcmp(slot->data(), unit.data, unit.size) != 0) {
      slot->assign(unit.data, unit.data + unit.size);
      changed = true;
    }
  }
  return changed;
}

bool CH264ParamSets::LedBySets(const uint8_t* data, size_t size) {
  if (size < 4 || data[0] != 0 || data[1] != 0 || data[2] != 0 || data[3] != 1) return false;
  CNalScanner scanner(data, size);
  NalUnit first, second;
  return scanner.Next(&first) && first.type == 7 && scanner.Next(&second) && second.type == 8;
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
  if (!Known() || LedBySets(data, size)) return false;
  // One walk decides and sizes, a second one copies: the units are never
  // collected, and *out keeps its allocation from one key frame to the next.
  bool idr = false;
  size_t total = 2 * sizeof(kStartCode) + sps_.size() + pps_.size();
  CNalScanner sizing(data, size);
  NalUnit unit;
  while (sizing.Next(&unit)) {
    idr |= unit.type == 5;
    if (!DroppedFromKeyFrame(unit.type)) total += sizeof(kStartCode) + unit.size;
  }
  if (!idr) return false;
  out->clear();
  out->reserve(total);
  AppendUnit(out, sps_.data(), sps_.size());
  AppendUnit(out, pps_.data(), pps_.size());
  CNalScanner copying(data, size);
  while (copying.Next(&unit)) {
    if (!DroppedFromKeyFrame(unit.type)) AppendUnit(out, unit.data, unit.size);
  }
  return true;
}
