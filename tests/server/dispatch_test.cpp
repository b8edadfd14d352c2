// Late binding: the descriptions follow the interfaces' slot order and the
// dispatch identifier rule, and Invoke converts arguments and results.
#include <cstring>
#include <vector>

#include "src/com/dispatch.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

// On the Itanium ABI (gcc, clang, mingw) a pointer to a virtual member
// holds one more than the byte offset of its slot in the vtable.
template <class P>
int SlotOf(P member) {
  uintptr_t word = 0;
  static_assert(sizeof(P) >= sizeof(uintptr_t), "member pointers hold at least a word");
  std::memcpy(&word, &member, sizeof word);
  EXPECT_EQ(word & 1u, 1u) << "not virtual";
  return static_cast<int>((word - 1) / sizeof(void*));
}

struct Slot {
  const char* name;
  int slot;
};

// Every operation of an interface's member list with its vtable slot.
#define PV_SLOT_OF(kind, name, params, optional) {#name, SlotOf(&Itf::PV_MEMBER_NAME_##kind(name))},
template <class I>
std::vector<Slot> SlotsOf();
#define PV_DEFINE_SLOTS(I)               \
  template <>                            \
  std::vector<Slot> SlotsOf<I>() {       \
    using Itf = I;                       \
    return {PV_MEMBERS_##I(PV_SLOT_OF)}; \
  }
PV_DUAL_INTERFACES(PV_DEFINE_SLOTS)
#undef PV_DEFINE_SLOTS
#undef PV_SLOT_OF

template <class I>
void ExpectSlotOrderAndIdentifiers() {
  const DispatchTable& table = DispatchTableOf<I>();
  const auto& members = table.members();
  ASSERT_FALSE(members.empty());
  const std::vector<Slot> slots = SlotsOf<I>();
  ASSERT_EQ(slots.size(), members.size()) << table.interfaceName();
  for (size_t i = 0; i < members.size(); ++i) {
    const DispatchMember& m = members[i];
    EXPECT_STREQ(m.name, slots[i].name) << table.interfaceName();
    // The class's own operations start at slot 7, after IUnknown and IDispatch.
    EXPECT_EQ(slots[i].slot, static_cast<int>(7 + i)) << table.interfaceName() << "." << m.name;
    DISPID expected = DispatchTable::kFirstId + static_cast<DISPID>(i);
    if (i > 0 && m.kind != MemberKind::kMethod && members[i - 1].kind != MemberKind::kMethod &&
        std::string(members[i - 1].name) == m.name) {
      expected = members[i - 1].id;  // the second operation of a property pair
    }
    EXPECT_EQ(m.id, expected) << table.interfaceName() << "." << m.name;
  }
}

TEST(DispatchDescription, EveryInterfaceFollowsItsSlotOrderAndIdRule) {
#define PV_CHECK(I) ExpectSlotOrderAndIdentifiers<I>();
  PV_DUAL_INTERFACES(PV_CHECK)
#undef PV_CHECK
}

TEST(DispatchDescription, DataObjectListsItsOperationsInSlotOrder) {
  struct Expected {
    const char* name;
    MemberKind kind;
    DISPID id;
  } expected[] = {
      {"Clone", MemberKind::kMethod, 0x60020000},
      {"CopyFrom", MemberKind::kMethod, 0x60020001},
      {"CreateDataArray", MemberKind::kMethod, 0x60020002},
      {"CreateEmptyData", MemberKind::kMethod, 0x60020003},
      {"CreateDataFromFile", MemberKind::kMethod, 0x60020004},
      {"ExtractBlockAsData", MemberKind::kMethod, 0x60020005},
      {"Data", MemberKind::kGet, 0x60020006},
      {"Data", MemberKind::kPut, 0x60020006},
      {"DataSize", MemberKind::kGet, 0x60020008},
      {"Position", MemberKind::kGet, 0x60020009},
      {"Position", MemberKind::kPut, 0x60020009},
      {"Length", MemberKind::kGet, 0x6002000B},
      {"Length", MemberKind::kPut, 0x6002000B},
  };
  const auto& members = DispatchTableOf<IEMSDataObject>().members();
  ASSERT_EQ(members.size(), std::size(expected));
  for (size_t i = 0; i < members.size(); ++i) {
    EXPECT_STREQ(members[i].name, expected[i].name);
    EXPECT_EQ(members[i].kind, expected[i].kind) << expected[i].name;
    EXPECT_EQ(members[i].id, expected[i].id) << expected[i].name;
  }
  EXPECT_EQ(members[2].inCount, 2);
  EXPECT_EQ(members[2].optionalCount, 1);
  EXPECT_FALSE(members[2].hasResult);
  EXPECT_TRUE(members[0].hasResult);
}

TEST(DispatchDescription, MessageParserIdentifiersAreTheDocumentedOnes) {
  const auto& members = DispatchTableOf<IEMSMessageParser>().members();
  auto idOf = [&](const char* name, MemberKind kind) {
    for (const auto& m : members) {
      if (std::string(m.name) == name && m.kind == kind) return m.id;
    }
    return DISPID_UNKNOWN;
  };
  EXPECT_EQ(idOf("InitNew", MemberKind::kMethod), 0x60020000);
  EXPECT_EQ(idOf("IsMimeMessage", MemberKind::kMethod), 0x6002000F);
  EXPECT_EQ(idOf("Size", MemberKind::kGet), 0x60020010);
  EXPECT_EQ(idOf("FullMessage", MemberKind::kPut), 0x60020011);
  EXPECT_EQ(idOf("FullMessage", MemberKind::kGet), 0x60020011);
  EXPECT_EQ(idOf("Subject", MemberKind::kPut), 0x60020013);
  EXPECT_EQ(idOf("HeaderString", MemberKind::kGet), 0x6002001D);
  EXPECT_EQ(idOf("AttachParts", MemberKind::kGet), 0x60020033);
  EXPECT_EQ(idOf("DefaultCodePage", MemberKind::kPut), 0x60020034);
  EXPECT_EQ(idOf("AttachHeaderEncoding", MemberKind::kGet), 0x60020042);
  EXPECT_EQ(members.size(), 68u);
}

class DataObjectDispatch : public ::testing::Test {
 protected:
  void SetUp() override {
    data_ = Create<IEMSDataObject>(CLSID_EMSDataObject);
    ASSERT_EQ(data_->QueryInterface(IID_IDispatch, dispatch_.put_void()), S_OK);
  }
  ComPtr<IEMSDataObject> data_;
  ComPtr<IDispatch> dispatch_;
};

TEST_F(DataObjectDispatch, NamesMatchWithoutRegardToCase) {
  EXPECT_EQ(IdOf(dispatch_.get(), "position"), 0x60020009);
  EXPECT_EQ(IdOf(dispatch_.get(), "POSITION"), 0x60020009);
  EXPECT_EQ(IdOf(dispatch_.get(), "createDataArray"), 0x60020002);
}

TEST_F(DataObjectDispatch, UnknownNameIsReported) {
  WString name = W("Nonsense");
  LPOLESTR names[] = {name.data()};
  DISPID id = 0;
  EXPECT_EQ(dispatch_->GetIDsOfNames(IID_NULL, names, 1, 0, &id), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(id, DISPID_UNKNOWN);
}

TEST_F(DataObjectDispatch, PropertyPutAndGetByName) {
  ASSERT_EQ(data_->CreateEmptyData(10), S_OK);
  EXPECT_EQ(Invoke(dispatch_.get(), "Position", DISPATCH_PROPERTYPUT, {4}), S_OK);
  VARIANT result;
  EXPECT_EQ(Invoke(dispatch_.get(), "position", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_UI4);
  EXPECT_EQ(result.ulVal, 4u);
  ULONG direct = 0;
  data_->get_Position(&direct);
  EXPECT_EQ(direct, 4u);
}

TEST_F(DataObjectDispatch, MethodWithArgumentsAndObjectResult) {
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {3}), S_OK);
  VARIANT result;
  ASSERT_EQ(Invoke(dispatch_.get(), "Clone", DISPATCH_METHOD | DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  ComPtr<IEMSDataObject> clone;
  ASSERT_EQ(result.pdispVal->QueryInterface(IID_IEMSDataObject, clone.put_void()), S_OK);
  VariantClear(&result);
  ULONG size = 0;
  clone->get_DataSize(&size);
  EXPECT_EQ(size, 3u);
}

TEST_F(DataObjectDispatch, OmittedOptionalArgumentTakesItsDefault) {
  Arg text = Arg::Own(Utf16Variant(W("abc")));
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateDataArray", DISPATCH_METHOD, {text}), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), "abc");
  // An explicitly missing argument, as script engines pass it.
  VARIANT missing;
  VariantInit(&missing);
  missing.vt = VT_ERROR;
  missing.scode = DISP_E_PARAMNOTFOUND;
  Arg utf = Arg::Own(Utf16Variant(W("\xC3\xA9")));
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateDataArray", DISPATCH_METHOD, {utf, Arg(missing)}), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), "\xE9");
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateDataArray", DISPATCH_METHOD, {utf, 65001}), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), "\xC3\xA9");
}

TEST_F(DataObjectDispatch, ByReferenceArgumentsAreReadThroughTheReference) {
  VARIANT inner;
  VariantInit(&inner);
  inner.vt = VT_I4;
  inner.lVal = 6;
  VARIANT byref;
  VariantInit(&byref);
  byref.vt = VT_VARIANT | VT_BYREF;
  byref.pvarVal = &inner;
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {Arg(byref)}), S_OK);
  ULONG size = 0;
  data_->get_DataSize(&size);
  EXPECT_EQ(size, 6u);

  LONG n = 2;
  VARIANT longRef;
  VariantInit(&longRef);
  longRef.vt = VT_I4 | VT_BYREF;
  longRef.plVal = &n;
  EXPECT_EQ(Invoke(dispatch_.get(), "Position", DISPATCH_PROPERTYPUT, {Arg(longRef)}), S_OK);
  ULONG position = 0;
  data_->get_Position(&position);
  EXPECT_EQ(position, 2u);
}

TEST_F(DataObjectDispatch, IntegersArriveFromStringsDoublesAndShorts) {
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {"7"}), S_OK);
  VARIANT d;
  VariantInit(&d);
  d.vt = VT_R8;
  d.dblVal = 2.0;
  EXPECT_EQ(Invoke(dispatch_.get(), "Position", DISPATCH_PROPERTYPUT, {Arg(d)}), S_OK);
  ULONG position = 0;
  data_->get_Position(&position);
  EXPECT_EQ(position, 2u);
  VARIANT s;
  VariantInit(&s);
  s.vt = VT_I2;
  s.iVal = 3;
  EXPECT_EQ(Invoke(dispatch_.get(), "Position", DISPATCH_PROPERTYPUT, {Arg(s)}), S_OK);
  data_->get_Position(&position);
  EXPECT_EQ(position, 3u);
}

