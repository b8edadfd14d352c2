#include "src/member_lists.h"

#include <cctype>

namespace pvpy {
namespace {

std::string Trim(std::string_view text) {
  size_t begin = 0, end = text.size();
  while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
  while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
  return std::string(text.substr(begin, end - begin));
}

// One declaration such as "IEMSMimePart** ppVal": its type, its name, and
// whether it is the result place.
Param ParseParam(const std::string& declaration, bool* is_result) {
  const size_t split = declaration.find_last_of(" *");
  std::string type = Trim(declaration.substr(0, split + 1));
  Param param{ValueType::kVariant, "", Trim(declaration.substr(split + 1))};
  int stars = 0;
  while (!type.empty() && (type.back() == '*' || type.back() == ' ')) {
    if (type.back() == '*') ++stars;
    type.pop_back();
  }
  const bool object = type.compare(0, 4, "IEMS") == 0;
  *is_result = object ? stars == 2 : stars == 1;
  param.type_name = type;
  if (object) {
    param.type = ValueType::kObject;
  } else if (type == "LONG") {
    param.type = ValueType::kLong;
  } else if (type == "ULONG") {
    param.type = ValueType::kULong;
  } else if (type == "BSTR") {
    param.type = ValueType::kString;
  }
  return param;
}

Member MakeMember(const char* name, MemberKind kind, const char* params, int optional) {
  Member member{name, kind, {}, optional};
  // `params` is the list as written: "(BSTR bszVal, BSTR* pVal)".
  std::string text = Trim(params);
  if (text.size() >= 2) text = text.substr(1, text.size() - 2);
  size_t start = 0;
  while (start < text.size()) {
    size_t comma = text.find(',', start);
    if (comma == std::string::npos) comma = text.size();
    const std::string declaration = Trim(std::string_view(text).substr(start, comma - start));
    start = comma + 1;
    if (declaration.empty()) continue;
    bool is_result = false;
    Param param = ParseParam(declaration, &is_result);
    if (is_result) {
      member.has_result = true;
      member.result = param;
    } else {
      member.in.push_back(param);
    }
  }
  return member;
}

#define PVPY_KIND_METHOD MemberKind::kMethod
#define PVPY_KIND_GET MemberKind::kGet
#define PVPY_KIND_PUT MemberKind::kPut
#define PVPY_MEMBER(kind, name, params, optional) \
  info.members.push_back(MakeMember(#name, PVPY_KIND_##kind, #params, optional));
#define PVPY_INTERFACE(I)                                        \
  {                                                              \
    InterfaceInfo info;                                          \
    info.interface_name = #I;                                    \
    info.class_name = std::string(#I).substr(1);                 \
    info.iid = &IID_##I;                                         \
    PV_MEMBERS_##I(PVPY_MEMBER) list.push_back(std::move(info)); \
  }

std::vector<InterfaceInfo> Build() {
  std::vector<InterfaceInfo> list;
  PV_DUAL_INTERFACES(PVPY_INTERFACE)
  for (InterfaceInfo& info : list) {
    // The parts list is the one collection: For Each and parts(0) in scripts.
    if (info.interface_name == "IEMSMimeParts") {
      info.item = "Part";
      info.count = "PartsCount";
    }
  }
  return list;
}

const char* PythonType(const Param& param) {
  switch (param.type) {
    case ValueType::kLong:
    case ValueType::kULong:
      return "int";
    case ValueType::kString:
      return "str";
    case ValueType::kVariant:
      return "bytes | str | int";
    case ValueType::kObject:
      break;
  }
  return nullptr;
}

std::string TypeText(const Param& param) {
  const char* type = PythonType(param);
  if (type != nullptr) return type;
  return param.type_name.substr(1);  // the class: IEMSMimePart -> EMSMimePart
}

}  // namespace

bool SameNameIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

const Member* InterfaceInfo::Find(std::string_view name, MemberKind kind) const {
  for (const Member& member : members) {
    if (member.kind == kind && SameNameIgnoringCase(member.name, name)) return &member;
  }
  return nullptr;
}

const std::vector<InterfaceInfo>& Interfaces() {
  static const std::vector<InterfaceInfo> list = Build();
  return list;
}

const InterfaceInfo* IdentifyInterface(IUnknown* object) {
  if (object == nullptr) return nullptr;
  for (const InterfaceInfo& info : Interfaces()) {
    IUnknown* answer = nullptr;
    if (SUCCEEDED(object->QueryInterface(*info.iid, reinterpret_cast<void**>(&answer))) &&
        answer != nullptr) {
      answer->Release();
      return &info;
    }
  }
  return nullptr;
}

std::string Signature(const Member& member, bool put_with_arguments) {
  std::string text = put_with_arguments ? "Set" + member.name : member.name;
  text += "(";
  const int count = static_cast<int>(member.in.size());
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += ", ";
    text += member.in[i].name + ": " + TypeText(member.in[i]);
    if (i >= count - member.optional) text += " = <omitted>";
  }
  text += ")";
  if (member.has_result) {
    text += " -> " + TypeText(member.result);
  } else {
    text += " -> None";
  }
  return text;
}

}  // namespace pvpy
