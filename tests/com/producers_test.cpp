// The generated producers: every operation checks its result place for
// null before the class's code runs, turns exceptions into statuses, and
// gives way to an operation that a class writes by hand.
#include <stdexcept>

#include "src/com/com_object.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

// A class of these tests alone, on the library's frame. Its interface has
// an interface in-parameter (AddPart), an interface result place (Part
// get), a number result place (PartsCount) and operations without
// parameters (RemoveAll). Every plain implementation counts its calls and
// throws what the test asks for.
class ProbeParts final : public ComObject<ProbeParts, IEMSMimeParts> {
 public:
  enum class Throw { kNothing, kBadAlloc, kRuntimeError, kInt };

  explicit ProbeParts(IUnknown* outer) : ComObject(outer) {}

  HRESULT DoAddPart(IEMSMimePart* pVal) {
    Enter();
    added = pVal;
    return S_OK;
  }
  HRESULT DoAppendParts(IEMSMimeParts*) {
    Enter();
    return S_FALSE;
  }
  HRESULT DoRemovePart(LONG nIdx) {
    Enter();
    lastIndex = nIdx;
    return S_OK;
  }
  HRESULT DoRemoveAll() {
    Enter();
    return S_OK;
  }
  HRESULT GetPart(LONG nIdx, IEMSMimePart** ppVal) {
    Enter();
    lastIndex = nIdx;
    *ppVal = nullptr;
    return S_FALSE;
  }
  HRESULT PutPart(LONG nIdx, IEMSMimePart*) {
    Enter();
    lastIndex = nIdx;
    return S_OK;
  }
  // Written by hand: a missing result place is allowed, and the status is
  // this class's own.
  HRESULT STDMETHODCALLTYPE get_PartsCount(LONG* pVal) override {
    ++handWrittenCalls;
    if (pVal != nullptr) *pVal = 7;
    return S_FALSE;
  }

  Throw next = Throw::kNothing;
  int plainCalls = 0;
  int handWrittenCalls = 0;
  LONG lastIndex = -1;
  IEMSMimePart* added = reinterpret_cast<IEMSMimePart*>(this);  // anything but null

 private:
  void Enter() {
    ++plainCalls;
    switch (next) {
      case Throw::kNothing:
        return;
      case Throw::kBadAlloc:
        throw std::bad_alloc();
      case Throw::kRuntimeError:
        throw std::runtime_error("probe");
      case Throw::kInt:
        throw 42;
    }
  }
};

ComPtr<ProbeParts> MakeProbe() {
  ComPtr<ProbeParts> probe;
  EXPECT_EQ(MakeObject(&probe), S_OK);
  return probe;
}

TEST(Producers, NullResultPlaceIsEPointerBeforeThePlainImplementationRuns) {
  ComPtr<ProbeParts> probe = MakeProbe();
  IEMSMimeParts* parts = probe.get();
  EXPECT_EQ(parts->get_Part(3, nullptr), E_POINTER);
  EXPECT_EQ(probe->plainCalls, 0);
  EXPECT_EQ(probe->lastIndex, -1);

  IEMSMimePart* part = reinterpret_cast<IEMSMimePart*>(probe.get());
  EXPECT_EQ(parts->get_Part(3, &part), S_FALSE);
  EXPECT_EQ(part, nullptr);
  EXPECT_EQ(probe->plainCalls, 1);
  EXPECT_EQ(probe->lastIndex, 3);
}

TEST(Producers, InterfaceInParametersAreNotResultPlaces) {
  ComPtr<ProbeParts> probe = MakeProbe();
  IEMSMimeParts* parts = probe.get();
  EXPECT_EQ(parts->AddPart(nullptr), S_OK);
  EXPECT_EQ(probe->added, nullptr);
  EXPECT_EQ(parts->AppendParts(nullptr), S_FALSE);
  EXPECT_EQ(parts->put_Part(5, nullptr), S_OK);
  EXPECT_EQ(probe->lastIndex, 5);
  EXPECT_EQ(probe->plainCalls, 3);
}

TEST(Producers, ExhaustedMemoryInAPlainImplementationIsEOutOfMemory) {
  ComPtr<ProbeParts> probe = MakeProbe();
  IEMSMimeParts* parts = probe.get();
  probe->next = ProbeParts::Throw::kBadAlloc;
  EXPECT_EQ(parts->RemoveAll(), E_OUTOFMEMORY);
  EXPECT_EQ(parts->RemovePart(1), E_OUTOFMEMORY);
  IEMSMimePart* part = nullptr;
  EXPECT_EQ(parts->get_Part(0, &part), E_OUTOFMEMORY);
  EXPECT_EQ(probe->plainCalls, 3);
}

