// Placeholder: replaced by the full formatter.
#include "common/fortran_format.h"
#include <stdexcept>
namespace norvik::fortran {
std::string edit_a(std::string_view text, int) { return std::string(text); }
std::string edit_i(std::int64_t value, int, int) { return std::to_string(value); }
std::string edit_f(double value, int, int) { return std::to_string(value); }
std::string edit_e(double value, int, int, int) { return std::to_string(value); }
std::string edit_es(double value, int, int, int) { return std::to_string(value); }
std::string format(std::string_view, std::span<const Value>) { return {}; }
std::string list_directed(std::span<const Value>) { return {}; }
}  // namespace norvik::fortran
