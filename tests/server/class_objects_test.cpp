// The class table, class objects, creation and module lifetime.
#include "src/server/class_table.h"
#include "src/com/module_lock.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

TEST(ClassTable, HasThirteenRowsInRegistrationOrder) {
  const char* names[] = {"EMSDataObject",      "EMSHeaderCharset",    "EMSHeaderMailbox",
                         "EMSHeaderMailboxes", "EMSMessageParameter", "EMSMessageParameters",
                         "EMSMessageParser",   "EMSMimeAttribute",    "EMSMimeAttributes",
                         "EMSMimePart",        "EMSMimePartDecoder",  "EMSMimePartEncoder",
                         "EMSMimeParts"};
  int scripts[] = {101, 103, 104, 105, 106, 107, 108, 112, 113, 114, 115, 116, 117};
  ASSERT_EQ(ClassTableSize(), 13u);
  for (size_t i = 0; i < 13; ++i) {
    const ClassRow& row = ClassTableBegin()[i];
    EXPECT_STREQ(row.name, names[i]);
    EXPECT_EQ(row.registrationScript, scripts[i]);
    EXPECT_EQ(std::string(row.interfaceName), std::string("I") + names[i]);
  }
  EXPECT_STREQ(ClassTableBegin()[6].implementation, "CEMSComMessageParser");
  EXPECT_STREQ(ClassTableBegin()[12].implementation, "CComEMSMessageMimeParts");
}

TEST(ClassTable, IdentifiersHaveTheDocumentedValues) {
  const IID data = {0xA5C05A22, 0xCA5F, 0x4691, {0x96, 0xD4, 0xD7, 0xE2, 0x82, 0x9E, 0x60, 0xAE}};
  const CLSID dataClass = {0xF43DBF87, 0xA05E, 0x4D95, {0x88, 0xA1, 0x35, 0x4A, 0xDB, 0xAE, 0x72, 0x95}};
  const GUID lib = {0x76B0BE2F, 0xA910, 0x45E1, {0x8E, 0xC3, 0xBA, 0xEA, 0x1E, 0x01, 0xF1, 0x23}};
  EXPECT_TRUE(IsEqualGUID(IID_IEMSDataObject, data));
  EXPECT_TRUE(IsEqualGUID(CLSID_EMSDataObject, dataClass));
  EXPECT_TRUE(IsEqualGUID(LIBID_PARCELVANELib, lib));
}

TEST(ClassObject, UnknownClassIsNotAvailableAndLeavesResultEmpty) {
  const CLSID unknown = {0x12345678, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
  void* out = reinterpret_cast<void*>(1);
  EXPECT_EQ(DllGetClassObject(unknown, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(out, nullptr);
}

TEST(ClassObject, MissingResultPlaceIsAPointerError) {
  EXPECT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IClassFactory, nullptr), E_POINTER);
}

TEST(ClassObject, TwoRequestsGiveTheSameCachedObject) {
  IClassFactory* a = nullptr;
  IClassFactory* b = nullptr;
  ASSERT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IClassFactory, reinterpret_cast<void**>(&a)), S_OK);
  ASSERT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IClassFactory, reinterpret_cast<void**>(&b)), S_OK);
  EXPECT_EQ(a, b);
  IUnknown* unknown = nullptr;
  ASSERT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
  EXPECT_EQ(static_cast<IUnknown*>(a), unknown);
  a->Release();
  b->Release();
  unknown->Release();
}

TEST(ClassObject, AsksTheClassObjectForTheRequestedInterface) {
  void* out = nullptr;
  EXPECT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IEMSDataObject, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
}

TEST(ClassObject, CreatesADataObjectThroughTheFactory) {
  IClassFactory* factory = nullptr;
  ASSERT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
            S_OK);
  IEMSDataObject* data = nullptr;
  ASSERT_EQ(factory->CreateInstance(nullptr, IID_IEMSDataObject, reinterpret_cast<void**>(&data)), S_OK);
  ULONG size = 1;
  EXPECT_EQ(data->get_DataSize(&size), S_OK);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(data->Release(), 0u);
  factory->Release();
}

