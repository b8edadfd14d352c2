// What the library asks of a MIME part and of a parts list, whether it
// made them or a host did. The library's own part (MimePart) and list
// (MimeParts) answer directly; those of another implementation are reached
// through adapters that call their interfaces (src/mime/foreign_parts.cpp).
// Which one it is gets decided once, when the part or list is stored (see
// src/com/adapted.h).
#ifndef PARCELVANE_SRC_MIME_PART_ACCESS_H
#define PARCELVANE_SRC_MIME_PART_ACCESS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "src/com/adapted.h"
#include "src/headers/field_access.h"

namespace pv {

class MimePart;

class PartAccess {
 public:
  virtual ~PartAccess() = default;

  // FindHeader: the first field of that name, or an empty holder.
  virtual FieldRef FindField(std::string_view ansiName) = 0;
  // The library's own part, whose tree the library walks itself; null for
  // a part of another implementation, which is asked through its interface
  // (its assembly, its searches).
  virtual MimePart* OwnPart() = 0;
};

using PartRef = Adapted<IEMSMimePart, PartAccess>;

template <>
struct AccessTraits<PartAccess> {
  static PartAccess* Own(IEMSMimePart* object);
  static PartAccess* NewForeign(IEMSMimePart* object);
};

class PartListAccess {
 public:
  virtual ~PartListAccess() = default;

  // PartsCount (0 when it fails).
  virtual LONG Count() = 0;
  // The part at `index`; an empty holder when there is none.
  virtual PartRef At(LONG index) = 0;
  // AddPart.
  virtual HRESULT Append(IEMSMimePart* part) = 0;
  // AddPart of a part the library made (the library's own list takes it
  // without asking what it is).
  virtual HRESULT AppendOwn(MimePart* part) = 0;
  // RemoveAll.
  virtual void Clear() = 0;
  // Room for `more` entries to come (a hint, for the library's own list).
  virtual void Reserve(size_t more) = 0;
};

using PartListRef = Adapted<IEMSMimeParts, PartListAccess>;

template <>
struct AccessTraits<PartListAccess> {
  static PartListAccess* Own(IEMSMimeParts* object);
  static PartListAccess* NewForeign(IEMSMimeParts* object);
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_PART_ACCESS_H
