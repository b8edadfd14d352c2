// Case-insensitive substring search over narrow text in the ANSI code page,
// with the contract of the platform's StrStrIA: every letter of the page
// matches its other case ("\xC9" finds "\xE9" in windows-1252), and an
// empty needle finds nothing.
#ifndef PARCELVANE_SRC_PLATFORM_STRSTRI_H
#define PARCELVANE_SRC_PLATFORM_STRSTRI_H

#include <cstddef>
#include <string_view>

namespace pv {

// The offset of the first occurrence of `needle` in `haystack`, ignoring
// case, or std::string_view::npos. Linear in the two lengths.
size_t FindIgnoreCase(std::string_view haystack, std::string_view needle);

inline bool ContainsIgnoreCase(std::string_view haystack, std::string_view needle) {
  return FindIgnoreCase(haystack, needle) != std::string_view::npos;
}

namespace detail {

// Each byte of the ANSI page mapped to its upper-case form, when that form
// is a single byte of the page too (the byte itself otherwise). Built once.
const unsigned char* AnsiUpperCaseTable();

// The simple upper-case mapping of one UTF-16 unit (the platform's).
char16_t UpperCaseUnit(char16_t unit);

}  // namespace detail
}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_STRSTRI_H
