// Messages shaped like real mail, one of each kind: read through every
// getter, edited through every setter, assembled, and parsed again with the
// expected tree.
#include <ostream>

#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

// ---------------------------------------------------------------- the samples
const char kPlain[] =
    "Return-Path: <alice@example.com>\r\n"
    "Received: from mail.example.com (mail.example.com [192.0.2.1])\r\n"
    "\tby mx.example.org with ESMTP id 4AB12; Mon, 3 Jun 2024 10:00:02 +0200\r\n"
    "Date: Mon, 3 Jun 2024 10:00:00 +0200\r\n"
    "From: Alice Example <alice@example.com>\r\n"
    "To: bob@example.org\r\n"
    "Subject: Lunch on Friday?\r\n"
    "Message-ID: <20240603100000.1234@example.com>\r\n"
    "\r\n"
    "Hi Bob,\r\n"
    "\r\n"
    "are you free for lunch on Friday?\r\n"
    "\r\n"
    "Alice\r\n";

const char kAlternative[] =
    "Date: Tue, 4 Jun 2024 09:15:00 +0000\r\n"
    "From: =?utf-8?Q?Ren=C3=A9e?= <renee@example.net>\r\n"
    "To: \"Team\" <team@example.net>\r\n"
    "Subject: =?utf-8?B?UHLDqnQgcG91ciBsYSByw6l1bmlvbg==?=\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: multipart/alternative; boundary=\"=_alt_1\"\r\n"
    "\r\n"
    "This is a multi-part message in MIME format.\r\n"
    "--=_alt_1\r\n"
    "Content-Type: text/plain; charset=utf-8\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\n"
    "\r\n"
    "Pr=C3=AAt pour la r=C3=A9union =C3=A0 10h.\r\n"
    "--=_alt_1\r\n"
    "Content-Type: text/html; charset=utf-8\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\n"
    "\r\n"
    "<p>Pr=C3=AAt pour la r=C3=A9union =C3=A0 <b>10h</b>.</p>\r\n"
    "--=_alt_1--\r\n";

const char kMixed[] =
    "From: Carol <carol@example.com>\r\n"
    "To: Dave <dave@example.com>\r\n"
    "Subject: Invoice and photo\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: multipart/mixed;\r\n"
    "\tboundary=\"----=_Part_0_1\"\r\n"
    "\r\n"
    "------=_Part_0_1\r\n"
    "Content-Type: text/plain; charset=us-ascii\r\n"
    "Content-Transfer-Encoding: 7bit\r\n"
    "\r\n"
    "Invoice and photo attached.\r\n"
    "------=_Part_0_1\r\n"
    "Content-Type: application/pdf; name=\"invoice.pdf\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "Content-Disposition: attachment; filename=\"invoice.pdf\"\r\n"
    "\r\n"
    "JVBERi0xLjQKJcOkw7zDtsOfCjEgMCBvYmoK\r\n"
    "------=_Part_0_1\r\n"
    "Content-Type: image/png; name=\"photo.png\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "Content-Disposition: attachment; filename=\"photo.png\"\r\n"
    "\r\n"
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAY=\r\n"
    "------=_Part_0_1--\r\n";

const char kRelated[] =
    "From: news@example.org\r\n"
    "To: reader@example.org\r\n"
    "Subject: Newsletter\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: multipart/alternative; boundary=\"outer\"\r\n"
    "\r\n"
    "--outer\r\n"
    "Content-Type: text/plain; charset=us-ascii\r\n"
    "\r\n"
    "Our newsletter, in plain text.\r\n"
    "--outer\r\n"
    "Content-Type: multipart/related; boundary=\"inner\"; type=\"text/html\"\r\n"
    "\r\n"
    "--inner\r\n"
    "Content-Type: text/html; charset=us-ascii\r\n"
    "\r\n"
    "<html><body><img src=\"cid:logo@example.org\"><p>Our newsletter.</p></body></html>\r\n"
    "--inner\r\n"
    "Content-Type: image/gif\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "Content-ID: <logo@example.org>\r\n"
    "\r\n"
    "R0lGODlhAQABAAAAACw=\r\n"
    "--inner--\r\n"
    "\r\n"
    "--outer--\r\n";

