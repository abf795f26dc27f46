// Column-major matrix views over memory that the caller owns, and a small owning
// matrix for the work arrays that live for one call.
//
// A view is (pointer, rows, cols, leading dimension): element (i, j), both
// 0-based, is data[i + j*ld].  Views never own or keep the memory they see.
#pragma once

#include <cstddef>
#include <type_traits>
#include <vector>

namespace norvik::linalg {

using Index = std::ptrdiff_t;

template <class T>
class BasicMatrixView {
 public:
  BasicMatrixView() = default;
  BasicMatrixView(T* data, Index rows, Index cols, Index ld)
      : data_(data), rows_(rows), cols_(cols), ld_(ld) {}
  BasicMatrixView(T* data, Index rows, Index cols) : BasicMatrixView(data, rows, cols, rows) {}

  // A view of mutable data converts to a view of const data.
  template <class U, class = std::enable_if_t<std::is_same_v<const U, T> && !std::is_same_v<U, T>>>
  BasicMatrixView(const BasicMatrixView<U>& other)  // NOLINT: implicit on purpose
      : data_(other.data()), rows_(other.rows()), cols_(other.cols()), ld_(other.ld()) {}

  T& operator()(Index i, Index j) const { return data_[i + j * ld_]; }
  T* data() const { return data_; }
  T* col(Index j) const { return data_ + j * ld_; }
  Index rows() const { return rows_; }
  Index cols() const { return cols_; }
  Index ld() const { return ld_; }
  bool empty() const { return rows_ <= 0 || cols_ <= 0; }

  // The r×c block whose top-left element is (i, j).
  BasicMatrixView block(Index i, Index j, Index r, Index c) const {
    return BasicMatrixView(data_ + i + j * ld_, r, c, ld_);
  }
  // Columns j … j+c-1.
  BasicMatrixView columns(Index j, Index c) const { return block(0, j, rows_, c); }

 private:
  T* data_ = nullptr;
  Index rows_ = 0;
  Index cols_ = 0;
  Index ld_ = 0;
};

using MatrixView = BasicMatrixView<double>;
using ConstMatrixView = BasicMatrixView<const double>;

// A zero-initialised rows×cols column-major matrix with leading dimension rows.
class Matrix {
 public:
  Matrix() = default;
  Matrix(Index rows, Index cols)
      : data_(static_cast<std::size_t>(rows * cols), 0.0), rows_(rows), cols_(cols) {}

  double& operator()(Index i, Index j) { return data_[static_cast<std::size_t>(i + j * rows_)]; }
  double operator()(Index i, Index j) const {
    return data_[static_cast<std::size_t>(i + j * rows_)];
  }
  double* data() { return data_.data(); }
  const double* data() const { return data_.data(); }
  Index rows() const { return rows_; }
  Index cols() const { return cols_; }

  MatrixView view() { return {data_.data(), rows_, cols_, rows_}; }
  ConstMatrixView view() const { return {data_.data(), rows_, cols_, rows_}; }
  operator MatrixView() { return view(); }             // NOLINT: implicit on purpose
  operator ConstMatrixView() const { return view(); }  // NOLINT: implicit on purpose

 private:
  std::vector<double> data_;
  Index rows_ = 0;
  Index cols_ = 0;
};

// Elements of an n×n matrix (none for n < 1).
inline std::size_t square(Index n) {
  return n > 0 ? static_cast<std::size_t>(n) * static_cast<std::size_t>(n) : 0;
}

// Copies src into dst (same shape).
void copy(ConstMatrixView src, MatrixView dst);
// dst = srcᵀ (dst is src.cols()×src.rows()).
void transpose(ConstMatrixView src, MatrixView dst);
// Sets the n×n view to the identity.
void set_identity(MatrixView a);
// Replaces a square matrix by (A + Aᵀ)/2.
void symmetrize(MatrixView a);
// True when every element is finite.
bool all_finite(ConstMatrixView a);

}  // namespace norvik::linalg