TEST_F(DataObjectDispatch, ConversionFailuresAreReported) {
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {"seven"}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {-1}), DISP_E_OVERFLOW);
  EXPECT_EQ(Invoke(dispatch_.get(), "CopyFrom", DISPATCH_METHOD, {"x"}), DISP_E_TYPEMISMATCH);
}

TEST_F(DataObjectDispatch, ArgumentCountsAreChecked) {
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {1, 2}), DISP_E_BADPARAMCOUNT);
}

TEST_F(DataObjectDispatch, UnknownMemberAndWrongKindAreNotFound) {
  DISPPARAMS none{nullptr, nullptr, 0, 0};
  EXPECT_EQ(dispatch_->Invoke(0x7000, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Invoke(dispatch_.get(), "DataSize", DISPATCH_PROPERTYPUT, {1}), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(dispatch_->Invoke(0x60020000, IID_IUnknown, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_UNKNOWNINTERFACE);
}

TEST_F(DataObjectDispatch, FailureStatusArrivesInTheException) {
  EXCEPINFO excep{};
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {0}, nullptr, &excep),
            DISP_E_EXCEPTION);
  EXPECT_EQ(excep.scode, E_INVALIDARG);
  SysFreeString(excep.bstrSource);
  SysFreeString(excep.bstrDescription);
  // Without a place for the exception the status itself comes back.
  EXPECT_EQ(Invoke(dispatch_.get(), "CreateEmptyData", DISPATCH_METHOD, {0}), E_INVALIDARG);
}

TEST_F(DataObjectDispatch, ArrayResultComesBackAsAVariant) {
  data_ = DataOf("xyz");
  ComPtr<IDispatch> d;
  data_->QueryInterface(IID_IDispatch, d.put_void());
  VARIANT result;
  ASSERT_EQ(Invoke(d.get(), "Data", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(BytesOf(result), "xyz");
  VariantClear(&result);
}

TEST_F(DataObjectDispatch, TypeInformationIsNotProvided) {
  UINT count = 5;
  EXPECT_EQ(dispatch_->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 0u);
}

}  // namespace
}  // namespace pv::test
