// H.264 helpers for the stream source and hosts: key-frame test, Annex-B
// NAL unit scanning, conversion from length-prefixed (avcC) form, and the
// parameter sets that must stand ahead of every key frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// 1 for a key frame: an Annex-B unit (00 00 00 01) of type 7, 8 or 5, or a
// type-1 slice whose sixth byte marks an intra slice; else 0. Fewer than 7
// bytes: 0.
int IsH264KeyFrame(const unsigned char* data, int length);

struct NalUnit {
  const uint8_t* data;  // first byte after the start code (the NAL header)
  size_t size;
  int type;             // nal_unit_type
};

// Walks the NAL units of an Annex-B buffer (3- or 4-byte start codes) in
// place. Bytes before the first start code are skipped; a unit ends where
// the next start code begins, without the zeros ahead of it; empty units
// are skipped.
class CNalScanner {
 public:
  CNalScanner(const uint8_t* data, size_t size);
  // The next unit into *unit; false at the end.
  bool Next(NalUnit* unit);

 private:
  // Where the next 00 00 01 at or after `from` begins; size_ when none.
  size_t FindStartCode(size_t from) const;

  const uint8_t* data_;
  size_t size_;
  size_t begin_;  // first byte of the current unit; size_ when done
};

// What an Annex-B access unit says ahead of its first slice: whether
// parameter sets (types 7, 8) stand there, and the type of that slice (1 to
// 5; 0 when it has none). The slice data itself is not walked, so this
// costs little beside CNalScanner on a large frame.
struct NalLead {
  bool sets;
  int slice_type;
};
NalLead ScanToFirstSlice(const uint8_t* data, size_t size);

// The NAL units of an Annex-B buffer, as CNalScanner walks them.
std::vector<NalUnit> SplitAnnexB(const uint8_t* data, size_t size);

// An avcC record (ISO/IEC 14496-15) as Annex-B SPS and PPS units. Empty when
// the record is malformed. *nal_length_size receives the sample prefix size.
std::vector<uint8_t> AvcConfigToAnnexB(const uint8_t* data, size_t size, int* nal_length_size);

// Length-prefixed samples (1..4 byte big-endian lengths) as Annex-B. False
// when a length runs past the end.
bool LengthPrefixedToAnnexB(const uint8_t* data, size_t size, int nal_length_size,
                            std::vector<uint8_t>* out);

// The latest SPS and PPS of a stream, learnt from its configuration and from
// the parameter sets it sends in band.
class CH264ParamSets {
 public:
  // Takes the SPS and PPS units found in an Annex-B buffer; true when they
  // differ from the ones known before.
  bool Learn(const uint8_t* data, size_t size);
  // True when the buffer begins with a 4-byte start code, an SPS and then a
  // PPS.
  static bool LedBySets(const uint8_t* data, size_t size);
  // SPS then PPS, each with a 4-byte start code; empty while unknown.
  std::vector<uint8_t> AnnexB() const;
  bool Known() const { return !sps_.empty() && !pps_.empty(); }

  // For an access unit with an IDR slice that does not begin with SPS and
  // PPS: the known sets followed by the unit's other NAL units (access unit
  // delimiters and in-band parameter sets are dropped), into *out; true
  // then. False (and *out untouched) when the unit needs no change.
  bool CompleteKeyFrame(const uint8_t* data, size_t size, std::vector<uint8_t>* out) const;

 private:
  std::vector<uint8_t> sps_;  // NAL unit without start code
  std::vector<uint8_t> pps_;
};
