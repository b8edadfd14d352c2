// Code-page conversion between multi-byte text and UTF-16, with the
// contract of the platform's MultiByteToWideChar / WideCharToMultiByte
// called with no flags and no default character, and the system ANSI code
// page (code page 0).
#ifndef PARCELVANE_SRC_PLATFORM_CODEPAGE_H
#define PARCELVANE_SRC_PLATFORM_CODEPAGE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "parcelvane/platform.h"
#include "src/platform/strings.h"

namespace pv {

constexpr UINT kCodePageAnsi = 0;  // the system ANSI code page
constexpr UINT kCodePageUtf8 = 65001;
constexpr UINT kCodePageWindows1252 = 1252;
constexpr UINT kCodePageLatin1 = 28591;
constexpr UINT kCodePageUsAscii = 20127;

// The system ANSI code page: 1252 unless the environment variable
// PARCELVANE_ACP named another supported page when the process started.
UINT AnsiCodePage();

// Code page 0 (and the thread's ANSI page, 3) stand for the ANSI page.
UINT ResolveCodePage(UINT codePage);

// Whether text in this page can be converted at all.
bool IsCodePageConvertible(UINT codePage);

// MultiByteToWideChar: converts `inLen` bytes (no terminator is implied).
// With `outLen` 0 returns the exact number of UTF-16 units needed; otherwise
// writes them and returns the number written. 0 means failure: an
// unconvertible page, an empty input or a buffer that is too small.
int MultiByteToWide(UINT codePage, const char* in, int inLen, OLECHAR* out, int outLen);

// WideCharToMultiByte, the reverse direction, with the same conventions.
int WideToMultiByte(UINT codePage, const OLECHAR* in, int inLen, char* out, int outLen);

// Whole-string forms. They return false when the page cannot convert; an
// empty input gives an empty output and true.
bool ToWide(UINT codePage, std::string_view in, WString* out);
bool ToNarrow(UINT codePage, WStringView in, std::string* out);

// The narrow text of the interface: the ANSI page in both directions.
WString AnsiToWide(std::string_view in);
std::string WideToAnsi(WStringView in);
// Shorthand for a BSTR argument.
inline std::string BstrToAnsi(BSTR s) { return WideToAnsi(View(s)); }

// Whether the ANSI code page maps every byte to one character and back
// (windows-1252, ISO-8859-1), so that narrow text survives a round trip
// through wide text unchanged and ASCII delimiters can be found in it byte
// by byte.
bool AnsiKeepsEveryByte();

// `bytes` as they come back from a round trip through wide text in the
// ANSI code page: unchanged where the page keeps every byte. The second form
// takes the string over without a copy there; the third gives `bytes`
// themselves there and converts into `scratch` elsewhere.
std::string AnsiRoundTrip(std::string_view bytes);
std::string AnsiRoundTrip(std::string&& bytes);
std::string_view AnsiRoundTrip(std::string_view bytes, std::string* scratch);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_CODEPAGE_H
