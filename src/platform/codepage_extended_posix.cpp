// Conversions for the code pages of the charset table beyond the built-in
// fast paths, off Windows. Every page is built from an ICU converter the
// first time it is used:
//  - single-byte pages become a 256-entry table and its reverse;
//  - the double-byte pages 932, 936, 949 and 950 become lead/trail tables
//    with the platform's rules: a lead byte always takes the byte after it,
//    and a pair or lead byte that maps to nothing gives U+30FB;
//  - stateful and multi-byte pages (ISO-2022-JP, EUC-JP, GB2312, HZ,
//    GB18030, UTF-7) keep one ICU converter, used under a lock.
// Characters a page cannot hold are written as their best fit when the page
// holds one (a letter without its accents, a full-width form as ASCII), and
// as "?" otherwise. Bytes that map to nothing decode to U+FFFD, except that
// undefined bytes 0x80..0x9F of single-byte pages keep their C1 control.
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/unorm2.h>
#include <unicode/uset.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "src/platform/codepage_extended.h"

namespace pv::detail {
namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kDoubleByteDefault = 0x30FB;  // what the platform's double-byte pages decode bad bytes to
constexpr uint16_t kNoCode = 0xFFFF;

enum class PageKind { kSingleByte, kDoubleByte, kConverter };

struct PageEntry {
  UINT codePage;
  PageKind kind;
  const char* converter;  // the ICU converter the page is built from
  bool asciiBased;        // bytes 0x00..0x7F are ASCII (false for EBCDIC)
};

// Every page of the charset table that converts here, in code-page order.
// Not here: 1200 (UTF-16, which the platform's byte conversions reject),
// 20000 (CNS) and the auto-detecting pages 50932, 50936 and 50950.
constexpr PageEntry kPages[] = {
    {37, PageKind::kSingleByte, "ibm-37_P100-1995", false},
    {424, PageKind::kSingleByte, "ibm-424_P100-1995", false},
    {437, PageKind::kSingleByte, "ibm-437_P100-1995", true},
    {500, PageKind::kSingleByte, "ibm-500_P100-1995", false},
    {708, PageKind::kSingleByte, "ASMO-708", true},
    {720, PageKind::kSingleByte, "ibm-720_P100-1997", true},
    {737, PageKind::kSingleByte, "ibm-737_P100-1997", true},
    {775, PageKind::kSingleByte, "ibm-775_P100-1996", true},
    {850, PageKind::kSingleByte, "ibm-850_P100-1995", true},
    {852, PageKind::kSingleByte, "ibm-852_P100-1995", true},
    {855, PageKind::kSingleByte, "ibm-855_P100-1995", true},
    {856, PageKind::kSingleByte, "ibm-856_P100-1995", true},
    {857, PageKind::kSingleByte, "ibm-857_P100-1995", true},
    {860, PageKind::kSingleByte, "ibm-860_P100-1995", true},
    {861, PageKind::kSingleByte, "ibm-861_P100-1995", true},
    {862, PageKind::kSingleByte, "ibm-862_P100-1995", true},
    {863, PageKind::kSingleByte, "ibm-863_P100-1995", true},
    {864, PageKind::kSingleByte, "ibm-864_X110-1999", true},
    {865, PageKind::kSingleByte, "ibm-865_P100-1995", true},
    {866, PageKind::kSingleByte, "ibm-866_P100-1995", true},
    {869, PageKind::kSingleByte, "ibm-869_P100-1995", true},
    {874, PageKind::kSingleByte, "windows-874-2000", true},
    {875, PageKind::kSingleByte, "ibm-875_P100-1995", false},
    {932, PageKind::kDoubleByte, "ibm-943_P15A-2003", true},
    {936, PageKind::kDoubleByte, "windows-936-2000", true},
    {949, PageKind::kDoubleByte, "windows-949-2000", true},
    {950, PageKind::kDoubleByte, "windows-950-2000", true},
    {1006, PageKind::kSingleByte, "ibm-1006_P100-1995", true},
    {1026, PageKind::kSingleByte, "ibm-1026_P100-1995", false},
    {1250, PageKind::kSingleByte, "windows-1250", true},
    {1251, PageKind::kSingleByte, "windows-1251", true},
    {1253, PageKind::kSingleByte, "windows-1253", true},
    {1254, PageKind::kSingleByte, "windows-1254", true},
    {1255, PageKind::kSingleByte, "windows-1255", true},
    {1256, PageKind::kSingleByte, "windows-1256", true},
    {1257, PageKind::kSingleByte, "windows-1257", true},
    {1258, PageKind::kSingleByte, "windows-1258", true},
    {10000, PageKind::kSingleByte, "macintosh", true},
    // Mac Japanese: its Shift_JIS core (Apple's single-byte extras are not mapped).
    {10001, PageKind::kDoubleByte, "ibm-943_P15A-2003", true},
    {10006, PageKind::kSingleByte, "x-mac-greek", true},
    {10007, PageKind::kSingleByte, "x-mac-cyrillic", true},
    {10029, PageKind::kSingleByte, "x-mac-ce", true},
    // Mac Icelandic: Mac Roman with six letters of its own (patched below).
    {10079, PageKind::kSingleByte, "macintosh", true},
    {10081, PageKind::kSingleByte, "x-mac-turkish", true},
    {20866, PageKind::kSingleByte, "koi8-r", true},
    {20932, PageKind::kConverter, "EUC-JP", true},
    {20936, PageKind::kConverter, "GB2312", true},
    {21866, PageKind::kSingleByte, "koi8-u", true},
    {28592, PageKind::kSingleByte, "iso-8859-2", true},
    {28593, PageKind::kSingleByte, "iso-8859-3", true},
    {28594, PageKind::kSingleByte, "iso-8859-4", true},
    {28595, PageKind::kSingleByte, "iso-8859-5", true},
    {28596, PageKind::kSingleByte, "iso-8859-6", true},
    {28597, PageKind::kSingleByte, "iso-8859-7", true},
    {28598, PageKind::kSingleByte, "iso-8859-8", true},
    {28599, PageKind::kSingleByte, "iso-8859-9", true},
    {28603, PageKind::kSingleByte, "iso-8859-13", true},
    {28605, PageKind::kSingleByte, "iso-8859-15", true},
    {38598, PageKind::kSingleByte, "iso-8859-8", true},  // iso-8859-8-i: the same bytes, logical order
    {50220, PageKind::kConverter, "ISO_2022,locale=ja,version=0", false},
    {50221, PageKind::kConverter, "ISO_2022,locale=ja,version=0", false},
    {50222, PageKind::kConverter, "ISO_2022,locale=ja,version=3", false},
    {50225, PageKind::kConverter, "ISO_2022,locale=ko,version=0", false},
    {51932, PageKind::kConverter, "EUC-JP", true},
    {52936, PageKind::kConverter, "HZ-GB-2312", false},
    {54936, PageKind::kConverter, "GB18030", true},
    {65000, PageKind::kConverter, "UTF-7", false},
};
constexpr size_t kPageCount = sizeof kPages / sizeof kPages[0];

// The bytes of 932 that ICU leaves unmapped but the platform decodes.
struct BytePatch {
  unsigned char byte;
  char16_t unit;
};
constexpr BytePatch k932Patches[] = {
    {0x80, 0x0080}, {0xA0, 0xF8F0}, {0xFD, 0xF8F1}, {0xFE, 0xF8F2}, {0xFF, 0xF8F3}};
constexpr BytePatch kMacIcelandicPatches[] = {{0xA0, 0x00DD}, {0xDC, 0x00D0}, {0xDD, 0x00F0},
                                              {0xDE, 0x00DE}, {0xDF, 0x00FE}, {0xE0, 0x00FD}};

// ---------------------------------------------------------------- sinks
// Write units or bytes to a buffer, or only count them when there is none.
template <class T>
class Sink {
 public:
  Sink(T* out, int cap) : out_(cap == 0 ? nullptr : out), cap_(cap) {}
  void Put(T c) {
    if (out_ != nullptr && n_ < cap_) out_[n_] = c;
    ++n_;
  }
  // The platform's answer: the count, or 0 when the buffer is too small.
  int Result() const { return (out_ != nullptr && n_ > cap_) ? 0 : n_; }

