// EMSMessageParameter: parsing one field line, the raw, unfolded and
// decoded views, folding, chaining, assembly, cloning, the mailbox
// accessors, statuses, late binding and the library's own entry points.
#include "src/headers/message_parameter.h"

#include "tests/test_util.h"

namespace pv::test {
namespace {

class MessageParameterTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMessageParameter> field_ = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);

  static ComPtr<IEMSMessageParameter> Parsed(const char* line) {
    auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
    EXPECT_EQ(field->ParseHeader(B(line).get()), S_OK) << line;
    return field;
  }
  static ComPtr<IEMSMessageParameter> Named(const char* name) {
    auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
    EXPECT_EQ(field->put_Name(B(name).get()), S_OK);
    return field;
  }
  static std::string Text(IEMSMessageParameter* field,
                          HRESULT (STDMETHODCALLTYPE IEMSMessageParameter::*getter)(BSTR*)) {
    Bstr text;
    EXPECT_EQ((field->*getter)(text.put()), S_OK);
    EXPECT_FALSE(text.is_null());
    return U8(text);
  }
  // Narrow views as bytes of the ANSI page (windows-1252 by default).
  static std::string Bytes(IEMSMessageParameter* field,
                           HRESULT (STDMETHODCALLTYPE IEMSMessageParameter::*getter)(BSTR*)) {
    Bstr text;
    EXPECT_EQ((field->*getter)(text.put()), S_OK);
    return WideToAnsi(text.view());
  }
  static std::string Name(IEMSMessageParameter* f) { return Text(f, &IEMSMessageParameter::get_Name); }
  static std::string Raw(IEMSMessageParameter* f) { return Text(f, &IEMSMessageParameter::get_RawData); }
  static std::string Unfolded(IEMSMessageParameter* f) {
    return Text(f, &IEMSMessageParameter::get_UnfoldedData);
  }
  static std::string Decoded(IEMSMessageParameter* f) {
    return Text(f, &IEMSMessageParameter::get_DecodedData);
  }
  static std::string Assembled(IEMSMessageParameter* f) {
    return Text(f, &IEMSMessageParameter::AssembleHeader);
  }
  static std::vector<std::string> Values(IEMSMessageParameter* f) {
    return ImplOf<MessageParameter>(f)->values();
  }
  static LONG CodePage(IEMSMessageParameter* f) {
    LONG value = 12345;
    EXPECT_EQ(f->get_DefaultCodePage(&value), S_OK);
    return value;
  }
  static LONG Encoding(IEMSMessageParameter* f) {
    LONG value = 12345;
    EXPECT_EQ(f->get_DefaultEncoding(&value), S_OK);
    return value;
  }
  static LONG AttributeCount(IEMSMessageParameter* f) {
    ComPtr<IEMSMimeAttributes> attributes;
    EXPECT_EQ(f->get_Attributes(attributes.put()), S_OK);
    LONG count = -1;
    attributes->get_AttributesCount(&count);
    return count;
  }
};

// Whether two interface pointers belong to one object.
bool Same(IUnknown* a, IUnknown* b) {
  ComPtr<IUnknown> x, y;
  a->QueryInterface(IID_IUnknown, x.put_void());
  b->QueryInterface(IID_IUnknown, y.put_void());
  return x.get() == y.get();
}

// Splits folded text into its lines.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t from = 0;
  for (;;) {
    size_t brk = text.find("\r\n", from);
    lines.push_back(text.substr(from, brk == std::string::npos ? std::string::npos : brk - from));
    if (brk == std::string::npos) return lines;
    from = brk + 2;
  }
}

// ---------------------------------------------------------------- a new field
TEST_F(MessageParameterTest, NewFieldIsEmptyWithTheDocumentedDefaults) {
  EXPECT_EQ(Name(field_.get()), "");
  EXPECT_EQ(Raw(field_.get()), "");
  EXPECT_EQ(Unfolded(field_.get()), "");
  EXPECT_EQ(Decoded(field_.get()), "");
  EXPECT_EQ(Assembled(field_.get()), "");
  EXPECT_EQ(CodePage(field_.get()), static_cast<LONG>(AnsiCodePage()));
  EXPECT_EQ(Encoding(field_.get()), 0);
  EXPECT_EQ(AttributeCount(field_.get()), 0);
  EXPECT_TRUE(Values(field_.get()).empty());
}

TEST_F(MessageParameterTest, EachFieldOwnsItsCharsetAndAttributeList) {
  auto other = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  ComPtr<IEMSHeaderCharset> a, b;
  ComPtr<IEMSMimeAttributes> x, y;
  ASSERT_EQ(field_->get_HeaderCharset(a.put()), S_OK);
  ASSERT_EQ(other->get_HeaderCharset(b.put()), S_OK);
  ASSERT_EQ(field_->get_Attributes(x.put()), S_OK);
  ASSERT_EQ(other->get_Attributes(y.put()), S_OK);
  EXPECT_TRUE(a && b && x && y);
  EXPECT_FALSE(Same(a.get(), b.get()));
  EXPECT_FALSE(Same(x.get(), y.get()));
  ComPtr<IEMSHeaderCharset> again;
  field_->get_HeaderCharset(again.put());
  EXPECT_TRUE(Same(a.get(), again.get()));
}

// ---------------------------------------------------------------- ParseHeader
TEST_F(MessageParameterTest, ParseHeaderTakesNameAndTrimmedValue) {
  auto f = Parsed("Subject:  Hello\r\n");
  EXPECT_EQ(Name(f.get()), "Subject");
  EXPECT_EQ(Values(f.get()), std::vector<std::string>{"Hello"});
  EXPECT_EQ(Decoded(f.get()), "Hello");
}

TEST_F(MessageParameterTest, ParseHeaderNeedsAColonAfterTheFirstCharacter) {
  EXPECT_EQ(field_->ParseHeader(B(":x").get()), E_FAIL);
  EXPECT_EQ(field_->ParseHeader(B("no colon").get()), E_FAIL);
  EXPECT_EQ(field_->ParseHeader(B("").get()), E_FAIL);
  EXPECT_EQ(field_->ParseHeader(nullptr), E_FAIL);
}

TEST_F(MessageParameterTest, FailedParseChangesNothing) {
  field_ = Parsed("To: a@b");
  EXPECT_EQ(field_->ParseHeader(B(":x").get()), E_FAIL);
  EXPECT_EQ(Name(field_.get()), "To");
  EXPECT_EQ(Raw(field_.get()), "a@b");
  EXPECT_EQ(Decoded(field_.get()), "a@b");
}

TEST_F(MessageParameterTest, ParseHeaderTrimsBlanksAroundTheNameOnly) {
  auto f = Parsed(" \tX-Name \t:\t value  \r\n\r\n");
  EXPECT_EQ(Name(f.get()), "X-Name");
  EXPECT_EQ(Raw(f.get()), "value  ");  // trailing blanks stay
}

TEST_F(MessageParameterTest, ParseHeaderSplitsAtTheFirstColon) {
  auto f = Parsed("Date: Mon, 1 Jan 2024 10:00:00");
  EXPECT_EQ(Name(f.get()), "Date");
  EXPECT_EQ(Raw(f.get()), "Mon, 1 Jan 2024 10:00:00");
}

TEST_F(MessageParameterTest, ParseHeaderReplacesEveryValue) {
  field_->put_Name(B("X").get());
  field_->put_RawData(B("a\r\n\r\nb").get());
  EXPECT_EQ(field_->ParseHeader(B("Y: c").get()), S_OK);
  EXPECT_EQ(Values(field_.get()), std::vector<std::string>{"c"});
  EXPECT_EQ(Decoded(field_.get()), "c");
}

