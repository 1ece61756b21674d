#pragma once

// The tables of the floor: one for each entity, because the entities belong to different agents.
// A port is in one LAG, as a rule; further LAGs of one port are kept beside, so that they are
// possible.

#include "bench/baseline/floor/Names.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace Bench::Floor {

/// A number for each pair that has one; 0 is none.
class PairNumbers {
 public:
   explicit PairNumbers( std::size_t ports ) : ofPort_( ports ) {}

   std::uint32_t get( const Pair & pair ) const noexcept {
      const Entry & entry = ofPort_[ pair.member.index() ];
      if ( entry.lag == pair.lag.number ) [[likely]] {
         return entry.number;
      }
      return further_.empty() ? 0 : getFurther( pair );
   }
   void set( const Pair & pair, std::uint32_t number ) {
      Entry & entry = ofPort_[ pair.member.index() ];
      if ( entry.number == 0 ) {
         if ( !further_.empty() ) [[unlikely]] {
            further_.erase( key( pair ) );
         }
         entry = { pair.lag.number, number };
      } else if ( entry.lag == pair.lag.number ) [[likely]] {
         entry.number = number;
      } else {
         further_[ key( pair ) ] = number;
      }
   }
   void clear( const Pair & pair ) noexcept {
      Entry & entry = ofPort_[ pair.member.index() ];
      if ( entry.lag == pair.lag.number ) [[likely]] {
         entry = {};
      } else {
         further_.erase( key( pair ) );
      }
   }

 private:
   struct Entry {
      std::uint32_t lag = 0;
      std::uint32_t number = 0;
   };

   static std::uint64_t key( const Pair & pair ) noexcept {
      return static_cast< std::uint64_t >( pair.lag.number ) << 32U | pair.member.number;
   }
   std::uint32_t getFurther( const Pair & pair ) const noexcept {
      const auto found = further_.find( key( pair ) );
      return found != further_.end() ? found->second : 0;
   }

   std::vector< Entry > ofPort_; // by port
   std::map< std::uint64_t, std::uint32_t > further_;
};

/// A set of pairs that nobody iterates over, such as the input.
class PairSet {
 public:
   explicit PairSet( std::size_t ports ) : present_( ports ) {}

   bool has( const Pair & pair ) const noexcept { return present_.get( pair ) != 0; }
   bool insert( const Pair & pair ) {
      if ( has( pair ) ) {
         return false;
      }
      present_.set( pair, 1 );
      return true;
   }
   bool erase( const Pair & pair ) noexcept {
      if ( !has( pair ) ) {
         return false;
      }
      present_.clear( pair );
      return true;
   }

 private:
   PairNumbers present_;
};

/// A set of pairs in the order of insertion: the output. What goes leaves a hole; holes are closed
/// when there are more of them than entries.
class OrderedPairSet {
 public:
   explicit OrderedPairSet( std::size_t ports ) : place_( ports ) {}

   std::size_t size() const noexcept { return size_; }
   bool insert( const Pair & pair ) {
      if ( place_.get( pair ) != 0 ) {
         return false;
      }
      entries_.push_back( pair );
      place_.set( pair, static_cast< std::uint32_t >( entries_.size() ) );
      ++size_;
      return true;
   }
   bool erase( const Pair & pair ) {
      const std::uint32_t place = place_.get( pair );
      if ( place == 0 ) {
         return false;
      }
      entries_[ place - 1 ] = {};
      place_.clear( pair );
      --size_;
      if ( entries_.size() > 2 * size_ + 16 && !visited_ ) {
         closeHoles();
      }
      return true;
   }
   /// The visitor may erase what it visits.
   template < class Visitor >
   void forEach( Visitor visit ) const {
      visited_ = true;
      for ( const Pair & entry : entries_ ) {
         if ( entry.lag != Intf() ) {
            visit( Pair( entry ) );
         }
      }
      visited_ = false;
   }

 private:
   void closeHoles() {
      std::erase( entries_, Pair() );
      for ( std::size_t at = 0; at < entries_.size(); ++at ) {
         place_.set( entries_[ at ], static_cast< std::uint32_t >( at + 1 ) );
      }
   }

   PairNumbers place_; // in entries_, from 1
   std::vector< Pair > entries_;
   std::size_t size_ = 0;
   mutable bool visited_ = false; // entries stay where they are meanwhile
};

/// The members of each LAG, in the order of insertion.
class Members {
 public:
   Members( std::size_t ports, std::size_t lags ) : active_( ports ), ofLag_( lags ) {}

   bool has( const Pair & pair ) const noexcept { return active_.has( pair ); }
   const std::vector< Intf > & of( Intf lag ) const noexcept { return ofLag_[ lag.index() ]; }
   std::size_t lags() const noexcept { return ofLag_.size(); }
   bool insert( const Pair & pair ) {
      if ( !active_.insert( pair ) ) {
         return false;
      }
      ofLag_[ pair.lag.index() ].push_back( pair.member );
      return true;
   }
   bool erase( const Pair & pair ) {
      if ( !active_.erase( pair ) ) {
         return false;
      }
      auto & members = ofLag_[ pair.lag.index() ];
      members.erase( std::ranges::find( members, pair.member ) );
      return true;
   }

 private:
   PairSet active_;
   std::vector< std::vector< Intf > > ofLag_;
};

} // namespace Bench::Floor
