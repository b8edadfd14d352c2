// EMSMimePartDecoder: a part's body decoded by its transfer encoding.
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

class PartDecoderTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMimePartDecoder> decoder_ = Create<IEMSMimePartDecoder>(CLSID_EMSMimePartDecoder);

  // The decoded bytes of a part with this encoding field and body, or
  // kNone when the decoder gives nothing.
  std::string Decode(std::string_view encoding, std::string_view body, HRESULT expected = S_OK) {
    auto part = Parsed("Content-Transfer-Encoding: " + std::string(encoding) + "\r\n\r\n");
    part->put_BodyObject(DataOf(body).get());
    return DecodePart(part.get(), expected);
  }
  std::string DecodePart(IEMSMimePart* part, HRESULT expected = S_OK) {
    ComPtr<IEMSDataObject> out;
    EXPECT_EQ(decoder_->DecodePart(part, out.put()), expected);
    return out ? SpanBytes(out.get()) : kNone;
  }
};

TEST_F(PartDecoderTest, MissingPartOrResultPlaceIsAPointerError) {
  ComPtr<IEMSDataObject> out;
  EXPECT_EQ(decoder_->DecodePart(nullptr, out.put()), E_POINTER);
  EXPECT_EQ(decoder_->DecodePart(NewPart().get(), nullptr), E_POINTER);
}

TEST_F(PartDecoderTest, PartWithoutBodyFails) {
  auto part = Parsed("Content-Transfer-Encoding: base64\r\n\r\n");
  EXPECT_EQ(DecodePart(part.get(), E_FAIL), kNone);
  EXPECT_EQ(DecodePart(NewPart().get(), E_FAIL), kNone);
}

TEST_F(PartDecoderTest, Base64WithAndWithoutPadding) {
  EXPECT_EQ(Decode("base64", "QQ=="), "A");
  EXPECT_EQ(Decode("base64", "QQ"), "A");
  EXPECT_EQ(Decode("base64", "SGVs\r\nbG8=\r\n"), "Hello");
}

TEST_F(PartDecoderTest, Base64OfASingleCharacterFailsAndWritesNothing) {
  auto part = Parsed("Content-Transfer-Encoding: base64\r\n\r\nQ");
  IEMSDataObject* place = nullptr;
  EXPECT_EQ(decoder_->DecodePart(part.get(), &place), E_FAIL);
  EXPECT_EQ(place, nullptr);
}

TEST_F(PartDecoderTest, Base64EndsAtANulWhereAGroupStarts) {
  EXPECT_EQ(Decode("base64", std::string("QUJD\0REVG", 9)), "ABC");
}

TEST_F(PartDecoderTest, PaddingDoesNotEndTheData) { EXPECT_EQ(Decode("base64", "QQ==QQ=="), "A\x04\x10"); }

TEST_F(PartDecoderTest, QuotedPrintableEscapesAndSoftBreaks) {
  EXPECT_EQ(Decode("quoted-printable", "a=3Db"), "a=b");
  EXPECT_EQ(Decode("quoted-printable", "a=3db"), "a=b");
  EXPECT_EQ(Decode("quoted-printable", "a=\r\nb"), "ab");
  EXPECT_EQ(Decode("quoted-printable", "a=\nb"), "ab");
  EXPECT_EQ(Decode("quoted-printable", "a=XYb"), "a=XYb");
  EXPECT_EQ(Decode("quoted-printable", "line  \r\nnext="), "line  \r\nnext");
}

TEST_F(PartDecoderTest, QuotedPrintableOfAnEmptyBodyFails) {
  EXPECT_EQ(Decode("quoted-printable", "=", E_FAIL), kNone);
}

TEST_F(PartDecoderTest, EncodingNameIsComparedWholeIgnoringCase) {
  EXPECT_EQ(Decode("BASE64", "QQ=="), "A");
  EXPECT_EQ(Decode("Quoted-Printable", "=41"), "A");
}

