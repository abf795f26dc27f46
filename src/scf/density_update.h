// One SCF step for both spins: the Fock matrix of each spin, its commutator
// with the density, the damping/DIIS history, the Roothaan equations, aufbau
// occupation and the new density pair.
//
// Layouts (column-major, nbasis = n):
//   rho        (n, n, 2)         alpha block, then beta block; replaced in place
//   g          (n, n, 2)         the two-electron part of the Fock matrices [eV]
//   scratch    (n, n, 2)         receives the Fock matrices F_σ = T + V + G_σ [eV]
//   history    (n, n, 6, 2)      six slots per spin, slot 1 the newest; the alpha
//                                slots come first.  One block for the Fock
//                                matrices, one for the error matrices.
//   orbitals   (n, n + 1, 2)     per spin: the orbitals in columns 1 … n (ascending
//                                level), the levels [eV] in column n + 1.  With
//                                northo < n only the first northo orbitals exist;
//                                the rest (coefficients and levels) are zero.
#pragma once

#include <span>
#include <vector>

#include "linalg/matrix.h"

namespace norvik::scf {

using linalg::ConstMatrixView;
using linalg::Index;
using linalg::MatrixView;

// Slots of the damping/DIIS history per spin.
inline constexpr int kHistorySlots = 6;

// How the orbitals are occupied.
enum class Occupation {
  aufbau,  // the lowest N_σ orbitals, one electron each
  atomic,  // whole degenerate shells from the bottom; the last, open shell shares
           // its electrons evenly (the spherical average of a free atom)
};

// How the Roothaan equations are posed.
enum class Solver {
  dispatch,    // full basis when northo = nbasis, orthogonalised basis when smaller
  full,        // F·C = S·C·ε in the full basis (northo is taken as nbasis)
  orthogonal,  // (Xᵀ·F·X)·C′ = C′·ε over the first northo columns of X, C = X·C′
};

// The fixed operators of an SCF: overlap, kinetic and nuclear-attraction
// matrices [eV], the orthogonalising matrix and its column count.
struct Operators {
  int nbasis = 0;
  int northo = 0;
  ConstMatrixView s;
  ConstMatrixView t;
  ConstMatrixView v;
  ConstMatrixView x;
  Solver solver = Solver::dispatch;
};

// The arrays that one step reads and writes (the caller's memory).
struct StepArrays {
  std::span<const double> g;       // (n, n, 2)
  std::span<double> fock_history;  // (n, n, 6, 2)
  std::span<double> error_history;
  std::span<double> scratch;   // (n, n, 2)
  std::span<double> rho;       // (n, n, 2)
  std::span<double> orbitals;  // (n, n + 1, 2)
};

struct StepResult {
  double rmsd = 0.0;  // RMS change of the density over both spin blocks
  double comm2 = 0.0;  // ‖F_α P_α S − S P_α F_α‖² + ‖F_β P_β S − S P_β F_β‖² [eV²]
};

// Work arrays of one SCF call, sized once for the basis, so that the steps of
// a call do not allocate beyond what the eigen-solver needs.
struct Workspace {
  explicit Workspace(int nbasis);

  int n = 0;
  // Per spin (two blocks each): a product P·S, the Fock matrix to diagonalise
  // (the extrapolated one of a DIIS step), the weighted occupied orbitals, the
  // new density and the occupation weights.
  std::vector<double> product;
  std::vector<double> fock;
  std::vector<double> weighted;
  std::vector<double> fresh;
  std::vector<double> weights;
  // The DIIS matrix and coefficients.
  std::vector<double> bmat;
  std::vector<double> coef;
};

// Orbitals (columns 0 … n−1) and levels (column n) of one spin in an orbital
// array (n, n + 1, 2).
struct SpinOrbitals {
  MatrixView c;
  std::span<double> levels;
};
SpinOrbitals spin_orbitals(std::span<double> orbitals, int nbasis, int spin);

// How the orbitals of one spin are found and occupied: the one variation point
// of the density step (plain aufbau, the free atom's shell averaging, fixed
// occupations per symmetry block).
class OrbitalRule {
 public:
  virtual ~OrbitalRule() = default;
  // Refuses operators the rule cannot solve, before the step writes anything.
  virtual void check(const Operators& op) const = 0;
  // Solves the Roothaan equations of spin `spin` (0 alpha, 1 beta) for `fock`,
  // writes the orbitals and levels, and forms in `fresh` the exactly symmetric
  // density of `count` electrons.  `diis` tells a DIIS step from a damped one.
  // May run for both spins at once: it writes only that spin's blocks.
  virtual void occupy(const Operators& op, int spin, bool diis, ConstMatrixView fock, int count,
                      SpinOrbitals orbitals, MatrixView fresh, Workspace& work) const = 0;
};

// The lowest orbitals of the (dispatched, full or orthogonalised) Roothaan
// equations, occupied by `damped` in damped steps and by `diis` in DIIS steps.
class AufbauRule final : public OrbitalRule {
 public:
  explicit AufbauRule(Occupation damped = Occupation::aufbau, Occupation diis = Occupation::aufbau)
      : damped_(damped), diis_(diis) {}
  void check(const Operators& op) const override;
  void occupy(const Operators& op, int spin, bool diis, ConstMatrixView fock, int count,
              SpinOrbitals orbitals, MatrixView fresh, Workspace& work) const override;

