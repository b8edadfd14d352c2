#include "src/server/class_factory.h"

#include <memory>
#include <mutex>
#include <new>

#include "src/server/class_table.h"
#include "src/com/module_lock.h"

namespace pv {
namespace {

// A class object lives as long as the module: its count does not keep the
// module loaded (LockServer does).
class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(const ClassRow* row) : row_(row) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory)) {
      *ppv = static_cast<IClassFactory*>(this);
      return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    if (outer != nullptr && !IsEqualIID(riid, IID_IUnknown)) return CLASS_E_NOAGGREGATION;
    return row_->create(outer, riid, ppv);
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    if (lock) {
      ModuleLock();
    } else {
      ModuleUnlock();
    }
    return S_OK;
  }

 private:
  const ClassRow* row_;
};

std::mutex g_factory_lock;
// Freed when the module is unloaded (or the program ends).
std::unique_ptr<ClassFactory> g_factories[32];

}  // namespace

HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  const ClassRow* row = FindCreatableClass(rclsid);
  if (row == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
  size_t index = static_cast<size_t>(row - ClassTableBegin());
  ClassFactory* factory = nullptr;
  {
    std::lock_guard<std::mutex> guard(g_factory_lock);
    if (g_factories[index] == nullptr) {
      g_factories[index].reset(new (std::nothrow) ClassFactory(row));
      if (g_factories[index] == nullptr) return E_OUTOFMEMORY;
    }
    factory = g_factories[index].get();
  }
  return factory->QueryInterface(riid, ppv);
}

}  // namespace pv
