#pragma once

namespace zeb {

/// One visitor made of several callables, for `std::visit`.
template <class... Visitors>
struct Overloaded : Visitors... {
  using Visitors::operator()...;
};

}  // namespace zeb
