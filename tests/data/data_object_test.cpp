#include <unistd.h>

#include <fstream>

#include "tests/test_util.h"

namespace pv::test {
namespace {

class DataObjectTest : public ::testing::Test {
 protected:
  ComPtr<IEMSDataObject> data_ = Create<IEMSDataObject>(CLSID_EMSDataObject);

  ULONG Position() {
    ULONG v = 0;
    EXPECT_EQ(data_->get_Position(&v), S_OK);
    return v;
  }
  ULONG Length() {
    ULONG v = 0;
    EXPECT_EQ(data_->get_Length(&v), S_OK);
    return v;
  }
  ULONG Size() {
    ULONG v = 0;
    EXPECT_EQ(data_->get_DataSize(&v), S_OK);
    return v;
  }
};

std::string TempFile(std::string_view bytes) {
  char name[] = "/tmp/parcelvane-data-XXXXXX";
  int fd = mkstemp(name);
  EXPECT_GE(fd, 0);
  if (!bytes.empty()) {
    EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  close(fd);
  return name;
}

TEST_F(DataObjectTest, NewObjectIsEmpty) {
  EXPECT_EQ(Size(), 0u);
  EXPECT_EQ(Position(), 0u);
  EXPECT_EQ(Length(), 0u);
  VARIANT v;
  VariantInit(&v);
  EXPECT_EQ(data_->get_Data(&v), S_OK);
  EXPECT_EQ(v.vt, VT_EMPTY);
}

TEST_F(DataObjectTest, StoringAnArrayResetsTheSpan) {
  data_ = DataOf("0123456789");
  data_->put_Position(4);
  data_->put_Length(2);
  VARIANT v = ByteVariant("abc");
  EXPECT_EQ(data_->put_Data(v), S_OK);
  VariantClear(&v);
  EXPECT_EQ(Size(), 3u);
  EXPECT_EQ(Position(), 0u);
  EXPECT_EQ(Length(), 3u);
}

TEST_F(DataObjectTest, DataPutRejectsAValueThatIsNotAnArray) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_BSTR;
  v.bstrVal = SysAllocString(OLESTR("text"));
  EXPECT_EQ(data_->put_Data(v), E_INVALIDARG);
  VariantClear(&v);
}

TEST_F(DataObjectTest, DataPutCopiesTheCallersArray) {
  VARIANT v = ByteVariant("abc");
  data_->put_Data(v);
  static_cast<char*>(v.parray->pvData)[0] = 'X';
  VariantClear(&v);
  EXPECT_EQ(AllBytes(data_.get()), "abc");
}

TEST_F(DataObjectTest, DataPutAcceptsAnyElementTypeAndCountsElements) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_I4;
  v.parray = SafeArrayCreateVector(VT_I4, 0, 5);
  EXPECT_EQ(data_->put_Data(v), S_OK);
  EXPECT_EQ(Size(), 5u);
  VARIANT out;
  VariantInit(&out);
  EXPECT_EQ(data_->get_Data(&out), S_OK);
  EXPECT_EQ(out.vt, VT_ARRAY | VT_I4);
  VariantClear(&out);
  VariantClear(&v);
}

TEST_F(DataObjectTest, PositionPutBeyondTheBufferTakesTheLastIndex) {
  data_ = DataOf("abc");
  data_->put_Position(5);
  EXPECT_EQ(Position(), 2u);
}

TEST_F(DataObjectTest, PositionPutOnAnEmptyBufferWrapsToAllOnes) {
  EXPECT_EQ(data_->put_Position(0), S_OK);
  EXPECT_EQ(Position(), 0xFFFFFFFFu);
}

TEST_F(DataObjectTest, LengthPutIsClampedToTheBuffer) {
  data_ = DataOf("0123456789");
  data_->put_Position(4);
  EXPECT_EQ(data_->put_Length(100), S_OK);
  EXPECT_EQ(Length(), 6u);
  data_->put_Length(6);
  EXPECT_EQ(Length(), 6u);
  data_->put_Length(2);
  EXPECT_EQ(Length(), 2u);
}

TEST_F(DataObjectTest, LengthPutWrapsAroundThirtyTwoBits) {
  data_ = DataOf("0123456789");
  data_->put_Position(4);
  data_->put_Length(0xFFFFFFFFu);  // 4 + 0xFFFFFFFF wraps to 3, which fits
  EXPECT_EQ(Length(), 0xFFFFFFFFu);
}

TEST_F(DataObjectTest, PositionPutAfterLengthPutDoesNotShrinkTheLength) {
  data_ = DataOf("0123456789");
  data_->put_Position(8);
  EXPECT_EQ(Length(), 10u);
}

TEST_F(DataObjectTest, DataGetReturnsTheWholeArrayWhateverTheSpan) {
  data_ = DataOf("0123456789");
  data_->put_Position(3);
  data_->put_Length(2);
  EXPECT_EQ(AllBytes(data_.get()), "0123456789");
}

TEST_F(DataObjectTest, DataGetClearsTheCallersVariantFirst) {
  data_ = DataOf("ab");
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_BSTR;
  v.bstrVal = SysAllocString(OLESTR("old"));
  EXPECT_EQ(data_->get_Data(&v), S_OK);
  EXPECT_EQ(BytesOf(v), "ab");
  VariantClear(&v);
}

TEST_F(DataObjectTest, DataGetHandsOutACopy) {
  data_ = DataOf("ab");
  VARIANT v;
  VariantInit(&v);
  data_->get_Data(&v);
  static_cast<char*>(v.parray->pvData)[0] = 'X';
  VariantClear(&v);
  EXPECT_EQ(AllBytes(data_.get()), "ab");
}

TEST_F(DataObjectTest, ExtractBlockCopiesTheSpanIntoANewObject) {
  data_ = DataOf("0123456789");
  data_->put_Position(2);
  data_->put_Length(3);
  ComPtr<IEMSDataObject> block;
  ASSERT_EQ(data_->ExtractBlockAsData(block.put()), S_OK);
  EXPECT_EQ(AllBytes(block.get()), "234");
  ULONG v = 9;
  block->get_DataSize(&v);
  EXPECT_EQ(v, 3u);
  block->get_Position(&v);
  EXPECT_EQ(v, 0u);
  block->get_Length(&v);
  EXPECT_EQ(v, 3u);
  EXPECT_EQ(Position(), 2u);
  EXPECT_EQ(Length(), 3u);
  EXPECT_EQ(AllBytes(data_.get()), "0123456789");
}

TEST_F(DataObjectTest, ExtractBlockOfNothingStoredFails) {
  ComPtr<IEMSDataObject> block;
  EXPECT_EQ(data_->ExtractBlockAsData(block.put()), E_FAIL);
  EXPECT_FALSE(block);
  EXPECT_EQ(data_->ExtractBlockAsData(nullptr), E_POINTER);
}

TEST_F(DataObjectTest, ExtractBlockNeverReadsOutsideTheBuffer) {
  // Length set before Position leaves the span reaching past the end.
  data_ = DataOf("0123456789");
  data_->put_Length(10);
  data_->put_Position(8);
  ComPtr<IEMSDataObject> block;
  ASSERT_EQ(data_->ExtractBlockAsData(block.put()), S_OK);
  EXPECT_EQ(AllBytes(block.get()), "89");
}

TEST_F(DataObjectTest, ExtractBlockOfAnEmptyArrayWithWrappedPositionIsEmpty) {
  VARIANT v = ByteVariant("");
  data_->put_Data(v);
  VariantClear(&v);
  data_->put_Position(0);
  EXPECT_EQ(Position(), 0xFFFFFFFFu);
  ComPtr<IEMSDataObject> block;
  ASSERT_EQ(data_->ExtractBlockAsData(block.put()), S_OK);
  EXPECT_EQ(AllBytes(block.get()), "");
}

TEST_F(DataObjectTest, CreateDataArrayFromUtf16UsesTheAnsiPage) {
  VARIANT v = Utf16Variant(W("abc"));
  EXPECT_EQ(data_->CreateDataArray(v, 0), S_OK);
  VariantClear(&v);
  EXPECT_EQ(AllBytes(data_.get()), "abc");
  EXPECT_EQ(Length(), 3u);
}

TEST_F(DataObjectTest, CreateDataArrayFromUtf16InTheGivenPage) {
  VARIANT v = Utf16Variant(W("caf\xC3\xA9"));
  EXPECT_EQ(data_->CreateDataArray(v, 65001), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), "caf\xC3\xA9");
  EXPECT_EQ(data_->CreateDataArray(v, 0), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), "caf\xE9");
  VariantClear(&v);
}

