#pragma once

#include <string>

namespace zeb::detail {

/// "setTitle:" for "title".
inline std::string setterName(std::string property) {
  if (!property.empty() && property[0] >= 'a' && property[0] <= 'z') {
    property[0] = static_cast<char>(property[0] - 'a' + 'A');
  }
  return "set" + property + ":";
}

}  // namespace zeb::detail