const char kForward[] =
    "From: Erin <erin@example.com>\r\n"
    "To: Frank <frank@example.com>\r\n"
    "Subject: Fwd: minutes\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: multipart/mixed; boundary=\"fwd\"\r\n"
    "\r\n"
    "--fwd\r\n"
    "Content-Type: text/plain\r\n"
    "\r\n"
    "See the forwarded message.\r\n"
    "--fwd\r\n"
    "Content-Type: message/rfc822\r\n"
    "Content-Disposition: attachment; filename=\"minutes.eml\"\r\n"
    "\r\n"
    "From: Grace <grace@example.com>\r\n"
    "Subject: minutes\r\n"
    "\r\n"
    "The minutes of the meeting.\r\n"
    "--fwd--\r\n";

const char kUuencodedPlain[] =
    "From: Heidi <heidi@example.com>\r\n"
    "To: Ivan <ivan@example.com>\r\n"
    "Subject: old-style attachment\r\n"
    "\r\n"
    "Here is the file.\r\n"
    "\r\n"
    "begin 644 hello.txt\r\n"
    "%:&5L;&\\`\r\n"
    "`\r\n"
    "end\r\n"
    "Regards, Heidi\r\n";

const char kUuencodedPart[] =
    "From: Judy <judy@example.com>\r\n"
    "To: Ken <ken@example.com>\r\n"
    "Subject: files inside\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: multipart/mixed; boundary=\"uu\"\r\n"
    "\r\n"
    "--uu\r\n"
    "Content-Type: text/plain\r\n"
    "\r\n"
    "Two files follow.\r\n"
    "begin 600 a.txt\r\n"
    "#86)C\r\n"
    "`\r\n"
    "end\r\n"
    "begin 640 b.txt\r\n"
    "#9&5F\r\n"
    "`\r\n"
    "end\r\n"
    "That is all.\r\n"
    "--uu\r\n"
    "Content-Type: image/gif\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "R0lGODlhAQABAAAAACw=\r\n"
    "--uu--\r\n";

struct Sample {
  const char* name;
  const char* text;
  bool mime;
  const char* shape;
  const char* subject;
  const char* senderName;
  const char* senderEmail;
  const char* recipientEmail;
  const char* textBody;  // "<absent>" when TextBody answers S_FALSE
  const char* htmlBody;
  const char* attachments;  // names of AttachParts joined by ","
  const char* shapeAfterEdits;
};

void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }

const Sample kSamples[] = {
    {"plain", kPlain, false, "<none>", "Lunch on Friday?", "Alice Example", "alice@example.com",
     "bob@example.org", "Hi Bob,\r\n\r\nare you free for lunch on Friday?\r\n\r\nAlice\r\n", "<absent>",
     "<plain>", "multipart/mixed(multipart/alternative(text/plain,text/html),application/pdf)"},
    {"alternative", kAlternative, true, "multipart/alternative(text/plain,text/html)",
     "Pr\xC3\xAAt pour la r\xC3\xA9union",
     "Ren\xC3\xA9"
     "e",
     "renee@example.net", "team@example.net", "Pr\xC3\xAAt pour la r\xC3\xA9union \xC3\xA0 10h.\r\n",
     "<p>Pr\xC3\xAAt pour la r\xC3\xA9union \xC3\xA0 <b>10h</b>.</p>", "",
     "multipart/mixed(multipart/alternative(text/plain,text/html),application/pdf)"},
    {"mixed", kMixed, true, "multipart/mixed(text/plain,application/pdf,image/png)", "Invoice and photo",
     "Carol", "carol@example.com", "dave@example.com", "Invoice and photo attached.\r\n", "<absent>",
     "invoice.pdf,photo.png",
     "multipart/mixed(text/plain,application/pdf,image/png,text/html,application/pdf)"},
    {"related", kRelated, true, "multipart/alternative(text/plain,multipart/related(text/html,image/gif))",
     "Newsletter", "", "news@example.org", "reader@example.org", "Our newsletter, in plain text.\r\n",
     "<html><body><img src=\"cid:logo@example.org\"><p>Our newsletter.</p></body></html>\r\n", "NoName.att",
     "multipart/mixed(multipart/alternative(text/plain,multipart/related(text/html,image/gif)),application/"
     "pdf)"},
    {"forward", kForward, true, "multipart/mixed(text/plain,message/rfc822)", "Fwd: minutes", "Erin",
     "erin@example.com", "frank@example.com", "See the forwarded message.\r\n", "<absent>", "minutes.eml",
     "multipart/mixed(text/plain,message/rfc822,text/html,application/pdf)"},
    {"uuencoded plain", kUuencodedPlain, true, "multipart/mixed(text/plain,<none>)", "old-style attachment",
     "Heidi", "heidi@example.com", "ivan@example.com", "Here is the file.\r\n\r\nRegards, Heidi\r\n",
     "<absent>", "", "multipart/mixed(text/plain,<none>,text/html,application/pdf)"},
    {"uuencoded part", kUuencodedPart, true, "multipart/mixed(text/plain,image/gif,<none>,<none>)",
     "files inside", "Judy", "judy@example.com", "ken@example.com", "Two files follow.\r\nThat is all.\r\n",
     "<absent>", "NoName.att",
     "multipart/mixed(text/plain,image/gif,<none>,<none>,text/html,application/pdf)"},
};

