#include "src/com/variant_enumerator.h"

#include <new>

#include "src/com/object_core.h"

namespace pv {
namespace {

// Shared by an enumerator and its clones; never changed after it is made.
using Items = std::shared_ptr<std::vector<VARIANT>>;

class VariantEnumerator final : public IEnumVARIANT, public ObjectCore {
 public:
  VariantEnumerator(Items items, size_t position)
      : ObjectCore(nullptr), items_(std::move(items)), at_(position) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    return ControllingUnknown()->QueryInterface(riid, ppv);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ControllingUnknown()->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return ControllingUnknown()->Release(); }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* out, ULONG* fetched) override {
    if (fetched != nullptr) *fetched = 0;
    if (count == 0) return S_OK;
    if (out == nullptr) return E_POINTER;
    if (count > 1 && fetched == nullptr) return E_INVALIDARG;
    ULONG done = 0;
    for (; done < count && at_ < items_->size(); ++done, ++at_) {
      VariantInit(&out[done]);
      HRESULT hr = VariantCopy(&out[done], &(*items_)[at_]);
      if (FAILED(hr)) {
        for (ULONG i = 0; i < done; ++i) VariantClear(&out[i]);
        return hr;
      }
    }
    if (fetched != nullptr) *fetched = done;
    return done == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    size_t left = items_->size() - at_;
    if (count > left) {
      at_ = items_->size();
      return S_FALSE;
    }
    at_ += count;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    at_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    auto* copy = new (std::nothrow) VariantEnumerator(items_, at_);
    if (copy == nullptr) return E_OUTOFMEMORY;
    copy->AddRef();
    *out = copy;
    return S_OK;
  }

 protected:
  IUnknown* InterfaceFor(REFIID riid) override {
    return IsEqualIID(riid, IID_IEnumVARIANT) ? static_cast<IEnumVARIANT*>(this) : nullptr;
  }

 private:
  Items items_;
  size_t at_;
};

}  // namespace

HRESULT MakeVariantEnumerator(std::vector<VARIANT> items, IEnumVARIANT** out) {
  *out = nullptr;
  Items shared;
  try {
    shared = Items(new std::vector<VARIANT>(std::move(items)), [](std::vector<VARIANT>* v) {
      for (VARIANT& item : *v) VariantClear(&item);
      delete v;
    });
  } catch (const std::bad_alloc&) {
    for (VARIANT& item : items) VariantClear(&item);
    return E_OUTOFMEMORY;
  }
  auto* enumerator = new (std::nothrow) VariantEnumerator(std::move(shared), 0);
  if (enumerator == nullptr) return E_OUTOFMEMORY;
  enumerator->AddRef();
  *out = enumerator;
  return S_OK;
}

}  // namespace pv
