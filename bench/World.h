#pragma once

// What is measured: a switch with its inputs, one interlock and whoever programs its LAGs, in one
// of several implementations. All do the same job; Check.h proves that they agree.
//
// A pair is a port and the LAG that it is to join. Pairs are numbered from 0; pair n is port
// Ethernet<n+1> of LAG PortChannel<n/16+1>. An implementation names a pair as its own users would.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Bench {

inline constexpr std::size_t membersPerLag = 16;

struct Shape {
   std::size_t pairs = 0;
   bool half = false; // every other pair is missing from the input
   bool empty = false; // the LAGs are there, no pair is
};

inline std::size_t lags( const Shape & shape ) {
   return ( shape.pairs + membersPerLag - 1 ) / membersPerLag;
}
inline std::size_t lagOf( std::size_t pair ) {
   return pair / membersPerLag;
}
inline std::string memberName( std::size_t pair ) {
   return "Ethernet" + std::to_string( pair + 1 );
}
inline std::string lagName( std::size_t lag ) {
   return "PortChannel" + std::to_string( lag + 1 );
}
inline bool inInput( const Shape & shape, std::size_t pair ) {
   return !shape.empty && ( !shape.half || pair % 2 == 0 );
}

/// Pairs in no order that any table was filled in. The seed is fixed: every run and every
/// implementation sees the same order.
inline std::vector< std::size_t > randomOrder( std::size_t count ) {
   std::vector< std::size_t > order( count );
   for ( std::size_t at = 0; at < count; ++at ) {
      order[ at ] = at;
   }
   std::ranges::shuffle( order, std::mt19937_64( 1 ) ); // NOLINT: repeatable on purpose
   return order;
}

/// The output in the order in which it is iterated, by names: for comparison only.
using Verdicts = std::vector< std::pair< std::string, std::string > >;

/// Filled, but without an interlock, when constructed.
template < class W >
concept World =
   std::constructible_from< W, const Shape & > &&
   requires( W world, const W & view, typename W::Pair pair, std::size_t at, bool on ) {
      { view.pair( at ) } -> std::same_as< typename W::Pair >;
      world.traceIs( on ); // where it is not settled by the type
      world.start(); // creates output and interlock, which makes its first pass
      world.settle(); // what comes from outside until the verdicts are those of rest
      world.stop(); // drops both
      world.inputIs( pair );
      world.inputDel( pair );
      world.memberIs( pair );
      world.memberDel( pair );
      world.passHalf( on ); // each call changes the verdicts of half of the pairs
      world.passNone( on ); // decides each pair anew and changes no verdict
      { view.verdicts() } -> std::same_as< Verdicts >;
      { view.admitted() } -> std::same_as< std::size_t >;
      { view.heard() } -> std::same_as< std::uint64_t >; // verdicts that were told
   };

} // namespace Bench
