// Writes the interface definition of the type library from the interface
// member lists and the class list of the public headers, so that the type
// library, the C++ interfaces and late binding are one description.
//
//   make_idl OUTPUT.idl
//
// Built for the machine that runs the build (it only prints text), also
// when the library itself is cross-compiled; it links the identifiers and
// their text form only.
#include <parcelvane/identifiers.h>
#include <parcelvane/interfaces.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "src/com/dispatch_ids.h"
#include "src/com/guid_text.h"

namespace {

enum class Kind { kMethod, kGet, kPut };

struct Member {
  Kind kind;
  const char* name;
  const char* params;  // "(BSTR bszVal, BSTR* pVal)"
  int optional;
};

struct Interface {
  const char* name;
  GUID iid;
  std::vector<Member> members;
};

struct Class {
  const char* name;
  const char* defaultInterface;
  GUID clsid;
};

#define PV_KIND_METHOD Kind::kMethod
#define PV_KIND_GET Kind::kGet
#define PV_KIND_PUT Kind::kPut
#define PV_MEMBER_ENTRY(kind, name, params, optional) {PV_KIND_##kind, #name, #params, optional},
#define PV_INTERFACE_ENTRY(I) {#I, IID_##I, {PV_MEMBERS_##I(PV_MEMBER_ENTRY)}},

const std::vector<Interface>& Interfaces() {
  static const std::vector<Interface> all = {PV_DUAL_INTERFACES(PV_INTERFACE_ENTRY)};
  return all;
}

const std::vector<Class>& Classes() {
#define PV_CLASS_ENTRY(C, impl, itf, script, scriptName, guid) {#C, #itf, PV_GUID_VALUE(guid)},
  static const std::vector<Class> all = {PV_CLASSES(PV_CLASS_ENTRY)};
#undef PV_CLASS_ENTRY
  return all;
}

// The GUID without its braces, as IDL writes it.
std::string Uuid(const GUID& g) {
  std::string text = pv::GuidText(g);
  return text.substr(1, text.size() - 2);
}

std::string Trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t");
  size_t e = s.find_last_not_of(" \t");
  return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

struct Param {
  std::string type;  // as in C++, "IEMSDataObject**"
  std::string name;
};

// "(BSTR bszVal, BSTR* pVal)" as types and names.
std::vector<Param> SplitParams(const std::string& text) {
  std::vector<Param> params;
  std::string inner = text.substr(1, text.size() - 2);
  std::stringstream list(inner);
  std::string item;
  while (std::getline(list, item, ',')) {
    item = Trim(item);
    if (item.empty()) continue;
    size_t split = item.find_last_of(" *");
    Param p;
    p.type = Trim(item.substr(0, split + 1));
    p.name = item.substr(split + 1);
    std::string compact;
    for (char c : p.type) {
      if (c != ' ') compact += c;
    }
    p.type = compact;
    params.push_back(p);
  }
  return params;
}

// The automation type of a C++ parameter type, and whether it is the
// result place ([out, retval]).
bool IdlType(const std::string& cpp, std::string* idl, bool* isResult) {
  static const struct {
    const char* cpp;
    const char* idl;
    bool result;
  } kTypes[] = {
      {"BSTR", "BSTR", false},       {"BSTR*", "BSTR*", true},          {"LONG", "long", false},
      {"LONG*", "long*", true},      {"ULONG", "unsigned long", false}, {"ULONG*", "unsigned long*", true},
      {"VARIANT", "VARIANT", false}, {"VARIANT*", "VARIANT*", true},
  };
  for (const auto& t : kTypes) {
    if (cpp == t.cpp) {
      *idl = t.idl;
      *isResult = t.result;
      return true;
    }
  }
  // The library's own interfaces: in by pointer, out by pointer to pointer.
  if (cpp.rfind("IEMS", 0) == 0) {
    *idl = cpp;
    *isResult = cpp.size() > 2 && cpp.compare(cpp.size() - 2, 2, "**") == 0;
    return true;
  }
  return false;
}

bool WriteMember(std::ostream& out, const Member& m, DISPID id) {
  std::vector<Param> params = SplitParams(m.params);
  out << "    [id(0x" << std::hex << std::uppercase << static_cast<unsigned>(id) << std::dec << ")";
  if (m.kind == Kind::kGet) out << ", propget";
  if (m.kind == Kind::kPut) out << ", propput";
  out << "] HRESULT " << m.name << "(";
  int inCount = 0;
  for (const Param& p : params) {
    std::string idl;
    bool result = false;
    if (!IdlType(p.type, &idl, &result)) {
      std::cerr << "make_idl: no automation type for " << p.type << " in " << m.name << "\n";
      return false;
    }
    if (!result) ++inCount;
  }
  int index = 0;
  int inIndex = 0;
  for (const Param& p : params) {
    std::string idl;
    bool result = false;
    IdlType(p.type, &idl, &result);
    if (index++ > 0) out << ", ";
    if (result) {
      out << "[out, retval] ";
    } else {
      bool optional = inIndex++ >= inCount - m.optional;
      if (!optional) {
        out << "[in] ";
      } else if (idl == "BSTR") {
        out << "[in, optional, defaultvalue(\"0\")] ";
      } else if (idl == "VARIANT") {
        out << "[in, optional] ";
      } else {
        out << "[in, optional, defaultvalue(0)] ";
      }
    }
    out << idl << " " << p.name;
  }
  out << ");\n";
  return true;
}

bool WriteIdl(std::ostream& out) {
  out << "// Generated by make_idl from the interface member lists and the class list: do not edit.\n"
      << "import \"oaidl.idl\";\nimport \"ocidl.idl\";\n\n"
      << "[\n  uuid(" << Uuid(LIBID_PARCELVANELib) << "),\n  version(" << PV_LIBRARY_VERSION_MAJOR << "."
      << PV_LIBRARY_VERSION_MINOR << "),\n  helpstring(\"" << PV_LIBRARY_DESCRIPTION << "\")\n]\n"
      << "library " << PV_LIBRARY_NAME << "\n{\n  importlib(\"stdole2.tlb\");\n\n";
  for (const Interface& itf : Interfaces()) out << "  interface " << itf.name << ";\n";
  for (const Interface& itf : Interfaces()) {
    out << "\n  [\n    object,\n    uuid(" << Uuid(itf.iid) << "),\n    dual,\n    nonextensible,\n"
        << "    helpstring(\"" << itf.name << " Interface\"),\n    pointer_default(unique)\n  ]\n"
        << "  interface " << itf.name << " : IDispatch\n  {\n";
    std::vector<const char*> names;
    std::unique_ptr<bool[]> isProperty(new bool[itf.members.size()]);
    std::vector<DISPID> ids(itf.members.size());
    for (size_t i = 0; i < itf.members.size(); ++i) {
      names.push_back(itf.members[i].name);
      isProperty[i] = itf.members[i].kind != Kind::kMethod;
    }
    pv::AssignDispatchIds(itf.members.size(), names.data(), isProperty.get(), ids.data());
    for (size_t i = 0; i < itf.members.size(); ++i) {
      if (!WriteMember(out, itf.members[i], ids[i])) return false;
    }
    out << "  };\n";
  }
  for (const Class& c : Classes()) {
    out << "\n  [\n    uuid(" << Uuid(c.clsid) << "),\n    helpstring(\"" << c.name << " Class\")\n  ]\n"
        << "  coclass " << c.name << "\n  {\n    [default] interface " << c.defaultInterface << ";\n  };\n";
  }
  out << "};\n";
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_idl OUTPUT.idl\n";
    return 2;
  }
  std::ostringstream text;
  if (!WriteIdl(text)) return 1;
  std::ofstream file(argv[1], std::ios::binary);
  file << text.str();
  return file.good() ? 0 : 1;
}
