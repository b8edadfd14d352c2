// EMSMimeAttributes: parsing parameter lists, the name-ordered map and its
// keys, shared entries, assembly, cloning, statuses, late binding and
// linear work on large input.
#include "src/headers/mime_attributes.h"

#include <chrono>
#include <fstream>
#include <random>
#include <sstream>

#include "tests/test_util.h"

namespace pv::test {
namespace {

// ---------------------------------------------------------------- objects of another implementation
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#endif
#define PV_FAKE_MEMBER(kind, name, params, optional) \
  HRESULT STDMETHODCALLTYPE PV_MEMBER_NAME_##kind(name) params override { return E_NOTIMPL; }

// Reference counting and QueryInterface for a host's own object of
// interface I; every operation answers E_NOTIMPL unless a subclass says more.
template <class I>
class FakeObject : public I {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IDispatch) &&
        !IsEqualIID(riid, IidOf<I>::Get())) {
      return E_NOINTERFACE;
    }
    *ppv = static_cast<I*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs_; }
  ULONG STDMETHODCALLTYPE Release() override {
    ULONG left = --refs_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }

 protected:
  virtual ~FakeObject() = default;

 private:
  ULONG refs_ = 1;
};

class FakeAttributeBase : public FakeObject<IEMSMimeAttribute> {
 public:
  PV_MEMBERS_IEMSMimeAttribute(PV_FAKE_MEMBER)
};

class FakeAttributesBase : public FakeObject<IEMSMimeAttributes> {
 public:
  PV_MEMBERS_IEMSMimeAttributes(PV_FAKE_MEMBER)
};

#undef PV_FAKE_MEMBER
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

// An attribute whose name reads as given: a string, a null string, or a
// failure; it assembles to a fixed text.
class FakeAttribute final : public FakeAttributeBase {
 public:
  enum class NameRead { kString, kNull, kFailure };
  FakeAttribute(NameRead read, const char* name) : read_(read), name_(W(name)) {}

  HRESULT STDMETHODCALLTYPE get_Name(BSTR* pVal) override {
    if (read_ == NameRead::kFailure) return E_UNEXPECTED;
    *pVal = read_ == NameRead::kNull ? nullptr : AllocBstr(name_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE AssembleAttribute(BSTR* pVal) override {
    *pVal = AllocBstr(name_ + W("=\"fake\""));
    return S_OK;
  }

 private:
  NameRead read_;
  WString name_;
};

ComPtr<IEMSMimeAttribute> Fake(FakeAttribute::NameRead read, const char* name) {
  return ComPtr<IEMSMimeAttribute>::Adopt(new FakeAttribute(read, name));
}

// A list of another implementation that shows a real list's entries only
// through AttributesCount and Attribute.
class ForwardingAttributes final : public FakeAttributesBase {
 public:
  explicit ForwardingAttributes(ComPtr<IEMSMimeAttributes> inner) : inner_(std::move(inner)) {}
  HRESULT STDMETHODCALLTYPE get_Attribute(LONG nIdx, IEMSMimeAttribute** ppVal) override {
    return inner_->get_Attribute(nIdx, ppVal);
  }
  HRESULT STDMETHODCALLTYPE get_AttributesCount(LONG* pVal) override {
    return inner_->get_AttributesCount(pVal);
  }

 private:
  ComPtr<IEMSMimeAttributes> inner_;
};

// ---------------------------------------------------------------- fixture
class MimeAttributesTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMimeAttributes> l_ = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);

