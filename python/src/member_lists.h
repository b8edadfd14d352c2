// What a late-bound caller knows of each dual interface without type
// information: its operations' names, kinds, parameter names and types and
// how many trailing parameters may be left out, taken from the public
// member lists that also declare the interfaces.
#ifndef PARCELVANE_PYTHON_MEMBER_LISTS_H
#define PARCELVANE_PYTHON_MEMBER_LISTS_H

#include <parcelvane/parcelvane.h>

#include <string>
#include <string_view>
#include <vector>

namespace pvpy {

enum class MemberKind { kMethod, kGet, kPut };
enum class ValueType { kLong, kULong, kString, kVariant, kObject };

struct Param {
  ValueType type;
  std::string type_name;  // "LONG", "BSTR", "IEMSDataObject", ...
  std::string name;       // "nIdx", "bszName", ...
};

struct Member {
  std::string name;
  MemberKind kind;
  std::vector<Param> in;  // what the caller supplies, the put value last
  int optional = 0;       // trailing in-parameters that may be left out
  bool has_result = false;
  Param result{ValueType::kVariant, "", ""};
};

struct InterfaceInfo {
  std::string interface_name;  // "IEMSMimeParts"
  std::string class_name;      // "EMSMimeParts"
  const IID* iid;
  std::vector<Member> members;
  // The collection's item and count members, or empty names.
  std::string item, count;

  // The member of `kind` named `name`, compared without regard to case.
  const Member* Find(std::string_view name, MemberKind kind) const;
};

const std::vector<InterfaceInfo>& Interfaces();

// The interface an object answers first among the dual ones, or null.
const InterfaceInfo* IdentifyInterface(IUnknown* object);

bool SameNameIgnoringCase(std::string_view a, std::string_view b);

// "Part(nIdx: int) -> EMSMimePart": the member's call as Python sees it.
std::string Signature(const Member& member, bool put_with_arguments);

}  // namespace pvpy

#endif  // PARCELVANE_PYTHON_MEMBER_LISTS_H
