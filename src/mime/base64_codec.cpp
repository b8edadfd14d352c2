// Base64: the tolerant group decoder and the 76-column encoder.
//
// Decoding runs over clean stretches in bulk (32 characters per step with
// AVX2, else a table-driven loop of sixteen) and falls back, at the first
// byte that is not a base64 character, to the exact group-by-group rules:
// skip the stray byte without ending the group, stop at a NUL only where a
// group would start, and emit floor(6k/8) bytes for a group of k
// characters. The bulk paths take only whole groups of base64 characters,
// where the rules reduce to four characters giving three bytes.
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "src/mime/transfer_codecs.h"

// On x86-64 with GCC or clang (mingw included), clean stretches of 32
// characters are decoded with AVX2 when the processor has it.
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define PV_BASE64_AVX2 1
#include <immintrin.h>
#else
#define PV_BASE64_AVX2 0
#endif

namespace pv {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kNotBase64 = 0xFF;

constexpr std::array<uint8_t, 256> BuildValues() {
  std::array<uint8_t, 256> t{};
  for (auto& v : t) v = kNotBase64;
  for (int i = 0; i < 64; ++i) t[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint8_t>(i);
  return t;
}
constexpr std::array<uint8_t, 256> kValues = BuildValues();

// The bulk path's tables: the value of a character at position 0..3 of a
// group, already moved to its place in the 24-bit result, with a flag bit
// above the 24 bits for every byte that is not a base64 character.
constexpr uint32_t kBadFlag = 1u << 24;
constexpr std::array<uint32_t, 256> BuildPlaced(int shift) {
  std::array<uint32_t, 256> t{};
  for (int c = 0; c < 256; ++c) {
    t[c] = kValues[c] == kNotBase64 ? kBadFlag : static_cast<uint32_t>(kValues[c]) << shift;
  }
  return t;
}
constexpr std::array<uint32_t, 256> kPlaced0 = BuildPlaced(18);
constexpr std::array<uint32_t, 256> kPlaced1 = BuildPlaced(12);
constexpr std::array<uint32_t, 256> kPlaced2 = BuildPlaced(6);
constexpr std::array<uint32_t, 256> kPlaced3 = BuildPlaced(0);

// The 24 bits of four characters, or a value with kBadFlag set when any of
// them is not a base64 character.
inline uint32_t Group(const unsigned char* p) {
  return kPlaced0[p[0]] | kPlaced1[p[1]] | kPlaced2[p[2]] | kPlaced3[p[3]];
}

inline void Put3(char* o, uint32_t bits) {
  o[0] = static_cast<char>(bits >> 16);
  o[1] = static_cast<char>(bits >> 8);
  o[2] = static_cast<char>(bits);
}

// Stores a 64-bit value most significant byte first, in one write.
inline void StoreBigEndian64(char* o, uint64_t v) {
#if defined(__GNUC__) && defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  v = __builtin_bswap64(v);
  std::memcpy(o, &v, 8);
#else
  for (int i = 0; i < 8; ++i) o[i] = static_cast<char>(v >> (56 - 8 * i));
#endif
}

// Writes the six bytes of two groups, and two bytes more that the next
// write overwrites or that lie past the produced bytes: `o` needs room for
// eight.
inline void Put6Wide(char* o, uint32_t first, uint32_t second) {
  StoreBigEndian64(o, (static_cast<uint64_t>(first) << 40) | (static_cast<uint64_t>(second) << 16));
}

// Where decoding stands: the next input byte and the next output byte.
// Passed by value so that the hot loops keep both in registers (stores
// through char pointers could otherwise alias them).
struct Cursor {
  const unsigned char* in;
  char* out;
};

#if PV_BASE64_AVX2
// A 16-entry table repeated in both 128-bit halves, for byte shuffles.
#define PV_TABLE16(...) _mm256_setr_epi8(__VA_ARGS__, __VA_ARGS__)

// Decodes blocks of 32 base64 characters (eight groups) for as long as every
// byte of a block is one. In the first block that holds anything else, the
// complete groups before that byte are taken and decoding stops there, at a
// group boundary. Each block writes 32 bytes at the output, of which up to
// 24 are kept; the buffer has room (see DecodeCleanGroups). Lanes are
// independent, so other bytes in a block do not disturb the groups before
// them.
__attribute__((target("avx2"))) Cursor DecodeCleanBlocksAvx2(Cursor at, const unsigned char* end) {
  // Validity by nibbles: each high nibble has a class bit (0x10 for high
  // nibbles that hold no base64 character: 0, 1 and 8 to F), and each low
  // nibble the bits of the classes in which it is not a base64 character.
  // Class 0x01 is "+" and "/" (0x2B, 0x2F), 0x02 the digits (0x30-0x39),
  // 0x04 0x41-0x4F and 0x61-0x6F, 0x08 0x50-0x5A and 0x70-0x7A.
  const __m256i kInvalidLow = PV_TABLE16(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,  //
                                         0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
  const __m256i kHighClass = PV_TABLE16(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,  //
                                        0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
  // Character to value, added by high nibble; "/" takes the entry before
  // its nibble's: "/" +16, "+" +19, digits +4, upper case -65, lower -71.
  const __m256i kShift = PV_TABLE16(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m256i kLowNibble = _mm256_set1_epi8(0x0F);
  const __m256i kSlash = _mm256_set1_epi8('/');
  // Within each 128-bit half: the three bytes of each 32-bit lane, most
  // significant first; then the two halves' twelve bytes side by side.
  const __m256i kOrderBytes = PV_TABLE16(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  const __m256i kJoinHalves = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
  const unsigned char* p = at.in;
  char* o = at.out;
  while (end - p >= 32) {
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    __m256i high = _mm256_and_si256(_mm256_srli_epi32(c, 4), kLowNibble);
    __m256i low = _mm256_and_si256(c, kLowNibble);
    __m256i invalid =
        _mm256_and_si256(_mm256_shuffle_epi8(kInvalidLow, low), _mm256_shuffle_epi8(kHighClass, high));
    auto validBytes =
        static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(invalid, _mm256_setzero_si256())));
    if (validBytes == 0) break;
    __m256i shift = _mm256_shuffle_epi8(kShift, _mm256_add_epi8(high, _mm256_cmpeq_epi8(c, kSlash)));
    __m256i values = _mm256_add_epi8(c, shift);
    // Pairs of six-bit values into twelve bits, pairs of those into 24.
    __m256i twelve = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    __m256i twentyFour = _mm256_madd_epi16(twelve, _mm256_set1_epi32(0x00011000));
    __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(twentyFour, kOrderBytes), kJoinHalves);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), bytes);
    if (validBytes != 0xFFFFFFFFu) {
      unsigned groups = static_cast<unsigned>(__builtin_ctz(~validBytes)) / 4;
      p += 4 * groups;
      o += 3 * groups;
      break;
    }
    p += 32;
    o += 24;
  }
  return Cursor{p, o};
}
#undef PV_TABLE16

bool HaveAvx2() {
  static const bool have = __builtin_cpu_supports("avx2");
  return have;
}
#endif

// Decodes complete groups of four base64 characters for as long as they
// come. Returns at the first group that holds anything else (or that the
// input cannot complete), which is a group boundary.
//
// Output never overtakes input: a group of k characters spans at least k
// bytes and gives fewer than k. So with sixteen input bytes left, the buffer
// (as long as the input) has room for the twelve bytes of four groups and
// the two bytes that Put6Wide writes beyond them; with 32 left, for the 32
// bytes that a vector block writes.
inline Cursor DecodeCleanGroups(Cursor at, const unsigned char* end, bool vectors) {
#if PV_BASE64_AVX2
  if (vectors) {
    at = DecodeCleanBlocksAvx2(at, end);
    // With a full block left, it stopped at a group that holds another byte.
    if (end - at.in >= 32) return at;
  }
#endif
  const unsigned char* p = at.in;
  char* o = at.out;
  while (end - p >= 16) {
    uint32_t a = Group(p), b = Group(p + 4), c = Group(p + 8), d = Group(p + 12);
    if ((a | b | c | d) & kBadFlag) break;
    Put6Wide(o, a, b);
    Put6Wide(o + 6, c, d);
    p += 16;
    o += 12;
  }
  while (end - p >= 4) {
    uint32_t a = Group(p);
    if (a & kBadFlag) break;
    Put3(o, a);
    p += 4;
    o += 3;
  }
  return Cursor{p, o};
}

// One group by the exact rules, from a position inside a group that has
// collected nothing yet: take up to four base64 characters, skipping every
// other byte, and emit the whole bytes their 6k bits hold.
inline Cursor DecodeOneGroup(Cursor at, const unsigned char* end) {
  const unsigned char* p = at.in;
  char* o = at.out;
  uint32_t bits = 0;
  int taken = 0;
  while (p < end && taken < 4) {
    uint8_t v = kValues[*p++];
    if (v == kNotBase64) continue;
    bits = (bits << 6) | v;
    ++taken;
  }
  bits <<= 6 * (4 - taken);  // align the collected bits to the top of 24
  int bytes = taken * 6 / 8;
  for (int i = 0; i < bytes; ++i) *o++ = static_cast<char>(bits >> (16 - 8 * i));
  return Cursor{p, o};
}

// The pair of characters for every 12-bit value, for the encoder.
constexpr std::array<char, 2 * 4096> BuildPairs() {
  std::array<char, 2 * 4096> t{};
  for (int v = 0; v < 4096; ++v) {
    t[2 * v] = kAlphabet[v >> 6];
    t[2 * v + 1] = kAlphabet[v & 63];
  }
  return t;
}
constexpr std::array<char, 2 * 4096> kPairs = BuildPairs();

inline void EncodeGroup(const unsigned char* in, char* o) {
  uint32_t bits = (static_cast<uint32_t>(in[0]) << 16) | (static_cast<uint32_t>(in[1]) << 8) | in[2];
  std::memcpy(o, &kPairs[2 * (bits >> 12)], 2);
  std::memcpy(o + 2, &kPairs[2 * (bits & 0xFFF)], 2);
}

size_t DecodeBase64With(std::string_view in, char* out, bool vectors) {
  const auto* end = reinterpret_cast<const unsigned char*>(in.data()) + in.size();
  Cursor at{reinterpret_cast<const unsigned char*>(in.data()), out};
  for (;;) {
    at = DecodeCleanGroups(at, end, vectors);
    // A group starts here: a NUL ends the data.
    if (at.in == end || *at.in == 0) break;
    // Stray bytes before the group's first character belong to the group
    // without counting; once past them the bulk path may take it whole.
    while (at.in < end && kValues[*at.in] == kNotBase64) ++at.in;
    if (end - at.in >= 4 && !(Group(at.in) & kBadFlag)) continue;
    at = DecodeOneGroup(at, end);
  }
  return static_cast<size_t>(at.out - out);
}

constexpr size_t kGroupsPerLine = 19;  // 76 characters

}  // namespace

