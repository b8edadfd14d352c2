// EMSMimePart content: attachments, their names, decoded bytes and text,
// and content types.
#include <cstdlib>

#include "src/mime/mime_part.h"
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

// The content-type database of this test program is the fixture's: the
// process reads it on the first lookup, after every static initializer.
const bool kFixtureDatabase = [] {
  setenv("PARCELVANE_MIME_TYPES", PARCELVANE_TEST_FIXTURES "/mime/mime.types", 1);
  return true;
}();

std::string AttachNameOf(IEMSMimePart* part) {
  Bstr name;
  EXPECT_EQ(part->get_AttachName(name.put()), S_OK);
  return U8(name);
}

std::string FileNameOf(IEMSMimePart* part) {
  ComPtr<IEMSMessageParameter> field = FieldOf(part, "Content-Disposition");
  if (!field) return kNone;
  ComPtr<IEMSContentDisposition> disposition;
  EXPECT_EQ(field.As(&disposition), S_OK);
  Bstr name;
  disposition->get_FileName(name.put());
  return name.is_null() ? kNone : U8(name);
}

std::string ParameterOf(IEMSMimePart* part, std::string_view fieldName, std::string_view parameter) {
  ComPtr<IEMSMessageParameter> field = FieldOf(part, fieldName);
  if (!field) return kNone;
  ComPtr<IEMSMimeAttribute> attribute;
  field->FindAttribute(B(parameter).get(), attribute.put());
  if (!attribute) return kNone;
  Bstr value;
  attribute->get_DecodedValue(value.put());
  return U8(value);
}

std::string DecodedData(IEMSMimePart* part, std::string_view fieldName) {
  ComPtr<IEMSMessageParameter> field = FieldOf(part, fieldName);
  if (!field) return kNone;
  Bstr value;
  field->get_DecodedData(value.put());
  return U8(value);
}

std::string ContentTypeText(IEMSMimePart* part) {
  Bstr text;
  EXPECT_EQ(part->get_MimeContentTypeString(text.put()), S_OK);
  return text.is_null() ? kNone : U8(text);
}

HRESULT Attach(IEMSMimePart* part, std::string_view name, std::string_view bytes, LONG embedded = 0,
               std::string_view id = "", std::string_view location = "", std::string_view type = "") {
  return part->CreateAttach(B(name).get(), DataOf(bytes).get(), embedded, B(id).get(), B(location).get(),
                            B(type).get());
}

std::string DecodedBinaryOf(IEMSMimePart* part, HRESULT expected = S_OK) {
  ComPtr<IEMSDataObject> decoded;
  EXPECT_EQ(part->get_DecodedBinary(decoded.put()), expected);
  return decoded ? SpanBytes(decoded.get()) : kNone;
}

// ---------------------------------------------------------------- CreateAttach
TEST(CreateAttach, NameFromAPathAndContentTypeFromTheExtension) {
  auto part = NewPart();
  EXPECT_EQ(Attach(part.get(), "C:\\dir\\report.pdf", "%PDF"), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-Type"), "application/pdf;\r\n\tname=\"report.pdf\"");
  EXPECT_EQ(ParameterOf(part.get(), "Content-Type", "name"), "report.pdf");
  EXPECT_EQ(FileNameOf(part.get()), "report.pdf");
  EXPECT_EQ(AttachFlag(part.get()), 1);
  EXPECT_EQ(BodyOf(part.get()), "%PDF");
  EXPECT_EQ(RawField(part.get(), "Content-Transfer-Encoding"), "7bit");
}

TEST(CreateAttach, FieldsAreWrittenInOrder) {
  auto part = NewPart();
  ASSERT_EQ(Attach(part.get(), "/tmp/a.txt", "hello"), S_OK);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: text/plain;\r\n\tname=\"a.txt\"\r\n"
            "Content-Disposition: ;\r\n\tfilename=\"a.txt\"\r\n"
            "Content-Transfer-Encoding: 7bit\r\n\r\nhello");
}

