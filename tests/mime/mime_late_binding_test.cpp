// Late binding of the part, the parts list, the part decoder and encoder:
// their descriptions with the documented dispatch identifiers, and
// script-like sessions driven only through GetIDsOfNames and Invoke.
#include <iterator>

#include "src/com/dispatch.h"
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

struct Documented {
  const char* name;
  MemberKind kind;
  DISPID id;
};

constexpr MemberKind M = MemberKind::kMethod;
constexpr MemberKind G = MemberKind::kGet;
constexpr MemberKind P = MemberKind::kPut;

const Documented kPart[] = {
    {"ParsePartObject", M, 0x60020000},
    {"BodyObject", P, 0x60020001},
    {"BodyObject", G, 0x60020001},
    {"Headers", G, 0x60020003},
    {"Headers", P, 0x60020003},
    {"MimeParts", G, 0x60020005},
    {"MimeParts", P, 0x60020005},
    {"DefaultCodePage", G, 0x60020007},
    {"DefaultCodePage", P, 0x60020007},
    {"DefaultEncoding", G, 0x60020009},
    {"DefaultEncoding", P, 0x60020009},
    {"DefaultHeaderEncoding", G, 0x6002000B},
    {"DefaultHeaderEncoding", P, 0x6002000B},
    {"AssemblePartObject", M, 0x6002000D},
    {"CreateHeader", M, 0x6002000E},
    {"FindHeader", M, 0x6002000F},
    {"RemovePart", M, 0x60020010},
    {"FindPart", M, 0x60020011},
    {"FindParentPart", M, 0x60020012},
    {"FindPartBySubType", M, 0x60020013},
    {"ConvertToMultipart", M, 0x60020014},
    {"CreateAttach", M, 0x60020015},
    {"DecodedBinary", P, 0x60020016},
    {"DecodedBinary", G, 0x60020016},
    {"DecodedBody", P, 0x60020018},
    {"DecodedBody", G, 0x60020018},
    {"AttachName", G, 0x6002001A},
    {"MimeType", G, 0x6002001B},
    {"MimeSubType", G, 0x6002001C},
    {"MimeContentTypeString", G, 0x6002001D},
    {"IsAttachPart", G, 0x6002001E},
    {"IsAttachPart", P, 0x6002001E},
};

const Documented kParts[] = {
    {"AddPart", M, 0x60020000},    {"AppendParts", M, 0x60020001}, {"RemovePart", M, 0x60020002},
    {"RemoveAll", M, 0x60020003},  {"Part", G, 0x60020004},        {"Part", P, 0x60020004},
    {"PartsCount", G, 0x60020006},
};

template <class I, size_t N>
void ExpectDescription(const Documented (&documented)[N]) {
  const auto& members = DispatchTableOf<I>().members();
  ASSERT_EQ(members.size(), N);
  for (size_t i = 0; i < N; ++i) {
    EXPECT_STREQ(members[i].name, documented[i].name) << i;
    EXPECT_EQ(members[i].kind, documented[i].kind) << documented[i].name;
    EXPECT_EQ(members[i].id, documented[i].id) << documented[i].name;
  }
}

TEST(MimeLateBinding, DescriptionsAreTheDocumentedListsInOrder) {
  ExpectDescription<IEMSMimePart>(kPart);
  ExpectDescription<IEMSMimeParts>(kParts);
  const Documented decoder[] = {{"DecodePart", M, 0x60020000}};
  ExpectDescription<IEMSMimePartDecoder>(decoder);
  const Documented encoder[] = {{"EncodePart", M, 0x60020000}};
  ExpectDescription<IEMSMimePartEncoder>(encoder);
}

TEST(MimeLateBinding, EveryNameResolvesOnTheObjectsIgnoringCase) {
  auto part = NewPart();
  for (const Documented& d : kPart) EXPECT_EQ(IdOf(part.get(), d.name), d.id) << d.name;
  EXPECT_EQ(IdOf(part.get(), "parsepartobject"), 0x60020000);
  auto parts = NewParts();
  for (const Documented& d : kParts) EXPECT_EQ(IdOf(parts.get(), d.name), d.id) << d.name;
  EXPECT_EQ(IdOf(Create<IEMSMimePartDecoder>(CLSID_EMSMimePartDecoder).get(), "DECODEPART"), 0x60020000);
  EXPECT_EQ(IdOf(Create<IEMSMimePartEncoder>(CLSID_EMSMimePartEncoder).get(), "encodepart"), 0x60020000);
}

// The object a result variant holds, as interface I.
template <class I>
ComPtr<I> ObjectOf(VARIANT* result) {
  ComPtr<I> object;
  if (result->vt == VT_DISPATCH && result->pdispVal != nullptr) {
    result->pdispVal->QueryInterface(IidOf<I>::Get(), object.put_void());
  }
  VariantClear(result);
  return object;
}

