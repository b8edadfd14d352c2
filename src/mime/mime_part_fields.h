// What a part reads from its header fields beyond what a field or list
// answers itself (src/headers/field_access.h): the content-type codes with
// their defaults, and whether the part is marked as an attachment.
#ifndef PARCELVANE_SRC_MIME_MIME_PART_FIELDS_H
#define PARCELVANE_SRC_MIME_MIME_PART_FIELDS_H

#include <string_view>

#include "src/headers/field_access.h"
#include "src/mime/part_access.h"

namespace pv {

// The content-type codes of a "Content-Type" field: text (6) and plain (18)
// when the field is missing or yields none.
void TypeCodesOf(const FieldRef& contentType, LONG* type, LONG* subtype);

// A part's content-type codes: those of its "Content-Type" field, or text
// (6) and plain (18) without one.
void PartContentCodes(FieldListAccess& list, LONG* type, LONG* subtype);

// Whether a "Content-Disposition" field marks the part as an attachment:
// its disposition type is "attachment", compared without regard to case.
bool IsAttachmentDisposition(const FieldRef& field);

// Whether a part's "Content-Disposition" marks it as an attachment.
bool HasAttachmentDisposition(PartAccess& part);

// CreateParameter on the list, as the interface the content operations
// edit the field through: the existing field with S_FALSE, a new one with
// S_OK.
HRESULT CreateField(FieldListAccess& list, std::string_view name, ComPtr<IEMSMessageParameter>* out);

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_MIME_PART_FIELDS_H