TEST_F(MessageParameterTest, ParseHeaderKeepsTheValueFolded) {
  auto f = Parsed("Subject: one\r\n two\r\n");
  EXPECT_EQ(Raw(f.get()), "one\r\n two");
  EXPECT_EQ(Unfolded(f.get()), "one two");
  EXPECT_EQ(Decoded(f.get()), "one two");
}

TEST_F(MessageParameterTest, ParseHeaderOfAnEmptyValueGivesOneEmptyValue) {
  auto f = Parsed("X-Empty:\r\n");
  EXPECT_EQ(Values(f.get()), std::vector<std::string>{""});
  EXPECT_EQ(Decoded(f.get()), "");
  EXPECT_EQ(Assembled(f.get()), "X-Empty: ");
}

TEST_F(MessageParameterTest, ParseHeaderOfAContentFieldMovesTheParametersToTheAttributeList) {
  auto f = Parsed("Content-Type: text/plain; charset=us-ascii");
  EXPECT_EQ(Values(f.get()), std::vector<std::string>{"text/plain"});
  ComPtr<IEMSMimeAttribute> charset;
  ASSERT_EQ(f->FindAttribute(B("charset").get(), charset.put()), S_OK);
  Bstr value;
  charset->get_RawValue(value.put());
  EXPECT_EQ(U8(value), "us-ascii");
  LONG type = 0, subtype = 0;
  ComPtr<IEMSContentType> ct;
  ASSERT_EQ(f.As(&ct), S_OK);
  ct->get_MimeType(&type);
  ct->get_MimeSubType(&subtype);
  EXPECT_EQ(type, 6);
  EXPECT_EQ(subtype, 18);
}

TEST_F(MessageParameterTest, ParameterSplitAppliesToEveryContentNameIgnoringCase) {
  auto f = Parsed("CONTENT-ID:  <x@y> ; a=1");
  EXPECT_EQ(Values(f.get()), std::vector<std::string>{"<x@y> "});  // trailing blanks stay
  EXPECT_EQ(AttributeCount(f.get()), 1);
  auto g = Parsed("X-Content-Type: text/plain; a=1");
  EXPECT_EQ(Values(g.get()), std::vector<std::string>{"text/plain; a=1"});
  EXPECT_EQ(AttributeCount(g.get()), 0);
}

TEST_F(MessageParameterTest, ParseHeaderOfAContentFieldWithoutParametersEmptiesTheList) {
  field_ = Parsed("Content-Type: text/plain; a=1; b=2");
  EXPECT_EQ(AttributeCount(field_.get()), 2);
  EXPECT_EQ(field_->ParseHeader(B("Content-Type: text/html").get()), S_OK);
  EXPECT_EQ(AttributeCount(field_.get()), 0);
}

TEST_F(MessageParameterTest, ParseHeaderDecodesEncodedWordsAndTakesTheirCharset) {
  auto f = Parsed("Subject: =?utf-8?B?Y2Fmw6k=?=");
  EXPECT_EQ(Raw(f.get()), "=?utf-8?B?Y2Fmw6k=?=");
  EXPECT_EQ(Decoded(f.get()), "caf\xC3\xA9");
  EXPECT_EQ(CodePage(f.get()), 65001);
  EXPECT_EQ(Encoding(f.get()), 2);
}

// ---------------------------------------------------------------- unfolding and the decoded text
TEST_F(MessageParameterTest, ValueWithAFoldUnfoldsToOneSpace) {
  field_->put_Name(B("X").get());
  field_->put_RawData(B("a\r\n\tb").get());
  EXPECT_EQ(Unfolded(field_.get()), "a b");
  EXPECT_EQ(Decoded(field_.get()), "a b");
}

TEST_F(MessageParameterTest, UnfoldingJoinsRunsOfLineBreaksAndKeepsTheFinalSpace) {
  field_->put_Name(B("X").get());
  field_->put_RawData(B("a\r\r\n \t b\n\rc\r\n").get());
  EXPECT_EQ(Unfolded(field_.get()), "a b c ");
}

TEST_F(MessageParameterTest, DecodedTextSkipsValuesThatUnfoldToNothing) {
  field_->put_Name(B("X").get());
  field_->put_RawData(B("\r\n\r\na\r\n\r\n\r\n\r\nb").get());
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"", "a", "", "b"}));
  EXPECT_EQ(Decoded(field_.get()), "a\r\n\r\nb");
}

TEST_F(MessageParameterTest, UnfoldedViewLeavesASeparatorForAnEmptyValueAfterAnother) {
  field_->put_Name(B("X").get());
  field_->put_RawData(B("a\r\n\r\n").get());
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"a", ""}));
  EXPECT_EQ(Unfolded(field_.get()), "a\r\n\r\n");
  EXPECT_EQ(Decoded(field_.get()), "a");
  field_->put_RawData(B("\r\n\r\na").get());
  EXPECT_EQ(Unfolded(field_.get()), "a");
}

TEST_F(MessageParameterTest, RefreshDecodesEachValueWithTheCodePageThatTheOneBeforeLeft) {
  // The second value's bytes are read in UTF-8, the page the first word named.
  field_->put_Name(B("X").get());
  Bstr raw(AnsiToWide("=?utf-8?Q?a?=\r\n\r\n\xC3\xA9"));
  field_->put_RawData(raw.get());
  EXPECT_EQ(Decoded(field_.get()), "a\r\n\r\n\xC3\xA9");
  EXPECT_EQ(CodePage(field_.get()), 65001);
  EXPECT_EQ(Encoding(field_.get()), 1);
}

TEST_F(MessageParameterTest, RefreshStartsFromTheFieldsDefaultCodePage) {
  field_->put_Name(B("X").get());
  field_->put_DefaultCodePage(65001);
  Bstr raw(AnsiToWide("caf\xC3\xA9"));
  field_->put_RawData(raw.get());
  EXPECT_EQ(Decoded(field_.get()), "caf\xC3\xA9");
}

// ---------------------------------------------------------------- raw view
TEST_F(MessageParameterTest, RawDataPutSplitsIntoValuesAndAssemblesOneLineEach) {
  field_->put_Name(B("X-Test").get());
  EXPECT_EQ(field_->put_RawData(B("x\r\n\r\ny").get()), S_OK);
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(Assembled(field_.get()), "X-Test: x\r\nX-Test: y");
}

TEST_F(MessageParameterTest, RawDataGetJoinsEveryValueEvenEmptyOnes) {
  field_->put_Name(B("X").get());
  field_->put_RawData(B("\r\n\r\n\r\n\r\nz").get());
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"", "", "z"}));
  EXPECT_EQ(Raw(field_.get()), "\r\n\r\n\r\n\r\nz");
}

TEST_F(MessageParameterTest, RawDataPutOfEmptyOrMissingTextGivesOneEmptyValue) {
  field_->put_Name(B("X").get());
  EXPECT_EQ(field_->put_RawData(nullptr), S_OK);
  EXPECT_EQ(Values(field_.get()), std::vector<std::string>{""});
  EXPECT_EQ(field_->put_RawData(B("").get()), S_OK);
  EXPECT_EQ(Values(field_.get()), std::vector<std::string>{""});
}

TEST_F(MessageParameterTest, RawDataPutKeepsFoldsAndDoesNotFold) {
  field_->put_Name(B("Subject").get());
  std::string longText(100, 'a');
  longText += " b\r\n c";
  field_->put_RawData(B(longText).get());
  EXPECT_EQ(Raw(field_.get()), longText);
}

TEST_F(MessageParameterTest, RawDataOfAContentFieldEndsWithItsParameters) {
  auto f = Parsed("Content-Type: text/plain; charset=us-ascii");
  EXPECT_EQ(Raw(f.get()), "text/plain;\r\n\tcharset=\"us-ascii\"");
}