size_t DecodeBase64(std::string_view in, char* out) {
#if PV_BASE64_AVX2
  return DecodeBase64With(in, out, HaveAvx2());
#else
  return DecodeBase64With(in, out, false);
#endif
}

size_t DecodeBase64Portable(std::string_view in, char* out) { return DecodeBase64With(in, out, false); }

bool EncodeBase64(std::string_view body, std::string* out) {
  const size_t groups = body.size() / 3;
  const size_t rest = body.size() % 3;
  const size_t fullLines = groups / kGroupsPerLine;
  const size_t lastGroups = groups % kGroupsPerLine;
  // Every full line keeps its "\r\n" (the last one too: the line loop's
  // extra pass writes only a line break, and that is what gets removed); a
  // shorter last line has none, and the padded group follows directly.
  const uint64_t size =
      static_cast<uint64_t>(fullLines) * (4 * kGroupsPerLine + 2) + 4 * lastGroups + (rest ? 4 : 0);
  if (size == 0 || size > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) return false;

  out->assign(static_cast<size_t>(size), '\0');
  auto* in = reinterpret_cast<const unsigned char*>(body.data());
  char* o = &(*out)[0];
  for (size_t line = 0; line < fullLines; ++line) {
    for (size_t g = 0; g < kGroupsPerLine; ++g, in += 3, o += 4) EncodeGroup(in, o);
    o[0] = '\r';
    o[1] = '\n';
    o += 2;
  }
  for (size_t g = 0; g < lastGroups; ++g, in += 3, o += 4) EncodeGroup(in, o);
  if (rest != 0) {
    uint32_t bits = static_cast<uint32_t>(in[0]) << 16;
    if (rest == 2) bits |= static_cast<uint32_t>(in[1]) << 8;
    o[0] = kAlphabet[bits >> 18];
    o[1] = kAlphabet[(bits >> 12) & 63];
    o[2] = rest == 2 ? kAlphabet[(bits >> 6) & 63] : '=';
    o[3] = '=';
  }
  return true;
}

}  // namespace pv