 private:
  T* out_;
  int cap_;
  int n_ = 0;
};

// ---------------------------------------------------------------- best fit
// The character a page may write instead of one it cannot hold: the base
// of a letter with accents (U+0100 "A" -> "A") or the plain form of a
// compatibility character (full-width "A", no-break space), when the
// decomposition is one base character followed only by combining marks.
UChar32 DecomposeToBase(UChar32 c) {
  UErrorCode err = U_ZERO_ERROR;
  const UNormalizer2* nfkd = unorm2_getNFKDInstance(&err);
  if (U_FAILURE(err)) return -1;
  UChar buffer[32];
  int32_t n = unorm2_getDecomposition(nfkd, c, buffer, 32, &err);
  if (U_FAILURE(err) || n <= 0) return -1;
  int32_t i = 0;
  UChar32 base;
  U16_NEXT(buffer, i, n, base);
  if (u_getCombiningClass(base) != 0) return -1;
  while (i < n) {
    UChar32 mark;
    U16_NEXT(buffer, i, n, mark);
    if (u_getCombiningClass(mark) == 0 && u_charType(mark) != U_NON_SPACING_MARK) return -1;
  }
  return base;
}

// The fits of the basic plane, worked out once (0: none), so that text
// full of characters a page cannot hold converts at table speed.
std::vector<char16_t> BuildBasicPlaneFits() {
  std::vector<char16_t> fits(0x10000, 0);
  for (UChar32 c = 0x80; c <= 0xFFFF; ++c) {
    if (c >= 0xD800 && c <= 0xDFFF) continue;
    UChar32 base = DecomposeToBase(c);
    if (base > 0 && base <= 0xFFFF) fits[static_cast<size_t>(c)] = static_cast<char16_t>(base);
  }
  return fits;
}

UChar32 BestFitCandidate(UChar32 c) {
  if (c > 0xFFFF) return DecomposeToBase(c);
  static const std::vector<char16_t> fits = BuildBasicPlaneFits();
  char16_t fit = c < 0 ? 0 : fits[static_cast<size_t>(c)];
  return fit == 0 ? -1 : fit;
}

// ---------------------------------------------------------------- reverse maps
// UTF-16 unit to the page's code (a byte, or lead << 8 | trail), in blocks
// of 256 units allocated only where the page has characters.
class EncodeMap {
 public:
  EncodeMap() { index_.fill(0); }

