// EMSHeaderMailboxes: the address list of one address field. Splits the
// field value into mailboxes, keeps each as a decoded display name and an
// address, and gives them back one by one or as a whole, decoded or in
// wire form. One working EMSHeaderMailbox, made with the list, does every
// split, decoding and encoding; the list copies its code page and encoding
// into it before each use.
//
// The header field drives the list through the entry points below, which
// run the same code as the interface operations without the BSTR copies.
#ifndef PARCELVANE_SRC_HEADERS_HEADER_MAILBOXES_H
#define PARCELVANE_SRC_HEADERS_HEADER_MAILBOXES_H

#include <string>
#include <string_view>
#include <vector>

#include "src/headers/header_mailbox.h"
#include "src/platform/strings.h"
#include "src/com/com_object.h"
#include "src/com/stored_property.h"

namespace pv {

class HeaderMailboxes final : public ComObject<HeaderMailboxes, IEMSHeaderMailboxes> {
 public:
  explicit HeaderMailboxes(IUnknown* outer) : ComObject(outer) {}
  HRESULT FinalConstruct() override;

  // IEMSHeaderMailboxes in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseMailboxes(BSTR bszVal, LONG bEncoded);
  HRESULT DoAssembleMailboxes(BSTR* pVal);
  HRESULT DoRemoveAll();
  HRESULT DoRemoveMailbox(LONG nIdx);
  HRESULT GetCount(LONG* pVal);
  HRESULT GetMailboxName(LONG nIdx, BSTR* pVal);
  HRESULT GetMailboxAddress(LONG nIdx, BSTR* pVal);
  HRESULT PutMailboxData(LONG nIdx, BSTR bszName, BSTR bszAddress);
  HRESULT PutDecodedMailbox(LONG nIdx, BSTR newVal);
  HRESULT GetDecodedMailbox(LONG nIdx, BSTR* pVal);
  HRESULT GetDecodedMailboxes(BSTR* pVal);
  HRESULT GetEncodedMailbox(LONG nIdx, BSTR* pVal);
  HRESULT PutEncodedMailbox(LONG nIdx, BSTR newVal);
  // Properties that only store a number and read it back.
  PV_STORED_PROPERTY(LONG, DefaultCodePage, defaultCodePage_)
  PV_STORED_PROPERTY(LONG, DefaultEncoding, defaultEncoding_)

  // The index that appends in MailboxData, DecodedMailbox and EncodedMailbox
  // puts.
  static constexpr LONG kAppend = -1;

  // ParseMailboxes: empties the list and adds every piece of the address
  // list, decoding the display names when `encoded`. The ANSI form widens
  // the text first.
  HRESULT Parse(WStringView text, bool encoded);
  HRESULT ParseAnsi(std::string_view ansiText, bool encoded);
  // AssembleMailboxes: every mailbox in wire form, joined by ",\r\n\t".
  HRESULT Assemble(WString* out);
  HRESULT AssembleAnsi(std::string* ansiOut);
  // DecodedMailboxes: every mailbox as display text, joined by ",".
  void AppendDecoded(WString* out) const;

  // The puts by index: S_OK, or E_INVALIDARG for an index that is neither
  // kAppend nor that of a stored mailbox.
  HRESULT SetMailboxData(LONG index, WStringView name, WStringView address);
  HRESULT SetDecodedMailbox(LONG index, WStringView text);
  HRESULT SetEncodedMailbox(LONG index, WStringView text);

  size_t count() const { return names_.size(); }
  const WString& nameAt(size_t i) const { return names_[i]; }
  const WString& addressAt(size_t i) const { return addresses_[i]; }

 private:
  // Where an index given to a get or to RemoveMailbox points.
  enum class Slot { kStored, kPastTheEnd, kNegative };
  Slot SlotOf(LONG index) const;
  bool CanStoreAt(LONG index) const;

  void AppendDecodedMailbox(size_t i, WString* out) const;
  HRESULT AppendEncodedMailbox(size_t i, std::string* ansiOut);

  LONG defaultEncoding_ = 0;
  LONG defaultCodePage_ = 0;
  std::vector<WString> names_;
  std::vector<WString> addresses_;
  ComPtr<HeaderMailbox> working_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_HEADER_MAILBOXES_H
