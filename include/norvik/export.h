/* norvik: the one export macro of the library.
 *
 * Every exported routine is declared `NORVIK_API` and has C linkage, so that it is
 * found under its exact upper-case name (SETUP_HF, MAKEBASIS, ...) both in the ELF
 * shared object and in a 64-bit Windows DLL.  Everything else is hidden. */
#ifndef NORVIK_EXPORT_H
#define NORVIK_EXPORT_H

#if defined(_WIN32) || defined(__CYGWIN__)
#if defined(NORVIK_BUILDING)
#define NORVIK_API __declspec(dllexport)
#else
#define NORVIK_API __declspec(dllimport)
#endif
#else
#define NORVIK_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define NORVIK_EXTERN_C extern "C"
#define NORVIK_EXTERN_C_BEGIN extern "C" {
#define NORVIK_EXTERN_C_END }
#else
#define NORVIK_EXTERN_C extern
#define NORVIK_EXTERN_C_BEGIN
#define NORVIK_EXTERN_C_END
#endif

/* Argument types of the calling convention: everything by reference. */
#include <stdint.h>
typedef int32_t norvik_int;  /* 32-bit signed integer */
typedef int32_t norvik_bool; /* 32-bit flag: 0 false, nonzero true */

#endif
