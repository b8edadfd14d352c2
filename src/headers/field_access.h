// What the library asks of a header field, a header list and a field's
// parameter list, whether it made them or a host did. The library's own
// (MessageParameter, MessageParameters, MimeAttributes) answer directly;
// those of another implementation are reached through adapters that call
// their interfaces (src/headers/foreign_headers.cpp). Which one it is gets decided once, when
// the field or list is stored (see src/com/adapted.h): code inside the
// library calls these and never asks again.
//
// Text is narrow, in the ANSI code page.
#ifndef PARCELVANE_SRC_HEADERS_FIELD_ACCESS_H
#define PARCELVANE_SRC_HEADERS_FIELD_ACCESS_H

#include <string>
#include <string_view>

#include "src/com/adapted.h"

namespace pv {

class MessageParameter;
class MessageParameters;
class MimeAttributes;

class FieldAccess {
 public:
  virtual ~FieldAccess() = default;

  // The name index key of its name (HeaderNameKey); false when its Name get
  // gives none.
  virtual bool NameKey(std::string* key) = 0;
  // Its AssembleHeader; empty when no text comes back.
  virtual std::string AssembledText() = 0;
  // AddChainHeader.
  virtual HRESULT Chain(IEMSMessageParameter* other) = 0;
  // Its content-type codes; false when it yields none (it has no
  // content-type state to read).
  virtual bool ContentCodes(LONG* type, LONG* subtype) = 0;
  // The raw value of its "boundary" parameter; empty without one.
  virtual std::string BoundaryText() = 0;
  // The boundary that its written form reads back as, with which the
  // assembly cuts the body; empty without one.
  virtual std::string WrittenBoundary() = 0;
  // Whether its boundary is one the library generated, which may be made
  // anew (RegenerateBoundary) when it occurs in what it delimits.
  virtual bool HasGeneratedBoundary() = 0;
  virtual HRESULT RegenerateBoundary(std::string* out) = 0;
  // Its disposition type; empty without one.
  virtual std::string DispositionTypeText() = 0;
  // The library's own field, for what only it offers; null otherwise.
  virtual MessageParameter* OwnField() = 0;
};

using FieldRef = Adapted<IEMSMessageParameter, FieldAccess>;

template <>
struct AccessTraits<FieldAccess> {
  static FieldAccess* Own(IEMSMessageParameter* object);
  static FieldAccess* NewForeign(IEMSMessageParameter* object);
};

class FieldListAccess {
 public:
  virtual ~FieldListAccess() = default;

  // FindParameter: the first field of that name, or an empty holder.
  virtual FieldRef Find(std::string_view ansiName) = 0;
  // CreateParameter: the field of that name with S_FALSE, or a new one
  // with S_OK; E_FAIL when none comes back.
  virtual HRESULT Create(std::string_view ansiName, FieldRef* out) = 0;
  // AssembleParameters: every field ended by "\r\n"; empty for a list that
  // writes nothing.
  virtual HRESULT BlockText(std::string* out) = 0;
  // ParamCount.
  virtual LONG Count() = 0;
  // The library's own list, for what only it offers; null otherwise.
  virtual MessageParameters* OwnList() = 0;
};

using FieldListRef = Adapted<IEMSMessageParameters, FieldListAccess>;

template <>
struct AccessTraits<FieldListAccess> {
  static FieldListAccess* Own(IEMSMessageParameters* object);
  static FieldListAccess* NewForeign(IEMSMessageParameters* object);
};

class AttributeListAccess {
 public:
  virtual ~AttributeListAccess() = default;

  // ParseAttributes on narrow text.
  virtual HRESULT ParseText(std::string_view ansiText) = 0;
  // AssembleAttributes as narrow text; empty when nothing comes back.
  virtual std::string AssembledText() = 0;
  // The library's own list, for what only it offers; null otherwise.
  virtual MimeAttributes* OwnList() = 0;
};

using AttributeListRef = Adapted<IEMSMimeAttributes, AttributeListAccess>;

template <>
struct AccessTraits<AttributeListAccess> {
  static AttributeListAccess* Own(IEMSMimeAttributes* object);
  static AttributeListAccess* NewForeign(IEMSMimeAttributes* object);
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_FIELD_ACCESS_H
