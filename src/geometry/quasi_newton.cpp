#include "geometry/quasi_newton.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "common/constants.h"
#include "common/error.h"
#include "linalg/eigen.h"

namespace norvik::geometry {

namespace {

using linalg::Index;
using linalg::Matrix;
using Vec3 = std::array<double, 3>;

// ---------------------------------------------------------------------------
// Model Hessian.  Lindh, Bernhardsson, Karlström and Malmqvist, Chem. Phys.
// Lett. 241, 423 (1995): every pair, triple and quadruple of atoms contributes
// a stretch, bend or torsion whose force constant decays with the distances,
// ρ_ij = exp(α_ij (r_ref,ij² − r_ij²)), α and r_ref by rows of the periodic
// table (1: H–He, 2: Li–Ne, 3: beyond), atomic units.
constexpr double kStretch = 0.45;  // hartree/bohr²
constexpr double kBend = 0.15;     // hartree/rad²
constexpr double kTorsion = 0.005;
constexpr double kAlpha[3][3] = {
    {1.0000, 0.3949, 0.3949}, {0.3949, 0.2800, 0.2800}, {0.3949, 0.2800, 0.2800}};
constexpr double kReference[3][3] = {{1.35, 2.10, 2.53}, {2.10, 2.87, 3.40}, {2.53, 3.40, 3.40}};

// Terms whose force constant falls below this add nothing an update would not
// learn, and skipping them keeps large molecules cheap [hartree/bohr²].
constexpr double kNegligibleTerm = 1e-10;

// A bend within this of 180° is treated as linear: two perpendicular bends of
// the straight line replace the ill-defined one.  Within this of 0° (both
// neighbours on the same side) it is left out [rad].
constexpr double kLinearAngle = 5.0 * 3.14159265358979323846 / 180.0;

int row_of(int z) {
  return z <= 2 ? 0 : (z <= 10 ? 1 : 2);
}

Vec3 sub(const Vec3& a, const Vec3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double dot3(const Vec3& a, const Vec3& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
Vec3 scaled(const Vec3& a, double s) {
  return {a[0] * s, a[1] * s, a[2] * s};
}
double norm3(const Vec3& a) {
  return std::sqrt(dot3(a, a));
}

// One internal coordinate's Wilson vector: up to four atoms and their parts.
struct Wilson {
  int count = 0;
  std::array<int, 4> atom{};
  std::array<Vec3, 4> part{};
  void add(int a, const Vec3& v) {
    atom[static_cast<std::size_t>(count)] = a;
    part[static_cast<std::size_t>(count)] = v;
    ++count;
  }
};

// H += k·b·bᵀ.
void add_term(Matrix& h, double k, const Wilson& b) {
  for (int p = 0; p < b.count; ++p) {
    for (int q = 0; q < b.count; ++q) {
      const Index ip = 3 * b.atom[static_cast<std::size_t>(p)];
      const Index iq = 3 * b.atom[static_cast<std::size_t>(q)];
      for (Index u = 0; u < 3; ++u) {
        for (Index v = 0; v < 3; ++v) {
          h(ip + u, iq + v) += k *
                               b.part[static_cast<std::size_t>(p)][static_cast<std::size_t>(u)] *
                               b.part[static_cast<std::size_t>(q)][static_cast<std::size_t>(v)];
        }
      }
    }
  }
}

// A unit vector perpendicular to the unit vector e.
Vec3 perpendicular(const Vec3& e) {
  const Vec3 axis = std::abs(e[0]) < 0.6 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
  const Vec3 p = cross(e, axis);
  return scaled(p, 1.0 / norm3(p));
}

}  // namespace

Matrix model_hessian(std::span<const int> elements, std::span<const double> x) {
  const int n = static_cast<int>(x.size() / 3);
  Matrix h(3 * n, 3 * n);
  auto pos = [&](int a) {
    const auto i = static_cast<std::size_t>(3 * a);
    return Vec3{x[i], x[i + 1], x[i + 2]};
  };
  std::vector<double> rho(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0.0);
  auto rho_of = [&](int a, int b) -> double& {
    return rho[static_cast<std::size_t>(a) * static_cast<std::size_t>(n) +
               static_cast<std::size_t>(b)];
  };
  for (int a = 0; a < n; ++a) {
    for (int b = 0; b < n; ++b) {
      if (a == b) continue;
      const int ra = row_of(elements[static_cast<std::size_t>(a)]);
      const int rb = row_of(elements[static_cast<std::size_t>(b)]);
      const double r = norm3(sub(pos(a), pos(b)));
      const double ref = kReference[ra][rb];
      rho_of(a, b) = std::exp(kAlpha[ra][rb] * (ref * ref - r * r));
    }
  }

  // Stretches.
  for (int a = 0; a < n; ++a) {
    for (int b = a + 1; b < n; ++b) {
      const double k = kStretch * rho_of(a, b);
      if (k < kNegligibleTerm) continue;
      const Vec3 r = sub(pos(a), pos(b));
      const Vec3 e = scaled(r, 1.0 / norm3(r));
      Wilson w;
      w.add(a, e);
      w.add(b, scaled(e, -1.0));
      add_term(h, k, w);
    }
  }

  // Bends a–j–c with apex j.
  for (int j = 0; j < n; ++j) {
    for (int a = 0; a < n; ++a) {
      for (int c = a + 1; c < n; ++c) {
        if (a == j || c == j) continue;
        const double k = kBend * rho_of(a, j) * rho_of(j, c);
        if (k < kNegligibleTerm) continue;
        const Vec3 ra = sub(pos(a), pos(j));
        const Vec3 rc = sub(pos(c), pos(j));
        const double la = norm3(ra);
        const double lc = norm3(rc);
        const Vec3 ea = scaled(ra, 1.0 / la);
        const Vec3 ec = scaled(rc, 1.0 / lc);
        const double cosine = std::clamp(dot3(ea, ec), -1.0, 1.0);
        const double angle = std::acos(cosine);
        // a and c on one line on the same side of j: no angle to hold.
        if (angle < kLinearAngle) continue;
        if (angle > 3.14159265358979323846 - kLinearAngle) {
          const Vec3 u = perpendicular(ec);
          for (const Vec3& v : {u, cross(ec, u)}) {
            Wilson w;
            w.add(a, scaled(v, 1.0 / la));
            w.add(c, scaled(v, 1.0 / lc));
            w.add(j, scaled(v, -1.0 / la - 1.0 / lc));
            add_term(h, k, w);
          }
          continue;
        }
        const double sine = std::sin(angle);
        const Vec3 ba = scaled(sub(scaled(ea, cosine), ec), 1.0 / (la * sine));
        const Vec3 bc = scaled(sub(scaled(ec, cosine), ea), 1.0 / (lc * sine));
        Wilson w;
        w.add(a, ba);
        w.add(c, bc);
        w.add(j, scaled(Vec3{ba[0] + bc[0], ba[1] + bc[1], ba[2] + bc[2]}, -1.0));
        add_term(h, k, w);
      }
    }
  }

  // Torsions a–j–c–d about the central pair j < c (a–j–c–d and d–c–j–a are one).
  for (int j = 0; j < n; ++j) {
    for (int c = j + 1; c < n; ++c) {
      const double kc = kTorsion * rho_of(j, c);
      if (kc < kNegligibleTerm) continue;
      for (int a = 0; a < n; ++a) {
        if (a == j || a == c) continue;
        for (int d = 0; d < n; ++d) {
          if (d == j || d == c || d == a) continue;
          const double k = kc * rho_of(a, j) * rho_of(c, d);
          if (k < kNegligibleTerm) continue;
          const Vec3 f = sub(pos(a), pos(j));
          const Vec3 g = sub(pos(j), pos(c));
          const Vec3 hh = sub(pos(d), pos(c));
          const Vec3 va = cross(f, g);
          const Vec3 vb = cross(hh, g);
          const double a2 = dot3(va, va);
          const double b2 = dot3(vb, vb);
          const double lg = norm3(g);
          // A straight a–j–c or j–c–d has no torsion.
          if (a2 < 1e-6 * dot3(f, f) * lg * lg || b2 < 1e-6 * dot3(hh, hh) * lg * lg) continue;
          const double fg = dot3(f, g) / (a2 * lg);
          const double hg = dot3(hh, g) / (b2 * lg);
          const Vec3 pa = scaled(va, -lg / a2);
          const Vec3 pd = scaled(vb, lg / b2);
          Wilson w;
          w.add(a, pa);
          w.add(j, sub(sub(scaled(va, fg), scaled(vb, hg)), pa));
          w.add(c, sub(sub(scaled(vb, hg), scaled(va, fg)), pd));
          w.add(d, pd);
          add_term(h, k, w);
        }
      }
    }
  }
  return h;
}

namespace {

// ---------------------------------------------------------------------------
// Internal motions: an orthonormal basis of the complement of the rigid
// translations and rotations at x (bohr).  Columns of the 3N×m result.
Matrix internal_basis(std::span<const double> x) {
  const Index n3 = static_cast<Index>(x.size());
  const int natom = static_cast<int>(n3 / 3);
  Vec3 centre{};
  for (int a = 0; a < natom; ++a) {
    for (std::size_t u = 0; u < 3; ++u) centre[u] += x[3 * static_cast<std::size_t>(a) + u];
  }
  centre = scaled(centre, 1.0 / natom);

  // The rigid motions, orthonormalised; a rotation about the axis of a linear
  // molecule (or any rotation of an atom) vanishes and is dropped.
  std::vector<std::vector<double>> rigid;
  for (std::size_t axis = 0; axis < 6; ++axis) {
    std::vector<double> v(x.size(), 0.0);
    for (int a = 0; a < natom; ++a) {
      const auto i = 3 * static_cast<std::size_t>(a);
      if (axis < 3) {
        v[i + axis] = 1.0;
      } else {
        Vec3 e{};
        e[axis - 3] = 1.0;
        const Vec3 r{x[i] - centre[0], x[i + 1] - centre[1], x[i + 2] - centre[2]};
        const Vec3 t = cross(e, r);
        for (std::size_t u = 0; u < 3; ++u) v[i + u] = t[u];
      }
    }
    double before = 0.0;
    for (double c : v) before += c * c;
    for (const auto& q : rigid) {
      double overlap = 0.0;
      for (std::size_t i = 0; i < v.size(); ++i) overlap += q[i] * v[i];
      for (std::size_t i = 0; i < v.size(); ++i) v[i] -= overlap * q[i];
    }
    double after = 0.0;
    for (double c : v) after += c * c;
    if (after <= 1e-12 * std::max(before, 1.0)) continue;
    for (double& c : v) c /= std::sqrt(after);
    rigid.push_back(std::move(v));
  }

  // The projector on the complement; its eigenvectors of eigenvalue 1 are the basis.
  Matrix p(n3, n3);
  for (Index i = 0; i < n3; ++i) p(i, i) = 1.0;
  for (const auto& q : rigid) {
    for (Index i = 0; i < n3; ++i) {
      for (Index j = 0; j < n3; ++j) {
        p(i, j) -= q[static_cast<std::size_t>(i)] * q[static_cast<std::size_t>(j)];
      }
    }
  }
  std::vector<double> w(static_cast<std::size_t>(n3));
  Matrix v(n3, n3);
  if (linalg::symmetric_eigen(p, w, v) != linalg::Status::ok) {
    throw Error(" Projection of the rigid motions failed.");
  }
  const Index m = n3 - static_cast<Index>(rigid.size());
  Matrix basis(n3, std::max<Index>(m, 0));
  // Ascending order: the last m eigenvalues are the ones.
  for (Index c = 0; c < m; ++c) {
    for (Index i = 0; i < n3; ++i) basis(i, c) = v(i, n3 - m + c);
  }
  return basis;
}

// Vᵀ·a for a vector a.
std::vector<double> reduce(const Matrix& v, std::span<const double> a) {
  std::vector<double> r(static_cast<std::size_t>(v.cols()), 0.0);
  for (Index c = 0; c < v.cols(); ++c) {
    for (Index i = 0; i < v.rows(); ++i)
      r[static_cast<std::size_t>(c)] += v(i, c) * a[static_cast<std::size_t>(i)];
  }
  return r;
}

// The rational-function step in the reduced space: the lowest eigenvector of
// [[H, g], [gᵀ, 0]] scaled to last component 1.  Unlike a Newton step it is
// downhill whatever the signs of the Hessian's eigenvalues.
std::vector<double> rfo_step(const Matrix& h, std::span<const double> g) {
  const Index m = h.rows();
  Matrix aug(m + 1, m + 1);
  for (Index i = 0; i < m; ++i) {
    for (Index j = 0; j < m; ++j) aug(i, j) = h(i, j);
    aug(i, m) = aug(m, i) = g[static_cast<std::size_t>(i)];
  }
  std::vector<double> w(static_cast<std::size_t>(m + 1));
  Matrix v(m + 1, m + 1);
  if (linalg::symmetric_eigen(aug, w, v) != linalg::Status::ok) {
    throw Error(" Eigenvalues of the augmented Hessian failed.");
  }
  std::vector<double> s(static_cast<std::size_t>(m));
  const double last = v(m, 0);
  if (std::abs(last) < 1e-8) {
    // The gradient has no weight on the lowest mode: steepest descent instead.
    for (Index i = 0; i < m; ++i) s[static_cast<std::size_t>(i)] = -g[static_cast<std::size_t>(i)];
    return s;
  }
  for (Index i = 0; i < m; ++i) s[static_cast<std::size_t>(i)] = v(i, 0) / last;
  return s;
}

double norm(std::span<const double> a) {
  double s = 0.0;
  for (double c : a) s += c * c;
  return std::sqrt(s);
}

double max_abs(std::span<const double> a) {
  double m = 0.0;
  for (double c : a) m = std::max(m, std::abs(c));
  return m;
}

double rms(std::span<const double> a) {
  return a.empty() ? 0.0 : norm(a) / std::sqrt(static_cast<double>(a.size()));
}

// A rejected step is retried shorter at most this many times in a row; then
// the point is kept whatever its energy, so that noise cannot stall the run.
constexpr int kMaxRetries = 4;

// Hartree/bohr in eV/Å.
constexpr double kGradientUnit = constants::kHartreeEv / constants::kBohrAngstrom;

}  // namespace

OptimizerResult optimize_quasi_newton(Surface& surface, const QuasiNewtonSettings& settings,
                                      std::span<double> x, std::span<double> g) {
  const std::size_t n3 = x.size();
  const Index nn = static_cast<Index>(n3);
  const std::string gradient_done =
      std::string(settings.kohn_sham ? "Kohn-Sham" : "Hartree-Fock") + " gradient ok.";
  const ConvergenceCriteria& limit = settings.criteria;

  std::vector<double> xb(n3), gb(n3), gb_new(n3), saved(n3), step(n3);
  auto to_bohr = [&](std::span<const double> a, std::span<double> b) {
    for (std::size_t i = 0; i < n3; ++i) b[i] = a[i] / constants::kBohrAngstrom;
  };
  // The gradient in hartree/bohr with the rigid motions projected out.
  auto projected = [&](const Matrix& basis, std::span<const double> ge, std::span<double> out) {
    std::vector<double> r(n3);
    for (std::size_t i = 0; i < n3; ++i) r[i] = ge[i] / kGradientUnit;
    const std::vector<double> c = reduce(basis, r);
    std::fill(out.begin(), out.end(), 0.0);
    for (Index k = 0; k < basis.cols(); ++k) {
      for (Index i = 0; i < nn; ++i)
        out[static_cast<std::size_t>(i)] += basis(i, k) * c[static_cast<std::size_t>(k)];
    }
  };

  OptimizerResult result;
  std::fill(g.begin(), g.end(), 0.0);
  double energy = surface.compute(x, 1).energy;
  ++result.points;
  surface.gradient(g);
  ++result.gradients;
  surface.progress(gradient_done);
  result.cycles = 1;

  to_bohr(x, xb);
  Matrix hess = model_hessian(settings.elements, xb);
  Matrix basis = internal_basis(xb);
  projected(basis, g, gb);
  double trust = settings.trust_radius;
  // energy of the previous accepted point [eV] (none before the first step)
  double last_energy = std::numeric_limits<double>::infinity();

  for (int cycle = 1;; ++cycle) {
    if (settings.max_cycles != 1) {
      CycleReport report;
      report.cycle = cycle;
      report.x = x;
      report.g = g;
      report.energy = energy;
      surface.report_cycle(report);
    }

    // The step from this point, in the internal space.
    const Index m = basis.cols();
    Matrix hr(m, m);
    for (Index a = 0; a < m; ++a) {
      for (Index b = 0; b < m; ++b) {
        double s = 0.0;
        for (Index i = 0; i < nn; ++i) {
          double hv = 0.0;
          for (Index j = 0; j < nn; ++j) hv += hess(i, j) * basis(j, b);
          s += basis(i, a) * hv;
        }
        hr(a, b) = s;
      }
    }
    const std::vector<double> gr = reduce(basis, gb);
    std::vector<double> sr = m > 0 ? rfo_step(hr, gr) : std::vector<double>{};
    auto expand = [&](std::span<const double> reduced) {
      std::fill(step.begin(), step.end(), 0.0);
      for (Index k = 0; k < m; ++k) {
        for (Index i = 0; i < nn; ++i)
          step[static_cast<std::size_t>(i)] += basis(i, k) * reduced[static_cast<std::size_t>(k)];
      }
    };
    expand(sr);

    const double gmax = max_abs(gb);
    const bool forces_small = gmax < limit.max_gradient && rms(gb) < limit.rms_gradient;
    // The trust radius does not enter the test: a step cut short by it is no
    // sign of being near the minimum.
    const bool step_small = max_abs(step) < limit.max_step && rms(step) < limit.rms_step;
    const bool energy_settled =
        std::abs(energy - last_energy) < limit.energy_change * constants::kHartreeEv;
    if ((forces_small && (step_small || energy_settled)) || gmax < limit.max_gradient / 100.0) {
      result.converged = true;
      break;
    }
    if (cycle >= settings.max_cycles) break;

    // Take the step; undo and shorten it while it goes uphill beyond the noise.
    std::copy(x.begin(), x.end(), saved.begin());
    double e_new = energy;
    for (int attempt = 0;; ++attempt) {
      const double length = norm(step);
      if (length > trust) {
        for (double& c : step) c *= trust / length;
      }
      double predicted = 0.0;
      for (Index i = 0; i < nn; ++i) {
        double hs = 0.0;
        for (Index j = 0; j < nn; ++j) hs += hess(i, j) * step[static_cast<std::size_t>(j)];
        predicted +=
            step[static_cast<std::size_t>(i)] * (gb[static_cast<std::size_t>(i)] + 0.5 * hs);
      }
      for (std::size_t i = 0; i < n3; ++i) x[i] = saved[i] + step[i] * constants::kBohrAngstrom;
      surface.save_state();
      const PointResult p = surface.compute(x, cycle + 1);
      ++result.points;
      e_new = p.energy;
      const double actual = (e_new - energy) / constants::kHartreeEv;
      const double noise = 2.0 * p.scf_change / constants::kHartreeEv;
      const double taken = norm(step);
      if (actual > noise && attempt < kMaxRetries && taken > settings.min_trust_radius) {
        std::copy(saved.begin(), saved.end(), x.begin());
        surface.restore_state(x);
        trust = std::max(settings.min_trust_radius, 0.25 * taken);
        continue;
      }
      // The trust radius follows how well the quadratic model predicted.
      const double ratio = predicted < 0.0 ? actual / predicted : 0.0;
      if (ratio < 0.25) {
        trust = std::max(settings.min_trust_radius, 0.25 * taken);
      } else if (ratio > 0.75 && taken > 0.8 * trust) {
        trust = std::min(settings.max_trust_radius, 2.0 * trust);
      }
      break;
    }
    last_energy = energy;
    energy = e_new;
    surface.gradient(g);
    ++result.gradients;
    surface.progress(gradient_done);
    result.cycles = cycle + 1;

    // BFGS update with the projected gradients; a step without positive
    // curvature along it would spoil positive definiteness and is skipped.
    to_bohr(x, xb);
    basis = internal_basis(xb);
    projected(basis, g, gb_new);
    std::vector<double> y(n3), hs(n3, 0.0);
    double sy = 0.0, shs = 0.0;
    for (std::size_t i = 0; i < n3; ++i) {
      y[i] = gb_new[i] - gb[i];
      sy += step[i] * y[i];
    }
    for (Index i = 0; i < nn; ++i) {
      for (Index j = 0; j < nn; ++j)
        hs[static_cast<std::size_t>(i)] += hess(i, j) * step[static_cast<std::size_t>(j)];
      shs += step[static_cast<std::size_t>(i)] * hs[static_cast<std::size_t>(i)];
    }
    if (sy > 1e-12 && shs > 1e-12) {
      for (Index i = 0; i < nn; ++i) {
        for (Index j = 0; j < nn; ++j) {
          const auto ui = static_cast<std::size_t>(i);
          const auto uj = static_cast<std::size_t>(j);
          hess(i, j) += y[ui] * y[uj] / sy - hs[ui] * hs[uj] / shs;
        }
      }
    }
    gb = gb_new;
  }

  // The final point recentred (no constraint: the energy does not change).
  std::vector<double> moved(x.begin(), x.end());
  surface.reimpose(moved);
  std::copy(moved.begin(), moved.end(), x.begin());
  result.energy = energy;
  return result;
}

}  // namespace norvik::geometry
