#include "src/com/guid_text.h"

#include <cstdio>

namespace pv {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// `digits` hexadecimal digits at `text[at]`.
bool ReadHex(std::string_view text, size_t at, int digits, uint32_t* value) {
  *value = 0;
  for (int i = 0; i < digits; ++i) {
    int d = HexDigit(text[at + static_cast<size_t>(i)]);
    if (d < 0) return false;
    *value = (*value << 4) | static_cast<uint32_t>(d);
  }
  return true;
}

}  // namespace

std::string GuidText(const GUID& g) {
  char text[39];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(g.Data1), g.Data2, g.Data3, g.Data4[0], g.Data4[1], g.Data4[2],
                g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
  return text;
}

bool ParseGuidText(std::string_view text, GUID* guid) {
  if (text.size() != 38 || text[0] != '{' || text[37] != '}' || text[9] != '-' || text[14] != '-' ||
      text[19] != '-' || text[24] != '-') {
    return false;
  }
  uint32_t d1 = 0, d2 = 0, d3 = 0;
  if (!ReadHex(text, 1, 8, &d1) || !ReadHex(text, 10, 4, &d2) || !ReadHex(text, 15, 4, &d3)) return false;
  GUID g{};
  g.Data1 = d1;
  g.Data2 = static_cast<USHORT>(d2);
  g.Data3 = static_cast<USHORT>(d3);
  const size_t at[8] = {20, 22, 25, 27, 29, 31, 33, 35};
  for (int i = 0; i < 8; ++i) {
    uint32_t b = 0;
    if (!ReadHex(text, at[i], 2, &b)) return false;
    g.Data4[i] = static_cast<BYTE>(b);
  }
  *guid = g;
  return true;
}

}  // namespace pv
