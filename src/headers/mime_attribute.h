// EMSMimeAttribute: one "name=value" parameter of a structured header
// field, kept in two forms at once: the raw value as it stands on the wire
// (encoded words, folding, or the extended "charset'language'%XX" form) and
// the decoded display text. Setting either form converts it into the other
// through the attribute's own EMSHeaderCharset.
//
// The attribute list and the header field drive attributes through the
// narrow entry points below (text in the ANSI code page), which run the same
// code as the interface operations without the BSTR copies.
#ifndef PARCELVANE_SRC_HEADERS_MIME_ATTRIBUTE_H
#define PARCELVANE_SRC_HEADERS_MIME_ATTRIBUTE_H

#include <string>
#include <string_view>

#include "src/headers/header_charset.h"
#include "src/platform/strings.h"
#include "src/com/com_object.h"

namespace pv {

// One parameter text cut into its parts, without decoding: the name
// trimmed of blanks and of its trailing "*"s (which mark an extended
// value), and the value trimmed of blanks, its opening double quote and a
// closing one removed and nothing unescaped. `hasEquals` is false when the
// text holds no "=" (the other fields are then empty).
struct AttributeText {
  bool hasEquals = false;
  std::string_view name;
  bool extended = false;
  std::string_view value;
};
AttributeText SplitAttributeText(std::string_view text);

// The code page of a value without a charset, and the encoding code that
// lets each encoding choose.
constexpr LONG kAttributeDefaultCodePage = 65001;
constexpr LONG kAttributeDefaultEncoding = kHeaderEncodingAuto;

class MimeAttribute final : public ComObject<MimeAttribute, IEMSMimeAttribute> {
 public:
  explicit MimeAttribute(IUnknown* outer) : ComObject(outer) {}

  // IEMSMimeAttribute in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseAttribute(BSTR bszVal);
  HRESULT DoAssembleAttribute(BSTR* pVal);
  HRESULT DoClone(IEMSMimeAttribute** ppVal);
  HRESULT GetName(BSTR* pVal);
  HRESULT PutName(BSTR newVal);
  HRESULT GetRawValue(BSTR* pVal);
  HRESULT PutRawValue(BSTR newVal);
  HRESULT GetDecodedValue(BSTR* pVal);
  HRESULT PutDecodedValue(BSTR newVal);
  HRESULT PutCodePage(LONG newVal);
  HRESULT GetCodePage(LONG* pVal);
  HRESULT PutEncoding(LONG newVal);
  HRESULT GetEncoding(LONG* pVal);

  // ParseAttribute on narrow text: S_OK, E_FAIL when there is no "=", or
  // E_OUTOFMEMORY.
  HRESULT Parse(std::string_view ansiText);
  // ParseAttribute from text already cut by SplitAttributeText.
  HRESULT ParseSplit(const AttributeText& parts);
  // AssembleAttribute: re-encodes the decoded value, then appends
  // name="raw value" to `out`.
  HRESULT AppendAssembled(std::string* out);

  const std::string& name() const { return name_; }
  void SetName(std::string_view ansiName) { name_.assign(ansiName); }
  const std::string& rawValue() const { return rawValue_; }
  // RawValue put: stores the value and decodes it.
  HRESULT SetRawValue(std::string_view ansiRaw);
  const WString& decodedValue() {
    FlushDecode();
    return decodedValue_;
  }
  // DecodedValue put: stores the value and encodes it.
  HRESULT SetDecodedValue(WStringView decoded);
  bool extended() const { return extended_; }
  LONG codePage() {
    FlushDecode();
    return codePage_;
  }
  void SetCodePage(LONG codePage) {
    FlushDecode();
    codePage_ = codePage;
  }
  LONG encoding() {
    FlushDecode();
    return encoding_;
  }
  void SetEncoding(LONG encoding) {
    FlushDecode();
    encoding_ = encoding;
  }

 private:
  // RawValue into DecodedValue, and DecodedValue into RawValue. A parsed
  // value is decoded when something first reads what the decoding sets
  // (the decoded value, the code page, the encoding): FlushDecode, called
  // first by everything that reads or changes those.
  HRESULT DecodeRawValue();
  void FlushDecode() {
    if (decodePending_) {
      decodePending_ = false;
      DecodeRawValue();  // only a shortage of memory fails, and throws
    }
  }
  // Made on first use.
  HeaderCharset* Charset();
  HRESULT EncodeDecodedValue();
  // The decoded value as encoded words of this page and encoding, folded.
  HRESULT EncodeAsWords(LONG codePage, LONG encoding);
  HRESULT EncodeAsTextAndWords();
  bool ReadsBack();
  void DecodeExtended(std::string_view unfolded);

  // Kept for the attribute's life: the page of the last encoded word that
  // it decoded carries over into the next encoding.
  ComPtr<HeaderCharset> charset_;
  std::string name_;
  std::string rawValue_;
  WString decodedValue_;
  bool extended_ = false;
  bool decodePending_ = false;
  LONG codePage_ = kAttributeDefaultCodePage;
  LONG encoding_ = kAttributeDefaultEncoding;
};

// Percent-decoding of an extended value: "%%" is "%", "%" and two hex
// digits (either case) a byte, "%u" and four hex digits one UTF-16 unit;
// any other "%" is text.
// Each run of escaped bytes is converted from `codePage` (from the ANSI
// page when `codePage` cannot convert them, so that nothing is lost);
// every other byte is text in the ANSI page.
void PercentDecode(std::string_view text, LONG codePage, WString* out);

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_MIME_ATTRIBUTE_H