  HRESULT Parse(std::string_view utf8) { return l_->ParseAttributes(B(utf8).get()); }
  LONG Count() { return CountOf(l_.get()); }
  static LONG CountOf(IEMSMimeAttributes* list) {
    LONG value = 12345;
    EXPECT_EQ(list->get_AttributesCount(&value), S_OK);
    return value;
  }
  std::string Assemble() { return AssembleOf(l_.get()); }
  static std::string AssembleOf(IEMSMimeAttributes* list) {
    Bstr value;
    EXPECT_EQ(list->AssembleAttributes(value.put()), S_OK);
    return U8(value);
  }
  ComPtr<IEMSMimeAttribute> Find(std::string_view name) {
    ComPtr<IEMSMimeAttribute> found;
    HRESULT hr = l_->FindAttribute(B(name).get(), found.put());
    EXPECT_EQ(hr, found ? S_OK : S_FALSE);
    return found;
  }
  ComPtr<IEMSMimeAttribute> At(LONG index) { return AtOf(l_.get(), index); }
  static ComPtr<IEMSMimeAttribute> AtOf(IEMSMimeAttributes* list, LONG index) {
    ComPtr<IEMSMimeAttribute> found;
    EXPECT_EQ(list->get_Attribute(index, found.put()), S_OK);
    return found;
  }
  ComPtr<IEMSMimeAttribute> CreateNamed(std::string_view name, HRESULT expected = S_OK) {
    ComPtr<IEMSMimeAttribute> made;
    EXPECT_EQ(l_->CreateAttribute(B(name).get(), made.put()), expected);
    return made;
  }
  // The names in key order, as Attribute reads them.
  std::vector<std::string> Names() { return NamesOf(l_.get()); }
  static std::vector<std::string> NamesOf(IEMSMimeAttributes* list) {
    std::vector<std::string> names;
    for (LONG i = 0; i < CountOf(list); ++i) names.push_back(NameOf(AtOf(list, i).get()));
    return names;
  }
  static std::string NameOf(IEMSMimeAttribute* attribute) {
    return Read(attribute, &IEMSMimeAttribute::get_Name);
  }
  static std::string RawOf(IEMSMimeAttribute* attribute) {
    return Read(attribute, &IEMSMimeAttribute::get_RawValue);
  }
  static std::string DecodedOf(IEMSMimeAttribute* attribute) {
    return Read(attribute, &IEMSMimeAttribute::get_DecodedValue);
  }
  static std::string Read(IEMSMimeAttribute* attribute,
                          HRESULT (STDMETHODCALLTYPE IEMSMimeAttribute::*getter)(BSTR*)) {
    if (attribute == nullptr) return "<none>";
    Bstr value;
    EXPECT_EQ((attribute->*getter)(value.put()), S_OK);
    return U8(value);
  }
  static ComPtr<IEMSMimeAttribute> NewAttribute(std::string_view text) {
    auto attribute = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
    EXPECT_EQ(attribute->ParseAttribute(B(text).get()), S_OK);
    return attribute;
  }
};

bool AnsiIs1252() { return std::getenv("PARCELVANE_ACP") == nullptr; }

// The measured order of parameter-like names (shared with the collation tests).
std::vector<std::string> MeasuredOrder() {
  std::ifstream in(std::string(PARCELVANE_TEST_FIXTURES) + "/platform/varbstrcmp.tsv");
  EXPECT_TRUE(in.good());
  const std::string sortedKey = "# sorted (VarBstrCmp flags=0, stable): ";
  std::string line;
  std::vector<std::string> names;
  while (std::getline(in, line)) {
    if (line.rfind(sortedKey, 0) != 0) continue;
    std::stringstream words(line.substr(sortedKey.size()));
    std::string name;
    while (words >> name) names.push_back(name);
  }
  return names;
}

// ---------------------------------------------------------------- ParseAttributes
TEST_F(MimeAttributesTest, NewListIsEmpty) { EXPECT_EQ(Count(), 0); }

TEST_F(MimeAttributesTest, ParameterListAssemblesInNameOrder) {
  EXPECT_EQ(Parse("; Format=flowed; charset=us-ascii"), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(Assemble(), ";\r\n\tcharset=\"us-ascii\";\r\n\tFormat=\"flowed\"");
}

TEST_F(MimeAttributesTest, TextWithoutTheLeadingSemicolonParsesAlike) {
  EXPECT_EQ(Parse("charset=us-ascii; format=flowed"), S_OK);
  std::string without = Assemble();
  EXPECT_EQ(Parse("; charset=us-ascii; format=flowed"), S_OK);
  EXPECT_EQ(Assemble(), without);
  EXPECT_EQ(without, ";\r\n\tcharset=\"us-ascii\";\r\n\tformat=\"flowed\"");
}

TEST_F(MimeAttributesTest, FirstParameterOfANameWins) {
  EXPECT_EQ(Parse("a=1; a=2"), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(RawOf(Find("a").get()), "1");
}

TEST_F(MimeAttributesTest, NamesDifferingInCaseAreTwoEntries) {
  EXPECT_EQ(Parse("charset=a; Charset=b; CHARSET=c"), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"charset", "Charset", "CHARSET"}));
  EXPECT_EQ(RawOf(Find("Charset").get()), "b");
}

TEST_F(MimeAttributesTest, SemicolonInsideQuotesEndsTheParameter) {
  EXPECT_EQ(Parse("name=\"a;b\"; c=d"), S_OK);
  // "b\"" holds no "=": an attribute with an empty name and value.
  EXPECT_EQ(Names(), (std::vector<std::string>{"", "c", "name"}));
  EXPECT_EQ(RawOf(Find("name").get()), "a");
  // The entry without a name would read back as nothing: it is not written.
  EXPECT_EQ(Assemble(), ";\r\n\tc=\"d\";\r\n\tname=\"a\"");
}

