#include "bench/Check.h"

#include <algorithm>
#include <random>
#include <stdexcept>

namespace Bench {

namespace {

constexpr Shape shape{ .pairs = 160 };
constexpr int steps = 6000;

struct Event {
   Step step;
   std::vector< std::size_t > pairs;
};

// Mostly single pairs; now and then a whole LAG goes or comes, everything is decided anew, or the
// peer answers all that is asked.
Event randomEvent( std::mt19937_64 & random ) {
   const std::size_t pair = random() % shape.pairs;
   const std::size_t kind = random() % 100;
   if ( kind < 80 ) {
      return { static_cast< Step >( kind % 4 ), { pair } };
   }
   if ( kind < 88 ) {
      Event event{ kind % 2 == 0 ? Step::memberDel : Step::memberIs, {} };
      for ( std::size_t at = 0; at < membersPerLag; ++at ) {
         event.pairs.push_back( lagOf( pair ) * membersPerLag + at );
      }
      return event;
   }
   if ( kind < 92 ) {
      return { Step::settle, { 0 } };
   }
   return { static_cast< Step >( static_cast< std::size_t >( Step::passHalfOff ) + kind % 4 ),
            { 0 } };
}

struct Runner {
   const Contestant * contestant;
   std::unique_ptr< AnyWorld > world;
};

[[noreturn]] void fail( const Contestant & contestant,
                        std::uint64_t seed,
                        int step,
                        const char * what ) {
   throw std::logic_error( std::string( contestant.interlock ) + ": " +
                           std::string( contestant.implementation ) + " differs in " + what +
                           ", seed " + std::to_string( seed ) + ", step " +
                           std::to_string( step ) );
}

bool ordered( const Contestant & contestant ) {
   return contestant.implementation == "floor";
}

void compare( const std::vector< Runner > & runners, std::uint64_t seed, int step ) {
   const Verdicts wanted = runners.front().world->verdicts();
   Verdicts sorted = wanted;
   std::ranges::sort( sorted );
   for ( const Runner & runner : runners ) {
      Verdicts found = runner.world->verdicts();
      if ( ordered( *runner.contestant ) && found != wanted ) {
         fail( *runner.contestant, seed, step, "the order of the verdicts" );
      }
      std::ranges::sort( found );
      if ( found != sorted ) {
         fail( *runner.contestant, seed, step, "the verdicts" );
      }
      if ( runner.world->heard() != runners.front().world->heard() ) {
         fail( *runner.contestant, seed, step, "how many verdicts were told" );
      }
   }
}

// What belongs to one event: the floor keeps its deadlines in another way, so that what comes with
// those is left out.
bool recordsAreAlike( Step step ) {
   return step == Step::inputIs || step == Step::inputDel;
}

} // namespace

void check( const std::vector< Contestant > & contestants, std::uint64_t seed ) {
   std::vector< Runner > runners;
   runners.reserve( contestants.size() );
   for ( const Contestant & contestant : contestants ) {
      runners.push_back( { &contestant, contestant.make( shape ) } );
   }
   std::mt19937_64 random( seed );
   compare( runners, seed, 0 );
   for ( int step = 1; step <= steps; ++step ) {
      const Event event = randomEvent( random );
      std::uint64_t wanted = 0;
      for ( const Runner & runner : runners ) {
         const std::uint64_t before = runner.world->records();
         for ( const std::size_t pair : event.pairs ) {
            runner.world->apply( event.step, pair );
         }
         const std::uint64_t records = runner.world->records() - before;
         if ( &runner == &runners.front() ) {
            wanted = records;
         } else if ( ordered( *runner.contestant ) && runner.contestant->traced &&
                     recordsAreAlike( event.step ) && records != wanted ) {
            fail( *runner.contestant, seed, step, "the number of records" );
         }
      }
      if ( step % 16 == 0 || step == steps ) {
         compare( runners, seed, step );
      }
   }
}

} // namespace Bench
