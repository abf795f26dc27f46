// The molecular grid: every atom a translated copy of its element's template,
// each weight times the atom's Becke partition weight at the point.
//
// Layouts: coords (3, natom); templates (3, nmax, nkind) points and (nmax,
// nkind) weights; the grid (3, ntotal) points and (ntotal) weights, atom A
// owning the block of npts(A) points after offset(A) points.
#pragma once

#include <span>
#include <vector>

namespace norvik::dft {

// Grid points of each atom and the offsets of their blocks; returns the total.
int grid_sizes(std::span<const int> z, std::span<int> npts, std::span<int> offset);

struct GridTemplates {
  int nmax = 0;                     // capacity of one template
  std::span<const double> points;   // (3, nmax, nkind)
  std::span<const double> weights;  // (nmax, nkind)
  std::span<const int> kind;        // (natom) 0-based template of each atom
};

// The molecular grid of atoms at `coords`.  Atoms with no points are skipped.
// Runs over atoms in parallel; every atom writes only its own block.
void molecular_grid(std::span<const double> coords, const GridTemplates& templates,
                    std::span<const int> npts, std::span<const int> offset,
                    std::span<double> points, std::span<double> weights);

// Which templates a molecular grid is made of: the standard templates of
// each element, or the dense ones (more radial shells, larger angular rules,
// the same partition) for converged energies.
enum class GridLevel { standard, dense };

// A molecular grid with its own arrays.
struct Grid {
  std::vector<double> points;   // (3, npts) Å
  std::vector<double> weights;  // (npts)
  std::vector<int> owners;      // (npts) 0-based atom whose template each point comes from
  int size() const { return static_cast<int>(weights.size()); }
};

// Points of the molecular grid of atoms of the given elements, before any is
// left out (a bound for the memory estimate).
int grid_point_count(std::span<const int> elements, GridLevel level);

// The molecular grid of atoms of the given elements at `positions` ((3,
// natom) Å) for base radius `r0` [Å]: one template per distinct element.
// Points whose weight is below 1e-20 Å³ (deep in another atom's cell) are
// left out; the others stay in the order of molecular_grid, each with the
// atom that owns it (the one whose template and partition weight it carries,
// with which it moves when the atom moves).
Grid make_grid(std::span<const int> elements, std::span<const double> positions, double r0,
               GridLevel level = GridLevel::standard);

// Σ values(k)·weights(k), accumulated from 0.0 in increasing k: every grid
// integral goes through it, so its result does not depend on the threads.
double integrate(std::span<const double> values, std::span<const double> weights);

}  // namespace norvik::dft