 private:
  Occupation damped_;
  Occupation diis_;
};

// One step: a damped one (ρ ← (1 − damp)·ρ + damp·ρ_new) or a DIIS one over
// the newest `nsub` history slots (density taken whole).
struct StepControl {
  bool diis = false;
  double damp = 1.0;
  int nsub = kHistorySlots;
};

// ---- the whole steps -----------------------------------------------------------

// The density step, written once for every rule: the Fock matrix of each spin,
// its commutator with the density and both history pushes; for DIIS the
// coefficients (slots never written, zero in both spins, are left out, and a
// singular system drops the oldest slot until it can be solved: one slot is
// plain Roothaan iteration); the rule's orbitals and density for the count
// read from the incoming density (electron_count); the mixing and the RMS
// change.  A closed-shell density with equal two-electron parts is the
// restricted case: alpha is solved once and copied, which gives the same bits.
StepResult density_step(const Operators& op, const OrbitalRule& rule, const StepControl& control,
                        const StepArrays& arrays, Workspace& work);

// The step with the aufbau rule: damped, ρ_σ ← (1 − damp)·ρ_σ + damp·Σ_occ n_k C_k C_kᵀ,
// or DIIS over the newest `nsub` (1 … 6) slots after this step's push.
StepResult damped_step(const Operators& op, double damp, const StepArrays& arrays,
                       Occupation occupation, Workspace& work);
StepResult diis_step(const Operators& op, int nsub, const StepArrays& arrays, Occupation occupation,
                     Workspace& work);

// ---- the shared pieces -------------------------------------------------------

// The electron count of one spin, N_σ = Σ_ij ρ_ij S_ij, rounded as the SCF
// counts it: 0 when |N_σ| < 0.5, otherwise the integer part of N_σ + 0.5.
double electron_trace(ConstMatrixView rho, ConstMatrixView s);
int rounded_count(double trace);
int electron_count(ConstMatrixView rho, ConstMatrixView s);

// E = F·P·S − S·P·F and its squared Frobenius norm.  `product` is n×n work.
double error_matrix(ConstMatrixView f, ConstMatrixView p, ConstMatrixView s, MatrixView e,
                    MatrixView product);

// Pushes m into a six-slot history block (n, n, 6): slots 1 … 5 move to 2 … 6,
// m goes to slot 1.
void push_history(ConstMatrixView m, std::span<double> history);

// B_ij = Σ_σ ⟨E_iσ, E_jσ⟩ over the newest nsub slots of the error history
// (n, n, 6, 2); b is nsub×nsub.
void diis_matrix(int nbasis, int nsub, std::span<const double> error_history, MatrixView b);

// Solves the bordered DIIS system for the coefficients (their sum is 1).  B is
// scaled by its largest diagonal element first, which leaves the coefficients
// unchanged.  Returns false when the system is singular (c is then zero).
bool diis_coefficients(ConstMatrixView b, std::span<double> c);

// Occupation weights of the orbitals with ascending `levels` for `count`
// electrons of one spin (at most `norb` orbitals).
void occupation_weights(std::span<const double> levels, int norb, int count, Occupation occupation,
                        std::span<double> weights);

}  // namespace norvik::scf
