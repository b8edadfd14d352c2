// EMSMimeParts: the list of child parts.
#include "tests/mime/foreign_parts.h"
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

// An object's reference count, as Release reports it after an AddRef.
ULONG References(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

class MimePartsTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMimeParts> list_ = NewParts();
  ComPtr<IEMSMimePart> a_ = NewPart();
  ComPtr<IEMSMimePart> b_ = NewPart();
  ComPtr<IEMSMimePart> c_ = NewPart();

  LONG Count() {
    LONG count = -1;
    EXPECT_EQ(list_->get_PartsCount(&count), S_OK);
    return count;
  }
  IEMSMimePart* At(LONG index) {
    ComPtr<IEMSMimePart> part;
    EXPECT_EQ(list_->get_Part(index, part.put()), S_OK);
    return part.get();  // the list still holds it
  }
  void Fill() {
    list_->AddPart(a_.get());
    list_->AddPart(b_.get());
    list_->AddPart(c_.get());
  }
};

TEST_F(MimePartsTest, NewListIsEmpty) { EXPECT_EQ(Count(), 0); }

TEST_F(MimePartsTest, AddPartAppendsAndHoldsAReference) {
  ULONG before = References(a_.get());
  EXPECT_EQ(list_->AddPart(a_.get()), S_OK);
  EXPECT_EQ(list_->AddPart(b_.get()), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(At(0), a_.get());
  EXPECT_EQ(At(1), b_.get());
  EXPECT_EQ(References(a_.get()), before + 1);
}

TEST_F(MimePartsTest, OnePartMayStandInTheListTwice) {
  list_->AddPart(a_.get());
  list_->AddPart(a_.get());
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(At(1), a_.get());
}

TEST_F(MimePartsTest, MissingPartIsAPointerError) {
  EXPECT_EQ(list_->AddPart(nullptr), E_POINTER);
  EXPECT_EQ(list_->AppendParts(nullptr), E_POINTER);
  EXPECT_EQ(list_->put_Part(0, nullptr), E_POINTER);
  EXPECT_EQ(list_->get_Part(0, nullptr), E_POINTER);
  EXPECT_EQ(list_->get_PartsCount(nullptr), E_POINTER);
  EXPECT_EQ(Count(), 0);
}

TEST_F(MimePartsTest, AppendPartsSharesTheSameParts) {
  Fill();
  auto other = NewParts();
  other->AddPart(a_.get());
  EXPECT_EQ(other->AppendParts(list_.get()), S_OK);
  LONG count = 0;
  other->get_PartsCount(&count);
  EXPECT_EQ(count, 4);
  ComPtr<IEMSMimePart> shared;
  other->get_Part(2, shared.put());
  EXPECT_EQ(shared.get(), b_.get());
  // A change through one list shows through the other.
  shared->put_IsAttachPart(1);
  EXPECT_EQ(AttachFlag(At(1)), 1);
}

TEST_F(MimePartsTest, AppendingAnEmptyListDoesNothing) {
  Fill();
  EXPECT_EQ(list_->AppendParts(NewParts().get()), S_OK);
  EXPECT_EQ(Count(), 3);
}

TEST_F(MimePartsTest, AppendingTheListToItselfDoublesItOnce) {
  Fill();
  EXPECT_EQ(list_->AppendParts(list_.get()), S_OK);
  EXPECT_EQ(Count(), 6);
  EXPECT_EQ(At(5), c_.get());
}

TEST_F(MimePartsTest, AppendPartsSkipsMissingEntriesOfAnotherImplementation) {
  auto foreign = MakeForeign<ForeignParts>();
  foreign->AddPart(a_.get());
  foreign->AddPart(b_.get());
  foreign->AddPart(c_.get());
  foreign->holes = {1};
  EXPECT_EQ(list_->AppendParts(foreign.get()), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(At(1), c_.get());
}

TEST_F(MimePartsTest, RemovePartMovesLaterEntriesDown) {
  Fill();
  EXPECT_EQ(list_->RemovePart(1), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(At(0), a_.get());
  EXPECT_EQ(At(1), c_.get());
}

TEST_F(MimePartsTest, RemovingTheLastEntryShortensTheListAndReleasesIt) {
  Fill();
  ULONG before = References(c_.get());
  EXPECT_EQ(list_->RemovePart(2), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(References(c_.get()), before - 1);
}

TEST_F(MimePartsTest, RemovePartOutOfRangeDoesNothing) {
  Fill();
  EXPECT_EQ(list_->RemovePart(3), S_OK);
  EXPECT_EQ(list_->RemovePart(-1), S_OK);
  EXPECT_EQ(list_->RemovePart(INT32_MIN), S_OK);
  EXPECT_EQ(Count(), 3);
}

TEST_F(MimePartsTest, RemoveAllReleasesEveryEntry) {
  Fill();
  ULONG before = References(a_.get());
  EXPECT_EQ(list_->RemoveAll(), S_OK);
  EXPECT_EQ(Count(), 0);
  EXPECT_EQ(References(a_.get()), before - 1);
}

TEST_F(MimePartsTest, PartGetOutOfRangeLeavesTheResultPlaceAsItWas) {
  Fill();
  IEMSMimePart* place = nullptr;
  EXPECT_EQ(list_->get_Part(3, &place), S_OK);
  EXPECT_EQ(place, nullptr);
}

TEST_F(MimePartsTest, PartGetWithANegativeIndexIsARangeFailure) {
  Fill();
  IEMSMimePart* place = nullptr;
  EXPECT_EQ(list_->get_Part(-1, &place), E_INVALIDARG);
  EXPECT_EQ(place, nullptr);
}

TEST_F(MimePartsTest, PartPutReplacesAndReleasesTheOldEntry) {
  Fill();
  auto d = NewPart();
  ULONG before = References(b_.get());
  EXPECT_EQ(list_->put_Part(1, d.get()), S_OK);
  EXPECT_EQ(At(1), d.get());
  EXPECT_EQ(References(b_.get()), before - 1);
}

TEST_F(MimePartsTest, PartPutOfTheEntryAlreadyThereChangesNothing) {
  Fill();
  ULONG before = References(b_.get());
  EXPECT_EQ(list_->put_Part(1, b_.get()), S_OK);
  EXPECT_EQ(References(b_.get()), before);
}

TEST_F(MimePartsTest, PartPutOutOfRangeDoesNothing) {
  Fill();
  auto d = NewPart();
  EXPECT_EQ(list_->put_Part(3, d.get()), S_OK);
  EXPECT_EQ(list_->put_Part(-1, d.get()), S_OK);
  EXPECT_EQ(Count(), 3);
  EXPECT_EQ(At(0), a_.get());
}

TEST_F(MimePartsTest, ReleasingTheListReleasesItsParts) {
  Fill();
  ULONG before = References(a_.get());
  list_ = nullptr;
  EXPECT_EQ(References(a_.get()), before - 1);
}

}  // namespace
}  // namespace pv::test
