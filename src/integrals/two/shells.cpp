#include "integrals/two/shells.h"

#include <cmath>
#include <numbers>

#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/two/cartesian.h"

namespace norvik::integrals::two {
namespace {

constexpr int kSlotStart = 12;
constexpr int kSlotSize = 21;

[[noreturn]] void bad_record(int shell, std::string_view what) {
  throw Error(fortran::list_directed(
      {"Error! Invalid shell table entry", static_cast<std::int64_t>(shell), what}));
}

int as_int(double x) {
  return static_cast<int>(std::lround(x));
}

}  // namespace

double primitive_normalisation(double alpha, int l) {
  constexpr double pi3_over_8 = std::numbers::pi * std::numbers::pi * std::numbers::pi / 8.0;
  double quarter = 1.0;
  for (int i = 0; i < l; ++i) quarter *= 0.25;
  return 1.0 / std::sqrt(quarter * std::sqrt(pi3_over_8 / std::pow(alpha, 2 * l + 3)));
}

void pack_shell(const basis::Shell& shell, const std::array<double, 3>& centre_bohr, int atom,
                std::span<double> r) {
  std::fill(r.begin(), r.begin() + kShellRecord, 0.0);
  r[0] = shell.kind;
  r[1] = shell.nprim;
  r[2] = atom;
  for (int k = 0; k < 3; ++k) r[3 + k] = centre_bohr[k];
  for (int p = 0; p < basis::kMaxPrimitives; ++p) r[6 + p] = shell.exponents[p];
  for (int f = 0; f < basis::kMaxFunctionsPerShell; ++f) {
    const basis::Function& fn = shell.functions[f];
    double* s = r.data() + kSlotStart + kSlotSize * f;
    s[0] = fn.L;
    s[1] = fn.M;
    s[2] = fn.nterm;
    for (int t = 0; t < basis::kMaxTerms; ++t) {
      for (int k = 0; k < 3; ++k) s[3 + 3 * t + k] = fn.lmn[t][k];
      s[12 + t] = fn.term_coef[t];
    }
    for (int p = 0; p < basis::kMaxPrimitives; ++p) s[15 + p] = fn.coef[p];
  }
}

basis::Shell unpack_shell(std::span<const double> r, int index,
                          std::array<double, 3>& centre_bohr) {
  basis::Shell shell;
  shell.kind = as_int(r[0]);
  shell.nprim = as_int(r[1]);
  if (shell.kind < 1 || shell.kind > kMaxShellFunctions) bad_record(index + 1, "(kind)");
  if (shell.nprim < 1 || shell.nprim > basis::kMaxPrimitives) bad_record(index + 1, "(primitives)");
  for (int k = 0; k < 3; ++k) centre_bohr[k] = r[3 + k];
  for (int p = 0; p < basis::kMaxPrimitives; ++p) shell.exponents[p] = r[6 + p];
  for (int f = 0; f < shell.kind; ++f) {
    basis::Function& fn = shell.functions[f];
    const double* s = r.data() + kSlotStart + kSlotSize * f;
    fn.L = as_int(s[0]);
    fn.M = as_int(s[1]);
    fn.nterm = as_int(s[2]);
    if (fn.nterm < 0 || fn.nterm > basis::kMaxTerms) bad_record(index + 1, "(terms)");
    for (int t = 0; t < basis::kMaxTerms; ++t) {
      for (int k = 0; k < 3; ++k) fn.lmn[t][k] = as_int(s[3 + 3 * t + k]);
      fn.term_coef[t] = s[12 + t];
    }
    for (int p = 0; p < basis::kMaxPrimitives; ++p) fn.coef[p] = s[15 + p];
  }
  return shell;
}

std::vector<double> pack_shells(const basis::BasisSet& basis,
                                std::span<const std::array<double, 3>> positions) {
  std::vector<double> table(basis.shells.size() * kShellRecord);
  for (std::size_t s = 0; s < basis.shells.size(); ++s) {
    const auto& shell = basis.shells[s];
    pack_shell(shell, positions[static_cast<std::size_t>(shell.atom)], shell.atom + 1,
               std::span<double>(table).subspan(s * kShellRecord, kShellRecord));
  }
  return table;
}

std::vector<IntegralShell> decode_shells(int nshell, std::span<const double> table) {
  std::vector<IntegralShell> shells(static_cast<std::size_t>(nshell));
  int first = 0;
  for (int s = 0; s < nshell; ++s) {
    const double* r = table.data() + static_cast<std::ptrdiff_t>(s) * kShellRecord;
    IntegralShell& sh = shells[static_cast<std::size_t>(s)];
    sh.kind = as_int(r[0]);
    sh.nprim = as_int(r[1]);
    if (sh.kind < 1 || sh.kind > kMaxShellFunctions) bad_record(s + 1, "(kind)");
    if (sh.nprim < 1 || sh.nprim > basis::kMaxPrimitives) bad_record(s + 1, "(primitives)");
    sh.first = first;
    first += sh.kind;
    for (int k = 0; k < 3; ++k) sh.centre[k] = r[3 + k];
    for (int p = 0; p < sh.nprim; ++p) {
      sh.exponents[p] = r[6 + p];
      if (!(sh.exponents[p] > 0)) bad_record(s + 1, "(exponent)");
    }
    for (int f = 0; f < sh.kind; ++f) {
      const double* slot = r + kSlotStart + kSlotSize * f;
      const int l = as_int(slot[0]);
      const int nterm = as_int(slot[2]);
      if (l < 0 || l > 6) bad_record(s + 1, "(angular momentum)");
      if (nterm < 1 || nterm > basis::kMaxTerms) bad_record(s + 1, "(terms)");
      // Sub-shell: the first earlier one with the same L and contraction.
      std::array<double, basis::kMaxPrimitives> coef{};
      for (int p = 0; p < sh.nprim; ++p) coef[p] = slot[15 + p];
      int sub = -1;
      for (int u = 0; u < sh.nsub && sub < 0; ++u) {
        if (sh.sub[u].l != l) continue;
        bool same = true;
        for (int p = 0; p < sh.nprim; ++p)
          same = same && sh.sub[u].coef[p] == coef[p] * primitive_normalisation(sh.exponents[p], l);
        if (same) sub = u;
      }
      if (sub < 0) {
        sub = sh.nsub++;
        sh.sub[sub].l = l;
        for (int p = 0; p < sh.nprim; ++p)
          sh.sub[sub].coef[p] = coef[p] * primitive_normalisation(sh.exponents[p], l);
        sh.max_l = std::max(sh.max_l, l);
      }
      FunctionMap& fm = sh.fn[f];
      fm.sub = sub;
      fm.nterm = nterm;
      for (int t = 0; t < nterm; ++t) {
        const int a = as_int(slot[3 + 3 * t]), b = as_int(slot[4 + 3 * t]),
                  c = as_int(slot[5 + 3 * t]);
        if (a < 0 || b < 0 || c < 0 || a + b + c != l) bad_record(s + 1, "(Cartesian term)");
        fm.cart[t] = cart_index(a, b, c);
        fm.coef[t] = slot[12 + t];
      }
    }
    for (int u = 0; u < sh.nsub; ++u) sh.sub_plain[u] = true;
    for (int f = 0; f < sh.kind; ++f) {
      const FunctionMap& fm = sh.fn[f];
      sh.sub_fn[fm.sub][sh.sub_nfn[fm.sub]++] = f;
      if (fm.nterm != 1 || fm.coef[0] != 1.0) sh.sub_plain[fm.sub] = false;
    }
  }
  return shells;
}

int count_functions(std::span<const IntegralShell> shells) {
  int n = 0;
  for (const auto& s : shells) n += s.kind;
  return n;
}

}  // namespace norvik::integrals::two
