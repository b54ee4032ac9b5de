// Marks what the library exports: everything else stays hidden in the shared build.
#pragma once

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