TEST(CreateAttach, EmbeddedObjectGetsNoDispositionAndItsIdAsGiven) {
  auto part = NewPart();
  EXPECT_EQ(Attach(part.get(), "logo.gif", "GIF", 1, "part1.abc@host", "http://x/logo.gif"), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-Disposition"), kNone);
  EXPECT_EQ(DecodedData(part.get(), "Content-ID"), "part1.abc@host");
  EXPECT_EQ(DecodedData(part.get(), "Content-Location"), "http://x/logo.gif");
  EXPECT_EQ(RawField(part.get(), "Content-Type"), "image/gif;\r\n\tname=\"logo.gif\"");
}

TEST(CreateAttach, EmptyIdAndLocationWriteNoFields) {
  auto part = NewPart();
  ASSERT_EQ(Attach(part.get(), "a.pdf", "x"), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-ID"), kNone);
  EXPECT_EQ(RawField(part.get(), "Content-Location"), kNone);
}

TEST(CreateAttach, GivenContentTypeIsUsedAsItStands) {
  auto part = NewPart();
  ASSERT_EQ(Attach(part.get(), "a.pdf", "x", 0, "", "", "application/x-custom"), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-Type"), "application/x-custom;\r\n\tname=\"a.pdf\"");
}

TEST(CreateAttach, UnknownExtensionGivesOctetStream) {
  auto part = NewPart();
  ASSERT_EQ(Attach(part.get(), "data.zzq", "x"), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-Type"), "application/octet-stream;\r\n\tname=\"data.zzq\"");
  part = NewPart();
  ASSERT_EQ(Attach(part.get(), "noextension", "x"), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-Type"), "application/octet-stream;\r\n\tname=\"noextension\"");
}

TEST(CreateAttach, ExtensionHoldingABlankIsPartOfTheName) {
  auto part = NewPart();
  ASSERT_EQ(Attach(part.get(), "dir/my file.a b", "x"), S_OK);
  EXPECT_EQ(ParameterOf(part.get(), "Content-Type", "name"), "my file.a b");
  EXPECT_EQ(RawField(part.get(), "Content-Type").substr(0, 25), "application/octet-stream;");
}

TEST(CreateAttach, BodyIsEncodedByTheDefaultEncoding) {
  auto part = NewPart();
  part->put_DefaultEncoding(2);
  ASSERT_EQ(Attach(part.get(), "a.bin", "\x01\x02\x03"), S_OK);
  EXPECT_EQ(BodyOf(part.get()), "AQID");
  EXPECT_EQ(RawField(part.get(), "Content-Transfer-Encoding"), "base64");
  EXPECT_EQ(DecodedBinaryOf(part.get()), "\x01\x02\x03");
}

TEST(CreateAttach, FailedEncodingKeepsTheFieldsButSetsNoFlag) {
  auto part = NewPart();
  part->put_DefaultEncoding(2);
  EXPECT_EQ(Attach(part.get(), "empty.pdf", ""), E_FAIL);
  EXPECT_EQ(FileNameOf(part.get()), "empty.pdf");
  EXPECT_EQ(AttachFlag(part.get()), 0);
}

TEST(CreateAttach, MissingObjectIsAPointerError) {
  auto part = NewPart();
  EXPECT_EQ(part->CreateAttach(B("a.pdf").get(), nullptr, 0, nullptr, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(FieldCount(part.get()), 0);
}

TEST(CreateAttach, MissingStringsReadAsEmpty) {
  auto part = NewPart();
  EXPECT_EQ(part->CreateAttach(nullptr, DataOf("x").get(), 0, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-ID"), kNone);
  EXPECT_EQ(RawField(part.get(), "Content-Type").substr(0, 24), "application/octet-stream");
}

// ---------------------------------------------------------------- AttachName
TEST(AttachName, NameParameterHasUnsafeCharactersReplaced) {
  auto part = Parsed("Content-Type: image/gif; name=\"a:b\"\r\n\r\nGIF");
  EXPECT_EQ(AttachNameOf(part.get()), "a_b.gif");
  part = Parsed("Content-Type: image/x-unlisted; name=\"a:b\"\r\n\r\nGIF");
  EXPECT_EQ(AttachNameOf(part.get()), "a_b.att");
  part = Parsed("Content-Type: text/plain; name=\"<a>|\\\"*?\x01.txt\"\r\n\r\nx");
  EXPECT_EQ(AttachNameOf(part.get()), "_a_______.txt");
}

TEST(AttachName, MessageWithoutNamingFieldsIsNoNameEml) {
  auto part = Parsed("Content-Type: message/rfc822\r\n\r\nSubject: x\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), "NoName.eml");
}

TEST(AttachName, PartWithoutFieldsIsNoNameAtt) {
  auto part = Parsed("\r\n\r\nx");
  EXPECT_EQ(AttachNameOf(part.get()), "NoName.att");
}

TEST(AttachName, FileNameWithADirectoryKeepsTheLastComponent) {
  auto part =
      Parsed("Content-Type: text/plain\r\nContent-Disposition: attachment; filename=\"x/y.txt\"\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), "y.txt");
}

TEST(AttachName, FileNameIsUsedAsItStands) {
  auto part = Parsed("Content-Disposition: attachment; filename=\"a*b.pdf\"\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), "a*b.pdf");
}

TEST(AttachName, ExtensionWithABlankTakesOneFromTheContentType) {
  auto part =
      Parsed("Content-Type: text/plain\r\nContent-Disposition: attachment; filename=\"my file.a b\"\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), "my file.a b.txt");
}

TEST(AttachName, FileNameComesBeforeDescriptionAndDescriptionBeforeName) {
  auto part = Parsed(
      "Content-Type: text/plain; name=n.txt\r\nContent-Description: d.pdf\r\n"
      "Content-Disposition: attachment; filename=f.htm\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), "f.htm");
  part = Parsed("Content-Type: text/plain; name=n.txt\r\nContent-Description: d.pdf\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), "d.pdf");
  part = Parsed("Content-Type: text/plain; name=n.txt\r\nContent-Disposition: attachment\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), "n.txt");
}

TEST(AttachName, EmptyNameParameterIsAnEmptyName) {
  auto part = Parsed("Content-Type: text/html; name=\"\"\r\n\r\n");
  EXPECT_EQ(AttachNameOf(part.get()), ".htm");
}

TEST(AttachName, MissingResultPlaceIsAPointerError) {
  EXPECT_EQ(NewPart()->get_AttachName(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- DecodedBinary
TEST(DecodedBinary, DecodesTheBodyByItsTransferEncoding) {
  auto part = Parsed("Content-Transfer-Encoding: base64\r\n\r\nSGVsbG8=\r\n");
  EXPECT_EQ(DecodedBinaryOf(part.get()), "Hello");
}

TEST(DecodedBinary, PartWithoutABodyOfItsOwnGivesFalse) {
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nx"}));
  EXPECT_EQ(DecodedBinaryOf(part.get(), S_FALSE), kNone);
  EXPECT_EQ(DecodedBinaryOf(NewPart().get(), S_FALSE), kNone);
}

TEST(DecodedBinary, BodyThatDecodesToNothingGivesFalse) {
  auto part = Parsed("Content-Transfer-Encoding: base64\r\n\r\nQ");
  EXPECT_EQ(DecodedBinaryOf(part.get(), S_FALSE), kNone);
}

TEST(DecodedBinary, PutStoresAndEncodesTheBytes) {
  auto part = NewPart();
  part->put_DefaultEncoding(1);
  EXPECT_EQ(part->put_DecodedBinary(DataOf("x = 1\r\n").get()), S_OK);
  EXPECT_EQ(BodyOf(part.get()), "x =3D 1=0D=0A");
  EXPECT_EQ(RawField(part.get(), "Content-Transfer-Encoding"), "quoted-printable");
  EXPECT_EQ(DecodedBinaryOf(part.get()), "x = 1\r\n");
}

TEST(DecodedBinary, PutWithUuencodeWritesAnEmptyName) {
  auto part = NewPart();
  part->put_DefaultEncoding(4);
  ASSERT_EQ(part->put_DecodedBinary(DataOf("a").get()), S_OK);
  EXPECT_EQ(BodyOf(part.get()), "begin 644 \r\n!82`@\r\n`\r\nend\r\n");
}

TEST(DecodedBinary, PutReturnsTheEncodersFailure) {
  auto part = NewPart();
  part->put_DefaultEncoding(9);
  EXPECT_EQ(part->put_DecodedBinary(DataOf("x").get()), E_FAIL);
  EXPECT_EQ(BodyOf(part.get()), "x");  // stored before the encoding failed
  EXPECT_EQ(part->put_DecodedBinary(nullptr), E_POINTER);
  EXPECT_EQ(part->get_DecodedBinary(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- DecodedBody
TEST(DecodedBody, PutOnAPartWithoutContentTypeMakesTextPlainWithACharset) {
  auto part = NewPart();
  EXPECT_EQ(part->put_DecodedBody(B("caf\xC3\xA9").get()), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-Type"), "text/plain;\r\n\tcharset=\"windows-1252\"");
  EXPECT_EQ(BodyOf(part.get()), "caf\xE9");
  EXPECT_EQ(RawField(part.get(), "Content-Transfer-Encoding"), "8bit");
}

TEST(DecodedBody, PutKeepsAnExistingTypeAndWritesTheCharsetOfTheCodePage) {
  auto part = Parsed("Content-Type: text/html; charset=us-ascii\r\n\r\n");
  part->put_DefaultCodePage(65001);
  EXPECT_EQ(part->put_DecodedBody(B("caf\xC3\xA9").get()), S_OK);
  EXPECT_EQ(ContentTypeText(part.get()), "text/html");
  EXPECT_EQ(ParameterOf(part.get(), "Content-Type", "charset"), "utf-8");
  EXPECT_EQ(BodyOf(part.get()), "caf\xC3\xA9");
}

TEST(DecodedBody, PutOfAnEmptyTextFailsAndChangesNothing) {
  auto part = NewPart();
  EXPECT_EQ(part->put_DecodedBody(B("").get()), E_FAIL);
  EXPECT_EQ(FieldCount(part.get()), 0);
}

TEST(DecodedBody, GetConvertsWithTheCharsetParameter) {
  auto part = Parsed("Content-Type: text/plain; charset=utf-8\r\n\r\ncaf\xC3\xA9");
  Bstr text;
  EXPECT_EQ(part->get_DecodedBody(text.put()), S_OK);
  EXPECT_EQ(U8(text), "caf\xC3\xA9");
}

TEST(DecodedBody, GetWithoutACharsetUsesTheDefaultCodePage) {
  auto part = Parsed("Content-Type: text/plain\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\ncaf=E9");
  Bstr text;
  EXPECT_EQ(part->get_DecodedBody(text.put()), S_OK);
  EXPECT_EQ(U8(text), "caf\xC3\xA9");
}

TEST(DecodedBody, GetWithAnUnknownCharsetFallsBackToTheDefaultCodePage) {
  auto part = Parsed("Content-Type: text/plain; charset=x-nonesuch\r\n\r\ncaf\xE9");
  Bstr text;
  EXPECT_EQ(part->get_DecodedBody(text.put()), S_OK);
  EXPECT_EQ(U8(text), "caf\xC3\xA9");
}

TEST(DecodedBody, AttachmentHasNoTextBody) {
  auto part = Parsed("Content-Type: text/plain\r\nContent-Disposition: attachment\r\n\r\ntext");
  BSTR text = nullptr;
  EXPECT_EQ(part->get_DecodedBody(&text), S_FALSE);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(part->get_DecodedBody(nullptr), E_POINTER);
}

TEST(DecodedBody, PartWithoutBodyGivesFalse) {
  BSTR text = nullptr;
  EXPECT_EQ(NewPart()->get_DecodedBody(&text), S_FALSE);
  EXPECT_EQ(text, nullptr);
}

TEST(DecodedBody, PutThenGetGivesTheTextBack) {
  auto part = NewPart();
  part->put_DefaultEncoding(3);
  const std::string text = "Gr\xC3\xBC\xC3\x9F\x65 aus K\xC3\xB6ln\r\nzweite Zeile";
  ASSERT_EQ(part->put_DecodedBody(B(text).get()), S_OK);
  EXPECT_EQ(RawField(part.get(), "Content-Transfer-Encoding"), "quoted-printable");
  Bstr back;
  EXPECT_EQ(part->get_DecodedBody(back.put()), S_OK);
  EXPECT_EQ(U8(back), text);
}

// ---------------------------------------------------------------- content type
TEST(ContentType, PartWithoutTheFieldIsTextPlain) {
  auto part = NewPart();
  EXPECT_EQ(TypeCode(part.get()), 6);
  EXPECT_EQ(SubtypeCode(part.get()), 18);
  BSTR text = nullptr;
  EXPECT_EQ(part->get_MimeContentTypeString(&text), S_OK);
  EXPECT_EQ(text, nullptr);
}

TEST(ContentType, CodesAndTextComeFromTheField) {
  auto part = Parsed("Content-Type: IMAGE/Jpeg; name=a.jpg\r\n\r\n");
  EXPECT_EQ(TypeCode(part.get()), 3);
  EXPECT_EQ(SubtypeCode(part.get()), 9);
  EXPECT_EQ(ContentTypeText(part.get()), "IMAGE/Jpeg");
}

TEST(ContentType, UnknownTypeGivesMinusOne) {
  auto part = Parsed("Content-Type: model/vrml\r\n\r\n");
  EXPECT_EQ(TypeCode(part.get()), -1);
  EXPECT_EQ(SubtypeCode(part.get()), -1);
}

TEST(ContentType, GettersRefuseAMissingResultPlace) {
  auto part = NewPart();
  EXPECT_EQ(part->get_MimeType(nullptr), E_POINTER);
  EXPECT_EQ(part->get_MimeSubType(nullptr), E_POINTER);
  EXPECT_EQ(part->get_MimeContentTypeString(nullptr), E_POINTER);
}

}  // namespace
}  // namespace pv::test
