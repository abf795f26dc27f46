// The two-electron integral driver: pair screening, the diagonal table, the
// integral store and the Fock builds (stored and integral-direct).
//
// Everything works on the ten arrays that the host keeps for the two-electron
// part of a job (the "context"); see docs/integrals.md for the flat layout:
//   nshell, shelltab (kShellRecord, nshell)     the shells, centres in bohr
//   nshpair, shpair (2, nshpair)                kept shell pairs (a ≥ b, 1-based)
//   npair, pairlist (2, npair)                  kept basis-function pairs (i ≥ j, 1-based)
//   pairmap (nbasis(nbasis+1)/2)                compact index of every packed pair, 0 if dropped
//   vdiag (nbasis(nbasis+1)/2)                  (ij|ij) in hartree, packed i ≥ j
//   vint (npair(npair+1)/2)                     the store: (PQ) = (ij|kl) in hartree, P ≥ Q
//   thresh                                      integral-direct screening threshold [eV]
// Packed index of a pair i ≥ j (1-based): i(i−1)/2 + j; of a store entry P ≥ Q
// (1-based compact indices): P(P−1)/2 + Q.
//
// Densities are the alpha/beta pair (nbasis, nbasis, 2), column-major, and are
// taken to be symmetric (except where a build says otherwise); Fock outputs have the same layout
// and hold only the two-electron part, in eV: for spin σ, J[Pα + Pβ] − a·K[Pσ].
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "basis/basis_set.h"

