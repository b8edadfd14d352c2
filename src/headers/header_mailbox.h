// EMSHeaderMailbox: one mailbox of an address field, a display name and an
// address. Splits mailbox text into the two, decodes encoded words in the
// display name, and writes the wire form back with the name always in
// double quotes.
//
// The mailbox list and the header field drive mailboxes through the entry
// points below, which run the same code as the interface operations
// without the BSTR copies.
#ifndef PARCELVANE_SRC_HEADERS_HEADER_MAILBOX_H
#define PARCELVANE_SRC_HEADERS_HEADER_MAILBOX_H

#include <string>
#include <string_view>

#include "src/platform/strings.h"
#include "src/com/com_object.h"
#include "src/com/stored_property.h"

namespace pv {

class HeaderMailbox final : public ComObject<HeaderMailbox, IEMSHeaderMailbox> {
 public:
  explicit HeaderMailbox(IUnknown* outer) : ComObject(outer) {}

  // IEMSHeaderMailbox in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoSplitString(BSTR bszVal);
  HRESULT DoParseMailbox(BSTR bszVal);
  HRESULT DoAssembleMailbox(BSTR* pVal);
  HRESULT GetAddress(BSTR* pVal);
  HRESULT PutAddress(BSTR newVal);
  HRESULT GetName(BSTR* pVal);
  HRESULT PutName(BSTR newVal);
  // Properties that only store a number and read it back.
  PV_STORED_PROPERTY(LONG, DefaultCodePage, defaultCodePage_)
  PV_STORED_PROPERTY(LONG, DefaultEncoding, defaultEncoding_)

  // SplitString: the display name goes to Name undecoded.
  void Split(WStringView text);
  // ParseMailbox on narrow text in the ANSI page: splits, then decodes the
  // display name and learns the code page and encoding of its last encoded
  // word. S_OK, or the failure to make the charset object.
  HRESULT Parse(std::string_view ansiText);
  // AssembleMailbox: "\"name\" <address>" or the address alone, in the
  // ANSI page.
  HRESULT Assemble(std::string* ansiOut);

  const WString& name() const { return name_; }
  void SetName(WStringView name) { name_.assign(name); }
  const std::string& address() const { return address_; }
  void SetAddress(std::string_view ansiAddress) { address_.assign(ansiAddress); }
  // The display name in wire form, as the last parse or assembly left it.
  const std::string& encodedName() const { return encodedName_; }
  LONG defaultCodePage() const { return defaultCodePage_; }
  void SetDefaultCodePage(LONG codePage) { defaultCodePage_ = codePage; }
  LONG defaultEncoding() const { return defaultEncoding_; }
  void SetDefaultEncoding(LONG encoding) { defaultEncoding_ = encoding; }

 private:
  void Clear();

  WString name_;
  std::string encodedName_;
  std::string address_;
  LONG defaultEncoding_ = 0;
  LONG defaultCodePage_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_HEADER_MAILBOX_H
