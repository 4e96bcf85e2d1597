// Compiles all public headers after headers that define many macros: the real ones if they are
// installed, and the usual names otherwise. The test is that this file compiles.

// Standard headers do not compile after a macro min() either, and are usually included first.
#include <bits/stdc++.h>

#if __has_include(<QObject>)
#include <QObject>
#else
#define signals public
#define slots
#define emit
#define foreach(variable, container) for (variable : container)
#define forever for (;;)
#endif

#if __has_include(<glib.h>)
#include <glib.h>
#else
#define TRUE 1
#define FALSE 0
#define MIN(a, b) ((a) < (b) ? (a) : (b))
#define MAX(a, b) ((a) > (b) ? (a) : (b))
#define ABS(a) ((a) < 0 ? -(a) : (a))
#define CLAMP(x, low, high) ((x) > (high) ? (high) : (x) < (low) ? (low) : (x))
#endif

// C headers
#include <sys/sysmacros.h>
#undef linux
#define linux 1
#undef unix
#define unix 1
#undef I
#define I 1.0i

// Window systems: the names that C++ headers are likely to use
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
#define CALLBACK
#define ERROR 0
#define GetObject GetObjectW
#define None 0L
#define Bool int
#define Status int
#define Success 0
#define True 1
#define False 0
#define Always 2

#include "AllHeaders.h"