TEST_F(DataObjectTest, CreateDataArrayStoresByteArraysAsTheyAre) {
  VARIANT v = ByteVariant(std::string_view("\x00\xFF", 2));
  EXPECT_EQ(data_->CreateDataArray(v, 65001), S_OK);
  VariantClear(&v);
  EXPECT_EQ(AllBytes(data_.get()), std::string("\x00\xFF", 2));
}

TEST_F(DataObjectTest, CreateDataArrayRejectsAPlainString) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_BSTR;
  v.bstrVal = SysAllocString(OLESTR("abc"));
  EXPECT_EQ(data_->CreateDataArray(v, 0), E_INVALIDARG);
  VariantClear(&v);
}

TEST_F(DataObjectTest, CreateDataArrayRejectsOtherElementTypes) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_I4;
  v.parray = SafeArrayCreateVector(VT_I4, 0, 3);
  EXPECT_EQ(data_->CreateDataArray(v, 0), E_FAIL);
  VariantClear(&v);
}

TEST_F(DataObjectTest, CreateDataArrayRejectsAByReferenceArray) {
  VARIANT inner = ByteVariant("abc");
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_UI1 | VT_BYREF;
  v.pparray = &inner.parray;
  EXPECT_EQ(data_->CreateDataArray(v, 0), E_FAIL);
  VariantClear(&inner);
}

