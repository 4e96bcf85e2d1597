#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zeb {

// System controls: facts and settings of the kernel and the machine that are read by a pair of
// numbers or by a name.
//
//   name             numbers   value
//   kern.ostype      1, 1      the kernel's name: "Linux"
//   kern.osrelease   1, 2      the kernel's release, such as "6.1.0-18-amd64"
//   kern.version     1, 4      release, compiler and build of the kernel in one line
//   kern.maxproc     1, 6      how many processes and threads the user may have
//   kern.maxfiles    1, 7      how many files the system can have open
//   kern.argmax      1, 8      bytes of arguments and environment that a new program may get
//   kern.hostname    1, 10     the machine's name
//   kern.osversion   1, 65     the kernel's build
//   hw.machine       6, 1      the machine's model; its instruction set if the firmware names none
//   hw.ncpu          6, 3      the machine's processors
//   hw.byteorder     6, 4      1234 if the lowest byte of a number comes first, else 4321
//   hw.pagesize      6, 7      bytes of a page of memory
//   hw.memsize       6, 24     bytes of the machine's memory
//   hw.activecpu     6, 25     the processors that the process may run on
//   kernel.…, vm.…, net.… and others     the file /proc/sys/kernel/… and so on
//
// Any other name is a path below /proc/sys with "." in place of "/". A "." within an entry's name
// is written as "/": "net.ipv4.conf.eth0/100.forwarding". No name leads out of that folder.
//
// A value is the bytes of a text, mostly UTF-8, without line ends at its end; numbers are decimal.
//
// The functions return 0 or the system's error number: ENOENT or ENOTDIR if there is no such
// control, EISDIR for a folder of controls, EINVAL for a control without any bytes (an empty line
// is a value), EACCES or EPERM if the process may not read it, ENAMETOOLONG for a name of 4096
// bytes or more, EFBIG for a value of more than 1 MiB. They set `value` only if they succeed. All
// functions may be called from any thread.

int readSystemControl(int type, int subtype, std::string& value);
int readSystemControl(std::string_view name, std::string& value);

/// The same for a control whose value is one integer of four bytes, with or without a sign: from
/// 2147483648 to 4294967295 the result is the negative number of the same bits. EINVAL if the value
/// is no number, and ENOMEM, as for a value that exceeds the room for it, if the number needs more
/// bytes.
int readSystemControl(int type, int subtype, std::int32_t& value);
int readSystemControl(std::string_view name, std::int32_t& value);

}  // namespace zeb
