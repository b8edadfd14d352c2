// What a part reads from and writes to its header list: fields by name,
// their content-type codes, boundary and disposition type, and the header
// block text. The library's own lists and fields are read directly; those
// of another implementation through their interfaces.
#ifndef PARCELVANE_SRC_MIME_MIME_PART_FIELDS_H
#define PARCELVANE_SRC_MIME_MIME_PART_FIELDS_H

#include <string>
#include <string_view>

#include "src/com/com_ptr.h"

namespace pv {

// The field of that name (the first one), or null.
ComPtr<IEMSMessageParameter> FieldByName(IEMSMessageParameters* list, std::string_view name);

// CreateParameter on the list: the existing field with S_FALSE, or a new
// one with S_OK.
HRESULT CreateField(IEMSMessageParameters* list, std::string_view name, ComPtr<IEMSMessageParameter>* out);

// The content-type codes of a field; false when the field yields none (it
// has no content-type state to read).
bool FieldContentCodes(IEMSMessageParameter* field, LONG* type, LONG* subtype);

// A part's content-type codes: those of its "Content-Type" field, or text
// (6) and plain (18) without one.
void PartContentCodes(IEMSMessageParameters* list, LONG* type, LONG* subtype);

// The raw value of the field's "boundary" parameter; empty without one.
std::string BoundaryOf(IEMSMessageParameter* field);

// The disposition type of the field (narrow text).
std::string DispositionTypeOf(IEMSMessageParameter* field);

// Whether a "Content-Disposition" field marks the part as an attachment.
bool IsAttachmentDisposition(IEMSMessageParameter* field);

// The header block as narrow text in the ANSI code page, every field ended
// by "\r\n"; empty for a list that writes nothing.
HRESULT HeaderBlockText(IEMSMessageParameters* list, std::string* out);

// How many entries the list holds.
LONG FieldCountOf(IEMSMessageParameters* list);

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_MIME_PART_FIELDS_H
