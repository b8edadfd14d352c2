#include "src/headers/header_charset.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <limits>
#include <vector>

#include "src/headers/mime_char_class.h"
#include "src/platform/charset_table.h"
#include "src/platform/codepage.h"
#include "src/platform/strstri.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSHeaderCharset(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<HeaderCharset>(outer, riid, ppv);
}

namespace {

constexpr size_t npos = std::string_view::npos;
constexpr uint8_t kNotBase64 = 0xFF;
constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kHexDigits[] = "0123456789ABCDEF";

constexpr std::array<uint8_t, 256> MakeBase64Values() {
  std::array<uint8_t, 256> values{};
  for (auto& v : values) v = kNotBase64;
  for (int i = 0; i < 64; ++i) values[static_cast<unsigned char>(kBase64Digits[i])] = static_cast<uint8_t>(i);
  return values;
}
constexpr std::array<uint8_t, 256> kBase64Values = MakeBase64Values();

int HexValue(unsigned char c) { return c <= '9' ? c - '0' : c - 'A' + 10; }

bool IsSpaceOrTab(char c) { return c == ' ' || c == '\t'; }

bool IsWhiteSpaceOnly(std::string_view run) {
  for (char c : run) {
    if (!IsSpaceOrTab(c)) return false;
  }
  return true;
}

// Appends `bytes` converted from `codePage` to wide characters; nothing
// when the page cannot convert them.
void AppendConverted(LONG codePage, std::string_view bytes, WString* out) {
  if (bytes.empty() || bytes.size() > static_cast<size_t>(INT_MAX)) return;
  UINT page = static_cast<UINT>(codePage);
  int length = static_cast<int>(bytes.size());
  int needed = MultiByteToWide(page, bytes.data(), length, nullptr, 0);
  if (needed <= 0) return;
  size_t old = out->size();
  out->resize(old + static_cast<size_t>(needed));
  int written = MultiByteToWide(page, bytes.data(), length, &(*out)[old], needed);
  out->resize(old + static_cast<size_t>(written > 0 ? written : 0));
}

void AppendAscii(std::string_view ascii, WString* out) {
  for (char c : ascii) out->push_back(static_cast<OLECHAR>(static_cast<unsigned char>(c)));
}

// Base64 of a word: letters outside the alphabet ("=" included) are skipped,
// a NUL ends the text, and a final group of k values gives 6k/8 bytes.
// False when there is nothing to convert (no bytes, or a first byte 0).
bool DecodeBase64Word(std::string_view word, std::string* bytes) {
  bytes->clear();
  uint32_t bits = 0;
  int count = 0;
  for (char ch : word) {
    if (ch == '\0') break;
    uint8_t value = kBase64Values[static_cast<unsigned char>(ch)];
    if (value == kNotBase64) continue;
    bits = (bits << 6) | value;
    if (++count < 4) continue;
    bytes->push_back(static_cast<char>(bits >> 16));
    bytes->push_back(static_cast<char>((bits >> 8) & 0xFF));
    bytes->push_back(static_cast<char>(bits & 0xFF));
    bits = 0;
    count = 0;
  }
  if (count == 2) {
    bytes->push_back(static_cast<char>((bits >> 4) & 0xFF));
  } else if (count == 3) {
    bytes->push_back(static_cast<char>((bits >> 10) & 0xFF));
    bytes->push_back(static_cast<char>((bits >> 2) & 0xFF));
  }
  return !bytes->empty() && (*bytes)[0] != '\0';
}

// Q of a word: "_" is a space, "=" and two upper-case hex digits a byte;
// a bare "=" is kept but makes the word malformed; printable ASCII other
// than "?" and bytes 0xA0..0xFF stand for themselves; the rest is dropped.
// False when the word is malformed or there is nothing to convert.
bool DecodeQWord(std::string_view word, std::string* bytes) {
  bytes->clear();
  bool malformed = false;
  for (size_t i = 0; i < word.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(word[i]);
    if (c == '_') {
      bytes->push_back(' ');
    } else if (c == '=') {
      if (i + 2 < word.size() && HasCharClass(static_cast<unsigned char>(word[i + 1]), kCharHexDigit) &&
          HasCharClass(static_cast<unsigned char>(word[i + 2]), kCharHexDigit)) {
        bytes->push_back(static_cast<char>(HexValue(static_cast<unsigned char>(word[i + 1])) * 16 +
                                           HexValue(static_cast<unsigned char>(word[i + 2]))));
        i += 2;
      } else {
        bytes->push_back('=');
        malformed = true;
      }
    } else if ((c >= 0x21 && c <= 0x7E && c != '?') || c >= 0xA0) {
      bytes->push_back(static_cast<char>(c));
    }
  }
  return !malformed && !bytes->empty() && (*bytes)[0] != '\0';
}

// ---------------------------------------------------------------- decoding
// Reads header text with a machine of four states: plain text, the
// charset of a word, its encoding letter, and its encoded text. The
// charset and letter of each word are stored into the object as they are
// read, so the text after a word is converted with that word's page.
class EncodedWordDecoder {
 public:
  EncodedWordDecoder(HeaderCharset* state, std::string_view in, WString* out)
      : state_(state), in_(in), out_(out) {}

