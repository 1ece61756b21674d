#pragma once

// Whether this program runs under a sanitizer, so that a test can do less of what takes long there.
// gcc says so by macros, clang by features.

#ifdef __has_feature
#define INTERLOCK_HAS_FEATURE( feature ) __has_feature( feature )
#else
#define INTERLOCK_HAS_FEATURE( feature ) 0
#endif

#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ ) ||                           \
   INTERLOCK_HAS_FEATURE( address_sanitizer ) || INTERLOCK_HAS_FEATURE( thread_sanitizer ) ||      \
   INTERLOCK_HAS_FEATURE( memory_sanitizer )
inline constexpr bool sanitized = true;
#else
inline constexpr bool sanitized = false;
#endif

#undef INTERLOCK_HAS_FEATURE
