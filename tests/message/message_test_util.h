// Helpers of the message tests: making and parsing messages, reading their
// lists, parts and strings, and a data object of another implementation.
#ifndef PARCELVANE_TESTS_MESSAGE_MESSAGE_TEST_UTIL_H
#define PARCELVANE_TESTS_MESSAGE_MESSAGE_TEST_UTIL_H

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tests/test_util.h"

namespace pv::test {

// The content-type database of the message tests: the fixture, set before
// the first lookup reads it.
inline const bool kMimeTypesFixture = [] {
  setenv("PARCELVANE_MIME_TYPES", PARCELVANE_TEST_FIXTURES "/platform/mime.types", 1);
  return true;
}();

inline ComPtr<IEMSMessageParser> NewMessage() { return Create<IEMSMessageParser>(CLSID_EMSMessageParser); }

// A message parsed from `bytes` (ParseObject must succeed).
inline ComPtr<IEMSMessageParser> ParsedMessage(std::string_view bytes) {
  ComPtr<IEMSMessageParser> message = NewMessage();
  EXPECT_EQ(message->ParseObject(DataOf(bytes).get()), S_OK);
  return message;
}

// The bytes of AssembleObject.
inline std::string Assembled(IEMSMessageParser* message) {
  ComPtr<IEMSDataObject> out;
  EXPECT_EQ(message->AssembleObject(out.put()), S_OK);
  return out ? SpanBytes(out.get()) : std::string("<none>");
}

// A string result as UTF-8, "<unset>" when nothing was written.
inline std::string TextOf(BSTR value) {
  std::string text = value == nullptr ? std::string("<unset>") : U8(value);
  SysFreeString(value);
  return text;
}

template <class Object>
std::string Text(Object* object, HRESULT (STDMETHODCALLTYPE Object::*getter)(BSTR*)) {
  if (object == nullptr) return "<no object>";
  BSTR value = nullptr;
  (object->*getter)(&value);
  return TextOf(value);
}

// HeaderString get.
inline std::string HeaderText(IEMSMessageParser* message, std::string_view name) {
  BSTR value = nullptr;
  message->get_HeaderString(B(name).get(), &value);
  return TextOf(value);
}

// A number result.
template <class Object>
LONG Number(Object* object, HRESULT (STDMETHODCALLTYPE Object::*getter)(LONG*)) {
  LONG value = -12345;
  if (object == nullptr) {
    ADD_FAILURE() << "no object";
    return value;
  }
  EXPECT_EQ((object->*getter)(&value), S_OK);
  return value;
}

inline ComPtr<IEMSMessageParameters> HeadersOf(IEMSMessageParser* message) {
  ComPtr<IEMSMessageParameters> list;
  EXPECT_EQ(message->get_Headers(list.put()), S_OK);
  return list;
}

// The names of a list's fields joined by ",".
inline std::string FieldNames(IEMSMessageParameters* list) {
  std::string names;
  if (list == nullptr) return "<no list>";
  LONG count = 0;
  list->get_ParamCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMessageParameter> field;
    list->get_Parameter(i, field.put());
    if (!names.empty()) names += ",";
    names += field ? Text(field.get(), &IEMSMessageParameter::get_Name) : "<empty>";
  }
  return names;
}

// The raw value of a list's field, "<none>" without the field.
inline std::string RawField(IEMSMessageParameters* list, std::string_view name) {
  ComPtr<IEMSMessageParameter> field;
  list->FindParameter(B(name).get(), field.put());
  return field ? Text(field.get(), &IEMSMessageParameter::get_RawData) : "<none>";
}

// The bytes of the message's BodyObject, "<none>" when nothing comes back.
inline std::string BodyBytes(IEMSMessageParser* message) {
  ComPtr<IEMSDataObject> body;
  EXPECT_EQ(message->get_BodyObject(body.put()), S_OK);
  return body ? SpanBytes(body.get()) : std::string("<none>");
}

inline bool HasRoot(IEMSMessageParser* message) {
  ComPtr<IEMSMimePart> root;
  return message->get_MimePart(root.put()) == S_OK && root;
}

// ---------------------------------------------------------------- parts
inline ComPtr<IEMSMimePart> RootOf(IEMSMessageParser* message) {
  ComPtr<IEMSMimePart> root;
  message->get_MimePart(root.put());
  return root;
}

inline LONG ChildCount(IEMSMimePart* part) {
  if (part == nullptr) return -1;
  ComPtr<IEMSMimeParts> children;
  LONG count = -1;
  if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
  return count;
}

inline ComPtr<IEMSMimePart> ChildOf(IEMSMimePart* part, LONG index) {
  ComPtr<IEMSMimeParts> children;
  ComPtr<IEMSMimePart> child;
  if (part == nullptr) return child;
  if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_Part(index, child.put());
  return child;
}

