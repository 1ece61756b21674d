#pragma once

// What the worlds on this library share: the entities, and who listens to the verdicts.

#include "bench/World.h"
#include "interlock-model/Hardware/Lag/Config.h"
#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "interlock-model/StateMachine.h"
#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Ptr.h"

#include <cstdint>
#include <vector>

namespace Bench::Ours {

using Interface::Interlock::IntfFeature;
using Interface::Interlock::IntfFeatureStatus;

/// In the place of the code that programs LAGs.
class Consumer final : public Vex::ConstNotifiee< IntfFeatureStatus > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Bench::Consumer" };
      return type;
   }
   void onAttribute( Attribute /* attribute */, const IntfFeature & /* feature */ ) override {
      ++heard_;
   }
   std::uint64_t heard() const noexcept { return heard_; }

 private:
   std::uint64_t heard_ = 0;
};

class Inputs {
 public:
   using Pair = IntfFeature;

   explicit Inputs( const Shape & shape ) : shape_( shape ) {
      for ( std::size_t lag = 0; lag < Bench::lags( shape ); ++lag ) {
         lags_.emplace_back( lagName( lag ) );
         config_->initialMemberIs( Vex::make< Hardware::Lag::InitialMember >( lags_[ lag ] ) );
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
      return { Nodo::IntfId( memberName( at ) ), lags_[ lagOf( at ) ] };
   }
   /// One ring for all: the process has one.
   static void traceIs( bool on ) {
      static auto * const file = Jotter::defaultTraceFile();
      Jotter::defaultTraceFileIs( on ? file : nullptr );
   }
   void inputIs( Pair entry ) { input_->intfIs( entry ); }
   void inputDel( Pair entry ) { input_->intfDel( entry ); }
   void memberIs( Pair entry ) {
      config_->initialMember( entry.lag )->memberIs( entry.member, {} );
   }
   void memberDel( Pair entry ) { config_->initialMember( entry.lag )->memberDel( entry.member ); }

   Verdicts verdicts() const {
      Verdicts verdicts;
      for ( const IntfFeature entry : output_->intf().keys() ) {
         verdicts.emplace_back( entry.member.stringValue(), entry.lag.stringValue() );
      }
      return verdicts;
   }
   std::size_t admitted() const { return output_->intf().size(); }
   std::uint64_t heard() const { return consumer_->heard(); }
   static std::uint64_t records() {
      const auto * const file = Jotter::defaultTraceFile();
      return file != nullptr ? file->written() : 0;
   }

 protected:
   const Shape & shape() const { return shape_; }
   const std::vector< Nodo::IntfId > & lags() const { return lags_; }
   void outputIsNew() {
      output_ = Vex::make< IntfFeatureStatus >();
      consumer_->notifierIs( output_ );
   }
   void outputIsGone() {
      consumer_->notifierIs( nullptr );
      output_ = nullptr;
   }

   // NOLINTBEGIN(misc-non-private-member-variables-in-classes)
   Vex::Ptr< IntfFeatureStatus > input_ = Vex::make< IntfFeatureStatus >();
   Vex::Ptr< Hardware::Lag::Config > config_ = Vex::make< Hardware::Lag::Config >();
   Vex::Ptr< IntfFeatureStatus > output_;
   Vex::Ptr< InterlockModel::StateMachine > interlock_;
   // NOLINTEND(misc-non-private-member-variables-in-classes)

 private:
   Shape shape_;
   std::vector< Nodo::IntfId > lags_;
   Vex::Ptr< Consumer > consumer_ = Vex::make< Consumer >();
};

} // namespace Bench::Ours
