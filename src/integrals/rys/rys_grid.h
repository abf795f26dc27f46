// Layout of the piecewise-polynomial Rys tables.
//
// For n roots the argument range [0, xmax) is cut into bands of equal-width
// segments; on each segment every root t_i^2 and weight w_i is a polynomial of
// ncoef coefficients in (X - origin), origin being the segment's left end plus
// origin_offset (the centre of the segment for n = 1).  The coefficient block of
// segment s holds the n roots (or weights) one after another, each from the
// highest power down, at offset s * n * ncoef.  Beyond xmax the rule is the
// Gauss-Hermite limit t_i^2 = h_i / X, w_i = g_i / sqrt(X).  The instances are
// generated (integrals/generated/rysgrid.cpp).
#pragma once

namespace norvik::integrals::rys {

inline constexpr int kMaxRoots = 13;

struct GridBand {
  double start;          // left end of the band's first segment
  double width;          // width of each segment
  double origin_offset;  // polynomial origin relative to a segment's left end
  int count;             // number of segments in the band
};

struct GridLayout {
  int ncoef;                      // coefficients per root (or weight) and segment
  double xmax;                    // first argument of the asymptotic form
  int nbands;                     // bands in use (1 or 3)
  GridBand bands[3];              // in increasing X; segment indices run on across bands
  const double* roots;            // segments * n * ncoef coefficients of t_i^2
  const double* weights;          // the same for w_i
  const double* hermite_roots;    // h_i, n values
  const double* hermite_weights;  // g_i, n values
};

}  // namespace norvik::integrals::rys
