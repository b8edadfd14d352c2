// Exact bytes of what the library writes where writing as it stands would
// read back differently, and of the boundaries it generates: each test
// pins one of the writer's choices and shows that the output reads back.
#include <gtest/gtest.h>

#include <string>

#include "src/headers/mime_attribute.h"
#include "tests/roundtrip/roundtrip_invariant.h"
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

using roundtrip::CheckMessage;
using roundtrip::CheckPart;
using roundtrip::SpanText;

std::string BoundaryOf(IEMSMimePart* part) {
  ComPtr<IEMSMessageParameter> field;
  part->FindHeader(B("Content-Type").get(), field.put());
  ComPtr<IEMSContentType> content;
  if (!field || FAILED(field->QueryInterface(IID_IEMSContentType, content.put_void())) || !content) return "";
  Bstr boundary;
  if (FAILED(content->get_Boundary(boundary.put()))) return "";
  return U8(boundary);
}

// What an attribute of that name and decoded value writes.
std::string AssembledAttribute(std::string_view name, std::string_view decoded) {
  auto attribute = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  EXPECT_EQ(attribute->put_Name(B(name).get()), S_OK);
  EXPECT_EQ(attribute->put_DecodedValue(B(decoded).get()), S_OK);
  Bstr text;
  EXPECT_EQ(attribute->AssembleAttribute(text.put()), S_OK);
  return U8(text);
}

// ---------------------------------------------------------------- the last child's line break
TEST(WrittenReadsBack, NestedMessageAsLastPartKeepsItsFinalLineBreak) {
  const std::string x =
      "Content-Type: multipart/mixed; boundary=o\r\n\r\n--o\r\nContent-Type: text/plain\r\n\r\nfirst\r\n"
      "--o\r\nContent-Type: message/rfc822\r\n\r\nSubject: inner\r\n\r\nlast line\r\n\r\n--o--\r\n";
  auto part = Parsed(x);
  ASSERT_EQ(ChildCount(part.get()), 2);
  EXPECT_EQ(BodyOf(ChildOf(part.get(), 1).get()), "Subject: inner\r\n\r\nlast line\r\n");
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"o\"\r\n\r\n--o\r\nContent-Type: "
            "text/plain\r\n\r\nfirst\r\n"
            "--o\r\nContent-Type: message/rfc822\r\n\r\nSubject: inner\r\n\r\nlast line\r\n\r\n--o--\r\n");
  EXPECT_EQ(CheckPart(x), "");
  EXPECT_EQ(CheckMessage("Subject: s\r\n" + x), "");
}

TEST(WrittenReadsBack, LastPartWithoutBodyIsNotLost) {
  // Written as it stands, the closing delimiter's line break would leave the
  // last part without the empty line that ends its header block.
  const std::string x =
      "Content-Type: multipart/related; boundary=r\r\n\r\n--r\r\n\r\nhtml\r\n--r\r\nContent-Type: "
      "image/gif\r\n\r\n"
      "\r\n--r--\r\n";
  auto part = Parsed(x);
  ASSERT_EQ(ChildCount(part.get()), 2);
  const std::string a1 = Assembled(part.get());
  EXPECT_EQ(a1.substr(a1.size() - 43), "\r\n--r\r\nContent-Type: image/gif\r\n\r\n\r\n--r--\r\n");
  EXPECT_EQ(ChildCount(Parsed(a1).get()), 2);
  EXPECT_EQ(CheckPart(x), "");
}

TEST(WrittenReadsBack, QuotedPrintableLastPartEndingInASpaceKeepsIt) {
  const std::string x =
      "Content-Type: multipart/mixed; boundary=q\r\n\r\n--q\r\nContent-Transfer-Encoding: "
      "quoted-printable\r\n\r\n"
      "ends in a space \r\n\r\n--q--\r\n";
  EXPECT_EQ(BodyOf(ChildOf(Parsed(x).get(), 0).get()), "ends in a space \r\n");
  EXPECT_EQ(CheckPart(x), "");
}