TEST_F(MimeAttributesTest, EntriesWithoutANameAreNotWritten) {
  EXPECT_EQ(Parse("; 12; a=1"), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"", "a"}));
  EXPECT_EQ(Assemble(), ";\r\n\ta=\"1\"");
  EXPECT_EQ(Parse("; 12"), S_OK);
  EXPECT_EQ(Count(), 1);
  BSTR untouched = nullptr;
  EXPECT_EQ(l_->AssembleAttributes(&untouched), S_OK);
  EXPECT_EQ(untouched, nullptr);
}

TEST_F(MimeAttributesTest, TextWithoutEqualsYieldsAnEmptyAttribute) {
  EXPECT_EQ(Parse("; novalue; other; a=1"), S_OK);
  EXPECT_EQ(Count(), 2);
  auto empty = Find("");
  ASSERT_TRUE(empty);
  EXPECT_EQ(RawOf(empty.get()), "");
  EXPECT_EQ(DecodedOf(empty.get()), "");
}

TEST_F(MimeAttributesTest, FoldingAndSpecialsBeforeANameAreSkipped) {
  EXPECT_EQ(Parse(";\r\n\tcharset=\"utf-8\";\r\n\t  (<@>)format=flowed"), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"charset", "format"}));
  EXPECT_EQ(RawOf(Find("format").get()), "flowed");
}

TEST_F(MimeAttributesTest, QuoteBeforeANameIsSkippedButNotAfterIt) {
  EXPECT_EQ(Parse("\"quoted\"=v"), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"quoted\""}));
}

TEST_F(MimeAttributesTest, OnlySeparatorsGiveAnEmptyList) {
  EXPECT_EQ(Parse(" ;;\r\n\t; , "), S_OK);
  EXPECT_EQ(Count(), 0);
  EXPECT_EQ(Parse(""), S_OK);
  EXPECT_EQ(Count(), 0);
}

TEST_F(MimeAttributesTest, ParseEmptiesTheListFirst) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  EXPECT_EQ(Parse("b=2"), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"b"}));
}

TEST_F(MimeAttributesTest, ParseOfANullStringGivesEPointer) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  EXPECT_EQ(l_->ParseAttributes(nullptr), E_POINTER);
  EXPECT_EQ(Count(), 1);
}

TEST_F(MimeAttributesTest, ParsedValuesAreDecoded) {
  EXPECT_EQ(Parse("; filename=\"=?utf-8?B?w6kuZG9j?=\"; title*=utf-8''%C3%A9t%C3%A9"), S_OK);
  EXPECT_EQ(DecodedOf(Find("filename").get()), "é.doc");
  EXPECT_EQ(DecodedOf(Find("title").get()), "été");
}

TEST_F(MimeAttributesTest, ContinuationSectionsAreEntriesOfTheirOwn) {
  EXPECT_EQ(Parse("title*0*=us-ascii''a; title*1*=%20b"), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"title*0", "title*1"}));
}

// ---------------------------------------------------------------- key order
TEST_F(MimeAttributesTest, EntriesFollowTheMeasuredNameOrder) {
  std::vector<std::string> order = MeasuredOrder();
  ASSERT_EQ(order.size(), 23u);
  std::vector<std::string> shuffled = order;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(2024));
  for (const std::string& name : shuffled) CreateNamed(name);
  EXPECT_EQ(Names(), order);
}

TEST_F(MimeAttributesTest, AttributeReadsAnyIndexInAnyOrder) {
  std::vector<std::string> order = MeasuredOrder();
  for (const std::string& name : order) CreateNamed(name);
  std::vector<LONG> indexes = {22, 0, 11, 12, 10, 21, 1, 5, 5, 4, 17, 2, 20, 3, 12};
  for (LONG i : indexes) EXPECT_EQ(NameOf(At(i).get()), order[static_cast<size_t>(i)]) << i;
  ASSERT_EQ(order[12], "charset");
  CreateNamed("boundarz");  // after "Boundary": the later entries move
  EXPECT_EQ(NameOf(At(12).get()), "boundarz");
  EXPECT_EQ(NameOf(At(13).get()), "charset");
  EXPECT_EQ(l_->RemoveAttribute(B("boundarz").get()), S_OK);
  EXPECT_EQ(NameOf(At(12).get()), "charset");
}

