// Quoted-printable: the three-state escape scanner and the 65-column
// encoder.
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "src/mime/transfer_codecs.h"

namespace pv {
namespace {

constexpr uint8_t kNotHex = 0xFF;

constexpr std::array<uint8_t, 256> BuildHexValues() {
  std::array<uint8_t, 256> t{};
  for (auto& v : t) v = kNotHex;
  for (int c = '0'; c <= '9'; ++c) t[c] = static_cast<uint8_t>(c - '0');
  for (int c = 'A'; c <= 'F'; ++c) t[c] = static_cast<uint8_t>(c - 'A' + 10);
  for (int c = 'a'; c <= 'f'; ++c) t[c] = static_cast<uint8_t>(c - 'a' + 10);
  return t;
}
constexpr std::array<uint8_t, 256> kHexValues = BuildHexValues();

// How the encoder writes a byte. "." is printable, so it is written as
// itself at every column, column 0 included.
enum ByteKind : uint8_t {
  kAsItself,  // 33-60 and 62-126
  kBlank,     // blank or tab: as itself below column 64, escaped from there
  kEscaped,   // controls, line breaks, "=", 127-255
};

constexpr std::array<uint8_t, 256> BuildKinds() {
  std::array<uint8_t, 256> t{};
  for (int c = 0; c < 256; ++c) {
    bool printable = (c >= 33 && c <= 60) || (c >= 62 && c <= 126);
    t[c] = printable ? kAsItself : (c == ' ' || c == '\t') ? kBlank : kEscaped;
  }
  return t;
}
constexpr std::array<uint8_t, 256> kKinds = BuildKinds();

constexpr size_t kBlankEscapeColumn = 64;  // blanks from this column on are escaped
constexpr size_t kSoftBreakColumn = 65;    // a soft break once the column reaches this

constexpr char kHexDigits[] = "0123456789ABCDEF";

// Runs the encoder's column logic over `body`. The sink takes a run of
// bytes written as themselves (Run: up to `room` bytes that are not always
// escaped; returns how many it took), one such byte (Byte), an escape
// "=XX" (Escape) and a soft break (SoftBreak).
template <class Sink>
void EncodeWith(std::string_view body, Sink& sink) {
  auto* p = reinterpret_cast<const unsigned char*>(body.data());
  const unsigned char* end = p + body.size();
  size_t column = 0;
  while (p < end) {
    // Below the blank column, every byte that is not always escaped is
    // written as itself and no run can reach the break column: take such
    // bytes as one run.
    if (column < kBlankEscapeColumn) {
      size_t room = kBlankEscapeColumn - column;
      if (static_cast<size_t>(end - p) < room) room = static_cast<size_t>(end - p);
      size_t run = sink.Run(p, room);
      if (run != 0) {
        p += run;
        column += run;
        if (p == end) break;
      }
    }
    // One byte by the full rules.
    unsigned char c = *p++;
    uint8_t kind = kKinds[c];
    if (kind == kAsItself || (kind == kBlank && column < kBlankEscapeColumn)) {
      sink.Byte(c);
      column += 1;
    } else {
      sink.Escape(c);
      column += 3;
    }
    if (column >= kSoftBreakColumn) {
      sink.SoftBreak();
      column = 0;
    }
  }
}

// Word-at-a-time scanning of runs, where the first byte in memory is the
// low byte of a loaded word.
#if defined(__GNUC__) && defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#define PV_QP_WORD_SCAN 1
#else
#define PV_QP_WORD_SCAN 0
#endif

#if PV_QP_WORD_SCAN
// The high bit of each byte of `word` that is below 32, above 126 or "=",
// exact for the lowest such byte (borrows may also mark bytes above it).
inline uint64_t UnprintableBits(uint64_t word) {
  constexpr uint64_t kOnes = 0x0101010101010101ull;
  constexpr uint64_t kHighBits = kOnes * 0x80;
  uint64_t below = (word - kOnes * 0x20) & ~word;
  uint64_t above = (word + kOnes) | word;  // 0x7F and up
  uint64_t equalsBits = word ^ (kOnes * '=');
  uint64_t equals = (equalsBits - kOnes) & ~equalsBits;
  return (below | above | equals) & kHighBits;
}
#endif

// The run of bytes at `p`, at most `room` long, that are not always
// escaped; `copy` (when not null) receives them. Eight bytes are stored at
// `copy` at a time: the output has room, since every byte of the input
// gives at least one byte of output.
inline size_t TakeRun(const unsigned char* p, size_t room, char* copy) {
  size_t run = 0;
#if PV_QP_WORD_SCAN
  while (room - run >= 8) {
    uint64_t word;
    std::memcpy(&word, p + run, 8);
    if (copy != nullptr) std::memcpy(copy + run, &word, 8);
    uint64_t bits = UnprintableBits(word);
    if (bits == 0) {
      run += 8;
      continue;
    }
    run += static_cast<size_t>(__builtin_ctzll(bits)) / 8;
    // A tab below column 64 is written as itself; anything else ends the run.
    if (p[run] != '\t') return run;
    ++run;
  }
#endif
  for (; run < room && kKinds[p[run]] != kEscaped; ++run) {
    if (copy != nullptr) copy[run] = static_cast<char>(p[run]);
  }
  return run;
}

struct SizeSink {
  uint64_t size = 0;
  size_t Run(const unsigned char* p, size_t room) {
    size_t run = TakeRun(p, room, nullptr);
    size += run;
    return run;
  }
  void Byte(unsigned char) { size += 1; }
  void Escape(unsigned char) { size += 3; }
  void SoftBreak() { size += 3; }
};

struct WriteSink {
  char* o;
  size_t Run(const unsigned char* p, size_t room) {
    size_t run = TakeRun(p, room, o);
    o += run;
    return run;
  }
  void Byte(unsigned char c) { *o++ = static_cast<char>(c); }
  void Escape(unsigned char c) {
    o[0] = '=';
    o[1] = kHexDigits[c >> 4];
    o[2] = kHexDigits[c & 15];
    o += 3;
  }
  void SoftBreak() {
    o[0] = '=';
    o[1] = '\r';
    o[2] = '\n';
    o += 3;
  }
};

}  // namespace

size_t DecodeQuotedPrintable(std::string_view in, char* out) {
  const char* p = in.data();
  const char* end = p + in.size();
  char* o = out;
  while (p < end) {
    // Literal state: everything up to the next "=" is copied.
    const auto* eq = static_cast<const char*>(std::memchr(p, '=', static_cast<size_t>(end - p)));
    const char* literalEnd = eq != nullptr ? eq : end;
    std::memcpy(o, p, static_cast<size_t>(literalEnd - p));
    o += literalEnd - p;
    if (eq == nullptr) break;
    p = eq + 1;
    // First escape byte; an "=" at the very end is dropped.
    if (p == end) break;
    auto c1 = static_cast<unsigned char>(*p++);
    if (c1 == '\n') continue;  // soft line break "=\n"
    // Second escape byte; "=" and one byte at the very end are dropped.
    if (p == end) break;
    auto c2 = static_cast<unsigned char>(*p++);
    uint8_t high = kHexValues[c1];
    uint8_t low = kHexValues[c2];
    if (high != kNotHex && low != kNotHex) {
      *o++ = static_cast<char>((high << 4) | low);
    } else if (c1 == '\r' && c2 == '\n') {
      // soft line break "=\r\n"
    } else {
      // Not an escape: kept as it stands, and scanning goes on after it.
      o[0] = '=';
      o[1] = static_cast<char>(c1);
      o[2] = static_cast<char>(c2);
      o += 3;
    }
  }
  return static_cast<size_t>(o - out);
}

bool EncodeQuotedPrintable(std::string_view body, std::string* out) {
  constexpr uint64_t kLimit = static_cast<uint64_t>(std::numeric_limits<int32_t>::max());
  // Every byte gives at least one character.
  if (body.size() > kLimit) return false;
  // Measure first so that the output is allocated once, at its exact size.
  SizeSink measure;
  EncodeWith(body, measure);
  if (measure.size == 0 || measure.size > kLimit) return false;
  out->assign(static_cast<size_t>(measure.size), '\0');
  WriteSink write{&(*out)[0]};
  EncodeWith(body, write);
  return true;
}

}  // namespace pv