TEST_F(PartDecoderTest, EncodingNameWithALeadingBlankIsNotRecognised) {
  auto part = NewPart();
  ComPtr<IEMSMessageParameter> field;
  part->CreateHeader(B("Content-Transfer-Encoding").get(), field.put());
  field->put_UnfoldedData(B(" base64").get());
  part->put_BodyObject(DataOf("QQ==").get());
  EXPECT_EQ(DecodePart(part.get()), "QQ==");
}

TEST_F(PartDecoderTest, FoldedEncodingNameIsReadUnfolded) {
  auto part = Parsed("Content-Transfer-Encoding:\r\n base64\r\n\r\nQQ==");
  // Unfolding turns the fold into one blank: the name is not recognised.
  EXPECT_EQ(DecodePart(part.get()), "QQ==");
}

TEST_F(PartDecoderTest, UnknownOrMissingEncodingCopiesTheBody) {
  EXPECT_EQ(Decode("7bit", "QQ=="), "QQ==");
  EXPECT_EQ(Decode("binary", ""), "");
  auto part = NewPart();
  part->put_BodyObject(DataOf("as is").get());
  EXPECT_EQ(DecodePart(part.get()), "as is");
}

TEST_F(PartDecoderTest, CopyIsANewObjectOnTheSameBytes) {
  auto part = NewPart();
  auto body = DataOf("xxas isxx");
  body->put_Position(2);
  body->put_Length(5);
  part->put_BodyObject(body.get());
  ComPtr<IEMSDataObject> out;
  ASSERT_EQ(decoder_->DecodePart(part.get(), out.put()), S_OK);
  EXPECT_NE(out.get(), body.get());
  EXPECT_EQ(SpanBytes(out.get()), "as is");
}

TEST_F(PartDecoderTest, ResultHoldsTheDecodedBytesOnly) {
  auto part = Parsed("Content-Transfer-Encoding: base64\r\n\r\n");
  part->put_BodyObject(DataOf("QUJD\r\n").get());
  ComPtr<IEMSDataObject> out;
  ASSERT_EQ(decoder_->DecodePart(part.get(), out.put()), S_OK);
  ULONG size = 0, position = 9, length = 0;
  out->get_DataSize(&size);
  out->get_Position(&position);
  out->get_Length(&length);
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(position, 0u);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(AllBytes(out.get()), "ABC");
}

TEST_F(PartDecoderTest, InputIsNeverModified) {
  auto part = Parsed("Content-Transfer-Encoding: quoted-printable\r\n\r\n");
  auto body = DataOf("a=3Db");
  part->put_BodyObject(body.get());
  DecodePart(part.get());
  EXPECT_EQ(AllBytes(body.get()), "a=3Db");
}

TEST_F(PartDecoderTest, UuencodeBlockDecodes) {
  EXPECT_EQ(Decode("x-uuencode", "begin 644 a.txt\r\n!80``\r\n`\r\nend\r\n"), "a");
  EXPECT_EQ(Decode("uuencode", "begin 644 a.txt\r\n!80``\r\n`\r\nend\r\n"), "a");
}

TEST_F(PartDecoderTest, UuencodeBlocksAfterAnEndAreAppended) {
  EXPECT_EQ(Decode("x-uuencode", "begin 644 a\r\n!80``\r\nend\r\nbegin 644 b\r\n!8@``\r\nend\r\n"), "ab");
}

TEST_F(PartDecoderTest, UuencodeLinePromisingMoreThanItCarriesFails) {
  EXPECT_EQ(Decode("x-uuencode", "begin 644 a\r\n#80\r\nend\r\n", E_FAIL), kNone);
}

TEST_F(PartDecoderTest, MultipartPartDecodesItsBuiltBody) {
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nx"}));
  EXPECT_EQ(DecodePart(part.get()), "--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
}

}  // namespace
}  // namespace pv::test
