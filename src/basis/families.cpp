#include "basis/families.h"

#include <array>

#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::basis {

namespace {

// clang-format off
constexpr std::array<FamilyInfo, kFamilyCount> kFamilies = {{
    //  family              name          label       zmax  C      pol H  pol X  dif H  dif X
    {Family::kSto3g,     "STO-3G",     "STO3G",     54, false, false, false, false, false},
    {Family::k321g,      "3-21G",      "321G",      54, true,  false, false, false, false},
    {Family::k621g,      "6-21G",      "621G",      18, false, false, false, false, false},
    {Family::k631g,      "6-31G",      "631G",      36, true,  false, false, false, false},
    {Family::k631gx,     "6-31Gx",     "631Gx",     36, true,  false, true,  false, false},
    {Family::k631gxx,    "6-31Gxx",    "631Gxx",    36, true,  true,  true,  false, false},
    {Family::k631tg,     "6-31+G",     "631TG",     18, true,  false, false, false, true},
    {Family::k631tgx,    "6-31+Gx",    "631TGx",    18, true,  false, true,  false, true},
    {Family::k631tgxx,   "6-31+Gxx",   "631TGxx",   18, true,  true,  true,  false, true},
    {Family::k631ttg,    "6-31++G",    "631TTG",    18, true,  false, false, true,  true},
    {Family::k631ttgx,   "6-31++Gx",   "631TTGx",   18, true,  false, true,  true,  true},
    {Family::k631ttgxx,  "6-31++Gxx",  "631TTGxx",  18, true,  true,  true,  true,  true},
}};
// clang-format on

struct GroupInfo {
  std::string_view label;
  int first;
  int last;
};

constexpr std::array<GroupInfo, kGroupCount> kGroups = {{
    {"HHe", 1, 2},
    {"LiNe", 3, 10},
    {"NaAr", 11, 18},
    {"KCa", 19, 20},
    {"ScZn", 21, 30},
    {"GaKr", 31, 36},
    {"RbSr", 37, 38},
    {"YCd", 39, 48},
    {"InXe", 49, 54},
}};

// The order in which a name is compared with the recognised texts: the longest and
// most specific first, as the dispatch has always done it.
constexpr std::array<std::string_view, 22> kDispatchOrder = {
    "6-31++GxxC", "6-31++Gxx", "6-31++GxC", "6-31++Gx", "6-31++GC", "6-31++G",
    "6-31+GxxC",  "6-31+Gxx",  "6-31+GxC",  "6-31+Gx",  "6-31+GC",  "6-31+G",
    "6-31GxxC",   "6-31Gxx",   "6-31GxC",   "6-31Gx",   "6-31GC",   "6-31G",
    "6-21G",      "3-21GC",    "3-21G",     "STO-3G",
};

}  // namespace

const FamilyInfo& family_info(Family family) {
  return kFamilies[static_cast<int>(family)];
}

std::string_view trim_name(std::string_view text) {
  if (const auto nul = text.find('\0'); nul != std::string_view::npos) text = text.substr(0, nul);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::optional<BasisName> find_basis_name(std::string_view text) {
  const auto name = trim_name(text);
  for (const auto candidate : kDispatchOrder) {
    if (name != candidate) continue;
    for (const auto& info : kFamilies) {
      if (candidate == info.name) return BasisName{info.family, false};
      if (info.has_cartesian_d && candidate.size() == info.name.size() + 1 &&
          candidate.starts_with(info.name) && candidate.back() == 'C') {
        return BasisName{info.family, true};
      }
    }
  }
  return std::nullopt;
}

BasisName parse_basis_name(std::string_view text, std::string_view routine) {
  if (const auto name = find_basis_name(text)) return *name;
  const std::string first = "Wrong BasName in " + std::string(routine) + ".";
  throw Error(std::vector<std::string>{
      fortran::list_directed({first}),
      fortran::list_directed({"BasName={6-31(+)(+)G(x)(x),6-21G,3-21G,STO-3G}"})});
}

Group group_of(int z) {
  for (int g = 0; g < kGroupCount; ++g) {
    if (z <= kGroups[g].last) return static_cast<Group>(g);
  }
  return Group::kInXe;
}

int group_first(Group group) {
  return kGroups[static_cast<int>(group)].first;
}
int group_last(Group group) {
  return kGroups[static_cast<int>(group)].last;
}
std::string_view group_label(Group group) {
  return kGroups[static_cast<int>(group)].label;
}

}  // namespace norvik::basis