  uint16_t Find(char16_t unit) const {
    uint8_t block = index_[unit >> 8];
    return block == 0 ? kNoCode : blocks_[block - 1][unit & 0xFF];
  }
  bool Has(char16_t unit) const { return Find(unit) != kNoCode; }

  void Set(char16_t unit, uint16_t code) {
    uint8_t& block = index_[unit >> 8];
    if (block == 0) {
      blocks_.emplace_back();
      blocks_.back().fill(kNoCode);
      block = static_cast<uint8_t>(blocks_.size());
    }
    blocks_[block - 1][unit & 0xFF] = code;
  }

 private:
  std::array<uint8_t, 256> index_;
  std::vector<std::array<uint16_t, 256>> blocks_;
};

// The code a unit is written as: its own, its best fit, or "?".
uint16_t CodeFor(const EncodeMap& map, char16_t unit, uint16_t question) {
  uint16_t code = map.Find(unit);
  if (code != kNoCode) return code;
  UChar32 fit = BestFitCandidate(unit);
  if (fit >= 0 && fit <= 0xFFFF) {
    code = map.Find(static_cast<char16_t>(fit));
    if (code != kNoCode) return code;
  }
  return question;
}

// ---------------------------------------------------------------- ICU helpers
struct ConverterCloser {
  void operator()(UConverter* c) const { ucnv_close(c); }
};
using ConverterHandle = std::unique_ptr<UConverter, ConverterCloser>;

ConverterHandle OpenConverter(const char* name) {
  UErrorCode err = U_ZERO_ERROR;
  ConverterHandle c(ucnv_open(name, &err));
  if (U_FAILURE(err)) return nullptr;
  return c;
}

// Decodes `bytes` strictly: the units, or nothing when any byte is bad.
int DecodeStrict(UConverter* c, const char* bytes, int n, UChar* out, int cap) {
  UErrorCode err = U_ZERO_ERROR;
  ucnv_setToUCallBack(c, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &err);
  err = U_ZERO_ERROR;
  int32_t written = ucnv_toUChars(c, out, cap, bytes, n, &err);
  return U_FAILURE(err) ? 0 : written;
}

// Whether a byte on its own is an incomplete sequence (a lead byte).
bool IsLeadByte(UConverter* c, unsigned char b) {
  UErrorCode err = U_ZERO_ERROR;
  ucnv_setToUCallBack(c, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &err);
  err = U_ZERO_ERROR;
  char in = static_cast<char>(b);
  UChar out[4];
  ucnv_toUChars(c, out, 4, &in, 1, &err);
  return err == U_TRUNCATED_CHAR_FOUND;
}

// The bytes ICU writes for one unit, as a code, or kNoCode.
uint16_t EncodeStrict(UConverter* c, char16_t unit) {
  UErrorCode err = U_ZERO_ERROR;
  ucnv_setFromUCallBack(c, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &err);
  err = U_ZERO_ERROR;
  char out[8];
  UChar in = unit;
  int32_t n = ucnv_fromUChars(c, out, sizeof out, &in, 1, &err);
  if (U_FAILURE(err)) return kNoCode;
  if (n == 1) return static_cast<unsigned char>(out[0]);
  if (n == 2)
    return static_cast<uint16_t>((static_cast<unsigned char>(out[0]) << 8) |
                                 static_cast<unsigned char>(out[1]));
  return kNoCode;
}

// ---------------------------------------------------------------- single-byte pages
class SingleBytePage {
 public:
  bool Build(const PageEntry& entry) {
    ConverterHandle c = OpenConverter(entry.converter);
    if (!c) return false;
    for (int b = 0; b < 256; ++b) {
      char in = static_cast<char>(b);
      UChar out[4];
      if (entry.asciiBased && b < 0x80) {
        decode_[b] = static_cast<char16_t>(b);
      } else if (DecodeStrict(c.get(), &in, 1, out, 4) == 1) {
        decode_[b] = out[0];
      } else {
        decode_[b] = (b >= 0x80 && b <= 0x9F) ? static_cast<char16_t>(b) : kReplacement;
      }
    }
    if (entry.codePage == 10079) {
      for (const BytePatch& p : kMacIcelandicPatches) decode_[p.byte] = p.unit;
    }
    for (int b = 255; b >= 0; --b) {  // the lowest byte wins for a unit mapped twice
      if (decode_[b] != kReplacement) encode_.Set(decode_[b], static_cast<uint16_t>(b));
    }
    question_ = encode_.Find(u'?');
    return question_ != kNoCode;
  }

