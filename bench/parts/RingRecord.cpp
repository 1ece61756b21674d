// One record with two interfaces: the library's, the floor's with the same bytes in the same cell,
// a bare copy of a record with a time stamp (numbers instead of names), and spdlog's ring. LTTng is
// in a program of its own, because it starts threads. All of these read the clock for each record;
// those that are named event write records as they come within an event, where 16 of them share a
// read. Those without arguments come as often in an event as those with interfaces.

#include "bench/Registry.h"
#include "bench/baseline/floor/Ring.h"
#include "bench/baseline/usual/Trace.h"
#include "platform/Jotter/Duplog.h"
#include "platform/Vex/EventClock.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Bench::Parts {

namespace {

// Names come round, as they do on a switch, but stay in the nearest cache.
constexpr std::size_t names = 64;

std::optional< Vex::EventScope > scopeOf( bool event ) {
   return event ? std::optional< Vex::EventScope >( std::in_place ) : std::nullopt;
}

void ours( benchmark::State & state, bool event ) {
   static const Vex::TextTrace text( "InterlockBench", "bench/parts" );
   static const Jotter::Duplog duplog( text );
   std::vector< Nodo::IntfId > members;
   std::vector< Nodo::IntfId > lags;
   for ( std::size_t at = 0; at < names; ++at ) {
      members.emplace_back( memberName( at ) );
      lags.emplace_back( lagName( lagOf( at ) ) );
   }
   const Vex::String prefix = "MlagEgressAclIntfInterlockSm::";
   const auto scope = scopeOf( event );
   std::size_t at = 0;
   for ( auto _ : state ) {
      at = ( at + 1 ) % names;
      duplog( Vex::at< 0 >(), prefix, "handleMember", " memberIntf : ", members[ at ],
              " lag : ", lags[ at ] );
   }
}

void oursWithoutArguments( benchmark::State & state, bool event ) {
   static const Vex::TextTrace text( "InterlockBench", "bench/parts" );
   static const Jotter::Duplog duplog( text );
   const auto scope = scopeOf( event );
   for ( auto _ : state ) {
      duplog( Vex::at< 3 >(), "lag member is active" );
   }
}

void floor( benchmark::State & state, bool event ) {
   Floor::Ring ring;
   ring.eventIs( event );
   Floor::Names::instance().reserve( names );
   std::size_t at = 0;
   for ( auto _ : state ) {
      at = ( at + 1 ) % names;
      ring( Floor::Site::handleMember, Floor::Intf::port( at ), Floor::Intf::lag( lagOf( at ) ) );
   }
   benchmark::DoNotOptimize( ring.written() );
}

void floorWithoutArguments( benchmark::State & state, bool event ) {
   Floor::Ring ring;
   ring.eventIs( event );
   for ( auto _ : state ) {
      ring( Floor::Site::memberActive );
   }
   benchmark::DoNotOptimize( ring.written() );
}

struct alignas( 64 ) BareRecord {
   std::uint64_t sequence;
   double time;
   std::uint64_t site;
   std::array< std::uint64_t, 2 > arguments;
};

void bare( benchmark::State & state, bool event ) {
   const auto scope = scopeOf( event );
   constexpr std::size_t mask = Jotter::TraceFile::defaultCells - 1;
   std::vector< BareRecord > ring( mask + 1 );
   std::uint64_t sequence = 0;
   std::size_t at = 0;
   for ( auto _ : state ) {
      at = ( at + 1 ) % names;
      ++sequence;
      ring[ sequence & mask ] = { sequence, Vex::eventTime().value(), 3, { at, lagOf( at ) } };
      benchmark::ClobberMemory();
   }
}

void spdlogRing( benchmark::State & state ) {
   const Usual::Trace trace;
   std::vector< Usual::Intf > members;
   std::vector< Usual::Intf > lags;
   for ( std::size_t at = 0; at < names; ++at ) {
      members.push_back( Usual::Names::instance().intern( memberName( at ) ) );
      lags.push_back( Usual::Names::instance().intern( lagName( lagOf( at ) ) ) );
   }
   std::size_t at = 0;
   for ( auto _ : state ) {
      at = ( at + 1 ) % names;
      trace.entry( "handleMember memberIntf : {} lag : {}", Usual::nameOf( members[ at ] ),
                   Usual::nameOf( lags[ at ] ) );
   }
}

// What a message costs whose text is not wanted and whose ring is not there.
void disabled( benchmark::State & state ) {
   static const Vex::TextTrace text( "InterlockBench", "bench/parts" );
   const Nodo::IntfId member( memberName( 0 ) );
   for ( auto _ : state ) {
      text( Vex::at< 0 >(), "lagMemberActive", " memberIntf : ", member );
      benchmark::ClobberMemory();
   }
}

void clockRead( benchmark::State & state ) {
   for ( auto _ : state ) {
      benchmark::DoNotOptimize( Vex::now() );
   }
}

} // namespace

void registerRingRecord() {
   for ( const bool event : { false, true } ) {
      const std::string where = event ? "record/event/" : "record/";
      const auto add = [ & ]( const char * name, void ( *function )( benchmark::State &, bool ) ) {
         benchmark::RegisterBenchmark( ( where + name ).c_str(), function, event );
      };
      add( "ours", ours );
      add( "ours-without-arguments", oursWithoutArguments );
      add( "floor", floor );
      add( "floor-without-arguments", floorWithoutArguments );
      add( "bare", bare );
   }
   benchmark::RegisterBenchmark( "record/spdlog", spdlogRing );
   benchmark::RegisterBenchmark( "record/clock-read", clockRead );
   benchmark::RegisterBenchmark( "record/disabled-text", disabled );
}

} // namespace Bench::Parts
