#pragma once

#include <string>

namespace zeb {

/// Whether the program got rights that whoever started it lacks: by a set-uid or set-gid file or by file
/// capabilities (AT_SECURE). What the starting user can choose must not decide then what code runs.
bool hasRaisedPrivileges() noexcept;

/// Why somebody other than root and the process's own user could change the regular file at `path`, or
/// put another in its place; empty when nobody else could. `path` is absolute, without links, "." and
/// "..".
///
/// The file and the folders above it must belong to root or, unless the program has raised privileges, to
/// the process's user. The file must not be writable by its group or by others. A folder must not be
/// writable by others either, nor by a group, except the root group and a group with the owner's own
/// number, which by convention has no other members. Sticky folders such as /tmp may be writable, because
/// nobody can exchange other people's entries there. Folders that lie above the running program too are
/// not looked at, unless it has raised privileges: who could change them could exchange the program
/// itself. Any thread.
std::string reasonToDistrust(const std::string& path);

}  // namespace zeb
