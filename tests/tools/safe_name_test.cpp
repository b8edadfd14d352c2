// File names for extracted attachments.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tools/safe_name.h"

namespace pvtool {
namespace {

TEST(SafeFileName, KeepsAnOrdinaryName) {
  EXPECT_EQ(SafeFileName("report.pdf"), "report.pdf");
  EXPECT_EQ(SafeFileName("Bericht f\xC3\xBCr Q3.pdf"), "Bericht f\xC3\xBCr Q3.pdf");
}

TEST(SafeFileName, DirectorySeparatorsCannotLeaveTheDirectory) {
  EXPECT_EQ(SafeFileName("../../etc/passwd"), "___.._etc_passwd");
  EXPECT_EQ(SafeFileName("..\\..\\boot.ini"), "___.._boot.ini");
  EXPECT_EQ(SafeFileName("/etc/shadow"), "_etc_shadow");
  EXPECT_EQ(SafeFileName("C:\\Windows\\evil.dll"), "C__Windows_evil.dll");
}

TEST(SafeFileName, DotNamesAreNeverDirectoryReferences) {
  EXPECT_EQ(SafeFileName(".."), "attachment");
  EXPECT_EQ(SafeFileName("."), "attachment");
  EXPECT_EQ(SafeFileName("..."), "attachment");
}

TEST(SafeFileName, ALeadingDotDoesNotHideTheFile) {
  EXPECT_EQ(SafeFileName(".bashrc"), "_bashrc");
  EXPECT_EQ(SafeFileName("..profile"), "__profile");
}

TEST(SafeFileName, ControlCharactersBecomeUnderscores) {
  EXPECT_EQ(SafeFileName("a\x1B[2Jb\x07.txt"), "a_[2Jb_.txt");
  EXPECT_EQ(SafeFileName("line\r\nbreak.txt"), "line__break.txt");
  EXPECT_EQ(SafeFileName("x\xC2\x85y"), "x_y");  // a C1 control
}

TEST(SafeFileName, CharactersWindowsRefusesBecomeUnderscores) {
  EXPECT_EQ(SafeFileName("a<b>c:d\"e|f?g*h.txt"), "a_b_c_d_e_f_g_h.txt");
}

TEST(SafeFileName, DirectionOverridesCannotDisguiseTheExtension) {
  EXPECT_EQ(SafeFileName("invoice\xE2\x80\xAE"
                         "fdp.exe"),
            "invoice_fdp.exe");
}

TEST(SafeFileName, DeviceNamesGetAPrefix) {
  EXPECT_EQ(SafeFileName("CON"), "_CON");
  EXPECT_EQ(SafeFileName("nul.txt"), "_nul.txt");
  EXPECT_EQ(SafeFileName("com1.log"), "_com1.log");
  EXPECT_EQ(SafeFileName("LPT9"), "_LPT9");
  EXPECT_EQ(SafeFileName("console.txt"), "console.txt");
  EXPECT_EQ(SafeFileName("COM10"), "COM10");
}

TEST(SafeFileName, TrailingDotsAndBlanksGo) { EXPECT_EQ(SafeFileName("  name.txt. . "), "name.txt"); }

TEST(SafeFileName, AnEmptyNameBecomesAttachment) {
  EXPECT_EQ(SafeFileName(""), "attachment");
  EXPECT_EQ(SafeFileName("   "), "attachment");
}

TEST(SafeFileName, LongNamesAreCutKeepingTheExtension) {
  const std::string name = std::string(300, 'a') + ".pdf";
  const std::string safe = SafeFileName(name);
  EXPECT_EQ(safe.size(), kMaxSafeNameBytes);
  EXPECT_EQ(safe.substr(safe.size() - 4), ".pdf");
}

TEST(SafeFileName, CuttingNeverSplitsACharacter) {
  std::string name;
  for (int i = 0; i < 150; ++i) name += "\xC3\xBC";
  const std::string safe = SafeFileName(name);
  EXPECT_LE(safe.size(), kMaxSafeNameBytes);
  EXPECT_EQ(safe.size() % 2, 0u);
}

TEST(SafeFileName, ALongDeviceNameStaysWithinTheLimitWithItsPrefix) {
  const std::string name = "CON." + std::string(300, 'x');
  const std::string safe = SafeFileName(name);
  EXPECT_EQ(safe, "_CON." + std::string(kMaxSafeNameBytes - 5, 'x'));
}

TEST(SafeFileName, AMadeSafeLongDeviceNameIsUnchangedTheSecondTime) {
  const std::string safe = SafeFileName("aux." + std::string(250, 'y'));
  EXPECT_EQ(SafeFileName(safe), safe);
}

TEST(SafeFileName, ANameCutDownToADeviceNameGetsThePrefix) {
  EXPECT_EQ(SafeFileName("PRN" + std::string(300, ' ') + "z"), "_PRN");
}

TEST(NumberedName, PutsTheNumberBeforeTheExtension) {
  EXPECT_EQ(NumberedName("report.pdf", 1), "report-1.pdf");
  EXPECT_EQ(NumberedName("README", 2), "README-2");
  EXPECT_EQ(NumberedName("_bashrc", 3), "_bashrc-3");
}

}  // namespace
}  // namespace pvtool

#endif
