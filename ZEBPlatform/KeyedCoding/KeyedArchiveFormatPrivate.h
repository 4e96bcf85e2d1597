#pragma once

namespace zeb::detail {

// The document is JSON:
//
//     {"archive":"keyed","version":1,"class":"Track","fields":{"title":"…","seconds":215}}

inline constexpr const char* archiveKey = "archive";
inline constexpr const char* archiveKind = "keyed";
inline constexpr const char* versionKey = "version";
inline constexpr int archiveVersion = 1;
inline constexpr const char* classKey = "class";
inline constexpr const char* fieldsKey = "fields";

}  // namespace zeb::detail
