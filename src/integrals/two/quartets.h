// Shell quartets over basis functions: the primitive-pair data of the kept shell
// pairs and the evaluation of one quartet of shells as a block over their basis
// functions (Cartesian integrals from the engine, then the transformation to the
// functions' combinations of Cartesian components).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "integrals/rys/rys_eri.h"
#include "integrals/two/eri_engine.h"
#include "integrals/two/shells.h"

namespace norvik::integrals::two {

// Primitive pairs whose αβ|AB|²/(α+β) exceeds this are skipped.
inline constexpr double kPairCutoff = 30.0;

// Primitive quartets whose prefactor bound is below this (hartree) are skipped
// by the driver; far below the rounding of any Fock element.
inline constexpr double kPrimitiveNeglect = 1e-15;

// A group of contractions of one shell pair that the engine evaluates together:
// the sub-shell pairs (sa[x], sb[x]) of the pair's shells a and b, x < ncombo.
// Shells of one or two sub-shells up to d form one group; anything else gives
// one group per sub-shell pair.
struct PairGroup {
  ShellPair pair;
  bool swapped = false;  // the engine's first centre is shell b
  int max_l = 0;         // beyond d the group goes through the Rys route
  std::array<int, kMaxCombos> sa{};
  std::array<int, kMaxCombos> sb{};
};

// Engine data of a list of shell pairs (a, b), a ≥ b, 0-based.
struct PairData {
  std::vector<int> a, b;
  std::vector<PrimitivePair> prims;
  std::vector<PairGroup> groups;
  std::vector<int> group_offset;  // first group of each shell pair; one more at the end
};

PairData make_pair_data(std::span<const IntegralShell> shells, std::span<const int> a,
                        std::span<const int> b);

// Largest function block of a shell quartet.
inline constexpr int kMaxQuartetBlock =
    kMaxShellFunctions * kMaxShellFunctions * kMaxShellFunctions * kMaxShellFunctions;

// Per-thread scratch of shell_quartet.
struct QuartetWorkspace {
  EngineWorkspace engine;
  rys::RysEngine rys;
  std::vector<double> rys_block;
  std::vector<double> transform;
};

// Writes the integrals (ij|kl) in hartree of the shell quartet made of pairs P
// (bra) and Q (ket) of `pairs`, row-major over the functions of a, b, c, d.
void shell_quartet(std::span<const IntegralShell> shells, const PairData& pairs, int P, int Q,
                   double* block, QuartetWorkspace& ws);

}  // namespace norvik::integrals::two
