#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <utility>

namespace zeb::detail {

struct URLStorage : Storage {
  explicit URLStorage(NSString absolute) noexcept
      : Storage(ValueKind::URL, 0), text(std::move(absolute)) {}

  const NSString text;
};

}  // namespace zeb::detail
