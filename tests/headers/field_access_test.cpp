// The holders that decide once, when an object is stored, whether it is
// the library's own or another implementation's, and the adapters that
// reach another implementation's fields and lists through their
// interfaces.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "src/headers/content_type_codes.h"
#include "src/headers/field_access.h"
#include "src/headers/message_parameter.h"
#include "src/headers/message_parameters.h"
#include "tests/headers/foreign_field.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

ComPtr<IEMSMessageParameter> ParsedField(const char* text) {
  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  EXPECT_EQ(field->ParseHeader(B(text).get()), S_OK);
  return field;
}

TEST(FieldRef, OwnFieldIsReachedDirectly) {
  ComPtr<IEMSMessageParameter> field = ParsedField("Content-Type: multipart/mixed; boundary=\"b1\"");
  FieldRef held(field.get());
  ASSERT_TRUE(held);
  EXPECT_EQ(held.get(), field.get());
  ASSERT_NE(held->OwnField(), nullptr);
  EXPECT_EQ(static_cast<IEMSMessageParameter*>(held->OwnField()), field.get());
  LONG type = 0, subtype = 0;
  ASSERT_TRUE(held->ContentCodes(&type, &subtype));
  EXPECT_EQ(type, kTypeMultipart);
  EXPECT_EQ(held->BoundaryText(), "b1");
  std::string key;
  ASSERT_TRUE(held->NameKey(&key));
  EXPECT_EQ(key, "content-type");
}

TEST(FieldRef, ForeignFieldIsReachedThroughItsInterface) {
  ComPtr<IEMSMessageParameter> field = ForeignField::Make();
  ASSERT_EQ(field->ParseHeader(B("Content-Disposition: ATTACHMENT; filename=a.txt").get()), S_OK);
  FieldRef held(field.get());
  ASSERT_TRUE(held);
  EXPECT_EQ(held.get(), field.get());
  EXPECT_EQ(held->OwnField(), nullptr);
  std::string key;
  ASSERT_TRUE(held->NameKey(&key));
  EXPECT_EQ(key, "content-disposition");
  EXPECT_EQ(held->AssembledText(), "Content-Disposition: ATTACHMENT;\r\n\tfilename=\"a.txt\"");
  // This one answers only IEMSMessageParameter: no content state to read.
  LONG type = -1, subtype = -1;
  EXPECT_FALSE(held->ContentCodes(&type, &subtype));
  EXPECT_EQ(type, -1);
  EXPECT_EQ(held->BoundaryText(), "");
  EXPECT_EQ(held->DispositionTypeText(), "");
  EXPECT_FALSE(held->HasGeneratedBoundary());
  std::string next = "unchanged";
  EXPECT_EQ(held->RegenerateBoundary(&next), E_FAIL);
  EXPECT_EQ(next, "unchanged");
}

TEST(FieldRef, NamelessForeignFieldGivesNoKey) {
  FieldRef held(ForeignField::Make(/*nameless=*/true));
  std::string key = "x";
  EXPECT_FALSE(held->NameKey(&key));
  EXPECT_EQ(key, "x");
}

TEST(FieldRef, CopiesAndMovesKeepTheDecision) {
  ComPtr<IEMSMessageParameter> foreign = ForeignField::Make();
  ComPtr<IEMSMessageParameter> own = ParsedField("Subject: s");
  FieldRef a(foreign.get());
  FieldRef copy = a;  // a foreign copy gets an adapter of its own
  EXPECT_EQ(copy.get(), foreign.get());
  EXPECT_NE(copy.access(), a.access());
  EXPECT_EQ(copy->OwnField(), nullptr);
  FieldRef moved = std::move(copy);
  EXPECT_FALSE(copy);  // NOLINT: moved from on purpose
  EXPECT_EQ(moved.get(), foreign.get());
  EXPECT_EQ(moved->OwnField(), nullptr);
  moved = FieldRef(own.get());
  EXPECT_NE(moved->OwnField(), nullptr);
  FieldRef ownCopy = moved;  // an own copy shares the object itself
  EXPECT_EQ(ownCopy.access(), moved.access());
  moved = nullptr;
  EXPECT_FALSE(moved);
  EXPECT_EQ(moved.access(), nullptr);
}

TEST(FieldRef, HoldsItsReference) {
  ComPtr<IEMSMessageParameter> foreign = ForeignField::Make();
  IEMSMessageParameter* raw = foreign.get();
  FieldRef held(foreign.get());
  foreign = nullptr;  // the holder keeps it alive
  Bstr name;
  EXPECT_EQ(held.get(), raw);
  EXPECT_EQ(raw->put_Name(B("X-Kept").get()), S_OK);
  std::string key;
  ASSERT_TRUE(held->NameKey(&key));
  EXPECT_EQ(key, "x-kept");
}

TEST(FieldListRef, ForeignFieldsInTheLibrarysListAreReachedThroughTheirInterface) {
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  ComPtr<IEMSMessageParameter> foreign = ForeignField::Make();
  ASSERT_EQ(foreign->ParseHeader(B("Content-Type: text/html").get()), S_OK);
  ASSERT_EQ(list->AddParameter(foreign.get()), S_OK);
  ASSERT_EQ(list->AddParameter(ParsedField("Subject: hi").get()), S_OK);
  FieldListRef held(list.get());
  ASSERT_NE(held->OwnList(), nullptr);
  EXPECT_EQ(held->Count(), 2);
  FieldRef found = held->Find("CONTENT-TYPE");
  EXPECT_EQ(found.get(), foreign.get());
  EXPECT_EQ(found->OwnField(), nullptr);
  EXPECT_FALSE(held->Find("Missing"));
  std::string block;
  ASSERT_EQ(held->BlockText(&block), S_OK);
  EXPECT_EQ(block, "Content-Type: text/html\r\nSubject: hi\r\n");
  FieldRef created;
  EXPECT_EQ(held->Create("subject", &created), S_FALSE);
  EXPECT_NE(created->OwnField(), nullptr);
  EXPECT_EQ(held->Create("X-New", &created), S_OK);
  EXPECT_EQ(held->Count(), 3);
}

}  // namespace
}  // namespace pv::test
