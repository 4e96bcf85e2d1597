#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace zeb {

/// Writes the return addresses of the calling thread's functions, beginning with those of this
/// function or its caller, and answers their number. Not in signal handlers.
std::size_t captureCallStack(std::span<void*> returnAddresses) noexcept;

/// Finds out what `captureInterruptedCallStack` has to know. Not in signal handlers.
void prepareInterruptedCapture() noexcept;

/// The same as `captureCallStack` for a signal handler, whose third argument is `context`: the
/// addresses continue with those of the interrupted code. If the signal interrupted the unwinder,
/// which moves saved registers while it raises an exception, the stack cannot be followed safely,
/// and the result is the address of the interrupted instruction alone. An unwinder that is linked
/// into the same image as this function (-static-libgcc) is not recognised. `addresses` is not
/// empty. Safe in signal handlers after `prepareInterruptedCapture` and a first call elsewhere,
/// which loads a library and allocates memory.
std::size_t captureInterruptedCallStack(std::span<void*> addresses, const void* context) noexcept;

/// One line for each return address, numbered from 0:
///
///     3   libexample.so                       0x00007f10a53c1d2e zeb::run(int) + 46
///
/// These are the position, the image's file name, the address, and the function with the offset
/// into it; for a function without a known name (see LoadedImages.h) the image's load address with
/// the offset into the image. The image is "???" if no image contains the address. Neither a
/// position nor an address contains white space, so the second piece between white space is the
/// image's name, unless that name contains white space itself. UTF-8 if the file names are. Any
/// thread, but not in signal handlers.
std::vector<std::string> callStackTexts(std::span<void* const> returnAddresses);

}  // namespace zeb
