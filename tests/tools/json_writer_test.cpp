// The JSON the tool writes.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tests/tools/json_value.h"
#include "tools/json_writer.h"

namespace pvtool {
namespace {

TEST(JsonWriter, WritesNestedValuesIndented) {
  JsonWriter json;
  json.BeginObject();
  json.Member("a", "x");
  json.Key("list");
  json.BeginArray();
  json.Number(1);
  json.Bool(false);
  json.Null();
  json.EndArray();
  json.Key("empty");
  json.BeginObject();
  json.EndObject();
  json.EndObject();
  EXPECT_EQ(json.text(),
            "{\n  \"a\": \"x\",\n  \"list\": [\n    1,\n    false,\n    null\n  ],\n  \"empty\": {}\n}\n");
}

TEST(JsonWriter, EscapesQuotesBackslashesAndControlCharacters) {
  JsonWriter json;
  json.BeginArray();
  json.String("q\"b\\n\nt\tc\x01\x7F");
  json.EndArray();
  EXPECT_EQ(json.text(), "[\n  \"q\\\"b\\\\n\\nt\\tc\\u0001\\u007f\"\n]\n");
}

TEST(JsonWriter, KeepsUtf8AndRepairsInvalidBytes) {
  JsonWriter json;
  json.BeginArray();
  json.String("K\xC3\xB6ln");
  json.String("bad\xFF");
  json.EndArray();
  EXPECT_EQ(json.text(), "[\n  \"K\xC3\xB6ln\",\n  \"bad\xEF\xBF\xBD\"\n]\n");
}

TEST(JsonWriter, OutputParsesBack) {
  JsonWriter json;
  json.BeginObject();
  json.Member("name", "a \"b\" \\ \x02");
  json.MemberNumber("n", -42);
  json.EndObject();
  test::JsonValue value;
  std::string error;
  ASSERT_TRUE(test::ParseJson(json.text(), &value, &error)) << error;
  EXPECT_EQ(value["name"].string(), "a \"b\" \\ \x02");
  EXPECT_EQ(value["n"].number(), -42);
}

}  // namespace
}  // namespace pvtool

#endif
