// EMSMimeAttributes: the parameters of one structured header field, the
// text after the field value's first ";". A map keyed by parameter name in
// the platform's locale-aware order, so each name occurs once and the
// parameters are written in the order of their names. The key is the name
// an attribute had when it was added; renaming it later does not re-key it.
// Entries are shared references: the objects handed out are the stored
// ones, and changes made through them show in the list.
//
// Names are held as attributes hold them, in the ANSI code page: a name
// given as wide text is looked up as it reads after that conversion.
//
// The header field drives the list through the narrow entry points below
// (text in the ANSI code page), which run the same code as the interface
// operations without the BSTR copies.
#ifndef PARCELVANE_SRC_HEADERS_MIME_ATTRIBUTES_H
#define PARCELVANE_SRC_HEADERS_MIME_ATTRIBUTES_H

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "src/headers/field_access.h"
#include "src/headers/mime_attribute.h"
#include "src/platform/collation.h"
#include "src/platform/strings.h"
#include "src/com/com_object.h"

namespace pv {

class MimeAttributes final : public ComObject<MimeAttributes, IEMSMimeAttributes>,
                             public AttributeListAccess {
 public:
  explicit MimeAttributes(IUnknown* outer) : ComObject(outer) {}

  // IEMSMimeAttributes in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseAttributes(BSTR bszVal);
  HRESULT DoAssembleAttributes(BSTR* pVal);
  HRESULT DoAppendAttributes(IEMSMimeAttributes* pVal);
  HRESULT DoCreateAttribute(BSTR bszName, IEMSMimeAttribute** ppVal);
  HRESULT DoAddAttribute(IEMSMimeAttribute* pVal);
  HRESULT DoReplaceAttribute(IEMSMimeAttribute* pVal);
  HRESULT DoFindAttribute(BSTR bszName, IEMSMimeAttribute** ppVal);
  HRESULT DoRemoveAttribute(BSTR bszName);
  HRESULT DoRemoveAll();
  HRESULT DoClone(IEMSMimeAttributes** ppVal);
  HRESULT GetAttribute(LONG nIdx, IEMSMimeAttribute** ppVal);
  HRESULT GetAttributesCount(LONG* pVal);

  // ParseAttributes on narrow text: empties the list and adds one attribute
  // per ";"-separated parameter, the first of a name winning. S_OK, or the
  // failure to make an attribute (the entries made so far stay).
  HRESULT Parse(std::string_view ansiText);
  // AssembleAttributes: appends ";\r\n\t" and name="value" for every entry
  // in key order (entries whose text is empty are left out); nothing when
  // there is nothing to write.
  HRESULT AppendAssembled(std::string* ansiOut);
  // FindAttribute: the stored attribute of this name, or null.
  ComPtr<IEMSMimeAttribute> Find(std::string_view ansiName) const;
  // The same entry as the library's own object, to read its value without
  // copies; null when there is none or a host put its own object there
  // (then read it through Find).
  MimeAttribute* FindOwn(std::string_view ansiName) const;
  // CreateAttribute: the stored attribute of this name with S_FALSE, or a
  // new one, added, with S_OK.
  HRESULT Create(std::string_view ansiName, ComPtr<IEMSMimeAttribute>* out);
  // RemoveAttribute.
  void Remove(std::string_view ansiName);

  size_t count() const { return entries_.size(); }

  // ---------------------------------------------------------------- as AttributeListAccess
  // Parse, on text that has passed through the ANSI page as wide text would.
  HRESULT ParseText(std::string_view ansiText) override;
  // AppendAssembled, as the text comes back from the interface's trip
  // through wide text.
  std::string AssembledText() override;
  MimeAttributes* OwnList() override { return this; }

 private:
  struct Entry {
    ComPtr<IEMSMimeAttribute> object;
    MimeAttribute* own = nullptr;  // the library's own object behind it, if it is one
  };
  struct KeyOrder {
    bool operator()(const WString& a, const WString& b) const { return CompareLocale(a, b) < 0; }
  };
  using Map = std::map<WString, Entry, KeyOrder>;

  // The key under which an attribute is added or replaced: its Name.
  // E_FAIL when the name cannot be read.
  static HRESULT ReadKey(IEMSMimeAttribute* attribute, WString* key, MimeAttribute** own);
  // Where a key is or would go, and whether it is there: one search for a
  // look-up followed by an insert.
  std::pair<Map::iterator, bool> PlaceOf(const WString& key);
  HRESULT Add(IEMSMimeAttribute* attribute);
  HRESULT Replace(IEMSMimeAttribute* attribute);
  void Clear();
  // The entry at a position in key order. Walks from the nearest of the
  // first entry, the last one read and the end, so that reading every
  // index in turn stays linear.
  Map::const_iterator EntryAt(size_t index) const;
  void ForgetCursor() const { cursorValid_ = false; }

  Map entries_;
  mutable Map::const_iterator cursor_;
  mutable size_t cursorIndex_ = 0;
  mutable bool cursorValid_ = false;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_MIME_ATTRIBUTES_H
