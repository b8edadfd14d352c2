// EMSMessageParameters: the header-block parse, the name index, editing,
// assembly, data objects, fields of another implementation, statuses, late
// binding and the library's own entry points.
#include "src/headers/message_parameters.h"

#include "src/headers/message_parameter.h"
#include "tests/headers/foreign_field.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

class MessageParametersTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMessageParameters> list_ = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);

  // Parses bytes of the ANSI page.
  void Parse(std::string_view bytes) {
    Bstr text(AnsiToWide(bytes));
    ASSERT_EQ(list_->ParseParameters(text.get()), S_OK);
  }
  LONG Count() {
    LONG n = -1;
    EXPECT_EQ(list_->get_ParamCount(&n), S_OK);
    return n;
  }
  ComPtr<IEMSMessageParameter> At(LONG i) {
    ComPtr<IEMSMessageParameter> field;
    EXPECT_EQ(list_->get_Parameter(i, field.put()), S_OK);
    return field;
  }
  ComPtr<IEMSMessageParameter> Find(const char* name) {
    ComPtr<IEMSMessageParameter> field;
    EXPECT_EQ(list_->FindParameter(B(name).get(), field.put()), S_OK);
    return field;
  }
  static ComPtr<IEMSMessageParameter> Field(const char* line) {
    auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
    EXPECT_EQ(field->ParseHeader(B(line).get()), S_OK);
    return field;
  }
  static std::string Name(IEMSMessageParameter* f) {
    Bstr s;
    EXPECT_EQ(f->get_Name(s.put()), S_OK);
    return U8(s);
  }
  static std::string Raw(IEMSMessageParameter* f) {
    Bstr s;
    EXPECT_EQ(f->get_RawData(s.put()), S_OK);
    return WideToAnsi(s.view());
  }
  static std::string Decoded(IEMSMessageParameter* f) {
    Bstr s;
    EXPECT_EQ(f->get_DecodedData(s.put()), S_OK);
    return U8(s);
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (LONG i = 0; i < Count(); ++i) {
      auto f = At(i);
      names.push_back(f ? Name(f.get()) : "<empty>");
    }
    return names;
  }
  // The assembled block as bytes of the ANSI page.
  std::string Assembled() {
    Bstr s;
    EXPECT_EQ(list_->AssembleParameters(s.put()), S_OK);
    return WideToAnsi(s.view());
  }
  std::string AssembledObject() {
    ComPtr<IEMSDataObject> data;
    EXPECT_EQ(list_->AssembleParametersObject(data.put()), S_OK);
    return data ? SpanBytes(data.get()) : std::string();
  }
};

// ---------------------------------------------------------------- parsing
TEST_F(MessageParametersTest, NewListIsEmptyWithTheDocumentedDefaults) {
  EXPECT_EQ(Count(), 0);
  LONG page = 0, encoding = 12345;
  list_->get_DefaultCodePage(&page);
  list_->get_DefaultEncoding(&encoding);
  EXPECT_EQ(page, static_cast<LONG>(AnsiCodePage()));
  EXPECT_EQ(encoding, 0);
}

TEST_F(MessageParametersTest, RepeatedNamesAreChainedIntoTheFirstField) {
  Parse("Received: a\r\nReceived: b\r\nSubject: s\r\n");
  EXPECT_EQ(Names(), (std::vector<std::string>{"Received", "Subject"}));
  EXPECT_EQ(ImplOf<MessageParameter>(At(0).get())->values(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(Raw(At(1).get()), "s");
}

TEST_F(MessageParametersTest, RepeatedNamesMatchIgnoringCaseAndKeepTheFirstSpelling) {
  Parse("X-A: 1\r\nx-a: 2\r\nX-B: 3\r\nX-a: 4\r\n");
  EXPECT_EQ(Names(), (std::vector<std::string>{"X-A", "X-B"}));
  EXPECT_EQ(Raw(At(0).get()), "1\r\n\r\n2\r\n\r\n4");
  EXPECT_EQ(Decoded(At(0).get()), "1\r\n\r\n2\r\n\r\n4");
}

TEST_F(MessageParametersTest, FoldedLinesBelongToTheirField) {
  Parse("Subject: one\r\n two\r\n");
  ASSERT_EQ(Count(), 1);
  EXPECT_EQ(Raw(At(0).get()), "one\r\n two");
  EXPECT_EQ(Decoded(At(0).get()), "one two");
}

TEST_F(MessageParametersTest, LinesWithoutAColonAreDropped) {
  Parse("garbage line\r\n\r\nTo: x\r\n");
  EXPECT_EQ(Names(), std::vector<std::string>{"To"});
  EXPECT_EQ(Raw(At(0).get()), "x");
}

TEST_F(MessageParametersTest, BlankBeforeTheColonIsNotAFieldLine) {
  Parse("Subject : x\r\nTo: y\r\n");
  EXPECT_EQ(Names(), std::vector<std::string>{"To"});
}

TEST_F(MessageParametersTest, LinesStartingWithAColonAreDropped) {
  Parse(":x\r\nA: 1\r\n");
  EXPECT_EQ(Names(), std::vector<std::string>{"A"});
}

TEST_F(MessageParametersTest, TheWholeTextIsReadPastAnEmptyLine) {
  Parse("A: 1\r\n\r\nbody: 2\r\nplain body text\r\n");
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "body"}));
}

