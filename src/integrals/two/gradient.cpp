#include "integrals/two/gradient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <vector>

#include "integrals/rys/rys_eri.h"
#include "integrals/two/cartesian.h"
#include "integrals/two/quartets.h"
#include "integrals/two/unique_quartets.h"

namespace norvik::integrals::two {

namespace {

// Blocks of the fixed partition of the bra shell pairs.
constexpr int kBlocks = 32;

struct Workspace {
  rys::RysGradientEngine rys;
  std::vector<double> gamma;        // function block of the quartet
  std::vector<double> cart, spare;  // Cartesian block and transform scratch
  std::vector<double> layout;       // Γc in the engine's layout
};

// The Cartesian block of Γ for one sub-shell quartet: Γc = Σ_f Γ_f Π M_s,
// M_s mapping the functions of sub-shell sub[s] to its components.  Returns
// false when it is zero.
bool cartesian_gamma(const IntegralShell* const sh[4], const int sub[4], const double* gamma,
                     Workspace& ws) {
  const int k[4] = {sh[0]->kind, sh[1]->kind, sh[2]->kind, sh[3]->kind};
  int nf[4], nc[4];
  const int* fl[4];
  for (int s = 0; s < 4; ++s) {
    fl[s] = sh[s]->sub_fn[sub[s]].data();
    nf[s] = sh[s]->sub_nfn[sub[s]];
    nc[s] = ncart(sh[s]->sub[sub[s]].l);
  }
  // Gather the functions of the sub-shells.
  std::size_t size = static_cast<std::size_t>(nf[0]) * nf[1] * nf[2] * nf[3];
  const std::size_t cmax = static_cast<std::size_t>(std::max(nf[0], nc[0])) *
                           std::max(nf[1], nc[1]) * std::max(nf[2], nc[2]) * std::max(nf[3], nc[3]);
  if (ws.cart.size() < cmax) ws.cart.resize(cmax);
  if (ws.spare.size() < cmax) ws.spare.resize(cmax);
  double* x = ws.cart.data();
  bool any = false;
  {
    double* w = x;
    for (int a = 0; a < nf[0]; ++a)
      for (int b = 0; b < nf[1]; ++b)
        for (int c = 0; c < nf[2]; ++c) {
          const double* row = gamma + ((fl[0][a] * k[1] + fl[1][b]) * k[2] + fl[2][c]) * k[3];
          for (int d = 0; d < nf[3]; ++d) {
            *w = row[fl[3][d]];
            any = any || *w != 0.0;
            ++w;
          }
        }
  }
  if (!any) return false;
  // One index at a time from functions to components.
  int n[4] = {nf[0], nf[1], nf[2], nf[3]};
  double* y = ws.spare.data();
  for (int s = 0; s < 4; ++s) {
    std::size_t outer = 1, inner = 1;
    for (int t = 0; t < s; ++t) outer *= static_cast<std::size_t>(n[t]);
    for (int t = s + 1; t < 4; ++t) inner *= static_cast<std::size_t>(n[t]);
    const std::size_t ncs = static_cast<std::size_t>(nc[s]);
    std::fill_n(y, outer * ncs * inner, 0.0);
    for (std::size_t o = 0; o < outer; ++o)
      for (int f = 0; f < nf[s]; ++f) {
        const FunctionMap& fm = sh[s]->fn[fl[s][f]];
        const double* in =
            x + (o * static_cast<std::size_t>(nf[s]) + static_cast<std::size_t>(f)) * inner;
        for (int t = 0; t < fm.nterm; ++t) {
          double* out = y + (o * ncs + static_cast<std::size_t>(fm.cart[t])) * inner;
          const double ct = fm.coef[t];
          for (std::size_t i = 0; i < inner; ++i) out[i] += ct * in[i];
        }
      }
    n[s] = nc[s];
    std::swap(x, y);
  }
  if (x != ws.cart.data())
    std::copy_n(x, size = static_cast<std::size_t>(n[0]) * n[1] * n[2] * n[3], ws.cart.data());
  return true;
}

// Σ Γc · ∂(abcd)/∂R for the four centres of the sub-shell quartet, added to g.
void quartet_derivative(const IntegralShell* const sh[4], const int sub[4], Workspace& ws,
                        std::array<std::array<double, 3>, 4>& g) {
  rys::ShellData rs[4];
  int nc[4];
  int ld = 1;
  for (int s = 0; s < 4; ++s) {
    const SubShell& ss = sh[s]->sub[sub[s]];
    rs[s].L = ss.l;
    rs[s].nprim = sh[s]->nprim;
    rs[s].exps = sh[s]->exponents.data();
    rs[s].coefs = ss.coef.data();
    rs[s].centre = sh[s]->centre;
    nc[s] = ncart(ss.l);
    ld = std::max(ld, nc[s]);
  }
  // Γc is row-major (a, b, c, d); the engine reads a fastest.
  const std::size_t lds = static_cast<std::size_t>(ld);
  ws.layout.assign(lds * lds * lds * lds, 0.0);
  const double* gc = ws.cart.data();
  for (int a = 0; a < nc[0]; ++a)
    for (int b = 0; b < nc[1]; ++b)
      for (int c = 0; c < nc[2]; ++c)
        for (int d = 0; d < nc[3]; ++d)
          ws.layout[static_cast<std::size_t>(a) + lds * (b + lds * (c + lds * d))] = *gc++;
  ws.rys.add(rs[0], rs[1], rs[2], rs[3], kPairCutoff, ws.layout.data(), ld, g);
}

}  // namespace

void two_electron_gradient(const ContextView& c, int natom, double exchange_weight,
                           std::span<const double> rho, std::span<double> grad, int only_atom) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  if (rho.size() < 2 * nn || grad.size() < 3 * static_cast<std::size_t>(natom)) {
    throw std::invalid_argument("two_electron_gradient: array sizes");
  }
  const auto shells = decode_shells(c.nshell, c.shelltab);
  std::vector<int> atom(shells.size());
  for (std::size_t s = 0; s < shells.size(); ++s) {
    atom[s] = static_cast<int>(c.shelltab[s * kShellRecord + 2]) - 1;
    if (atom[s] < 0 || atom[s] >= natom)
      throw std::invalid_argument("two_electron_gradient: shell atom out of range");
  }
  const PairList list = pair_list(c.nshpair, c.shpair);
  const std::vector<double> qpair = pair_bounds(shells, list, c.vdiag);
  std::vector<double> total(nn);
  for (std::size_t e = 0; e < nn; ++e) total[e] = rho[e] + rho[nn + e];
  const double* pa = rho.data();
  const double* pb = rho.data() + nn;
  // Largest |D| and |Dσ| per shell block, for the screening.
  const std::size_t ns = shells.size();
  std::vector<double> dmax(ns * ns, 0.0);
  for (std::size_t s = 0; s < ns; ++s)
    for (std::size_t t = 0; t < ns; ++t) {
      double m = 0;
      for (int fi = 0; fi < shells[s].kind; ++fi)
        for (int fj = 0; fj < shells[t].kind; ++fj) {
          const std::size_t e = static_cast<std::size_t>(shells[s].first + fi) +
                                static_cast<std::size_t>(n) * (shells[t].first + fj);
          m = std::max({m, std::abs(total[e]), std::abs(pa[e]), std::abs(pb[e])});
        }
      dmax[s * ns + t] = m;
    }

