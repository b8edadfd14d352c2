// Header fields, header lists and parameter lists of another
// implementation, reached through their interfaces, and the choice between
// them and the library's own, made when one is stored.
#include "src/headers/field_access.h"
#include "src/headers/message_parameter.h"
#include "src/headers/message_parameters.h"
#include "src/headers/mime_attributes.h"
#include "src/headers/name_index.h"
#include "src/platform/codepage.h"

namespace pv {
namespace {

class ForeignField final : public FieldAccess {
 public:
  explicit ForeignField(IEMSMessageParameter* field) : field_(field) {}

  bool NameKey(std::string* key) override {
    Bstr text;
    if (FAILED(field_->get_Name(text.put())) || text.is_null()) return false;
    *key = HeaderNameKey(text.view());
    return true;
  }

  std::string AssembledText() override {
    Bstr assembled;
    if (FAILED(field_->AssembleHeader(assembled.put())) || assembled.is_null()) return std::string();
    return WideToAnsi(assembled.view());
  }

  HRESULT Chain(IEMSMessageParameter* other) override { return field_->AddChainHeader(other); }

  bool ContentCodes(LONG* type, LONG* subtype) override {
    ComPtr<IEMSContentType> content = ContentType();
    LONG t = 0;
    LONG s = 0;
    if (!content || FAILED(content->get_MimeType(&t)) || FAILED(content->get_MimeSubType(&s))) return false;
    *type = t;
    *subtype = s;
    return true;
  }

  std::string BoundaryText() override {
    ComPtr<IEMSContentType> content = ContentType();
    Bstr value;
    if (!content || FAILED(content->get_Boundary(value.put()))) return std::string();
    return WideToAnsi(value.view());
  }

  // Its field is written by its own implementation, from the same value.
  std::string WrittenBoundary() override { return BoundaryText(); }

  bool HasGeneratedBoundary() override { return false; }
  HRESULT RegenerateBoundary(std::string*) override { return E_FAIL; }

  std::string DispositionTypeText() override {
    ComPtr<IEMSContentDisposition> disposition;
    if (FAILED(field_->QueryInterface(IidOf<IEMSContentDisposition>::Get(), disposition.put_void())) ||
        !disposition) {
      return std::string();
    }
    Bstr value;
    if (FAILED(disposition->get_DispositionType(value.put()))) return std::string();
    return WideToAnsi(value.view());
  }

  MessageParameter* OwnField() override { return nullptr; }

 private:
  ComPtr<IEMSContentType> ContentType() {
    ComPtr<IEMSContentType> content;
    if (FAILED(field_->QueryInterface(IidOf<IEMSContentType>::Get(), content.put_void()))) content = nullptr;
    return content;
  }

  IEMSMessageParameter* field_;  // held by the FieldRef that owns this adapter
};

class ForeignFieldList final : public FieldListAccess {
 public:
  explicit ForeignFieldList(IEMSMessageParameters* list) : list_(list) {}

  FieldRef Find(std::string_view ansiName) override {
    Bstr wide(AnsiToWide(ansiName));
    ComPtr<IEMSMessageParameter> field;
    list_->FindParameter(wide.get(), field.put());
    return FieldRef(std::move(field));
  }

  HRESULT Create(std::string_view ansiName, FieldRef* out) override {
    Bstr wide(AnsiToWide(ansiName));
    if (wide.is_null()) return E_OUTOFMEMORY;
    ComPtr<IEMSMessageParameter> field;
    HRESULT hr = list_->CreateParameter(wide.get(), field.put());
    if (FAILED(hr)) return hr;
    if (!field) return E_FAIL;
    out->Reset(std::move(field));
    return hr;
  }

  HRESULT BlockText(std::string* out) override {
    out->clear();
    Bstr text;
    HRESULT hr = list_->AssembleParameters(text.put());
    if (hr == E_OUTOFMEMORY) return hr;
    if (SUCCEEDED(hr)) *out = WideToAnsi(text.view());
    return S_OK;
  }

  LONG Count() override {
    LONG count = 0;
    if (FAILED(list_->get_ParamCount(&count)) || count < 0) return 0;
    return count;
  }

  MessageParameters* OwnList() override { return nullptr; }

 private:
  IEMSMessageParameters* list_;  // held by the FieldListRef that owns this adapter
};

class ForeignAttributeList final : public AttributeListAccess {
 public:
  explicit ForeignAttributeList(IEMSMimeAttributes* list) : list_(list) {}

  HRESULT ParseText(std::string_view ansiText) override {
    Bstr text(AnsiToWide(ansiText));
    if (text.is_null()) return E_OUTOFMEMORY;
    return list_->ParseAttributes(text.get());
  }

  std::string AssembledText() override {
    Bstr text;
    if (FAILED(list_->AssembleAttributes(text.put())) || text.is_null()) return std::string();
    return WideToAnsi(text.view());
  }

  MimeAttributes* OwnList() override { return nullptr; }

 private:
  IEMSMimeAttributes* list_;  // held by the AttributeListRef that owns this adapter
};

}  // namespace

FieldAccess* AccessTraits<FieldAccess>::Own(IEMSMessageParameter* object) {
  return ImplOf<MessageParameter>(object).get();  // the holder keeps it alive
}

FieldAccess* AccessTraits<FieldAccess>::NewForeign(IEMSMessageParameter* object) {
  return new ForeignField(object);
}

FieldListAccess* AccessTraits<FieldListAccess>::Own(IEMSMessageParameters* object) {
  return ImplOf<MessageParameters>(object).get();
}

FieldListAccess* AccessTraits<FieldListAccess>::NewForeign(IEMSMessageParameters* object) {
  return new ForeignFieldList(object);
}

AttributeListAccess* AccessTraits<AttributeListAccess>::Own(IEMSMimeAttributes* object) {
  return ImplOf<MimeAttributes>(object).get();
}

AttributeListAccess* AccessTraits<AttributeListAccess>::NewForeign(IEMSMimeAttributes* object) {
  return new ForeignAttributeList(object);
}

}  // namespace pv