TEST_F(MessageParametersTest, LastFieldNeedsNoLineBreak) {
  Parse("A: 1\r\nB: 2");
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(Raw(At(1).get()), "2");
}

TEST_F(MessageParametersTest, BareLineFeedsEndLinesToo) {
  Parse("A: 1\nB: 2\n folded\n");
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(Raw(At(1).get()), "2\n folded");
}

TEST_F(MessageParametersTest, ParseReplacesTheWholeContent) {
  Parse("A: 1\r\nB: 2\r\n");
  Parse("C: 3\r\n");
  EXPECT_EQ(Names(), std::vector<std::string>{"C"});
  ComPtr<IEMSMessageParameter> none;
  EXPECT_EQ(list_->FindParameter(B("A").get(), none.put()), S_OK);
  EXPECT_FALSE(none);
}

TEST_F(MessageParametersTest, ParseOfEmptyTextEmptiesTheList) {
  Parse("A: 1\r\n");
  Parse("");
  EXPECT_EQ(Count(), 0);
}

TEST_F(MessageParametersTest, ParsedFieldsDecodeWithTheListsCodePage) {
  list_->put_DefaultCodePage(65001);
  Parse("Subject: caf\xC3\xA9\r\n");
  auto f = At(0);
  EXPECT_EQ(Decoded(f.get()), "caf\xC3\xA9");  // the bytes are read as UTF-8
  LONG page = 0;
  f->get_DefaultCodePage(&page);
  EXPECT_EQ(page, 65001);  // no word named another page
}

TEST_F(MessageParametersTest, ParsedFieldsTakeTheirEncodingFromTheirCharset) {
  // The list's encoding is given to each field, but the refresh that ends
  // the field's parse copies its charset's encoding over it.
  list_->put_DefaultEncoding(1);
  Parse("A: plain\r\nB: =?utf-8?Q?x?=\r\n");
  LONG plain = 0, word = 0;
  At(0)->get_DefaultEncoding(&plain);
  At(1)->get_DefaultEncoding(&word);
  EXPECT_EQ(plain, 2);  // a new charset's own encoding
  EXPECT_EQ(word, 1);   // the last word's
}

TEST_F(MessageParametersTest, ChainedFieldsDecodeAsIfChainedOneAtATime) {
  // Each chaining refreshes from the code page that the refresh before it
  // left, so in the end even the first value is read in the page of the
  // last value that names a charset (ISO-8859-2: 0xB1 is U+0105), and the
  // third in the page that the second named (UTF-8).
  std::vector<std::string> lines = {"X: \xB1", "X: =?utf-8?Q?a?=", "X: \xC3\xA9",
                                    "X: =?iso-8859-2?Q?=B1?=", "X: \xB1"};
  std::string block;
  for (const std::string& line : lines) block += line + "\r\n";
  Parse(block);
  auto expected = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  Bstr first(AnsiToWide(lines[0]));
  expected->ParseHeader(first.get());
  for (size_t i = 1; i < lines.size(); ++i) {
    auto next = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
    Bstr line(AnsiToWide(lines[i]));
    next->ParseHeader(line.get());
    expected->AddChainHeader(next.get());
  }
  EXPECT_EQ(Decoded(At(0).get()), Decoded(expected.get()));
  EXPECT_EQ(Decoded(At(0).get()), "\xC4\x85\r\n\r\na\r\n\r\n\xC3\xA9\r\n\r\n\xC4\x85\r\n\r\n\xC4\x85");
  LONG page = 0;
  At(0)->get_DefaultCodePage(&page);
  EXPECT_EQ(page, 28592);
}

TEST_F(MessageParametersTest, ContentFieldsKeepTheirParametersAndCodes) {
  Parse("Content-Type: text/plain; charset=us-ascii\r\nContent-Disposition: inline\r\n");
  auto type = Find("content-type");
  ASSERT_TRUE(type);
  ComPtr<IEMSContentType> ct;
  ASSERT_EQ(type.As(&ct), S_OK);
  LONG code = 0;
  ct->get_MimeSubType(&code);
  EXPECT_EQ(code, 18);
  EXPECT_EQ(Assembled(),
            "Content-Type: text/plain;\r\n\tcharset=\"us-ascii\"\r\nContent-Disposition: inline\r\n");
}

