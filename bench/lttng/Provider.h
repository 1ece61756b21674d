// The tracepoint of the LTTng comparison. The macros of lttng/tracepoint.h include this file
// several times, so it has no plain include guard.

#undef LTTNG_UST_TRACEPOINT_PROVIDER
#define LTTNG_UST_TRACEPOINT_PROVIDER interlock_bench

#undef LTTNG_UST_TRACEPOINT_INCLUDE
#define LTTNG_UST_TRACEPOINT_INCLUDE "bench/lttng/Provider.h"

#if !defined( BENCH_LTTNG_PROVIDER_H ) || defined( LTTNG_UST_TRACEPOINT_HEADER_MULTI_READ )
#define BENCH_LTTNG_PROVIDER_H

#include <lttng/tracepoint.h>

// clang-format off: the macros have a layout of their own
LTTNG_UST_TRACEPOINT_EVENT(
   interlock_bench,
   handle_member,
   LTTNG_UST_TP_ARGS( const char *, member, const char *, lag ),
   LTTNG_UST_TP_FIELDS(
      lttng_ust_field_string( member, member )
      lttng_ust_field_string( lag, lag ) ) )
// clang-format on

#endif

#include <lttng/tracepoint-event.h>