// ---------------------------------------------------------------- header fields and parameters
TEST(WrittenReadsBack, ChainedFieldWritesItsParametersAfterItsFirstLine) {
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  ASSERT_EQ(list->ParseParameters(B("Content-Type: multipart/mixed; boundary=\"o\"\r\n"
                                    "Content-Type: application/pdf; name=\"a.pdf\"\r\n")
                                      .get()),
            S_OK);
  Bstr text;
  ASSERT_EQ(list->AssembleParameters(text.put()), S_OK);
  const std::string expected =
      "Content-Type: multipart/mixed;\r\n\tboundary=\"o\"\r\nContent-Type: "
      "application/pdf;\r\n\tname=\"a.pdf\"\r\n";
  EXPECT_EQ(U8(text), expected);
  // Read back, the boundary is still the first occurrence's parameter.
  auto again = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  ASSERT_EQ(again->ParseParameters(text.get()), S_OK);
  Bstr twice;
  ASSERT_EQ(again->AssembleParameters(twice.put()), S_OK);
  EXPECT_EQ(U8(twice), expected);
}

TEST(WrittenReadsBack, ParameterWithoutEqualsIsNotWritten) {
  const std::string x = "Content-Type: text/x-be2; 12\r\nCOMMENT: robust\r\n\r\nbody";
  EXPECT_EQ(Assembled(Parsed(x).get()), "Content-Type: text/x-be2\r\nCOMMENT: robust\r\n\r\nbody");
  EXPECT_EQ(CheckPart(x), "");
}

TEST(WrittenReadsBack, ParameterWhoseNameWouldNotReadBackIsNotWritten) {
  // "x *" loses its star to the parse and keeps the blank: written, it
  // would read back as "x".
  const std::string x = "Content-Type: text/plain; x *=1; y=2\r\n\r\nbody";
  EXPECT_EQ(Assembled(Parsed(x).get()), "Content-Type: text/plain;\r\n\ty=\"2\"\r\n\r\nbody");
  EXPECT_EQ(CheckPart(x), "");
  // A host's name that would end the parameter or open a new one.
  auto list = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  for (const char* name : {"a;b", "a=b", "\"q", "a\r\nX-Evil", "z"}) {
    ComPtr<IEMSMimeAttribute> attribute;
    ASSERT_EQ(list->CreateAttribute(B(name).get(), attribute.put()), S_OK);
    attribute->put_DecodedValue(B("v").get());
  }
  Bstr text;
  ASSERT_EQ(list->AssembleAttributes(text.put()), S_OK);
  EXPECT_EQ(U8(text), ";\r\n\tz=\"v\"");
}

TEST(WrittenReadsBack, BoundaryKeepsTheRawFormItWasReadIn) {
  // The body is cut at the raw value, here the whole extended form: no
  // delimiter occurs, so the part keeps its body, and so does its output.
  const std::string extended =
      "Content-Type: multipart/signed; boundary*=\"us-ascii''B\"\r\n\r\n--B\r\n\r\nx\r\n--B--\r\n";
  EXPECT_EQ(
      Assembled(Parsed(extended).get()),
      "Content-Type: multipart/signed;\r\n\tboundary*=\"us-ascii''B\"\r\n\r\n--B\r\n\r\nx\r\n--B--\r\n");
  EXPECT_EQ(CheckPart(extended), "");
  const std::string words =
      "Content-Type: multipart/mixed; "
      "boundary=\"=?utf-8?Q?b?=\"\r\n\r\n--=?utf-8?Q?b?=\r\n\r\nx\r\n--=?utf-8?Q?b?=--";
  auto part = Parsed(words);
  EXPECT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(
      Assembled(part.get()),
      "Content-Type: multipart/mixed;\r\n\tboundary=\"=?utf-8?Q?b?=\"\r\n\r\n--=?utf-8?Q?b?=\r\n\r\nx\r\n"
      "--=?utf-8?Q?b?=--\r\n");
  EXPECT_EQ(CheckPart(words), "");
}