TEST_F(MessageParameterTest, RawDataPutOfAContentFieldSplitsOffParametersButKeepsTheCodes) {
  field_ = Parsed("Content-Type: text/plain");
  EXPECT_EQ(field_->put_RawData(B("image/gif; name=a.gif").get()), S_OK);
  EXPECT_EQ(Values(field_.get()), std::vector<std::string>{"image/gif"});
  EXPECT_EQ(AttributeCount(field_.get()), 1);
  ComPtr<IEMSContentType> ct;
  ASSERT_EQ(field_.As(&ct), S_OK);
  Bstr type;
  ct->get_ContentType(type.put());
  EXPECT_EQ(U8(type), "text/plain");  // not re-parsed
}

TEST_F(MessageParameterTest, RawDataPutGivesEachPiecesParametersToTheList) {
  // The list is emptied by each piece's parse: the last piece's parameters stay.
  field_->put_Name(B("Content-X").get());
  field_->put_RawData(B("a; p=1\r\n\r\nb; q=2").get());
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"a", "b"}));
  ComPtr<IEMSMimeAttribute> p, q;
  EXPECT_EQ(field_->FindAttribute(B("p").get(), p.put()), S_FALSE);
  EXPECT_EQ(field_->FindAttribute(B("q").get(), q.put()), S_OK);
}

TEST_F(MessageParameterTest, BytesOfTheUpperHalfSurviveTheRawView) {
  field_->put_Name(B("X").get());
  std::string bytes = "caf\xE9 \x81\x8D\x8F\x90\x9D\xFF";
  Bstr raw(AnsiToWide(bytes));
  field_->put_RawData(raw.get());
  EXPECT_EQ(Bytes(field_.get(), &IEMSMessageParameter::get_RawData), bytes);
  EXPECT_EQ(Bytes(field_.get(), &IEMSMessageParameter::AssembleHeader), "X: " + bytes);
}

// ---------------------------------------------------------------- unfolded view and folding
TEST_F(MessageParameterTest, UnfoldedDataPutFoldsAndMakesNoParameterSplit) {
  field_->put_Name(B("Content-Type").get());
  EXPECT_EQ(field_->put_UnfoldedData(B("text/plain; a=1\r\n\r\nb").get()), S_OK);
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"text/plain; a=1", "b"}));
  EXPECT_EQ(AttributeCount(field_.get()), 0);
  EXPECT_EQ(Decoded(field_.get()), "text/plain; a=1\r\n\r\nb");
}

TEST_F(MessageParameterTest, LongSubjectOfWordsFoldsAtTheLastBlankBeforeTheWidth) {
  // Words of nine letters: blanks at 9, 19, 29, ... The first line may hold
  // 78 - (7 + 4) = 67 columns, so the walk reaches column 67 with the blank
  // at 59 as its candidate; later lines count from the byte after the cut.
  std::string text;
  for (char c = 'a'; c < 'a' + 20; ++c) text += std::string(9, c) + " ";
  text.pop_back();
  ASSERT_EQ(text.size(), 199u);
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Raw(field_.get()), text.substr(0, 59) + "\r\n" + text.substr(59, 70) + "\r\n" + text.substr(129));
  EXPECT_EQ(Unfolded(field_.get()), text);
  EXPECT_EQ(Decoded(field_.get()), text);
}

TEST_F(MessageParameterTest, TwoHundredCharacterSubjectKeepsToTheLineWidths) {
  std::string text;
  for (int i = 0; text.size() < 200; ++i)
    text += std::string(1 + i % 7, static_cast<char>('a' + i % 26)) + " ";
  text.resize(200);
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  std::vector<std::string> lines = Lines(Raw(field_.get()));
  ASSERT_GE(lines.size(), 3u);
  EXPECT_LE(lines[0].size(), 67u);
  std::string joined = lines[0];
  for (size_t i = 1; i < lines.size(); ++i) {
    ASSERT_FALSE(lines[i].empty());
    EXPECT_EQ(lines[i][0], ' ') << i;      // each continuation starts with the blank it was cut at
    EXPECT_LE(lines[i].size(), 79u) << i;  // that blank and up to 78 columns
    joined += lines[i];
  }
  EXPECT_EQ(joined, text);
}

TEST_F(MessageParameterTest, ShortNamesLeaveMoreRoomOnTheFirstLine) {
  // Name "X": the first line may hold 78 - 5 = 73 columns.
  std::string text = std::string(70, 'a') + " bb cc dd";
  field_->put_Name(B("X").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Raw(field_.get()), std::string(70, 'a') + " bb\r\n cc dd");
}

TEST_F(MessageParameterTest, LongSubjectWithoutBlanksIsNotFolded) {
  std::string text(300, 'x');
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Raw(field_.get()), text);
}

TEST_F(MessageParameterTest, LongRunWithoutBlanksBreaksAtTheFirstBlankAfterIt) {
  std::string text = std::string(100, 'x') + " tail end";
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Raw(field_.get()), std::string(100, 'x') + "\r\n tail end");
}

TEST_F(MessageParameterTest, TabsAreCutLikeSpaces) {
  std::string text = std::string(66, 'x') + "\tyy";
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Raw(field_.get()), std::string(66, 'x') + "\r\n\tyy");
}

TEST_F(MessageParameterTest, NothingIsCutBetweenBrackets) {
  // The candidate before "[" is taken at "]"; the blank after "]" cuts next.
  std::string inside;
  for (int i = 0; i < 40; ++i) inside += "y ";
  std::string text = "x [" + inside + "] z";
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Raw(field_.get()), "x\r\n [" + inside + "]\r\n z");
}

TEST_F(MessageParameterTest, BlankAfterSemicolonIsThePreferredCut) {
  // "abc;" steps onto the blank at 4, the preferred cut; at column 67 the
  // last blank is at 67, 63 columns after it, so the cut goes to 4.
  std::string text = "abc; ";
  while (text.size() < 120) text += "dddddddd ";
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  std::vector<std::string> lines = Lines(Raw(field_.get()));
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "abc;");
  EXPECT_EQ(lines[1].substr(0, 10), " dddddddd ");
}

TEST_F(MessageParameterTest, BlankAfterClosingParenthesisIsThePreferredCut) {
  std::string text = "(note) ";
  while (text.size() < 120) text += "eeeeeeee ";
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Lines(Raw(field_.get()))[0], "(note)");
}

TEST_F(MessageParameterTest, PreferredCutTooFarBeforeTheBlankIsNotTaken) {
  // A line break clears the plain candidate but not the preferred one;
  // the preferred blank at 3 lies 75 bytes before the blank at 78.
  std::string text = "ab; cd\r\n" + std::string(70, 'x') + " tail";
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(text).get());
  EXPECT_EQ(Raw(field_.get()), "ab; cd\r\n" + std::string(70, 'x') + "\r\n tail");
}

TEST_F(MessageParameterTest, UnfoldedDataPutFoldsEachPiece) {
  std::string longText = std::string(60, 'a') + " " + std::string(20, 'b');
  field_->put_Name(B("Subject").get());
  field_->put_UnfoldedData(B(longText + "\r\n\r\n" + longText).get());
  std::string folded = std::string(60, 'a') + "\r\n " + std::string(20, 'b');
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{folded, folded}));
}

// ---------------------------------------------------------------- decoded view
TEST_F(MessageParameterTest, DecodedDataPutKeepsTheCallersTextAndEncodesTheValues) {
  field_->put_Name(B("Subject").get());
  field_->put_DefaultCodePage(65001);
  field_->put_DefaultEncoding(2);
  EXPECT_EQ(field_->put_DecodedData(B("caf\xC3\xA9").get()), S_OK);
  EXPECT_EQ(Decoded(field_.get()), "caf\xC3\xA9");
  EXPECT_EQ(Raw(field_.get()), "=?utf-8?B?Y2Fmw6k=?=");
}

