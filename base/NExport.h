#pragma once

// CFGDECK_API marks what the shared library exports. Everything else is
// hidden, so the exported surface is exactly the library's entry points and
// the classes that appear in their signatures.
//
//   CFGDECK_BUILDING  set while compiling the library's own sources
//   CFGDECK_STATIC    set by consumers that link the layer archives directly
//                     (the tests and the command-line tool)
#if defined(CFGDECK_BUILDING)
#if defined(_WIN32)
#define CFGDECK_API __declspec(dllexport)
#else
#define CFGDECK_API __attribute__((visibility("default")))
#endif
#elif defined(CFGDECK_STATIC)
#define CFGDECK_API
#elif defined(_WIN32)
#define CFGDECK_API __declspec(dllimport)
#else
#define CFGDECK_API
#endif

// Flat entry points keep C linkage so that their exported names are the plain
// names a host looks up.
#define CFGDECK_EXTERN_C extern "C" CFGDECK_API