TEST_F(MimeAttributesTest, NonAsciiNamesOfTheAnsiPageAreKeptAndOrdered) {
  if (!AnsiIs1252()) GTEST_SKIP() << "PARCELVANE_ACP is set";
  EXPECT_EQ(Parse("; zeta=1; \xC3\xA9t\xC3\xA9=2; \xC3\xA9tude=3; alpha=4"), S_OK);  // wide "été", "étude"
  EXPECT_EQ(Count(), 4);
  EXPECT_EQ(NameOf(At(0).get()), "alpha");
  EXPECT_EQ(NameOf(At(3).get()), "zeta");
  EXPECT_EQ(RawOf(Find("été").get()), "2");
  EXPECT_EQ(RawOf(Find("étude").get()), "3");
  EXPECT_FALSE(Find("ete"));
}

TEST_F(MimeAttributesTest, NamesOutsideTheAnsiPageAreHeldAsTheAnsiPageReadsThem) {
  if (!AnsiIs1252()) GTEST_SKIP() << "PARCELVANE_ACP is set";
  auto made = CreateNamed("имя");
  EXPECT_EQ(NameOf(made.get()), "???");
  // Looked up as the attribute holds it: the same name finds the same entry.
  auto again = CreateNamed("имя", S_FALSE);
  EXPECT_EQ(again.get(), made.get());
  EXPECT_EQ(Find("имя").get(), made.get());
  EXPECT_EQ(Find("???").get(), made.get());
}

TEST_F(MimeAttributesTest, NamesInUtf8BytesAreAnsiTextOfTheirOwn) {
  if (!AnsiIs1252()) GTEST_SKIP() << "PARCELVANE_ACP is set";
  // UTF-8 "имя" as it arrives in a header and reads in windows-1252.
  EXPECT_EQ(Parse("; Ð¸Ð¼Ñ\xC2\x8F=1"), S_OK);
  auto found = Find("Ð¸Ð¼Ñ\xC2\x8F");
  ASSERT_TRUE(found);
  EXPECT_FALSE(Find("имя"));
}

// ---------------------------------------------------------------- CreateAttribute
TEST_F(MimeAttributesTest, CreateAttributeAddsANamedEmptyAttribute) {
  auto made = CreateNamed("boundary");
  ASSERT_TRUE(made);
  EXPECT_EQ(NameOf(made.get()), "boundary");
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(Find("boundary").get(), made.get());
  EXPECT_EQ(Assemble(), ";\r\n\tboundary=\"\"");
}

TEST_F(MimeAttributesTest, CreateAttributeOfAnExistingNameReturnsTheStoredObject) {
  EXPECT_EQ(Parse("charset=us-ascii"), S_OK);
  auto stored = Find("charset");
  auto again = CreateNamed("charset", S_FALSE);
  EXPECT_EQ(again.get(), stored.get());
  EXPECT_EQ(RawOf(again.get()), "us-ascii");
  EXPECT_EQ(Count(), 1);
}

TEST_F(MimeAttributesTest, CreateAttributeComparesNamesExactly) {
  CreateNamed("charset");
  auto other = CreateNamed("Charset");
  EXPECT_EQ(NameOf(other.get()), "Charset");
  EXPECT_EQ(Count(), 2);
}

TEST_F(MimeAttributesTest, CreateAttributeWithNullArgumentsGivesEPointer) {
  ComPtr<IEMSMimeAttribute> made;
  EXPECT_EQ(l_->CreateAttribute(nullptr, made.put()), E_POINTER);
  EXPECT_EQ(l_->CreateAttribute(B("a").get(), nullptr), E_POINTER);
  EXPECT_EQ(Count(), 0);
}

TEST_F(MimeAttributesTest, ChangesThroughAHandedOutObjectShowInTheList) {
  auto made = CreateNamed("format");
  ASSERT_EQ(made->put_DecodedValue(B("flowed").get()), S_OK);
  EXPECT_EQ(Assemble(), ";\r\n\tformat=\"flowed\"");
}

// ---------------------------------------------------------------- keys are names at the time of adding
TEST_F(MimeAttributesTest, RenamingAnEntryDoesNotRekeyIt) {
  EXPECT_EQ(Parse("a=1; m=2"), S_OK);
  auto a = Find("a");
  ASSERT_EQ(a->put_Name(B("z").get()), S_OK);
  EXPECT_EQ(Find("a").get(), a.get());
  EXPECT_FALSE(Find("z"));
  // Still first in key order, written under its new name.
  EXPECT_EQ(Assemble(), ";\r\n\tz=\"1\";\r\n\tm=\"2\"");
  // The old key is still taken.
  EXPECT_EQ(l_->AddAttribute(NewAttribute("a=3").get()), S_OK);
  EXPECT_EQ(Count(), 2);
}

