// One record with two interface names through LTTng-UST. A program of its own, because the tracer
// starts threads, which would make counted references elsewhere dearer. A session that records
// interlock_bench:* has to be there when it starts; bench/run makes one.

#define LTTNG_UST_TRACEPOINT_CREATE_PROBES
#define LTTNG_UST_TRACEPOINT_DEFINE
#include "bench/World.h"
#include "bench/lttng/Provider.h"

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

namespace {

constexpr std::size_t names = 64;

void record( benchmark::State & state ) {
   if ( !lttng_ust_tracepoint_enabled( interlock_bench, handle_member ) ) {
      state.SkipWithError( "no session records interlock_bench:handle_member" );
   }
   std::vector< std::string > members;
   std::vector< std::string > lags;
   for ( std::size_t at = 0; at < names; ++at ) {
      members.push_back( Bench::memberName( at ) );
      lags.push_back( Bench::lagName( Bench::lagOf( at ) ) );
   }
   std::size_t at = 0;
   for ( auto _ : state ) {
      at = ( at + 1 ) % names;
      lttng_ust_tracepoint( interlock_bench, handle_member, members[ at ].c_str(),
                            lags[ at ].c_str() );
   }
}

BENCHMARK( record )->Name( "record/lttng" );

} // namespace

BENCHMARK_MAIN();
