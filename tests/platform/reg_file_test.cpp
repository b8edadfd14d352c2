// The registry export format of the text-file registry: what is written,
// read back, ordered and refused.
#include "src/platform/reg_file.h"

#include <gtest/gtest.h>

namespace pv {
namespace {

TEST(RegFile, EmptyRegistryIsTheHeaderAlone) {
  RegFile file;
  EXPECT_EQ(file.Serialize(), "Windows Registry Editor Version 5.00\r\n\r\n");
}

TEST(RegFile, WritesKeysWithAncestorsDefaultValueFirstAndEscapes) {
  RegFile file;
  file.SetString("HKEY_CLASSES_ROOT\\CLSID\\{X}\\InprocServer32", "ThreadingModel", "Apartment");
  file.SetString("HKEY_CLASSES_ROOT\\CLSID\\{X}\\InprocServer32", "", "C:\\dir\\a \"b\".dll");
  file.CreateKey("HKEY_CLASSES_ROOT\\CLSID\\{X}\\Programmable");
  EXPECT_EQ(file.Serialize(),
            "Windows Registry Editor Version 5.00\r\n\r\n"
            "[HKEY_CLASSES_ROOT]\r\n\r\n"
            "[HKEY_CLASSES_ROOT\\CLSID]\r\n\r\n"
            "[HKEY_CLASSES_ROOT\\CLSID\\{X}]\r\n\r\n"
            "[HKEY_CLASSES_ROOT\\CLSID\\{X}\\InprocServer32]\r\n"
            "@=\"C:\\\\dir\\\\a \\\"b\\\".dll\"\r\n"
            "\"ThreadingModel\"=\"Apartment\"\r\n\r\n"
            "[HKEY_CLASSES_ROOT\\CLSID\\{X}\\Programmable]\r\n\r\n");
}

TEST(RegFile, SortsAKeyRightBeforeItsSubkeys) {
  RegFile file;
  file.CreateKey("R\\A B");
  file.CreateKey("R\\A\\C");
  file.CreateKey("R\\a-b");
  std::vector<std::string> expected = {"R", "R\\A", "R\\A\\C", "R\\A B", "R\\a-b"};
  EXPECT_EQ(file.KeyPaths(), expected);
}

TEST(RegFile, NamesCompareWithoutRegardToCaseAndKeepTheirFirstSpelling) {
  RegFile file;
  file.SetString("R\\Key", "Name", "1");
  file.SetString("r\\KEY", "NAME", "2");
  std::string value;
  ASSERT_TRUE(file.GetString("R\\key", "name", &value));
  EXPECT_EQ(value, "2");
  EXPECT_EQ(file.KeyPaths(), (std::vector<std::string>{"R", "R\\Key"}));
  EXPECT_NE(file.Serialize().find("\"Name\"=\"2\""), std::string::npos);
}

TEST(RegFile, ReadsBackWhatItWrites) {
  RegFile file;
  file.SetString("HKEY_CURRENT_USER\\Software\\Classes\\P.1", "", "Ü \\ \" ; [x]");
  file.SetString("HKEY_CURRENT_USER\\Software\\Classes\\P.1\\CLSID", "", "{A}");
  file.CreateKey("HKEY_CURRENT_USER\\Empty");
  RegFile again;
  std::string error;
  ASSERT_TRUE(again.Parse(file.Serialize(), &error)) << error;
  EXPECT_EQ(again.Serialize(), file.Serialize());
  std::string value;
  ASSERT_TRUE(again.GetString("HKEY_CURRENT_USER\\Software\\Classes\\P.1", "", &value));
  EXPECT_EQ(value, "Ü \\ \" ; [x]");
}

TEST(RegFile, KeepsValuesOfOtherTypesAsWrittenAndReadsLineFeedsAndComments) {
  RegFile file;
  std::string error;
  ASSERT_TRUE(
      file.Parse("\xEF\xBB\xBFWindows Registry Editor Version 5.00\n\n; a note\n[R\\K]\n"
                 "\"Flags\"=dword:00000001\n\"Bin\"=hex:01,02,\\\n  03\n@=\"v\"\n",
                 &error))
      << error;
  EXPECT_EQ(file.Serialize(),
            "Windows Registry Editor Version 5.00\r\n\r\n[R]\r\n\r\n[R\\K]\r\n@=\"v\"\r\n"
            "\"Flags\"=dword:00000001\r\n\"Bin\"=hex:01,02,03\r\n\r\n");
  std::string value;
  EXPECT_FALSE(file.GetString("R\\K", "Flags", &value));  // not a string
}

TEST(RegFile, DeleteTreeRemovesTheKeyAndItsSubkeysOnly) {
  RegFile file;
  file.CreateKey("R\\A\\B\\C");
  file.CreateKey("R\\AB");
  file.DeleteTree("r\\a");
  EXPECT_EQ(file.KeyPaths(), (std::vector<std::string>{"R", "R\\AB"}));
  EXPECT_TRUE(file.HasKey("R"));
  EXPECT_TRUE(file.HasSubkeys("R"));
  EXPECT_FALSE(file.HasSubkeys("R\\AB"));
  file.DeleteTree("R\\missing");
  EXPECT_EQ(file.KeyPaths().size(), 2u);
}

TEST(RegFile, RefusesWhatIsNotAnExportAndStaysUnchanged) {
  const char* bad[] = {
      "",
      "\n\n",
      "hello\n",
      "Windows Registry Editor Version 5.00\n@=\"outside a key\"\n",
      "Windows Registry Editor Version 5.00\n[R\n",
      "Windows Registry Editor Version 5.00\n[R]\n\"unterminated=\"x\"\n",
      "Windows Registry Editor Version 5.00\n[R]\n\"n\"\"x\"\n",
      "Windows Registry Editor Version 5.00\n[R]\n@=\"open\n",
      "Windows Registry Editor Version 5.00\n[R]\n@=\"a\" trailing\n",
      "Windows Registry Editor Version 5.00\n[R]\n@=\n",
      "Windows Registry Editor Version 5.00\n[R]\n@=hex:01,\\\n",
      "Windows Registry Editor Version 5.00\n[\\K]\n",
      "Windows Registry Editor Version 5.00\n[K\\]\n",
      "Windows Registry Editor Version 5.00\n[A\\\\B]\n",
      "Windows Registry Editor Version 5.00\n[-]\n",
  };
  for (const char* text : bad) {
    RegFile file;
    file.CreateKey("Kept");
    std::string error;
    EXPECT_FALSE(file.Parse(text, &error)) << text;
    EXPECT_FALSE(error.empty()) << text;
    EXPECT_EQ(file.KeyPaths(), std::vector<std::string>{"Kept"}) << text;
  }
}

TEST(RegFile, ReportsTheLineOfAnError) {
  RegFile file;
  std::string error;
  EXPECT_FALSE(file.Parse("Windows Registry Editor Version 5.00\n\n[R]\nbroken\n", &error));
  EXPECT_EQ(error.rfind("line 4:", 0), 0u) << error;
}

TEST(RegFile, ADeletionSectionRemovesAKey) {
  RegFile file;
  std::string error;
  ASSERT_TRUE(file.Parse("REGEDIT4\n[R\\A]\n[R\\B]\n[-R\\A]\n", &error)) << error;
  EXPECT_EQ(file.KeyPaths(), (std::vector<std::string>{"R", "R\\B"}));
}

}  // namespace
}  // namespace pv
