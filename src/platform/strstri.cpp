// The search itself: Knuth-Morris-Pratt over case-folded bytes, so that
// repetitive text and needles never make it quadratic.
#include "src/platform/strstri.h"

#include <array>
#include <vector>

#include "src/platform/codepage.h"

namespace pv {
namespace {

// A byte's upper-case form through the ANSI page: decoded alone, mapped,
// and encoded back, kept only when every step is one unit or one byte.
unsigned char UpperCaseByte(unsigned char b) {
  if (b < 0x80) return static_cast<unsigned char>(ToUpperAscii(static_cast<char>(b)));
  char in = static_cast<char>(b);
  OLECHAR unit = 0;
  if (MultiByteToWide(kCodePageAnsi, &in, 1, &unit, 1) != 1) return b;
  OLECHAR upper = static_cast<OLECHAR>(detail::UpperCaseUnit(static_cast<char16_t>(unit)));
  if (upper == unit) return b;
  char out[4];
  if (WideToMultiByte(kCodePageAnsi, &upper, 1, out, sizeof out) != 1) return b;
  OLECHAR check = 0;
  if (MultiByteToWide(kCodePageAnsi, out, 1, &check, 1) != 1 || check != upper) return b;
  return static_cast<unsigned char>(out[0]);
}

std::array<unsigned char, 256> BuildUpperCaseTable() {
  std::array<unsigned char, 256> table{};
  for (int b = 0; b < 256; ++b) table[b] = UpperCaseByte(static_cast<unsigned char>(b));
  return table;
}

constexpr size_t kStackNeedle = 64;

// The failure function of the folded needle: for each prefix, the length
// of its longest proper border.
void BuildBorders(const unsigned char* needle, size_t n, size_t* borders) {
  borders[0] = 0;
  size_t k = 0;
  for (size_t i = 1; i < n; ++i) {
    while (k > 0 && needle[i] != needle[k]) k = borders[k - 1];
    if (needle[i] == needle[k]) ++k;
    borders[i] = k;
  }
}

size_t Search(std::string_view haystack, const unsigned char* needle, size_t n, size_t* borders,
              const unsigned char* fold) {
  BuildBorders(needle, n, borders);
  size_t k = 0;
  for (size_t i = 0; i < haystack.size(); ++i) {
    unsigned char c = fold[static_cast<unsigned char>(haystack[i])];
    while (k > 0 && c != needle[k]) k = borders[k - 1];
    if (c == needle[k]) ++k;
    if (k == n) return i + 1 - n;
  }
  return std::string_view::npos;
}

}  // namespace

namespace detail {

const unsigned char* AnsiUpperCaseTable() {
  static const std::array<unsigned char, 256> table = BuildUpperCaseTable();
  return table.data();
}

}  // namespace detail

size_t FindIgnoreCase(std::string_view haystack, std::string_view needle) {
  size_t n = needle.size();
  if (n == 0 || n > haystack.size()) return std::string_view::npos;
  const unsigned char* fold = detail::AnsiUpperCaseTable();
  if (n <= kStackNeedle) {
    unsigned char folded[kStackNeedle];
    size_t borders[kStackNeedle];
    for (size_t i = 0; i < n; ++i) folded[i] = fold[static_cast<unsigned char>(needle[i])];
    return Search(haystack, folded, n, borders, fold);
  }
  std::vector<unsigned char> folded(n);
  std::vector<size_t> borders(n);
  for (size_t i = 0; i < n; ++i) folded[i] = fold[static_cast<unsigned char>(needle[i])];
  return Search(haystack, folded.data(), n, borders.data(), fold);
}

}  // namespace pv
