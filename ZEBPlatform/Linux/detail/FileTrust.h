#pragma once

#include <string>

namespace zeb {

/// Whether the program has rights that the user who started it lacks, from a set-uid or set-gid
/// file or from file capabilities (AT_SECURE). The starting user's choices must not decide then
/// which code runs.
bool hasRaisedPrivileges() noexcept;

/// Answers why users other than root and the process's own user could change or replace the regular
/// file at `path`; empty if no other user could. `path` is absolute, without links, "." and "..".
///
/// The file and the folders above it must belong to root or, unless the program has raised
/// privileges, to the process's user. The file must not be writable by its group or by others. A
/// folder must not be writable by others, nor by a group, except the root group and a group with
/// the owner's own number, which by convention has no other members. Sticky folders such as /tmp
/// may be writable, because users cannot replace other users' entries there. Folders that are also
/// above the running program are not examined, unless it has raised privileges: a user who could
/// change them could replace the program itself. Any thread.
std::string reasonToDistrust(const std::string& path);

}  // namespace zeb
