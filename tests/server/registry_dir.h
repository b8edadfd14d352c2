// A registry folder of its own for each test: PARCELVANE_REGISTRY_DIR points
// at a new temporary folder, removed afterwards.
#ifndef PARCELVANE_TESTS_SERVER_REGISTRY_DIR_H
#define PARCELVANE_TESTS_SERVER_REGISTRY_DIR_H

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace pv::test {

class RegistryDirTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/pv-registry-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    dir_ = pattern;
    ::setenv("PARCELVANE_REGISTRY_DIR", dir_.c_str(), 1);
  }
  void TearDown() override {
    ::unsetenv("PARCELVANE_REGISTRY_DIR");
    ASSERT_EQ(std::system(("rm -rf '" + dir_ + "'").c_str()), 0);
  }
  // The file of one scope ("machine" or "user").
  std::string FileOf(const char* scope) const { return dir_ + "/" + scope + "/classes.reg"; }
  void WriteFile(const char* scope, const std::string& text) {
    ::mkdir((dir_ + "/" + scope).c_str(), 0755);
    std::ofstream(FileOf(scope), std::ios::binary) << text;
  }

  std::string dir_;
};

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace pv::test

#endif  // PARCELVANE_TESTS_SERVER_REGISTRY_DIR_H
