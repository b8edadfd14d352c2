// Small helpers of the message object: fixed names as wide strings, text
// in and out of data objects, and the content state of a part's fields as
// the message reads it.
#ifndef PARCELVANE_SRC_MESSAGE_MESSAGE_PARSER_UTIL_H
#define PARCELVANE_SRC_MESSAGE_MESSAGE_PARSER_UTIL_H

#include <string>
#include <string_view>

#include "src/data/data_access.h"
#include "src/com/com_ptr.h"
#include "src/platform/strings.h"

namespace pv {

// A fixed ASCII name as a BSTR (null only when memory is exhausted, which
// the callers' Guard turns into E_OUTOFMEMORY).
Bstr FixedName(std::string_view ascii);

// The bytes of a data object's span; empty for a null or unreadable object.
// `keep` holds the buffer alive while the view is used.
std::string_view SpanOf(IEMSDataObject* object, DataBytes* keep);

// Bytes as a wide string in `codePage`, written straight into a new BSTR.
// Bytes that the page cannot convert give the empty string.
HRESULT ReturnCodePageText(UINT codePage, std::string_view bytes, BSTR* out);

// A new data object filled as CreateDataArray fills it from a string's
// UTF-16 code units with code page 0: the text's bytes in the ANSI code
// page. An empty text leaves the object without an array, as the array
// conversion of nothing fails.
HRESULT DataObjectFromText(WStringView text, ComPtr<IEMSDataObject>* out);

// The field `name` of a part's header list (FindHeader), or null.
ComPtr<IEMSMessageParameter> FindPartField(IEMSMimePart* part, std::string_view name);

// The type and subtype codes of a "Content-Type" field through its content
// state; text (6) and plain (18) when the field or that state is missing.
void ContentCodesOf(IEMSMessageParameter* contentType, LONG* type, LONG* subtype);

// Whether a part's "Content-Disposition" has the disposition type
// "attachment", compared without regard to case.
bool HasAttachmentDisposition(IEMSMimePart* part);

// The "Content-Type" field of `part` (CreateHeader: the existing field or a
// new one) set by ContentType put to `type`; null when the field or its
// content state cannot be had.
ComPtr<IEMSContentType> CreateContentType(IEMSMimePart* part, std::string_view type);

}  // namespace pv

#endif  // PARCELVANE_SRC_MESSAGE_MESSAGE_PARSER_UTIL_H
