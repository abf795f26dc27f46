// Exported bond tables of the report.
#include <span>

#include "abi/abi_support.h"
#include "norvik/report_bonds.h"
#include "report/bond_sections.h"

namespace {

using norvik::abi::append_to;
using norvik::abi::count;
using norvik::abi::guarded;
using norvik::report::BondTable;

void write(BondTable table, const norvik_int* natom, const double* pos, const norvik_int* zat,
           const char* report) {
  guarded([&] {
    const std::size_t n = count(*natom);
    append_to(report, norvik::report::bond_table(table, {pos, 3 * n}, {zat, n}));
  });
}

}  // namespace

extern "C" {

NORVIK_API void WRITE_BOND_TYPEH2(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kH2, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEH2O(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kH2O, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEH2O2(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kH2O2, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEC2H2(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kC2H2, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEC2H4(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kC2H4, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEC2H6(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kC2H6, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEB2H6(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kB2H6, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPECHCL3(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kCHCl3, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPECOCL2(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kCOCl2, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPECOH2(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kCOH2, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEN2O(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kN2O, natom, pos, zat, report);
}
NORVIK_API void WRITE_BOND_TYPEPF5(NORVIK_BOND_TABLE_ARGS) {
  write(BondTable::kPF5, natom, pos, zat, report);
}

}  // extern "C"
