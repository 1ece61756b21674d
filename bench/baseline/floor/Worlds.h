#pragma once

// The worlds of the floor, with and without its ring.

#include "bench/baseline/floor/Basic.h"
#include "bench/baseline/floor/Peer.h"
#include "bench/baseline/floor/Vlan.h"

#include <memory>
#include <optional>
#include <type_traits>

namespace Bench::Floor {

/// The tables, filled before there is an interlock; then events go to that.
template < class Interlock >
class Inputs {
 public:
   using Pair = Floor::Pair;

   explicit Inputs( const Shape & shape )
       : shape_( shape ), input_( shape.pairs ), members_( shape.pairs, lags() ) {
      Names::instance().reserve( shape.pairs );
      for ( std::size_t at = 0; at < shape.pairs && !shape.empty; ++at ) {
         members_.insert( pair( at ) );
         if ( inInput( shape, at ) ) {
            input_.insert( pair( at ) );
         }
      }
   }
   Inputs( const Inputs & ) = delete;
   Inputs & operator=( const Inputs & ) = delete;
   Inputs( Inputs && ) = delete;
   Inputs & operator=( Inputs && ) = delete;
   ~Inputs() = default;

   Pair pair( std::size_t at ) const { return { Intf::port( at ), Intf::lag( lagOf( at ) ) }; }
   static void traceIs( bool /* on */ ) {} // the type says it
   void inputIs( Pair pair ) { interlock_->inputIs( pair ); }
   void inputDel( Pair pair ) { interlock_->inputDel( pair ); }
   void memberIs( Pair pair ) { interlock_->memberIs( pair ); }
   void memberDel( Pair pair ) { interlock_->memberDel( pair ); }

   Verdicts verdicts() const {
      Verdicts verdicts;
      output_->admitted().forEach( [ & ]( const Pair & pair ) {
         verdicts.emplace_back( nameOf( pair.member ), nameOf( pair.lag ) );
      } );
      return verdicts;
   }
   std::size_t admitted() const { return output_->admitted().size(); }
   std::uint64_t heard() const { return heard_; }
   std::uint64_t records() const { return interlock_->records(); }
   void settle() {}
   void stop() {
      interlock_.reset();
      output_.reset();
   }

 protected:
   std::size_t lags() const { return Bench::lags( shape_ ); }
   template < class Context >
   void startWith( Context & context ) {
      output_.emplace( shape_.pairs, &Inputs::hear, this );
      interlock_ = std::make_unique< Interlock >( input_, members_, context, *output_ );
   }

   // NOLINTNEXTLINE(misc-non-private-member-variables-in-classes)
   std::unique_ptr< Interlock > interlock_;

 private:
   static void hear( void * self, const Pair & /* pair */, bool /* admitted */ ) {
      ++static_cast< Inputs * >( self )->heard_;
   }

   Shape shape_;
   PairSet input_;
   Members members_;
   std::optional< Output > output_;
   std::uint64_t heard_ = 0;
};

inline MlagInputs activeMlag( std::size_t lags ) {
   return { .state = 3,
            .peerLinkExists = true,
            .linkStatus = 2,
            .known = std::vector< std::uint8_t >( lags, 1 ),
            .peerState = std::vector< std::uint8_t >( lags, 2 ),
            .localState = std::vector< std::uint8_t >( lags, 2 ) };
}

template < bool traced >
using RingOrNone = std::conditional_t< traced, Ring, NoRing >;

template < class RingType >
class BasicWorldWith : public Inputs< Basic< RingType > > {
 public:
   using Inputs< Basic< RingType > >::Inputs;

   void start() { this->startWith( mlag_ ); }
   void passHalf( bool on ) { this->interlock_->mlagStateIs( on ? 3 : 1 ); }
   void passNone( bool on ) { this->interlock_->mlagStateIs( on ? 3 : 4 ); }

 private:
   MlagInputs mlag_ = activeMlag( this->lags() );
};
template < bool traced >
using BasicWorld = BasicWorldWith< RingOrNone< traced > >;

template < bool traced >
class PeerWorld : public Inputs< Peer< RingOrNone< traced > > > {
 public:
   using Inputs< Peer< RingOrNone< traced > > >::Inputs;

   void start() { this->startWith( mlag_ ); }
   void settle() {
      for ( std::size_t at = 0; at < this->lags(); ++at ) {
         this->interlock_->responseIs( Intf::lag( at ),
                                       this->interlock_->request( Intf::lag( at ) ) );
      }
   }
   void passHalf( bool on ) { states( 2, on ? 2 : 1 ); }
   void passNone( bool on ) { states( on ? 2 : 1, 2 ); }

 private:
   void states( std::uint8_t local, std::uint8_t peer ) {
      for ( std::size_t at = 0; at < this->lags(); ++at ) {
         this->interlock_->mlagIntfIs( Intf::lag( at ), local, peer );
      }
   }

   MlagInputs mlag_ = activeMlag( this->lags() );
};

class VlanWorld : public Inputs< Vlan > {
 public:
   using Inputs< Vlan >::Inputs;

   void start() { startWith( mappings_ ); }
   void passHalf( bool on ) {
      for ( std::size_t at = 0; at < lags(); ++at ) {
         interlock_->mappingsAre( Intf::lag( at ), { on ? 1U : 0U, mappings_[ at ].egress } );
      }
   }
   void passNone( bool on ) {
      for ( std::size_t at = 0; at < lags(); ++at ) {
         interlock_->mappingsAre( Intf::lag( at ), { mappings_[ at ].ingress, on ? 0U : 1U } );
      }
   }

 private:
   std::vector< Mappings > mappings_ = std::vector< Mappings >( lags(), { 1, 0 } );
};

static_assert( World< BasicWorld< true > > && World< PeerWorld< true > > && World< VlanWorld > );

} // namespace Bench::Floor
