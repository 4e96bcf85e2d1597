#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zeb::bench {

/// Qt's side of the comparisons of observers. Implemented in a file that may include Qt's headers.
class QtObservation {
 public:
  virtual ~QtObservation() = default;

  /// An object with a property whose changed signal adds up the new values.
  virtual void setValue(std::int64_t value) = 0;
  virtual void setValueByName(std::int64_t value) = 0;
  virtual std::int64_t sum() const = 0;

  /// Emits a signal with each number below `count` to all receivers on another thread, by queued
  /// connections; returns when all have been called.
  virtual void emitQueued(std::size_t count) = 0;
};

/// Null if Qt is not installed.
std::unique_ptr<QtObservation> makeQtObservation(std::size_t receivers);

}  // namespace zeb::bench
