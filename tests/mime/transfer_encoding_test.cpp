#include <string>

#include "tests/mime/codec_test_util.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

using namespace std::string_literals;

// ------------------------------------------------------------------ field values to codes

TEST(TransferEncodingOfField, NamesTheDecodingCodes) {
  EXPECT_EQ(TransferEncodingOfField("base64"), kTransferBase64);
  EXPECT_EQ(TransferEncodingOfField("quoted-printable"), kTransferQuotedPrintable);
  EXPECT_EQ(TransferEncodingOfField("uuencode"), kTransferUuencode);
  EXPECT_EQ(TransferEncodingOfField("x-uuencode"), kTransferUuencode);
}

TEST(TransferEncodingOfField, IgnoresCase) {
  EXPECT_EQ(TransferEncodingOfField("BASE64"), kTransferBase64);
  EXPECT_EQ(TransferEncodingOfField("Quoted-Printable"), kTransferQuotedPrintable);
  EXPECT_EQ(TransferEncodingOfField("X-UUEncode"), kTransferUuencode);
}

TEST(TransferEncodingOfField, ComparesTheWholeValue) {
  EXPECT_EQ(TransferEncodingOfField(" base64"), kTransferNone);
  EXPECT_EQ(TransferEncodingOfField("base64 "), kTransferNone);
  EXPECT_EQ(TransferEncodingOfField("base6"), kTransferNone);
  EXPECT_EQ(TransferEncodingOfField("base64; x"), kTransferNone);
  EXPECT_EQ(TransferEncodingOfField("x-uue"), kTransferNone);
}

TEST(TransferEncodingOfField, AnythingElseIsNoEncoding) {
  EXPECT_EQ(TransferEncodingOfField(""), kTransferNone);
  EXPECT_EQ(TransferEncodingOfField("7bit"), kTransferNone);
  EXPECT_EQ(TransferEncodingOfField("8bit"), kTransferNone);
  EXPECT_EQ(TransferEncodingOfField("binary"), kTransferNone);
}

TEST(TransferEncodingOfField, AcceptsWideValues) {
  EXPECT_EQ(TransferEncodingOfField(W("Base64")), kTransferBase64);
  EXPECT_EQ(TransferEncodingOfField(W("QUOTED-PRINTABLE")), kTransferQuotedPrintable);
  EXPECT_EQ(TransferEncodingOfField(W("x-uuencode")), kTransferUuencode);
  EXPECT_EQ(TransferEncodingOfField(W(" base64")), kTransferNone);
}

TEST(TransferEncodingOfField, WideCharacterIsNotTakenForItsLowByte) {
  // U+0134 ends in the byte of "4".
  WString value = W("base6");
  value.push_back(static_cast<OLECHAR>(0x0134));
  EXPECT_EQ(TransferEncodingOfField(value), kTransferNone);
}

// ------------------------------------------------------------------ 7-bit share and the automatic choice

std::string WithHighBytes(size_t total, size_t high) {
  std::string body(total, 'a');
  for (size_t i = 0; i < high; ++i) body[i * total / high] = '\xE9';
  return body;
}

TEST(SevenBitShare, EmptyBodyIsAllSevenBit) { EXPECT_EQ(SevenBitShare(""), 100); }

TEST(SevenBitShare, AsciiBodyIsAllSevenBit) { EXPECT_EQ(SevenBitShare("plain text\r\n\x7F"), 100); }

TEST(SevenBitShare, IsRoundedDown) {
  EXPECT_EQ(SevenBitShare(WithHighBytes(100, 1)), 99);
  EXPECT_EQ(SevenBitShare(WithHighBytes(1000, 1)), 99);
  EXPECT_EQ(SevenBitShare("a\xE9\xE9"), 33);
  EXPECT_EQ(SevenBitShare("aa\xE9"), 66);
  EXPECT_EQ(SevenBitShare("\x80"), 0);
}

TEST(SevenBitShare, CountsEveryByteOfALongBody) {
  // Long enough for the word-at-a-time count, with an uneven tail.
  std::string body = WithHighBytes(100003, 41234);
  size_t low = 0;
  for (char c : body) low += static_cast<unsigned char>(c) < 128;
  EXPECT_EQ(SevenBitShare(body), static_cast<int>(low * 100 / body.size()));
  EXPECT_EQ(SevenBitShare(std::string(5000, '\xFF')), 0);
}

TEST(ChooseTransferEncoding, BelowSixtyIsBase64) {
  EXPECT_EQ(ChooseTransferEncoding(0), kTransferBase64);
  EXPECT_EQ(ChooseTransferEncoding(59), kTransferBase64);
}

TEST(ChooseTransferEncoding, SixtyToNinetyNineIsQuotedPrintable) {
  EXPECT_EQ(ChooseTransferEncoding(60), kTransferQuotedPrintable);
  EXPECT_EQ(ChooseTransferEncoding(99), kTransferQuotedPrintable);
}

TEST(ChooseTransferEncoding, HundredIsNoEncoding) { EXPECT_EQ(ChooseTransferEncoding(100), kTransferNone); }

TEST(AutomaticEncoding, PureAsciiTextStaysUnencodedAsSevenBit) {
  std::string body = "Dear all,\r\nthe meeting is at 10.\r\n";
  int share = SevenBitShare(body);
  EXPECT_EQ(ChooseTransferEncoding(share), kTransferNone);
  EXPECT_EQ(TransferEncodingFieldValue(kTransferAutomatic, share), "7bit");
  std::string out;
  EXPECT_TRUE(EncodeTransferBody(ChooseTransferEncoding(share), body, "", &out));
  EXPECT_EQ(out, body);
}