TEST_F(MessageParametersTest, TenThousandFieldsParseAndAssembleBack) {
  std::string block;
  for (int i = 0; i < 10000; ++i)
    block += "X-Field-" + std::to_string(i) + ": value " + std::to_string(i) + "\r\n";
  Parse(block);
  EXPECT_EQ(Count(), 10000);
  EXPECT_EQ(Raw(Find("x-field-9999").get()), "value 9999");
  EXPECT_EQ(Assembled(), block);
}

TEST_F(MessageParametersTest, TenThousandOccurrencesOfOneNameChainIntoOneField) {
  std::string block;
  for (int i = 0; i < 10000; ++i) block += "Received: hop " + std::to_string(i) + "\r\n";
  Parse(block);
  ASSERT_EQ(Count(), 1);
  const auto& values = ImplOf<MessageParameter>(At(0).get())->values();
  ASSERT_EQ(values.size(), 10000u);
  EXPECT_EQ(values[9999], "hop 9999");
  EXPECT_EQ(Assembled(), block);
}

TEST_F(MessageParametersTest, BytesOfTheUpperHalfSurviveParseAndAssembly) {
  std::string block =
      "X-Bytes: caf\xE9 \x81\x8D\x8F\x90\x9D\x80\xFF\r\n \xA0\xC3\xA9\r\nSubject: \xE4\xF6\xFC\r\n";
  auto data = DataOf(block);
  ASSERT_EQ(list_->ParseParametersObject(data.get()), S_OK);
  EXPECT_EQ(Raw(At(0).get()), "caf\xE9 \x81\x8D\x8F\x90\x9D\x80\xFF\r\n \xA0\xC3\xA9");
  EXPECT_EQ(AssembledObject(), block);
  EXPECT_EQ(Assembled(), block);
  EXPECT_EQ(Decoded(At(1).get()), "\xC3\xA4\xC3\xB6\xC3\xBC");
}

// ---------------------------------------------------------------- data objects
TEST_F(MessageParametersTest, ParseParametersObjectReadsOnlyTheSpanAndLeavesItAlone) {
  auto data = DataOf("A: 1\r\n\r\nbody: 2");
  data->put_Position(0);
  data->put_Length(6);
  ASSERT_EQ(list_->ParseParametersObject(data.get()), S_OK);
  EXPECT_EQ(Names(), std::vector<std::string>{"A"});
  ULONG position = 99, length = 99;
  data->get_Position(&position);
  data->get_Length(&length);
  EXPECT_EQ(position, 0u);
  EXPECT_EQ(length, 6u);
}

TEST_F(MessageParametersTest, ParseParametersObjectStartsAtThePosition) {
  auto data = DataOf("junk\r\nB: 2\r\nC: 3\r\nD: 4");
  data->put_Position(6);
  data->put_Length(12);
  ASSERT_EQ(list_->ParseParametersObject(data.get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"B", "C"}));
}

TEST_F(MessageParametersTest, ParseParametersObjectOfASpanPastTheEndReadsWhatThereIs) {
  auto data = DataOf("A: 1\r\nB: 2");
  data->put_Position(6);
  data->put_Length(100);
  ASSERT_EQ(list_->ParseParametersObject(data.get()), S_OK);
  EXPECT_EQ(Names(), std::vector<std::string>{"B"});
}

TEST_F(MessageParametersTest, ParseParametersObjectNeedsAByteArray) {
  Parse("A: 1\r\n");
  auto empty = Create<IEMSDataObject>(CLSID_EMSDataObject);
  EXPECT_EQ(list_->ParseParametersObject(empty.get()), E_FAIL);
  auto words = Create<IEMSDataObject>(CLSID_EMSDataObject);
  VARIANT v = Utf16Variant(W("A: 1"));
  words->put_Data(v);
  VariantClear(&v);
  EXPECT_EQ(list_->ParseParametersObject(words.get()), E_FAIL);
  EXPECT_EQ(list_->ParseParametersObject(nullptr), E_POINTER);
  EXPECT_EQ(Count(), 1);  // a failed call changes nothing
}

TEST_F(MessageParametersTest, ParseParametersObjectOfAnEmptyArrayEmptiesTheList) {
  Parse("A: 1\r\n");
  auto data = DataOf("");
  EXPECT_EQ(list_->ParseParametersObject(data.get()), S_OK);
  EXPECT_EQ(Count(), 0);
}

TEST_F(MessageParametersTest, AssembleParametersObjectHoldsTheBlockAsBytes) {
  Parse("A: 1\r\nB: 2\r\n");
  ComPtr<IEMSDataObject> data;
  ASSERT_EQ(list_->AssembleParametersObject(data.put()), S_OK);
  EXPECT_EQ(AllBytes(data.get()), "A: 1\r\nB: 2\r\n");
  ULONG position = 9, length = 0;
  data->get_Position(&position);
  data->get_Length(&length);
  EXPECT_EQ(position, 0u);
  EXPECT_EQ(length, 12u);
}

