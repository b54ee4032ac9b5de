// Marks what the library exports: everything else stays hidden in the shared build.
#pragma once

/// Stands before what the shared library exports. On Windows VKCL_SHARED_BUILD is defined while the
/// library is built, and VKCL_SHARED by programs that use it as a shared one.
#if defined(_WIN32)
#if defined(VKCL_SHARED_BUILD)
#define VKCL_API __declspec(dllexport)
#elif defined(VKCL_SHARED)
#define VKCL_API __declspec(dllimport)
#else
#define VKCL_API
#endif
#else
#define VKCL_API __attribute__((visibility("default")))
#endif