// "type/subtype" of a part's "Content-Type" field, "<none>" without it.
inline std::string ContentTypeOf(IEMSMimePart* part) {
  if (part == nullptr) return "<no part>";
  BSTR value = nullptr;
  part->get_MimeContentTypeString(&value);
  return value == nullptr ? std::string("<none>") : TextOf(value);
}

inline std::string PartField(IEMSMimePart* part, std::string_view name) {
  if (part == nullptr) return "<no part>";
  ComPtr<IEMSMessageParameters> headers;
  part->get_Headers(headers.put());
  return headers ? RawField(headers.get(), name) : "<no list>";
}

inline std::string PartBody(IEMSMimePart* part) {
  if (part == nullptr) return "<no part>";
  ComPtr<IEMSDataObject> body;
  part->get_BodyObject(body.put());
  return body ? SpanBytes(body.get()) : std::string("<none>");
}

inline std::string DecodedBytes(IEMSMimePart* part) {
  if (part == nullptr) return "<no part>";
  ComPtr<IEMSDataObject> data;
  part->get_DecodedBinary(data.put());
  return data ? SpanBytes(data.get()) : std::string("<none>");
}

// The tree's shape: "type(child,child)" with each part's content type.
inline std::string TreeShape(IEMSMimePart* part) {
  if (part == nullptr) return "<none>";
  std::string shape = ContentTypeOf(part);
  LONG count = ChildCount(part);
  if (count <= 0) return shape;
  shape += "(";
  for (LONG i = 0; i < count; ++i) {
    if (i > 0) shape += ",";
    shape += TreeShape(ChildOf(part, i).get());
  }
  return shape + ")";
}

// ---------------------------------------------------------------- a data object of another implementation
// Forwards to a data object of the library, except that its Clone can be
// made to fail.
class ForeignData final : public IEMSDataObject {
 public:
  static ComPtr<IEMSDataObject> Make(std::string_view bytes, HRESULT cloneStatus = S_OK) {
    return ComPtr<IEMSDataObject>::Adopt(new ForeignData(bytes, cloneStatus));
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) ||
        IsEqualIID(riid, IID_IEMSDataObject)) {
      *ppv = static_cast<IEMSDataObject*>(this);
      AddRef();
      return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs_; }
  ULONG STDMETHODCALLTYPE Release() override {
    ULONG left = --refs_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }

  HRESULT STDMETHODCALLTYPE Clone(IEMSDataObject** p) override {
    if (FAILED(cloneStatus_)) return cloneStatus_;
    return inner_->Clone(p);
  }
  HRESULT STDMETHODCALLTYPE CopyFrom(IEMSDataObject* d) override { return inner_->CopyFrom(d); }
  HRESULT STDMETHODCALLTYPE CreateDataArray(VARIANT v, LONG n) override {
    return inner_->CreateDataArray(v, n);
  }
  HRESULT STDMETHODCALLTYPE CreateEmptyData(ULONG n) override { return inner_->CreateEmptyData(n); }
  HRESULT STDMETHODCALLTYPE CreateDataFromFile(BSTR f) override { return inner_->CreateDataFromFile(f); }
  HRESULT STDMETHODCALLTYPE ExtractBlockAsData(IEMSDataObject** p) override {
    return inner_->ExtractBlockAsData(p);
  }
  HRESULT STDMETHODCALLTYPE get_Data(VARIANT* p) override { return inner_->get_Data(p); }
  HRESULT STDMETHODCALLTYPE put_Data(VARIANT v) override { return inner_->put_Data(v); }
  HRESULT STDMETHODCALLTYPE get_DataSize(ULONG* p) override { return inner_->get_DataSize(p); }
  HRESULT STDMETHODCALLTYPE get_Position(ULONG* p) override { return inner_->get_Position(p); }
  HRESULT STDMETHODCALLTYPE put_Position(ULONG v) override { return inner_->put_Position(v); }
  HRESULT STDMETHODCALLTYPE get_Length(ULONG* p) override { return inner_->get_Length(p); }
  HRESULT STDMETHODCALLTYPE put_Length(ULONG v) override { return inner_->put_Length(v); }

 private:
  ForeignData(std::string_view bytes, HRESULT cloneStatus)
      : inner_(DataOf(bytes)), cloneStatus_(cloneStatus) {}
  ~ForeignData() = default;

  ULONG refs_ = 1;
  ComPtr<IEMSDataObject> inner_;
  HRESULT cloneStatus_;
};

}  // namespace pv::test

#endif  // PARCELVANE_TESTS_MESSAGE_MESSAGE_TEST_UTIL_H
