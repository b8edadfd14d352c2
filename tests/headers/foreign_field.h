// A header field of another implementation: it forwards every operation
// to a field of the library but is not one of the library's objects, so a
// list can reach it only through its interface.
#ifndef PARCELVANE_TESTS_HEADERS_FOREIGN_FIELD_H
#define PARCELVANE_TESTS_HEADERS_FOREIGN_FIELD_H

#include "tests/test_util.h"

namespace pv::test {

class ForeignField final : public IEMSMessageParameter {
 public:
  // Starts with one reference, owned by the ComPtr that Make returns.
  static ComPtr<IEMSMessageParameter> Make(bool nameless = false) {
    auto* field = new ForeignField(nameless);
    return ComPtr<IEMSMessageParameter>::Adopt(field);
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) ||
        IsEqualIID(riid, IID_IEMSMessageParameter)) {
      *ppv = static_cast<IEMSMessageParameter*>(this);
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

  HRESULT STDMETHODCALLTYPE ParseHeader(BSTR v) override { return inner_->ParseHeader(v); }
  HRESULT STDMETHODCALLTYPE AddChainHeader(IEMSMessageParameter* p) override {
    return inner_->AddChainHeader(p);
  }
  HRESULT STDMETHODCALLTYPE AssembleHeader(BSTR* p) override { return inner_->AssembleHeader(p); }
  HRESULT STDMETHODCALLTYPE FindAttribute(BSTR n, IEMSMimeAttribute** p) override {
    return inner_->FindAttribute(n, p);
  }
  HRESULT STDMETHODCALLTYPE CreateAttribute(BSTR n, IEMSMimeAttribute** p) override {
    return inner_->CreateAttribute(n, p);
  }
  HRESULT STDMETHODCALLTYPE RemoveAttribute(BSTR n) override { return inner_->RemoveAttribute(n); }
  HRESULT STDMETHODCALLTYPE Clone(IEMSMessageParameter** p) override { return inner_->Clone(p); }
  HRESULT STDMETHODCALLTYPE get_Name(BSTR* p) override {
    if (nameless_) {
      *p = nullptr;
      return S_OK;
    }
    return inner_->get_Name(p);
  }
  HRESULT STDMETHODCALLTYPE put_Name(BSTR v) override { return inner_->put_Name(v); }
  HRESULT STDMETHODCALLTYPE get_RawData(BSTR* p) override { return inner_->get_RawData(p); }
  HRESULT STDMETHODCALLTYPE put_RawData(BSTR v) override { return inner_->put_RawData(v); }
  HRESULT STDMETHODCALLTYPE get_UnfoldedData(BSTR* p) override { return inner_->get_UnfoldedData(p); }
  HRESULT STDMETHODCALLTYPE put_UnfoldedData(BSTR v) override { return inner_->put_UnfoldedData(v); }
  HRESULT STDMETHODCALLTYPE get_DecodedData(BSTR* p) override { return inner_->get_DecodedData(p); }
  HRESULT STDMETHODCALLTYPE put_DecodedData(BSTR v) override { return inner_->put_DecodedData(v); }
  HRESULT STDMETHODCALLTYPE get_Attributes(IEMSMimeAttributes** p) override {
    return inner_->get_Attributes(p);
  }
  HRESULT STDMETHODCALLTYPE put_Attributes(IEMSMimeAttributes* v) override {
    return inner_->put_Attributes(v);
  }
  HRESULT STDMETHODCALLTYPE get_HeaderMailbox(IEMSHeaderMailbox** p) override {
    return inner_->get_HeaderMailbox(p);
  }
  HRESULT STDMETHODCALLTYPE put_HeaderMailbox(IEMSHeaderMailbox* v) override {
    return inner_->put_HeaderMailbox(v);
  }
  HRESULT STDMETHODCALLTYPE get_HeaderMailboxes(IEMSHeaderMailboxes** p) override {
    return inner_->get_HeaderMailboxes(p);
  }
  HRESULT STDMETHODCALLTYPE put_HeaderMailboxes(IEMSHeaderMailboxes* v) override {
    return inner_->put_HeaderMailboxes(v);
  }
  HRESULT STDMETHODCALLTYPE get_HeaderCharset(IEMSHeaderCharset** p) override {
    return inner_->get_HeaderCharset(p);
  }
  HRESULT STDMETHODCALLTYPE put_DefaultCodePage(LONG v) override { return inner_->put_DefaultCodePage(v); }
  HRESULT STDMETHODCALLTYPE get_DefaultCodePage(LONG* p) override { return inner_->get_DefaultCodePage(p); }
  HRESULT STDMETHODCALLTYPE put_DefaultEncoding(LONG v) override { return inner_->put_DefaultEncoding(v); }
  HRESULT STDMETHODCALLTYPE get_DefaultEncoding(LONG* p) override { return inner_->get_DefaultEncoding(p); }

 private:
  explicit ForeignField(bool nameless)
      : inner_(Create<IEMSMessageParameter>(CLSID_EMSMessageParameter)), nameless_(nameless) {}
  ~ForeignField() = default;

  ULONG refs_ = 1;
  ComPtr<IEMSMessageParameter> inner_;
  bool nameless_;
};

}  // namespace pv::test

#endif  // PARCELVANE_TESTS_HEADERS_FOREIGN_FIELD_H
