// Registration off Windows: the keys and values written per machine and per
// user into the text-file registry, unregistration, DllInstall's "user"
// rule, the encoder script's slip, corrupt files and concurrent writers.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "src/platform/reg_file.h"
#include "src/platform/module_file.h"
#include "src/server/class_table.h"
#include "src/com/guid_text.h"
#include "tests/server/registry_dir.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

const char kMachine[] = "HKEY_CLASSES_ROOT\\";
const char kUser[] = "HKEY_CURRENT_USER\\Software\\Classes\\";
const char kAppId[] = "{E64290F4-6FEC-4de7-B96D-4EF4AFB37B0B}";
const char kLibId[] = "{76B0BE2F-A910-45E1-8EC3-BAEA1E01F123}";

bool Exists(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0;
}

class Registration : public RegistryDirTest {
 protected:
  std::string MachineFile() const { return FileOf("machine"); }
  std::string UserFile() const { return FileOf("user"); }

  static RegFile Load(const std::string& path) {
    RegFile file;
    std::string error;
    EXPECT_TRUE(file.Parse(ReadFile(path), &error)) << path << ": " << error;
    return file;
  }
};

std::string Value(const RegFile& file, const std::string& key, const std::string& name = "") {
  std::string value;
  if (!file.GetString(key, name, &value)) return "<absent>";
  return value;
}

// The keys a registration must hold under `root`, checked value by value.
void ExpectRegistered(const RegFile& file, const std::string& root) {
  const std::string module = ModuleFilePath();
  ASSERT_FALSE(module.empty());
  EXPECT_EQ(Value(file, root + "AppID\\" + kAppId), "ParcelvaneLib64");
  EXPECT_EQ(Value(file, root + "AppID\\ParcelvaneLib64.DLL", "AppID"), kAppId);
  for (const ClassRow* row = ClassTableBegin(); row != ClassTableEnd(); ++row) {
    const std::string name = row->name;
    const std::string clsid = GuidText(*row->clsid);
    const std::string independent = root + "ParcelvaneLib." + name;
    SCOPED_TRACE(name);
    EXPECT_EQ(Value(file, independent), name + " Class");
    EXPECT_EQ(Value(file, independent + "\\CLSID"), clsid);
    EXPECT_EQ(Value(file, independent + "\\CurVer"), "ParcelvaneLib." + name + ".1");
    const std::string key = root + "CLSID\\" + clsid;
    EXPECT_EQ(Value(file, key), name + " Class");
    EXPECT_EQ(Value(file, key + "\\ProgID"), "ParcelvaneLib." + name + ".1");
    EXPECT_EQ(Value(file, key + "\\VersionIndependentProgID"), "ParcelvaneLib." + name);
    EXPECT_TRUE(file.HasKey(key + "\\Programmable"));
    EXPECT_EQ(Value(file, key + "\\InprocServer32"), module);
    EXPECT_EQ(Value(file, key + "\\InprocServer32", "ThreadingModel"), "Apartment");
    EXPECT_EQ(Value(file, key + "\\TypeLib"), kLibId);
  }
  // Versioned program identifiers: every class's own but the encoder's,
  // whose script writes the decoder's name with the encoder's class.
  const std::string encoder = GuidText(CLSID_EMSMimePartEncoder);
  EXPECT_EQ(Value(file, root + "ParcelvaneLib.EMSMimePartDecoder.1"), "EMSMimePartEncoder Class");
  EXPECT_EQ(Value(file, root + "ParcelvaneLib.EMSMimePartDecoder.1\\CLSID"), encoder);
  EXPECT_FALSE(file.HasKey(root + "ParcelvaneLib.EMSMimePartEncoder.1"));
  EXPECT_EQ(Value(file, root + "ParcelvaneLib.EMSMessageParser.1"), "EMSMessageParser Class");
  EXPECT_EQ(Value(file, root + "ParcelvaneLib.EMSMessageParser.1\\CLSID"),
            "{F0BF2A13-AE57-4BAD-90B1-52FB939CB406}");
  // The type library, as the platform's registration writes it.
  const std::string library = root + "TypeLib\\" + kLibId + "\\1.0";
  EXPECT_EQ(Value(file, library), "parcelvane 1.0 Type Library");
  EXPECT_EQ(Value(file, library + "\\0\\win64"), module);
  EXPECT_EQ(Value(file, library + "\\FLAGS"), "8");
  EXPECT_EQ(Value(file, library + "\\HELPDIR"), module.substr(0, module.rfind('/') + 1));
  const std::string parser = root + "Interface\\{AB9279C0-20AB-4F7C-8744-413D6B1C5610}";
  EXPECT_EQ(Value(file, parser), "IEMSMessageParser");
  EXPECT_EQ(Value(file, parser + "\\ProxyStubClsid32"), "{00020424-0000-0000-C000-000000000046}");
  EXPECT_EQ(Value(file, parser + "\\ProxyStubClsid"), "{00020424-0000-0000-C000-000000000046}");
  EXPECT_EQ(Value(file, parser + "\\TypeLib"), kLibId);
  EXPECT_EQ(Value(file, parser + "\\TypeLib", "Version"), "1.0");
}

