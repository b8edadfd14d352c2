#include "src/mime/mime_part_fields.h"

#include "src/headers/content_type_codes.h"
#include "src/platform/strings.h"

namespace pv {

void TypeCodesOf(const FieldRef& contentType, LONG* type, LONG* subtype) {
  *type = kTypeText;
  *subtype = kSubtypePlain;
  LONG t = 0;
  LONG s = 0;
  if (contentType && contentType->ContentCodes(&t, &s)) {
    *type = t;
    *subtype = s;
  }
}

void PartContentCodes(FieldListAccess& list, LONG* type, LONG* subtype) {
  TypeCodesOf(list.Find("Content-Type"), type, subtype);
}

bool IsAttachmentDisposition(const FieldRef& field) {
  return field && EqualsIgnoreCaseAscii(field->DispositionTypeText(), "attachment");
}

bool HasAttachmentDisposition(PartAccess& part) {
  return IsAttachmentDisposition(part.FindField("Content-Disposition"));
}

HRESULT CreateField(FieldListAccess& list, std::string_view name, ComPtr<IEMSMessageParameter>* out) {
  FieldRef field;
  HRESULT hr = list.Create(name, &field);
  if (FAILED(hr)) return hr;
  *out = field.object();
  return hr;
}

}  // namespace pv
