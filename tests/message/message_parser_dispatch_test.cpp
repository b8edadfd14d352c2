// Late binding of the message: the description of IEMSMessageParser in
// slot order with the documented dispatch identifiers, and a script-like
// session driven only through GetIDsOfNames and Invoke.
#include "src/com/dispatch.h"
#include "tests/message/message_test_util.h"

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

// The documented interface: operations in order, a property's put before
// its get, both under one identifier.
const Documented kDocumented[] = {
    {"InitNew", M, 0x60020000},
    {"Parse", M, 0x60020001},
    {"ParseObject", M, 0x60020002},
    {"AssembleObject", M, 0x60020003},
    {"CreateHeader", M, 0x60020004},
    {"CreateMimeHeader", M, 0x60020005},
    {"FindHeader", M, 0x60020006},
    {"FindMimeHeader", M, 0x60020007},
    {"AddPart", M, 0x60020008},
    {"RemovePart", M, 0x60020009},
    {"FindPart", M, 0x6002000A},
    {"FindParentPart", M, 0x6002000B},
    {"FindPartBySubType", M, 0x6002000C},
    {"ConvertToMultipart", M, 0x6002000D},
    {"AddAttach", M, 0x6002000E},
    {"IsMimeMessage", M, 0x6002000F},
    {"Size", G, 0x60020010},
    {"FullMessage", P, 0x60020011},
    {"FullMessage", G, 0x60020011},
    {"Subject", P, 0x60020013},
    {"Subject", G, 0x60020013},
    {"SenderName", P, 0x60020015},
    {"SenderName", G, 0x60020015},
    {"SenderEmail", P, 0x60020017},
    {"SenderEmail", G, 0x60020017},
    {"RecipientName", P, 0x60020019},
    {"RecipientName", G, 0x60020019},
    {"RecipientEmail", P, 0x6002001B},
    {"RecipientEmail", G, 0x6002001B},
    {"HeaderString", P, 0x6002001D},
    {"HeaderString", G, 0x6002001D},
    {"Body", P, 0x6002001F},
    {"Body", G, 0x6002001F},
    {"TextBody", P, 0x60020021},
    {"TextBody", G, 0x60020021},
    {"HTMLBody", P, 0x60020023},
    {"HTMLBody", G, 0x60020023},
    {"AllHeadersString", P, 0x60020025},
    {"AllHeadersString", G, 0x60020025},
    {"StoredMessageObject", P, 0x60020027},
    {"StoredMessageObject", G, 0x60020027},
    {"BodyObject", P, 0x60020029},
    {"BodyObject", G, 0x60020029},
    {"AllHeaders", P, 0x6002002B},
    {"AllHeaders", G, 0x6002002B},
    {"Headers", P, 0x6002002D},
    {"Headers", G, 0x6002002D},
    {"MimeHeaders", P, 0x6002002F},
    {"MimeHeaders", G, 0x6002002F},
    {"MimePart", P, 0x60020031},
    {"MimePart", G, 0x60020031},
    {"AttachParts", G, 0x60020033},
    {"DefaultCodePage", P, 0x60020034},
    {"DefaultCodePage", G, 0x60020034},
    {"DefaultEncoding", P, 0x60020036},
    {"DefaultEncoding", G, 0x60020036},
    {"TextCodePage", P, 0x60020038},
    {"TextCodePage", G, 0x60020038},
    {"HtmlCodePage", P, 0x6002003A},
    {"HtmlCodePage", G, 0x6002003A},
    {"TextEncoding", P, 0x6002003C},
    {"TextEncoding", G, 0x6002003C},
    {"HtmlEncoding", P, 0x6002003E},
    {"HtmlEncoding", G, 0x6002003E},
    {"AttachEncoding", P, 0x60020040},
    {"AttachEncoding", G, 0x60020040},
    {"AttachHeaderEncoding", P, 0x60020042},
    {"AttachHeaderEncoding", G, 0x60020042},
};

TEST(MessageDispatch, TheDescriptionIsTheDocumentedListInOrder) {
  const auto& members = DispatchTableOf<IEMSMessageParser>().members();
  ASSERT_EQ(members.size(), std::size(kDocumented));
  for (size_t i = 0; i < members.size(); ++i) {
    EXPECT_STREQ(members[i].name, kDocumented[i].name) << i;
    EXPECT_EQ(members[i].kind, kDocumented[i].kind) << kDocumented[i].name;
    EXPECT_EQ(members[i].id, kDocumented[i].id) << kDocumented[i].name;
  }
}

TEST(MessageDispatch, EveryDocumentedNameResolvesToItsIdentifierOnTheObject) {
  auto message = NewMessage();
  ComPtr<IDispatch> dispatch;
  ASSERT_EQ(message->QueryInterface(IID_IDispatch, dispatch.put_void()), S_OK);
  for (const Documented& d : kDocumented) EXPECT_EQ(IdOf(dispatch.get(), d.name), d.id) << d.name;
}

TEST(MessageDispatch, ArgumentCountsFollowTheOperations) {
  const auto& members = DispatchTableOf<IEMSMessageParser>().members();
  auto find = [&](const char* name, MemberKind kind) -> const DispatchMember* {
    for (const auto& m : members) {
      if (std::string(m.name) == name && m.kind == kind) return &m;
    }
    return nullptr;
  };
  const DispatchMember* findPart = find("FindPart", M);
  ASSERT_NE(findPart, nullptr);
  EXPECT_EQ(findPart->inCount, 2);
  EXPECT_TRUE(findPart->hasResult);
  const DispatchMember* headerPut = find("HeaderString", P);
  ASSERT_NE(headerPut, nullptr);
  EXPECT_EQ(headerPut->inCount, 2);
  EXPECT_FALSE(headerPut->hasResult);
  const DispatchMember* initNew = find("InitNew", M);
  ASSERT_NE(initNew, nullptr);
  EXPECT_EQ(initNew->inCount, 0);
  EXPECT_FALSE(initNew->hasResult);
}