  void Run() {
    state_->SetHeaderCodePage(kCodePageUnset);
    size_t i = 0;
    while (i < in_.size() && IsSpaceOrTab(in_[i])) ++i;
    while (i < in_.size()) {
      if (StartsWord(i)) {
        i = ReadWord(i + 2);
        if (i == npos) return;  // the structure broke off, or the input ended inside the word
      } else {
        i = ReadText(i);
      }
    }
  }

 private:
  bool StartsWord(size_t i) const { return i + 1 < in_.size() && in_[i] == '=' && in_[i + 1] == '?'; }

  // Decoding uses HeaderCodePage only when it is a real page (1 or more).
  LONG Page() const {
    LONG page = state_->storedHeaderCodePage();
    return page >= 1 ? page : state_->defaultCodePage();
  }

  // A run of plain text: an "=" that starts no word, then everything up to
  // the next "=". White space standing before an "=" is dropped; that is
  // what joins adjacent encoded words.
  size_t ReadText(size_t i) {
    size_t from = in_[i] == '=' ? i + 1 : i;
    size_t end = in_.find('=', from);
    bool endedByEquals = end != npos;
    if (!endedByEquals) end = in_.size();
    std::string_view run = in_.substr(i, end - i);
    if (!(endedByEquals && IsWhiteSpaceOnly(run))) AppendConverted(Page(), run, out_);
    return end;
  }

  // From after "=?": the charset, the letter, the encoded text and "?=".
  // Returns the position after the word, or npos when the parse stops.
  size_t ReadWord(size_t i) {
    state_->SetHeaderCodePage(kCodePageUnset);
    state_->SetDefaultEncoding(kHeaderEncodingNone);
    size_t end = i;
    while (end < in_.size() && !EndsCharset(static_cast<unsigned char>(in_[end]))) ++end;
    state_->SetHeaderCodePage(CharsetToCodePageNumber(in_.substr(i, end - i)));
    if (end >= in_.size() || in_[end] != '?') return npos;
    i = end + 1;
    if (i >= in_.size()) return npos;
    state_->SetDefaultEncoding(EncodingOfLetter(in_[i]));
    if (i + 1 >= in_.size() || in_[i + 1] != '?') return npos;
    return ReadEncodedText(i + 2);
  }

  static bool EndsCharset(unsigned char c) {
    return c >= 0x80 || HasCharClass(c, kCharWhiteSpace | kCharAddressSpecial | kCharMimeSpecial);
  }

  static LONG EncodingOfLetter(char c) {
    if (c == 'B' || c == 'b') return kHeaderEncodingB;
    if (c == 'Q' || c == 'q') return kHeaderEncodingQ;
    return kHeaderEncodingNone;
  }

  // The encoded text: a space decodes what was gathered and writes a space;
  // "?=" ends the word (dropping a final "=" gathered just before it); any
  // other "?" is skipped. Text that the input ends inside is lost.
  size_t ReadEncodedText(size_t i) {
    word_.clear();
    for (;;) {
      size_t stop = in_.find_first_of(" ?", i);
      if (stop == npos) return npos;
      word_.append(in_.data() + i, stop - i);
      if (in_[stop] == ' ') {
        FlushWord();
        out_->push_back(u' ');
        i = stop + 1;
        continue;
      }
      if (stop + 1 < in_.size() && in_[stop + 1] == '=') {
        if (!word_.empty() && in_[stop - 1] == '=') word_.pop_back();
        FlushWord();
        return stop + 2;
      }
      i = stop + 1;
    }
  }

