// EMSHeaderMailboxes: the address list of one address field. Splits the
// field value into mailboxes, keeps each as a display name and an address,
// and gives them back one by one or as a whole, decoded or in wire form.
//
// The list keeps what it parsed in the field's narrow text: a display name
// stays in wire form until something reads it, and an address is widened
// only when it is read. An address a host puts whole is kept as given, so
// that it reads back exactly.
//
// The header field drives the list through the entry points below, which
// run the same code as the interface operations without the BSTR copies.
#ifndef PARCELVANE_SRC_HEADERS_HEADER_MAILBOXES_H
#define PARCELVANE_SRC_HEADERS_HEADER_MAILBOXES_H

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "src/platform/strings.h"
#include "src/com/com_object.h"
#include "src/com/stored_property.h"

namespace pv {

class HeaderMailboxes final : public ComObject<HeaderMailboxes, IEMSHeaderMailboxes> {
 public:
  explicit HeaderMailboxes(IUnknown* outer) : ComObject(outer) {}

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
  // list, decoding the display names when `encoded`. The ANSI form splits
  // the bytes themselves where the ANSI page keeps every byte, and widens
  // them first elsewhere.
  HRESULT Parse(WStringView text, bool encoded);
  HRESULT ParseAnsi(std::string_view ansiText, bool encoded);
  // AssembleMailboxes: every mailbox in wire form, joined by ",\r\n\t".
  HRESULT Assemble(WString* out);
  HRESULT AssembleAnsi(std::string* ansiOut);
  // DecodedMailboxes: every mailbox as display text, joined by ",".
  // Decodes the names not read yet; throws std::bad_alloc when it cannot.
  void AppendDecoded(WString* out);

  // The puts by index: S_OK, or E_INVALIDARG for an index that is neither
  // kAppend nor that of a stored mailbox.
  HRESULT SetMailboxData(LONG index, WStringView name, WStringView address);
  HRESULT SetDecodedMailbox(LONG index, WStringView text);
  HRESULT SetEncodedMailbox(LONG index, WStringView text);

  size_t count() const { return entries_.size(); }
  // The display name, decoded on first read (throws std::bad_alloc when it
  // cannot be), and the address as the interface gives them.
  const WString& nameAt(size_t i) { return NameOf(entries_[i]); }
  WString addressAt(size_t i) const { return WideAddressOf(entries_[i]); }

 private:
  // Where an index given to a get or to RemoveMailbox points.
  enum class Slot { kStored, kPastTheEnd, kNegative };
  Slot SlotOf(LONG index) const;
  bool CanStoreAt(LONG index) const;

  // One mailbox. A parsed display name waits in wire form (`encodedName`
  // not empty), with the page and encoding the list had when it was parsed,
  // until its first read.
  struct Entry {
    WString name;
    std::string encodedName;
    LONG nameCodePage = 0;
    LONG nameEncoding = 0;
    // ANSI bytes, or the text a host put whole.
    std::variant<std::string, WString> address;
  };

  // Stores `entry` at `index`: kAppend or that of a stored mailbox.
  void StoreAt(LONG index, Entry entry);
  // An entry for one piece of wire text, its name not decoded yet.
  Entry EncodedEntry(std::string_view wire) const;
  static const WString& NameOf(Entry& entry);
  static WString WideAddressOf(const Entry& entry);
  static std::string AnsiAddressOf(const Entry& entry);

  void AppendDecodedMailbox(size_t i, WString* out);
  HRESULT AppendEncodedMailbox(size_t i, std::string* ansiOut);

  LONG defaultEncoding_ = 0;
  LONG defaultCodePage_ = 0;
  std::vector<Entry> entries_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_HEADER_MAILBOXES_H