TEST(ClassObject, FactoryRejectsAnInterfaceTheClassLacks) {
  IClassFactory* factory = nullptr;
  ASSERT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
            S_OK);
  void* out = reinterpret_cast<void*>(1);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IEMSMimePart, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IEMSDataObject, nullptr), E_POINTER);
  factory->Release();
}

TEST(ClassObject, AggregationNeedsTheUnknownInterface) {
  IClassFactory* factory = nullptr;
  ASSERT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
            S_OK);
  IUnknown* outer = factory;  // any unknown will do: it is never called
  void* out = nullptr;
  EXPECT_EQ(factory->CreateInstance(outer, IID_IEMSDataObject, &out), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(out, nullptr);
  factory->Release();
}

TEST(Module, LiveObjectsKeepTheModuleLoaded) {
  ASSERT_EQ(ModuleLockCount(), 0);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  {
    auto data = Create<IEMSDataObject>(CLSID_EMSDataObject);
    EXPECT_EQ(ModuleLockCount(), 1);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    ComPtr<IEMSDataObject> clone;
    data->Clone(clone.put());
    EXPECT_EQ(ModuleLockCount(), 2);
  }
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST(Module, LockServerCountsAsALock) {
  IClassFactory* factory = nullptr;
  ASSERT_EQ(DllGetClassObject(CLSID_EMSDataObject, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
            S_OK);
  EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  factory->Release();
}

TEST(PvCreateInstance, CreatesAndAnswersTheBaseInterfaces) {
  IEMSDataObject* data = nullptr;
  ASSERT_EQ(
      PvCreateInstance(CLSID_EMSDataObject, nullptr, IID_IEMSDataObject, reinterpret_cast<void**>(&data)),
      S_OK);
  IUnknown* unknown = nullptr;
  IDispatch* dispatch = nullptr;
  EXPECT_EQ(data->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
  EXPECT_EQ(data->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)), S_OK);
  EXPECT_EQ(static_cast<void*>(dispatch), static_cast<void*>(data));
  void* none = reinterpret_cast<void*>(1);
  EXPECT_EQ(data->QueryInterface(IID_IClassFactory, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(data->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  unknown->Release();
  dispatch->Release();
  EXPECT_EQ(data->Release(), 0u);
}

TEST(PvCreateInstance, ClassesNotBuiltAreNotAvailable) {
  void* out = reinterpret_cast<void*>(1);
  for (const ClassRow* row = ClassTableBegin(); row != ClassTableEnd(); ++row) {
    if (row->create != nullptr) continue;
    EXPECT_EQ(PvCreateInstance(*row->clsid, nullptr, *row->iid, &out), CLASS_E_CLASSNOTAVAILABLE)
        << row->name;
    EXPECT_EQ(out, nullptr);
  }
  EXPECT_EQ(PvCreateInstance(CLSID_EMSDataObject, nullptr, IID_IEMSDataObject, nullptr), E_POINTER);
}

TEST(PvCreateInstance, EveryBuiltClassAnswersItsInterfaceAndDispatch) {
  for (const ClassRow* row = ClassTableBegin(); row != ClassTableEnd(); ++row) {
    if (row->create == nullptr) continue;
    IUnknown* object = nullptr;
    ASSERT_EQ(PvCreateInstance(*row->clsid, nullptr, *row->iid, reinterpret_cast<void**>(&object)), S_OK)
        << row->name;
    IDispatch* dispatch = nullptr;
    EXPECT_EQ(object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)), S_OK) << row->name;
    if (dispatch) dispatch->Release();
    EXPECT_EQ(object->Release(), 0u) << row->name;
  }
  EXPECT_EQ(ModuleLockCount(), 0);
}

}  // namespace
}  // namespace pv::test
