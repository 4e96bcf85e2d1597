#pragma once

namespace zeb {

/// Plain records of doubles, in the unit that their user chooses.
using CGFloat = double;

struct CGPoint {
  CGFloat x = 0;
  CGFloat y = 0;

  bool operator==(const CGPoint&) const = default;
};

struct CGSize {
  CGFloat width = 0;
  CGFloat height = 0;

  bool operator==(const CGSize&) const = default;
};

struct CGRect {
  CGPoint origin;
  CGSize size;

  bool operator==(const CGRect&) const = default;
};

/// The matrix that maps (x, y) to (a·x + c·y + tx, b·x + d·y + ty).
struct CGAffineTransform {
  CGFloat a = 0;
  CGFloat b = 0;
  CGFloat c = 0;
  CGFloat d = 0;
  CGFloat tx = 0;
  CGFloat ty = 0;

  bool operator==(const CGAffineTransform&) const = default;
};

inline constexpr CGAffineTransform CGAffineTransformIdentity{1, 0, 0, 1, 0, 0};

}  // namespace zeb
