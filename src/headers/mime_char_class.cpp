#include "src/headers/mime_char_class.h"

#include <array>

namespace pv {
namespace {

constexpr bool In(char c, const char* set) {
  for (; *set != '\0'; ++set) {
    if (*set == c) return true;
  }
  return false;
}

constexpr uint16_t ClassOf(int c) {
  uint16_t f = 0;
  bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  bool digit = c >= '0' && c <= '9';
  if (c < 0x20 || c == 0x7F) f |= kCharControl;
  if (letter) f |= kCharLetter;
  if (digit) f |= kCharDigit;
  if (c == ' ' || c == '\t') f |= kCharWhiteSpace;
  if (letter || digit) f |= kCharAlphanumeric;
  if (c > 0x20 && c < 0x7F && !letter && !digit) f |= kCharPunctuation;
  if (In(static_cast<char>(c), "\"(),.:;<=>@[\\]")) f |= kCharAddressSpecial;
  if (In(static_cast<char>(c), "\"(),/:;<=>?[\\]")) f |= kCharMimeSpecial;
  if (digit || (c >= 'A' && c <= 'F')) f |= kCharHexDigit;
  if (c == '\r' || c == '\n') f |= kCharLineBreak;
  return f;
}

constexpr std::array<uint16_t, 128> BuildTable() {
  std::array<uint16_t, 128> t{};
  for (int c = 1; c < 128; ++c) t[c] = ClassOf(c);
  t[0] = kCharControl;
  return t;
}

constexpr std::array<uint16_t, 128> kTable = BuildTable();

}  // namespace

const uint16_t kMimeCharClass[128] = {
#define PV_ROW(i)                                                                                      \
  kTable[i], kTable[i + 1], kTable[i + 2], kTable[i + 3], kTable[i + 4], kTable[i + 5], kTable[i + 6], \
      kTable[i + 7]
    PV_ROW(0),  PV_ROW(8),  PV_ROW(16), PV_ROW(24), PV_ROW(32), PV_ROW(40),  PV_ROW(48),  PV_ROW(56),
    PV_ROW(64), PV_ROW(72), PV_ROW(80), PV_ROW(88), PV_ROW(96), PV_ROW(104), PV_ROW(112), PV_ROW(120),
#undef PV_ROW
};

}  // namespace pv
