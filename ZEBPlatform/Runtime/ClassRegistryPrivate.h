#pragma once

#include <ZEBPlatform/Runtime/Class.h>

#include <initializer_list>
#include <mutex>
#include <string_view>

namespace zeb {
struct ClassMember;
}

namespace zeb::detail {

/// Held while a class is made or changed.
std::mutex& classChanges();

/// A class without methods. Throws NSException (NSInvalidArgumentException) when the name is taken.
Class* createClass(std::string_view name, Class* superclass);

}  // namespace zeb::detail
