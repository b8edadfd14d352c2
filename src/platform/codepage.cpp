// Whole-string conversions on top of the platform-style entry points.
#include <climits>
#include <utility>

#include "src/platform/codepage.h"

namespace pv {

bool ToWide(UINT codePage, std::string_view in, WString* out) {
  out->clear();
  if (in.empty()) return IsCodePageConvertible(codePage);
  if (in.size() > static_cast<size_t>(INT_MAX)) return false;
  int n = MultiByteToWide(codePage, in.data(), static_cast<int>(in.size()), nullptr, 0);
  if (n <= 0) return false;
  out->resize(static_cast<size_t>(n));
  return MultiByteToWide(codePage, in.data(), static_cast<int>(in.size()), out->data(), n) == n;
}

bool ToNarrow(UINT codePage, WStringView in, std::string* out) {
  out->clear();
  if (in.empty()) return IsCodePageConvertible(codePage);
  if (in.size() > static_cast<size_t>(INT_MAX)) return false;
  int n = WideToMultiByte(codePage, in.data(), static_cast<int>(in.size()), nullptr, 0);
  if (n <= 0) return false;
  out->resize(static_cast<size_t>(n));
  return WideToMultiByte(codePage, in.data(), static_cast<int>(in.size()), out->data(), n) == n;
}

WString AnsiToWide(std::string_view in) {
  WString out;
  ToWide(kCodePageAnsi, in, &out);
  return out;
}

std::string WideToAnsi(WStringView in) {
  std::string out;
  ToNarrow(kCodePageAnsi, in, &out);
  return out;
}

bool AnsiKeepsEveryByte() {
  static const bool keeps = [] {
    UINT page = ResolveCodePage(kCodePageAnsi);
    return page == kCodePageWindows1252 || page == kCodePageLatin1;
  }();
  return keeps;
}

std::string AnsiRoundTrip(std::string_view bytes) {
  if (AnsiKeepsEveryByte()) return std::string(bytes);
  return WideToAnsi(AnsiToWide(bytes));
}

std::string AnsiRoundTrip(std::string&& bytes) {
  if (AnsiKeepsEveryByte()) return std::move(bytes);
  return WideToAnsi(AnsiToWide(bytes));
}

std::string_view AnsiRoundTrip(std::string_view bytes, std::string* scratch) {
  if (AnsiKeepsEveryByte()) return bytes;
  *scratch = WideToAnsi(AnsiToWide(bytes));
  return *scratch;
}

}  // namespace pv
