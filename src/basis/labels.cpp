#include "basis/labels.h"

#include <array>

namespace norvik::basis {

namespace {

// The angular momenta a shell holds, as a bit set, and its lowest one.
unsigned held(const Shell& shell) {
  unsigned bits = 0;
  for (int f = 0; f < shell.kind; ++f) bits |= 1u << shell.functions[static_cast<std::size_t>(f)].L;
  return bits;
}

int lowest(unsigned bits) {
  int l = 0;
  while (bits != 0 && (bits & (1u << l)) == 0) ++l;
  return l;
}

// "s", "sp", "p", "d", "f" from the held momenta (the d companion is part of d).
std::string type_name(unsigned bits) {
  static constexpr std::array<char, 4> kLetter = {'s', 'p', 'd', 'f'};
  std::string name;
  for (std::size_t l = 0; l < kLetter.size(); ++l)
    if (bits & (1u << l)) name += kLetter[l];
  return name;
}

std::string component(const Function& f) {
  switch (f.L) {
    case 0:
      return "s";
    case 1:
      return f.M == -1 ? "py" : f.M == 0 ? "pz" : "px";
    case 2: {
      static constexpr std::array<const char*, 5> kD = {"dxy", "dyz", "dz2", "dxz", "dx2-y2"};
      return f.M == 10 ? "dr2" : kD[static_cast<std::size_t>(f.M + 2)];
    }
    default:
      return std::string("f") + (f.M > 0 ? "+" : "") + std::to_string(f.M);
  }
}

// The principal number of every shell.
std::vector<int> shell_numbers(const BasisSet& basis) {
  std::vector<int> numbers;
  for (std::size_t s = 0; s < basis.shells.size(); ++s) {
    const unsigned bits = held(basis.shells[s]);
    const int l = lowest(bits);
    int n = l + 1;
    for (std::size_t t = 0; t < s; ++t)
      if (basis.shells[t].atom == basis.shells[s].atom && (held(basis.shells[t]) & (1u << l))) ++n;
    numbers.push_back(n);
  }
  return numbers;
}

}  // namespace

std::vector<std::string> shell_labels(const BasisSet& basis) {
  const std::vector<int> numbers = shell_numbers(basis);
  std::vector<std::string> labels;
  for (std::size_t s = 0; s < basis.shells.size(); ++s)
    labels.push_back(std::to_string(numbers[s]) + type_name(held(basis.shells[s])));
  return labels;
}

std::vector<std::string> function_labels(const BasisSet& basis) {
  const std::vector<int> numbers = shell_numbers(basis);
  std::vector<std::string> labels;
  for (std::size_t s = 0; s < basis.shells.size(); ++s)
    for (int f = 0; f < basis.shells[s].kind; ++f)
      labels.push_back(std::to_string(numbers[s]) +
                       component(basis.shells[s].functions[static_cast<std::size_t>(f)]));
  return labels;
}

}  // namespace norvik::basis
