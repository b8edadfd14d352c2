#include "src/server/registration.h"

#include <atomic>
#include <memory>

#include "parcelvane/identifiers.h"
#include "parcelvane/interfaces.h"
#include "src/platform/module_file.h"
#include "src/platform/thread_locale.h"
#include "src/platform/type_library.h"
#include "src/server/class_table.h"
#include "src/com/guid_text.h"

namespace pv {

const char kProgIdPrefix[] = "ParcelvaneLib";

namespace {

// The name of the 64-bit module's application identifier.
constexpr char kAppIdName[] = "ParcelvaneLib64";
// The proxy of every dual interface: the platform's automation marshaler.
constexpr char kAutomationProxy[] = "{00020424-0000-0000-C000-000000000046}";

std::atomic<bool> g_per_user{false};

// Stops at the first failing step, as the scripts do.
#define PV_RETURN_IF_FAILED(expr) \
  do {                            \
    HRESULT hr_ = (expr);         \
    if (FAILED(hr_)) return hr_;  \
  } while (0)

std::string ProgId(const char* className) { return std::string(kProgIdPrefix) + "." + className; }

// The application identifier: under AppID, the identifier with the
// module's name, and the module's file name pointing back at it.
HRESULT RunAppIdScript(ClassesRoot* root, bool install) {
  const std::string byId = std::string("AppID\\") + PV_APPLICATION_ID_TEXT;
  const std::string byName = std::string("AppID\\") + kAppIdName + ".DLL";
  if (!install) {
    PV_RETURN_IF_FAILED(root->DeleteTree(byId));
    return root->DeleteTree(byName);
  }
  PV_RETURN_IF_FAILED(root->SetValue(byId, "", kAppIdName));
  return root->SetValue(byName, "AppID", PV_APPLICATION_ID_TEXT);
}

// One class: its versioned and version-independent program identifiers and
// its key under CLSID (removed whole on unregistration; CLSID itself stays).
HRESULT RunClassScript(ClassesRoot* root, const ClassRow& row, const std::string& module, bool install) {
  const std::string clsid = GuidText(*row.clsid);
  const std::string description = std::string(row.name) + " Class";
  const std::string versioned = ProgId(row.name) + ".1";
  const std::string scriptVersioned = ProgId(row.scriptProgIdClass) + ".1";
  const std::string independent = ProgId(row.name);
  const std::string classKey = "CLSID\\" + clsid;
  if (!install) {
    PV_RETURN_IF_FAILED(root->DeleteTree(scriptVersioned + "\\CLSID"));
    PV_RETURN_IF_FAILED(root->DeleteKeyIfLeaf(scriptVersioned));
    PV_RETURN_IF_FAILED(root->DeleteTree(independent + "\\CLSID"));
    PV_RETURN_IF_FAILED(root->DeleteTree(independent + "\\CurVer"));
    PV_RETURN_IF_FAILED(root->DeleteKeyIfLeaf(independent));
    return root->DeleteTree(classKey);
  }
  PV_RETURN_IF_FAILED(root->SetValue(scriptVersioned, "", description));
  PV_RETURN_IF_FAILED(root->SetValue(scriptVersioned + "\\CLSID", "", clsid));
  PV_RETURN_IF_FAILED(root->SetValue(independent, "", description));
  PV_RETURN_IF_FAILED(root->SetValue(independent + "\\CLSID", "", clsid));
  PV_RETURN_IF_FAILED(root->SetValue(independent + "\\CurVer", "", versioned));
  PV_RETURN_IF_FAILED(root->SetValue(classKey, "", description));
  PV_RETURN_IF_FAILED(root->SetValue(classKey + "\\ProgID", "", versioned));
  PV_RETURN_IF_FAILED(root->SetValue(classKey + "\\VersionIndependentProgID", "", independent));
  PV_RETURN_IF_FAILED(root->CreateKey(classKey + "\\Programmable"));
  PV_RETURN_IF_FAILED(root->SetValue(classKey + "\\InprocServer32", "", module));
  PV_RETURN_IF_FAILED(root->SetValue(classKey + "\\InprocServer32", "ThreadingModel", "Apartment"));
  return root->SetValue(classKey + "\\TypeLib", "", GuidText(LIBID_PARCELVANELib));
}

std::string TypeLibraryVersionKey() {
  return "TypeLib\\" + GuidText(LIBID_PARCELVANELib) + "\\" + std::to_string(PV_LIBRARY_VERSION_MAJOR) + "." +
         std::to_string(PV_LIBRARY_VERSION_MINOR);
}

// Where the platform has no type-library service, the keys it would write:
// the library's version key with its file, and each dual interface with the
// automation marshaler as its proxy.
HRESULT WriteTypeLibraryKeys(ClassesRoot* root, const std::string& module, bool install) {
  const std::string library = TypeLibraryVersionKey();
  const std::string libid = GuidText(LIBID_PARCELVANELib);
  const std::string version =
      std::to_string(PV_LIBRARY_VERSION_MAJOR) + "." + std::to_string(PV_LIBRARY_VERSION_MINOR);
  if (!install) {
    PV_RETURN_IF_FAILED(root->DeleteTree(library));
    PV_RETURN_IF_FAILED(root->DeleteKeyIfLeaf("TypeLib\\" + libid));
  } else {
    std::string folder = module.substr(0, module.find_last_of('/') + 1);
    PV_RETURN_IF_FAILED(root->SetValue(library, "", PV_LIBRARY_DESCRIPTION));
    PV_RETURN_IF_FAILED(root->SetValue(library + "\\0\\win64", "", module));
    // The library has a disk image (LIBFLAG_FHASDISKIMAGE), as the platform records.
    PV_RETURN_IF_FAILED(root->SetValue(library + "\\FLAGS", "", "8"));
    PV_RETURN_IF_FAILED(root->SetValue(library + "\\HELPDIR", "", folder));
  }
#define PV_INTERFACE_KEYS(I)                                                                 \
  {                                                                                          \
    const std::string key = "Interface\\" + GuidText(IID_##I);                               \
    if (!install) {                                                                          \
      PV_RETURN_IF_FAILED(root->DeleteTree(key));                                            \
    } else {                                                                                 \
      PV_RETURN_IF_FAILED(root->SetValue(key, "", #I));                                      \
      PV_RETURN_IF_FAILED(root->SetValue(key + "\\ProxyStubClsid", "", kAutomationProxy));   \
      PV_RETURN_IF_FAILED(root->SetValue(key + "\\ProxyStubClsid32", "", kAutomationProxy)); \
      PV_RETURN_IF_FAILED(root->SetValue(key + "\\TypeLib", "", libid));                     \
      PV_RETURN_IF_FAILED(root->SetValue(key + "\\TypeLib", "Version", version));            \
    }                                                                                        \
  }
  PV_DUAL_INTERFACES(PV_INTERFACE_KEYS)
#undef PV_INTERFACE_KEYS
  return S_OK;
}

HRESULT RegisterTypeLibrary(ClassesRoot* root, const std::string& module, bool install) {
  RegistryScope scope = RegistrationScope();
  HRESULT hr = install ? RegisterModuleTypeLibrary(scope, module) : UnregisterModuleTypeLibrary(scope);
  if (hr == S_FALSE) return WriteTypeLibraryKeys(root, module, install);
  // Removing a registration that is not there is no failure.
  if (!install && (hr == static_cast<HRESULT>(0x8002801Cu) || hr == static_cast<HRESULT>(0x80070002u))) {
    return S_OK;
  }
  return hr;
}

HRESULT Register(ClassesRoot* root, const std::string& module) {
  PV_RETURN_IF_FAILED(RunAppIdScript(root, true));
  for (const ClassRow* row = ClassTableBegin(); row != ClassTableEnd(); ++row) {
    PV_RETURN_IF_FAILED(RunClassScript(root, *row, module, true));
    // No class declares component categories.
  }
  return RegisterTypeLibrary(root, module, true);
}

HRESULT Unregister(ClassesRoot* root, const std::string& module) {
  for (const ClassRow* row = ClassTableBegin(); row != ClassTableEnd(); ++row) {
    PV_RETURN_IF_FAILED(RunClassScript(root, *row, module, false));
  }
  PV_RETURN_IF_FAILED(RegisterTypeLibrary(root, module, false));
  return RunAppIdScript(root, false);
}

// Opens the scope's root, runs `step` and keeps what it wrote, under the
// system default locale.
template <class Step>
HRESULT RunRegistration(Step step) {
  ScopedThreadLocale locale(LOCALE_SYSTEM_DEFAULT);
  std::string module = ModuleFilePath();
  if (module.empty()) return E_UNEXPECTED;
  std::unique_ptr<ClassesRoot> root;
  PV_RETURN_IF_FAILED(OpenClassesRoot(RegistrationScope(), true, &root));
  PV_RETURN_IF_FAILED(step(root.get(), module));
  return root->Commit();
}

#undef PV_RETURN_IF_FAILED

}  // namespace

RegistryScope RegistrationScope() {
  return g_per_user.load() ? RegistryScope::kUser : RegistryScope::kMachine;
}

HRESULT RegisterServer() { return RunRegistration(Register); }

HRESULT UnregisterServer() { return RunRegistration(Unregister); }

HRESULT InstallServer(BOOL install, const OLECHAR* commandLine) {
  if (commandLine != nullptr) {
    // The first five units: "user" and its terminating zero.
    static const char kUser[] = "user";
    bool isUser = true;
    for (int i = 0; i < 5 && isUser; ++i) {
      OLECHAR c = commandLine[i];
      if (c >= 'A' && c <= 'Z') c = static_cast<OLECHAR>(c - 'A' + 'a');
      isUser = c == static_cast<OLECHAR>(kUser[i]);
    }
    if (isUser) g_per_user.store(true);
  }
  if (!install) return UnregisterServer();
  HRESULT hr = RegisterServer();
  if (FAILED(hr)) UnregisterServer();
  return hr;
}

}  // namespace pv
