// Code-page conversion off Windows. The pages that dominate mail (UTF-8,
// windows-1252, ISO-8859-1, US-ASCII) have fast paths of their own that
// reproduce the platform's answers byte for byte; every other page of the
// charset table goes to the extended converters.
//
// The ANSI page is windows-1252, so that every byte maps to one character
// and back. A process may choose another page once, at start-up, through
// the environment variable PARCELVANE_ACP (a page number such as 65001 or
// 1251); a page that is unknown, stateful or not ASCII-based is ignored.
#include <cstdlib>
#include <cstring>

#include "src/platform/codepage.h"
#include "src/platform/codepage_extended.h"

namespace pv {
namespace {

constexpr OLECHAR kReplacement = 0xFFFD;
constexpr char kDefaultChar = '?';
constexpr UINT kCodePageOem = 437;
constexpr UINT kCodePageMac = 10000;

// windows-1252 bytes 0x80..0x9F; the five undefined bytes map to the C1
// control of the same value so that every byte survives a round trip.
constexpr char16_t kCp1252High[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Writes units to a buffer, or only counts them when there is none.
class WideSink {
 public:
  WideSink(OLECHAR* out, int cap) : out_(out), cap_(cap) {}
  void Put(OLECHAR c) {
    if (out_ != nullptr && n_ < cap_) out_[n_] = c;
    ++n_;
  }
  // The platform's answer: the count, or 0 when the buffer is too small.
  int Result() const { return (out_ != nullptr && n_ > cap_) ? 0 : n_; }

 private:
  OLECHAR* out_;
  int cap_;
  int n_ = 0;
};

class ByteSink {
 public:
  ByteSink(char* out, int cap) : out_(out), cap_(cap) {}
  void Put(unsigned char c) {
    if (out_ != nullptr && n_ < cap_) out_[n_] = static_cast<char>(c);
    ++n_;
  }
  int Result() const { return (out_ != nullptr && n_ > cap_) ? 0 : n_; }

 private:
  char* out_;
  int cap_;
  int n_ = 0;
};

// ---------------------------------------------------------------- UTF-8
// Decodes like the platform: one U+FFFD for each invalid lead byte, and one
// for each broken sequence covering the bytes examined before the break.
void DecodeUtf8(const unsigned char* s, int n, WideSink& sink) {
  int i = 0;
  while (i < n) {
    unsigned char c = s[i];
    if (c < 0x80) {
      sink.Put(c);
      ++i;
      continue;
    }
    int len = (c >= 0xC2 && c <= 0xDF) ? 1 : (c >= 0xE0 && c <= 0xEF) ? 2 : (c >= 0xF0 && c <= 0xF4) ? 3 : 0;
    if (len == 0) {
      sink.Put(kReplacement);
      ++i;
      continue;
    }
    uint32_t res = c & (len == 1 ? 0x1F : len == 2 ? 0x0F : 0x07);
    int j = i + 1;
    bool ok = false;
    do {
      if (len == 3) {
        if (j >= n || (s[j] ^ 0x80) >= 0x40) break;
        res = (res << 6) | (s[j] ^ 0x80);
        ++j;
        if (res < 0x10) break;  // overlong four-byte form
      }
      if (len >= 2) {
        if (j >= n || (s[j] ^ 0x80) >= 0x40) break;
        res = (res << 6) | (s[j] ^ 0x80);
        if (res >= (0x110000 >> 6)) break;  // beyond U+10FFFF: this byte starts over
        ++j;
        if (res < 0x20) break;                                    // overlong three-byte form
        if (res >= (0xD800 >> 6) && res <= (0xDFFF >> 6)) break;  // encoded surrogate
      }
      if (j >= n || (s[j] ^ 0x80) >= 0x40) break;
      res = (res << 6) | (s[j] ^ 0x80);
      ++j;
      if (res < 0x80) break;  // overlong two-byte form
      ok = true;
    } while (false);
    if (!ok) {
      sink.Put(kReplacement);
    } else if (res >= 0x10000) {
      res -= 0x10000;
      sink.Put(static_cast<OLECHAR>(0xD800 | (res >> 10)));
      sink.Put(static_cast<OLECHAR>(0xDC00 | (res & 0x3FF)));
    } else {
      sink.Put(static_cast<OLECHAR>(res));
    }
    i = j;
  }
}

// Encodes UTF-16; an unpaired surrogate becomes U+FFFD (EF BF BD).
void EncodeUtf8(const OLECHAR* s, int n, ByteSink& sink) {
  for (int i = 0; i < n; ++i) {
    uint32_t c = static_cast<uint16_t>(s[i]);
    if (c < 0x80) {
      sink.Put(static_cast<unsigned char>(c));
      continue;
    }
    if (c >= 0xD800 && c <= 0xDFFF) {
      bool paired = c <= 0xDBFF && i + 1 < n && static_cast<uint16_t>(s[i + 1]) >= 0xDC00 &&
                    static_cast<uint16_t>(s[i + 1]) <= 0xDFFF;
      if (paired) {
        c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<uint16_t>(s[i + 1]) - 0xDC00);
        ++i;
      } else {
        c = kReplacement;
      }
    }
    if (c < 0x800) {
      sink.Put(static_cast<unsigned char>(0xC0 | (c >> 6)));
    } else if (c < 0x10000) {
      sink.Put(static_cast<unsigned char>(0xE0 | (c >> 12)));
      sink.Put(static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F)));
    } else {
      sink.Put(static_cast<unsigned char>(0xF0 | (c >> 18)));
      sink.Put(static_cast<unsigned char>(0x80 | ((c >> 12) & 0x3F)));
      sink.Put(static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F)));
    }
    sink.Put(static_cast<unsigned char>(0x80 | (c & 0x3F)));
  }
}

