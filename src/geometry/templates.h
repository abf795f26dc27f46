// Built-in molecule templates: atoms placed from a few internal parameters, and
// the same shape re-imposed on positions that an optimisation step has moved.
//
// Each template has a fixed atom count and atom order (the order in which the
// molecule file lists the atoms), a list of parameters (bond lengths in ångström,
// angles in degrees) and a standard orientation: the main symmetry axis along z
// and mirror planes on coordinate planes.  `put` builds the positions from the
// parameters; `measure` reads the parameters back from given positions on a
// fixed choice of atoms (the first bond and the first angle of each equivalent
// set); `reput` rebuilds through the two, so that the result is exactly
// symmetric.  Every construction ends by moving the centre of nuclear charge to
// the origin.  docs/templates.md tabulates the templates.
//
// Positions are (3, natom) column-major in ångström; charges are the nuclear
// charges per atom.  A template given the wrong number of atoms throws
// norvik::Error.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace norvik::geometry {

enum class Template {
  kXY,
  kH2O,
  kH3Plus,
  kNH3,
  kCH4,
  kC2H2,
  kC2H4,
  kC2H6,
  kC3H6,
  kC6H6,
  kB2H6,
  kCOH2,
  kPF5,
  kSF6,
  kN2O,
  kH2O2,
  kCHCl3,
  kPropane,
  kGlycine,
};

inline constexpr std::array kAllTemplates = {
    Template::kXY,   Template::kH2O,   Template::kH3Plus,  Template::kNH3,     Template::kCH4,
    Template::kC2H2, Template::kC2H4,  Template::kC2H6,    Template::kC3H6,    Template::kC6H6,
    Template::kB2H6, Template::kCOH2,  Template::kPF5,     Template::kSF6,     Template::kN2O,
    Template::kH2O2, Template::kCHCl3, Template::kPropane, Template::kGlycine,
};

struct TemplateInfo {
  std::string_view suffix;  // the routines are PUT<suffix> and REPUT<suffix>
  int natom;
  std::span<const std::string_view> parameters;  // in argument order, e.g. "r(O-H) [A]"
};

const TemplateInfo& info(Template t);

// Builds the positions of template t from its parameters (info(t).parameters
// in order) and centres them.
void put(Template t, std::span<const int> charges, std::span<const double> parameters,
         std::span<double> positions);

// The parameters of template t as they stand on `positions`.
std::vector<double> measure(Template t, std::span<const double> positions);

// put(t, measure(t, positions)): the template's shape re-imposed.
void reput(Template t, std::span<const int> charges, std::span<double> positions);

// The template that a molecule name selects (the name as the host passes it,
// trailing blanks ignored, matched exactly and case-sensitively), if any.
std::optional<Template> template_of_molecule(std::string_view name);

// reput by molecule name; a name without a template throws norvik::Error
// "Should not come here in reput.".
void reput(std::string_view molecule_name, std::span<const int> charges,
           std::span<double> positions);

// The re-imposition of the free-molecule optimiser: a molecule without template
// keeps its shape and is only moved so that its centre of nuclear charge lies
// at the origin.
void reput_molecule(std::span<const int> charges, std::span<double> positions);

// Moves the atoms so that Σ Z r / Σ Z lies at the origin.  Atoms without charge
// count for nothing; with no charge at all the atoms stay where they are.
void center_charge(std::span<const int> charges, std::span<double> positions);

}  // namespace norvik::geometry