TEST(Producers, AnyOtherExceptionInAPlainImplementationIsEUnexpected) {
  ComPtr<ProbeParts> probe = MakeProbe();
  IEMSMimeParts* parts = probe.get();
  probe->next = ProbeParts::Throw::kRuntimeError;
  EXPECT_EQ(parts->RemoveAll(), E_UNEXPECTED);
  EXPECT_EQ(parts->put_Part(0, nullptr), E_UNEXPECTED);
  probe->next = ProbeParts::Throw::kInt;
  EXPECT_EQ(parts->AddPart(nullptr), E_UNEXPECTED);
  EXPECT_EQ(probe->plainCalls, 3);
  probe->next = ProbeParts::Throw::kNothing;
  EXPECT_EQ(parts->RemoveAll(), S_OK);
}

TEST(Producers, AHandWrittenOperationIsTheOneCalled) {
  ComPtr<ProbeParts> probe = MakeProbe();
  IEMSMimeParts* parts = probe.get();
  EXPECT_EQ(parts->get_PartsCount(nullptr), S_FALSE);  // no E_POINTER from the producer
  LONG count = 0;
  EXPECT_EQ(parts->get_PartsCount(&count), S_FALSE);
  EXPECT_EQ(count, 7);
  EXPECT_EQ(probe->handWrittenCalls, 2);
  EXPECT_EQ(probe->plainCalls, 0);

  // Late binding calls through the interface, so it reaches the same body.
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(parts, "PartsCount", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 7);
  EXPECT_EQ(probe->handWrittenCalls, 3);
}

// ---------------------------------------------------------------- the library's classes
// One class per kind of result place: a null place is E_POINTER, and
// nothing else happens.
TEST(Producers, NullBstrPlaceIsEPointerBeforeTheIndexIsLookedAt) {
  auto mailboxes = Create<IEMSHeaderMailboxes>(CLSID_EMSHeaderMailboxes);
  EXPECT_EQ(mailboxes->get_MailboxName(5, nullptr), E_POINTER);
  EXPECT_EQ(mailboxes->get_EncodedMailbox(-1, nullptr), E_POINTER);
  auto charset = Create<IEMSHeaderCharset>(CLSID_EMSHeaderCharset);
  EXPECT_EQ(charset->ParseHeader(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(charset->AssembleHeader(B("x").get(), nullptr), E_POINTER);
}

TEST(Producers, NullNumberPlacesAreEPointer) {
  auto attributes = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  EXPECT_EQ(attributes->get_AttributesCount(nullptr), E_POINTER);
  auto data = DataOf("abc");
  EXPECT_EQ(data->get_DataSize(nullptr), E_POINTER);
  EXPECT_EQ(data->get_Position(nullptr), E_POINTER);
  auto message = Create<IEMSMessageParser>(CLSID_EMSMessageParser);
  EXPECT_EQ(message->get_TextCodePage(nullptr), E_POINTER);  // a stored number
  EXPECT_EQ(message->get_Size(nullptr), E_POINTER);
}

TEST(Producers, NullVariantPlaceIsEPointer) {
  auto data = DataOf("abc");
  EXPECT_EQ(data->get_Data(nullptr), E_POINTER);
  EXPECT_EQ(AllBytes(data.get()), "abc");
}

TEST(Producers, NullInterfacePlaceIsEPointerAndNothingIsMade) {
  auto attributes = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  EXPECT_EQ(attributes->CreateAttribute(B("charset").get(), nullptr), E_POINTER);
  LONG count = -1;
  EXPECT_EQ(attributes->get_AttributesCount(&count), S_OK);
  EXPECT_EQ(count, 0);

  auto data = DataOf("abcdef");
  EXPECT_EQ(data->put_Position(2), S_OK);
  EXPECT_EQ(data->put_Length(3), S_OK);
  EXPECT_EQ(data->ExtractBlockAsData(nullptr), E_POINTER);
  EXPECT_EQ(SpanBytes(data.get()), "cde");
}

// Operations that a class writes by hand keep their own statuses.
TEST(Producers, HandWrittenOperationsOfTheLibraryKeepTheirStatuses) {
  auto message = Create<IEMSMessageParser>(CLSID_EMSMessageParser);
  EXPECT_EQ(message->get_Subject(nullptr), E_INVALIDARG);
  EXPECT_EQ(message->get_RecipientEmail(nullptr), E_INVALIDARG);

  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  ComPtr<IEMSContentType> type;
  ASSERT_EQ(field->QueryInterface(IidOf<IEMSContentType>::Get(), type.put_void()), S_OK);
  EXPECT_EQ(type->CreateBoundary(1, nullptr), S_OK);  // the boundary is set all the same
  Bstr boundary;
  EXPECT_EQ(type->get_Boundary(boundary.put()), S_OK);
  EXPECT_FALSE(boundary.view().empty());

  auto data = Create<IEMSDataObject>(CLSID_EMSDataObject);
  EXPECT_EQ(data->CreateEmptyData(0), E_INVALIDARG);
}

}  // namespace
}  // namespace pv::test
