// Placeholder: replaced by the full list-directed reader.
#include "common/list_input.h"
namespace norvik::fortran {
ReadStatus ListReader::read(std::span<const Target>) { return ReadStatus::bad_value; }
ReadStatus ListReader::read_record(std::string&, int) { return ReadStatus::bad_value; }
}  // namespace norvik::fortran