// ---------------------------------------------------------------- assembly
TEST_F(MessageParametersTest, EmptyListAssemblesToNothingAndLeavesTheResultPlace) {
  BSTR untouched = reinterpret_cast<BSTR>(8);
  EXPECT_EQ(list_->AssembleParameters(&untouched), S_OK);
  EXPECT_EQ(untouched, reinterpret_cast<BSTR>(8));
  IEMSDataObject* none = reinterpret_cast<IEMSDataObject*>(8);
  EXPECT_EQ(list_->AssembleParametersObject(&none), E_FAIL);
  EXPECT_EQ(none, reinterpret_cast<IEMSDataObject*>(8));
}

TEST_F(MessageParametersTest, ListOfFieldsThatWriteNothingAssemblesToNothing) {
  ComPtr<IEMSMessageParameter> a, b;
  list_->CreateParameter(B("A").get(), a.put());
  list_->CreateParameter(B("B").get(), b.put());
  BSTR untouched = reinterpret_cast<BSTR>(8);
  EXPECT_EQ(list_->AssembleParameters(&untouched), S_OK);
  EXPECT_EQ(untouched, reinterpret_cast<BSTR>(8));
}

TEST_F(MessageParametersTest, EveryFieldEndsWithExactlyOneLineBreak) {
  ComPtr<IEMSMessageParameter> a, empty, c;
  list_->CreateParameter(B("A").get(), a.put());
  a->put_RawData(B("1\r\n\r\n").get());  // "A: 1\r\nA: " ends in a blank, kept
  list_->CreateParameter(B("Empty").get(), empty.put());
  list_->CreateParameter(B("C").get(), c.put());
  c->put_RawData(B("3\r\n\n\r").get());
  EXPECT_EQ(Assembled(), "A: 1\r\nA: \r\nC: 3\r\n");
}

TEST_F(MessageParametersTest, FoldedValuesAreWrittenAsTheyAre) {
  Parse("Subject: one\r\n\ttwo\r\nTo: a@b\r\n");
  EXPECT_EQ(Assembled(), "Subject: one\r\n\ttwo\r\nTo: a@b\r\n");
}