// ---------------------------------------------------------------- reading and editing
std::string BodyText(IEMSMessageParser* message,
                     HRESULT (STDMETHODCALLTYPE IEMSMessageParser::*getter)(BSTR*)) {
  BSTR value = nullptr;
  HRESULT hr = (message->*getter)(&value);
  if (hr == S_FALSE) {
    EXPECT_EQ(value, nullptr);
    return "<absent>";
  }
  EXPECT_EQ(hr, S_OK);
  return TextOf(value);
}

std::string AttachmentNames(IEMSMessageParser* message) {
  ComPtr<IEMSMimeParts> parts;
  HRESULT hr = message->get_AttachParts(parts.put());
  if (hr == S_FALSE) return "<plain>";
  EXPECT_EQ(hr, S_OK);
  std::string names;
  LONG count = 0;
  if (parts) parts->get_PartsCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimePart> part;
    parts->get_Part(i, part.put());
    if (!names.empty()) names += ",";
    names += Text(part.get(), &IEMSMimePart::get_AttachName);
  }
  return names;
}

void ExpectReadsAsSample(IEMSMessageParser* message, const Sample& s) {
  EXPECT_EQ(message->IsMimeMessage(), s.mime ? S_OK : E_FAIL);
  EXPECT_EQ(TreeShape(RootOf(message).get()), s.shape);
  EXPECT_EQ(Text(message, &IEMSMessageParser::get_Subject), s.subject);
  EXPECT_EQ(Text(message, &IEMSMessageParser::get_SenderName), s.senderName);
  EXPECT_EQ(Text(message, &IEMSMessageParser::get_SenderEmail), s.senderEmail);
  EXPECT_EQ(Text(message, &IEMSMessageParser::get_RecipientEmail), s.recipientEmail);
  EXPECT_EQ(BodyText(message, &IEMSMessageParser::get_TextBody), s.textBody);
  EXPECT_EQ(BodyText(message, &IEMSMessageParser::get_HTMLBody), s.htmlBody);
  EXPECT_EQ(AttachmentNames(message), s.attachments);
}

// Every remaining getter answers, and they agree with one another.
void ExpectGettersAgree(IEMSMessageParser* message) {
  std::string full = Text(message, &IEMSMessageParser::get_FullMessage);
  EXPECT_EQ(full, U8(AnsiToWide(Assembled(message))));
  std::string headers = Text(message, &IEMSMessageParser::get_AllHeadersString);
  EXPECT_EQ(full.compare(0, headers.size(), headers), 0);
  EXPECT_NE(Text(message, &IEMSMessageParser::get_Body), "<unset>");
  ULONG size = 0;
  EXPECT_EQ(message->get_Size(&size), S_OK);
  EXPECT_GT(size, 0u);
  BSTR name = nullptr;
  EXPECT_EQ(message->get_RecipientName(&name), S_OK);
  SysFreeString(name);
  ComPtr<IEMSMessageParameters> all;
  EXPECT_EQ(message->get_AllHeaders(all.put()), S_OK);
  EXPECT_GT(Number(all.get(), &IEMSMessageParameters::get_ParamCount), 0);
}

