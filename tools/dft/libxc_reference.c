/* Reference values of the exchange-correlation functionals from libxc.
 *
 * Evaluates every functional of norvik's table that libxc also carries at a
 * fixed set of spin-polarised points and prints, in norvik's units (angstrom,
 * eV), the energy density, the five first derivatives and, for the local
 * functionals, the three second derivatives.  tools/dft/libxc_reference.sh
 * builds and runs it and writes tests/dft_functionals/data/libxc_reference.txt;
 * the test tests/dft_functionals/libxc_reference_test.cpp reads that file.
 *
 * The points are given in norvik's units and converted to atomic units with
 * the constants of include/norvik/common.h, the ones the library uses. */
#include <math.h>
#include <stdio.h>
#include <xc.h>

#include "norvik/common.h"

enum { NPOINT = 24 };

/* One point record: rho_a, rho_b [1/A^3], grad rho_a, grad rho_b [1/A^4]. */
static double points[NPOINT][8];

/* Total densities [1/A^3] from the dilute tail to the core of a heavy atom;
 * each takes three of the six spin and gradient patterns below. */
static const double kDensities[8] = {3e-6, 2e-4, 1e-2, 0.15, 1.3, 9.0, 70.0, 800.0};
/* zeta, the reduced gradients x_s = |grad rho_s| / rho_s^(4/3) and the cosine
 * of the angle between the two gradients. */
static const double kPatterns[6][4] = {
    {0.0, 0.0, 0.0, 0.0},     /* unpolarised, no gradient */
    {0.25, 0.4, 1.3, 0.3},    /* moderate */
    {-0.5, 6.0, 0.05, -0.6},  /* beta-rich, steep alpha */
    {0.9, 25.0, 3.0, 0.9},    /* nearly polarised, steep */
    {1.0, 2.0, 0.0, 0.0},     /* fully polarised, rho_b = 0 */
    {-0.999, 0.01, 80.0, 0.1} /* almost only beta */
};

static void make_points(void) {
  for (int i = 0; i < NPOINT; ++i) {
    const double rho = kDensities[i / 3];
    const double* p = kPatterns[(3 * (i / 3) + i % 3 + i / 6) % 6];
    const double ra = 0.5 * rho * (1.0 + p[0]);
    const double rb = 0.5 * rho * (1.0 - p[0]);
    const double na = p[1] * ra * cbrt(ra);
    const double nb = p[2] * rb * cbrt(rb);
    const double sn = sqrt(1.0 - p[3] * p[3]);
    double* r = points[i];
    r[0] = ra;
    r[1] = rb;
    r[2] = 0.6 * na;
    r[3] = 0.0;
    r[4] = 0.8 * na;
    r[5] = nb * 0.6 * p[3];
    r[6] = nb * sn;
    r[7] = nb * 0.8 * p[3];
  }
}

struct Functional {
  const char* name; /* norvik's name of the component or combination */
  int id;           /* libxc's number */
};

static const struct Functional kFunctionals[] = {
    {"S", XC_LDA_X},
    {"B", XC_GGA_X_B88},
    {"VWN5", XC_LDA_C_VWN},
    {"VWN3", XC_LDA_C_VWN_RPA}, /* the RPA fits interpolated with f(zeta) */
    {"PL", XC_LDA_C_PZ},
    {"GL", XC_LDA_C_GL},
    {"LYP", XC_GGA_C_LYP},
    {"OP", XC_GGA_C_OP_B88},
    {"B3LYP5", XC_HYB_GGA_XC_B3LYP5},
    {"B3LYP3", XC_HYB_GGA_XC_B3LYP},
};