// ---------------------------------------------------------------- single-byte pages
OLECHAR DecodeSingleByte(UINT cp, unsigned char b) {
  switch (cp) {
    case kCodePageWindows1252:
      return (b >= 0x80 && b <= 0x9F) ? static_cast<OLECHAR>(kCp1252High[b - 0x80]) : b;
    case kCodePageUsAscii:
      return static_cast<OLECHAR>(b & 0x7F);  // the platform masks the high bit
    default:                                  // ISO-8859-1
      return b;
  }
}

int EncodeCp1252(OLECHAR c) {
  uint16_t u = static_cast<uint16_t>(c);
  if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) return u;
  if (u > 0x2122) return -1;  // beyond the page's last character
  for (int i = 0; i < 32; ++i) {
    if (kCp1252High[i] == u) return 0x80 + i;
  }
  return -1;
}

int EncodeSingleByte(UINT cp, OLECHAR c) {
  uint16_t u = static_cast<uint16_t>(c);
  switch (cp) {
    case kCodePageWindows1252:
      return EncodeCp1252(c);
    case kCodePageUsAscii:
      return u < 0x80 ? u : -1;
    default:  // ISO-8859-1
      return u <= 0xFF ? u : -1;
  }
}

// The character written for one the page cannot hold: its best fit when
// the page holds that, otherwise the default character.
unsigned char EncodeSingleByteOrFit(UINT cp, OLECHAR c) {
  int b = EncodeSingleByte(cp, c);
  if (b >= 0) return static_cast<unsigned char>(b);
  int fit = detail::BestFitUnit(c);
  if (fit >= 0) b = EncodeSingleByte(cp, static_cast<OLECHAR>(fit));
  return static_cast<unsigned char>(b >= 0 ? b : kDefaultChar);
}

bool IsFastPage(UINT cp) {
  return cp == kCodePageUtf8 || cp == kCodePageWindows1252 || cp == kCodePageLatin1 || cp == kCodePageUsAscii;
}

UINT ReadAnsiCodePage() {
  const char* env = std::getenv("PARCELVANE_ACP");
  if (env == nullptr || *env == '\0') return kCodePageWindows1252;
  char* end = nullptr;
  unsigned long value = std::strtoul(env, &end, 10);
  if (end == env || *end != '\0' || value == 0 || value > 0xFFFF) return kCodePageWindows1252;
  UINT cp = static_cast<UINT>(value);
  return (IsFastPage(cp) || detail::ExtendedIsAsciiCompatible(cp)) ? cp : kCodePageWindows1252;
}

}  // namespace

UINT AnsiCodePage() {
  static const UINT page = ReadAnsiCodePage();
  return page;
}

// 1 and 2 are the OEM and Macintosh pages of the en-US locale.
UINT ResolveCodePage(UINT codePage) {
  switch (codePage) {
    case 0:
    case 3:
      return AnsiCodePage();
    case 1:
      return kCodePageOem;
    case 2:
      return kCodePageMac;
    default:
      return codePage;
  }
}

bool IsCodePageConvertible(UINT codePage) {
  UINT cp = ResolveCodePage(codePage);
  return IsFastPage(cp) || detail::ExtendedIsConvertible(cp);
}

int MultiByteToWide(UINT codePage, const char* in, int inLen, OLECHAR* out, int outLen) {
  if (in == nullptr || inLen <= 0 || outLen < 0) return 0;
  UINT cp = ResolveCodePage(codePage);
  if (!IsFastPage(cp)) return detail::ExtendedToWide(cp, in, inLen, out, outLen);
  WideSink sink(outLen == 0 ? nullptr : out, outLen);
  const auto* bytes = reinterpret_cast<const unsigned char*>(in);
  if (cp == kCodePageUtf8) {
    DecodeUtf8(bytes, inLen, sink);
  } else {
    for (int i = 0; i < inLen; ++i) sink.Put(DecodeSingleByte(cp, bytes[i]));
  }
  return sink.Result();
}

int WideToMultiByte(UINT codePage, const OLECHAR* in, int inLen, char* out, int outLen) {
  if (in == nullptr || inLen <= 0 || outLen < 0) return 0;
  UINT cp = ResolveCodePage(codePage);
  if (!IsFastPage(cp)) return detail::ExtendedToNarrow(cp, in, inLen, out, outLen);
  ByteSink sink(outLen == 0 ? nullptr : out, outLen);
  if (cp == kCodePageUtf8) {
    EncodeUtf8(in, inLen, sink);
  } else {
    for (int i = 0; i < inLen; ++i) sink.Put(EncodeSingleByteOrFit(cp, in[i]));
  }
  return sink.Result();
}

}  // namespace pv