  int ToWide(const unsigned char* in, int n, OLECHAR* out, int cap) const {
    Sink<OLECHAR> sink(out, cap);
    for (int i = 0; i < n; ++i) sink.Put(static_cast<OLECHAR>(decode_[in[i]]));
    return sink.Result();
  }

  int ToNarrow(const OLECHAR* in, int n, char* out, int cap) const {
    Sink<char> sink(out, cap);
    for (int i = 0; i < n; ++i) {
      sink.Put(static_cast<char>(CodeFor(encode_, static_cast<char16_t>(in[i]), question_)));
    }
    return sink.Result();
  }

 private:
  std::array<char16_t, 256> decode_{};
  EncodeMap encode_;
  uint16_t question_ = kNoCode;
};

// ---------------------------------------------------------------- double-byte pages
class DoubleBytePage {
 public:
  bool Build(const PageEntry& entry) {
    ConverterHandle c = OpenConverter(entry.converter);
    if (!c) return false;
    leadIndex_.fill(0);
    std::vector<char16_t> duplicates;
    for (int b = 0; b < 256; ++b) {
      char in = static_cast<char>(b);
      UChar out[4];
      if (entry.asciiBased && b < 0x80) {
        single_[b] = static_cast<char16_t>(b);
      } else if (IsLeadByte(c.get(), static_cast<unsigned char>(b))) {
        single_[b] = kDoubleByteDefault;
        leadIndex_[b] = static_cast<uint8_t>(++leadCount_);
        continue;
      } else if (DecodeStrict(c.get(), &in, 1, out, 4) == 1) {
        single_[b] = out[0];
      } else {
        single_[b] = kDoubleByteDefault;
        continue;
      }
      AddReverse(single_[b], static_cast<uint16_t>(b), &duplicates);
    }
    if (entry.codePage == 932 || entry.codePage == 10001) {  // the platform's extra single bytes of 932
      for (const BytePatch& p : k932Patches) {
        single_[p.byte] = p.unit;
        AddReverse(p.unit, p.byte, &duplicates);
      }
    }
    pairs_.assign(static_cast<size_t>(leadCount_) * 256, kDoubleByteDefault);
    for (int lead = 0; lead < 256; ++lead) {
      if (leadIndex_[lead] == 0) continue;
      for (int trail = 0; trail < 256; ++trail) {
        char in[2] = {static_cast<char>(lead), static_cast<char>(trail)};
        UChar out[4];
        if (DecodeStrict(c.get(), in, 2, out, 4) != 1) continue;
        pairs_[PairIndex(static_cast<unsigned char>(lead), static_cast<unsigned char>(trail))] = out[0];
        AddReverse(out[0], static_cast<uint16_t>((lead << 8) | trail), &duplicates);
      }
    }
    // A unit that several codes decode to is written as ICU writes it.
    for (char16_t unit : duplicates) {
      uint16_t code = EncodeStrict(c.get(), unit);
      if (code != kNoCode) encode_.Set(unit, code);
    }
    question_ = encode_.Find(u'?');
    return question_ != kNoCode;
  }

