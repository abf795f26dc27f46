#include "basis/angular.h"

#include <initializer_list>

namespace norvik::basis {

namespace {

struct Term {
  double coef;
  int l, m, n;
};

void set(Function& f, int L, int M, std::initializer_list<Term> terms) {
  f.L = L;
  f.M = M;
  f.nterm = static_cast<int>(terms.size());
  int t = 0;
  for (const auto& term : terms) {
    f.lmn[t] = {term.l, term.m, term.n};
    f.term_coef[t] = term.coef;
    ++t;
  }
}

// Clears the angular description of every slot, keeping the contraction
// coefficients that the radial fill owns.
void clear_angular(Shell& shell) {
  for (auto& f : shell.functions) {
    f.L = f.M = f.nterm = 0;
    f.lmn = {};
    f.term_coef = {};
  }
}

void set_p(Shell& shell, int first) {
  set(shell.functions[first + 0], 1, -1, {{1.0, 0, 1, 0}});
  set(shell.functions[first + 1], 1, 0, {{1.0, 0, 0, 1}});
  set(shell.functions[first + 2], 1, 1, {{1.0, 1, 0, 0}});
}

// Normalising factors: each function is c · P(x, y, z) with P the real solid
// harmonic polynomial and c = 1/√(⟨P|P⟩ / ⟨xyz-type|xyz-type⟩) on one centre.
constexpr double kD0Z = 0.5773502691896258;         // 1/√3   (2z² − x² − y²)/(2√3)
constexpr double kD0XY = 0.28867513459481287;       // 1/(2√3)
constexpr double kDCompanion = 0.2581988897471611;  // 1/√15  (x² + y² + z²)
constexpr double kF3a = 0.20412414523193154;        // 1/√24   x³ − 3xy², 3x²y − y³
constexpr double kF3b = 0.6123724356957946;         // 3/√24
constexpr double kF1a = 0.15811388300841897;        // 1/√40   x(4z² − x² − y²), y(…)
constexpr double kF1b = 0.6324555320336759;         // 4/√40
constexpr double kF0a = 0.2581988897471611;         // 2/√60   z(2z² − 3x² − 3y²)
constexpr double kF0b = 0.3872983346207417;         // 3/√60

}  // namespace

void fill_s(Shell& shell) {
  clear_angular(shell);
  set(shell.functions[0], 0, 0, {{1.0, 0, 0, 0}});
}

void fill_p(Shell& shell) {
  clear_angular(shell);
  set_p(shell, 0);
}

void fill_sp(Shell& shell) {
  clear_angular(shell);
  set(shell.functions[0], 0, 0, {{1.0, 0, 0, 0}});
  set_p(shell, 1);
}

void fill_d(Shell& shell) {
  clear_angular(shell);
  auto& f = shell.functions;
  set(f[0], 2, -2, {{1.0, 1, 1, 0}});
  set(f[1], 2, -1, {{1.0, 0, 1, 1}});
  set(f[2], 2, 0, {{kD0Z, 0, 0, 2}, {-kD0XY, 2, 0, 0}, {-kD0XY, 0, 2, 0}});
  set(f[3], 2, 1, {{1.0, 1, 0, 1}});
  set(f[4], 2, 2, {{0.5, 2, 0, 0}, {-0.5, 0, 2, 0}});
  set(f[5], 2, 10, {{kDCompanion, 2, 0, 0}, {kDCompanion, 0, 2, 0}, {kDCompanion, 0, 0, 2}});
}

void fill_f(Shell& shell) {
  clear_angular(shell);
  auto& f = shell.functions;
  set(f[0], 3, -3, {{kF3b, 2, 1, 0}, {-kF3a, 0, 3, 0}});
  set(f[1], 3, -2, {{1.0, 1, 1, 1}});
  set(f[2], 3, -1, {{kF1b, 0, 1, 2}, {-kF1a, 2, 1, 0}, {-kF1a, 0, 3, 0}});
  set(f[3], 3, 0, {{kF0a, 0, 0, 3}, {-kF0b, 2, 0, 1}, {-kF0b, 0, 2, 1}});
  set(f[4], 3, 1, {{kF1b, 1, 0, 2}, {-kF1a, 3, 0, 0}, {-kF1a, 1, 2, 0}});
  set(f[5], 3, 2, {{0.5, 2, 0, 1}, {-0.5, 0, 2, 1}});
  set(f[6], 3, 3, {{kF3a, 3, 0, 0}, {-kF3b, 1, 2, 0}});
}

void fill_angular(int kind, Shell& shell) {
  switch (kind) {
    case 1:
      fill_s(shell);
      break;
    case 3:
      fill_p(shell);
      break;
    case 4:
      fill_sp(shell);
      break;
    case 5:
    case 6:
      fill_d(shell);
      break;
    case 7:
      fill_f(shell);
      break;
    default:
      clear_angular(shell);
      break;
  }
}

int filled_slots(int kind) {
  return kind == 5 ? 6 : kind;
}

}  // namespace norvik::basis
