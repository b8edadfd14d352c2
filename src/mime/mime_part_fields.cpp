#include "src/mime/mime_part_fields.h"

#include "src/headers/content_type_codes.h"
#include "src/headers/message_parameter.h"
#include "src/headers/message_parameters.h"
#include "src/mime/mime_part.h"
#include "src/platform/codepage.h"

namespace pv {

ComPtr<IEMSMessageParameter> FieldByName(IEMSMessageParameters* list, std::string_view name) {
  if (list == nullptr) return nullptr;
  if (ComPtr<MessageParameters> own = ImplOf<MessageParameters>(list)) return own->Find(name);
  Bstr wide(AnsiToWide(name));
  ComPtr<IEMSMessageParameter> field;
  list->FindParameter(wide.get(), field.put());
  return field;
}

HRESULT CreateField(IEMSMessageParameters* list, std::string_view name, ComPtr<IEMSMessageParameter>* out) {
  if (list == nullptr) return E_POINTER;
  Bstr wide(AnsiToWide(name));
  if (wide.is_null()) return E_OUTOFMEMORY;
  HRESULT hr = list->CreateParameter(wide.get(), out->put());
  if (SUCCEEDED(hr) && !*out) return E_FAIL;
  return hr;
}

bool FieldContentCodes(IEMSMessageParameter* field, LONG* type, LONG* subtype) {
  if (field == nullptr) return false;
  if (ComPtr<MessageParameter> own = ImplOf<MessageParameter>(field)) {
    *type = own->content().typeCode;
    *subtype = own->content().subtypeCode;
    return true;
  }
  ComPtr<IEMSContentType> content;
  if (FAILED(field->QueryInterface(IidOf<IEMSContentType>::Get(), content.put_void())) || !content)
    return false;
  LONG t = 0;
  LONG s = 0;
  if (FAILED(content->get_MimeType(&t)) || FAILED(content->get_MimeSubType(&s))) return false;
  *type = t;
  *subtype = s;
  return true;
}

void TypeCodesOf(IEMSMessageParameter* contentType, LONG* type, LONG* subtype) {
  *type = kTypeText;
  *subtype = kSubtypePlain;
  LONG t = 0;
  LONG s = 0;
  if (FieldContentCodes(contentType, &t, &s)) {
    *type = t;
    *subtype = s;
  }
}

void PartContentCodes(IEMSMessageParameters* list, LONG* type, LONG* subtype) {
  TypeCodesOf(FieldByName(list, "Content-Type").get(), type, subtype);
}

ComPtr<IEMSMessageParameter> FindPartField(IEMSMimePart* part, std::string_view name) {
  if (part == nullptr) return nullptr;
  if (ComPtr<MimePart> own = ImplOf<MimePart>(part)) return FieldByName(own->headers(), name);
  Bstr wide(AnsiToWide(name));
  ComPtr<IEMSMessageParameter> field;
  if (FAILED(part->FindHeader(wide.get(), field.put()))) field = nullptr;
  return field;
}

bool HasAttachmentDisposition(IEMSMimePart* part) {
  return IsAttachmentDisposition(FindPartField(part, "Content-Disposition").get());
}

std::string BoundaryOf(IEMSMessageParameter* field) {
  std::string boundary;
  if (field == nullptr) return boundary;
  if (ComPtr<MessageParameter> own = ImplOf<MessageParameter>(field)) {
    if (FAILED(own->BoundaryNarrow(&boundary))) boundary.clear();
    return boundary;
  }
  ComPtr<IEMSContentType> content;
  if (FAILED(field->QueryInterface(IidOf<IEMSContentType>::Get(), content.put_void())) || !content)
    return boundary;
  Bstr value;
  if (SUCCEEDED(content->get_Boundary(value.put()))) boundary = WideToAnsi(value.view());
  return boundary;
}

std::string DispositionTypeOf(IEMSMessageParameter* field) {
  if (field == nullptr) return std::string();
  if (ComPtr<MessageParameter> own = ImplOf<MessageParameter>(field)) return own->content().dispositionType;
  ComPtr<IEMSContentDisposition> disposition;
  if (FAILED(field->QueryInterface(IidOf<IEMSContentDisposition>::Get(), disposition.put_void())) ||
      !disposition) {
    return std::string();
  }
  Bstr value;
  if (FAILED(disposition->get_DispositionType(value.put()))) return std::string();
  return WideToAnsi(value.view());
}

bool IsAttachmentDisposition(IEMSMessageParameter* field) {
  return field != nullptr && EqualsIgnoreCaseAscii(DispositionTypeOf(field), "attachment");
}

HRESULT HeaderBlockText(IEMSMessageParameters* list, std::string* out) {
  out->clear();
  if (list == nullptr) return S_OK;
  if (ComPtr<MessageParameters> own = ImplOf<MessageParameters>(list)) {
    HRESULT hr = own->AssembleBlock(out);
    if (FAILED(hr)) return hr;
    // The interface hands the text over as wide text: what comes back from
    // that trip is what is written.
    if (!AnsiKeepsEveryByte()) *out = AnsiRoundTrip(*out);
    return S_OK;
  }
  Bstr text;
  HRESULT hr = list->AssembleParameters(text.put());
  if (hr == E_OUTOFMEMORY) return hr;
  if (SUCCEEDED(hr)) *out = WideToAnsi(text.view());
  return S_OK;
}

LONG FieldCountOf(IEMSMessageParameters* list) {
  if (list == nullptr) return 0;
  if (ComPtr<MessageParameters> own = ImplOf<MessageParameters>(list)) {
    return own->count() > static_cast<size_t>(INT32_MAX) ? INT32_MAX : static_cast<LONG>(own->count());
  }
  LONG count = 0;
  if (FAILED(list->get_ParamCount(&count)) || count < 0) return 0;
  return count;
}

}  // namespace pv
