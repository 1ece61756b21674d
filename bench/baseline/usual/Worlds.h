#pragma once

// The worlds of this baseline, for either signal library, with and without trace.

#include "bench/World.h"
#include "bench/baseline/usual/Basic.h"
#include "bench/baseline/usual/Peer.h"
#include "bench/baseline/usual/Vlan.h"

namespace Bench::Usual {

template < class Library >
class Inputs {
 public:
   using Pair = Feature;
   using Status = FeatureStatus< Library >;

   explicit Inputs( const Shape & shape ) : shape_( shape ) {
      for ( std::size_t lag = 0; lag < Bench::lags( shape ); ++lag ) {
         lags_.push_back( Names::instance().intern( lagName( lag ) ) );
         config_->is( lags_[ lag ], std::make_shared< InitialMember< Library > >( lags_[ lag ] ) );
      }
      for ( std::size_t at = 0; at < shape.pairs && !shape.empty; ++at ) {
         const Pair entry = pair( at );
         memberIs( entry );
         if ( inInput( shape, at ) ) {
            inputIs( entry );
         }
      }
   }

   Pair pair( std::size_t at ) const {
      return { Names::instance().intern( memberName( at ) ), lags_[ lagOf( at ) ] };
   }
   void traceIs( bool on ) { trace_.onIs( on ); }
   void inputIs( const Pair & entry ) { input_->is( entry ); }
   void inputDel( const Pair & entry ) { input_->del( entry ); }
   void memberIs( const Pair & entry ) { config_->get( entry.lag )->member.is( entry.member, 0 ); }
   void memberDel( const Pair & entry ) { config_->get( entry.lag )->member.del( entry.member ); }

   Verdicts verdicts() const {
      Verdicts verdicts;
      for ( const Feature & entry : output_->intf() ) {
         verdicts.emplace_back( nameOf( entry.member ), nameOf( entry.lag ) );
      }
      return verdicts;
   }
   std::size_t admitted() const { return output_->intf().size(); }
   std::uint64_t heard() const { return heard_; }

 protected:
   const std::vector< Intf > & lags() const { return lags_; }
   void outputIsNew() {
      output_ = std::make_shared< Status >();
      consumer_ = Library::connect( output_->changed, [ this ]( const Feature & ) { ++heard_; } );
   }
   void outputIsGone() {
      consumer_ = typename Library::Connection();
      output_.reset();
   }

   // NOLINTBEGIN(misc-non-private-member-variables-in-classes)
   std::shared_ptr< Status > input_ = std::make_shared< Status >();
   std::shared_ptr< LagConfig< Library > > config_ = std::make_shared< LagConfig< Library > >();
   std::shared_ptr< Status > output_;
   Trace trace_;
   // NOLINTEND(misc-non-private-member-variables-in-classes)

 private:
   Shape shape_;
   std::vector< Intf > lags_;
   std::uint64_t heard_ = 0;
   typename Library::Connection consumer_;
};

template < class Library >
class MlagInputs : public Inputs< Library > {
 public:
   explicit MlagInputs( const Shape & shape ) : Inputs< Library >( shape ) {
      auto peerLink = std::make_shared< PeerLink< Library > >();
      peerLink->linkStatus.is( 2 );
      mlag_->peerLink.is( peerLink );
      mlag_->state.is( 3 );
      for ( const Intf lag : this->lags() ) {
         mlag_->intfStatus.is( lag, { 2, 2 } );
      }
   }

 protected:
   // NOLINTNEXTLINE(misc-non-private-member-variables-in-classes)
   std::shared_ptr< MlagStatus< Library > > mlag_ = std::make_shared< MlagStatus< Library > >();
};

template < class Library >
class BasicWorld : public MlagInputs< Library > {
 public:
   using MlagInputs< Library >::MlagInputs;

   void start() {
      this->outputIsNew();
      interlock_ = std::make_shared< Basic< Library > >( this->input_, this->config_, this->mlag_,
                                                         this->output_, this->trace_ );
   }
   void settle() {}
   void stop() {
      interlock_.reset();
      this->outputIsGone();
   }
   void passHalf( bool on ) { this->mlag_->state.is( on ? 3 : 1 ); }
   void passNone( bool on ) { this->mlag_->state.is( on ? 3 : 4 ); }

 private:
   std::shared_ptr< Basic< Library > > interlock_;
};

template < class Library >
class PeerWorld : public MlagInputs< Library > {
 public:
   using MlagInputs< Library >::MlagInputs;

   void start() {
      this->outputIsNew();
      request_ = std::make_shared< Tokens< Library > >();
      response_ = std::make_shared< Tokens< Library > >();
      interlock_ =
         std::make_shared< Peer< Library > >( this->input_, this->config_, this->mlag_, response_,
                                              request_, this->output_, this->trace_ );
   }
   void settle() {
      for ( const Intf lag : this->lags() ) {
         response_->is( lag, request_->get( lag ) );
      }
   }
   void stop() {
      interlock_.reset();
      this->outputIsGone();
   }
   void passHalf( bool on ) { peerStates( 2, on ? 2 : 1 ); }
   void passNone( bool on ) { peerStates( on ? 2 : 1, 2 ); }

 private:
   void peerStates( std::uint8_t local, std::uint8_t peer ) {
      for ( const Intf lag : this->lags() ) {
         this->mlag_->intfStatus.is( lag, { local, peer } );
      }
   }

   std::shared_ptr< Tokens< Library > > request_;
   std::shared_ptr< Tokens< Library > > response_;
   std::shared_ptr< Peer< Library > > interlock_;
};

template < class Library >
class VlanWorld : public Inputs< Library > {
 public:
   explicit VlanWorld( const Shape & shape ) : Inputs< Library >( shape ) {
      for ( const Intf lag : this->lags() ) {
         auto entry = std::make_shared< SwitchIntfConfig< Library > >( lag );
         entry->ingress.is( { 10 }, { 10 } );
         bridging_->is( lag, entry );
      }
   }

   void start() {
      this->outputIsNew();
      interlock_ = std::make_shared< Vlan< Library > >( this->input_, this->config_, bridging_,
                                                        this->output_ );
   }
   void settle() {}
   void stop() {
      interlock_.reset();
      this->outputIsGone();
   }
   void passHalf( bool on ) {
      for ( const Intf lag : this->lags() ) {
         auto & mappings = bridging_->get( lag )->ingress;
         on ? mappings.is( { 10 }, { 10 } ) : mappings.del( { 10 } );
      }
   }
   void passNone( bool on ) {
      for ( const Intf lag : this->lags() ) {
         auto & mappings = bridging_->get( lag )->egress;
         on ? mappings.del( { 20 } ) : mappings.is( { 20 }, { 20 } );
      }
   }

 private:
   std::shared_ptr< BridgingConfig< Library > > bridging_ =
      std::make_shared< BridgingConfig< Library > >();
   std::shared_ptr< Vlan< Library > > interlock_;
};

} // namespace Bench::Usual
