#include "src/message/message_parser_util.h"

#include <climits>

#include "src/headers/content_type_codes.h"
#include "src/platform/codepage.h"
#include "src/com/class_instance.h"

namespace pv {

Bstr FixedName(std::string_view ascii) {
  Bstr name(WidenAscii(ascii));
  if (name.is_null()) throw std::bad_alloc();
  return name;
}

std::string_view SpanOf(IEMSDataObject* object, DataBytes* keep) {
  if (object == nullptr || FAILED(ReadDataBytes(object, keep)) || keep->data() == nullptr) return {};
  return keep->Span();
}

HRESULT ReturnCodePageText(UINT codePage, std::string_view bytes, BSTR* out) {
  int units = 0;
  if (!bytes.empty() && bytes.size() <= static_cast<size_t>(INT_MAX)) {
    units = MultiByteToWide(codePage, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
  }
  if (units <= 0) return ReturnBstr(WStringView(), out);
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(units));
  if (text == nullptr) return E_OUTOFMEMORY;
  if (MultiByteToWide(codePage, bytes.data(), static_cast<int>(bytes.size()), text, units) != units) {
    SysFreeString(text);
    return ReturnBstr(WStringView(), out);
  }
  *out = text;
  return S_OK;
}

HRESULT DataObjectFromText(WStringView text, ComPtr<IEMSDataObject>* out) {
  std::string bytes;
  if (text.empty() || !ToNarrow(kCodePageAnsi, text, &bytes) || bytes.empty()) {
    return CreateClassInstance(CLSID_EMSDataObject, out);
  }
  return MakeDataObject(std::move(bytes), out);
}

ComPtr<IEMSMessageParameter> FindPartField(IEMSMimePart* part, std::string_view name) {
  ComPtr<IEMSMessageParameter> field;
  if (part == nullptr) return field;
  Bstr wide = FixedName(name);
  if (FAILED(part->FindHeader(wide.get(), field.put()))) field = nullptr;
  return field;
}

void ContentCodesOf(IEMSMessageParameter* contentType, LONG* type, LONG* subtype) {
  *type = kTypeText;
  *subtype = kSubtypePlain;
  ComPtr<IEMSContentType> state;
  if (contentType == nullptr || FAILED(contentType->QueryInterface(IID_IEMSContentType, state.put_void())) ||
      !state) {
    return;
  }
  state->get_MimeType(type);
  state->get_MimeSubType(subtype);
}

bool HasAttachmentDisposition(IEMSMimePart* part) {
  ComPtr<IEMSMessageParameter> field = FindPartField(part, "Content-Disposition");
  ComPtr<IEMSContentDisposition> state;
  if (!field || FAILED(field->QueryInterface(IID_IEMSContentDisposition, state.put_void())) || !state) {
    return false;
  }
  Bstr type;
  state->get_DispositionType(type.put());
  return EqualsIgnoreCaseAscii(type.view(), WidenAscii("attachment"));
}

ComPtr<IEMSContentType> CreateContentType(IEMSMimePart* part, std::string_view type) {
  ComPtr<IEMSMessageParameter> field;
  Bstr name = FixedName("Content-Type");
  ComPtr<IEMSContentType> state;
  if (FAILED(part->CreateHeader(name.get(), field.put())) || !field) return state;
  if (FAILED(field->QueryInterface(IID_IEMSContentType, state.put_void())) || !state) return nullptr;
  Bstr value = FixedName(type);
  state->put_ContentType(value.get());
  return state;
}

}  // namespace pv