  int ToWide(const unsigned char* in, int n, OLECHAR* out, int cap) const {
    Sink<OLECHAR> sink(out, cap);
    for (int i = 0; i < n; ++i) {
      unsigned char b = in[i];
      if (leadIndex_[b] == 0) {
        sink.Put(static_cast<OLECHAR>(single_[b]));
      } else if (i + 1 < n) {
        sink.Put(static_cast<OLECHAR>(pairs_[PairIndex(b, in[i + 1])]));
        ++i;  // a lead byte takes the byte after it, whatever it is
      } else {
        sink.Put(static_cast<OLECHAR>(kDoubleByteDefault));
      }
    }
    return sink.Result();
  }

  int ToNarrow(const OLECHAR* in, int n, char* out, int cap) const {
    Sink<char> sink(out, cap);
    for (int i = 0; i < n; ++i) {
      uint16_t code = CodeFor(encode_, static_cast<char16_t>(in[i]), question_);
      if (code > 0xFF) sink.Put(static_cast<char>(code >> 8));
      sink.Put(static_cast<char>(code & 0xFF));
    }
    return sink.Result();
  }

 private:
  size_t PairIndex(unsigned char lead, unsigned char trail) const {
    return static_cast<size_t>(leadIndex_[lead] - 1) * 256 + trail;
  }

  void AddReverse(char16_t unit, uint16_t code, std::vector<char16_t>* duplicates) {
    if (encode_.Has(unit)) {
      duplicates->push_back(unit);
      return;
    }
    encode_.Set(unit, code);
  }

