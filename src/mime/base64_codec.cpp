// Base64: the tolerant group decoder and the 76-column encoder.
//
// Decoding runs over clean stretches with a table-driven loop (eight
// characters to six bytes per step) and falls back, at the first byte that
// is not a base64 character, to the exact group-by-group rules: skip the
// stray byte without ending the group, stop at a NUL only where a group
// would start, and emit floor(6k/8) bytes for a group of k characters.
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "src/mime/transfer_codecs.h"

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

// Decodes complete groups of four base64 characters for as long as they
// come. Returns at the first group that holds anything else (or that the
// input cannot complete), which is a group boundary.
//
// Output never overtakes input: a group of k characters spans at least k
// bytes and gives fewer than k. So with sixteen input bytes left at `p`, the
// buffer (as long as the input) has room for the twelve bytes of four
// groups and the two bytes that Put6Wide writes beyond them.
inline void DecodeCleanGroups(const unsigned char*& p, const unsigned char* end, char*& o) {
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
    if (a & kBadFlag) return;
    Put3(o, a);
    p += 4;
    o += 3;
  }
}

// One group by the exact rules, from a position inside a group that has
// collected nothing yet: take up to four base64 characters, skipping every
// other byte, and emit the whole bytes their 6k bits hold.
inline void DecodeOneGroup(const unsigned char*& p, const unsigned char* end, char*& o) {
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

constexpr size_t kGroupsPerLine = 19;  // 76 characters

}  // namespace

size_t DecodeBase64(std::string_view in, char* out) {
  auto* p = reinterpret_cast<const unsigned char*>(in.data());
  const unsigned char* end = p + in.size();
  char* o = out;
  for (;;) {
    DecodeCleanGroups(p, end, o);
    // A group starts here: a NUL ends the data.
    if (p == end || *p == 0) break;
    // Stray bytes before the group's first character belong to the group
    // without counting; once past them the bulk path may take it whole.
    while (p < end && kValues[*p] == kNotBase64) ++p;
    if (end - p >= 4 && !(Group(p) & kBadFlag)) continue;
    DecodeOneGroup(p, end, o);
  }
  return static_cast<size_t>(o - out);
}

bool EncodeBase64(std::string_view body, std::string* out) {
  const size_t groups = body.size() / 3;
  const size_t rest = body.size() % 3;
  const size_t fullLines = groups / kGroupsPerLine;
  const size_t lastGroups = groups % kGroupsPerLine;
  // Every full line keeps its "\r\n" (the last one too: the line loop's
  // extra pass writes only a line break, and that is what gets removed); a
  // shorter last line has none, and the padded group follows directly.
  const uint64_t size = static_cast<uint64_t>(fullLines) * (4 * kGroupsPerLine + 2) + 4 * lastGroups + (rest ? 4 : 0);
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