namespace norvik::integrals::two {

// A basis pair is dropped from the store when no integral over it can exceed
// this (Schwarz bound, hartree).
inline constexpr double kPairNeglect = 1e-12;

// Shell quartets whose Schwarz bound max√(ij|ij)·max√(kl|kl) is below this
// (hartree) are not computed: none of their integrals can reach it, and the
// primitive screening of the engine is already of that order.
inline constexpr double kQuartetNeglect = 1e-14;

// The context, viewed (the caller owns the arrays).
struct ContextView {
  int nbasis = 0;
  int nshell = 0;
  std::span<const double> shelltab;
  int nshpair = 0;
  std::span<const std::int32_t> shpair;
  int npair = 0;
  std::span<const std::int32_t> pairlist;
  std::span<const std::int32_t> pairmap;
  std::span<const double> vdiag;
  std::span<const double> vint;
  double thresh = 0;
};

// Doubles in a (7, 7, 7, 7) function block of one shell quartet.
inline constexpr int kQuartetBlockSize = 7 * 7 * 7 * 7;

inline std::int64_t packed_size(std::int64_t n) {
  return n * (n + 1) / 2;
}

// Kept shell pairs: those with at least one primitive pair within the pair
// cutoff (every other pair gives exactly zero integrals).  Returns (a, b)
// 1-based, a ≥ b, as consecutive entries.
std::vector<std::int32_t> remove_shell_pairs(int nshell, std::span<const double> shelltab);

// The diagonal table (ij|ij), hartree, over the kept shell pairs (others zero).
void diagonal_table(int nbasis, int nshell, std::span<const double> shelltab, int nshpair,
                    std::span<const std::int32_t> shpair, std::span<double> vdiag);

// Kept basis pairs from the diagonal table: pair ij is kept when
// sqrt((ij|ij)) · max_kl sqrt((kl|kl)) ≥ kPairNeglect.  Writes pairlist
// (2·npair entries used) and pairmap, returns npair.
int remove_basis_pairs(int nbasis, std::span<const double> vdiag, std::span<std::int32_t> pairlist,
                       std::span<std::int32_t> pairmap);

// Fills the store vint (npair(npair+1)/2 doubles) from the context; shell
// quartets whose Schwarz bound is below kQuartetNeglect are left zero.
void fill_store(const ContextView& context, std::span<double> vint);

// Fock builds from the store; a = 0 exactly gives the Coulomb-only build.
void fock_stored(const ContextView& context, double a, std::span<const double> rho,
                 std::span<double> fock);
void coulomb_stored(const ContextView& context, std::span<const double> rho,
                    std::span<double> fock);
// The Coulomb builds of several density pairs in one read of the store.
void coulomb_stored_pass(const ContextView& context, std::span<const std::span<const double>> rho,
                         std::span<const std::span<double>> fock);

// Integral-direct incremental builds: fock += G[rho − rho_prev], then
// rho_prev = rho.  Quartets below kQuartetNeglect are never computed; the others
// are screened with `screening` when context.thresh > 0.
void fock_direct(const ContextView& context, double a, std::span<const double> rho,
                 std::span<double> rho_prev, std::span<double> fock);
void coulomb_direct(const ContextView& context, std::span<const double> rho,
                    std::span<double> rho_prev, std::span<double> fock);

// Builds of several density pairs (each (nbasis, nbasis, 2)), each fock[m]
// overwritten with G[rho[m]] from nothing: for response equations, whose
// perturbed densities share the integrals.  The integral-direct one computes
// each shell quartet once for all pairs (kept when the screening keeps it for
// any of them), with the sums of one build each, in the same order as long as
// the partial sums keep their block count (below about 340 functions for three
// pairs); the stored one makes one build each.
//
// `kinds`, when given (one per pair), marks the antisymmetric densities
// (P = −Pᵀ, the perturbed densities of the A − B product of the response):
// their Coulomb part vanishes and the build is −a·K[Pσ] with K[P]_μν =
// Σ_λσ (μλ|νσ) P_λσ, antisymmetric too.  Empty: all symmetric.
enum class DensityKind { symmetric, antisymmetric };
void fock_stored(const ContextView& context, double a, std::span<const std::span<const double>> rho,
                 std::span<const std::span<double>> fock, std::span<const DensityKind> kinds = {});
void fock_direct(const ContextView& context, double a, std::span<const std::span<const double>> rho,
                 std::span<const std::span<double>> fock, std::span<const DensityKind> kinds = {});

// Whether the shell quartet (a b | c d) (0-based shells) must be recomputed for
// the density change delta (nbasis, nbasis, 2): true as soon as one function
// quartet has sqrt((ij|ij)(kl|kl)) · ΔD · hartree > thresh, with ΔD the largest
// of |ΔPα| + |ΔPβ| over the pairs ij, kl, ik, il, jk, jl.
bool screening(const ContextView& context, const std::array<int, 4>& shells,
               std::span<const double> delta);

// One shell quartet (1-based shells) as a block over basis functions, column-major
// (7, 7, 7, 7), hartree; entries beyond each shell's kind are zero.
void shell_quartet_block(int nshell, std::span<const double> shelltab,
                         const std::array<int, 4>& shells, std::span<double> block);

// Writes a (7, 7, 7, 7) function block of the quartet (1-based shells) into the
// store: every entry whose two pairs are kept.
void shift_block(const ContextView& context, const std::array<int, 4>& shells,
                 std::span<const double> block, std::span<double> vint);

// The context as owned arrays, for C++ callers (the SCF drivers and the tests).
struct TwoElectronContext {
  int nbasis = 0;
  int nshell = 0;
  std::vector<double> shelltab;
  std::vector<std::int32_t> shpair;
  int npair = 0;
  std::vector<std::int32_t> pairlist;
  std::vector<std::int32_t> pairmap;
  std::vector<double> vdiag;
  std::vector<double> vint;
  double thresh = 0;

  ContextView view() const;
};

// Packs the basis placed at `positions` (bohr, one per atom), screens shell and
// basis pairs, computes the diagonal table and, when `store` is true, fills the
// integral store.  `thresh` [eV] is the integral-direct screening threshold.
TwoElectronContext prepare(const basis::BasisSet& basis,
                           std::span<const std::array<double, 3>> positions, bool store,
                           double thresh = 0.0);

}  // namespace norvik::integrals::two
