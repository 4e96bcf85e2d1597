#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace zeb::bench {

/// The same operations on another library's list of values. Each answers the result's count.
class ListPeer {
 public:
  virtual ~ListPeer() = default;

  /// Integers plus one, or the lengths of strings.
  virtual std::size_t map() const = 0;
  /// Even integers, or strings of even length.
  virtual std::size_t filter() const = 0;
  /// In ascending order, stable.
  virtual std::size_t sort() const = 0;
};

std::unique_ptr<ListPeer> makeQtIntegers(std::span<const std::int64_t> integers);
std::unique_ptr<ListPeer> makeQtStrings(std::span<const std::string> strings);

}  // namespace zeb::bench