  void FlushWord() {
    if (word_.empty()) return;
    DecodeWord(word_);
    word_.clear();
  }

  // An unknown letter loses the word's text; a word that cannot be decoded
  // (no real page, a malformed Q word, base64 giving nothing) comes out as
  // its raw text in the ANSI page.
  void DecodeWord(std::string_view word) {
    LONG encoding = state_->defaultEncoding();
    if (encoding == kHeaderEncodingNone) return;
    LONG page = Page();
    bool decoded = false;
    if (page >= 1 && encoding == kHeaderEncodingB) decoded = DecodeBase64Word(word, &bytes_);
    if (page >= 1 && encoding == kHeaderEncodingQ) decoded = DecodeQWord(word, &bytes_);
    if (decoded) {
      AppendConverted(page, bytes_, out_);
    } else {
      AppendConverted(static_cast<LONG>(kCodePageAnsi), word, out_);
    }
  }

  HeaderCharset* state_;
  std::string_view in_;
  WString* out_;
  std::string word_;   // the encoded text gathered so far
  std::string bytes_;  // a decoded word
};

// ---------------------------------------------------------------- encoding
// Whether the bytes of a text in a code page are the sum of those of its
// characters. Pages that shift state (ISO-2022-JP, HZ, UTF-7) are not,
// and neither is a page this table does not know.
bool IsAdditivePage(LONG codePage) {
  LONG page = static_cast<LONG>(ResolveCodePage(static_cast<UINT>(codePage)));
  return !CodePageToHeaderCharset(page).empty() && !IsStatefulCodePage(page);
}

// Writes text as encoded words of at most a budget of characters each, by
// conservative estimates of the encoded length.
class EncodedWordEncoder {
 public:
  EncodedWordEncoder(HeaderCharset* state, WStringView text, WString* out)
      : state_(state),
        text_(text),
        out_(out),
        page_(EncodingPage(*state)),
        additive_(IsAdditivePage(page_)) {}

  void Run() {
    std::string_view charset = CodePageToHeaderCharset(page_);
    if (state_->defaultEncoding() == kHeaderEncodingAuto) state_->SetDefaultEncoding(ChooseEncoding(charset));
    encoding_ = state_->defaultEncoding();
    if (encoding_ == kHeaderEncodingNone) {
      *out_ = AnsiToWide(WideToAnsi(text_));
      return;
    }
    // Any other code gives empty chunks: nothing is written.
    if (encoding_ != kHeaderEncodingB && encoding_ != kHeaderEncodingQ) return;
    WString prefix = WidenAscii("=?");
    AppendAscii(charset, &prefix);
    prefix.push_back(u'?');
    prefix.push_back(encoding_ == kHeaderEncodingB ? u'B' : u'Q');
    prefix.push_back(u'?');
    int64_t prefixLength = static_cast<int64_t>(prefix.size());
    int64_t budget = 81 - static_cast<int64_t>(state_->headerNameReserve()) - prefixLength;
    const int64_t laterBudget = 78 - prefixLength;
    size_t position = 0;
    while (position < text_.size()) {
      size_t units = CutChunk(position, budget);
      if (units == 0) break;
      if (!out_->empty()) out_->append(OLESTR("\r\n "));
      out_->append(prefix);
      if (encoding_ == kHeaderEncodingB) {
        AppendBase64(bytes_);
      } else {
        AppendQ(bytes_);
      }
      out_->append(OLESTR("?="));
      position += units;
      budget = laterBudget;
    }
  }

 private:
  // Encoding uses HeaderCodePage unless it is exactly -1.
  static LONG EncodingPage(const HeaderCharset& state) {
    LONG page = state.storedHeaderCodePage();
    return page != kCodePageUnset ? page : state.defaultCodePage();
  }

  // The automatic choice: Q for the ISO 8859 pages and B for ISO 2022 by
  // name; otherwise by the share of 7-bit characters in the text.
  LONG ChooseEncoding(std::string_view charset) const {
    if (ContainsIgnoreCase(charset, "iso-8859") || ContainsIgnoreCase(charset, "iso8859"))
      return kHeaderEncodingQ;
    if (ContainsIgnoreCase(charset, "iso-2022") || ContainsIgnoreCase(charset, "iso2022"))
      return kHeaderEncodingB;
    if (text_.empty()) return kHeaderEncodingNone;
    int64_t ascii = 0;
    for (OLECHAR c : text_) ascii += static_cast<uint16_t>(c) < 128 ? 1 : 0;
    int64_t percent = ascii * 100 / static_cast<int64_t>(text_.size());
    if (percent < 60) return kHeaderEncodingB;
    if (percent < 100) return kHeaderEncodingQ;
    return kHeaderEncodingNone;
  }