// Text and HTML with few ASCII bytes, so that the automatic transfer
// encoding is base64 whatever part takes them: base64 reads back the same
// wherever the part stands in its multipart list.
const char kNewText[] = "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC text \xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\r\n";
const char kNewHtml[] = "<p>\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC</p>";

// Edits through every setter of the message.
void EditEverything(IEMSMessageParser* message) {
  ASSERT_EQ(message->put_Subject(B("Edited \xC3\xA9").get()), S_OK);
  ASSERT_EQ(message->put_SenderName(B("Sender Edited").get()), S_OK);
  ASSERT_EQ(message->put_SenderEmail(B("sender@edited.example").get()), S_OK);
  ASSERT_EQ(message->put_RecipientName(B("Recipient").get()), S_OK);
  ASSERT_EQ(message->put_RecipientEmail(B("rcpt@edited.example").get()), S_OK);
  ASSERT_EQ(message->put_HeaderString(B("X-Edited").get(), B("yes").get()), S_OK);
  // The header block put back as it reads, with one more field.
  std::string block = Text(message, &IEMSMessageParser::get_AllHeadersString) + "X-Round-Trip: 1\r\n";
  ASSERT_EQ(message->put_AllHeadersString(B(block).get()), S_OK);
  message->put_TextCodePage(65001);
  message->put_HtmlCodePage(65001);
  ASSERT_EQ(message->put_TextBody(B(kNewText).get()), S_OK);
  ASSERT_EQ(message->put_HTMLBody(B(kNewHtml).get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("C:\\out\\added.pdf").get(), DataOf("%PDF added").get()), S_OK);
}

class MessageSamples : public ::testing::TestWithParam<Sample> {};

TEST_P(MessageSamples, ReadsAsExpected) {
  auto message = ParsedMessage(GetParam().text);
  ExpectReadsAsSample(message.get(), GetParam());
  ExpectGettersAgree(message.get());
}

TEST_P(MessageSamples, AssemblesAndParsesBackToTheSameMessage) {
  auto message = ParsedMessage(GetParam().text);
  auto again = ParsedMessage(Assembled(message.get()));
  ExpectReadsAsSample(again.get(), GetParam());
  EXPECT_EQ(Assembled(again.get()), Assembled(message.get()));
}

TEST_P(MessageSamples, EditsSurviveAssemblyAndASecondParse) {
  auto message = ParsedMessage(GetParam().text);
  EditEverything(message.get());
  auto again = ParsedMessage(Assembled(message.get()));
  EXPECT_EQ(TreeShape(RootOf(again.get()).get()), GetParam().shapeAfterEdits);
  EXPECT_EQ(Text(again.get(), &IEMSMessageParser::get_Subject), "Edited \xC3\xA9");
  EXPECT_EQ(Text(again.get(), &IEMSMessageParser::get_SenderName), "Sender Edited");
  EXPECT_EQ(Text(again.get(), &IEMSMessageParser::get_SenderEmail), "sender@edited.example");
  EXPECT_EQ(Text(again.get(), &IEMSMessageParser::get_RecipientName), "Recipient");
  EXPECT_EQ(Text(again.get(), &IEMSMessageParser::get_RecipientEmail), "rcpt@edited.example");
  EXPECT_EQ(HeaderText(again.get(), "X-Edited"), "yes");
  EXPECT_EQ(HeaderText(again.get(), "X-Round-Trip"), "1");
  again->put_DefaultCodePage(65001);
  again->put_HtmlCodePage(65001);
  EXPECT_EQ(Text(again.get(), &IEMSMessageParser::get_TextBody), kNewText);
  EXPECT_EQ(Text(again.get(), &IEMSMessageParser::get_HTMLBody), kNewHtml);
  std::string names = AttachmentNames(again.get());
  EXPECT_EQ(names.substr(names.size() - std::string("added.pdf").size()), "added.pdf");
}

INSTANTIATE_TEST_SUITE_P(OneOfEachKind, MessageSamples, ::testing::ValuesIn(kSamples),
                         [](const ::testing::TestParamInfo<Sample>& info) {
                           std::string name;
                           for (const char* c = info.param.name; *c; ++c) {
                             if (*c != ' ') name += *c;
                           }
                           return name;
                         });

}  // namespace
}  // namespace pv::test
