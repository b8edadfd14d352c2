// EMSMessageParameters: the ordered header fields of a header block, with
// a case-insensitive name index in which the first field of a name wins. A
// repeated name is chained into the first field of that name. Parses a
// header block from text or from a data object's span and assembles it
// back, one "\r\n"-terminated line group per field.
//
// The list holds the fields it is given, which may be of another
// implementation: it calls them through their interface, and takes
// shortcuts only for the library's own fields.
#ifndef PARCELVANE_SRC_HEADERS_MESSAGE_PARAMETERS_H
#define PARCELVANE_SRC_HEADERS_MESSAGE_PARAMETERS_H

#include <string>
#include <string_view>
#include <vector>

#include "src/headers/field_access.h"
#include "src/headers/name_index.h"
#include "src/platform/strings.h"
#include "src/com/com_object.h"
#include "src/com/stored_property.h"

namespace pv {

class MessageParameters final : public ComObject<MessageParameters, IEMSMessageParameters>,
                                public FieldListAccess {
 public:
  explicit MessageParameters(IUnknown* outer);

  // IEMSMessageParameters in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseParameters(BSTR bszVal);
  HRESULT DoParseParametersObject(IEMSDataObject* pVal);
  HRESULT DoAssembleParameters(BSTR* pVal);
  HRESULT DoAssembleParametersObject(IEMSDataObject** ppVal);
  HRESULT DoAppendParameters(IEMSMessageParameters* pVal);
  HRESULT DoClone(IEMSMessageParameters** ppVal);
  HRESULT DoCreateParameter(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoAddParameter(IEMSMessageParameter* pVal);
  HRESULT DoReplaceParameter(IEMSMessageParameter* pVal);
  HRESULT DoFindParameter(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoRemoveAll();
  HRESULT DoRemoveByName(BSTR bszName);
  HRESULT PutParameter(LONG nIdx, IEMSMessageParameter* pVal);
  HRESULT GetParameter(LONG nIdx, IEMSMessageParameter** ppVal);
  HRESULT GetParamCount(LONG* pVal);
  // Properties that only store a number and read it back.
  PV_STORED_PROPERTY(LONG, DefaultCodePage, defaultCodePage_)
  PV_STORED_PROPERTY(LONG, DefaultEncoding, defaultEncoding_)

  // ---------------------------------------------------------------- the library's own entry points
  // The header-block parse of ParseParameters / ParseParametersObject over
  // narrow bytes in the ANSI code page (the whole span is read: hand over
  // exactly the header block). Replaces the whole content.
  HRESULT ParseBlock(std::string_view ansiBlock);
  // AssembleParameters as narrow text (empty for a list that writes nothing).
  HRESULT AssembleBlock(std::string* out);

  // ---------------------------------------------------------------- as FieldListAccess
  FieldRef Find(std::string_view ansiName) override;
  HRESULT Create(std::string_view ansiName, FieldRef* out) override;
  HRESULT BlockText(std::string* out) override;
  LONG Count() override;
  MessageParameters* OwnList() override { return this; }

  // ParseBlock, with the fields whose names start with `asciiPrefix` (ASCII
  // case folded) going to the empty list `to` instead, in order: what
  // ParseBlock followed by AddParameter on `to` and RemoveByName here of
  // each such field gives. Those fields keep this list's defaults.
  HRESULT ParseBlockSplitting(std::string_view ansiBlock, std::string_view asciiPrefix,
                              MessageParameters* to);

  size_t count() const { return fields_.size(); }
  // The entry at `index` (< count()); empty for an empty entry.
  const FieldRef& at(size_t index) const { return fields_[index]; }

  LONG defaultCodePage() const { return defaultCodePage_; }
  LONG defaultEncoding() const { return defaultEncoding_; }
  void SetDefaults(LONG codePage, LONG encoding) {
    defaultCodePage_ = codePage;
    defaultEncoding_ = encoding;
  }

 private:
  // Names compare with ASCII case folding. The index keys are the names
  // with ASCII letters folded to lower case, as narrow bytes (see NameKey):
  // two names are the same key exactly when they are equal but for the
  // case of ASCII letters.

  // The indexed position of a key whose entry is not empty, or npos.
  size_t IndexedPosition(const std::string& key) const;
  void Append(FieldRef field, std::string key);
  void RebuildIndex();
  void Clear();
  HRESULT AddNamed(FieldRef field, std::string key);

  std::vector<FieldRef> fields_;
  NameIndex index_;
  LONG defaultCodePage_;
  LONG defaultEncoding_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_MESSAGE_PARAMETERS_H