int main(void) {
  const double a0 = NORVIK_BOHR_ANGSTROM;
  const double eh = NORVIK_HARTREE_EV;
  const double a03 = a0 * a0 * a0;
  const double a05 = a03 * a0 * a0;
  const double a08 = a05 * a03;
  make_points();

  printf("# libxc %s reference values, written by tools/dft/libxc_reference.sh\n",
         xc_version_string());
  printf("# (tools/dft/libxc_reference.c).  Units: angstrom and eV, converted with\n");
  printf("# bohr = %.10f A and hartree = %.10f eV.\n", a0, eh);
  printf("# point I rho_a rho_b grad_a(3) grad_b(3)           [1/A^3, 1/A^4]\n");
  printf("# NAME I a e v(5) f(3)   a: exact-exchange fraction of a combination;\n");
  printf("#   e [eV/A^3]; v = de/drho_a, de/drho_b [eV], de/dgamma_aa, de/dgamma_bb,\n");
  printf("#   de/dgamma_ab [eV A^5]; f = d2e/drho_a^2, d2e/drho_b^2, d2e/drho_a drho_b\n");
  printf("#   [eV A^3], nan for the gradient-corrected functionals.\n");
  printf("# Local functionals evaluated without libxc's screening of small densities and\n");
  printf("# of 1 - |zeta|, gradient-corrected ones with libxc's default thresholds.\n");
  printf("# norvik's VWN3 is libxc's VWN_RPA (VWN_1 interpolates the Ceperley-Alder fits\n");
  printf("# with f(zeta) and differs from it by up to 150%%).\n");
  for (int i = 0; i < NPOINT; ++i) {
    printf("point %2d", i + 1);
    for (int k = 0; k < 8; ++k) printf(" %.17g", points[i][k]);
    printf("\n");
  }

  for (size_t f = 0; f < sizeof kFunctionals / sizeof kFunctionals[0]; ++f) {
    xc_func_type func;
    if (xc_func_init(&func, kFunctionals[f].id, XC_POLARIZED) != 0) return 1;
    const int family = func.info->family;
    const int gga = family == XC_FAMILY_GGA || family == XC_FAMILY_HYB_GGA;
    /* libxc screens small densities, gradients and 1 - |zeta|.  The local
     * functionals stay finite at a zero spin density, so their screening is
     * switched off and the points meet the formulas themselves; the
     * gradient-corrected ones keep libxc's defaults, without which their libxc
     * forms divide by a zero spin density or gradient. */
    if (!gga) {
      xc_func_set_dens_threshold(&func, 1e-300);
      xc_func_set_zeta_threshold(&func, 1e-300);
    }
    const double exx = family == XC_FAMILY_HYB_GGA ? xc_hyb_exx_coef(&func) : 0.0;
    for (int i = 0; i < NPOINT; ++i) {
      const double* r = points[i];
      const double rho[2] = {r[0] * a03, r[1] * a03};
      const double sigma[3] = {(r[2] * r[2] + r[3] * r[3] + r[4] * r[4]) * a08,
                               (r[2] * r[5] + r[3] * r[6] + r[4] * r[7]) * a08,
                               (r[5] * r[5] + r[6] * r[6] + r[7] * r[7]) * a08};
      double zk = 0.0, vrho[2] = {0.0, 0.0}, vsigma[3] = {0.0, 0.0, 0.0};
      double v2[3] = {NAN, NAN, NAN};
      if (gga) {
        xc_gga_exc_vxc(&func, 1, rho, sigma, &zk, vrho, vsigma);
      } else {
        xc_lda_exc_vxc(&func, 1, rho, &zk, vrho);
        xc_lda_fxc(&func, 1, rho, v2);
      }
      /* e = zk (rho_a + rho_b) hartree/bohr^3; libxc orders sigma and the second
       * derivatives (aa, ab, bb), norvik (aa, bb, ab). */
      printf("%-6s %2d %.17g", kFunctionals[f].name, i + 1, exx);
      printf(" %.17g", zk * (rho[0] + rho[1]) * eh / a03);
      printf(" %.17g %.17g", vrho[0] * eh, vrho[1] * eh);
      printf(" %.17g %.17g %.17g", vsigma[0] * eh * a05, vsigma[2] * eh * a05,
             vsigma[1] * eh * a05);
      printf(" %.17g %.17g %.17g\n", v2[0] * eh * a03, v2[2] * eh * a03, v2[1] * eh * a03);
    }
    xc_func_end(&func);
  }
  return 0;
}
