#include "stream/frame_probe.h"

#include <cstring>

#include "stream/h264_nal.h"

namespace frame_probe {

namespace {

// Position of the next 00 00 01 at or after `from`; size when none.
size_t NextStartCode(const uint8_t* data, size_t size, size_t from) {
  for (size_t i = from; i + 3 <= size; ++i) {
    if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1) return i;
  }
  return size;
}

// Reads exp-Golomb and plain bits from a NAL payload, skipping the
// emulation prevention bytes (00 00 03).
class BitReader {
 public:
  BitReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool Bit(unsigned* out) {
    if (bit_ == 0) {
      if (pos_ >= size_) return false;
      if (zeros_ >= 2 && data_[pos_] == 3) {
        zeros_ = 0;
        if (++pos_ >= size_) return false;
      }
      zeros_ = data_[pos_] == 0 ? zeros_ + 1 : 0;
    }
    *out = (data_[pos_] >> (7 - bit_)) & 1;
    if (++bit_ == 8) {
      bit_ = 0;
      ++pos_;
    }
    return true;
  }
  bool Golomb(unsigned* out) {
    int leading = 0;
    unsigned b = 0;
    while (true) {
      if (!Bit(&b)) return false;
      if (b == 1) break;
      if (++leading > 31) return false;
    }
    unsigned value = 0;
    for (int i = 0; i < leading; ++i) {
      if (!Bit(&b)) return false;
      value = (value << 1) | b;
    }
    *out = (1u << leading) - 1 + value;
    return true;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
  int bit_ = 0;
  int zeros_ = 0;
};

// Reads plain bits most significant first; false past the end.
class PlainBits {
 public:
  PlainBits(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool Read(int count, unsigned* out) {
    unsigned v = 0;
    for (int i = 0; i < count; ++i) {
      if (pos_ / 8 >= size_) return false;
      v = (v << 1) | ((data_[pos_ / 8] >> (7 - pos_ % 8)) & 1);
      ++pos_;
    }
    *out = v;
    return true;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

// Appends bits to a byte vector, most significant first.
class BitWriter {
 public:
  void Put(int count, unsigned value) {
    for (int i = count - 1; i >= 0; --i) {
      if (bits_ % 8 == 0) out_.push_back(0);
      out_.back() = static_cast<uint8_t>(out_.back() | (((value >> i) & 1) << (7 - bits_ % 8)));
      ++bits_;
    }
  }
  std::vector<uint8_t> Bytes() const { return out_; }

 private:
  std::vector<uint8_t> out_;
  size_t bits_ = 0;
};

const int kAacRates[13] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                           22050, 16000, 12000, 11025, 8000,  7350};

bool IsIntraSlice(const NalUnit& nal) {
  if (nal.size < 2) return false;
  BitReader bits(nal.data + 1, nal.size - 1);
  unsigned first_mb = 0, slice_type = 0;
  if (!bits.Golomb(&first_mb) || !bits.Golomb(&slice_type)) return false;
  return slice_type % 5 == 2 || slice_type % 5 == 4;  // I or SI
}

// How well the decoded samples predict themselves: the error power left by
// an order-8 linear predictor, relative to the signal's (Levinson-Durbin on
// the autocorrelation). Sound decoded with its own law leaves little (a
// tone next to nothing); decoded with the other law it turns into broadband
// distortion that no predictor follows. 1 for silence.
double PredictionError(const uint8_t* data, size_t size, int16_t (*decode)(uint8_t)) {
  const int kOrder = 8;
  std::vector<double> x(size);
  double mean = 0;
  for (size_t i = 0; i < size; ++i) mean += x[i] = decode(data[i]);
  mean /= static_cast<double>(size);
  for (double& v : x) v -= mean;
  double r[kOrder + 1] = {0};
  for (int lag = 0; lag <= kOrder; ++lag) {
    for (size_t i = static_cast<size_t>(lag); i < size; ++i) r[lag] += x[i] * x[i - lag];
  }
  if (r[0] < 1.0 * static_cast<double>(size)) return 1;  // silence
  double a[kOrder + 1] = {1}, error = r[0];
  for (int m = 1; m <= kOrder; ++m) {
    double acc = r[m];
    for (int i = 1; i < m; ++i) acc += a[i] * r[m - i];
    double k = -acc / error;
    double next[kOrder + 1];
    for (int i = 0; i <= kOrder; ++i) next[i] = a[i];
    for (int i = 1; i < m; ++i) next[i] = a[i] + k * a[m - i];
    next[m] = k;
    for (int i = 0; i <= kOrder; ++i) a[i] = next[i];
    error *= 1 - k * k;
    if (error <= r[0] * 1e-9) break;
  }
  return error / r[0];
}

}  // namespace

bool H264IsKeyFrame(const uint8_t* data, size_t size) {
  bool sps = false;
  for (const NalUnit& nal : SplitAnnexB(data, size)) {
    if (nal.type == 5) return true;
    if (nal.type == 7) sps = true;
    if (nal.type == 1) return sps && IsIntraSlice(nal);
  }
  return false;
}

size_t Mpeg4ConfigLength(const uint8_t* data, size_t size) {
  if (data == nullptr || size < 4 || NextStartCode(data, size, 0) != 0) return 0;
  bool vol = false;
  for (size_t at = 0; at < size; at = NextStartCode(data, size, at + 3)) {
    if (at + 3 >= size) break;
    uint8_t code = data[at + 3];
    if (code >= 0x20 && code <= 0x2F) vol = true;
    if (code == 0xB3 || code == 0xB6) return vol ? at : 0;
  }
  return vol ? size : 0;
}

bool Mpeg4IsKeyFrame(const uint8_t* data, size_t size) {
  if (data == nullptr) return false;
  for (size_t at = NextStartCode(data, size, 0); at + 4 < size;
       at = NextStartCode(data, size, at + 3)) {
    if (data[at + 3] == 0xB6) return (data[at + 4] >> 6) == 0;
  }
  return false;
}

bool ParseAdts(const uint8_t* data, size_t size, Adts* out) {
  if (data == nullptr || size < 7) return false;
  if (data[0] != 0xFF || (data[1] & 0xF6) != 0xF0) return false;  // sync, layer 0
  Adts h;
  h.header_size = (data[1] & 1) ? 7 : 9;
  h.object_type = (data[2] >> 6) + 1;
  h.sample_rate_index = (data[2] >> 2) & 0x0F;
  h.channel_config = ((data[2] & 1) << 2) | (data[3] >> 6);
  h.frame_size = (static_cast<size_t>(data[3] & 0x03) << 11) | (static_cast<size_t>(data[4]) << 3) |
                 (data[5] >> 5);
  int blocks = data[6] & 0x03;
  if (h.sample_rate_index > 12 || blocks != 0) return false;
  if (h.frame_size <= h.header_size || h.frame_size > size) return false;
  *out = h;
  return true;
}

bool IsAdtsStream(const uint8_t* data, size_t size) {
  if (size == 0) return false;
  size_t at = 0;
  Adts h;
  while (at < size) {
    if (!ParseAdts(data + at, size - at, &h)) return false;
    at += h.frame_size;
  }
  return true;
}

int AacSampleRate(int index) { return index >= 0 && index < 13 ? kAacRates[index] : 0; }

std::vector<uint8_t> AacConfig(int object_type, int sample_rate, int channels) {
  int channel_config = channels >= 1 && channels <= 6 ? channels : channels == 8 ? 7 : -1;
  if (object_type < 1 || object_type > 30 || sample_rate <= 0 || sample_rate >= (1 << 24) ||
      channel_config < 0) {
    return {};
  }
  int index = 15;
  for (int i = 0; i < 13; ++i) {
    if (kAacRates[i] == sample_rate) index = i;
  }
  BitWriter w;
  w.Put(5, static_cast<unsigned>(object_type));
  w.Put(4, static_cast<unsigned>(index));
  if (index == 15) w.Put(24, static_cast<unsigned>(sample_rate));
  w.Put(4, static_cast<unsigned>(channel_config));
  w.Put(3, 0);  // 1024-sample frames, no core coder, no extension
  return w.Bytes();
}

int AacFrameSamples(const uint8_t* config, size_t size) {
  PlainBits bits(config, size);
  unsigned object = 0, index = 0, skip = 0, flag = 0;
  if (config == nullptr || !bits.Read(5, &object)) return 1024;
  if (object == 31) {
    if (!bits.Read(6, &object)) return 1024;
    object += 32;
  }
  if (!bits.Read(4, &index)) return 1024;
  if (index == 15 && !bits.Read(24, &skip)) return 1024;
  if (!bits.Read(4, &skip)) return 1024;
  // The general audio object types carry the frame length flag next.
  static const unsigned kGeneral[] = {1, 2, 3, 4, 6, 7, 17, 19, 20, 21, 22, 23};
  for (unsigned type : kGeneral) {
    if (type == object) return bits.Read(1, &flag) && flag ? 960 : 1024;
  }
  return 1024;
}

bool AacConfigFacts(const uint8_t* config, size_t size, int* sample_rate, int* channels) {
  PlainBits bits(config, size);
  unsigned object = 0, index = 0, rate = 0, channel_config = 0;
  if (config == nullptr || !bits.Read(5, &object)) return false;
  if (object == 31 && !bits.Read(6, &object)) return false;
  if (!bits.Read(4, &index)) return false;
  if (index == 15) {
    if (!bits.Read(24, &rate)) return false;
  } else {
    rate = static_cast<unsigned>(AacSampleRate(static_cast<int>(index)));
  }
  if (!bits.Read(4, &channel_config) || rate == 0 || channel_config == 0) return false;
  *sample_rate = static_cast<int>(rate);
  *channels = channel_config == 7 ? 8 : static_cast<int>(channel_config);
  return true;
}

int16_t MulawToLinear(uint8_t code) {
  unsigned u = static_cast<uint8_t>(~code);
  int t = static_cast<int>(((u & 0x0F) << 3) + 0x84) << ((u & 0x70) >> 4);
  return static_cast<int16_t>((u & 0x80) ? (0x84 - t) : (t - 0x84));
}

int16_t AlawToLinear(uint8_t code) {
  unsigned a = code ^ 0x55u;
  int t = static_cast<int>((a & 0x0F) << 4);
  int segment = static_cast<int>((a & 0x70) >> 4);
  if (segment == 0) {
    t += 8;
  } else {
    t = (t + 0x108) << (segment - 1);
  }
  return static_cast<int16_t>((a & 0x80) ? t : -t);
}

bool G711LooksALaw(const uint8_t* data, size_t size) {
  const size_t kMinSamples = 400;
  const size_t kMaxSamples = 16000;
  if (data == nullptr || size < kMinSamples) return false;
  if (size > kMaxSamples) size = kMaxSamples;
  // A-law when its reading is predictable and clearly (error 1.5 times
  // smaller) more so than the mu-law one.
  double alaw = PredictionError(data, size, AlawToLinear);
  double mulaw = PredictionError(data, size, MulawToLinear);
  return alaw < 0.6 && alaw * 1.5 < mulaw;
}

}  // namespace frame_probe
