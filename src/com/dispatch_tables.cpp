// The late-binding description of every dual interface, built from the
// interface's member list, so it has the interface's slot order by
// construction.
#include "src/com/dispatch_args.h"

namespace pv {

#define PV_KIND_METHOD MemberKind::kMethod
#define PV_KIND_GET MemberKind::kGet
#define PV_KIND_PUT MemberKind::kPut

// `Itf` is the interface whose table is being built (see below).
#define PV_DESCRIBE_MEMBER(kind, name, params, optional) \
  dispatch::Describe<&Itf::PV_MEMBER_NAME_##kind(name)>(#name, PV_KIND_##kind, optional),

// The collections among the interfaces, for scripts (see CollectionMembers).
template <class I>
CollectionMembers CollectionOf() {
  return {};
}
template <>
CollectionMembers CollectionOf<IEMSMimeParts>() {
  return {"Part", "PartsCount"};
}

#define PV_DEFINE_DISPATCH_TABLE(I)                                                                \
  template <>                                                                                      \
  const DispatchTable& DispatchTableOf<I>() {                                                      \
    using Itf = I;                                                                                 \
    static const DispatchTable table(#I, {PV_MEMBERS_##I(PV_DESCRIBE_MEMBER)}, CollectionOf<I>()); \
    return table;                                                                                  \
  }

PV_DUAL_INTERFACES(PV_DEFINE_DISPATCH_TABLE)

}  // namespace pv
