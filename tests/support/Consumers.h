#pragma once

// Who consumes an interlock's output in a test: VerdictLog::of( world.output ) and the like.

#include "interlock-model/Interface/Interlock/IntfFeatureStatus.h"
#include "platform/Vex/Entity.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/String.h"
#include "platform/Vex/Type.h"
#include "tests/support/Marks.h"
#include "tests/support/Names.h"

#include <functional>
#include <utility>

namespace TestSupport {

using Interface::Interlock::IntfFeature;
using Interface::Interlock::IntfFeatureStatus;

class OutputConsumer : public Vex::ConstNotifiee< IntfFeatureStatus > {
 public:
   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "TestSupport::OutputConsumer" };
      return type;
   }
   void onAttribute( Attribute /* intf */, const IntfFeature & feature ) override {
      verdict( feature, notifier()->intfHas( feature ) );
   }

 private:
   virtual void verdict( const IntfFeature & feature, bool admitted ) = 0;
};

/// Marks each change, "+(Ethernet1, PortChannel10)" or "-(Ethernet1, PortChannel10)".
class VerdictLog final : public OutputConsumer {
 public:
   static Vex::Ptr< VerdictLog > of( const Vex::Ptr< IntfFeatureStatus > & output ) {
      auto log = Vex::make< VerdictLog >();
      log->notifierIs( output );
      return log;
   }

   /// The changes since the last time.
   Vex::String take() { return marks_.take(); }

 private:
   void verdict( const IntfFeature & feature, bool admitted ) override {
      marks_.add( ( admitted ? "+" : "-" ) + text( feature ) );
   }

   Marks marks_;
};

/// Does on each change of the output what the test says.
class ScriptedConsumer final : public OutputConsumer {
 public:
   using Script = std::function< void( const IntfFeature & feature, bool admitted ) >;

   explicit ScriptedConsumer( Script script ) : script_( std::move( script ) ) {}

   static Vex::Ptr< ScriptedConsumer > of( const Vex::Ptr< IntfFeatureStatus > & output,
                                           Script script ) {
      auto consumer = Vex::make< ScriptedConsumer >( std::move( script ) );
      consumer->notifierIs( output );
      return consumer;
   }
   /// On the first change only.
   static Vex::Ptr< ScriptedConsumer > once( const Vex::Ptr< IntfFeatureStatus > & output,
                                             std::function< void() > script ) {
      return of( output, [ script = std::move( script ), done = false ]( const IntfFeature &,
                                                                         bool ) mutable {
         if ( !std::exchange( done, true ) ) {
            script();
         }
      } );
   }

 private:
   void verdict( const IntfFeature & feature, bool admitted ) override {
      script_( feature, admitted );
   }

   Script script_;
};

/// The output as it stands, in its order: "(Ethernet1, PortChannel10) (Ethernet2, PortChannel10)".
inline Vex::String admitted( const Vex::Ptr< IntfFeatureStatus > & output ) {
   Marks marks;
   for ( const IntfFeature feature : output->intf().keys() ) {
      marks.add( text( feature ) );
   }
   return marks.take();
}

} // namespace TestSupport