TEST_F(DataObjectTest, CreateDataArrayOfEmptyTextFails) {
  VARIANT v = Utf16Variant(WStringView());
  EXPECT_EQ(data_->CreateDataArray(v, 0), E_FAIL);
  VariantClear(&v);
}

TEST_F(DataObjectTest, CreateDataArrayInAnUnknownPageFails) {
  VARIANT v = Utf16Variant(W("abc"));
  EXPECT_EQ(data_->CreateDataArray(v, 12345), E_FAIL);
  EXPECT_EQ(data_->CreateDataArray(v, -1), E_FAIL);
  VariantClear(&v);
}

TEST_F(DataObjectTest, CreateEmptyDataOfZeroIsInvalid) { EXPECT_EQ(data_->CreateEmptyData(0), E_INVALIDARG); }

TEST_F(DataObjectTest, CreateEmptyDataStoresZeroBytes) {
  EXPECT_EQ(data_->CreateEmptyData(4), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), std::string(4, '\0'));
  EXPECT_EQ(Length(), 4u);
}

TEST_F(DataObjectTest, CreateDataFromFileReadsTheWholeFile) {
  std::string path = TempFile(std::string("line\r\n\x00\xFF", 8));
  EXPECT_EQ(data_->CreateDataFromFile(B(path).get()), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), std::string("line\r\n\x00\xFF", 8));
  EXPECT_EQ(Length(), 8u);
  unlink(path.c_str());
}