TEST(AutomaticEncoding, TextWithThirtyPercentHighBytesIsQuotedPrintable) {
  int share = SevenBitShare(WithHighBytes(100, 30));
  EXPECT_EQ(share, 70);
  EXPECT_EQ(TransferEncodingFieldValue(kTransferAutomatic, share), "quoted-printable");
}

TEST(AutomaticEncoding, BinaryWithMoreThanFortyPercentHighBytesIsBase64) {
  int share = SevenBitShare(WithHighBytes(100, 41));
  EXPECT_EQ(share, 59);
  EXPECT_EQ(TransferEncodingFieldValue(kTransferAutomatic, share), "base64");
}

TEST(AutomaticEncoding, ExactlyFortyPercentHighBytesIsStillQuotedPrintable) {
  EXPECT_EQ(TransferEncodingFieldValue(kTransferAutomatic, SevenBitShare(WithHighBytes(100, 40))),
            "quoted-printable");
}

// ------------------------------------------------------------------ field values written

TEST(TransferEncodingFieldValue, NoEncodingIsSevenBitOnlyWhenEveryByteIs) {
  EXPECT_EQ(TransferEncodingFieldValue(kTransferNone, 100), "7bit");
  EXPECT_EQ(TransferEncodingFieldValue(kTransferNone, 99), "8bit");
  EXPECT_EQ(TransferEncodingFieldValue(kTransferNone, 0), "8bit");
}

TEST(TransferEncodingFieldValue, NamesEachEncoding) {
  EXPECT_EQ(TransferEncodingFieldValue(kTransferQuotedPrintable, 100), "quoted-printable");
  EXPECT_EQ(TransferEncodingFieldValue(kTransferBase64, 100), "base64");
  EXPECT_EQ(TransferEncodingFieldValue(kTransferUuencode, 100), "x-uuencode");
}

TEST(TransferEncodingFieldValue, OtherCodesHaveNone) {
  EXPECT_EQ(TransferEncodingFieldValue(5, 100), "");
  EXPECT_EQ(TransferEncodingFieldValue(-1, 100), "");
}

// ------------------------------------------------------------------ whole-body decode and encode

TEST(DecodeTransferBody, NoEncodingCopiesTheBody) {
  std::string out;
  EXPECT_TRUE(DecodeTransferBody(kTransferNone, "=41 QQ==\0"s, &out));
  EXPECT_EQ(out, "=41 QQ==\0"s);
}

TEST(DecodeTransferBody, NoEncodingCopiesAnEmptyBodyAndSucceeds) {
  std::string out = "x";
  EXPECT_TRUE(DecodeTransferBody(kTransferNone, "", &out));
  EXPECT_EQ(out, "");
}

TEST(DecodeTransferBody, DecodesEachEncoding) {
  std::string out;
  EXPECT_TRUE(DecodeTransferBody(kTransferBase64, "QUJD", &out));
  EXPECT_EQ(out, "ABC");
  EXPECT_TRUE(DecodeTransferBody(kTransferQuotedPrintable, "=41=\r\nB", &out));
  EXPECT_EQ(out, "AB");
  EXPECT_TRUE(DecodeTransferBody(kTransferUuencode, "begin 644 a\r\n#0V%T\r\n`\r\nend\r\n", &out));
  EXPECT_EQ(out, "Cat");
}

TEST(DecodeTransferBody, FailedUuencodeFails) {
  std::string out;
  EXPECT_FALSE(DecodeTransferBody(kTransferUuencode, "#0V\r\n", &out));
}

TEST(DecodeTransferBody, UnknownFieldValueLeavesTheBodyUndecoded) {
  std::string out;
  EXPECT_TRUE(DecodeTransferBody(TransferEncodingOfField(" base64"), "QUJD", &out));
  EXPECT_EQ(out, "QUJD");
}

TEST(EncodeTransferBody, EncodesEachConcreteCode) {
  std::string out;
  EXPECT_TRUE(EncodeTransferBody(kTransferNone, "a=b", "", &out));
  EXPECT_EQ(out, "a=b");
  EXPECT_TRUE(EncodeTransferBody(kTransferQuotedPrintable, "a=b", "", &out));
  EXPECT_EQ(out, "a=3Db");
  EXPECT_TRUE(EncodeTransferBody(kTransferBase64, "a=b", "", &out));
  EXPECT_EQ(out, "YT1i");
  EXPECT_TRUE(EncodeTransferBody(kTransferUuencode, "Cat", "c", &out));
  EXPECT_EQ(out, "begin 644 c\r\n#0V%T\r\n`\r\nend\r\n");
}

TEST(EncodeTransferBody, NoEncodingOfAnEmptyBodySucceedsAsSevenBit) {
  std::string out = "x";
  EXPECT_TRUE(EncodeTransferBody(kTransferNone, "", "", &out));
  EXPECT_EQ(out, "");
  EXPECT_EQ(TransferEncodingFieldValue(kTransferNone, SevenBitShare("")), "7bit");
}

TEST(EncodeTransferBody, EmptyBodyFailsForBase64AndQuotedPrintable) {
  std::string out;
  EXPECT_FALSE(EncodeTransferBody(kTransferBase64, "", "", &out));
  EXPECT_FALSE(EncodeTransferBody(kTransferQuotedPrintable, "", "", &out));
}

TEST(EncodeTransferBody, UnresolvedOrUnknownCodeFails) {
  std::string out;
  EXPECT_FALSE(EncodeTransferBody(kTransferAutomatic, "a", "", &out));
  EXPECT_FALSE(EncodeTransferBody(static_cast<TransferEncoding>(5), "a", "", &out));
  EXPECT_FALSE(EncodeTransferBody(static_cast<TransferEncoding>(-1), "a", "", &out));
}

}  // namespace
}  // namespace pv::test