  int64_t Estimate(int64_t bytes) const {
    if (encoding_ == kHeaderEncodingB) return 4 * ((bytes + 2) / 3);
    return 3 * (bytes + 1 + 3 * bytes / 68);
  }

  // A surrogate pair is one step: a chunk never ends between its units.
  size_t StepAt(size_t i) const {
    uint16_t unit = static_cast<uint16_t>(text_[i]);
    if (unit < 0xD800 || unit > 0xDBFF || i + 1 >= text_.size()) return 1;
    uint16_t next = static_cast<uint16_t>(text_[i + 1]);
    return (next >= 0xDC00 && next <= 0xDFFF) ? 2 : 1;
  }

  // The bytes of `units` units from `position` in the page (0 when the
  // page cannot convert them).
  int64_t Measure(size_t position, size_t units) const {
    if (units > static_cast<size_t>(INT_MAX)) return 0;
    return WideToMultiByte(static_cast<UINT>(page_), text_.data() + position, static_cast<int>(units),
                           nullptr, 0);
  }

  // Cuts the next chunk at `position`: the longest run of whole characters
  // whose estimate stays below the budget, converted into bytes_. Returns
  // its length in units, or 0 for an empty chunk.
  size_t CutChunk(size_t position, int64_t budget) {
    size_t units = additive_ ? GrowOneByOne(position, budget) : GrowBySearch(position, budget);
    if (units == 0) return 0;
    if (!ToNarrow(static_cast<UINT>(page_), text_.substr(position, units), &bytes_) || bytes_.empty())
      return 0;
    return units;
  }

  // Adds one character at a time, measuring only the character added.
  size_t GrowOneByOne(size_t position, int64_t budget) const {
    size_t units = 0;
    int64_t bytes = 0;
    while (position + units < text_.size()) {
      size_t step = StepAt(position + units);
      int64_t grown = bytes + Measure(position + units, step);
      if (grown == 0) return 0;  // the page converts nothing
      if (Estimate(grown) >= budget) break;
      bytes = grown;
      units += step;
    }
    return units;
  }

  // A page that shifts state is measured whole. A longer chunk never takes
  // fewer bytes, so the longest chunk within the budget is found by doubling
  // and halving the number of characters rather than one at a time.
  size_t GrowBySearch(size_t position, int64_t budget) {
    ends_.clear();
    int64_t first = Measure(position, EndOf(position, 1));
    if (first == 0 || Estimate(first) >= budget) return 0;
    size_t good = 1;  // characters known to fit
    size_t bad = 0;   // characters known not to fit (0 while none is known)
    while (bad == 0) {
      size_t count = good * 2;
      size_t end = EndOf(position, count);
      size_t available = ends_.size();  // fewer than count at the end of the text
      if (!Fits(position, end, budget)) {
        bad = std::min(count, available);
      } else if (available < count) {
        return end;  // the rest of the text fits
      } else {
        good = count;
      }
    }
    while (bad - good > 1) {
      size_t middle = good + (bad - good) / 2;
      if (Fits(position, EndOf(position, middle), budget)) {
        good = middle;
      } else {
        bad = middle;
      }
    }
    return EndOf(position, good);
  }

  bool Fits(size_t position, size_t units, int64_t budget) const {
    int64_t bytes = Measure(position, units);
    return bytes > 0 && Estimate(bytes) < budget;
  }

  // The units taken by the first `count` characters from `position` (all
  // the rest of the text when it holds fewer).
  size_t EndOf(size_t position, size_t count) {
    while (ends_.size() < count) {
      size_t at = ends_.empty() ? 0 : ends_.back();
      if (position + at >= text_.size()) break;
      ends_.push_back(at + StepAt(position + at));
    }
    return ends_.empty() ? 0 : ends_[std::min(count, ends_.size()) - 1];
  }