TEST_F(DataObjectTest, CreateDataFromAnEmptyFileFailsAndKeepsTheBuffer) {
  data_ = DataOf("keep");
  std::string path = TempFile("");
  EXPECT_EQ(data_->CreateDataFromFile(B(path).get()), E_FAIL);
  EXPECT_EQ(AllBytes(data_.get()), "keep");
  unlink(path.c_str());
}

TEST_F(DataObjectTest, CreateDataFromFileStatuses) {
  EXPECT_EQ(data_->CreateDataFromFile(nullptr), E_INVALIDARG);
  EXPECT_EQ(data_->CreateDataFromFile(B("/nonexistent/parcelvane/file").get()), E_FAIL);
  EXPECT_EQ(data_->CreateDataFromFile(B("/tmp").get()), E_FAIL);
  EXPECT_EQ(data_->CreateDataFromFile(B("").get()), E_FAIL);
}

TEST_F(DataObjectTest, CloneCopiesArrayAndSpan) {
  data_ = DataOf("0123456789");
  data_->put_Position(2);
  data_->put_Length(5);
  ComPtr<IEMSDataObject> clone;
  ASSERT_EQ(data_->Clone(clone.put()), S_OK);
  ULONG v = 0;
  clone->get_Position(&v);
  EXPECT_EQ(v, 2u);
  clone->get_Length(&v);
  EXPECT_EQ(v, 5u);
  EXPECT_EQ(AllBytes(clone.get()), "0123456789");
  // Changing the clone leaves the original as it was.
  VARIANT other = ByteVariant("x");
  clone->put_Data(other);
  VariantClear(&other);
  EXPECT_EQ(AllBytes(data_.get()), "0123456789");
  EXPECT_EQ(data_->Clone(nullptr), E_POINTER);
}

TEST_F(DataObjectTest, CloneOfAFreshObjectHasTheWrappedPosition) {
  ComPtr<IEMSDataObject> clone;
  ASSERT_EQ(data_->Clone(clone.put()), S_OK);
  ULONG v = 0;
  clone->get_Position(&v);
  EXPECT_EQ(v, 0xFFFFFFFFu);
  clone->get_DataSize(&v);
  EXPECT_EQ(v, 0u);
}

TEST_F(DataObjectTest, CopyFromItselfChangesNothing) {
  data_ = DataOf("abc");
  data_->put_Position(1);
  EXPECT_EQ(data_->CopyFrom(data_.get()), S_OK);
  EXPECT_EQ(Position(), 1u);
  EXPECT_EQ(AllBytes(data_.get()), "abc");
}

TEST_F(DataObjectTest, CopyFromTakesArrayPositionAndLength) {
  auto source = DataOf("0123456789");
  source->put_Position(3);
  source->put_Length(4);
  EXPECT_EQ(data_->CopyFrom(source.get()), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), "0123456789");
  EXPECT_EQ(Position(), 3u);
  EXPECT_EQ(Length(), 4u);
  EXPECT_EQ(data_->CopyFrom(nullptr), E_POINTER);
}

TEST_F(DataObjectTest, CopyFromAnEmptySourceKeepsTheArrayButTakesTheSpan) {
  data_ = DataOf("abc");
  auto empty = Create<IEMSDataObject>(CLSID_EMSDataObject);
  EXPECT_EQ(data_->CopyFrom(empty.get()), S_OK);
  EXPECT_EQ(AllBytes(data_.get()), "abc");
  EXPECT_EQ(Position(), 0u);
  EXPECT_EQ(Length(), 0u);
}

TEST_F(DataObjectTest, MissingResultPlacesArePointerErrors) {
  EXPECT_EQ(data_->get_Data(nullptr), E_POINTER);
  EXPECT_EQ(data_->get_DataSize(nullptr), E_POINTER);
  EXPECT_EQ(data_->get_Position(nullptr), E_POINTER);
  EXPECT_EQ(data_->get_Length(nullptr), E_POINTER);
}

}  // namespace
}  // namespace pv::test
