#pragma once

#include <ZEBPlatform/Runtime/Class.h>

#include <initializer_list>
#include <string_view>

namespace zeb {
struct ClassMember;
}

namespace zeb::detail {

/// A class without methods. Throws NSException (NSInvalidArgumentException) if the name is taken.
Class* createClass(std::string_view name, Class* superclass) ZEB_EXCLUDES(classChanges);

}  // namespace zeb::detail
