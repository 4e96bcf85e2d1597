#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Runtime/Class.h>

#include <array>

namespace zeb::detail {

/// The root class and the classes of the value kinds, with the methods that people expect on them.
/// Registered together, on first use of the runtime.
struct FoundationClasses {
  Class* root;
  std::array<Class*, 32> immutableKinds{};  ///< by `ValueKind`
  std::array<Class*, 32> mutableKinds{};
};

const FoundationClasses& foundationClasses();

}  // namespace zeb::detail
