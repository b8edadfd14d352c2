// The parts list as a script collection: DISPID_VALUE is its item and
// DISPID_NEWENUM an enumerator over its parts, with no slot or identifier
// of the interface changed.
#include "tests/test_util.h"

namespace pv::test {
namespace {

ComPtr<IEMSMimeParts> PartsOf(const char* message) {
  auto part = Create<IEMSMimePart>(CLSID_EMSMimePart);
  auto data = DataOf(message);
  EXPECT_EQ(part->ParsePartObject(data.get()), S_OK);
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(part->get_MimeParts(parts.put()), S_OK);
  return parts;
}

const char kThree[] =
    "Content-Type: multipart/mixed; "
    "boundary=b\r\n\r\n--b\r\n\r\none\r\n--b\r\n\r\ntwo\r\n--b\r\n\r\nthree\r\n--b--";

HRESULT Call(IDispatch* object, DISPID id, WORD flags, std::vector<VARIANT> args, VARIANT* result) {
  DISPPARAMS params{args.empty() ? nullptr : args.data(), nullptr, static_cast<UINT>(args.size()), 0};
  UINT argErr = 0;
  return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result, nullptr, &argErr);
}

VARIANT I4(LONG n) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_I4;
  v.lVal = n;
  return v;
}

std::string BodyOf(IUnknown* object) {
  ComPtr<IEMSMimePart> part;
  if (object == nullptr || FAILED(object->QueryInterface(IID_IEMSMimePart, part.put_void()))) return "<none>";
  ComPtr<IEMSDataObject> body;
  part->get_BodyObject(body.put());
  return body ? SpanBytes(body.get()) : "<no body>";
}

ComPtr<IEnumVARIANT> EnumeratorOf(IEMSMimeParts* parts) {
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Call(parts, DISPID_NEWENUM, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_UNKNOWN);
  ComPtr<IEnumVARIANT> enumerator;
  if (result.vt == VT_UNKNOWN && result.punkVal != nullptr) {
    EXPECT_EQ(result.punkVal->QueryInterface(IID_IEnumVARIANT, enumerator.put_void()), S_OK);
  }
  VariantClear(&result);
  return enumerator;
}

