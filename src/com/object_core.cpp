#include "src/com/object_core.h"

#include "src/platform/thread_slot.h"
#include "src/com/module_lock.h"

namespace pv {

const IID kIidObjectCore = {0x23679204, 0x54DC, 0x4833, {0xBF, 0xAB, 0x17, 0x63, 0x96, 0x4D, 0xC3, 0xBA}};

ObjectCore::ObjectCore(IUnknown* outer) : inner_(this), controlling_(outer != nullptr ? outer : &inner_) {
  ModuleLock();
}

ObjectCore::~ObjectCore() { ModuleUnlock(); }

HRESULT ObjectCore::Inner::QueryInterface(REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  if (IsEqualIID(riid, IID_IUnknown)) {
    *ppv = static_cast<IUnknown*>(this);
    AddRef();
    return S_OK;
  }
  if (IsEqualIID(riid, kIidObjectCore)) {
    *ppv = owner_;  // borrowed: see kIidObjectCore
    return S_OK;
  }
  IUnknown* itf = owner_->InterfaceFor(riid);
  if (itf == nullptr) return E_NOINTERFACE;
  *ppv = itf;
  itf->AddRef();
  return S_OK;
}

ULONG ObjectCore::Inner::AddRef() { return ++owner_->refs_; }

ULONG ObjectCore::Inner::Release() {
  ULONG left = --owner_->refs_;
  if (left == 0) DestroyLater(owner_);
  return left;
}

void ObjectCore::DestroyLater(ObjectCore* object) {
  // The thread's slot points at the list of the outermost call while one
  // drains; nested releases only add to it.
  auto* pending = static_cast<ObjectCore**>(GetThreadSlot());
  if (pending != nullptr) {
    object->nextPending_ = *pending;
    *pending = object;
    return;
  }
  ObjectCore* head = object;
  SetThreadSlot(&head);
  while (head != nullptr) {
    ObjectCore* next = head;
    head = next->nextPending_;
    delete next;  // may queue the objects it held
  }
  SetThreadSlot(nullptr);
}

}  // namespace pv
