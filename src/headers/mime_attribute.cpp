#include "src/headers/mime_attribute.h"

#include <cstdint>

#include "src/headers/header_text.h"
#include "src/platform/charset_table.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMimeAttribute(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<MimeAttribute>(outer, riid, ppv);
}

namespace {

constexpr size_t npos = std::string_view::npos;

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// The value of `count` hex digits at `at`, or -1 when they are not all there.
int32_t HexNumber(std::string_view text, size_t at, size_t count) {
  if (at > text.size() || text.size() - at < count) return -1;
  int32_t value = 0;
  for (size_t i = 0; i < count; ++i) {
    int digit = HexValue(text[at + i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

void AppendConverted(UINT codePage, std::string_view bytes, WString* out) {
  if (bytes.empty()) return;
  WString wide;
  if (!ToWide(codePage, bytes, &wide)) ToWide(kCodePageAnsi, bytes, &wide);
  out->append(wide);
}

// Whether every unit is at most 128: such text is written unencoded (128
// itself included, a bound that is kept as it is).
bool IsPlainText(WStringView text) {
  for (OLECHAR c : text) {
    if (static_cast<uint16_t>(c) > 128) return false;
  }
  return true;
}

// Whether a raw value, written between quotes, reads back as itself: the
// parameter ends at ";", and the field at a line feed that is not a fold.
bool RawStandsQuoted(std::string_view raw) {
  return raw.find(';') == std::string_view::npos && StaysInField(raw);
}

}  // namespace

AttributeText SplitAttributeText(std::string_view text) {
  AttributeText parts;
  size_t equals = text.find('=');
  if (equals == npos) return parts;
  parts.hasEquals = true;
  std::string_view name = TrimBlanks(text.substr(0, equals));
  if (!name.empty() && name.back() == '*') {
    while (!name.empty() && name.back() == '*') name.remove_suffix(1);
    parts.extended = true;
  }
  parts.name = name;
  std::string_view value = TrimBlanks(text.substr(equals + 1));
  if (!value.empty() && value.front() == '"') {
    value.remove_prefix(1);
    if (!value.empty() && value.back() == '"') value.remove_suffix(1);
  }
  parts.value = value;
  return parts;
}

void PercentDecode(std::string_view text, LONG codePage, WString* out) {
  out->clear();
  std::string escaped;  // the current run of escaped bytes
  size_t plainFrom = 0;
  size_t i = 0;
  auto flushPlain = [&](size_t end) {
    AppendConverted(kCodePageAnsi, text.substr(plainFrom, end - plainFrom), out);
  };
  auto flushEscaped = [&] {
    AppendConverted(static_cast<UINT>(codePage), escaped, out);
    escaped.clear();
  };
  while ((i = text.find('%', i)) != npos) {
    int32_t byte = HexNumber(text, i + 1, 2);
    int32_t unit = byte < 0 && i + 1 < text.size() && text[i + 1] == 'u' ? HexNumber(text, i + 2, 4) : -1;
    bool percent = i + 1 < text.size() && text[i + 1] == '%';
    if (byte < 0 && unit < 0 && !percent) {
      ++i;  // a lone "%" is text
      continue;
    }
    if (i > plainFrom) {
      flushEscaped();
      flushPlain(i);
    }
    if (byte >= 0) {
      escaped.push_back(static_cast<char>(byte));
      i += 3;
    } else {
      flushEscaped();
      if (unit >= 0) {
        out->push_back(static_cast<OLECHAR>(unit));
        i += 6;
      } else {
        out->push_back(OLECHAR('%'));
        i += 2;
      }
    }
    plainFrom = i;
  }
  flushEscaped();
  flushPlain(text.size());
}

// ---------------------------------------------------------------- the object
HeaderCharset* MimeAttribute::Charset() {
  if (!charset_ && FAILED(MakeObject(&charset_))) throw std::bad_alloc();
  return charset_.get();
}

HRESULT MimeAttribute::Parse(std::string_view ansiText) { return ParseSplit(SplitAttributeText(ansiText)); }

HRESULT MimeAttribute::ParseSplit(const AttributeText& parts) {
  FlushDecode();
  rawValue_.clear();
  if (!parts.hasEquals) return E_FAIL;
  name_.assign(parts.name);
  if (parts.extended) extended_ = true;  // never cleared
  rawValue_.assign(parts.value);
  decodePending_ = true;
  return S_OK;
}

HRESULT MimeAttribute::AppendAssembled(std::string* out) {
  FlushDecode();
  // A multipart body is cut at the boundary's raw value: a boundary that
  // can stand between quotes as it is keeps that value, in the form it was
  // read in, so that the output is cut where the tree was.
  if (name_ == "boundary" && RawStandsQuoted(rawValue_)) {
    out->append(name_).append(extended_ ? "*=\"" : "=\"").append(rawValue_).push_back('"');
    return S_OK;
  }
  HRESULT hr = EncodeDecodedValue();
  if (FAILED(hr)) return hr;
  out->append(name_).append("=\"").append(rawValue_).push_back('"');
  return S_OK;
}

HRESULT MimeAttribute::SetRawValue(std::string_view ansiRaw) {
  FlushDecode();
  rawValue_.assign(ansiRaw);
  return DecodeRawValue();
}

HRESULT MimeAttribute::SetDecodedValue(WStringView decoded) {
  FlushDecode();
  decodedValue_.assign(decoded);
  return EncodeDecodedValue();
}

HRESULT MimeAttribute::DecodeRawValue() {
  decodedValue_.clear();
  std::string unfolded = UnfoldHeaderText(rawValue_);
  if (unfolded.empty()) return S_OK;
  if (extended_) {
    DecodeExtended(unfolded);
    return S_OK;
  }
  HeaderCharset* charset = Charset();
  charset->SetDefaultCodePage(codePage_);
  HRESULT hr = charset->Decode(unfolded, &decodedValue_);
  if (FAILED(hr)) return hr;
  // The page and letter of the value's last encoded word, or the charset
  // object's own when there was none.
  codePage_ = charset->headerCodePage();
  encoding_ = charset->defaultEncoding();
  return S_OK;
}

// charset'language'text: the charset names the page of the escaped bytes.
// Any other number of "'" leaves the page as it is and keeps only the text
// before the first one.
void MimeAttribute::DecodeExtended(std::string_view unfolded) {
  size_t first = unfolded.find('\'');
  std::string_view text = unfolded.substr(0, first);
  if (first != npos) {
    size_t second = unfolded.find('\'', first + 1);
    if (second != npos && unfolded.find('\'', second + 1) == npos) {
      codePage_ = CharsetToCodePageNumber(unfolded.substr(0, first));
      text = unfolded.substr(second + 1);
    }
  }
  PercentDecode(text, codePage_, &decodedValue_);
}

// The plain text when it reads back as the value, otherwise encoded words
// in the value's code page, and, when that page cannot carry the value
// either, UTF-8 words: what is written must read back as what was held.
HRESULT MimeAttribute::EncodeDecodedValue() {
  Charset();  // the encodings below use it
  rawValue_.clear();
  if (IsPlainText(decodedValue_)) {
    std::string text = WideToAnsi(decodedValue_);
    // U+0080 counts as plain and is written as the ANSI page gives it, on
    // purpose, unless the value could not stand in quotes at all.
    rawValue_ = FoldHeaderText(text, name_.size(), FoldLineBreak::kForgetBothCandidates);
    if (ReadsBack() || (decodedValue_.find(OLECHAR(0x80)) != WString::npos && RawStandsQuoted(rawValue_))) {
      return S_OK;
    }
    HRESULT hr = EncodeAsWords(codePage_, kHeaderEncodingB);
    if (FAILED(hr) || ReadsBack()) return hr;
  } else {
    HRESULT hr = EncodeAsWords(codePage_, encoding_);
    if (FAILED(hr) || ReadsBack()) return hr;
  }
  const LONG headerCodePage = charset_->storedHeaderCodePage();
  charset_->SetHeaderCodePage(kCodePageUnset);
  HRESULT hr = EncodeAsWords(static_cast<LONG>(kCodePageUtf8), kHeaderEncodingB);
  charset_->SetHeaderCodePage(headerCodePage);
  if (FAILED(hr) || ReadsBack()) return hr;
  // Words cannot carry a zero byte: text and words mixed, when they read back.
  std::string words = std::move(rawValue_);
  hr = EncodeAsTextAndWords();
  if (FAILED(hr) || !ReadsBack()) rawValue_ = std::move(words);
  return hr;
}

// The value's UTF-8 bytes, which a parsed value decodes from its initial
// page, except that every ";", "=", CR and LF, with the blanks before it,
// goes into a UTF-8 B word of its own: plain text carries what words cannot
// (a zero character), words what would end or change the plain text.
HRESULT MimeAttribute::EncodeAsTextAndWords() {
  const LONG headerCodePage = charset_->storedHeaderCodePage();
  charset_->SetHeaderCodePage(kCodePageUnset);
  charset_->SetDefaultCodePage(static_cast<LONG>(kCodePageUtf8));
  const WStringView value(decodedValue_);
  std::string raw;
  auto appendText = [&](WStringView text) {
    std::string bytes;
    ToNarrow(kCodePageUtf8, text, &bytes);
    raw.append(bytes);
  };
  HRESULT hr = S_OK;
  size_t textStart = 0;
  auto appendWord = [&](size_t begin, size_t end) {
    charset_->SetDefaultEncoding(kHeaderEncodingB);
    WString word;
    hr = charset_->Encode(value.substr(begin, end - begin), &word);
    raw.append(WideToAnsi(word));
    textStart = end;
  };
  auto isBlank = [](OLECHAR c) { return c == ' ' || c == '\t'; };
  // Blanks that open the text would be skipped when read.
  while (textStart < value.size() && isBlank(value[textStart])) ++textStart;
  if (textStart > 0) appendWord(0, textStart);
  for (size_t i = textStart; i < value.size() && SUCCEEDED(hr); ++i) {
    const OLECHAR c = value[i];
    if (c != ';' && c != '=' && c != '\r' && c != '\n') continue;
    // Blanks alone before a word would be dropped when read.
    size_t wordStart = i;
    while (wordStart > textStart && isBlank(value[wordStart - 1])) --wordStart;
    appendText(value.substr(textStart, wordStart - textStart));
    appendWord(wordStart, i + 1);
  }
  appendText(value.substr(textStart));
  charset_->SetHeaderCodePage(headerCodePage);
  rawValue_ = std::move(raw);
  return hr;
}

HRESULT MimeAttribute::EncodeAsWords(LONG codePage, LONG encoding) {
  // HeaderCodePage is left as the last decoding set it.
  charset_->SetDefaultCodePage(codePage);
  charset_->SetDefaultEncoding(encoding);
  WString encoded;
  HRESULT hr = charset_->Encode(decodedValue_, &encoded);
  if (FAILED(hr)) return hr;
  rawValue_ = FoldHeaderText(WideToAnsi(encoded), name_.size(), FoldLineBreak::kForgetBothCandidates);
  return S_OK;
}

// Whether the raw value, written between quotes, is read back whole and
// decodes to the decoded value as a parsed attribute decodes it (from the
// initial code page). The charset object's state is kept as the encoding
// left it.
bool MimeAttribute::ReadsBack() {
  if (!RawStandsQuoted(rawValue_)) return false;
  const LONG headerCodePage = charset_->storedHeaderCodePage();
  const LONG defaultCodePage = charset_->defaultCodePage();
  const LONG encoding = charset_->defaultEncoding();
  charset_->SetHeaderCodePage(kCodePageUnset);
  charset_->SetDefaultCodePage(kAttributeDefaultCodePage);
  WString back;
  std::string unfolded = UnfoldHeaderText(rawValue_);
  bool same = unfolded.empty() ? decodedValue_.empty()
                               : SUCCEEDED(charset_->Decode(unfolded, &back)) && back == decodedValue_;
  charset_->SetHeaderCodePage(headerCodePage);
  charset_->SetDefaultCodePage(defaultCodePage);
  charset_->SetDefaultEncoding(encoding);
  return same;
}

// ---------------------------------------------------------------- interface
HRESULT MimeAttribute::DoParseAttribute(BSTR bszVal) { return Parse(BstrToAnsi(bszVal)); }

HRESULT MimeAttribute::DoAssembleAttribute(BSTR* pVal) {
  std::string text;
  HRESULT hr = AppendAssembled(&text);
  if (FAILED(hr)) return hr;
  return ReturnBstr(AnsiToWide(text), pVal);
}

HRESULT MimeAttribute::DoClone(IEMSMimeAttribute** ppVal) {
  ComPtr<MimeAttribute> clone;
  HRESULT hr = MakeObject(&clone);
  if (FAILED(hr)) return hr;
  clone->SetName(name_);
  hr = clone->SetRawValue(rawValue_);
  if (FAILED(hr)) return hr;
  *ppVal = clone.detach();
  return S_OK;
}

HRESULT MimeAttribute::GetName(BSTR* pVal) { return ReturnBstr(AnsiToWide(name_), pVal); }

HRESULT MimeAttribute::PutName(BSTR newVal) {
  name_ = BstrToAnsi(newVal);
  return S_OK;
}

HRESULT MimeAttribute::GetRawValue(BSTR* pVal) { return ReturnBstr(AnsiToWide(rawValue_), pVal); }

HRESULT MimeAttribute::PutRawValue(BSTR newVal) { return SetRawValue(BstrToAnsi(newVal)); }

HRESULT MimeAttribute::GetDecodedValue(BSTR* pVal) {
  FlushDecode();
  return ReturnBstr(decodedValue_, pVal);
}

HRESULT MimeAttribute::PutDecodedValue(BSTR newVal) { return SetDecodedValue(View(newVal)); }

HRESULT MimeAttribute::PutCodePage(LONG newVal) {
  SetCodePage(newVal);
  return S_OK;
}

HRESULT MimeAttribute::GetCodePage(LONG* pVal) {
  *pVal = codePage();
  return S_OK;
}

HRESULT MimeAttribute::PutEncoding(LONG newVal) {
  SetEncoding(newVal);
  return S_OK;
}

HRESULT MimeAttribute::GetEncoding(LONG* pVal) {
  *pVal = encoding();
  return S_OK;
}

}  // namespace pv