TEST_F(MessageParameterTest, DecodedDataPutDropsPiecesThatEncodeToNothing) {
  field_->put_Name(B("X").get());
  EXPECT_EQ(field_->put_DecodedData(B("a\r\n\r\n\r\n\r\nb").get()), S_OK);
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(Decoded(field_.get()), "a\r\n\r\n\r\n\r\nb");  // not refreshed from the values
}

TEST_F(MessageParameterTest, DecodedDataPutOfMissingTextEmptiesTheField) {
  field_ = Parsed("X: a");
  EXPECT_EQ(field_->put_DecodedData(nullptr), S_OK);
  EXPECT_TRUE(Values(field_.get()).empty());
  EXPECT_EQ(Decoded(field_.get()), "");
}

TEST_F(MessageParameterTest, DecodedDataPutUsesTheDefaultsThatTheLastRefreshLeft) {
  field_ = Parsed("Subject: =?iso-8859-1?Q?caf=E9?=");
  EXPECT_EQ(CodePage(field_.get()), 28591);
  EXPECT_EQ(Encoding(field_.get()), 1);
  field_->put_DecodedData(B("th\xC3\xA9").get());
  EXPECT_EQ(Raw(field_.get()), "=?iso-8859-1?Q?th=E9?=");
}

// ---------------------------------------------------------------- chaining
TEST_F(MessageParameterTest, ChainingAcceptsTheSameNameInAnyCase) {
  field_ = Parsed("Received: a");
  auto other = Parsed("RECEIVED: b");
  EXPECT_EQ(field_->AddChainHeader(other.get()), S_OK);
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(Name(field_.get()), "Received");
}

TEST_F(MessageParameterTest, ChainingAnotherNameIsRejectedAndChangesNothing) {
  field_ = Parsed("Received: a");
  auto other = Parsed("Subject: b");
  EXPECT_EQ(field_->AddChainHeader(other.get()), E_INVALIDARG);
  EXPECT_EQ(Values(field_.get()), std::vector<std::string>{"a"});
}

TEST_F(MessageParameterTest, ChainingNothingIsAPointerError) {
  EXPECT_EQ(field_->AddChainHeader(nullptr), E_POINTER);
}

TEST_F(MessageParameterTest, ChainedFieldShowsEveryOccurrenceInEveryView) {
  field_ = Parsed("Received: from a\r\n by b");
  field_->AddChainHeader(Parsed("Received: from c").get());
  field_->AddChainHeader(Parsed("received: =?utf-8?Q?d=C3=A9?=").get());
  EXPECT_EQ(Raw(field_.get()), "from a\r\n by b\r\n\r\nfrom c\r\n\r\n=?utf-8?Q?d=C3=A9?=");
  EXPECT_EQ(Unfolded(field_.get()), "from a by b\r\n\r\nfrom c\r\n\r\n=?utf-8?Q?d=C3=A9?=");
  EXPECT_EQ(Decoded(field_.get()), "from a by b\r\n\r\nfrom c\r\n\r\nd\xC3\xA9");
  EXPECT_EQ(Assembled(field_.get()),
            "Received: from a\r\n by b\r\nReceived: from c\r\nReceived: =?utf-8?Q?d=C3=A9?=");
}

TEST_F(MessageParameterTest, ChainingAContentFieldTakesItsParametersIntoTheValue) {
  field_ = Parsed("Content-X: a; p=1");
  auto other = Parsed("Content-X: b; q=2");
  EXPECT_EQ(field_->AddChainHeader(other.get()), S_OK);
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"a", "b;\r\n\tq=\"2\""}));
  EXPECT_EQ(AttributeCount(field_.get()), 1);  // its own p stays, q is not parsed
}

TEST_F(MessageParameterTest, ChainingAFieldWithSeveralValuesAppendsEachOne) {
  field_ = Parsed("X: a");
  auto other = Named("x");
  other->put_RawData(B("b\r\n\r\nc").get());
  field_->AddChainHeader(other.get());
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"a", "b", "c"}));
}

TEST_F(MessageParameterTest, ChainingAFieldIntoItselfDoublesItsValues) {
  field_ = Parsed("X: a");
  EXPECT_EQ(field_->AddChainHeader(field_.get()), S_OK);
  EXPECT_EQ(Values(field_.get()), (std::vector<std::string>{"a", "a"}));
}

TEST_F(MessageParameterTest, ChainingRefreshesFromTheDefaultsOfTheMoment) {
  // A code page set by hand before the chaining is what the refresh starts from.
  field_->put_Name(B("X").get());
  Bstr raw(AnsiToWide("\xE9\r\n\r\n=?utf-8?Q?a?="));
  field_->put_RawData(raw.get());
  EXPECT_EQ(CodePage(field_.get()), 65001);
  field_->put_DefaultCodePage(1252);
  Bstr third(AnsiToWide("\xE9"));
  auto other = Named("X");
  other->put_RawData(third.get());
  field_->AddChainHeader(other.get());
  EXPECT_EQ(Decoded(field_.get()), "\xC3\xA9\r\n\r\na\r\n\r\n\xEF\xBF\xBD");
}

// ---------------------------------------------------------------- assembly
TEST_F(MessageParameterTest, AssembleHeaderWritesNoFinalLineBreak) {
  EXPECT_EQ(Assembled(Parsed("Subject: s\r\n").get()), "Subject: s");
}

TEST_F(MessageParameterTest, AssembleHeaderAppendsParametersForAnyName) {
  field_ = Parsed("X-A: v");
  ComPtr<IEMSMimeAttribute> p;
  ASSERT_EQ(field_->CreateAttribute(B("p").get(), p.put()), S_OK);
  p->put_RawValue(B("1").get());
  EXPECT_EQ(Assembled(field_.get()), "X-A: v;\r\n\tp=\"1\"");
  EXPECT_EQ(Raw(field_.get()), "v");  // only "Content-" fields show them in the raw view
}

TEST_F(MessageParameterTest, ValuelessFieldWithParametersWritesALineOfItsOwn) {
  field_->put_Name(B("X-A").get());
  ComPtr<IEMSMimeAttribute> p;
  field_->CreateAttribute(B("p").get(), p.put());
  p->put_RawValue(B("1").get());
  EXPECT_EQ(Assembled(field_.get()), "X-A: ;\r\n\tp=\"1\"");
  EXPECT_EQ(Raw(field_.get()), "");
}

TEST_F(MessageParameterTest, ValuelessFieldWithNothingToWriteWritesNothing) {
  field_->put_Name(B("X-A").get());
  EXPECT_EQ(Assembled(field_.get()), "");
}