size_t CountUnder(const RegFile& file, const std::string& prefix) {
  size_t n = 0;
  for (const std::string& key : file.KeyPaths()) n += key.rfind(prefix, 0) == 0 ? 1 : 0;
  return n;
}

TEST_F(Registration, RegisterServerWritesEveryKeyPerMachine) {
  ASSERT_EQ(DllRegisterServer(), S_OK);
  RegFile file = Load(MachineFile());
  ExpectRegistered(file, kMachine);
  EXPECT_FALSE(Exists(UserFile()));
  // 13 classes: the independent identifier with 2 subkeys, the versioned one
  // with 1 (12 distinct: the decoder's is written twice), the class key with 5.
  EXPECT_EQ(CountUnder(file, std::string(kMachine) + "ParcelvaneLib."), 13u * 3 + 12u * 2);
  EXPECT_EQ(CountUnder(file, std::string(kMachine) + "CLSID\\"), 13u * 6);
  EXPECT_EQ(CountUnder(file, std::string(kMachine) + "Interface\\"), 13u * 4);
  std::string text = ReadFile(MachineFile());
  EXPECT_EQ(text.rfind("Windows Registry Editor Version 5.00\r\n\r\n", 0), 0u);
}

TEST_F(Registration, RegisteringTwiceGivesTheSameFile) {
  ASSERT_EQ(DllRegisterServer(), S_OK);
  std::string once = ReadFile(MachineFile());
  ASSERT_EQ(DllRegisterServer(), S_OK);
  EXPECT_EQ(ReadFile(MachineFile()), once);
}

TEST_F(Registration, UnregisterRemovesEverythingButTheParentKeys) {
  ASSERT_EQ(DllRegisterServer(), S_OK);
  ASSERT_EQ(DllUnregisterServer(), S_OK);
  RegFile file = Load(MachineFile());
  EXPECT_EQ(file.KeyPaths(), (std::vector<std::string>{
                                 "HKEY_CLASSES_ROOT", "HKEY_CLASSES_ROOT\\AppID", "HKEY_CLASSES_ROOT\\CLSID",
                                 "HKEY_CLASSES_ROOT\\Interface", "HKEY_CLASSES_ROOT\\TypeLib"}));
  // Unregistering what is not registered is no failure.
  EXPECT_EQ(DllUnregisterServer(), S_OK);
}

TEST_F(Registration, UnregisterLeavesOtherServersKeys) {
  ASSERT_EQ(DllRegisterServer(), S_OK);
  {
    RegFile file = Load(MachineFile());
    file.SetString("HKEY_CLASSES_ROOT\\CLSID\\{OTHER}", "", "another server");
    file.SetString("HKEY_CLASSES_ROOT\\ParcelvaneLib.EMSMimePart\\Extra", "", "kept");
    std::ofstream(MachineFile(), std::ios::binary) << file.Serialize();
  }
  ASSERT_EQ(DllUnregisterServer(), S_OK);
  RegFile file = Load(MachineFile());
  EXPECT_EQ(Value(file, "HKEY_CLASSES_ROOT\\CLSID\\{OTHER}"), "another server");
  // A program identifier key that still holds a subkey of another writer stays.
  EXPECT_EQ(Value(file, "HKEY_CLASSES_ROOT\\ParcelvaneLib.EMSMimePart\\Extra"), "kept");
  EXPECT_FALSE(file.HasKey("HKEY_CLASSES_ROOT\\ParcelvaneLib.EMSMimePart\\CLSID"));
}

