// The Becke partition of space into fuzzy atomic cells, and its derivatives
// with respect to the nuclear positions.
//
// With r_A = |r − R_A| and R_AB = |R_A − R_B|:
//   μ_AB(r) = (r_A − r_B) / R_AB,  p(x) = x(3 − x²)/2,  f_k = p applied k times,
//   s_k(μ) = (1 − f_k(μ))/2,  P_A(r) = Π_{B≠A} s_3(μ_AB(r)),  Z(r) = Σ_B P_B(r),
// and the partition weight of atom A at r is w_A(r) = P_A(r)/Z(r).  Atoms are
// 0-based here; positions are (3, natom), the unit cancels in μ.
#pragma once

#include <array>
#include <span>
#include <vector>

namespace norvik::dft {

using Point = std::array<double, 3>;

double becke_p(double x);
double becke_f(int k, double mu);
double becke_s(int k, double mu);
double mu_ab(std::span<const double> coords, int a, int b, const Point& r);
// P_A(r); the product runs over B in order from 1.0.
double cell_product(std::span<const double> coords, int a, const Point& r);
// Z(r) = Σ_B P_B(r), summed in order of B from 0.0.
double cell_sum(std::span<const double> coords, const Point& r);
// w_A(r) = P_A(r) / Z(r).
double fuzzy_weight(std::span<const double> coords, int a, const Point& r);

// ∂μ_AB/∂R_A at fixed r.
Point grad_mu(std::span<const double> coords, int a, int b, const Point& r);
// ∂P_A/∂R_C at fixed r.
Point grad_cell_product(std::span<const double> coords, int a, int c, const Point& r);
// ∂Z/∂R_C at fixed r.
Point grad_cell_sum(std::span<const double> coords, int c, const Point& r);
// ∂w_A/∂R_C at fixed r.
Point grad_fuzzy(std::span<const double> coords, int a, int c, const Point& r);
// The derivative of the partition weight of a grid point that belongs to atom
// A and moves with it (r = R_A + t): for each atom C, ∂w_A/∂R_C, with the
// motion of r included for C = A (so the columns sum to zero).  `grad` is
// (3, natom).
void grad_point_weight(std::span<const double> coords, int a, const Point& r,
                       std::span<double> grad);

// grad_point_weight for the many points of a molecular grid: the pair
// quantities s(μ_BD), s'(μ_BD) and the products of all but one factor of
// every P_B are formed once per point, so a point costs O(natom²) instead of
// O(natom³).  Holds the positions and its own work arrays: one per thread.
class MovingPointWeight {
 public:
  explicit MovingPointWeight(std::span<const double> coords);

  // w_A(r) of a point of atom `a`, and ∂w_A/∂R_C of the point moving with A
  // into `grad` ((3, natom)).
  double operator()(int a, const Point& r, std::span<double> grad);

 private:
  int n_ = 0;
  std::vector<double> coords_;      // (3, natom)
  std::vector<double> inv_dist_;    // (natom, natom) 1/R_BD
  std::vector<double> dist_;        // (natom) |r − R_B|
  std::vector<double> unit_;        // (3, natom) (r − R_B)/|r − R_B|
  std::vector<double> mu_, ds_;     // (natom, natom) μ_BD and s'(μ_BD)
  std::vector<double> s_, others_;  // (natom, natom) s(μ_BD), Π_{E≠B,D} s(μ_BE)
};

}  // namespace norvik::dft