// ---------------------------------------------------------------- AddAttribute
TEST_F(MimeAttributesTest, AddAttributeAddsANewNameAndSharesTheObject) {
  auto attribute = NewAttribute("format=flowed");
  EXPECT_EQ(l_->AddAttribute(attribute.get()), S_OK);
  EXPECT_EQ(Find("format").get(), attribute.get());
}

TEST_F(MimeAttributesTest, AddAttributeKeepsTheFirstOfAName) {
  auto first = NewAttribute("a=1");
  EXPECT_EQ(l_->AddAttribute(first.get()), S_OK);
  EXPECT_EQ(l_->AddAttribute(NewAttribute("a=2").get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(Find("a").get(), first.get());
}

TEST_F(MimeAttributesTest, AddAttributeOfAnotherImplementationKeysByItsName) {
  EXPECT_EQ(l_->AddAttribute(Fake(FakeAttribute::NameRead::kString, "x-fake").get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_TRUE(Find("x-fake"));
  EXPECT_EQ(ImplOf<MimeAttributes>(l_.get())->FindOwn("x-fake"), nullptr);
  EXPECT_EQ(Assemble(), ";\r\n\tx-fake=\"fake\"");
}

TEST_F(MimeAttributesTest, AddAttributeWhoseNameCannotBeReadFails) {
  EXPECT_EQ(l_->AddAttribute(Fake(FakeAttribute::NameRead::kNull, "").get()), E_FAIL);
  EXPECT_EQ(l_->AddAttribute(Fake(FakeAttribute::NameRead::kFailure, "").get()), E_FAIL);
  EXPECT_EQ(Count(), 0);
}

TEST_F(MimeAttributesTest, AddAttributeOfNullGivesEPointer) {
  EXPECT_EQ(l_->AddAttribute(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- ReplaceAttribute
TEST_F(MimeAttributesTest, ReplaceAttributeReplacesAnEntryOfTheSameName) {
  EXPECT_EQ(Parse("a=1; b=2"), S_OK);
  auto replacement = NewAttribute("a=9");
  EXPECT_EQ(l_->ReplaceAttribute(replacement.get()), S_OK);
  EXPECT_EQ(Find("a").get(), replacement.get());
  EXPECT_EQ(Count(), 2);
}

TEST_F(MimeAttributesTest, ReplaceAttributeAddsNothingNew) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  EXPECT_EQ(l_->ReplaceAttribute(NewAttribute("b=2").get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_FALSE(Find("b"));
}

TEST_F(MimeAttributesTest, ReplaceAttributeLooksUpAnEmptyNameLikeAnyOther) {
  EXPECT_EQ(Parse("novalue; a=1"), S_OK);
  auto empty = NewAttribute("=x");
  EXPECT_EQ(l_->ReplaceAttribute(empty.get()), S_OK);
  EXPECT_EQ(Find("").get(), empty.get());
}

TEST_F(MimeAttributesTest, ReplaceAttributeWhoseNameCannotBeReadGivesEFail) {
  EXPECT_EQ(Parse("novalue"), S_OK);
  EXPECT_EQ(l_->ReplaceAttribute(Fake(FakeAttribute::NameRead::kNull, "").get()), E_FAIL);
  EXPECT_EQ(l_->ReplaceAttribute(Fake(FakeAttribute::NameRead::kFailure, "").get()), E_FAIL);
  EXPECT_EQ(l_->ReplaceAttribute(nullptr), E_POINTER);
  EXPECT_EQ(Count(), 1);
}

// ---------------------------------------------------------------- AppendAttributes
TEST_F(MimeAttributesTest, AppendAttributesTakesOverNamesThisListHasAsSharedObjects) {
  EXPECT_EQ(Parse("charset=us-ascii; format=fixed"), S_OK);
  auto other = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  ASSERT_EQ(other->ParseAttributes(B("charset=utf-8; name=x").get()), S_OK);
  EXPECT_EQ(l_->AppendAttributes(other.get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"charset", "format"}));
  ComPtr<IEMSMimeAttribute> theirs;
  ASSERT_EQ(other->FindAttribute(B("charset").get(), theirs.put()), S_OK);
  EXPECT_EQ(Find("charset").get(), theirs.get());
  EXPECT_EQ(RawOf(Find("format").get()), "fixed");
}

TEST_F(MimeAttributesTest, AppendAttributesFromAListWithOtherNamesChangesNothing) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  auto before = Find("a");
  auto other = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  ASSERT_EQ(other->ParseAttributes(B("b=2; c=3").get()), S_OK);
  EXPECT_EQ(l_->AppendAttributes(other.get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"a"}));
  EXPECT_EQ(Find("a").get(), before.get());
}

TEST_F(MimeAttributesTest, AppendAttributesUsesTheCurrentNamesOfTheOtherEntries) {
  EXPECT_EQ(Parse("a=1; z=2"), S_OK);
  auto other = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  ASSERT_EQ(other->ParseAttributes(B("b=9").get()), S_OK);
  auto renamed = AtOf(other.get(), 0);
  ASSERT_EQ(renamed->put_Name(B("z").get()), S_OK);
  EXPECT_EQ(l_->AppendAttributes(other.get()), S_OK);
  EXPECT_EQ(Find("z").get(), renamed.get());
}

TEST_F(MimeAttributesTest, AppendAttributesOfItselfChangesNothing) {
  EXPECT_EQ(Parse("a=1; b=2"), S_OK);
  auto a = Find("a");
  EXPECT_EQ(l_->AppendAttributes(l_.get()), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(Find("a").get(), a.get());
}

TEST_F(MimeAttributesTest, AppendAttributesReadsAListOfAnotherImplementationByIndex) {
  EXPECT_EQ(Parse("charset=us-ascii; format=fixed"), S_OK);
  auto inner = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  ASSERT_EQ(inner->ParseAttributes(B("format=flowed; x=1").get()), S_OK);
  ComPtr<IEMSMimeAttributes> other = ComPtr<IEMSMimeAttributes>::Adopt(new ForwardingAttributes(inner));
  EXPECT_EQ(l_->AppendAttributes(other.get()), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(RawOf(Find("format").get()), "flowed");
}

TEST_F(MimeAttributesTest, AppendAttributesOfNullGivesEPointer) {
  EXPECT_EQ(l_->AppendAttributes(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- FindAttribute, RemoveAttribute, RemoveAll
TEST_F(MimeAttributesTest, FindAttributeOfAMissingNameLeavesTheResultUntouched) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  auto sentinel = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  IEMSMimeAttribute* held = sentinel.get();
  IEMSMimeAttribute* watched = held;
  EXPECT_EQ(l_->FindAttribute(B("b").get(), &watched), S_FALSE);
  EXPECT_EQ(watched, held);
  EXPECT_EQ(l_->FindAttribute(B("A").get(), &watched), S_FALSE);
  EXPECT_EQ(watched, held);
}

TEST_F(MimeAttributesTest, FindAttributeWithNullArgumentsGivesEPointer) {
  ComPtr<IEMSMimeAttribute> found;
  EXPECT_EQ(l_->FindAttribute(nullptr, found.put()), E_POINTER);
  EXPECT_EQ(l_->FindAttribute(B("a").get(), nullptr), E_POINTER);
}

TEST_F(MimeAttributesTest, RemoveAttributeRemovesByExactName) {
  EXPECT_EQ(Parse("a=1; A=2; b=3"), S_OK);
  EXPECT_EQ(l_->RemoveAttribute(B("A").get()), S_OK);
  EXPECT_EQ(Names(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(l_->RemoveAttribute(B("missing").get()), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(l_->RemoveAttribute(nullptr), E_POINTER);
}

TEST_F(MimeAttributesTest, RemoveAllEmptiesTheList) {
  EXPECT_EQ(Parse("a=1; b=2"), S_OK);
  EXPECT_EQ(l_->RemoveAll(), S_OK);
  EXPECT_EQ(Count(), 0);
  EXPECT_FALSE(At(0));
}

// ---------------------------------------------------------------- Attribute and AttributesCount
TEST_F(MimeAttributesTest, AttributeAtTheCountSucceedsAndReturnsNothing) {
  EXPECT_EQ(Parse("a=1; b=2"), S_OK);
  auto sentinel = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  IEMSMimeAttribute* held = sentinel.get();
  IEMSMimeAttribute* watched = held;
  EXPECT_EQ(l_->get_Attribute(2, &watched), S_OK);
  EXPECT_EQ(watched, held);
  EXPECT_EQ(l_->get_Attribute(1000, &watched), S_OK);
  EXPECT_EQ(watched, held);
}

TEST_F(MimeAttributesTest, AttributeWithANegativeIndexIsOutOfRange) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  auto sentinel = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  IEMSMimeAttribute* held = sentinel.get();
  IEMSMimeAttribute* watched = held;
  EXPECT_EQ(l_->get_Attribute(-1, &watched), S_OK);
  EXPECT_EQ(watched, held);
  EXPECT_EQ(l_->get_Attribute(LONG(-2147483647 - 1), &watched), S_OK);
  EXPECT_EQ(watched, held);
}

TEST_F(MimeAttributesTest, AttributeAndCountWithNullResultsGiveEPointer) {
  EXPECT_EQ(l_->get_Attribute(0, nullptr), E_POINTER);
  EXPECT_EQ(l_->get_AttributesCount(nullptr), E_POINTER);
}

TEST_F(MimeAttributesTest, AttributeHandsOutTheStoredObject) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  EXPECT_EQ(At(0).get(), Find("a").get());
}

// ---------------------------------------------------------------- AssembleAttributes
TEST_F(MimeAttributesTest, EmptyListAssemblesNothingAndLeavesTheResultUntouched) {
  BSTR held = SysAllocString(OLESTR("untouched"));
  BSTR watched = held;
  EXPECT_EQ(l_->AssembleAttributes(&watched), S_OK);
  EXPECT_EQ(watched, held);
  SysFreeString(held);
}

TEST_F(MimeAttributesTest, AssembleWithANullResultGivesEPointer) {
  EXPECT_EQ(l_->AssembleAttributes(nullptr), E_POINTER);
}

TEST_F(MimeAttributesTest, AssembleEncodesNonAsciiValuesAndFoldsThem) {
  auto name = CreateNamed("name");
  ASSERT_EQ(name->put_DecodedValue(B("café").get()), S_OK);
  EXPECT_EQ(Assemble(), ";\r\n\tname=\"=?utf-8?Q?caf=C3=A9?=\"");
}

TEST_F(MimeAttributesTest, AssembleWritesExtendedValuesAsEncodedWords) {
  EXPECT_EQ(Parse("; title*=utf-8''%C3%A9t%C3%A9; format=flowed"), S_OK);
  EXPECT_EQ(Assemble(), ";\r\n\tformat=\"flowed\";\r\n\ttitle=\"=?utf-8?B?w6l0w6k=?=\"");
}

TEST_F(MimeAttributesTest, AssembleLeavesOutEntriesWhoseTextIsEmpty) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  // An attribute of another implementation that assembles to nothing.
  class Silent final : public FakeAttributeBase {
   public:
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* pVal) override {
      *pVal = AllocBstr(W("b"));
      return S_OK;
    }
  };
  EXPECT_EQ(l_->AddAttribute(ComPtr<IEMSMimeAttribute>::Adopt(new Silent).get()), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(Assemble(), ";\r\n\ta=\"1\"");
}

// ---------------------------------------------------------------- Clone
TEST_F(MimeAttributesTest, CloneCopiesEveryEntryInKeyOrder) {
  EXPECT_EQ(Parse("; b=2; filename=\"=?utf-8?B?w6kuZG9j?=\"; a=1"), S_OK);
  ComPtr<IEMSMimeAttributes> clone;
  ASSERT_EQ(l_->Clone(clone.put()), S_OK);
  ASSERT_TRUE(clone);
  EXPECT_EQ(NamesOf(clone.get()), (std::vector<std::string>{"a", "b", "filename"}));
  EXPECT_NE(AtOf(clone.get(), 0).get(), At(0).get());
  EXPECT_EQ(DecodedOf(AtOf(clone.get(), 2).get()), "é.doc");
  EXPECT_EQ(AssembleOf(clone.get()), Assemble());
}

TEST_F(MimeAttributesTest, CloneKeysEntriesByTheirCurrentNames) {
  EXPECT_EQ(Parse("a=1; b=2"), S_OK);
  ASSERT_EQ(Find("b")->put_Name(B("a").get()), S_OK);
  ComPtr<IEMSMimeAttributes> clone;
  ASSERT_EQ(l_->Clone(clone.put()), S_OK);
  // Both entries are now named "a": the first in key order stays.
  EXPECT_EQ(CountOf(clone.get()), 1);
  EXPECT_EQ(RawOf(AtOf(clone.get(), 0).get()), "1");
}

TEST_F(MimeAttributesTest, CloneOfAnEmptyListIsEmpty) {
  ComPtr<IEMSMimeAttributes> clone;
  ASSERT_EQ(l_->Clone(clone.put()), S_OK);
  EXPECT_EQ(CountOf(clone.get()), 0);
  EXPECT_EQ(l_->Clone(nullptr), E_POINTER);
}

TEST_F(MimeAttributesTest, CloneFailsWhenAnEntryCannotBeCloned) {
  EXPECT_EQ(l_->AddAttribute(Fake(FakeAttribute::NameRead::kString, "x").get()), S_OK);
  ComPtr<IEMSMimeAttributes> clone;
  EXPECT_EQ(l_->Clone(clone.put()), E_NOTIMPL);
  EXPECT_FALSE(clone);
}

// ---------------------------------------------------------------- library entry points
TEST_F(MimeAttributesTest, NarrowEntryPointsRunTheSameCode) {
  ComPtr<MimeAttributes> list;
  ASSERT_EQ(MakeObject(&list), S_OK);
  EXPECT_EQ(list->Parse("; Format=flowed; charset=us-ascii; format=x"), S_OK);
  EXPECT_EQ(list->count(), 3u);
  std::string out = "text/plain";
  EXPECT_EQ(list->AppendAssembled(&out), S_OK);
  EXPECT_EQ(out, "text/plain;\r\n\tcharset=\"us-ascii\";\r\n\tformat=\"x\";\r\n\tFormat=\"flowed\"");
  ASSERT_TRUE(list->Find("charset"));
  EXPECT_EQ(RawOf(list->Find("charset").get()), "us-ascii");
  EXPECT_FALSE(list->Find("CHARSET"));
  ASSERT_NE(list->FindOwn("format"), nullptr);
  EXPECT_EQ(list->FindOwn("format")->rawValue(), "x");
  EXPECT_EQ(list->FindOwn("missing"), nullptr);
  ComPtr<IEMSMimeAttribute> boundary;
  EXPECT_EQ(list->Create("boundary", &boundary), S_OK);
  EXPECT_EQ(list->Create("boundary", &boundary), S_FALSE);
  EXPECT_EQ(list->count(), 4u);
  list->Remove("boundary");
  EXPECT_EQ(list->count(), 3u);
  list->Parse("");
  std::string untouched = "kept";
  EXPECT_EQ(list->AppendAssembled(&untouched), S_OK);
  EXPECT_EQ(untouched, "kept");
}

// ---------------------------------------------------------------- late binding
TEST_F(MimeAttributesTest, LateBoundParseAttributesAndAttributesCount) {
  EXPECT_EQ(Invoke(l_.get(), "ParseAttributes", DISPATCH_METHOD, {"; a=1; b=2"}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(l_.get(), "AttributesCount", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 2);
}

TEST_F(MimeAttributesTest, LateBoundAttributeReturnsTheStoredObject) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(l_.get(), "Attribute", DISPATCH_PROPERTYGET, {0}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_DISPATCH);
  ComPtr<IEMSMimeAttribute> attribute;
  ASSERT_EQ(result.pdispVal->QueryInterface(IID_IEMSMimeAttribute, attribute.put_void()), S_OK);
  EXPECT_EQ(attribute.get(), Find("a").get());
  VariantClear(&result);
}

// ---------------------------------------------------------------- large input
double SecondsToParse(IEMSMimeAttributes* list, const std::string& text) {
  Bstr wide = B(text);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(list->ParseAttributes(wide.get()), S_OK);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST_F(MimeAttributesTest, MegabyteOfDistinctParametersParsesInLinearTime) {
  std::string text;
  while (text.size() < (1u << 20)) text += "; p" + std::to_string(text.size()) + "=v";
  double seconds = SecondsToParse(l_.get(), text);
  EXPECT_GT(Count(), 50000);
  EXPECT_LT(seconds, 10.0);  // generous: linear work takes a small fraction of this
  Bstr wire;
  EXPECT_EQ(l_->AssembleAttributes(wire.put()), S_OK);
}

TEST_F(MimeAttributesTest, MegabyteOfOneRepeatedParameterParsesInLinearTime) {
  std::string text;
  while (text.size() < (1u << 20)) text += ";a=1";
  double seconds = SecondsToParse(l_.get(), text);
  EXPECT_EQ(Count(), 1);
  EXPECT_LT(seconds, 10.0);
}

TEST_F(MimeAttributesTest, MegabyteValueParsesInLinearTime) {
  std::string text = "; title=\"";
  while (text.size() < (1u << 20)) text += "=?utf-8?Q?caf=C3=A9?= word ";
  double seconds = SecondsToParse(l_.get(), text);
  EXPECT_EQ(Count(), 1);
  EXPECT_LT(seconds, 10.0);
}

TEST_F(MimeAttributesTest, MegabyteOfSeparatorsParsesInLinearTime) {
  std::string text(1u << 20, ';');
  for (size_t i = 0; i < text.size(); i += 7) text[i] = '=';
  double seconds = SecondsToParse(l_.get(), text);
  EXPECT_EQ(Count(), 0);
  EXPECT_LT(seconds, 10.0);
}

}  // namespace
}  // namespace pv::test