// A boundary whose raw value holds a line break cannot be written as it
// stands: the field writes it re-encoded, and the body's delimiters use the
// value the written field reads back as.
TEST(WrittenReadsBack, BoundaryWithALineBreakCutsTheBodyAsItIsWritten) {
  const std::string x =
      "Content-Type: multiparT/mixed; boundary=q\r\n\t\n--q\r\nA\xba"
      " 0\r\n\r\nx--q\r\nB: 2\n"
      "\r\n\r\r\r\ny\n-ype: multiparT/mixed; boundary=q\r\n\t\n--q\r\nA\xba"
      " 0\r\n\r\nx--q\r\n"
      "B: 2\n\r\n\r\r\r\ny\n"
      "--q\r\xff"
      "\xff"
      "\xff"
      "\xff"
      "\xff"
      "\xff"
      "\xff"
      "\xff"
      "\xff"
      "boundary=q\r\n\t\n--q\r\n";
  EXPECT_EQ(CheckMessage(x), "");
  EXPECT_EQ(CheckPart(x), "");
}

// A child whose bytes end with the text of its delimiter ("--r", the last
// delimiter of the input standing too close to the end, or a "--r--" that no
// line break precedes) would be cut there if a line break followed it: the
// delimiter follows such a child directly, and before the closing delimiter
// an ordinary one comes first.
TEST(WrittenReadsBack, ChildEndingWithItsDelimiterIsNotCutWhenWritten) {
  const std::string last = "Content-Type: multipart/mixed; boundary=r\r\n\r\n--r\r\n\r\nn--r--r";
  auto part = Parsed(last);
  ASSERT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"r\"\r\n\r\n--r\r\n\r\nn--r--r\r\n--r--\r\n");
  EXPECT_EQ(CheckPart(last), "");
  EXPECT_EQ(CheckMessage("MIME-Version: 1.0\r\n" + last), "");
  const std::string first =
      "Content-Type: multipart/mixed; boundary=r\r\n\r\n--r\r\n\r\nn--r--r\r\n\r\nsecond\r\n--r--\r\n";
  part = Parsed(first);
  ASSERT_EQ(ChildCount(part.get()), 2);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: "
            "multipart/mixed;\r\n\tboundary=\"r\"\r\n\r\n--r\r\n\r\nn--r--r\r\n\r\nsecond\r\n--r--\r\n");
  EXPECT_EQ(CheckPart(first), "");
}

// A first child whose first line begins with the delimiter's text was glued
// to the opening delimiter in the input; after a line break that line would
// be a delimiter line ("--r--: x" closes), so it stays glued.
TEST(WrittenReadsBack, FirstChildGluedToItsDelimiterStaysGlued) {
  const std::string glued =
      "Content-Type: multipart/mixed; boundary=r\r\n\r\n--r--r--: x\r\n\r\nbody\r\n--r--\r\n";
  auto part = Parsed(glued);
  ASSERT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"r\"\r\n\r\n--r--r--: x\r\n\r\nbody\r\n--r--\r\n");
  EXPECT_EQ(CheckPart(glued), "");
  EXPECT_EQ(CheckMessage("MIME-Version: 1.0\r\n" + glued), "");
}

// The same holds for the delimiters of enclosing multiparts: a child ending
// with one is followed by its own delimiter directly, and a first child
// beginning with one and "--" stays glued to its opening delimiter.
TEST(WrittenReadsBack, ChildEndingWithAnEnclosingDelimiterIsNotCutWhenWritten) {
  const std::string x =
      "Content-Type: multipart/mixed; boundary=a\r\n\r\n--a\r\nContent-Type: multipart/mixed; "
      "boundary=b\r\n\r\n"
      "--b\r\n\r\nx--a--b\r\n\r\nsecond\r\n--b--\r\n--a--\r\n";
  auto part = Parsed(x);
  ASSERT_EQ(ChildCount(part.get()), 1);
  ASSERT_EQ(ChildCount(ChildOf(part.get(), 0).get()), 2);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"a\"\r\n\r\n--a\r\nContent-Type: "
            "multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n"
            "--b\r\n\r\nx--a--b\r\n\r\nsecond\r\n--b--\r\n--a--\r\n");
  EXPECT_EQ(CheckPart(x), "");
  EXPECT_EQ(CheckMessage("MIME-Version: 1.0\r\n" + x), "");
}

