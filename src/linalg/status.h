// The outcome of a dense kernel, as the exported routines report it in their
// status argument (ILL): zero for success, a small positive code otherwise.
#pragma once

namespace norvik::linalg {

enum class Status : int {
  ok = 0,
  bad_dimension = 1,          // order < 0, or a leading dimension smaller than the order
  not_finite = 2,             // the input holds an infinity or a NaN
  not_positive_definite = 3,  // a Cholesky pivot fell to or below the tolerance
  no_convergence = 4,         // the tridiagonal QL/QR iteration ran out of sweeps
  singular = 5,               // a pivot of an inverse or an indefinite solve vanished
};

inline int code(Status s) {
  return static_cast<int>(s);
}

// The kernels' own unit round-off; a caller's tolerance below it is raised to it.
inline constexpr double kMachineEpsilon = 2e-16;

inline double effective_tolerance(double tolerance) {
  return tolerance > kMachineEpsilon ? tolerance : kMachineEpsilon;  // NaN gives eps too
}

}  // namespace norvik::linalg
