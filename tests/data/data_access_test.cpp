// How the library reaches data objects: its own without copying, others
// through their interface.
#include "src/data/data_access.h"
#include "src/data/data_object.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

TEST(DataAccess, ClonesShareOneBuffer) {
  ComPtr<IEMSDataObject> data;
  ASSERT_EQ(MakeDataObject("0123456789", &data), S_OK);
  ComPtr<IEMSDataObject> clone;
  ASSERT_EQ(CloneDataSpan(data.get(), 2, 3, &clone), S_OK);
  DataBytes a, b;
  ASSERT_EQ(ReadDataBytes(data.get(), &a), S_OK);
  ASSERT_EQ(ReadDataBytes(clone.get(), &b), S_OK);
  EXPECT_EQ(a.data(), b.data());
  EXPECT_EQ(b.Span(), "234");
  EXPECT_EQ(a.Span(), "0123456789");
}

TEST(DataAccess, SpanIsClippedToTheBuffer) {
  ComPtr<IEMSDataObject> data;
  MakeDataObject("0123456789", &data);
  data->put_Length(10);
  data->put_Position(8);
  DataBytes view;
  ASSERT_EQ(ReadDataBytes(data.get(), &view), S_OK);
  EXPECT_EQ(view.Span(), "89");
}

TEST(DataAccess, NonByteArraysAndEmptyObjectsAreNotReadable) {
  auto data = Create<IEMSDataObject>(CLSID_EMSDataObject);
  DataBytes view;
  EXPECT_EQ(ReadDataBytes(data.get(), &view), E_FAIL);
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_I4;
  v.parray = SafeArrayCreateVector(VT_I4, 0, 2);
  data->put_Data(v);
  VariantClear(&v);
  EXPECT_EQ(ReadDataBytes(data.get(), &view), E_FAIL);
  EXPECT_EQ(ReadDataBytes(nullptr, &view), E_POINTER);
}

// A data object of another implementation, reached only through its interface.
class ForeignData final : public IEMSDataObject {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IEMSDataObject)) {
      *ppv = this;
      AddRef();
      return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEMSDataObject**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CopyFrom(IEMSDataObject*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CreateDataArray(VARIANT, LONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CreateEmptyData(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CreateDataFromFile(BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ExtractBlockAsData(IEMSDataObject**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Data(VARIANT* v) override {
    *v = ByteVariant("foreign bytes");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Data(VARIANT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_DataSize(ULONG* v) override {
    *v = 13;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Position(ULONG* v) override {
    *v = 8;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Position(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Length(ULONG* v) override {
    *v = 5;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Length(ULONG) override { return E_NOTIMPL; }
  ULONG refs = 1;
};

TEST(DataAccess, ForeignObjectsAreReadThroughTheirInterface) {
  ForeignData foreign;
  DataBytes view;
  ASSERT_EQ(ReadDataBytes(&foreign, &view), S_OK);
  EXPECT_EQ(view.Span(), "bytes");
  EXPECT_EQ(foreign.refs, 1u);
}

TEST(DataAccess, CopyFromAForeignObjectGoesThroughItsInterface) {
  ForeignData foreign;
  auto data = Create<IEMSDataObject>(CLSID_EMSDataObject);
  EXPECT_EQ(data->CopyFrom(&foreign), S_OK);
  EXPECT_EQ(SpanBytes(data.get()), "bytes");
  EXPECT_EQ(foreign.refs, 1u);
}

TEST(DataAccess, ImplOfFindsOnlyTheLibrarysOwnObjects) {
  ForeignData foreign;
  EXPECT_FALSE(ImplOf<DataObject>(&foreign));
  auto data = Create<IEMSDataObject>(CLSID_EMSDataObject);
  ComPtr<DataObject> own = ImplOf<DataObject>(data.get());
  ASSERT_TRUE(own);
  EXPECT_EQ(static_cast<IEMSDataObject*>(own.get()), data.get());
}

}  // namespace
}  // namespace pv::test