TEST(WrittenReadsBack, FirstChildGluedToAnEnclosingClosingDelimiterStaysGlued) {
  const std::string x =
      "Content-Type: multipart/mixed; boundary=a\r\n\r\n--a\r\nContent-Type: multipart/mixed; "
      "boundary=b\r\n\r\n"
      "--b--a--: x\r\n\r\nbody\r\n--b--\r\n--a--\r\n";
  auto part = Parsed(x);
  ASSERT_EQ(ChildCount(part.get()), 1);
  ASSERT_EQ(ChildCount(ChildOf(part.get(), 0).get()), 1);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"a\"\r\n\r\n--a\r\nContent-Type: "
            "multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n"
            "--b--a--: x\r\n\r\nbody\r\n--b--\r\n--a--\r\n");
  EXPECT_EQ(CheckPart(x), "");
  EXPECT_EQ(CheckMessage("MIME-Version: 1.0\r\n" + x), "");
}

// A child's fields separated by a bare LF are written with one where CR LF
// would complete a delimiter line of its multipart or of an enclosing one:
// the header parse ends a field line at LF alone, a delimiter needs CR LF.
TEST(WrittenReadsBack, FieldLineBreakThatWouldCloseTheMultipartStaysBare) {
  const std::string x = "Content-Type:multipart/;boundary=q\r\n\r\n--qA:\n--q--:\r\n\r\n--q";
  auto part = Parsed(x);
  ASSERT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/;\r\n\tboundary=\"q\"\r\n\r\n--q\r\nA: \n--q--: \r\n\r\n\r\n--q--\r\n");
  EXPECT_EQ(CheckPart(x), "");
  EXPECT_EQ(CheckMessage(x), "");
}

TEST(WrittenReadsBack, FieldLineBreakThatWouldCloseAnEnclosingMultipartStaysBare) {
  const std::string x =
      "Content-Type: multipart/mixed; boundary=a\r\n\r\n--a\r\nContent-Type: multipart/mixed; "
      "boundary=b\r\n\r\n"
      "--b\r\nX: 1\n--a--: y\r\n\r\nbody\r\n--b--\r\n--a--\r\n";
  auto part = Parsed(x);
  ASSERT_EQ(ChildCount(part.get()), 1);
  ASSERT_EQ(ChildCount(ChildOf(part.get(), 0).get()), 1);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"a\"\r\n\r\n--a\r\nContent-Type: "
            "multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n"
            "--b\r\nX: 1\n--a--: y\r\n\r\nbody\r\n--b--\r\n--a--\r\n");
  EXPECT_EQ(CheckPart(x), "");
  EXPECT_EQ(CheckMessage("MIME-Version: 1.0\r\n" + x), "");
}

TEST(WrittenReadsBack, FieldEndingWithTheDelimiterKeepsItsBareLineBreak) {
  const std::string inner =
      "Content-Type: multipart/mixed; boundary=q\r\n\r\n--q\r\nX: a--q\nY: 1\r\n\r\nbody\r\n--q--\r\n";
  auto part = Parsed(inner);
  ASSERT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/mixed;\r\n\tboundary=\"q\"\r\n\r\n--q\r\nX: a--q\nY: "
            "1\r\n\r\nbody\r\n--q--\r\n");
  EXPECT_EQ(CheckPart(inner), "");
  // The last field's: the empty line after it is written in full.
  const std::string last =
      "Content-Type: multipart/mixed; boundary=q\r\n\r\n--q\r\nX: a--q\n\r\n\r\nbody\r\n--q--\r\n";
  part = Parsed(last);
  ASSERT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(
      Assembled(part.get()),
      "Content-Type: multipart/mixed;\r\n\tboundary=\"q\"\r\n\r\n--q\r\nX: a--q\n\r\n\r\nbody\r\n--q--\r\n");
  EXPECT_EQ(CheckPart(last), "");
  EXPECT_EQ(CheckMessage("MIME-Version: 1.0\r\n" + last), "");
}

