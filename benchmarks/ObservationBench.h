#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zeb::bench {

/// Qt's side of the comparisons about observation, in a file of its own.
class QtObservation {
 public:
  virtual ~QtObservation() = default;

  /// An object with a property whose changed signal adds up the new values.
  virtual void setValue(std::int64_t value) = 0;
  virtual void setValueByName(std::int64_t value) = 0;
  virtual std::int64_t sum() const = 0;

  /// Emits a signal with each number below `count` to `receivers` objects on another thread, by queued
  /// connections; answers when all have been called.
  virtual void emitQueued(std::size_t count) = 0;
};

/// Null without Qt.
std::unique_ptr<QtObservation> makeQtObservation(std::size_t receivers);

}  // namespace zeb::bench
