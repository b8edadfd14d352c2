// The system's default language is the measured one of an en-US system.
#include <fstream>

#include "src/platform/locale_info.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

// Every GetSystemDefaultLangID row of the fact file, as numbers.
std::vector<unsigned long> MeasuredLanguageIds() {
  std::ifstream in(std::string(PARCELVANE_TEST_FIXTURES) + "/platform/locale.tsv");
  EXPECT_TRUE(in.good());
  std::vector<unsigned long> ids;
  std::string line;
  const std::string key = "GetSystemDefaultLangID\t";
  while (std::getline(in, line)) {
    if (line.rfind(key, 0) == 0) ids.push_back(std::stoul(line.substr(key.size()), nullptr, 16));
  }
  return ids;
}

TEST(LocaleInfo, SystemDefaultLanguageIsTheMeasuredOne) {
  std::vector<unsigned long> ids = MeasuredLanguageIds();
  ASSERT_EQ(ids.size(), 2u);
  for (unsigned long id : ids) EXPECT_EQ(SystemDefaultLanguageId(), id);
}

TEST(LocaleInfo, SystemDefaultLanguageIsEnglishUnitedStates) { EXPECT_EQ(SystemDefaultLanguageId(), 0x0409); }

}  // namespace
}  // namespace pv::test