  std::array<char16_t, 256> single_{};
  std::array<uint8_t, 256> leadIndex_{};
  int leadCount_ = 0;
  std::vector<char16_t> pairs_;
  EncodeMap encode_;
  uint16_t question_ = kNoCode;
};

// ---------------------------------------------------------------- converter pages
void ReplaceBadBytes(const void*, UConverterToUnicodeArgs* args, const char*, int32_t,
                     UConverterCallbackReason reason, UErrorCode* err) {
  if (reason > UCNV_IRREGULAR) return;  // reset, close, clone
  static const UChar kUnit = kReplacement;
  *err = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(args, &kUnit, 1, 0, err);
}

void WriteBestFit(const void* context, UConverterFromUnicodeArgs* args, const UChar*, int32_t, UChar32 c,
                  UConverterCallbackReason reason, UErrorCode* err) {
  if (reason > UCNV_IRREGULAR) return;
  const USet* held = static_cast<const USet*>(context);
  UChar unit = u'?';
  if (reason == UCNV_UNASSIGNED) {
    UChar32 fit = BestFitCandidate(c);
    if (fit >= 0 && fit <= 0xFFFF && uset_contains(held, fit)) unit = static_cast<UChar>(fit);
  }
  *err = U_ZERO_ERROR;
  const UChar* source = &unit;
  ucnv_cbFromUWriteUChars(args, &source, source + 1, 0, err);
}

class ConverterPage {
 public:
  ~ConverterPage() {
    if (held_ != nullptr) uset_close(held_);
  }

  bool Build(const PageEntry& entry) {
    closesHz_ = entry.codePage == 52936;
    converter_ = OpenConverter(entry.converter);
    if (!converter_) return false;
    UErrorCode err = U_ZERO_ERROR;
    held_ = uset_openEmpty();
    ucnv_getUnicodeSet(converter_.get(), held_, UCNV_ROUNDTRIP_SET, &err);
    if (U_FAILURE(err)) return false;
    ucnv_setToUCallBack(converter_.get(), ReplaceBadBytes, nullptr, nullptr, nullptr, &err);
    ucnv_setFromUCallBack(converter_.get(), WriteBestFit, held_, nullptr, nullptr, &err);
    return U_SUCCESS(err);
  }

  int ToWide(const char* in, int n, OLECHAR* out, int cap) const {
    std::lock_guard<std::mutex> lock(mutex_);
    UErrorCode err = U_ZERO_ERROR;
    int32_t written = ucnv_toUChars(converter_.get(), reinterpret_cast<UChar*>(out), cap, in, n, &err);
    return Answer(written, cap, err);
  }

  int ToNarrow(const OLECHAR* in, int n, char* out, int cap) const {
    std::lock_guard<std::mutex> lock(mutex_);
    if (closesHz_) return ToClosedHz(in, n, out, cap);
    UErrorCode err = U_ZERO_ERROR;
    int32_t written =
        ucnv_fromUChars(converter_.get(), out, cap, reinterpret_cast<const UChar*>(in), n, &err);
    return Answer(written, cap, err);
  }

 private:
  // A size query (no buffer) reports overflow with the exact size.
  static int Answer(int32_t written, int cap, UErrorCode err) {
    if (err == U_BUFFER_OVERFLOW_ERROR) return cap == 0 ? written : 0;
    if (U_FAILURE(err)) return 0;
    return written;
  }

  // HZ text must end in ASCII mode, which ICU leaves open: "~}" closes it.
  int ToClosedHz(const OLECHAR* in, int n, char* out, int cap) const {
    UErrorCode err = U_ZERO_ERROR;
    const auto* units = reinterpret_cast<const UChar*>(in);
    int32_t size = ucnv_fromUChars(converter_.get(), nullptr, 0, units, n, &err);
    if (err != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(err)) return 0;
    std::string bytes(static_cast<size_t>(size), '\0');
    err = U_ZERO_ERROR;
    ucnv_fromUChars(converter_.get(), bytes.data(), size, units, n, &err);
    if (U_FAILURE(err)) return 0;
    if (EndsInHzGbMode(bytes)) bytes += "~}";
    int total = static_cast<int>(bytes.size());
    if (cap == 0) return total;
    if (total > cap) return 0;
    std::copy(bytes.begin(), bytes.end(), out);
    return total;
  }

