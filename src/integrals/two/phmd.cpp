#include "integrals/two/phmd.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/rys/rys_eri.h"
#include "integrals/two/cartesian.h"
#include "integrals/two/eri_engine.h"

namespace norvik::integrals::two {
namespace {

// How a class is brought into its canonical class: position k of the canonical
// quartet holds the caller's shell perm[k].
struct Canonical {
  int code = 0;
  std::array<int, 4> perm{};
};

constexpr Canonical canonicalise(int code) {
  int l[4] = {code / 27, (code / 9) % 3, (code / 3) % 3, code % 3};
  std::array<int, 4> perm{0, 1, 2, 3};
  if (l[perm[0]] < l[perm[1]]) std::swap(perm[0], perm[1]);
  if (l[perm[2]] < l[perm[3]]) std::swap(perm[2], perm[3]);
  const bool ket_higher =
      l[perm[2]] > l[perm[0]] || (l[perm[2]] == l[perm[0]] && l[perm[3]] > l[perm[1]]);
  if (ket_higher) perm = {perm[2], perm[3], perm[0], perm[1]};
  return {class_code(l[perm[0]], l[perm[1]], l[perm[2]], l[perm[3]]), perm};
}

constexpr std::array<Canonical, 81> make_canonical_table() {
  std::array<Canonical, 81> t{};
  for (int c = 0; c < 81; ++c) t[c] = canonicalise(c);
  return t;
}

// The two 81-entry tables of the route: canonical class and permutation.
constexpr std::array<Canonical, 81> kCanonical = make_canonical_table();

void compute(const BlockRequest& r, const Canonical& canon) {
  // Shell k of the canonical quartet.
  auto centre = [&](int s) {
    return std::array<double, 3>{r.centres[3 * s], r.centres[3 * s + 1], r.centres[3 * s + 2]};
  };
  auto exps = [&](int s) {
    return std::span<const double>(r.exponents + static_cast<std::ptrdiff_t>(s) * r.mxprsh,
                                   static_cast<std::size_t>(r.nprim[s]));
  };
  auto coefs = [&](int s) {
    return std::span<const double>(r.coefficients + static_cast<std::ptrdiff_t>(s) * r.mxprsh,
                                   static_cast<std::size_t>(r.nprim[s]));
  };
  const auto& p = canon.perm;
  std::vector<PrimitivePair> bra_prims, ket_prims;
  bra_prims.reserve(static_cast<std::size_t>(r.nprim[p[0]] * r.nprim[p[1]]));
  ket_prims.reserve(static_cast<std::size_t>(r.nprim[p[2]] * r.nprim[p[3]]));
  auto make_pair = [&](int s0, int s1, std::vector<PrimitivePair>& store) {
    const auto a = centre(s0), b = centre(s1);
    std::array<const double*, kMaxCombos> ca{coefs(s0).data()}, cb{coefs(s1).data()};
    make_primitive_pairs(a, exps(s0), b, exps(s1), 1, ca, cb, r.cutoff,
                         [&](const PrimitivePair& pp) { store.push_back(pp); });
    ShellPair sp;
    sp.la = sp.cla[0] = r.l[s0];
    sp.lb = sp.clb[0] = r.l[s1];
    sp.ab = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    sp.prims = store;
    for (const auto& pp : store) sp.bound = std::max(sp.bound, pp.bound);
    return sp;
  };
  const ShellPair bra = make_pair(p[0], p[1], bra_prims);
  const ShellPair ket = make_pair(p[2], p[3], ket_prims);
  const int n[4] = {ncart(bra.la), ncart(bra.lb), ncart(ket.la), ncart(ket.lb)};
  std::array<double, 6 * 6 * 6 * 6> zero{};
  const double* block = zero.data();
  EngineWorkspace ws;
  if (!bra.prims.empty() && !ket.prims.empty()) block = eri_canonical(bra, ket, ws);

  // Scatter back into the caller's shell order.
  const std::ptrdiff_t md = r.maxdim;
  const std::ptrdiff_t stride[4] = {1, md, md * md, md * md * md};
  const std::ptrdiff_t s0 = stride[p[0]], s1 = stride[p[1]], s2 = stride[p[2]], s3 = stride[p[3]];
  std::size_t t = 0;
  for (int i = 0; i < n[0]; ++i)
    for (int j = 0; j < n[1]; ++j)
      for (int k = 0; k < n[2]; ++k)
        for (int l = 0; l < n[3]; ++l) r.eri[i * s0 + j * s1 + k * s2 + l * s3] = block[t++];
}

void check_mxprsh(const BlockRequest& r) {
  if (r.mxprsh > kMaxPrimitivesPerShell)
    throw Error(fortran::list_directed({"Error! Parameter mxprsh2 in int2phmd is small!"}));
}

void check_maxdim(const BlockRequest& r) {
  for (int k = 0; k < 4; ++k)
    if (ncart(r.l[k]) > r.maxdim)
      throw Error(
          fortran::list_directed({"Error! Parameter maxdim in int2phmd is smaller than a shell."}));
}

}  // namespace

int canonical_class(int code) {
  return kCanonical[code].code;
}

void int2phmd(const BlockRequest& request) {
  check_mxprsh(request);
  for (int k = 0; k < 4; ++k)
    if (request.l[k] < 0 || request.l[k] > kClosedFormMaxL)
      throw Error(fortran::list_directed({"Error! int2phmd supports s, p and d shells only."}));
  check_maxdim(request);
  const int code = class_code(request.l[0], request.l[1], request.l[2], request.l[3]);
  compute(request, kCanonical[code]);
}

void int2phmd_class(const BlockRequest& request, int canonical_code, std::string_view routine) {
  check_mxprsh(request);
  const bool closed_form =
      std::all_of(request.l, request.l + 4, [](int l) { return l >= 0 && l <= kClosedFormMaxL; });
  const int code =
      closed_form ? class_code(request.l[0], request.l[1], request.l[2], request.l[3]) : -1;
  if (code < 0 || kCanonical[code].code != canonical_code)
    throw Error(fortran::list_directed({"Error! Shell class does not match", routine}));
  check_maxdim(request);
  compute(request, kCanonical[code]);
}

}  // namespace norvik::integrals::two

namespace norvik::integrals::two {

void int2elec(const BlockRequest& request) {
  const std::size_t md = static_cast<std::size_t>(request.maxdim);
  std::fill_n(request.eri, md * md * md * md, 0.0);
  const int lmax = *std::max_element(request.l, request.l + 4);
  if (lmax <= kClosedFormMaxL) {
    int2phmd(request);
  } else if (lmax <= rys::kMaxAngularMomentum) {
    rys::check_route_limits(request.mxprsh, request.maxdim);
    rys::ShellData shell[4];
    for (int k = 0; k < 4; ++k) {
      shell[k].L = request.l[k];
      shell[k].nprim = request.nprim[k];
      shell[k].exps = request.exponents + static_cast<std::ptrdiff_t>(k) * request.mxprsh;
      shell[k].coefs = request.coefficients + static_cast<std::ptrdiff_t>(k) * request.mxprsh;
      shell[k].centre = {request.centres[3 * k], request.centres[3 * k + 1],
                         request.centres[3 * k + 2]};
    }
    rys::RysEngine engine;
    engine.compute(shell[0], shell[1], shell[2], shell[3], request.cutoff, request.eri,
                   request.maxdim);
  } else {
    std::cout << fortran::list_directed({"Error! Subroutine int2elec supports up to g function."})
              << '\n'
              << std::flush;
  }
}

}  // namespace norvik::integrals::two