// DllInstall's per-user switch lasts for the module's life, so each of these
// runs in a child process of its own.
TEST_F(Registration, InstallForUserWritesUnderTheCurrentUserOnly) {
  EXPECT_EXIT(
      {
        HRESULT hr = DllInstall(TRUE, u"USER");
        std::exit(hr == S_OK && !Exists(MachineFile()) && Exists(UserFile()) ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
  RegFile file = Load(UserFile());
  ExpectRegistered(file, kUser);
  EXPECT_EQ(CountUnder(file, "HKEY_CLASSES_ROOT"), 0u);
}

TEST_F(Registration, OnlyExactlyUserSwitchesToPerUser) {
  for (const char16_t* text : {u"users", u"use", u"", u"machine"}) {
    EXPECT_EXIT(
        {
          HRESULT hr = DllInstall(TRUE, text);
          std::exit(hr == S_OK && Exists(MachineFile()) && !Exists(UserFile()) ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    ExpectRegistered(Load(MachineFile()), kMachine);
    ASSERT_EQ(std::remove(MachineFile().c_str()), 0);
  }
  EXPECT_EXIT(
      {
        HRESULT hr = DllInstall(TRUE, nullptr);
        std::exit(hr == S_OK && Exists(MachineFile()) ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(Registration, InstallFalseUnregistersTheSameScope) {
  EXPECT_EXIT(
      {
        bool ok = DllInstall(TRUE, u"uSeR") == S_OK && DllInstall(FALSE, u"user") == S_OK;
        std::exit(ok ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
  RegFile file = Load(UserFile());
  EXPECT_EQ(CountUnder(file, std::string(kUser) + "ParcelvaneLib."), 0u);
  EXPECT_EQ(CountUnder(file, std::string(kUser) + "CLSID\\"), 0u);
}

TEST_F(Registration, ACorruptFileIsAnErrorAndIsNotOverwritten) {
  const std::string garbage = "this is not a registry\n[half";
  WriteFile("machine", garbage);
  EXPECT_EQ(DllRegisterServer(), static_cast<HRESULT>(0x800703F1u));
  EXPECT_EQ(DllUnregisterServer(), static_cast<HRESULT>(0x800703F1u));
  EXPECT_EQ(ReadFile(MachineFile()), garbage);
  // A failed DllInstall undoes through unregistration, which fails the same way.
  EXPECT_EQ(DllInstall(TRUE, u"machine"), static_cast<HRESULT>(0x800703F1u));
  EXPECT_EQ(ReadFile(MachineFile()), garbage);
}

TEST_F(Registration, AnUnwritableRegistryFolderIsAnError) {
  // A file where the scope's folder should be.
  std::ofstream(dir_ + "/machine", std::ios::binary) << "x";
  HRESULT hr = DllRegisterServer();
  EXPECT_TRUE(FAILED(hr));
  EXPECT_EQ(ReadFile(dir_ + "/machine"), "x");
}

TEST_F(Registration, RegistrationsAtOnceLeaveOneWholeFile) {
  ASSERT_EQ(DllRegisterServer(), S_OK);
  const std::string expected = ReadFile(MachineFile());
  ASSERT_EQ(DllUnregisterServer(), S_OK);
  // Another process registers at the same time (forked before any thread
  // starts, so that it inherits no lock).
  pid_t child = ::fork();
  if (child == 0) {
    HRESULT hr = S_OK;
    for (int round = 0; round < 5 && hr == S_OK; ++round) hr = DllRegisterServer();
    ::_exit(hr == S_OK ? 0 : 1);
  }
  std::vector<std::thread> threads;
  std::vector<HRESULT> results(8, E_FAIL);
  for (size_t i = 0; i < results.size(); ++i) {
    threads.emplace_back([&results, i] {
      for (int round = 0; round < 5; ++round) results[i] = DllRegisterServer();
    });
  }
  for (std::thread& t : threads) t.join();
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  for (HRESULT hr : results) EXPECT_EQ(hr, S_OK);
  EXPECT_EQ(ReadFile(MachineFile()), expected);
}

}  // namespace
}  // namespace pv::test
