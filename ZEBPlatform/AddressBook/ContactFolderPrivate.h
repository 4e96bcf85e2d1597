#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSError.h>

#include <cstdint>
#include <string>

namespace zeb::detail {

/// All contacts of the folder, unified, with these keys. Nil and an error if the folder cannot be
/// read; empty if it does not exist. Logs what is broken, once. Any thread.
NSArray contactsOfFolder(const std::string& path, std::uint32_t keys, NSError* error);

}  // namespace zeb::detail