TEST(MimeLateBinding, PartSessionByName) {
  auto part = NewPart();
  auto data = DataOf("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nA: 1\r\n\r\nx\r\n--b--");
  EXPECT_EQ(Invoke(part.get(), "ParsePartObject", DISPATCH_METHOD, {Arg(data.get())}), S_OK);

  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(part.get(), "MimeParts", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  auto parts = ObjectOf<IEMSMimeParts>(&result);
  ASSERT_TRUE(parts);
  EXPECT_EQ(Invoke(parts.get(), "PartsCount", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 1);
  EXPECT_EQ(Invoke(parts.get(), "Part", DISPATCH_PROPERTYGET, {0}, &result), S_OK);
  auto child = ObjectOf<IEMSMimePart>(&result);
  ASSERT_TRUE(child);

  EXPECT_EQ(Invoke(child.get(), "BodyObject", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  auto body = ObjectOf<IEMSDataObject>(&result);
  ASSERT_TRUE(body);
  EXPECT_EQ(SpanBytes(body.get()), "x");

  EXPECT_EQ(Invoke(part.get(), "MimeType", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 5);
  EXPECT_EQ(Invoke(part.get(), "FindPartBySubType", DISPATCH_METHOD, {18}, &result), S_OK);
  EXPECT_EQ(ObjectOf<IEMSMimePart>(&result).get(), child.get());
  EXPECT_EQ(Invoke(part.get(), "FindPartBySubType", DISPATCH_METHOD, {8}, &result), E_FAIL);
  VariantClear(&result);
  EXPECT_EQ(Invoke(part.get(), "IsAttachPart", DISPATCH_PROPERTYPUT, {1}), S_OK);
  EXPECT_EQ(Invoke(part.get(), "IsAttachPart", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 1);
  EXPECT_EQ(Invoke(part.get(), "AssemblePartObject", DISPATCH_METHOD, {}, &result), S_OK);
  auto assembled = ObjectOf<IEMSDataObject>(&result);
  ASSERT_TRUE(assembled);
  EXPECT_EQ(SpanBytes(assembled.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
}

TEST(MimeLateBinding, CreateAttachLeftOutArgumentsAreZeroAndTheTextZero) {
  auto part = NewPart();
  auto data = DataOf("%PDF");
  EXPECT_EQ(Invoke(part.get(), "CreateAttach", DISPATCH_METHOD, {"report.pdf", Arg(data.get())}), S_OK);
  // Embedded 0 writes a disposition; the three strings are "0" each.
  EXPECT_NE(RawField(part.get(), "Content-Disposition"), kNone);
  EXPECT_EQ(RawField(part.get(), "Content-ID"), "0");
  EXPECT_EQ(RawField(part.get(), "Content-Location"), "0");
  EXPECT_EQ(RawField(part.get(), "Content-Type"), "0;\r\n\tname=\"report.pdf\"");
}

TEST(MimeLateBinding, DecodedBodyByName) {
  auto part = NewPart();
  EXPECT_EQ(Invoke(part.get(), "DecodedBody", DISPATCH_PROPERTYPUT, {"hello"}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(part.get(), "DecodedBody", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "hello");
  VariantClear(&result);
  EXPECT_EQ(Invoke(part.get(), "AttachName", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  VariantClear(&result);
}

TEST(MimeLateBinding, PartsListSessionByName) {
  auto parts = NewParts();
  auto a = NewPart();
  EXPECT_EQ(Invoke(parts.get(), "AddPart", DISPATCH_METHOD, {Arg(a.get())}), S_OK);
  EXPECT_EQ(Invoke(parts.get(), "AddPart", DISPATCH_METHOD, {Arg(a.get())}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(parts.get(), "Part", DISPATCH_PROPERTYGET, {-1}, &result), E_INVALIDARG);
  EXPECT_EQ(Invoke(parts.get(), "RemovePart", DISPATCH_METHOD, {0}), S_OK);
  EXPECT_EQ(Invoke(parts.get(), "PartsCount", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 1);
  EXPECT_EQ(Invoke(parts.get(), "RemoveAll", DISPATCH_METHOD, {}), S_OK);
  EXPECT_EQ(Invoke(parts.get(), "PartsCount", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 0);
}

TEST(MimeLateBinding, DecoderByName) {
  auto decoder = Create<IEMSMimePartDecoder>(CLSID_EMSMimePartDecoder);
  auto part = Parsed("Content-Transfer-Encoding: base64\r\n\r\nSGk=");
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(decoder.get(), "DecodePart", DISPATCH_METHOD, {Arg(part.get())}, &result), S_OK);
  auto decoded = ObjectOf<IEMSDataObject>(&result);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(SpanBytes(decoded.get()), "Hi");
}

TEST(MimeLateBinding, EncoderNameLeftOutIsTheTextZero) {
  auto encoder = Create<IEMSMimePartEncoder>(CLSID_EMSMimePartEncoder);
  auto part = NewPart();
  part->put_DefaultEncoding(4);
  part->put_BodyObject(DataOf("a").get());
  EXPECT_EQ(Invoke(encoder.get(), "EncodePart", DISPATCH_METHOD, {Arg(part.get())}), S_OK);
  EXPECT_EQ(BodyOf(part.get()).substr(0, 13), "begin 644 0\r\n");
  part->put_BodyObject(DataOf("a").get());
  EXPECT_EQ(Invoke(encoder.get(), "EncodePart", DISPATCH_METHOD, {Arg(part.get()), "x.bin"}), S_OK);
  EXPECT_EQ(BodyOf(part.get()).substr(0, 17), "begin 644 x.bin\r\n");
}

}  // namespace
}  // namespace pv::test
