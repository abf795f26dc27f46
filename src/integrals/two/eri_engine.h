// The closed-form engine for contracted electron-repulsion integrals over s, p
// and d shells: Head-Gordon–Pople, that is the Obara–Saika vertical recurrence on
// each primitive quartet, contraction, then the horizontal recurrences on the
// contracted integrals.  One instance of the vertical recurrence per shell class,
// with the angular momenta fixed at compile time.
//
// A shell pair may carry several contractions over the same primitives (the s
// and p parts of sp shells): the vertical recurrence then runs once per
// primitive quartet for the highest angular momenta, and each combination of a
// bra and a ket contraction is accumulated and completed on its own.
#pragma once

#include <array>
#include <span>
#include <vector>

namespace norvik::integrals::two {

// Highest angular momentum of the closed-form engine (d).
inline constexpr int kClosedFormMaxL = 2;

// Most contractions that one shell pair carries through the engine.
inline constexpr int kMaxCombos = 4;

// 2π^(5/2), the constant of the primitive quartet prefactor.
inline constexpr double kTwoPi52 = 34.98683665524973;

// One surviving primitive pair of a shell pair: α on the first centre A, β on
// the second centre B.
struct PrimitivePair {
  double zeta = 0;                     // α + β
  double half_inv_zeta = 0;            // 1 / (2ζ)
  double kz = 0;                       // exp(−αβ/ζ |AB|²) / ζ
  double bound = 0;                    // kz · max |c|
  std::array<double, kMaxCombos> c{};  // c_α c_β of each contraction
  std::array<double, 3> p{};           // product centre P = (αA + βB) / ζ
  std::array<double, 3> pa{};          // P − A
};

// A pair of shells with their surviving primitive pairs and contractions.  la
// and lb are the highest angular momenta on the first and second centre, with
// la ≥ lb; contraction x has the angular momenta (cla[x], clb[x]).
struct ShellPair {
  int la = 0;
  int lb = 0;
  int ncombo = 1;
  std::array<int, kMaxCombos> cla{};
  std::array<int, kMaxCombos> clb{};
  std::array<double, 3> ab{};  // A − B
  std::span<const PrimitivePair> prims;
  double bound = 0;  // largest bound of the primitive pairs
};

// Primitive quartets whose prefactor 2π^(5/2)|kz kz' c c'|/sqrt(ζ+η) is below
// `neglect` (hartree) are skipped; 0 computes every quartet.
struct EngineOptions {
  double neglect = 0.0;
};

// Scratch of the engine, reused over calls by one thread.
struct EngineWorkspace {
  std::vector<double> acc;
  std::vector<double> out;
};

// Appends to `out` the primitive pairs of shells (A, α) × (B, β) that pass the
// pair screening (skipped when αβ|AB|² > cutoff·(α+β)), with the coefficient
// products ca[x][i]·cb[x][j] of the ncombo contractions.
template <class Sink>
void make_primitive_pairs(const std::array<double, 3>& a, std::span<const double> alpha,
                          const std::array<double, 3>& b, std::span<const double> beta, int ncombo,
                          const std::array<const double*, kMaxCombos>& ca,
                          const std::array<const double*, kMaxCombos>& cb, double cutoff,
                          Sink&& out);

// The blocks (ab|cd) of contracted Cartesian integrals for every combination of
// a bra contraction x and a ket contraction y, x outer, each block row-major over
// the components of a, b, c, d (d fastest), one after another in ws.out; returns
// a pointer to the first.  Requires la ≥ lb, lc ≥ ld, all ≤ 2, and the bra class
// not below the ket class: (la, lb) ≥ (lc, ld) in that order.
const double* eri_canonical(const ShellPair& bra, const ShellPair& ket, EngineWorkspace& ws,
                            EngineOptions options = {});

// Size of the block of contraction x of `bra` with contraction y of `ket`.
int combo_block_size(const ShellPair& bra, int x, const ShellPair& ket, int y);

}  // namespace norvik::integrals::two

#include "integrals/two/eri_engine_pairs.h"
