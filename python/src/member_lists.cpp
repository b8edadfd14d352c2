#include "src/member_lists.h"

#include "tools/member_lists/member_lists.h"

#include <cctype>

namespace pvpy {
namespace {

// A parameter of the shared reading as the binding converts it.
Param ConvertedParam(const pv::lists::Param& declared) {
  std::string type = declared.type;
  while (!type.empty() && type.back() == '*') type.pop_back();
  Param param{ValueType::kVariant, type, declared.name};
  if (type.compare(0, 4, "IEMS") == 0) {
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

MemberKind KindOf(pv::lists::Kind kind) {
  switch (kind) {
    case pv::lists::Kind::kGet:
      return MemberKind::kGet;
    case pv::lists::Kind::kPut:
      return MemberKind::kPut;
    case pv::lists::Kind::kMethod:
      break;
  }
  return MemberKind::kMethod;
}

// The late-bound interfaces of the shared reading of the member lists.
std::vector<InterfaceInfo> Build() {
  std::vector<InterfaceInfo> list;
  for (const pv::lists::Interface& declared : pv::lists::Interfaces()) {
    if (!declared.dual) continue;
    InterfaceInfo info;
    info.interface_name = declared.name;
    info.class_name = info.interface_name.substr(1);
    info.iid = &declared.iid;
    for (const pv::lists::Member& m : declared.members) {
      Member member{m.name, KindOf(m.kind), {}, m.optional};
      for (const pv::lists::Param& p : pv::lists::SplitParams(m.params)) {
        if (pv::lists::IsResultPlace(p.type)) {
          member.has_result = true;
          member.result = ConvertedParam(p);
        } else {
          member.in.push_back(ConvertedParam(p));
        }
      }
      info.members.push_back(std::move(member));
    }
    // The parts list is the one collection: For Each and parts(0) in scripts.
    if (info.interface_name == "IEMSMimeParts") {
      info.item = "Part";
      info.count = "PartsCount";
    }
    list.push_back(std::move(info));
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
