// Uuencode: the line-by-line decoder and the "begin 644" encoder.
//
// Decoding looks at each line's first bytes: "begin" and "end" lines (any
// case) are skipped, anything else is a data line whose first character
// counts the bytes it carries. The count rules, not the line breaks, decide
// where a data line's groups end, so whatever follows the last group on a
// line is read as the start of another line.
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "src/mime/transfer_codecs.h"

namespace pv {
namespace {

constexpr uint8_t kLineBreakFlag = 0x80;

// The six-bit value of a character ((c - 32) AND 63, so the grave accent is
// 0), with a flag above the six bits for CR and LF, which may not appear
// inside a group.
constexpr std::array<uint8_t, 256> BuildValues() {
  std::array<uint8_t, 256> t{};
  for (int c = 0; c < 256; ++c) t[c] = static_cast<uint8_t>((c - 32) & 63);
  t['\r'] = kLineBreakFlag;
  t['\n'] = kLineBreakFlag;
  return t;
}
constexpr std::array<uint8_t, 256> kValues = BuildValues();

inline bool IsLineBreak(unsigned char c) { return c == '\r' || c == '\n'; }

// Whether `p` starts with `lowerWord`, ignoring ASCII case; the caller has
// checked that enough bytes remain.
inline bool StartsWithWord(const unsigned char* p, std::string_view lowerWord) {
  for (size_t i = 0; i < lowerWord.size(); ++i) {
    unsigned char c = p[i];
    if (c >= 'A' && c <= 'Z') c += 'a' - 'A';
    if (c != static_cast<unsigned char>(lowerWord[i])) return false;
  }
  return true;
}

inline void Put(char*& o, uint32_t bits, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) *o++ = static_cast<char>(bits >> (16 - 8 * i));
}

// The groups of one data line, until `count` bytes have been produced.
// Characters beyond the end of the input count as 0; a line break inside a
// group fails. The caller has made sure that `count` bytes fit at `o`.
bool DecodeDataGroups(const unsigned char*& p, const unsigned char* end, char*& o, size_t count) {
  while (count > 0) {
    uint32_t bits = 0;
    if (end - p >= 4) {
      uint8_t a = kValues[p[0]], b = kValues[p[1]], c = kValues[p[2]], d = kValues[p[3]];
      if ((a | b | c | d) & kLineBreakFlag) return false;
      bits = (static_cast<uint32_t>(a) << 18) | (static_cast<uint32_t>(b) << 12) |
             (static_cast<uint32_t>(c) << 6) | d;
      p += 4;
    } else {
      for (int i = 0; i < 4; ++i) {
        uint8_t v = 0;
        if (p < end) {
          v = kValues[*p++];
          if (v & kLineBreakFlag) return false;
        }
        bits = (bits << 6) | v;
      }
    }
    size_t bytes = count < 3 ? count : 3;
    Put(o, bits, bytes);
    count -= bytes;
  }
  return true;
}

// The character for a six-bit value: 0 is the grave accent, 1 to 63 are
// "!" to "_".
constexpr char CharOf(int v) { return static_cast<char>(v == 0 ? '`' : v + 32); }

// The pair of characters for every 12-bit value, for the encoder.
constexpr std::array<char, 2 * 4096> BuildPairs() {
  std::array<char, 2 * 4096> t{};
  for (int v = 0; v < 4096; ++v) {
    t[2 * v] = CharOf(v >> 6);
    t[2 * v + 1] = CharOf(v & 63);
  }
  return t;
}
constexpr std::array<char, 2 * 4096> kPairs = BuildPairs();

constexpr size_t kLineBytes = 45;
constexpr std::string_view kBeginLine = "begin 644 ";
constexpr std::string_view kTrailer = "`\r\nend\r\n";
// A line's count character; "." (a 14-byte line) is written twice.
constexpr char kDoubledCount = '.';

inline void EncodeGroup(unsigned char b0, unsigned char b1, unsigned char b2, char* o) {
  uint32_t bits = (static_cast<uint32_t>(b0) << 16) | (static_cast<uint32_t>(b1) << 8) | b2;
  std::memcpy(o, &kPairs[2 * (bits >> 12)], 2);
  std::memcpy(o + 2, &kPairs[2 * (bits & 0xFFF)], 2);
}

// The encoded size of one line of `bytes` bytes.
inline uint64_t LineSize(size_t bytes) {
  char count = CharOf(static_cast<int>(bytes));
  return 1 + (count == kDoubledCount ? 1 : 0) + 4 * ((bytes + 2) / 3) + 2;
}

}  // namespace

bool DecodeUuencode(std::string_view in, char* out, size_t* produced) {
  auto* p = reinterpret_cast<const unsigned char*>(in.data());
  const unsigned char* end = p + in.size();
  char* o = out;
  const char* outEnd = out + in.size();
  while (p < end) {
    if (IsLineBreak(*p)) {
      ++p;
      continue;
    }
    const size_t left = static_cast<size_t>(end - p);
    // "begin" needs five bytes to be seen; with fewer than three left even
    // "end" cannot be, and the bytes are decoded as a data line.
    if ((left >= 5 && StartsWithWord(p, "begin")) || (left >= 3 && StartsWithWord(p, "end"))) {
      while (p < end && !IsLineBreak(*p)) ++p;
      continue;
    }
    // A data line: its count character, then groups until the count is met.
    size_t count = kValues[*p++] & 63;
    if (count > static_cast<size_t>(outEnd - o)) return false;
    if (!DecodeDataGroups(p, end, o, count)) return false;
  }
  *produced = static_cast<size_t>(o - out);
  return true;
}

bool EncodeUuencode(std::string_view body, std::string_view name, std::string* out) {
  // The "begin" line is formatted from a C string: the name ends at a NUL.
  name = name.substr(0, name.find('\0'));
  const size_t fullLines = body.size() / kLineBytes;
  const size_t lastBytes = body.size() % kLineBytes;
  const uint64_t size = kBeginLine.size() + name.size() + 2 + fullLines * LineSize(kLineBytes) +
                        (lastBytes ? LineSize(lastBytes) : 0) + kTrailer.size();
  if (size > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) return false;

  out->assign(static_cast<size_t>(size), '\0');
  char* o = &(*out)[0];
  auto append = [&o](std::string_view s) {
    if (s.empty()) return;
    std::memcpy(o, s.data(), s.size());
    o += s.size();
  };
  append(kBeginLine);
  append(name);
  append("\r\n");
  auto* in = reinterpret_cast<const unsigned char*>(body.data());
  const unsigned char* end = in + body.size();
  while (in < end) {
    size_t bytes = static_cast<size_t>(end - in) < kLineBytes ? static_cast<size_t>(end - in) : kLineBytes;
    char count = CharOf(static_cast<int>(bytes));
    *o++ = count;
    if (count == kDoubledCount) *o++ = count;
    const unsigned char* lineEnd = in + bytes;
    for (; lineEnd - in >= 3; in += 3, o += 4) EncodeGroup(in[0], in[1], in[2], o);
    if (in < lineEnd) {
      // The last group runs past the end of the body: blanks fill it.
      EncodeGroup(in[0], lineEnd - in > 1 ? in[1] : ' ', ' ', o);
      o += 4;
      in = lineEnd;
    }
    append("\r\n");
  }
  append(kTrailer);
  return true;
}

}  // namespace pv
