// Every class can live inside an outer object: its interfaces then count
// references on the outer object and answer QueryInterface through it.
#include "src/server/class_table.h"
#include "src/com/module_lock.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

// An outer object that aggregates one of the library's classes.
class Outer final : public IUnknown {
 public:
  explicit Outer(REFCLSID clsid) {
    created = PvCreateInstance(clsid, this, IID_IUnknown, reinterpret_cast<void**>(&inner));
  }
  ~Outer() {
    if (inner) inner->Release();
  }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown)) {
      *ppv = static_cast<IUnknown*>(this);
      AddRef();
      return S_OK;
    }
    return inner->QueryInterface(riid, ppv);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override {
    ULONG left = --refs;
    if (left == 0) delete this;
    return left;
  }

  ULONG refs = 1;
  IUnknown* inner = nullptr;
  HRESULT created = E_FAIL;
};

TEST(Aggregation, InnerObjectDelegatesToTheOuterUnknown) {
  Outer* outer = new Outer(CLSID_EMSDataObject);
  ASSERT_EQ(outer->created, S_OK);
  ASSERT_NE(outer->inner, nullptr);
  EXPECT_NE(outer->inner, static_cast<IUnknown*>(outer));

  IEMSDataObject* data = nullptr;
  ASSERT_EQ(outer->QueryInterface(IID_IEMSDataObject, reinterpret_cast<void**>(&data)), S_OK);
  EXPECT_EQ(outer->refs, 2u);  // the interface's reference went to the outer object

  IUnknown* identity = nullptr;
  ASSERT_EQ(data->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
  EXPECT_EQ(identity, static_cast<IUnknown*>(outer));
  identity->Release();

  data->AddRef();
  EXPECT_EQ(outer->refs, 3u);
  data->Release();
  data->Release();
  EXPECT_EQ(outer->refs, 1u);

  EXPECT_EQ(ModuleLockCount(), 1);
  outer->Release();
  EXPECT_EQ(ModuleLockCount(), 0);
}

TEST(Aggregation, InnerUnknownAnswersItsOwnInterfaces) {
  Outer* outer = new Outer(CLSID_EMSDataObject);
  ASSERT_EQ(outer->created, S_OK);
  IUnknown* again = nullptr;
  ASSERT_EQ(outer->inner->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&again)), S_OK);
  EXPECT_EQ(again, outer->inner);  // the inner unknown answers for itself
  again->Release();
  IDispatch* dispatch = nullptr;
  ASSERT_EQ(outer->inner->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)), S_OK);
  EXPECT_EQ(outer->refs, 2u);
  dispatch->Release();
  outer->Release();
}

TEST(Aggregation, AggregatedObjectWorks) {
  Outer* outer = new Outer(CLSID_EMSDataObject);
  IEMSDataObject* data = nullptr;
  ASSERT_EQ(outer->QueryInterface(IID_IEMSDataObject, reinterpret_cast<void**>(&data)), S_OK);
  EXPECT_EQ(data->CreateEmptyData(4), S_OK);
  ULONG size = 0;
  data->get_DataSize(&size);
  EXPECT_EQ(size, 4u);
  data->Release();
  outer->Release();
}

TEST(Aggregation, EveryBuiltClassCanBeAggregated) {
  for (const ClassRow* row = ClassTableBegin(); row != ClassTableEnd(); ++row) {
    if (row->create == nullptr) continue;
    Outer* outer = new Outer(*row->clsid);
    ASSERT_EQ(outer->created, S_OK) << row->name;
    void* itf = nullptr;
    ASSERT_EQ(outer->QueryInterface(*row->iid, &itf), S_OK) << row->name;
    EXPECT_EQ(outer->refs, 2u) << row->name;
    static_cast<IUnknown*>(itf)->Release();
    outer->Release();
  }
  EXPECT_EQ(ModuleLockCount(), 0);
}

}  // namespace
}  // namespace pv::test
