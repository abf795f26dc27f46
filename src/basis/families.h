// Basis-set names, the families that serve them and the element groups.
//
// A basis-set name is a 20-character blank-padded text such as "6-31Gxx" (x for
// the asterisk of the published names) or "6-31GxC" (a trailing C counts each d
// shell as six functions).  Twelve families serve the 22 names; each reaches its
// own range of elements and is organised by element groups (H–He, Li–Ne, …).
#pragma once

#include <optional>
#include <string_view>

namespace norvik::basis {

enum class Family {
  kSto3g,
  k321g,
  k621g,
  k631g,
  k631gx,
  k631gxx,
  k631tg,
  k631tgx,
  k631tgxx,
  k631ttg,
  k631ttgx,
  k631ttgxx,
};
inline constexpr int kFamilyCount = 12;

enum class Group { kHHe, kLiNe, kNaAr, kKCa, kScZn, kGaKr, kRbSr, kYCd, kInXe };
inline constexpr int kGroupCount = 9;

struct FamilyInfo {
  Family family;
  std::string_view name;   // the recognised name without the Cartesian-d "C": "6-31+Gx"
  std::string_view label;  // the family's routine suffix as messages write it: "631TGx"
  int zmax;                // the heaviest element served
  bool has_cartesian_d;    // a "C" name exists
  bool polarised_light;    // a p shell on H and He
  bool polarised_heavy;    // a d (f on Sc–Zn) shell from Li on
  bool diffuse_light;      // a diffuse s shell on H and He
  bool diffuse_heavy;      // a diffuse sp shell from Li on
};

const FamilyInfo& family_info(Family family);

// A recognised name: the family and whether d shells count six functions.
struct BasisName {
  Family family = Family::kSto3g;
  bool cartesian_d = false;
};

// The name in a blank-padded buffer: the text up to the first NUL, trailing
// blanks removed.  Comparison is exact (case-sensitive), as for any keyword.
std::string_view trim_name(std::string_view text);

// The recognised name, or nothing.
std::optional<BasisName> find_basis_name(std::string_view text);

// The recognised name; otherwise throws norvik::Error with the two lines
// "Wrong BasName in <routine>." and the list of accepted names.
BasisName parse_basis_name(std::string_view text, std::string_view routine);

// The element group of Z = 1 … 54.
Group group_of(int z);
// First and last atomic number of a group.
int group_first(Group group);
int group_last(Group group);
// The group as messages write it ("HHe", "LiNe", …).
std::string_view group_label(Group group);

}  // namespace norvik::basis
