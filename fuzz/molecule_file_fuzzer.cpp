// libFuzzer target: a molecule file through job setup (harness.h).
#include <cstddef>
#include <cstdint>

#include "harness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  norvik::fuzz::molecule_file({data, size});
  return 0;
}
