// EMSHeaderCharset: the object through which header text passes between
// wire form (7-bit text that may hold encoded words "=?charset?B?...?=")
// and display text, and the mapping between charset names and code pages.
//
// Header fields, parameters and mailboxes make one per object with
// MakeObject<HeaderCharset>, copy their code page and encoding into it and
// call Decode / Encode, which skip the wide-string copies of the interface.
#ifndef PARCELVANE_SRC_HEADERS_HEADER_CHARSET_H
#define PARCELVANE_SRC_HEADERS_HEADER_CHARSET_H

#include <string>
#include <string_view>

#include "src/platform/strings.h"
#include "src/com/com_object.h"
#include "src/com/stored_property.h"

namespace pv {

// Header encoding codes: the values of every DefaultEncoding of a
// header-level object.
enum HeaderEncoding : LONG {
  kHeaderEncodingNone = 0,
  kHeaderEncodingQ = 1,
  kHeaderEncodingB = 2,
  kHeaderEncodingAuto = 3,  // chosen per call and stored back
};

// The code-page value that means "not set".
constexpr LONG kCodePageUnset = -1;

class HeaderCharset final : public ComObject<HeaderCharset, IEMSHeaderCharset> {
 public:
  explicit HeaderCharset(IUnknown* outer);

  // IEMSHeaderCharset in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseHeader(BSTR bszVal, BSTR* pVal);
  HRESULT DoAssembleHeader(BSTR bszVal, BSTR* pVal);
  HRESULT DoCharsetToCodePage(BSTR bszVal, LONG* pVal);
  HRESULT DoCodePageToCharset(LONG nVal, BSTR* pVal);
  HRESULT PutHeaderName(BSTR newVal);
  HRESULT PutHeaderCodePage(LONG newVal);
  HRESULT GetHeaderCodePage(LONG* pVal);
  // Properties that only store a number and read it back.
  PV_STORED_PROPERTY(LONG, DefaultCodePage, defaultCodePage_)
  PV_STORED_PROPERTY(LONG, DefaultEncoding, defaultEncoding_)

  // ParseHeader on narrow text in the ANSI code page: decodes the encoded
  // words and leaves HeaderCodePage and DefaultEncoding at those of the
  // last word. S_OK, or E_OUTOFMEMORY.
  HRESULT Decode(std::string_view ansiText, WString* out);
  // AssembleHeader: `text` as a run of encoded words joined by "\r\n ".
  // S_OK, or E_OUTOFMEMORY.
  HRESULT Encode(WStringView text, WString* out);

  LONG defaultEncoding() const { return defaultEncoding_; }
  void SetDefaultEncoding(LONG encoding) { defaultEncoding_ = encoding; }
  // The stored value: -1 when not set.
  LONG storedHeaderCodePage() const { return headerCodePage_; }
  // HeaderCodePage as the property reads it: DefaultCodePage when not set.
  LONG headerCodePage() const {
    return headerCodePage_ == kCodePageUnset ? defaultCodePage_ : headerCodePage_;
  }
  void SetHeaderCodePage(LONG codePage) { headerCodePage_ = codePage; }
  LONG defaultCodePage() const { return defaultCodePage_; }
  void SetDefaultCodePage(LONG codePage) { defaultCodePage_ = codePage; }
  // The header-name reserve that shortens the first encoded word: the
  // length of the field name plus 4.
  LONG headerNameReserve() const { return headerNameReserve_; }
  void SetHeaderNameLength(size_t length);

 private:
  LONG defaultEncoding_ = kHeaderEncodingB;
  LONG headerCodePage_ = kCodePageUnset;
  LONG defaultCodePage_;
  LONG headerNameReserve_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_HEADER_CHARSET_H