// A later child whose first field line begins with the delimiter and "--"
// (lines the parse drops stood before it) gets an empty line ended by a
// bare LF first: right after the delimiter line it would close the
// multipart.
TEST(WrittenReadsBack, LaterChildWhoseFirstFieldWouldCloseTheMultipartKeepsItsDistance) {
  const std::string x = "Content-Type:multipart/;boundary=r\r\n\r\n--r\r\n\r\n--r\r\n\n--r--:\r\n\r\n--r";
  auto part = Parsed(x);
  ASSERT_EQ(ChildCount(part.get()), 2);
  EXPECT_EQ(Assembled(part.get()),
            "Content-Type: multipart/;\r\n\tboundary=\"r\"\r\n\r\n--r\r\n\r\n--r\r\n\n--r--: "
            "\r\n\r\n\r\n--r--\r\n");
  EXPECT_EQ(CheckPart(x), "");
  EXPECT_EQ(CheckMessage(x), "");
}

TEST(WrittenReadsBack, ParameterValueWithASemicolonIsEncoded) {
  EXPECT_EQ(AssembledAttribute("filename", "a;b.txt"), "filename=\"=?utf-8?B?YTtiLnR4dA==?=\"");
  const std::string x = "Content-Disposition: attachment; filename*=utf-8''r%C3%A9sum%C3%A9%3B1.pdf\r\n\r\nx";
  EXPECT_EQ(CheckPart(x), "");
}

TEST(WrittenReadsBack, ParameterValueWithALineBreakIsEncoded) {
  EXPECT_EQ(AssembledAttribute("name", "a\r\nX-Evil: 1"), "name=\"=?utf-8?B?YQ0KWC1FdmlsOiAx?=\"");
  // Plain text that reads back stays plain.
  EXPECT_EQ(AssembledAttribute("name", "a b.txt"), "name=\"a b.txt\"");
}

TEST(WrittenReadsBack, ParameterValueWithAZeroIsWrittenAsItsBytes) {
  // Encoded words cannot carry a zero byte; the value's UTF-8 bytes can.
  auto attribute = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  ASSERT_EQ(attribute->put_Name(B("name").get()), S_OK);
  WString value = W("\xC3\xA9");
  value.insert(value.begin(), OLECHAR(0));
  ASSERT_EQ(attribute->put_DecodedValue(Bstr(value).get()), S_OK);
  EXPECT_EQ(ImplOf<MimeAttribute>(attribute.get())->rawValue(), std::string("\0\xC3\xA9", 3));
}

TEST(WrittenReadsBack, ValueThatNoRunOfWordsCarriesReadsBack) {
  // Blanks first (skipped in front of text), zeros that a word would have to
  // begin with, and a "=" (which plain text cannot hold before "?").
  std::string zeros;
  for (int i = 0; i < 60; ++i) zeros += "%00";
  const std::string x = "Content-Type: text/plain; title*=utf-8''%20%20x" + zeros + "%3D?y\r\n\r\nbody";
  EXPECT_EQ(CheckPart(x), "");
}

TEST(WrittenReadsBack, PlainValueOf128StaysPlainOnPurpose) {
  auto attribute = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  ASSERT_EQ(attribute->put_Name(B("name").get()), S_OK);
  WString value(1, OLECHAR(0x80));
  ASSERT_EQ(attribute->put_DecodedValue(Bstr(value).get()), S_OK);
  EXPECT_EQ(ImplOf<MimeAttribute>(attribute.get())->rawValue(), WideToAnsi(value));
}

// ---------------------------------------------------------------- header blocks without fields
TEST(WrittenReadsBack, MessageAndPartWithoutFieldsReadBack) {
  EXPECT_EQ(CheckMessage("\r\n\r\nbody only\r\n"), "");
  EXPECT_EQ(CheckPart("\r\n\r\nbody only\r\n"), "");
  EXPECT_EQ(CheckPart("\r\n\r\n"), "");
  EXPECT_EQ(CheckMessage("garbage line\r\n\r\nbody: with a colon\r\n"), "");
}

