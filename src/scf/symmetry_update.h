// The symmetry-adapted SCF of a homonuclear diatomic on the z axis (the C2 and
// B2 families): symmetry-adapted combinations of the basis functions, the
// density update that keeps a fixed number of electrons of each spin in each
// symmetry block, and the SCF cycle and initialiser built on it.
//
// Symmetry: the operations that map Cartesian Gaussians onto each other, i.e.
// D2h, the largest abelian subgroup of D∞h (inversion through the centre and
// the reflections x → −x, y → −y).  Its blocks carry the D∞h labels:
//   ag  σg (and δg x²−y²)   b1u σu (and δu)     b3u πu(x)   b2u πu(y)
//   b2g πg(x)               b3g πg(y)           b1g δg(xy)  au  δu(xy)
// The arrays are those of density_update.h.
#pragma once

#include <array>
#include <span>
#include <string_view>
#include <vector>

#include "basis/basis_set.h"
#include "scf/density_update.h"

namespace norvik::scf {

// The D2h blocks, in the order of their columns in Salc::u.
enum class Irrep { ag, b1g, b2g, b3g, au, b1u, b2u, b3u };
inline constexpr int kIrreps = 8;

// Symmetry-adapted combinations: n orthonormal columns (in coefficient space),
// (φ_A ± (−1)^L φ_B)/√2 for each function pair of the two atoms, sorted by block.
struct Salc {
  int n = 0;
  std::vector<double> u;                 // (n, n) column-major
  std::array<int, kIrreps + 1> first{};  // columns of block b: first[b] … first[b+1]−1
  std::vector<int> function_block;       // (n) the block of each function's gerade combination

  int size(Irrep b) const { return first[static_cast<int>(b) + 1] - first[static_cast<int>(b)]; }
};

// The combinations for `basis` on two atoms at `positions` ((3, 2) Å).  Stops
// with "Not a homonuclear diatomic centred on the z axis." when the molecule is
// not two atoms at (0, 0, ∓r/2) with the same functions.
Salc make_salc(const basis::BasisSet& basis, std::span<const double> positions);

// Electrons of one spin in each block for `count` electrons of that spin: the
// π pair (b3u, b2u) gets min(2, (count − 4)/2) each once four σ electrons are
// there, the rest fills σg and σu alternately from σg.  Six electrons give
// 1σg 2σg 1σu 2σu 1πu(x) 1πu(y): the C2 ground configuration per spin and the
// B2 alpha spin; four give the B2 beta spin.
std::array<int, kIrreps> block_counts(int count);

// The 1-based position of the ns function (n = 4 or 5; for a split valence
// shell its inner, contracted part) among the functions of one atom of nuclear
// charge z in the named basis: the n-th contracted s function in the atom's
// function order (the outer part of a split valence shell is a single
// primitive and is not counted).  0 when the atom has no ns function.
int ns_function_index(std::string_view basis, int z, int n);

// Orbitals per symmetry block: the Fock matrix is diagonalised within each
// block (F·C = S·C·ε in the block's combinations) and each block gets
// block_counts electrons of the spin.  The orbitals of a spin are written with
// the occupied ones first, then the virtual ones, each in ascending order of
// level (in the ground configuration this is plain ascending order).  The rule
// keeps a reference to `salc`.
class SymmetryBlockRule final : public OrbitalRule {
 public:
  explicit SymmetryBlockRule(const Salc& salc) : salc_(salc) {}
  void check(const Operators& op) const override;
  void occupy(const Operators& op, int spin, bool diis, ConstMatrixView fock, int count,
              SpinOrbitals orbitals, MatrixView fresh, Workspace& work) const override;

 private:
  const Salc& salc_;
};

// The density step with the symmetry-block rule: damped
// (ρ ← (1 − damp)·ρ + damp·ρ_new) or DIIS (newest nsub slots, density taken whole).
StepResult symmetric_damped_step(const Operators& op, const Salc& salc, double damp,
                                 const StepArrays& arrays, Workspace& work);
StepResult symmetric_diis_step(const Operators& op, const Salc& salc, int nsub,
                               const StepArrays& arrays, Workspace& work);

// The block that holds the largest part (Σ of squared coefficients over the
// block's combinations) of an orbital (n coefficients).
Irrep orbital_block(const Salc& salc, std::span<const double> orbital);

}  // namespace norvik::scf
