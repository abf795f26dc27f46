#include "dft/xc/basis_values.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "common/constants.h"
#include "integrals/one/one_electron_matrices.h"
#include "integrals/two/shells.h"

namespace norvik::dft {

namespace {

// A primitive whose exponent α·r² exceeds this contributes below exp(−100) ≈
// 4e-44 of its coefficient: beneath the rounding of any sum it enters.
constexpr double kExponentCutoff = 100.0;

double power(double x, int n) {
  double p = 1.0;
  for (int i = 0; i < n; ++i) p *= x;
  return p;
}

// x^n and its derivative n·x^(n−1).
void monomial(double x, int n, double& value, double& derivative) {
  value = power(x, n);
  derivative = n == 0 ? 0.0 : n * power(x, n - 1);
}

}  // namespace

std::size_t basis_table_size(int npts, int nbasis) {
  return 4 * static_cast<std::size_t>(npts > 0 ? npts : 0) *
         static_cast<std::size_t>(nbasis > 0 ? nbasis : 0);
}

BasisEvaluator::BasisEvaluator(const basis::BasisSet& basis, std::span<const double> positions)
    : nbasis_(basis.nbasis()) {
  const double bohr = constants::kBohrAngstrom;
  int offset = 0;
  for (const basis::Shell& s : basis.shells) {
    PlannedShell p{&s, {}, offset, {}};
    const auto a = 3 * static_cast<std::size_t>(s.atom);
    for (std::size_t k = 0; k < 3; ++k) p.centre[k] = positions[a + k] / bohr;
    for (int f = 0; f < s.kind; ++f) {
      const basis::Function& fn = s.functions[static_cast<std::size_t>(f)];
      for (int k = 0; k < s.nprim; ++k) {
        p.weight[static_cast<std::size_t>(f)][static_cast<std::size_t>(k)] =
            fn.coef[static_cast<std::size_t>(k)] /
            integrals::one::primitive_norm(s.exponents[static_cast<std::size_t>(k)], fn.L);
      }
    }
    offset += s.kind;
    plan_.push_back(p);
  }
}

void BasisEvaluator::at_point(const std::array<double, 3>& point, double* out_base,
                              std::size_t first, std::size_t step, std::size_t stride) const {
  const double bohr = constants::kBohrAngstrom;
  // Values per Å^(3/2), gradients per Å^(5/2).
  const double value_scale = 1.0 / (bohr * std::sqrt(bohr));
  const double gradient_scale = value_scale / bohr;
  const std::array<double, 3> r{point[0] / bohr, point[1] / bohr, point[2] / bohr};
  for (const PlannedShell& ps : plan_) {
    const basis::Shell& s = *ps.shell;
    const std::array<double, 3> d{r[0] - ps.centre[0], r[1] - ps.centre[1], r[2] - ps.centre[2]};
    const double r2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
    std::array<double, basis::kMaxPrimitives> e{}, de{};
    for (int k = 0; k < s.nprim; ++k) {
      const double alpha = s.exponents[static_cast<std::size_t>(k)];
      const double x = alpha * r2;
      e[static_cast<std::size_t>(k)] = x > kExponentCutoff ? 0.0 : std::exp(-x);
      de[static_cast<std::size_t>(k)] = -2.0 * alpha * e[static_cast<std::size_t>(k)];
    }
    for (int f = 0; f < s.kind; ++f) {
      const basis::Function& fn = s.functions[static_cast<std::size_t>(f)];
      const auto& w = ps.weight[static_cast<std::size_t>(f)];
      double radial = 0.0, dradial = 0.0;
      for (int k = 0; k < s.nprim; ++k) {
        radial += w[static_cast<std::size_t>(k)] * e[static_cast<std::size_t>(k)];
        dradial += w[static_cast<std::size_t>(k)] * de[static_cast<std::size_t>(k)];
      }
      // The angular polynomial Σ_t c_t x^l y^m z^n and its gradient.
      double ang = 0.0;
      std::array<double, 3> dang{};
      for (int t = 0; t < fn.nterm; ++t) {
        const auto& lmn = fn.lmn[static_cast<std::size_t>(t)];
        std::array<double, 3> v, dv;
        for (std::size_t c = 0; c < 3; ++c) monomial(d[c], lmn[c], v[c], dv[c]);
        const double ct = fn.term_coef[static_cast<std::size_t>(t)];
        ang += ct * v[0] * v[1] * v[2];
        dang[0] += ct * dv[0] * v[1] * v[2];
        dang[1] += ct * v[0] * dv[1] * v[2];
        dang[2] += ct * v[0] * v[1] * dv[2];
      }
      double* out = out_base + first + step * static_cast<std::size_t>(ps.offset + f);
      out[0] = value_scale * ang * radial;
      for (std::size_t c = 0; c < 3; ++c)
        out[stride * (1 + c)] = gradient_scale * (dang[c] * radial + ang * dradial * d[c]);
    }
  }
}

void BasisEvaluator::batch(std::span<const double> points, std::ptrdiff_t p0, std::ptrdiff_t nb,
                           std::span<double> out) const {
  const auto unb = static_cast<std::size_t>(nb);
  for (std::size_t p = 0; p < unb; ++p) {
    const std::size_t at = 3 * (static_cast<std::size_t>(p0) + p);
    at_point({points[at], points[at + 1], points[at + 2]}, out.data(), p, unb,
             unb * static_cast<std::size_t>(nbasis_));
  }
}

void BasisEvaluator::batch_with_hessian(std::span<const double> points, std::ptrdiff_t p0,
                                        std::ptrdiff_t nb, std::span<double> out) const {
  const double bohr = constants::kBohrAngstrom;
  const double value_scale = 1.0 / (bohr * std::sqrt(bohr));
  const std::array<double, 3> scale{value_scale, value_scale / bohr, value_scale / (bohr * bohr)};
  // (i, j) of the six second derivatives in table order.
  constexpr std::array<std::array<std::size_t, 2>, 6> kPairs{
      {{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2}, {2, 2}}};
  const auto unb = static_cast<std::size_t>(nb);
  const std::size_t block = unb * static_cast<std::size_t>(nbasis_);
  for (std::size_t p = 0; p < unb; ++p) {
    const std::size_t at = 3 * (static_cast<std::size_t>(p0) + p);
    const std::array<double, 3> r{points[at] / bohr, points[at + 1] / bohr, points[at + 2] / bohr};
    for (const PlannedShell& ps : plan_) {
      const basis::Shell& s = *ps.shell;
      const std::array<double, 3> d{r[0] - ps.centre[0], r[1] - ps.centre[1], r[2] - ps.centre[2]};
      const double r2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
      // e_k, −2α_k e_k and 4α_k² e_k: the radial factor is R = Σ w e, and
      // ∂_i R = d_i R1, ∂_i∂_j R = δ_ij R1 + d_i d_j R2.
      std::array<double, basis::kMaxPrimitives> e{}, de{}, dde{};
      for (std::size_t k = 0; k < static_cast<std::size_t>(s.nprim); ++k) {
        const double alpha = s.exponents[k];
        const double x = alpha * r2;
        e[k] = x > kExponentCutoff ? 0.0 : std::exp(-x);
        de[k] = -2.0 * alpha * e[k];
        dde[k] = 4.0 * alpha * alpha * e[k];
      }
      for (int f = 0; f < s.kind; ++f) {
        const basis::Function& fn = s.functions[static_cast<std::size_t>(f)];
        const auto& w = ps.weight[static_cast<std::size_t>(f)];
        double radial = 0.0, r1 = 0.0, r2nd = 0.0;
        for (std::size_t k = 0; k < static_cast<std::size_t>(s.nprim); ++k) {
          radial += w[k] * e[k];
          r1 += w[k] * de[k];
          r2nd += w[k] * dde[k];
        }
        // The angular polynomial, its gradient and its second derivatives.
        double ang = 0.0;
        std::array<double, 3> dang{};
        std::array<double, 6> hang{};
        for (int t = 0; t < fn.nterm; ++t) {
          const auto& lmn = fn.lmn[static_cast<std::size_t>(t)];
          std::array<std::array<double, 3>, 3> m{};  // m[c] = x^n, n x^(n−1), n(n−1) x^(n−2)
          for (std::size_t c = 0; c < 3; ++c) {
            const int n = lmn[c];
            m[c][0] = power(d[c], n);
            m[c][1] = n == 0 ? 0.0 : n * power(d[c], n - 1);
            m[c][2] = n < 2 ? 0.0 : n * (n - 1) * power(d[c], n - 2);
          }
          const double ct = fn.term_coef[static_cast<std::size_t>(t)];
          ang += ct * m[0][0] * m[1][0] * m[2][0];
          for (std::size_t c = 0; c < 3; ++c) {
            std::array<std::size_t, 3> order{0, 0, 0};
            order[c] = 1;
            dang[c] += ct * m[0][order[0]] * m[1][order[1]] * m[2][order[2]];
          }
          for (std::size_t q = 0; q < 6; ++q) {
            std::array<std::size_t, 3> order{0, 0, 0};
            ++order[kPairs[q][0]];
            ++order[kPairs[q][1]];
            hang[q] += ct * m[0][order[0]] * m[1][order[1]] * m[2][order[2]];
          }
        }
        double* out_f = out.data() + p + unb * static_cast<std::size_t>(ps.offset + f);
        out_f[0] = scale[0] * ang * radial;
        for (std::size_t c = 0; c < 3; ++c) {
          out_f[block * (1 + c)] = scale[1] * (dang[c] * radial + ang * r1 * d[c]);
        }
        for (std::size_t q = 0; q < 6; ++q) {
          const std::size_t i = kPairs[q][0], j = kPairs[q][1];
          const double h = hang[q] * radial + (dang[i] * d[j] + dang[j] * d[i]) * r1 +
                           ang * ((i == j ? r1 : 0.0) + d[i] * d[j] * r2nd);
          out_f[block * (4 + q)] = scale[2] * h;
        }
      }
    }
  }
}

ShellTableBasis basis_from_shell_table(int nshell, std::span<const double> shelltab) {
  ShellTableBasis b;
  const auto n = static_cast<std::size_t>(nshell > 0 ? nshell : 0);
  b.centres.resize(3 * n);
  for (std::size_t s = 0; s < n; ++s) {
    std::array<double, 3> centre{};
    basis::Shell shell = integrals::two::unpack_shell(
        shelltab.subspan(s * integrals::two::kShellRecord, integrals::two::kShellRecord),
        static_cast<int>(s), centre);
    shell.atom = static_cast<int>(s);
    for (std::size_t k = 0; k < 3; ++k) b.centres[3 * s + k] = centre[k] * constants::kBohrAngstrom;
    b.set.shells.push_back(shell);
  }
  return b;
}

void basis_on_grid(const basis::BasisSet& basis, std::span<const double> positions,
                   std::span<const double> points, std::span<double> chi, TableLayout layout) {
  const auto npts = static_cast<std::ptrdiff_t>(points.size() / 3);
  if (chi.size() < basis_table_size(static_cast<int>(npts), basis.nbasis())) {
    throw std::logic_error("basis table smaller than the grid and basis need");
  }
  const BasisEvaluator evaluator(basis, positions);
  const auto nbasis = static_cast<std::size_t>(basis.nbasis());
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t p = 0; p < npts; ++p) {
    const auto up = static_cast<std::size_t>(p);
    // Where function f's four numbers at this point go: first + step·f, the
    // derivatives stride after stride.
    std::size_t first = 4 * up, step = 4 * static_cast<std::size_t>(npts), stride = 1;
    if (layout == TableLayout::by_batch) {
      const std::ptrdiff_t p0 = (p / kGridBatch) * kGridBatch;
      const auto nb = static_cast<std::size_t>(std::min<std::ptrdiff_t>(kGridBatch, npts - p0));
      first = 4 * nbasis * static_cast<std::size_t>(p0) + (up - static_cast<std::size_t>(p0));
      step = nb;
      stride = nb * nbasis;
    }
    evaluator.at_point({points[3 * up], points[3 * up + 1], points[3 * up + 2]}, chi.data(), first,
                       step, stride);
  }
}

}  // namespace norvik::dft
