#include "abi/abi_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "common/text_file.h"
#include "integrals/two/shells.h"
#include "integrals/two/two_electron.h"

namespace norvik::abi {

void text_out(char* buffer, int length, std::string_view text) {
  const auto n = std::min<std::size_t>(text.size(), static_cast<std::size_t>(length));
  std::copy_n(text.begin(), n, buffer);
  std::fill(buffer + n, buffer + length, ' ');
}

void append_to(const char* file, const std::vector<std::string>& lines) {
  io::append_lines(text_in(file, kFileNameLength), lines);
}

integrals::two::ContextView context_view(norvik_int nbasis, const norvik_int* nshell,
                                         const double* shelltab, const norvik_int* nshpair,
                                         const norvik_int* shpair, const norvik_int* npair,
                                         const norvik_int* pairlist, const norvik_int* pairmap,
                                         const double* vdiag, const double* vint,
                                         const double* thresh, bool reads_store) {
  namespace two = integrals::two;
  two::ContextView c;
  c.nbasis = nbasis;
  c.nshell = *nshell;
  c.shelltab = {shelltab, count(*nshell) * two::kShellRecord};
  c.nshpair = *nshpair;
  c.shpair = {shpair, 2 * count(*nshpair)};
  c.npair = *npair;
  c.pairlist = {pairlist, 2 * count(*npair)};
  c.pairmap = {pairmap, packed(nbasis)};
  c.vdiag = {vdiag, packed(nbasis)};
  c.vint = {vint, reads_store && vint != nullptr ? packed(*npair) : 0};
  c.thresh = *thresh;
  return c;
}

void terminate_with(const std::vector<std::string>& lines) {
  for (const auto& line : lines) std::cout << line << '\n';
  std::cout.flush();
  std::fflush(nullptr);
  std::exit(1);
}

}  // namespace norvik::abi
