// The exported Lebedev routines as a host sees them: the point order of every
// orbit of GEN_OH, the lookup tables at their edges, every fatal message, and the
// polar angles of XYZ_TO_TP.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "common/error.h"
#include "dft/grid/lebedev.h"
#include "norvik.h"

namespace {

// Components written as "+a", "-c" or "0", three per point; a, b, c are the
// orbit's parameters.  These are the orbits as the published generator lists them.
struct Orbit {
  int code;
  const char* points;
};
const Orbit kOrbits[] = {
    {1, "+a00 -a00 0+a0 0-a0 00+a 00-a"},
    {2, "0+a+a 0-a+a 0+a-a 0-a-a +a0+a -a0+a +a0-a -a0-a +a+a0 -a+a0 +a-a0 -a-a0"},
    {3, "+a+a+a -a+a+a +a-a+a -a-a+a +a+a-a -a+a-a +a-a-a -a-a-a"},
    {4,
     "+a+a+b -a+a+b +a-a+b -a-a+b +a+a-b -a+a-b +a-a-b -a-a-b "
     "+a+b+a -a+b+a +a-b+a -a-b+a +a+b-a -a+b-a +a-b-a -a-b-a "
     "+b+a+a -b+a+a +b-a+a -b-a+a +b+a-a -b+a-a +b-a-a -b-a-a"},
    {5,
     "+a+b0 -a+b0 +a-b0 -a-b0 +b+a0 -b+a0 +b-a0 -b-a0 "
     "+a0+b -a0+b +a0-b -a0-b +b0+a -b0+a +b0-a -b0-a "
     "0+a+b 0-a+b 0+a-b 0-a-b 0+b+a 0-b+a 0+b-a 0-b-a"},
    {6,
     "+a+b+c -a+b+c +a-b+c -a-b+c +a+b-c -a+b-c +a-b-c -a-b-c "
     "+a+c+b -a+c+b +a-c+b -a-c+b +a+c-b -a+c-b +a-c-b -a-c-b "
     "+b+a+c -b+a+c +b-a+c -b-a+c +b+a-c -b+a-c +b-a-c -b-a-c "
     "+b+c+a -b+c+a +b-c+a -b-c+a +b+c-a -b+c-a +b-c-a -b-c-a "
     "+c+a+b -c+a+b +c-a+b -c-a+b +c+a-b -c+a-b +c-a-b -c-a-b "
     "+c+b+a -c+b+a +c-b+a -c-b+a +c+b-a -c+b-a +c-b-a -c-b-a"},
};

std::vector<double> expected_points(const char* text, double a, double b, double c) {
  std::vector<double> xyz;
  for (const char* p = text; *p != '\0'; ++p) {
    if (*p == ' ') continue;
    if (*p == '0') {
      xyz.push_back(0.0);
      continue;
    }
    const double sign = *p == '-' ? -1.0 : 1.0;
    ++p;
    xyz.push_back(sign * (*p == 'a' ? a : *p == 'b' ? b : c));
  }
  return xyz;
}

TEST(LebedevOrbits, GenOhWritesEachOrbitInThePublishedOrder) {
  // Parameters in as the tables give them (codes 1–3 take none), a and b out.
  struct Case {
    double a_in, b_in, a_out, b_out, c;
  };
  const double a4 = 0.3, a5 = 0.4, a6 = 0.2, b6 = 0.5;
  const Case cases[] = {
      {0.0, 0.25, 1.0, 0.25, 0.0},
      {0.0, 0.25, 0.7071067811865476, 0.25, 0.0},
      {0.0, 0.25, 0.5773502691896257, 0.25, 0.0},  // √(1/3), not 1/√3 one bit above
      {a4, 0.25, a4, std::sqrt(1.0 - 2.0 * a4 * a4), 0.0},
      {a5, 0.25, a5, std::sqrt(1.0 - a5 * a5), 0.0},
      {a6, b6, a6, b6, std::sqrt(1.0 - a6 * a6 - b6 * b6)},
  };
  constexpr std::size_t kOffset = 3;   // the caller passes its arrays at this point
  constexpr double kUntouched = -7.0;  // what must survive outside the orbit
  for (const Orbit& orbit : kOrbits) {
    SCOPED_TRACE(testing::Message() << "code " << orbit.code);
    const Case& c = cases[orbit.code - 1];
    const std::vector<double> expected = expected_points(orbit.points, c.a_out, c.b_out, c.c);
    const std::size_t n = expected.size() / 3;

    std::vector<double> x(n + 2 * kOffset, kUntouched), y = x, z = x, w = x;
    norvik_int code = orbit.code, count = 5;
    double a = c.a_in, b = c.b_in;
    const double v = 0.125;
    GEN_OH(&code, &count, &a, &b, &v, x.data() + kOffset, y.data() + kOffset, z.data() + kOffset,
           w.data() + kOffset);
    EXPECT_EQ(count, 5 + static_cast<norvik_int>(n));
    EXPECT_EQ(static_cast<int>(n), norvik::dft::orbit_size(orbit.code));
    EXPECT_EQ(a, c.a_out);
    EXPECT_EQ(b, c.b_out);
    for (std::size_t k = 0; k < n + 2 * kOffset; ++k) {
      const bool inside = k >= kOffset && k < kOffset + n;
      if (!inside) {
        EXPECT_EQ(x[k], kUntouched);
        EXPECT_EQ(w[k], kUntouched);
        continue;
      }
      const std::size_t p = k - kOffset;
      EXPECT_EQ(x[k], expected[3 * p]) << "point " << p + 1;
      EXPECT_EQ(y[k], expected[3 * p + 1]) << "point " << p + 1;
      EXPECT_EQ(z[k], expected[3 * p + 2]) << "point " << p + 1;
      EXPECT_EQ(w[k], v);
    }
  }
}

TEST(LebedevTables, EdgesOfTheRuleIndices) {
  const auto available = [](norvik_int k) { return AVAILABLE_TABLE(&k); };
  const auto order = [](norvik_int k) { return ORDER_TABLE(&k); };
  const auto precision = [](norvik_int k) { return PRECISION_TABLE(&k); };
  EXPECT_EQ(order(16), 386);
  EXPECT_EQ(available(16), 0);
  EXPECT_EQ(available(0), -1);
  EXPECT_EQ(available(-3), -1);
  EXPECT_EQ(available(66), -1);
  EXPECT_EQ(order(1), 6);
  EXPECT_EQ(precision(1), 3);
  EXPECT_EQ(available(1), 1);
  EXPECT_EQ(order(65), 5810);
  EXPECT_EQ(precision(65), 131);
  EXPECT_EQ(available(65), 1);
  EXPECT_EQ(order(64), 5606);
  EXPECT_EQ(available(64), 0);
}

// Every fatal condition: the exact lines in the core, and through the exported
// routine the same lines on standard output and exit status 1.
TEST(LebedevMessagesDeathTest, EveryFatalConditionPrintsItsLinesAndStops) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  namespace dft = norvik::dft;
  std::vector<double> x(400), y(400), z(400), w(400);
  const dft::RuleArrays out{x, y, z, w};
  double a = 0.0, b = 0.0;
  struct Case {
    const char* what;
    std::function<void()> core;
    std::function<void()> exported;
    std::vector<std::string> lines;
  };
  const std::vector<std::string> order_error = {" ", "LD_BY_ORDER - Fatal error!",
                                                "  Unexpected value of ORDER."};
  const auto lebedev = [&](norvik_int n) {
    return [&, n] { LEBEDEV(&n, x.data(), y.data(), z.data(), w.data()); };
  };
  const auto gen_oh = [&](norvik_int code) {
    return [&, code] {
      norvik_int n = 0;
      const double v = 1.0;
      GEN_OH(&code, &n, &a, &b, &v, x.data(), y.data(), z.data(), w.data());
    };
  };
  const auto table = [](norvik_int (*routine)(const norvik_int*), norvik_int rule) {
    return [routine, rule] { routine(&rule); };
  };
  const Case cases[] = {
      {"LEBEDEV 386", [&] { dft::lebedev(386, out); }, lebedev(386), order_error},
      {"LEBEDEV 7", [&] { dft::lebedev(7, out); }, lebedev(7), order_error},
      {"GEN_OH 0",
       [&] { dft::generate_orbit(0, a, b, 1.0, out); },
       gen_oh(0),
       {" ", "GEN_OH - Fatal error!", "  Illegal value of CODE."}},
      {"GEN_OH 7",
       [&] { dft::generate_orbit(7, a, b, 1.0, out); },
       gen_oh(7),
       {" ", "GEN_OH - Fatal error!", "  Illegal value of CODE."}},
      {"ORDER_TABLE 0",
       [] { dft::rule_points(0); },
       table(ORDER_TABLE, 0),
       {" ", "ORDER_TABLE - Fatal error!", "  RULE < 1."}},
      {"ORDER_TABLE 66",
       [] { dft::rule_points(66); },
       table(ORDER_TABLE, 66),
       {" ", "ORDER_TABLE - Fatal error!", "  RULE_MAX < RULE."}},
      {"PRECISION_TABLE 0",
       [] { dft::rule_precision(0); },
       table(PRECISION_TABLE, 0),
       {" ", "PRECISION_TABLE - Fatal error!", "  RULE < 1."}},
      {"PRECISION_TABLE 66",
       [] { dft::rule_precision(66); },
       table(PRECISION_TABLE, 66),
       {" ", "PRECISION_TABLE - Fatal error!", "  RULE_MAX < RULE."}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    try {
      c.core();
      ADD_FAILURE() << "no error";
    } catch (const norvik::Error& e) {
      EXPECT_EQ(e.lines(), c.lines);
    }
    // The whole output, each line ended; regex metacharacters of the texts escaped.
    std::string pattern = "(^|\n)";
    for (const std::string& line : c.lines) {
      for (char ch : line) {
        if (ch == '.') pattern += '\\';
        pattern += ch;
      }
      pattern += '\n';
    }
    pattern += '$';
    EXPECT_EXIT(
        {
          // The message goes to standard output; the child sends it to the stream
          // the death test reads.
          std::cout.rdbuf(std::cerr.rdbuf());
          c.exported();
        },
        ::testing::ExitedWithCode(1), pattern);
  }
}

TEST(LebedevAngles, XyzToTpAtThePolesAndInEveryQuadrant) {
  // acos and the conversion to degrees round at the level of 1e-14 degrees.
  constexpr double kDegreeTolerance = 1e-12;
  const double s = std::sqrt(0.5);
  const struct {
    double x, y, z, t, p;
  } cases[] = {
      {0.0, 0.0, 1.0, 0.0, 90.0},  // x² + y² = 0: the azimuth is arccos(x)
      {0.0, 0.0, -1.0, 180.0, 90.0},
      {1e-170, -1e-170, 1.0, 0.0, -90.0},  // x² + y² underflows: still arccos(x), y < 0
      {1.0, 0.0, 0.0, 90.0, 0.0},
      {0.0, 1.0, 0.0, 90.0, 90.0},
      {-1.0, 0.0, 0.0, 90.0, 180.0},
      {0.0, -1.0, 0.0, 90.0, -90.0},
      {s, s, 0.0, 90.0, 45.0},
      {-s, s, 0.0, 90.0, 135.0},
      {-s, -s, 0.0, 90.0, -135.0},
      {s, -s, 0.0, 90.0, -45.0},
      {0.5, 0.5, s, 45.0, 45.0},
      {-0.5, 0.5, -s, 135.0, 135.0},
      {0.5, -0.5, -s, 135.0, -45.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "(" << c.x << ", " << c.y << ", " << c.z << ")");
    double t = -1.0, p = -1.0;
    XYZ_TO_TP(&c.x, &c.y, &c.z, &t, &p);
    EXPECT_NEAR(t, c.t, kDegreeTolerance);
    EXPECT_NEAR(p, c.p, kDegreeTolerance);
  }
}

}  // namespace
