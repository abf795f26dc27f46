#include "integrals/two/quartets.h"

#include <algorithm>
#include <cmath>

#include "integrals/two/cartesian.h"

namespace norvik::integrals::two {

PairData make_pair_data(std::span<const IntegralShell> shells, std::span<const int> a,
                        std::span<const int> b) {
  PairData d;
  d.a.assign(a.begin(), a.end());
  d.b.assign(b.begin(), b.end());
  // Primitive pairs first (the spans are set once the vector stops growing).
  std::vector<std::pair<std::size_t, std::size_t>> ranges;
  auto add_group = [&](const IntegralShell& A, const IntegralShell& B, int ncombo, const int* sa,
                       const int* sb) {
    PairGroup g;
    int la = 0, lb = 0;
    for (int x = 0; x < ncombo; ++x) {
      la = std::max(la, A.sub[sa[x]].l);
      lb = std::max(lb, B.sub[sb[x]].l);
    }
    g.swapped = la < lb;
    g.max_l = std::max(la, lb);
    const IntegralShell& F = g.swapped ? B : A;
    const IntegralShell& S = g.swapped ? A : B;
    std::array<const double*, kMaxCombos> cf{}, cs{};
    g.pair.ncombo = ncombo;
    for (int x = 0; x < ncombo; ++x) {
      g.sa[x] = sa[x];
      g.sb[x] = sb[x];
      const SubShell& fs = g.swapped ? B.sub[sb[x]] : A.sub[sa[x]];
      const SubShell& ss = g.swapped ? A.sub[sa[x]] : B.sub[sb[x]];
      g.pair.cla[x] = fs.l;
      g.pair.clb[x] = ss.l;
      cf[x] = fs.coef.data();
      cs[x] = ss.coef.data();
    }
    g.pair.la = std::max(la, lb);
    g.pair.lb = std::min(la, lb);
    for (int k = 0; k < 3; ++k) g.pair.ab[k] = F.centre[k] - S.centre[k];
    const std::size_t begin = d.prims.size();
    make_primitive_pairs(F.centre, std::span<const double>(F.exponents.data(), F.nprim), S.centre,
                         std::span<const double>(S.exponents.data(), S.nprim), ncombo, cf, cs,
                         kPairCutoff, [&](const PrimitivePair& pp) { d.prims.push_back(pp); });
    ranges.emplace_back(begin, d.prims.size() - begin);
    d.groups.push_back(g);
  };
  for (std::size_t p = 0; p < a.size(); ++p) {
    const IntegralShell& A = shells[static_cast<std::size_t>(a[p])];
    const IntegralShell& B = shells[static_cast<std::size_t>(b[p])];
    d.group_offset.push_back(static_cast<int>(d.groups.size()));
    const bool together =
        A.nsub * B.nsub <= kMaxCombos && A.max_l <= kClosedFormMaxL && B.max_l <= kClosedFormMaxL;
    if (together) {
      int sa[kMaxCombos], sb[kMaxCombos], n = 0;
      for (int x = 0; x < A.nsub; ++x)
        for (int y = 0; y < B.nsub; ++y) {
          sa[n] = x;
          sb[n] = y;
          ++n;
        }
      add_group(A, B, n, sa, sb);
    } else {
      for (int x = 0; x < A.nsub; ++x)
        for (int y = 0; y < B.nsub; ++y) add_group(A, B, 1, &x, &y);
    }
  }
  for (std::size_t g = 0; g < d.groups.size(); ++g) {
    ShellPair& sp = d.groups[g].pair;
    sp.prims = std::span<const PrimitivePair>(d.prims).subspan(ranges[g].first, ranges[g].second);
    for (const auto& pp : sp.prims) sp.bound = std::max(sp.bound, pp.bound);
  }
  d.group_offset.push_back(static_cast<int>(d.groups.size()));
  return d;
}

namespace {

// Writes the Cartesian block `cart` (component strides st) of the sub-shell
// quartet `sub` into the function block.  A sub-shell whose functions are single
// components with coefficient 1 is gathered in function order straight away;
// the others keep their Cartesian components through the gather and are then
// transformed one index at a time.
void place(const IntegralShell* const sh[4], const int sub[4], const double* cart, const int st[4],
           double* block, std::vector<double>& scratch) {
  const int k1 = sh[1]->kind, k2 = sh[2]->kind, k3 = sh[3]->kind;
  const int* fl[4];
  int nf[4], n[4], off[4][28];
  bool plain[4];
  for (int s = 0; s < 4; ++s) {
    fl[s] = sh[s]->sub_fn[sub[s]].data();
    nf[s] = sh[s]->sub_nfn[sub[s]];
    plain[s] = sh[s]->sub_plain[sub[s]];
    if (plain[s]) {
      n[s] = nf[s];
      for (int f = 0; f < nf[s]; ++f) off[s][f] = sh[s]->fn[fl[s][f]].cart[0] * st[s];
    } else {
      n[s] = ncart(sh[s]->sub[sub[s]].l);
      for (int c = 0; c < n[s]; ++c) off[s][c] = c * st[s];
    }
  }
  if (plain[0] && plain[1] && plain[2] && plain[3]) {
    for (int a = 0; a < nf[0]; ++a)
      for (int b = 0; b < nf[1]; ++b) {
        double* row = block + (fl[0][a] * k1 + fl[1][b]) * k2 * k3;
        const double* src = cart + off[0][a] + off[1][b];
        for (int c = 0; c < nf[2]; ++c) {
          const double* s2 = src + off[2][c];
          double* r2 = row + fl[2][c] * k3;
          for (int d = 0; d < nf[3]; ++d) r2[fl[3][d]] = s2[off[3][d]];
        }
      }
    return;
  }
  // Dense gather [n0][n1][n2][n3], then one pass per non-plain index.
  std::size_t size = static_cast<std::size_t>(n[0]) * n[1] * n[2] * n[3];
  if (scratch.size() < 3 * size) scratch.resize(3 * size);
  double* x = scratch.data();
  {
    double* w = x;
    for (int a = 0; a < n[0]; ++a)
      for (int b = 0; b < n[1]; ++b)
        for (int c = 0; c < n[2]; ++c) {
          const double* src = cart + off[0][a] + off[1][b] + off[2][c];
          for (int d = 0; d < n[3]; ++d) *w++ = src[off[3][d]];
        }
  }
  double* y = x + 2 * size;
  for (int s = 0; s < 4; ++s) {
    if (plain[s]) continue;
    std::size_t outer = 1, inner = 1;
    for (int t = 0; t < s; ++t) outer *= static_cast<std::size_t>(n[t]);
    for (int t = s + 1; t < 4; ++t) inner *= static_cast<std::size_t>(n[t]);
    const std::size_t ns = static_cast<std::size_t>(n[s]);
    for (std::size_t o = 0; o < outer; ++o)
      for (int f = 0; f < nf[s]; ++f) {
        const FunctionMap& fm = sh[s]->fn[fl[s][f]];
        double* out =
            y + (o * static_cast<std::size_t>(nf[s]) + static_cast<std::size_t>(f)) * inner;
        const double* in0 = x + (o * ns + static_cast<std::size_t>(fm.cart[0])) * inner;
        const double c0 = fm.coef[0];
        for (std::size_t i = 0; i < inner; ++i) out[i] = c0 * in0[i];
        for (int t = 1; t < fm.nterm; ++t) {
          const double* in = x + (o * ns + static_cast<std::size_t>(fm.cart[t])) * inner;
          const double ct = fm.coef[t];
          for (std::size_t i = 0; i < inner; ++i) out[i] += ct * in[i];
        }
      }
    n[s] = nf[s];
    std::swap(x, y);
  }
  const double* w = x;
  for (int a = 0; a < nf[0]; ++a)
    for (int b = 0; b < nf[1]; ++b) {
      double* row = block + (fl[0][a] * k1 + fl[1][b]) * k2 * k3;
      for (int c = 0; c < nf[2]; ++c) {
        double* r2 = row + fl[2][c] * k3;
        for (int d = 0; d < nf[3]; ++d) r2[fl[3][d]] = *w++;
      }
    }
}

}  // namespace

void shell_quartet(std::span<const IntegralShell> shells, const PairData& pairs, int P, int Q,
                   double* block, QuartetWorkspace& ws) {
  const IntegralShell* sh[4] = {
      &shells[static_cast<std::size_t>(pairs.a[P])], &shells[static_cast<std::size_t>(pairs.b[P])],
      &shells[static_cast<std::size_t>(pairs.a[Q])], &shells[static_cast<std::size_t>(pairs.b[Q])]};
  // Every function quartet is written by exactly one sub-shell quartet, unless a
  // group has no surviving primitive pair: only then does the block need clearing.
  bool empty_group = false;
  for (int g = pairs.group_offset[P]; g < pairs.group_offset[P + 1]; ++g)
    empty_group = empty_group || pairs.groups[static_cast<std::size_t>(g)].pair.prims.empty();
  for (int g = pairs.group_offset[Q]; g < pairs.group_offset[Q + 1]; ++g)
    empty_group = empty_group || pairs.groups[static_cast<std::size_t>(g)].pair.prims.empty();
  if (empty_group) std::fill_n(block, sh[0]->kind * sh[1]->kind * sh[2]->kind * sh[3]->kind, 0.0);

  for (int gp = pairs.group_offset[P]; gp < pairs.group_offset[P + 1]; ++gp) {
    const PairGroup& bra = pairs.groups[static_cast<std::size_t>(gp)];
    if (bra.pair.prims.empty()) continue;
    for (int gq = pairs.group_offset[Q]; gq < pairs.group_offset[Q + 1]; ++gq) {
      const PairGroup& ket = pairs.groups[static_cast<std::size_t>(gq)];
      if (ket.pair.prims.empty()) continue;
      if (std::max(bra.max_l, ket.max_l) > kClosedFormMaxL) {
        // f and beyond: the Rys route, one sub-shell quartet at a time, in the
        // caller's shell order
        for (int x = 0; x < bra.pair.ncombo; ++x)
          for (int y = 0; y < ket.pair.ncombo; ++y) {
            const int sub[4] = {bra.sa[x], bra.sb[x], ket.sa[y], ket.sb[y]};
            rys::ShellData rs[4];
            int ld = 1;
            for (int s = 0; s < 4; ++s) {
              const SubShell& ss = sh[s]->sub[sub[s]];
              rs[s].L = ss.l;
              rs[s].nprim = sh[s]->nprim;
              rs[s].exps = sh[s]->exponents.data();
              rs[s].coefs = ss.coef.data();
              rs[s].centre = sh[s]->centre;
              ld = std::max(ld, ncart(ss.l));
            }
            ws.rys_block.assign(static_cast<std::size_t>(ld) * ld * ld * ld, 0.0);
            ws.rys.compute(rs[0], rs[1], rs[2], rs[3], kPairCutoff, ws.rys_block.data(), ld);
            const int st[4] = {1, ld, ld * ld, ld * ld * ld};
            place(sh, sub, ws.rys_block.data(), st, block, ws.transform);
          }
        continue;
      }
      const bool ket_first =
          ket.pair.la > bra.pair.la || (ket.pair.la == bra.pair.la && ket.pair.lb > bra.pair.lb);
      const ShellPair& first = ket_first ? ket.pair : bra.pair;
      const ShellPair& second = ket_first ? bra.pair : ket.pair;
      const double* out = eri_canonical(first, second, ws.engine, {kPrimitiveNeglect});
      const int bra_base = ket_first ? 2 : 0, ket_base = ket_first ? 0 : 2;
      for (int x = 0; x < first.ncombo; ++x) {
        for (int y = 0; y < second.ncombo; ++y) {
          // Strides of the block [first.cla][first.clb][second.cla][second.clb].
          const int n1 = ncart(first.clb[x]), n2 = ncart(second.cla[y]), n3 = ncart(second.clb[y]);
          const int stride_pos[4] = {n1 * n2 * n3, n2 * n3, n3, 1};
          const int bx = ket_first ? y : x, ky = ket_first ? x : y;
          const int st[4] = {stride_pos[bra_base + (bra.swapped ? 1 : 0)],
                             stride_pos[bra_base + (bra.swapped ? 0 : 1)],
                             stride_pos[ket_base + (ket.swapped ? 1 : 0)],
                             stride_pos[ket_base + (ket.swapped ? 0 : 1)]};
          const int sub[4] = {bra.sa[bx], bra.sb[bx], ket.sa[ky], ket.sb[ky]};
          place(sh, sub, out, st, block, ws.transform);
          out += combo_block_size(first, x, second, y);
        }
      }
    }
  }
}

}  // namespace norvik::integrals::two