// ---------------------------------------------------------------- a plain session by name
class MessageByName : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(message_->QueryInterface(IID_IDispatch, dispatch_.put_void()), S_OK); }

  std::string GetText(const char* name) {
    VARIANT result;
    VariantInit(&result);
    EXPECT_EQ(Invoke(dispatch_.get(), name, DISPATCH_PROPERTYGET, {}, &result), S_OK) << name;
    std::string text = result.vt == VT_BSTR ? U8(result.bstrVal) : "<not a string>";
    VariantClear(&result);
    return text;
  }

  ComPtr<IEMSMessageParser> message_ = NewMessage();
  ComPtr<IDispatch> dispatch_;
};

TEST_F(MessageByName, FullMessagePutSubjectAndHeaderStringByName) {
  EXPECT_EQ(
      Invoke(dispatch_.get(), "FullMessage", DISPATCH_PROPERTYPUT, {"Subject: hi\r\nTo: a@b\r\n\r\nbody"}),
      S_OK);
  EXPECT_EQ(GetText("subject"), "hi");
  EXPECT_EQ(Invoke(dispatch_.get(), "Subject", DISPATCH_PROPERTYPUT, {"there"}), S_OK);
  EXPECT_EQ(Invoke(dispatch_.get(), "HeaderString", DISPATCH_PROPERTYPUT, {"X-Id", "42"}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(dispatch_.get(), "HeaderString", DISPATCH_PROPERTYGET, {"x-id"}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "42");
  VariantClear(&result);
  EXPECT_EQ(GetText("RecipientEmail"), "a@b");
}

TEST_F(MessageByName, NumbersAndStatusesComeBackThroughInvoke) {
  EXPECT_EQ(Invoke(dispatch_.get(), "TextCodePage", DISPATCH_PROPERTYPUT, {65001}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(dispatch_.get(), "TextCodePage", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 65001);
  EXPECT_EQ(Invoke(dispatch_.get(), "IsMimeMessage", DISPATCH_METHOD, {}), E_FAIL);
  EXPECT_EQ(Invoke(dispatch_.get(), "Parse", DISPATCH_METHOD, {}), E_POINTER);
}

// ---------------------------------------------------------------- a script's session
TEST_F(MessageByName, AScriptParsesEditsAttachesAndAssembles) {
  ASSERT_EQ(Invoke(dispatch_.get(), "FullMessage", DISPATCH_PROPERTYPUT,
                   {"From: Ann <ann@example.com>\r\nSubject: hello\r\n\r\nold body\r\n"}),
            S_OK);
  EXPECT_EQ(GetText("Subject"), "hello");
  EXPECT_EQ(Invoke(dispatch_.get(), "Subject", DISPATCH_PROPERTYPUT, {"report"}), S_OK);
  EXPECT_EQ(Invoke(dispatch_.get(), "TextBody", DISPATCH_PROPERTYPUT, {"new body\r\n"}), S_OK);

  // The attachment's bytes, in a data object filled by name as well.
  auto data = Create<IEMSDataObject>(CLSID_EMSDataObject);
  ComPtr<IDispatch> dataDispatch;
  ASSERT_EQ(data->QueryInterface(IID_IDispatch, dataDispatch.put_void()), S_OK);
  ASSERT_EQ(
      Invoke(dataDispatch.get(), "CreateDataArray", DISPATCH_METHOD, {Arg::Own(ByteVariant("%PDF-1.4"))}),
      S_OK);
  EXPECT_EQ(
      Invoke(dispatch_.get(), "AddAttach", DISPATCH_METHOD, {"C:\\out\\report.pdf", Arg(dataDispatch.get())}),
      S_OK);

  std::string full = GetText("FullMessage");
  EXPECT_NE(full.find("Subject: "), std::string::npos);
  EXPECT_NE(full.find("filename=\"report.pdf\""), std::string::npos);
  EXPECT_EQ(full.find("old body"), std::string::npos);

  // Parsed again by name: the attachment is listed and decodes to its bytes.
  auto other = NewMessage();
  ComPtr<IDispatch> otherDispatch;
  ASSERT_EQ(other->QueryInterface(IID_IDispatch, otherDispatch.put_void()), S_OK);
  ASSERT_EQ(Invoke(otherDispatch.get(), "FullMessage", DISPATCH_PROPERTYPUT, {full.c_str()}), S_OK);
  VARIANT result;
  VariantInit(&result);
  ASSERT_EQ(Invoke(otherDispatch.get(), "AttachParts", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  ASSERT_NE(result.pdispVal, nullptr);
  ComPtr<IEMSMimeParts> parts;
  ASSERT_EQ(result.pdispVal->QueryInterface(IID_IEMSMimeParts, parts.put_void()), S_OK);
  VariantClear(&result);
  ASSERT_EQ(Number(parts.get(), &IEMSMimeParts::get_PartsCount), 1);
  ComPtr<IEMSMimePart> part;
  parts->get_Part(0, part.put());
  EXPECT_EQ(DecodedBytes(part.get()), "%PDF-1.4");
  VariantInit(&result);
  ASSERT_EQ(Invoke(otherDispatch.get(), "TextBody", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(U8(result.bstrVal), "new body\r\n");
  VariantClear(&result);
  VariantInit(&result);
  ASSERT_EQ(Invoke(otherDispatch.get(), "Subject", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(U8(result.bstrVal), "report");
  VariantClear(&result);
}

}  // namespace
}  // namespace pv::test