  static bool EndsInHzGbMode(const std::string& bytes) {
    bool gb = false;
    for (size_t i = 0; i + 1 < bytes.size(); ++i) {
      if (!gb && bytes[i] != '~') continue;
      if (gb && bytes[i] != '~') {
        ++i;  // a two-byte GB character
        continue;
      }
      char next = bytes[i + 1];
      if (next == '{') gb = true;
      if (next == '}') gb = false;
      ++i;
    }
    return gb;
  }

  ConverterHandle converter_;
  USet* held_ = nullptr;
  bool closesHz_ = false;
  mutable std::mutex mutex_;
};

static_assert(sizeof(OLECHAR) == sizeof(UChar), "UTF-16 units are shared with ICU");

// ---------------------------------------------------------------- the registry
struct PageSlot {
  std::once_flag once;
  bool ready = false;
  std::unique_ptr<SingleBytePage> single;
  std::unique_ptr<DoubleBytePage> dual;
  std::unique_ptr<ConverterPage> converter;
};

// Never destroyed: conversions stay usable while other statics are torn down.
PageSlot* Slots() {
  static PageSlot* const slots = new PageSlot[kPageCount];
  return slots;
}

const PageEntry* FindEntry(UINT codePage) {
  size_t lo = 0, hi = kPageCount;
  while (lo < hi) {
    size_t mid = (lo + hi) / 2;
    if (kPages[mid].codePage < codePage) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return (lo < kPageCount && kPages[lo].codePage == codePage) ? &kPages[lo] : nullptr;
}

template <class Page>
std::unique_ptr<Page> BuildPage(const PageEntry& entry) {
  auto page = std::make_unique<Page>();
  if (!page->Build(entry)) return nullptr;
  return page;
}

// The page's slot, built on first use; null when the page is not here.
const PageSlot* Page(UINT codePage) {
  const PageEntry* entry = FindEntry(codePage);
  if (entry == nullptr) return nullptr;
  PageSlot& slot = Slots()[entry - kPages];
  std::call_once(slot.once, [&] {
    switch (entry->kind) {
      case PageKind::kSingleByte:
        slot.single = BuildPage<SingleBytePage>(*entry);
        slot.ready = slot.single != nullptr;
        break;
      case PageKind::kDoubleByte:
        slot.dual = BuildPage<DoubleBytePage>(*entry);
        slot.ready = slot.dual != nullptr;
        break;
      case PageKind::kConverter:
        slot.converter = BuildPage<ConverterPage>(*entry);
        slot.ready = slot.converter != nullptr;
        break;
    }
  });
  return slot.ready ? &slot : nullptr;
}

}  // namespace

bool ExtendedIsConvertible(UINT codePage) { return Page(codePage) != nullptr; }

bool ExtendedIsAsciiCompatible(UINT codePage) {
  const PageEntry* entry = FindEntry(codePage);
  return entry != nullptr && entry->asciiBased && entry->kind != PageKind::kConverter &&
         Page(codePage) != nullptr;
}

int ExtendedToWide(UINT codePage, const char* in, int inLen, OLECHAR* out, int outLen) {
  const PageSlot* slot = Page(codePage);
  if (slot == nullptr) return 0;
  const auto* bytes = reinterpret_cast<const unsigned char*>(in);
  if (slot->single) return slot->single->ToWide(bytes, inLen, out, outLen);
  if (slot->dual) return slot->dual->ToWide(bytes, inLen, out, outLen);
  return slot->converter->ToWide(in, inLen, out, outLen);
}

int ExtendedToNarrow(UINT codePage, const OLECHAR* in, int inLen, char* out, int outLen) {
  const PageSlot* slot = Page(codePage);
  if (slot == nullptr) return 0;
  if (slot->single) return slot->single->ToNarrow(in, inLen, out, outLen);
  if (slot->dual) return slot->dual->ToNarrow(in, inLen, out, outLen);
  return slot->converter->ToNarrow(in, inLen, out, outLen);
}

int BestFitUnit(OLECHAR c) {
  UChar32 fit = BestFitCandidate(static_cast<char16_t>(c));
  return (fit >= 0 && fit <= 0xFFFF && fit != static_cast<char16_t>(c)) ? fit : -1;
}

}  // namespace pv::detail
