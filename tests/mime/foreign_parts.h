// Parts and part lists of another implementation, as a host could hand
// them in: the library must drive them through their interfaces.
#ifndef PARCELVANE_TESTS_MIME_FOREIGN_PARTS_H
#define PARCELVANE_TESTS_MIME_FOREIGN_PARTS_H

#include <set>
#include <vector>

#include "src/com/com_object.h"
#include "tests/test_util.h"

namespace pv::test {

// A parts list whose entries at the "hole" indexes read as missing.
class ForeignParts final : public ComObject<ForeignParts, IEMSMimeParts> {
 public:
  explicit ForeignParts(IUnknown* outer) : ComObject(outer) {}

  std::set<LONG> holes;
  std::vector<ComPtr<IEMSMimePart>> entries;

  HRESULT STDMETHODCALLTYPE AddPart(IEMSMimePart* pVal) override {
    if (pVal == nullptr) return E_POINTER;
    entries.emplace_back(pVal);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE AppendParts(IEMSMimeParts*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RemovePart(LONG nIdx) override {
    if (nIdx >= 0 && static_cast<size_t>(nIdx) < entries.size()) entries.erase(entries.begin() + nIdx);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE RemoveAll() override {
    entries.clear();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Part(LONG nIdx, IEMSMimePart** ppVal) override {
    if (ppVal == nullptr) return E_POINTER;
    if (holes.count(nIdx) != 0 || nIdx < 0 || static_cast<size_t>(nIdx) >= entries.size()) return S_OK;
    entries[static_cast<size_t>(nIdx)].CopyTo(ppVal);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Part(LONG, IEMSMimePart*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_PartsCount(LONG* pVal) override {
    if (pVal == nullptr) return E_POINTER;
    *pVal = static_cast<LONG>(entries.size());
    return S_OK;
  }
};

// A part of another implementation that passes every call to a part of
// the library.
class ForeignPart final : public ComObject<ForeignPart, IEMSMimePart> {
 public:
  explicit ForeignPart(IUnknown* outer) : ComObject(outer) {}
  HRESULT FinalConstruct() override {
    return PvCreateInstance(CLSID_EMSMimePart, nullptr, IID_IEMSMimePart, inner.put_void());
  }

  ComPtr<IEMSMimePart> inner;
  int calls = 0;

  HRESULT STDMETHODCALLTYPE ParsePartObject(IEMSDataObject* p) override {
    ++calls;
    return inner->ParsePartObject(p);
  }
  HRESULT STDMETHODCALLTYPE put_BodyObject(IEMSDataObject* p) override {
    ++calls;
    return inner->put_BodyObject(p);
  }
  HRESULT STDMETHODCALLTYPE get_BodyObject(IEMSDataObject** p) override {
    ++calls;
    return inner->get_BodyObject(p);
  }
  HRESULT STDMETHODCALLTYPE get_Headers(IEMSMessageParameters** p) override {
    ++calls;
    return inner->get_Headers(p);
  }
  HRESULT STDMETHODCALLTYPE put_Headers(IEMSMessageParameters* p) override {
    ++calls;
    return inner->put_Headers(p);
  }
  HRESULT STDMETHODCALLTYPE get_MimeParts(IEMSMimeParts** p) override {
    ++calls;
    return inner->get_MimeParts(p);
  }
  HRESULT STDMETHODCALLTYPE put_MimeParts(IEMSMimeParts* p) override {
    ++calls;
    return inner->put_MimeParts(p);
  }
  HRESULT STDMETHODCALLTYPE get_DefaultCodePage(LONG* p) override {
    ++calls;
    return inner->get_DefaultCodePage(p);
  }
  HRESULT STDMETHODCALLTYPE put_DefaultCodePage(LONG v) override {
    ++calls;
    return inner->put_DefaultCodePage(v);
  }
  HRESULT STDMETHODCALLTYPE get_DefaultEncoding(LONG* p) override {
    ++calls;
    return inner->get_DefaultEncoding(p);
  }
  HRESULT STDMETHODCALLTYPE put_DefaultEncoding(LONG v) override {
    ++calls;
    return inner->put_DefaultEncoding(v);
  }
  HRESULT STDMETHODCALLTYPE get_DefaultHeaderEncoding(LONG* p) override {
    ++calls;
    return inner->get_DefaultHeaderEncoding(p);
  }
  HRESULT STDMETHODCALLTYPE put_DefaultHeaderEncoding(LONG v) override {
    ++calls;
    return inner->put_DefaultHeaderEncoding(v);
  }
  HRESULT STDMETHODCALLTYPE AssemblePartObject(IEMSDataObject** p) override {
    ++calls;
    return inner->AssemblePartObject(p);
  }
  HRESULT STDMETHODCALLTYPE CreateHeader(BSTR n, IEMSMessageParameter** p) override {
    ++calls;
    return inner->CreateHeader(n, p);
  }
  HRESULT STDMETHODCALLTYPE FindHeader(BSTR n, IEMSMessageParameter** p) override {
    ++calls;
    return inner->FindHeader(n, p);
  }
  HRESULT STDMETHODCALLTYPE RemovePart(IEMSMimePart* p) override {
    ++calls;
    return inner->RemovePart(p);
  }
  HRESULT STDMETHODCALLTYPE FindPart(BSTR t, LONG l, IEMSMimePart** p) override {
    ++calls;
    return inner->FindPart(t, l, p);
  }
  HRESULT STDMETHODCALLTYPE FindParentPart(IEMSMimePart* c, IEMSMimePart** p) override {
    ++calls;
    return inner->FindParentPart(c, p);
  }
  HRESULT STDMETHODCALLTYPE FindPartBySubType(LONG s, IEMSMimePart** p) override {
    ++calls;
    return inner->FindPartBySubType(s, p);
  }
  HRESULT STDMETHODCALLTYPE ConvertToMultipart(LONG s) override {
    ++calls;
    return inner->ConvertToMultipart(s);
  }
  HRESULT STDMETHODCALLTYPE CreateAttach(BSTR n, IEMSDataObject* o, LONG e, BSTR i, BSTR l, BSTR t) override {
    ++calls;
    return inner->CreateAttach(n, o, e, i, l, t);
  }
  HRESULT STDMETHODCALLTYPE put_DecodedBinary(IEMSDataObject* p) override {
    ++calls;
    return inner->put_DecodedBinary(p);
  }
  HRESULT STDMETHODCALLTYPE get_DecodedBinary(IEMSDataObject** p) override {
    ++calls;
    return inner->get_DecodedBinary(p);
  }
  HRESULT STDMETHODCALLTYPE put_DecodedBody(BSTR v) override {
    ++calls;
    return inner->put_DecodedBody(v);
  }
  HRESULT STDMETHODCALLTYPE get_DecodedBody(BSTR* p) override {
    ++calls;
    return inner->get_DecodedBody(p);
  }
  HRESULT STDMETHODCALLTYPE get_AttachName(BSTR* p) override {
    ++calls;
    return inner->get_AttachName(p);
  }
  HRESULT STDMETHODCALLTYPE get_MimeType(LONG* p) override {
    ++calls;
    return inner->get_MimeType(p);
  }
  HRESULT STDMETHODCALLTYPE get_MimeSubType(LONG* p) override {
    ++calls;
    return inner->get_MimeSubType(p);
  }
  HRESULT STDMETHODCALLTYPE get_MimeContentTypeString(BSTR* p) override {
    ++calls;
    return inner->get_MimeContentTypeString(p);
  }
  HRESULT STDMETHODCALLTYPE get_IsAttachPart(LONG* p) override {
    ++calls;
    return inner->get_IsAttachPart(p);
  }
  HRESULT STDMETHODCALLTYPE put_IsAttachPart(LONG v) override {
    ++calls;
    return inner->put_IsAttachPart(v);
  }
};

template <class T>
ComPtr<T> MakeForeign() {
  ComPtr<T> object;
  EXPECT_EQ(MakeObject(&object), S_OK);
  return object;
}

}  // namespace pv::test

#endif  // PARCELVANE_TESTS_MIME_FOREIGN_PARTS_H
