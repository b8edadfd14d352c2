#include "src/headers/name_index.h"

#include "src/platform/codepage.h"

namespace pv {

std::string HeaderNameKey(WStringView name) {
  std::string key;
  key.reserve(name.size());
  for (char16_t unit : name) {
    if (unit < 0x80) {
      key.push_back(ToLowerAscii(static_cast<char>(unit)));
    } else {
      key.push_back(static_cast<char>(0x80 | (unit >> 14)));
      key.push_back(static_cast<char>(0x80 | ((unit >> 7) & 0x7F)));
      key.push_back(static_cast<char>(0x80 | (unit & 0x7F)));
    }
  }
  return key;
}

std::string HeaderNameKey(std::string_view ansiName) {
  for (char c : ansiName) {
    if (static_cast<unsigned char>(c) >= 0x80) return HeaderNameKey(WStringView(AnsiToWide(ansiName)));
  }
  std::string key(ansiName);
  for (char& c : key) c = ToLowerAscii(c);
  return key;
}

}  // namespace pv