TEST_F(MessageParametersTest, MissingResultPlacesAndArgumentsGiveEPointer) {
  EXPECT_EQ(list_->ParseParameters(nullptr), E_POINTER);
  EXPECT_EQ(list_->AssembleParameters(nullptr), E_POINTER);
  EXPECT_EQ(list_->AssembleParametersObject(nullptr), E_POINTER);
  EXPECT_EQ(list_->AppendParameters(nullptr), E_POINTER);
  EXPECT_EQ(list_->Clone(nullptr), E_POINTER);
  EXPECT_EQ(list_->CreateParameter(B("A").get(), nullptr), E_POINTER);
  EXPECT_EQ(list_->AddParameter(nullptr), E_POINTER);
  EXPECT_EQ(list_->ReplaceParameter(nullptr), E_POINTER);
  EXPECT_EQ(list_->FindParameter(B("A").get(), nullptr), E_POINTER);
  EXPECT_EQ(list_->get_Parameter(0, nullptr), E_POINTER);
  EXPECT_EQ(list_->get_ParamCount(nullptr), E_POINTER);
  EXPECT_EQ(list_->get_DefaultCodePage(nullptr), E_POINTER);
  EXPECT_EQ(list_->get_DefaultEncoding(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- finding and creating
TEST_F(MessageParametersTest, FindParameterIgnoresCase) {
  Parse("Content-Type: text/plain\r\n");
  auto f = Find("content-type");
  ASSERT_TRUE(f);
  EXPECT_EQ(Name(f.get()), "Content-Type");
}

TEST_F(MessageParametersTest, FindParameterOfAnAbsentNameWritesNothing) {
  Parse("A: 1\r\n");
  IEMSMessageParameter* untouched = reinterpret_cast<IEMSMessageParameter*>(8);
  EXPECT_EQ(list_->FindParameter(B("B").get(), &untouched), S_OK);
  EXPECT_EQ(untouched, reinterpret_cast<IEMSMessageParameter*>(8));
  EXPECT_EQ(list_->FindParameter(nullptr, &untouched), S_OK);
  EXPECT_EQ(untouched, reinterpret_cast<IEMSMessageParameter*>(8));
}

TEST_F(MessageParametersTest, CreateParameterOfAnExistingNameReturnsItWithSFalse) {
  Parse("Subject: s\r\nTo: t\r\n");
  ComPtr<IEMSMessageParameter> existing;
  EXPECT_EQ(list_->CreateParameter(B("SUBJECT").get(), existing.put()), S_FALSE);
  EXPECT_EQ(existing.get(), At(0).get());
  EXPECT_EQ(Count(), 2);
}

TEST_F(MessageParametersTest, CreateParameterAppendsANewFieldWithTheListsDefaults) {
  list_->put_DefaultCodePage(28591);
  list_->put_DefaultEncoding(2);
  ComPtr<IEMSMessageParameter> created;
  EXPECT_EQ(list_->CreateParameter(B("X-New").get(), created.put()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(At(0).get(), created.get());
  EXPECT_EQ(Name(created.get()), "X-New");
  EXPECT_EQ(Raw(created.get()), "");
  LONG page = 0, encoding = 0;
  created->get_DefaultCodePage(&page);
  created->get_DefaultEncoding(&encoding);
  EXPECT_EQ(page, 28591);
  EXPECT_EQ(encoding, 2);
  EXPECT_EQ(Find("x-new").get(), created.get());
}

TEST_F(MessageParametersTest, ChangingTheDefaultsLeavesExistingFieldsAlone) {
  ComPtr<IEMSMessageParameter> created;
  list_->CreateParameter(B("A").get(), created.put());
  list_->put_DefaultCodePage(65001);
  list_->put_DefaultEncoding(2);
  LONG page = 0, encoding = 9;
  created->get_DefaultCodePage(&page);
  created->get_DefaultEncoding(&encoding);
  EXPECT_EQ(page, static_cast<LONG>(AnsiCodePage()));
  EXPECT_EQ(encoding, 0);
}

// ---------------------------------------------------------------- adding and replacing
TEST_F(MessageParametersTest, AddParameterAppendsANewName) {
  Parse("A: 1\r\n");
  auto b = Field("B: 2");
  EXPECT_EQ(list_->AddParameter(b.get()), S_OK);
  EXPECT_EQ(At(1).get(), b.get());  // held, not copied
  EXPECT_EQ(Find("b").get(), b.get());
}

TEST_F(MessageParametersTest, AddParameterChainsAKnownNameAndKeepsNothingOfTheField) {
  Parse("Received: a\r\n");
  auto first = At(0);
  auto second = Field("RECEIVED: b");
  EXPECT_EQ(list_->AddParameter(second.get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(At(0).get(), first.get());
  EXPECT_EQ(Raw(first.get()), "a\r\n\r\nb");
}

TEST_F(MessageParametersTest, AddParameterOfAFieldWithoutANameFails) {
  auto nameless = ForeignField::Make(true);
  EXPECT_EQ(list_->AddParameter(nameless.get()), E_FAIL);
  EXPECT_EQ(list_->ReplaceParameter(nameless.get()), E_FAIL);
  EXPECT_EQ(Count(), 0);
}

TEST_F(MessageParametersTest, AddParameterAcceptsAnEmptyName) {
  auto unnamed = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  EXPECT_EQ(list_->AddParameter(unnamed.get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(Find("").get(), unnamed.get());
}

TEST_F(MessageParametersTest, ReplaceParameterTakesThePlaceOfTheIndexedField) {
  Parse("A: 1\r\nB: 2\r\nC: 3\r\n");
  auto b = Field("b: new");
  EXPECT_EQ(list_->ReplaceParameter(b.get()), S_OK);
  EXPECT_EQ(Count(), 3);
  EXPECT_EQ(At(1).get(), b.get());
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "b", "C"}));
  EXPECT_EQ(Find("B").get(), b.get());
  EXPECT_EQ(list_->ReplaceParameter(b.get()), S_OK);  // the same object again
  EXPECT_EQ(At(1).get(), b.get());
}

TEST_F(MessageParametersTest, ReplaceParameterAppendsANewName) {
  Parse("A: 1\r\n");
  auto d = Field("D: 4");
  EXPECT_EQ(list_->ReplaceParameter(d.get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "D"}));
}

TEST_F(MessageParametersTest, AppendParametersSharesTheOtherListsFields) {
  Parse("A: 1\r\nB: 2\r\n");
  auto other = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  Bstr text(W("B: other\r\nC: 3\r\n"));
  other->ParseParameters(text.get());
  EXPECT_EQ(list_->AppendParameters(other.get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "B", "C"}));
  ComPtr<IEMSMessageParameter> theirs;
  other->get_Parameter(1, theirs.put());
  EXPECT_EQ(At(2).get(), theirs.get());
  other->get_Parameter(0, theirs.put());
  EXPECT_EQ(At(1).get(), theirs.get());
  theirs->put_RawData(B("edited").get());
  EXPECT_EQ(Raw(At(1).get()), "edited");  // one object in both lists
}

TEST_F(MessageParametersTest, AppendParametersOfItselfChangesNothing) {
  Parse("A: 1\r\nB: 2\r\n");
  EXPECT_EQ(list_->AppendParameters(list_.get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "B"}));
}

// ---------------------------------------------------------------- removing
TEST_F(MessageParametersTest, RemoveAllEmptiesListAndIndex) {
  Parse("A: 1\r\nB: 2\r\n");
  EXPECT_EQ(list_->RemoveAll(), S_OK);
  EXPECT_EQ(Count(), 0);
  EXPECT_FALSE(Find("A"));
}

TEST_F(MessageParametersTest, RemoveByNameRemovesTheFirstFieldAndRebuildsTheIndex) {
  Parse("X: 1\r\nY: 2\r\nZ: 3\r\n");
  auto secondX = Field("X: second");
  EXPECT_EQ(list_->put_Parameter(2, secondX.get()), S_OK);  // X, Y, X
  EXPECT_EQ(list_->RemoveByName(B("x").get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"Y", "X"}));
  EXPECT_EQ(Find("X").get(), secondX.get());
  EXPECT_FALSE(Find("Z"));
}

TEST_F(MessageParametersTest, RemoveByNameOfAnAbsentNameSucceeds) {
  Parse("A: 1\r\n");
  EXPECT_EQ(list_->RemoveByName(B("B").get()), S_OK);
  EXPECT_EQ(list_->RemoveByName(nullptr), S_OK);
  EXPECT_EQ(Count(), 1);
}

TEST_F(MessageParametersTest, RebuiltIndexSkipsEmptyEntriesAndKeepsTheFirstOfEachName) {
  Parse("A: 1\r\nB: 2\r\nC: 3\r\nD: 4\r\n");
  auto lateB = Field("B: late");
  list_->put_Parameter(0, nullptr);
  list_->put_Parameter(3, lateB.get());  // empty, B, C, B
  list_->RemoveByName(B("C").get());
  EXPECT_EQ(Names(), (std::vector<std::string>{"<empty>", "B", "B"}));
  EXPECT_EQ(Raw(Find("B").get()), "2");
}

// ---------------------------------------------------------------- indexed access
TEST_F(MessageParametersTest, ParameterGetAtTheCountWritesNothing) {
  Parse("A: 1\r\n");
  IEMSMessageParameter* untouched = reinterpret_cast<IEMSMessageParameter*>(8);
  EXPECT_EQ(list_->get_Parameter(1, &untouched), S_OK);
  EXPECT_EQ(untouched, reinterpret_cast<IEMSMessageParameter*>(8));
  EXPECT_EQ(list_->get_Parameter(-1, &untouched), S_OK);
  EXPECT_EQ(untouched, reinterpret_cast<IEMSMessageParameter*>(8));
}

TEST_F(MessageParametersTest, ParameterPutOutOfRangeDoesNothing) {
  Parse("A: 1\r\n");
  auto b = Field("B: 2");
  EXPECT_EQ(list_->put_Parameter(1, b.get()), S_OK);
  EXPECT_EQ(list_->put_Parameter(-1, b.get()), S_OK);
  EXPECT_EQ(Names(), std::vector<std::string>{"A"});
}

TEST_F(MessageParametersTest, ParameterPutDoesNotTouchTheIndex) {
  Parse("A: 1\r\nB: 2\r\n");
  auto q = Field("Q: 9");
  EXPECT_EQ(list_->put_Parameter(0, q.get()), S_OK);
  EXPECT_EQ(Find("A").get(), q.get());  // the index still points at position 0
  EXPECT_FALSE(Find("Q"));
}

TEST_F(MessageParametersTest, ParameterPutOfNothingEmptiesTheEntry) {
  Parse("A: 1\r\nB: 2\r\n");
  EXPECT_EQ(list_->put_Parameter(0, nullptr), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_FALSE(At(0));
  EXPECT_FALSE(Find("A"));
  EXPECT_EQ(Assembled(), "B: 2\r\n");
}

TEST_F(MessageParametersTest, FieldsAddedUnderTheNameOfAnEmptiedEntryTakeItsPlace) {
  Parse("A: 1\r\nB: 2\r\n");
  list_->put_Parameter(0, nullptr);
  auto a = Field("A: again");
  EXPECT_EQ(list_->AddParameter(a.get()), S_OK);
  EXPECT_EQ(At(0).get(), a.get());
  list_->put_Parameter(1, nullptr);
  auto b = Field("B: again");
  EXPECT_EQ(list_->ReplaceParameter(b.get()), S_OK);
  EXPECT_EQ(At(1).get(), b.get());
  ComPtr<IEMSMessageParameter> created;
  list_->put_Parameter(1, nullptr);
  EXPECT_EQ(list_->CreateParameter(B("b").get(), created.put()), S_OK);
  EXPECT_EQ(At(1).get(), created.get());
  EXPECT_EQ(Count(), 2);
}

TEST_F(MessageParametersTest, AddParameterUnderAReusedIndexChainsIntoTheFieldFoundThere) {
  Parse("A: 1\r\nB: 2\r\n");
  auto q = Field("Q: 9");
  list_->put_Parameter(0, q.get());
  auto a = Field("A: 3");
  EXPECT_EQ(list_->AddParameter(a.get()), S_OK);  // AddChainHeader on Q fails: the field is dropped
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(Raw(q.get()), "9");
}

// ---------------------------------------------------------------- clone
TEST_F(MessageParametersTest, CloneCopiesEveryFieldIntoNewObjects) {
  list_->put_DefaultCodePage(28591);
  list_->put_DefaultEncoding(1);
  Parse("Received: a\r\nReceived: b\r\nContent-Type: text/plain; charset=x\r\n");
  ComPtr<IEMSMessageParameters> clone;
  ASSERT_EQ(list_->Clone(clone.put()), S_OK);
  LONG count = 0, page = 0, encoding = 0;
  clone->get_ParamCount(&count);
  clone->get_DefaultCodePage(&page);
  clone->get_DefaultEncoding(&encoding);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(page, 28591);
  EXPECT_EQ(encoding, 1);
  ComPtr<IEMSMessageParameter> copy;
  clone->get_Parameter(0, copy.put());
  EXPECT_NE(copy.get(), At(0).get());
  EXPECT_EQ(Raw(copy.get()), "a\r\n\r\nb");
  Bstr text;
  clone->AssembleParameters(text.put());
  EXPECT_EQ(WideToAnsi(text.view()), Assembled());
}

TEST_F(MessageParametersTest, CloneSkipsEmptyEntries) {
  Parse("A: 1\r\nB: 2\r\n");
  list_->put_Parameter(0, nullptr);
  ComPtr<IEMSMessageParameters> clone;
  ASSERT_EQ(list_->Clone(clone.put()), S_OK);
  LONG count = 0;
  clone->get_ParamCount(&count);
  EXPECT_EQ(count, 1);
}

TEST_F(MessageParametersTest, CloneOfAListHoldingOneNameTwiceChainsTheSecond) {
  Parse("A: 1\r\nB: 2\r\n");
  list_->put_Parameter(1, Field("A: 3").get());
  ComPtr<IEMSMessageParameters> clone;
  ASSERT_EQ(list_->Clone(clone.put()), S_OK);
  LONG count = 0;
  clone->get_ParamCount(&count);
  ASSERT_EQ(count, 1);
  ComPtr<IEMSMessageParameter> copy;
  clone->get_Parameter(0, copy.put());
  EXPECT_EQ(Raw(copy.get()), "1\r\n\r\n3");
}

// ---------------------------------------------------------------- fields of another implementation
TEST_F(MessageParametersTest, ForeignFieldsAreCalledThroughTheirInterface) {
  auto foreign = ForeignField::Make();
  foreign->ParseHeader(B("X-Foreign: 1").get());
  EXPECT_FALSE(ImplOf<MessageParameter>(foreign.get()));
  EXPECT_EQ(list_->AddParameter(foreign.get()), S_OK);
  EXPECT_EQ(list_->AddParameter(Field("x-foreign: 2").get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(Raw(foreign.get()), "1\r\n\r\n2");
  EXPECT_EQ(Find("X-FOREIGN").get(), foreign.get());
  EXPECT_EQ(Assembled(), "X-Foreign: 1\r\nX-Foreign: 2\r\n");

  auto own = Field("Y: 1");
  list_->AddParameter(own.get());
  auto foreignY = ForeignField::Make();
  foreignY->ParseHeader(B("Y: 2").get());
  EXPECT_EQ(list_->AddParameter(foreignY.get()), S_OK);  // chained through the interface
  EXPECT_EQ(Raw(own.get()), "1\r\n\r\n2");

  list_->RemoveByName(B("nothing").get());
  EXPECT_EQ(list_->RemoveByName(B("x-foreign").get()), S_OK);
  EXPECT_EQ(Find("Y").get(), own.get());
}

TEST_F(MessageParametersTest, ForeignFieldsAreClonedThroughTheirInterface) {
  auto foreign = ForeignField::Make();
  foreign->ParseHeader(B("X-Foreign: 1").get());
  list_->AddParameter(foreign.get());
  ComPtr<IEMSMessageParameters> clone;
  ASSERT_EQ(list_->Clone(clone.put()), S_OK);
  Bstr text;
  clone->AssembleParameters(text.put());
  EXPECT_EQ(U8(text), "X-Foreign: 1\r\n");
}

// ---------------------------------------------------------------- late binding
TEST_F(MessageParametersTest, OperationsHaveTheirDispatchIdentifiers) {
  ComPtr<IDispatch> d;
  ASSERT_EQ(list_.As(&d), S_OK);
  EXPECT_EQ(IdOf(d.get(), "ParseParameters"), 0x60020000);
  EXPECT_EQ(IdOf(d.get(), "ParseParametersObject"), 0x60020001);
  EXPECT_EQ(IdOf(d.get(), "AssembleParameters"), 0x60020002);
  EXPECT_EQ(IdOf(d.get(), "CreateParameter"), 0x60020006);
  EXPECT_EQ(IdOf(d.get(), "RemoveByName"), 0x6002000B);
  EXPECT_EQ(IdOf(d.get(), "Parameter"), 0x6002000C);
  EXPECT_EQ(IdOf(d.get(), "ParamCount"), 0x6002000E);
  EXPECT_EQ(IdOf(d.get(), "DefaultCodePage"), 0x6002000F);
  EXPECT_EQ(IdOf(d.get(), "DefaultEncoding"), 0x60020011);
}

TEST_F(MessageParametersTest, LateBoundCallsReachTheList) {
  ComPtr<IDispatch> d;
  ASSERT_EQ(list_.As(&d), S_OK);
  VARIANT result;
  VariantInit(&result);
  ASSERT_EQ(Invoke(d.get(), "ParseParameters", DISPATCH_METHOD, {"A: 1\r\nB: 2\r\nA: 3\r\n"}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "ParamCount", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 2);
  ASSERT_EQ(Invoke(d.get(), "Parameter", DISPATCH_PROPERTYGET, {1}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  ComPtr<IEMSMessageParameter> b;
  ASSERT_EQ(result.pdispVal->QueryInterface(IID_IEMSMessageParameter, b.put_void()), S_OK);
  EXPECT_EQ(Name(b.get()), "B");
  VariantClear(&result);
  ASSERT_EQ(Invoke(d.get(), "FindParameter", DISPATCH_METHOD, {"a"}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  VariantClear(&result);
  ASSERT_EQ(Invoke(d.get(), "CreateParameter", DISPATCH_METHOD, {"C"}, &result), S_OK);
  VariantClear(&result);
  ASSERT_EQ(Invoke(d.get(), "RemoveByName", DISPATCH_METHOD, {"B"}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "AssembleParameters", DISPATCH_METHOD, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "A: 1\r\nA: 3\r\n");
  VariantClear(&result);
  ASSERT_EQ(Invoke(d.get(), "AssembleParametersObject", DISPATCH_METHOD, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  ComPtr<IEMSDataObject> data;
  ASSERT_EQ(result.pdispVal->QueryInterface(IID_IEMSDataObject, data.put_void()), S_OK);
  EXPECT_EQ(SpanBytes(data.get()), "A: 1\r\nA: 3\r\n");
  VariantClear(&result);
  ComPtr<IDispatch> dataDispatch;
  data.As(&dataDispatch);
  ASSERT_EQ(Invoke(d.get(), "ParseParametersObject", DISPATCH_METHOD, {dataDispatch.get()}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "Parameter", DISPATCH_PROPERTYPUT, {0, b.get()}), S_OK);
  EXPECT_EQ(At(0).get(), b.get());
  ASSERT_EQ(Invoke(d.get(), "DefaultEncoding", DISPATCH_PROPERTYPUT, {3}), S_OK);
  ASSERT_EQ(Invoke(d.get(), "DefaultEncoding", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 3);
  ASSERT_EQ(Invoke(d.get(), "RemoveAll", DISPATCH_METHOD, {}), S_OK);
  EXPECT_EQ(Count(), 0);
}

// ---------------------------------------------------------------- the library's own entry points
TEST(MessageParametersLibrary, NarrowEntryPointsMatchTheInterface) {
  ComPtr<MessageParameters> own;
  ASSERT_EQ(MakeObject(&own), S_OK);
  std::string block = "Received: a\r\nSubject: caf\xE9\r\nreceived: b\r\n";
  EXPECT_EQ(own->ParseBlock(block), S_OK);
  EXPECT_EQ(own->count(), 2u);
  FieldRef found = own->Find("RECEIVED");
  ASSERT_TRUE(found);
  EXPECT_EQ(found.get(), own->at(0).get());
  EXPECT_FALSE(own->Find("To"));
  std::string assembled;
  EXPECT_EQ(own->AssembleBlock(&assembled), S_OK);
  EXPECT_EQ(assembled, "Received: a\r\nReceived: b\r\nSubject: caf\xE9\r\n");
  Bstr wide;
  own->AssembleParameters(wide.put());
  EXPECT_EQ(WideToAnsi(wide.view()), assembled);
}

TEST(MessageParametersLibrary, DefaultsSetDirectlyReachParsedFields) {
  ComPtr<MessageParameters> own;
  ASSERT_EQ(MakeObject(&own), S_OK);
  own->SetDefaults(65001, 2);
  EXPECT_EQ(own->defaultCodePage(), 65001);
  EXPECT_EQ(own->defaultEncoding(), 2);
  own->ParseBlock("A: 1\r\n");
  LONG page = 0;
  own->at(0).get()->get_DefaultCodePage(&page);
  EXPECT_EQ(page, 65001);
}

TEST(MessageParametersLibrary, CreatableThroughTheClassTable) {
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(PvCreateInstance(CLSID_EMSMessageParameters, nullptr, IID_IUnknown, unknown.put_void()), S_OK);
  ComPtr<IEMSMessageParameters> list;
  EXPECT_EQ(unknown.As(&list), S_OK);
  EXPECT_TRUE(ImplOf<MessageParameters>(list.get()));
}

}  // namespace
}  // namespace pv::test
