// The part of every object that the component model needs: its reference
// count, its non-delegating unknown (so that it can be aggregated), and
// stack-safe destruction.
#ifndef PARCELVANE_SRC_COM_OBJECT_CORE_H
#define PARCELVANE_SRC_COM_OBJECT_CORE_H

#include "parcelvane/platform.h"

namespace pv {

// Private identifier through which the library reaches its own objects:
// QueryInterface with it yields the ObjectCore *without* a new reference
// (the caller already holds one through the pointer it asked).
extern const IID kIidObjectCore;

class ObjectCore {
 public:
  ObjectCore(const ObjectCore&) = delete;
  ObjectCore& operator=(const ObjectCore&) = delete;

  // The object's own unknown; for an aggregated object, what the outer holds.
  IUnknown* InnerUnknown() { return &inner_; }
  // Where every interface's IUnknown methods go: the outer object when
  // aggregated, the inner unknown otherwise.
  IUnknown* ControllingUnknown() const { return controlling_; }
  bool IsAggregated() const { return controlling_ != &inner_; }

  // The construction step run once after the object is made (sub-objects
  // are created here); a failure destroys the object.
  virtual HRESULT FinalConstruct() { return S_OK; }

 protected:
  explicit ObjectCore(IUnknown* outer);
  virtual ~ObjectCore();

  // The interface answering `riid` (as an IUnknown at the interface's own
  // address), or null. IUnknown itself is answered by the core.
  virtual IUnknown* InterfaceFor(REFIID riid) = 0;

 private:
  class Inner final : public IUnknown {
   public:
    explicit Inner(ObjectCore* owner) : owner_(owner) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

   private:
    ObjectCore* owner_;
  };

  // Deletes objects whose count reached zero one after another, so that
  // releasing a deep tree never recurses once per level.
  static void DestroyLater(ObjectCore* object);

  ULONG refs_ = 0;
  ObjectCore* nextPending_ = nullptr;  // link in the thread's list of objects to delete
  Inner inner_;
  IUnknown* controlling_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_OBJECT_CORE_H