TEST_F(MessageParameterTest, AssembleHeaderNeedsAResultPlace) {
  EXPECT_EQ(field_->AssembleHeader(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- clone
TEST_F(MessageParameterTest, CloneGetsTheCodePageAsItsDefaultEncoding) {
  field_ = Parsed("Subject: s");
  field_->put_DefaultCodePage(1252);
  field_->put_DefaultEncoding(2);
  ComPtr<IEMSMessageParameter> clone;
  ASSERT_EQ(field_->Clone(clone.put()), S_OK);
  EXPECT_EQ(CodePage(clone.get()), 1252);
  EXPECT_EQ(Encoding(clone.get()), 1252);
}

TEST_F(MessageParameterTest, CloneCopiesNameAndValuesIntoANewObject) {
  field_ = Parsed("Received: a\r\n b");
  field_->AddChainHeader(Parsed("Received: c").get());
  ComPtr<IEMSMessageParameter> clone;
  ASSERT_EQ(field_->Clone(clone.put()), S_OK);
  EXPECT_FALSE(Same(clone.get(), field_.get()));
  EXPECT_EQ(Name(clone.get()), "Received");
  EXPECT_EQ(Values(clone.get()), (std::vector<std::string>{"a\r\n b", "c"}));
  EXPECT_EQ(Decoded(clone.get()), "a b\r\n\r\nc");
}

TEST_F(MessageParameterTest, CloneOfAContentFieldParsesTheParametersIntoItsOwnList) {
  field_ = Parsed("Content-Type: text/plain; charset=us-ascii");
  ComPtr<IEMSMessageParameter> clone;
  ASSERT_EQ(field_->Clone(clone.put()), S_OK);
  EXPECT_EQ(Values(clone.get()), std::vector<std::string>{"text/plain"});
  ComPtr<IEMSMimeAttributes> mine, theirs;
  field_->get_Attributes(mine.put());
  clone->get_Attributes(theirs.put());
  EXPECT_FALSE(Same(mine.get(), theirs.get()));
  EXPECT_EQ(AttributeCount(clone.get()), 1);
  EXPECT_EQ(Assembled(clone.get()), Assembled(field_.get()));
}

TEST_F(MessageParameterTest, CloneDoesNotCarryTheContentTypeState) {
  field_ = Parsed("Content-Type: text/plain");
  ComPtr<IEMSMessageParameter> clone;
  ASSERT_EQ(field_->Clone(clone.put()), S_OK);
  ComPtr<IEMSContentType> ct;
  ASSERT_EQ(clone.As(&ct), S_OK);
  LONG type = 99;
  ct->get_MimeType(&type);
  EXPECT_EQ(type, 0);
}

TEST_F(MessageParameterTest, CloneKeepsEveryCharacterOfNameValuesAndParameters) {
  field_ = Parsed("Content-\xC3\xA9: a\xC2\x81\r\n b; n\xC3\xA9=\"v\xC3\xA9\"");
  field_->AddChainHeader(Parsed("Content-\xC3\xA9: c\xC3\xBF").get());
  ComPtr<IEMSMessageParameter> clone;
  ASSERT_EQ(field_->Clone(clone.put()), S_OK);
  EXPECT_EQ(Name(clone.get()), "Content-\xC3\xA9");
  EXPECT_EQ(Values(clone.get()), (std::vector<std::string>{"a\x81\r\n b", "c\xFF"}));  // the bytes kept
  EXPECT_EQ(Raw(clone.get()), Raw(field_.get()));
  EXPECT_EQ(Assembled(clone.get()), Assembled(field_.get()));
}

TEST_F(MessageParameterTest, CloneNeedsAResultPlace) { EXPECT_EQ(field_->Clone(nullptr), E_POINTER); }

// ---------------------------------------------------------------- name and plain properties
TEST_F(MessageParameterTest, NamePutReplacesOnlyTheName) {
  field_ = Parsed("Subject: s");
  EXPECT_EQ(field_->put_Name(B("Topic").get()), S_OK);
  EXPECT_EQ(Name(field_.get()), "Topic");
  EXPECT_EQ(Raw(field_.get()), "s");
  EXPECT_EQ(Decoded(field_.get()), "s");
  EXPECT_EQ(field_->put_Name(nullptr), S_OK);
  EXPECT_EQ(Name(field_.get()), "");
}

TEST_F(MessageParameterTest, DefaultsAreStoredAsGiven) {
  EXPECT_EQ(field_->put_DefaultCodePage(-7), S_OK);
  EXPECT_EQ(field_->put_DefaultEncoding(42), S_OK);
  EXPECT_EQ(CodePage(field_.get()), -7);
  EXPECT_EQ(Encoding(field_.get()), 42);
}

TEST_F(MessageParameterTest, AttributesPutReplacesTheList) {
  auto list = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  EXPECT_EQ(field_->put_Attributes(list.get()), S_OK);
  ComPtr<IEMSMimeAttributes> held;
  field_->get_Attributes(held.put());
  EXPECT_TRUE(Same(held.get(), list.get()));
  EXPECT_EQ(field_->put_Attributes(list.get()), S_OK);
  EXPECT_EQ(field_->put_Attributes(nullptr), E_POINTER);
  field_->get_Attributes(held.put());
  EXPECT_TRUE(Same(held.get(), list.get()));
}

TEST_F(MessageParameterTest, AttributeOperationsGoToTheList) {
  ComPtr<IEMSMimeAttribute> created, again, found;
  EXPECT_EQ(field_->CreateAttribute(B("a").get(), created.put()), S_OK);
  EXPECT_EQ(field_->CreateAttribute(B("a").get(), again.put()), S_FALSE);
  EXPECT_TRUE(Same(created.get(), again.get()));
  EXPECT_EQ(field_->FindAttribute(B("a").get(), found.put()), S_OK);
  EXPECT_TRUE(Same(created.get(), found.get()));
  EXPECT_EQ(field_->RemoveAttribute(B("a").get()), S_OK);
  EXPECT_EQ(field_->RemoveAttribute(B("a").get()), S_OK);
  IEMSMimeAttribute* none = reinterpret_cast<IEMSMimeAttribute*>(8);
  EXPECT_EQ(field_->FindAttribute(B("a").get(), &none), S_FALSE);
  EXPECT_EQ(none, reinterpret_cast<IEMSMimeAttribute*>(8));
}

TEST_F(MessageParameterTest, MissingArgumentsAndResultPlacesGiveEPointer) {
  ComPtr<IEMSMimeAttribute> attribute;
  EXPECT_EQ(field_->FindAttribute(nullptr, attribute.put()), E_POINTER);
  EXPECT_EQ(field_->FindAttribute(B("a").get(), nullptr), E_POINTER);
  EXPECT_EQ(field_->CreateAttribute(B("a").get(), nullptr), E_POINTER);
  EXPECT_EQ(field_->RemoveAttribute(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_Name(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_RawData(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_UnfoldedData(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_DecodedData(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_Attributes(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_HeaderMailbox(nullptr), E_POINTER);
  EXPECT_EQ(field_->put_HeaderMailbox(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_HeaderMailboxes(nullptr), E_POINTER);
  EXPECT_EQ(field_->put_HeaderMailboxes(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_HeaderCharset(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_DefaultCodePage(nullptr), E_POINTER);
  EXPECT_EQ(field_->get_DefaultEncoding(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- mailboxes
TEST_F(MessageParameterTest, HeaderMailboxOfAFieldWithoutValuesIsEmptyWithSFalse) {
  ComPtr<IEMSHeaderMailbox> mailbox;
  EXPECT_EQ(field_->get_HeaderMailbox(mailbox.put()), S_FALSE);
  ASSERT_TRUE(mailbox);
  Bstr address, name;
  mailbox->get_Address(address.put());
  mailbox->get_Name(name.put());
  EXPECT_EQ(U8(address), "");
  EXPECT_EQ(U8(name), "");
}

TEST_F(MessageParameterTest, HeaderMailboxParsesTheUnfoldedFirstValue) {
  field_ = Parsed("From: \"Ann\r\n Lee\" <ann@example.com>");
  field_->AddChainHeader(Parsed("From: other@example.com").get());
  ComPtr<IEMSHeaderMailbox> mailbox;
  EXPECT_EQ(field_->get_HeaderMailbox(mailbox.put()), S_OK);
  Bstr address, name;
  mailbox->get_Address(address.put());
  mailbox->get_Name(name.put());
  EXPECT_EQ(U8(address), "ann@example.com");
  EXPECT_EQ(U8(name), "Ann Lee");
}

TEST_F(MessageParameterTest, HeaderMailboxesParsesTheFirstValueAsEncodedText) {
  field_ = Parsed("To: j@x.org,\r\n =?utf-8?Q?J=C3=B6?= <b@y.org>");
  field_->AddChainHeader(Parsed("To: other@example.com").get());
  ComPtr<IEMSHeaderMailboxes> list;
  EXPECT_EQ(field_->get_HeaderMailboxes(list.put()), S_OK);
  LONG count = 0;
  list->get_Count(&count);
  ASSERT_EQ(count, 2);
  Bstr first, name, address;
  list->get_MailboxAddress(0, first.put());
  list->get_MailboxName(1, name.put());
  list->get_MailboxAddress(1, address.put());
  EXPECT_EQ(U8(first), "j@x.org");
  EXPECT_EQ(U8(name), "J\xC3\xB6");
  EXPECT_EQ(U8(address), "b@y.org");
}

TEST_F(MessageParameterTest, HeaderMailboxesReadTheFieldsBytesInTheAnsiPage) {
  field_ =
      Parsed("To: R\xC3\xA9my r@x; \"J\\\"o\" <b@y>, c\xC3\xA9@z");  // UTF-8 here, the byte E9 in the field
  ComPtr<IEMSHeaderMailboxes> list;
  ASSERT_EQ(field_->get_HeaderMailboxes(list.put()), S_OK);
  Bstr decoded;
  ASSERT_EQ(list->get_DecodedMailboxes(decoded.put()), S_OK);
  EXPECT_EQ(U8(decoded), "R\xC3\xA9my r@x,\"J\\\"o\" <b@y>");
  Bstr wire;
  ASSERT_EQ(list->AssembleMailboxes(wire.put()), S_OK);
  EXPECT_EQ(U8(wire), "R\xC3\xA9my r@x,\r\n\t\"J\\\"o\" <b@y>");
}

TEST_F(MessageParameterTest, HeaderMailboxesOfAFieldWithoutValuesIsEmptyWithSFalse) {
  ComPtr<IEMSHeaderMailboxes> list;
  EXPECT_EQ(field_->get_HeaderMailboxes(list.put()), S_FALSE);
  ASSERT_TRUE(list);
  LONG count = -1;
  list->get_Count(&count);
  EXPECT_EQ(count, 0);
}

TEST_F(MessageParameterTest, HeaderMailboxPutStoresTheAssembledMailboxFolded) {
  field_->put_Name(B("From").get());
  auto mailbox = Create<IEMSHeaderMailbox>(CLSID_EMSHeaderMailbox);
  mailbox->put_Name(B("Ann").get());
  mailbox->put_Address(B("ann@example.com").get());
  Bstr expected;
  mailbox->AssembleMailbox(expected.put());
  EXPECT_EQ(field_->put_HeaderMailbox(mailbox.get()), S_OK);
  EXPECT_EQ(Raw(field_.get()), U8(expected));
}

TEST_F(MessageParameterTest, HeaderMailboxPutHandsTheFieldsDefaultsToTheMailbox) {
  field_->put_Name(B("From").get());
  field_->put_DefaultCodePage(65001);
  field_->put_DefaultEncoding(1);
  auto mailbox = Create<IEMSHeaderMailbox>(CLSID_EMSHeaderMailbox);
  mailbox->put_Name(B("J\xC3\xB6").get());
  mailbox->put_Address(B("j@x.org").get());
  EXPECT_EQ(field_->put_HeaderMailbox(mailbox.get()), S_OK);
  LONG page = 0, encoding = 0;
  mailbox->get_DefaultCodePage(&page);
  mailbox->get_DefaultEncoding(&encoding);
  EXPECT_EQ(page, 65001);
  EXPECT_EQ(encoding, 1);
  EXPECT_NE(Raw(field_.get()).find("=?utf-8?Q?J=C3=B6?="), std::string::npos);
}

TEST_F(MessageParameterTest, MailboxThatAssemblesToNothingIsRejected) {
  field_ = Parsed("From: keep@example.com");
  auto mailbox = Create<IEMSHeaderMailbox>(CLSID_EMSHeaderMailbox);
  EXPECT_EQ(field_->put_HeaderMailbox(mailbox.get()), E_FAIL);
  auto list = Create<IEMSHeaderMailboxes>(CLSID_EMSHeaderMailboxes);
  EXPECT_EQ(field_->put_HeaderMailboxes(list.get()), E_FAIL);
  EXPECT_EQ(Raw(field_.get()), "keep@example.com");
}

TEST_F(MessageParameterTest, MailboxSetterFoldsButListSetterDoesNot) {
  std::string longAddress = std::string(70, 'a') + "@example.com";
  auto mailbox = Create<IEMSHeaderMailbox>(CLSID_EMSHeaderMailbox);
  mailbox->put_Name(B("Some Body With A Rather Long Display Name").get());
  mailbox->put_Address(B(longAddress).get());
  Bstr single;
  mailbox->AssembleMailbox(single.put());
  field_->put_Name(B("To").get());
  ASSERT_EQ(field_->put_HeaderMailbox(mailbox.get()), S_OK);
  EXPECT_NE(Raw(field_.get()), U8(single));  // folded
  EXPECT_EQ(Unfolded(field_.get()), U8(single));

  auto list = Create<IEMSHeaderMailboxes>(CLSID_EMSHeaderMailboxes);
  list->put_MailboxData(-1, B("Some Body With A Rather Long Display Name").get(), B(longAddress).get());
  list->put_MailboxData(-1, B("").get(), B("b@y.org").get());
  Bstr joined;
  list->AssembleMailboxes(joined.put());
  auto other = Named("To");
  ASSERT_EQ(other->put_HeaderMailboxes(list.get()), S_OK);
  EXPECT_EQ(Raw(other.get()), U8(joined));  // stored as it is
}

// ---------------------------------------------------------------- late binding
TEST_F(MessageParameterTest, OperationsHaveTheirDispatchIdentifiers) {
  ComPtr<IDispatch> d;
  ASSERT_EQ(field_.As(&d), S_OK);
  EXPECT_EQ(IdOf(d.get(), "ParseHeader"), 0x60020000);
  EXPECT_EQ(IdOf(d.get(), "AddChainHeader"), 0x60020001);
  EXPECT_EQ(IdOf(d.get(), "AssembleHeader"), 0x60020002);
  EXPECT_EQ(IdOf(d.get(), "Clone"), 0x60020006);
  EXPECT_EQ(IdOf(d.get(), "Name"), 0x60020007);
  EXPECT_EQ(IdOf(d.get(), "RawData"), 0x60020009);
  EXPECT_EQ(IdOf(d.get(), "UnfoldedData"), 0x6002000B);
  EXPECT_EQ(IdOf(d.get(), "DecodedData"), 0x6002000D);
  EXPECT_EQ(IdOf(d.get(), "HeaderCharset"), 0x60020015);
  EXPECT_EQ(IdOf(d.get(), "DefaultCodePage"), 0x60020016);
  EXPECT_EQ(IdOf(d.get(), "DefaultEncoding"), 0x60020018);
}

TEST_F(MessageParameterTest, LateBoundCallsReachTheField) {
  ComPtr<IDispatch> d;
  ASSERT_EQ(field_.As(&d), S_OK);
  VARIANT result;
  VariantInit(&result);
  ASSERT_EQ(Invoke(d.get(), "ParseHeader", DISPATCH_METHOD, {"Subject: one\r\n two"}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "RawData", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "one\r\n two");
  VariantClear(&result);
  ASSERT_EQ(Invoke(d.get(), "unfoldeddata", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(U8(result.bstrVal), "one two");
  VariantClear(&result);
  ASSERT_EQ(Invoke(d.get(), "Name", DISPATCH_PROPERTYPUT, {"Topic"}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "AssembleHeader", DISPATCH_METHOD, {}, &result), S_OK);
  EXPECT_EQ(U8(result.bstrVal), "Topic: one\r\n two");
  VariantClear(&result);
  ASSERT_EQ(Invoke(d.get(), "DefaultCodePage", DISPATCH_PROPERTYPUT, {65001}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "DefaultCodePage", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 65001);

  auto other = Parsed("topic: three");
  ComPtr<IDispatch> otherDispatch;
  other.As(&otherDispatch);
  ASSERT_EQ(Invoke(d.get(), "AddChainHeader", DISPATCH_METHOD, {otherDispatch.get()}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "DecodedData", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(U8(result.bstrVal), "one two\r\n\r\nthree");
  VariantClear(&result);

  ASSERT_EQ(Invoke(d.get(), "Clone", DISPATCH_METHOD, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  ComPtr<IEMSMessageParameter> clone;
  ASSERT_EQ(result.pdispVal->QueryInterface(IID_IEMSMessageParameter, clone.put_void()), S_OK);
  EXPECT_EQ(Raw(clone.get()), "one\r\n two\r\n\r\nthree");
  VariantClear(&result);

  ASSERT_EQ(Invoke(d.get(), "HeaderCharset", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_DISPATCH);
  VariantClear(&result);
}

TEST_F(MessageParameterTest, LateBoundFailureStatusesArrive) {
  ComPtr<IDispatch> d;
  ASSERT_EQ(field_.As(&d), S_OK);
  EXCEPINFO excep{};
  EXPECT_EQ(Invoke(d.get(), "ParseHeader", DISPATCH_METHOD, {"no colon"}, nullptr, &excep), DISP_E_EXCEPTION);
  EXPECT_EQ(excep.scode, E_FAIL);
  SysFreeString(excep.bstrSource);
  SysFreeString(excep.bstrDescription);
  EXPECT_EQ(Invoke(d.get(), "AddChainHeader", DISPATCH_METHOD, {static_cast<IDispatch*>(nullptr)}),
            E_POINTER);
}

TEST_F(MessageParameterTest, ContentInterfacesHaveNoLateBinding) {
  ComPtr<IEMSContentType> ct;
  ASSERT_EQ(field_.As(&ct), S_OK);
  ComPtr<IDispatch> d;
  ASSERT_EQ(ct.As(&d), S_OK);  // the object's dispatch is the field's
  EXPECT_EQ(IdOf(d.get(), "RawData"), 0x60020009);
  WString name = W("ParseContentType");
  LPOLESTR names[] = {name.data()};
  DISPID id = 0;
  EXPECT_EQ(d->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), DISP_E_UNKNOWNNAME);
}

// ---------------------------------------------------------------- the library's own entry points
TEST(MessageParameterLibrary, NarrowParseMatchesTheWideOne) {
  ComPtr<MessageParameter> own;
  ASSERT_EQ(MakeObject(&own), S_OK);
  std::string line = "X-Bytes: caf\xE9\r\n \x81\xFF";
  EXPECT_EQ(own->ParseHeaderNarrow(line), S_OK);
  auto wide = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  Bstr text(AnsiToWide(line));
  EXPECT_EQ(wide->ParseHeader(text.get()), S_OK);
  EXPECT_EQ(own->values(), ImplOf<MessageParameter>(wide.get())->values());
  EXPECT_EQ(own->decodedText(), ImplOf<MessageParameter>(wide.get())->decodedText());
  EXPECT_EQ(own->name(), "X-Bytes");
  EXPECT_EQ(own->firstValue(), "caf\xE9\r\n \x81\xFF");
  EXPECT_EQ(own->ParseHeaderNarrow("nothing"), E_FAIL);
}

TEST(MessageParameterLibrary, NarrowAssemblyAndRawViewMatchTheWideOnes) {
  ComPtr<MessageParameter> own;
  ASSERT_EQ(MakeObject(&own), S_OK);
  own->ParseHeaderNarrow("Content-Type: text/plain; charset=\"x\xE9\"");
  std::string assembled, raw;
  EXPECT_EQ(own->AssembleHeaderNarrow(&assembled), S_OK);
  EXPECT_EQ(own->RawDataNarrow(&raw), S_OK);
  Bstr wideAssembled, wideRaw;
  own->AssembleHeader(wideAssembled.put());
  own->get_RawData(wideRaw.put());
  EXPECT_EQ(assembled, WideToAnsi(wideAssembled.view()));
  EXPECT_EQ(raw, WideToAnsi(wideRaw.view()));
}

TEST(MessageParameterLibrary, ContentStateAndBoundaryAreReadable) {
  ComPtr<MessageParameter> own;
  ASSERT_EQ(MakeObject(&own), S_OK);
  own->ParseHeaderNarrow("Content-Type: multipart/mixed; boundary=\"abc\"");
  EXPECT_EQ(own->content().typeCode, kTypeMultipart);
  EXPECT_EQ(own->content().subtypeCode, kSubtypeMixed);
  EXPECT_EQ(own->content().typeName, "multipart");
  std::string boundary;
  EXPECT_EQ(own->BoundaryNarrow(&boundary), S_OK);
  EXPECT_EQ(boundary, "abc");
  ComPtr<MessageParameter> plain;
  MakeObject(&plain);
  EXPECT_EQ(plain->BoundaryNarrow(&boundary), E_FAIL);
  EXPECT_FALSE(plain->hasValues());
  EXPECT_EQ(plain->firstValue(), "");
}

TEST(MessageParameterLibrary, NarrowContentTypeSetterAddsTheFirstValue) {
  ComPtr<MessageParameter> own;
  ASSERT_EQ(MakeObject(&own), S_OK);
  Bstr name(WidenAscii("Content-Type"));
  own->put_Name(name.get());
  EXPECT_EQ(own->SetContentTypeNarrow("text/html"), S_OK);
  EXPECT_EQ(own->values(), std::vector<std::string>{"text/html"});
  EXPECT_EQ(own->content().subtypeCode, kSubtypeHtml);
  own->SetDispositionType("inline");
  own->SetTypeCode(kTypeText);
  own->SetSubtypeCode(kSubtypePlain);
  EXPECT_EQ(own->content().ContentType(), "text/plain");
  EXPECT_EQ(own->content().dispositionType, "inline");
}

TEST(MessageParameterLibrary, DeferredChainingEndsWhereAChainingAtATimeEnds) {
  // Values that switch the code page back and forth, chained one at a time
  // through the interface and in bulk: same decoded text, same defaults.
  const char* lines[] = {"X: \xE9", "X: =?utf-8?Q?a?=", "X: \xC3\xA9", "X: =?iso-8859-2?Q?b?=",
                         "X: \xB1", "X: \r\n",          "X: plain"};
  auto stepwise = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  ComPtr<MessageParameter> bulk;
  ASSERT_EQ(MakeObject(&bulk), S_OK);
  Bstr first(AnsiToWide(lines[0]));
  stepwise->ParseHeader(first.get());
  bulk->ParseHeaderNarrow(lines[0]);
  for (size_t i = 1; i < sizeof lines / sizeof lines[0]; ++i) {
    ComPtr<MessageParameter> next;
    MakeObject(&next);
    next->ParseHeaderNarrow(lines[i]);
    EXPECT_EQ(stepwise->AddChainHeader(next.get()), S_OK);
    EXPECT_EQ(bulk->AppendChainDeferred(next.get()), S_OK);
  }
  bulk->FinishChaining();
  auto expected = ImplOf<MessageParameter>(stepwise.get());
  EXPECT_EQ(bulk->values(), expected->values());
  EXPECT_EQ(U8(bulk->decodedText()), U8(expected->decodedText()));
  LONG bulkValue = 0, expectedValue = 0;
  EXPECT_EQ(bulk->get_DefaultCodePage(&bulkValue), S_OK);
  EXPECT_EQ(expected->get_DefaultCodePage(&expectedValue), S_OK);
  EXPECT_EQ(bulkValue, expectedValue);
  EXPECT_EQ(bulk->get_DefaultEncoding(&bulkValue), S_OK);
  EXPECT_EQ(expected->get_DefaultEncoding(&expectedValue), S_OK);
  EXPECT_EQ(bulkValue, expectedValue);
}

TEST(MessageParameterLibrary, DeferredChainingOfAnotherNameIsRejected) {
  ComPtr<MessageParameter> a, b;
  MakeObject(&a);
  MakeObject(&b);
  a->ParseHeaderNarrow("A: 1");
  b->ParseHeaderNarrow("B: 2");
  EXPECT_EQ(a->AppendChainDeferred(b.get()), E_INVALIDARG);
  a->FinishChaining();
  EXPECT_EQ(a->values(), std::vector<std::string>{"1"});
}

TEST(MessageParameterLibrary, CreatableThroughTheClassTableAndAggregatable) {
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(PvCreateInstance(CLSID_EMSMessageParameter, nullptr, IID_IUnknown, unknown.put_void()), S_OK);
  ComPtr<IEMSMessageParameter> field;
  ComPtr<IEMSContentType> ct;
  ComPtr<IEMSContentDisposition> cd;
  EXPECT_EQ(unknown.As(&field), S_OK);
  EXPECT_EQ(unknown.As(&ct), S_OK);
  EXPECT_EQ(unknown.As(&cd), S_OK);
  EXPECT_TRUE(ImplOf<MessageParameter>(cd.get()));
}

}  // namespace
}  // namespace pv::test

namespace pv::test {
namespace {

// A parsed field decodes its value and builds its parameter list only when
// something reads them; whatever reads them sees what an immediate decode
// and parse would have left, in the same order of events.
TEST(MessageParameterOnDemand, DefaultsReadAfterAParseAreThoseOfTheDecode) {
  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  Bstr text = B("Subject: =?koi8-r?B?9M/S?= x");
  ASSERT_EQ(field->ParseHeader(text.get()), S_OK);
  LONG codePage = 0;
  ASSERT_EQ(field->get_DefaultCodePage(&codePage), S_OK);
  EXPECT_EQ(codePage, 20866);
  LONG encoding = 0;
  ASSERT_EQ(field->get_DefaultEncoding(&encoding), S_OK);
  EXPECT_EQ(encoding, 2);  // B
  Bstr decoded;
  ASSERT_EQ(field->get_DecodedData(decoded.put()), S_OK);
  EXPECT_EQ(U8(decoded), "\xD0\xA2\xD0\xBE\xD1\x80 x");
}

// A field whose charset a caller already holds decodes at once; the same
// events on a fresh field must leave the same state.
TEST(MessageParameterOnDemand, EventsAfterAParseSeeWhatAnImmediateDecodeLeft) {
  const char* texts[] = {"Subject: caf\xC3\xA9", "Subject: =?utf-8?Q?caf=C3=A9?= and more",
                         "Subject: =?koi8-r?B?9M/S?=", "Subject: plain"};
  for (const char* text : texts) {
    auto lazy = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
    auto eager = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
    ComPtr<IEMSHeaderCharset> held;
    ASSERT_EQ(eager->get_HeaderCharset(held.put()), S_OK);
    for (IEMSMessageParameter* field : {lazy.get(), eager.get()}) {
      ASSERT_EQ(field->ParseHeader(B(text).get()), S_OK);
      ASSERT_EQ(field->put_DefaultCodePage(65001), S_OK);
    }
    Bstr a, b;
    ASSERT_EQ(lazy->get_DecodedData(a.put()), S_OK);
    ASSERT_EQ(eager->get_DecodedData(b.put()), S_OK);
    EXPECT_EQ(U8(a), U8(b)) << text;
    for (IEMSMessageParameter* field : {lazy.get(), eager.get()}) {
      ASSERT_EQ(field->put_DefaultCodePage(1251), S_OK);
      Bstr again = B("\xD0\x96 plain 8-bit text");
      ASSERT_EQ(field->put_RawData(again.get()), S_OK);
    }
    ASSERT_EQ(lazy->get_DecodedData(a.put()), S_OK);
    ASSERT_EQ(eager->get_DecodedData(b.put()), S_OK);
    EXPECT_EQ(U8(a), U8(b)) << text;
    LONG x = 0, y = 0;
    lazy->get_DefaultCodePage(&x);
    eager->get_DefaultCodePage(&y);
    EXPECT_EQ(x, y) << text;
    lazy->get_DefaultEncoding(&x);
    eager->get_DefaultEncoding(&y);
    EXPECT_EQ(x, y) << text;
  }
}

TEST(MessageParameterOnDemand, AHeldCharsetFollowsEveryLaterDecode) {
  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  Bstr first = B("Subject: plain");
  ASSERT_EQ(field->ParseHeader(first.get()), S_OK);
  ComPtr<IEMSHeaderCharset> charset;
  ASSERT_EQ(field->get_HeaderCharset(charset.put()), S_OK);
  Bstr raw = B("=?iso-8859-2?Q?x?=");
  ASSERT_EQ(field->put_RawData(raw.get()), S_OK);
  LONG codePage = 0;
  ASSERT_EQ(charset->get_HeaderCodePage(&codePage), S_OK);
  EXPECT_EQ(codePage, 28592);
}

TEST(MessageParameterOnDemand, AHeldAttributeListTakesTheParametersOfALaterValue) {
  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  Bstr first = B("Content-Type: text/plain");
  ASSERT_EQ(field->ParseHeader(first.get()), S_OK);
  ComPtr<IEMSMimeAttributes> list;
  ASSERT_EQ(field->get_Attributes(list.put()), S_OK);
  LONG count = -1;
  ASSERT_EQ(list->get_AttributesCount(&count), S_OK);
  EXPECT_EQ(count, 0);
  Bstr raw = B("text/plain; charset=us-ascii; format=flowed");
  ASSERT_EQ(field->put_RawData(raw.get()), S_OK);
  ASSERT_EQ(list->get_AttributesCount(&count), S_OK);
  EXPECT_EQ(count, 2);
}

TEST(MessageParameterOnDemand, ParametersOfEveryValueReachTheListInOrder) {
  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  Bstr raw = B("a; x=1\r\n\r\nb; y=2");
  ASSERT_EQ(field->put_Name(B("Content-Type").get()), S_OK);
  ASSERT_EQ(field->put_RawData(raw.get()), S_OK);
  Bstr assembled;
  ASSERT_EQ(field->get_RawData(assembled.put()), S_OK);
  auto eager = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  ASSERT_EQ(eager->put_Name(B("Content-Type").get()), S_OK);
  ComPtr<IEMSMimeAttributes> list;
  ASSERT_EQ(eager->get_Attributes(list.put()), S_OK);  // the list exists before the values come
  ASSERT_EQ(eager->put_RawData(raw.get()), S_OK);
  Bstr expected;
  ASSERT_EQ(eager->get_RawData(expected.put()), S_OK);
  EXPECT_EQ(U8(assembled), U8(expected));
  // Each value's parameters replace those of the one before.
  EXPECT_EQ(U8(assembled), "a\r\n\r\nb;\r\n\ty=\"2\"");
}

TEST(MessageParameterOnDemand, AReplacedListDropsTheParametersThatWaitedForTheOldOne) {
  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  Bstr text = B("Content-Type: text/plain; charset=utf-8");
  ASSERT_EQ(field->ParseHeader(text.get()), S_OK);
  auto fresh = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  ASSERT_EQ(field->put_Attributes(fresh.get()), S_OK);
  LONG count = -1;
  ASSERT_EQ(fresh->get_AttributesCount(&count), S_OK);
  EXPECT_EQ(count, 0);
  Bstr raw;
  ASSERT_EQ(field->get_RawData(raw.put()), S_OK);
  EXPECT_EQ(U8(raw), "text/plain");
}

}  // namespace
}  // namespace pv::test