  const int nblocks = std::max(1, std::min(kBlocks, c.nshpair));
  const std::size_t width = 3 * static_cast<std::size_t>(natom);
  std::vector<double> partial(static_cast<std::size_t>(nblocks) * width, 0.0);
  const double half_a = 0.5 * exchange_weight;
#pragma omp parallel
  {
    Workspace ws;
#pragma omp for schedule(dynamic, 1)
    for (int blk = 0; blk < nblocks; ++blk) {
      double* out = partial.data() + static_cast<std::size_t>(blk) * width;
      for (int P = c.nshpair - 1 - blk; P >= 0; P -= nblocks) {
        const int s0 = list.a[static_cast<std::size_t>(P)],
                  s1 = list.b[static_cast<std::size_t>(P)];
        for (int Q = 0; Q <= P; ++Q) {
          const int s2 = list.a[static_cast<std::size_t>(Q)],
                    s3 = list.b[static_cast<std::size_t>(Q)];
          const int at[4] = {atom[s0], atom[s1], atom[s2], atom[s3]};
          if (at[0] == at[1] && at[0] == at[2] && at[0] == at[3]) continue;
          if (only_atom >= 0 && at[0] != only_atom && at[1] != only_atom && at[2] != only_atom &&
              at[3] != only_atom)
            continue;
          auto dm = [&](int x, int y) {
            return dmax[static_cast<std::size_t>(x) * ns + static_cast<std::size_t>(y)];
          };
          const double dbound =
              std::max({dm(s0, s1) * dm(s2, s3), dm(s0, s2) * dm(s1, s3), dm(s0, s3) * dm(s1, s2)});
          const double q = qpair[static_cast<std::size_t>(P)] * qpair[static_cast<std::size_t>(Q)];
          if (q * dbound < kGradientNeglect) continue;
          const IntegralShell* sh[4] = {
              &shells[static_cast<std::size_t>(s0)], &shells[static_cast<std::size_t>(s1)],
              &shells[static_cast<std::size_t>(s2)], &shells[static_cast<std::size_t>(s3)]};
          const double deg =
              0.5 * (s0 != s1 ? 2.0 : 1.0) * (s2 != s3 ? 2.0 : 1.0) * (P != Q ? 2.0 : 1.0);
          // Γ over the functions of the quartet, row-major (a, b, c, d).
          const int k0 = sh[0]->kind, k1 = sh[1]->kind, k2 = sh[2]->kind, k3 = sh[3]->kind;
          ws.gamma.resize(static_cast<std::size_t>(k0) * k1 * k2 * k3);
          double* gw = ws.gamma.data();
          for (int fa = 0; fa < k0; ++fa) {
            const std::size_t i = static_cast<std::size_t>(sh[0]->first + fa);
            for (int fb = 0; fb < k1; ++fb) {
              const std::size_t j = static_cast<std::size_t>(sh[1]->first + fb);
              const double dij = total[i + n * j];
              for (int fc = 0; fc < k2; ++fc) {
                const std::size_t k = static_cast<std::size_t>(sh[2]->first + fc);
                const double aik = pa[i + n * k], ajk = pa[j + n * k];
                const double bik = pb[i + n * k], bjk = pb[j + n * k];
                for (int fd = 0; fd < k3; ++fd) {
                  const std::size_t l = static_cast<std::size_t>(sh[3]->first + fd);
                  const double coulomb = dij * total[k + n * l];
                  const double exchange = aik * pa[j + n * l] + pa[i + n * l] * ajk +
                                          bik * pb[j + n * l] + pb[i + n * l] * bjk;
                  *gw++ = deg * (coulomb - half_a * exchange);
                }
              }
            }
          }
          std::array<std::array<double, 3>, 4> g{};
          for (int x0 = 0; x0 < sh[0]->nsub; ++x0)
            for (int x1 = 0; x1 < sh[1]->nsub; ++x1)
              for (int x2 = 0; x2 < sh[2]->nsub; ++x2)
                for (int x3 = 0; x3 < sh[3]->nsub; ++x3) {
                  const int sub[4] = {x0, x1, x2, x3};
                  if (!cartesian_gamma(sh, sub, ws.gamma.data(), ws)) continue;
                  quartet_derivative(sh, sub, ws, g);
                }
          for (int t = 0; t < 4; ++t)
            for (int k = 0; k < 3; ++k) out[3 * static_cast<std::size_t>(at[t]) + k] += g[t][k];
        }
      }
    }
  }
  for (int blk = 0; blk < nblocks; ++blk)
    for (std::size_t i = 0; i < width; ++i)
      grad[i] += partial[static_cast<std::size_t>(blk) * width + i];
}

}  // namespace norvik::integrals::two