// ---------------------------------------------------------------- generated boundaries
TEST(WrittenReadsBack, GeneratedBoundaryThatOccursInAChildIsGeneratedAgain) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\nhello");
  ASSERT_EQ(part->ConvertToMultipart(10), S_OK);
  const std::string first = BoundaryOf(part.get());
  ASSERT_EQ(first.rfind("----=_NextPart_000_", 0), 0u);
  // The child now carries the delimiter line of its parent's boundary.
  const std::string smuggled = "--" + first + "\r\nContent-Type: application/x-evil\r\n\r\nevil\r\n";
  ChildOf(part.get(), 0)->put_BodyObject(DataOf(smuggled).get());
  const std::string a1 = Assembled(part.get());
  const std::string second = BoundaryOf(part.get());
  EXPECT_NE(second, first);
  EXPECT_EQ(second.rfind("----=_NextPart_000_", 0), 0u);
  EXPECT_EQ(second.size(), first.size());
  EXPECT_NE(a1.find("boundary=\"" + second + "\""), std::string::npos);
  EXPECT_EQ(a1.find("boundary=\"" + first + "\""), std::string::npos);
  auto again = Parsed(a1);
  ASSERT_EQ(ChildCount(again.get()), 1);
  EXPECT_EQ(BodyOf(ChildOf(again.get(), 0).get()), smuggled);
  // The new boundary stays: a second assembly writes the same bytes.
  EXPECT_EQ(Assembled(part.get()), a1);
}

TEST(WrittenReadsBack, ComposedTextCannotSmuggleAnAttachment) {
  auto message = Create<IEMSMessageParser>(CLSID_EMSMessageParser);
  ASSERT_EQ(message->put_TextBody(B("hello").get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("report.pdf").get(), DataOf("%PDF").get()), S_OK);
  ComPtr<IEMSMimePart> root;
  ASSERT_EQ(message->get_MimePart(root.put()), S_OK);
  const std::string boundary = BoundaryOf(root.get());
  ASSERT_FALSE(boundary.empty());
  const std::string text = "hi\r\n--" + boundary +
                           "\r\nContent-Type: application/octet-stream\r\n"
                           "Content-Disposition: attachment; filename=\"evil.exe\"\r\n\r\nTVqQ\r\n";
  ASSERT_EQ(message->put_TextBody(B(text).get()), S_OK);
  ComPtr<IEMSDataObject> assembled;
  ASSERT_EQ(message->AssembleObject(assembled.put()), S_OK);
  auto again = Create<IEMSMessageParser>(CLSID_EMSMessageParser);
  ASSERT_EQ(again->ParseObject(assembled.get()), S_OK);
  ComPtr<IEMSMimeParts> attachments;
  ASSERT_EQ(again->get_AttachParts(attachments.put()), S_OK);
  LONG count = 0;
  attachments->get_PartsCount(&count);
  EXPECT_EQ(count, 1);
  EXPECT_NE(BoundaryOf(root.get()), boundary);
  Bstr body;
  ASSERT_EQ(again->get_TextBody(body.put()), S_OK);
  EXPECT_EQ(U8(body), text);
}

TEST(WrittenReadsBack, GivenBoundaryIsNeverChanged) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n");
  ChildOf(part.get(), 0)->put_BodyObject(DataOf("--b\r\n\r\ny\r\n").get());
  const std::string a1 = Assembled(part.get());
  EXPECT_EQ(
      a1,
      "Content-Type: multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n--b\r\n\r\n--b\r\n\r\ny\r\n\r\n--b--\r\n");
  EXPECT_EQ(BoundaryOf(part.get()), "b");
}

TEST(WrittenReadsBack, UuencodeConversionGeneratesABoundaryThatReadsBack) {
  // The conversion's boundary is generated: text that carries the boundary
  // lines a predictable generator would make next cannot split the output.
  std::string text = "Subject: s\r\n\r\nline\r\n";
  for (int i = 0; i < 3; ++i) text += "------=_NextPart_000_0000_000000000.000000000\r\n";
  text += "begin 644 a.txt\r\n#86)C\r\n`\r\nend\r\n";
  EXPECT_EQ(CheckMessage(text), "");
}

}  // namespace
}  // namespace pv::test
