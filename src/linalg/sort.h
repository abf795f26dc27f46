// Ordering of eigenvalues (and of the vectors that go with them).
#pragma once

#include <span>

#include "linalg/matrix.h"

namespace norvik::linalg {

enum class Order { ascending, descending };

// Stable sorts: equal values keep their relative order, NaNs go last.
void sort_values(std::span<double> v, Order order);
void sort_values(std::span<double> v, std::span<int> companion, Order order);
// Sorts v and moves the columns of z (v.size() columns) with their values.
void sort_values(std::span<double> v, MatrixView z, Order order);

// Reverses the order of v and of the first v.size() columns of z.
void reverse_order(std::span<double> v, MatrixView z);

}  // namespace norvik::linalg