TEST(PartsCollection, DefaultMemberIsThePartAtAnIndex) {
  auto parts = PartsOf(kThree);
  VARIANT result;
  VariantInit(&result);
  ASSERT_EQ(Call(parts.get(), DISPID_VALUE, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {I4(1)}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  // A part before the next delimiter keeps its line break.
  EXPECT_EQ(BodyOf(result.pdispVal), "two\r\n");
  VariantClear(&result);
  // The item's own statuses: a negative index, and one past the end.
  EXPECT_EQ(Call(parts.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {I4(-1)}, &result), E_INVALIDARG);
  // One past the end is the item's silent success with no part.
  EXPECT_EQ(Call(parts.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {I4(3)}, &result), S_OK);
  EXPECT_TRUE(result.vt == VT_EMPTY || (result.vt == VT_DISPATCH && result.pdispVal == nullptr));
  VariantClear(&result);
  EXPECT_EQ(Call(parts.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {}, &result), DISP_E_BADPARAMCOUNT);
}

TEST(PartsCollection, NewEnumWalksEveryPartInOrder) {
  auto parts = PartsOf(kThree);
  auto enumerator = EnumeratorOf(parts.get());
  ASSERT_TRUE(enumerator);
  std::vector<std::string> bodies;
  VARIANT item;
  ULONG fetched = 0;
  while (enumerator->Next(1, &item, &fetched) == S_OK) {
    EXPECT_EQ(fetched, 1u);
    EXPECT_EQ(item.vt, VT_DISPATCH);
    bodies.push_back(BodyOf(item.pdispVal));
    VariantClear(&item);
  }
  EXPECT_EQ(fetched, 0u);
  EXPECT_EQ(bodies, (std::vector<std::string>{"one\r\n", "two\r\n", "three"}));
}

TEST(PartsCollection, EnumeratorNextSkipResetAndClone) {
  auto parts = PartsOf(kThree);
  auto enumerator = EnumeratorOf(parts.get());
  ASSERT_TRUE(enumerator);
  VARIANT items[4];
  ULONG fetched = 99;
  EXPECT_EQ(enumerator->Skip(1), S_OK);
  EXPECT_EQ(enumerator->Next(4, items, &fetched), S_FALSE);  // two left
  ASSERT_EQ(fetched, 2u);
  EXPECT_EQ(BodyOf(items[0].pdispVal), "two\r\n");
  EXPECT_EQ(BodyOf(items[1].pdispVal), "three");
  VariantClear(&items[0]);
  VariantClear(&items[1]);
  EXPECT_EQ(enumerator->Skip(1), S_FALSE);
  EXPECT_EQ(enumerator->Reset(), S_OK);
  ComPtr<IEnumVARIANT> copy;
  ASSERT_EQ(enumerator->Clone(copy.put()), S_OK);
  EXPECT_EQ(enumerator->Skip(3), S_OK);
  EXPECT_EQ(copy->Next(1, items, nullptr), S_OK);  // the clone keeps its own place
  EXPECT_EQ(BodyOf(items[0].pdispVal), "one\r\n");
  VariantClear(&items[0]);
  EXPECT_EQ(enumerator->Next(2, items, nullptr), E_INVALIDARG);
  EXPECT_EQ(enumerator->Next(1, nullptr, &fetched), E_POINTER);
  EXPECT_EQ(enumerator->Next(0, nullptr, &fetched), S_OK);
  EXPECT_EQ(enumerator->Clone(nullptr), E_POINTER);
}

TEST(PartsCollection, EnumeratorIsASnapshotThatHoldsItsParts) {
  auto parts = PartsOf(kThree);
  auto enumerator = EnumeratorOf(parts.get());
  ASSERT_TRUE(enumerator);
  EXPECT_EQ(parts->RemoveAll(), S_OK);
  parts = nullptr;
  VARIANT item;
  ASSERT_EQ(enumerator->Next(1, &item, nullptr), S_OK);
  EXPECT_EQ(BodyOf(item.pdispVal), "one\r\n");
  VariantClear(&item);
}

TEST(PartsCollection, EmptyListEnumeratesNothing) {
  auto parts = Create<IEMSMimeParts>(CLSID_EMSMimeParts);
  auto enumerator = EnumeratorOf(parts.get());
  ASSERT_TRUE(enumerator);
  VARIANT item;
  ULONG fetched = 7;
  EXPECT_EQ(enumerator->Next(1, &item, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0u);
}

TEST(PartsCollection, NewEnumHasANameAndOtherInterfacesHaveNoCollection) {
  auto parts = Create<IEMSMimeParts>(CLSID_EMSMimeParts);
  EXPECT_EQ(IdOf(parts.get(), "_NewEnum"), DISPID_NEWENUM);
  EXPECT_EQ(IdOf(parts.get(), "_newenum"), DISPID_NEWENUM);
  auto part = Create<IEMSMimePart>(CLSID_EMSMimePart);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Call(part.get(), DISPID_NEWENUM, DISPATCH_METHOD, {}, &result), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Call(part.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {}, &result), DISP_E_MEMBERNOTFOUND);
  WString name = W("_NewEnum");
  LPOLESTR names[] = {name.data()};
  DISPID id = 0;
  EXPECT_EQ(part->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), DISP_E_UNKNOWNNAME);
}

TEST(PartsCollection, ObjectsReportNoTypeInformationWithoutATypeLibrary) {
  auto parts = Create<IEMSMimeParts>(CLSID_EMSMimeParts);
  UINT count = 7;
  EXPECT_EQ(parts->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 0u);
  ITypeInfo* info = reinterpret_cast<ITypeInfo*>(1);
  EXPECT_EQ(parts->GetTypeInfo(0, 0, &info), DISP_E_BADINDEX);
  EXPECT_EQ(info, nullptr);
}

}  // namespace
}  // namespace pv::test
