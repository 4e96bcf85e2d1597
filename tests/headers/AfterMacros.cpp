// Compiles all public headers after headers that define many macros: the real ones if they are
// installed, and then the usual names in any case. The test is that this file compiles.

// Standard headers do not compile after a macro min() either, and are usually included first.
#include <algorithm>
#include <any>
#include <array>
#include <atomic>
#include <bit>
#include <charconv>
#include <chrono>
#include <compare>
#include <concepts>
#include <condition_variable>
#include <deque>
#include <functional>
#include <limits>
#include <locale>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <thread>
#include <tuple>
#include <unordered_map>
#include <variant>
#include <vector>

#if __has_include(<QObject>)
#include <QObject>
#endif
#if __has_include(<glib.h>)
#include <glib.h>
#endif

// Qt
#undef signals
#define signals public
#undef slots
#define slots
#undef emit
#define emit
#undef foreach
#define foreach(variable, container) for (variable : container)
#undef forever
#define forever for (;;)

// GLib, and C headers
#undef TRUE
#define TRUE 1
#undef FALSE
#define FALSE 0
#undef MIN
#define MIN(a, b) ((a) < (b) ? (a) : (b))
#undef MAX
#define MAX(a, b) ((a) > (b) ? (a) : (b))
#undef ABS
#define ABS(a) ((a) < 0 ? -(a) : (a))
#undef CLAMP
#define CLAMP(x, low, high) ((x) > (high) ? (high) : (x) < (low) ? (low) : (x))
#undef major
#define major(device) ((device) >> 8)
#undef minor
#define minor(device) ((device) & 255)
#undef linux
#define linux 1
#undef unix
#define unix 1
#undef I
#define I 1.0i

// Window systems
#define min(a, b) ((a) < (b) ? (a) : (b))
#define max(a, b) ((a) > (b) ? (a) : (b))
#define interface struct
#define small char
#define near
#define far
#define IN
#define OUT
#define OPTIONAL
#define CONST const
#define VOID void
#define CALLBACK
#define ERROR 0
#define NO_ERROR 0L
#define DELETE (0x00010000L)
#define IGNORE 0
#define STRICT 1
#define ABSOLUTE 1
#define RELATIVE 2
#define OPAQUE 2
#define TRANSPARENT 1
#define DIFFERENCE 11
#define GetObject GetObjectW
#define SendMessage SendMessageW
#define GetMessage GetMessageW
#define CreateEvent CreateEventW
#define None 0L
#define Bool int
#define Status int
#define Success 0
#define True 1
#define False 0
#define Always 2
#define Complex 0
#define Above 0
#define Below 1
#define Unsorted 0
#define KeyPress 2
#define FocusIn 9
#define FocusOut 10
#define Expose 12
#define CursorShape 0
#define GrayScale 1

#include "AllHeaders.h"