  void AppendBase64(std::string_view bytes) {
    size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
      uint32_t bits = (static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16) |
                      (static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8) |
                      static_cast<unsigned char>(bytes[i + 2]);
      PutBase64(bits, 4);
    }
    size_t rest = bytes.size() - i;
    if (rest == 0) return;
    uint32_t bits = static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16;
    if (rest == 2) bits |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
    PutBase64(bits, rest + 1);
    for (size_t pad = rest + 1; pad < 4; ++pad) out_->push_back(u'=');
  }

  void PutBase64(uint32_t bits, size_t digits) {
    for (size_t d = 0; d < digits; ++d) {
      out_->push_back(static_cast<OLECHAR>(kBase64Digits[(bits >> (18 - 6 * d)) & 0x3F]));
    }
  }

  // Printable ASCII other than "=", "?" and "_" stands for itself, a space
  // is "_", every other byte "=" and two upper-case hex digits.
  void AppendQ(std::string_view bytes) {
    for (char ch : bytes) {
      unsigned char c = static_cast<unsigned char>(ch);
      if (c >= 0x21 && c <= 0x7E && c != '=' && c != '?' && c != '_') {
        out_->push_back(static_cast<OLECHAR>(c));
      } else if (c == ' ') {
        out_->push_back(u'_');
      } else {
        out_->push_back(u'=');
        out_->push_back(static_cast<OLECHAR>(kHexDigits[c >> 4]));
        out_->push_back(static_cast<OLECHAR>(kHexDigits[c & 0x0F]));
      }
    }
  }

  HeaderCharset* state_;
  WStringView text_;
  WString* out_;
  LONG page_;
  bool additive_;
  std::vector<size_t> ends_;  // character ends of the chunk being cut
  LONG encoding_ = kHeaderEncodingNone;
  std::string bytes_;  // the current chunk in the code page
};

}  // namespace

// ---------------------------------------------------------------- the object
HeaderCharset::HeaderCharset(IUnknown* outer)
    : ComObject(outer), defaultCodePage_(static_cast<LONG>(AnsiCodePage())) {}

void HeaderCharset::SetHeaderNameLength(size_t length) {
  constexpr LONG kLargest = std::numeric_limits<LONG>::max();
  headerNameReserve_ = length > static_cast<size_t>(kLargest - 4) ? kLargest : static_cast<LONG>(length) + 4;
}

HRESULT HeaderCharset::Decode(std::string_view ansiText, WString* out) {
  return Guard([&] {
    out->clear();
    EncodedWordDecoder(this, ansiText, out).Run();
    return S_OK;
  });
}

HRESULT HeaderCharset::Encode(WStringView text, WString* out) {
  return Guard([&] {
    out->clear();
    EncodedWordEncoder(this, text, out).Run();
    return S_OK;
  });
}

HRESULT HeaderCharset::DoParseHeader(BSTR bszVal, BSTR* pVal) {
  if (bszVal == nullptr) return E_POINTER;
  WString out;
  HRESULT hr = Decode(BstrToAnsi(bszVal), &out);
  if (FAILED(hr)) return hr;
  return ReturnBstr(out, pVal);
}

HRESULT HeaderCharset::DoAssembleHeader(BSTR bszVal, BSTR* pVal) {
  if (bszVal == nullptr) return E_POINTER;
  WString out;
  HRESULT hr = Encode(View(bszVal), &out);
  if (FAILED(hr)) return hr;
  return ReturnBstr(out, pVal);
}

HRESULT HeaderCharset::DoCharsetToCodePage(BSTR bszVal, LONG* pVal) {
  *pVal = CharsetToCodePageNumber(View(bszVal));
  return S_OK;
}

HRESULT HeaderCharset::DoCodePageToCharset(LONG nVal, BSTR* pVal) {
  return ReturnBstr(WidenAscii(CodePageToHeaderCharset(nVal)), pVal);
}

HRESULT HeaderCharset::PutHeaderName(BSTR newVal) {
  if (newVal != nullptr) SetHeaderNameLength(SysStringLen(newVal));
  return S_OK;
}

HRESULT HeaderCharset::PutHeaderCodePage(LONG newVal) {
  headerCodePage_ = newVal;
  return S_OK;
}

HRESULT HeaderCharset::GetHeaderCodePage(LONG* pVal) {
  *pVal = headerCodePage();
  return S_OK;
}

}  // namespace pv
