// When a switch answers its peer, and when it takes the answer back.

#include "replay/pair/Responder.h"

#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "tests/support/Names.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace {

using Replay::Peering::Responder;
using TestSupport::entry;
using TestSupport::intf;

// PortChannel10 has the one member Ethernet1, without ACL; `log` gets "TOKEN;" or "-;" for each
// change of an answer.
struct Answering {
   Vex::Ptr< Interface::Interlock::IntfFeatureStatus > acl =
      Vex::make< Interface::Interlock::IntfFeatureStatus >();
   Vex::Ptr< Hardware::Lag::Config > config = Vex::make< Hardware::Lag::Config >();
   std::string log;
   std::optional< Responder > responder;

   Answering() {
      lag( { "Ethernet1" } );
      responder.emplace( acl, config,
                         [ this ]( Nodo::IntfId /* lag */, std::optional< std::uint32_t > token ) {
                            log += ( token ? std::to_string( *token ) : "-" ) + ";";
                         } );
   }

   void lag( std::initializer_list< std::string > ports ) {
      auto members = Vex::make< Hardware::Lag::InitialMember >( intf( "PortChannel10" ) );
      for ( const std::string & port : ports ) {
         members->memberIs( intf( port ), {} );
      }
      config->initialMemberIs( members );
   }
   void member( const std::string & port ) {
      config->initialMember( intf( "PortChannel10" ) )->memberIs( intf( port ), {} );
   }
   void installed( const std::string & port ) { acl->intfIs( entry( port, "PortChannel10" ) ); }
   void request( std::optional< std::uint32_t > token ) {
      responder->requestIs( intf( "PortChannel10" ), token );
   }
};

TEST( Responder, ARequestIsAnsweredOnceTheAclOfEveryMemberIsInPlace ) {
   Answering switch_;
   switch_.member( "Ethernet2" );
   switch_.request( 5 );
   switch_.installed( "Ethernet1" );
   EXPECT_EQ( switch_.log, "" );
   switch_.installed( "Ethernet2" );
   EXPECT_EQ( switch_.log, "5;" );
}

TEST( Responder, ARequestThatComesAfterTheAclIsAnsweredAtOnce ) {
   Answering switch_;
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   EXPECT_EQ( switch_.log, "5;" );
}

TEST( Responder, ARequestThatComesTwiceIsAnsweredOnce ) {
   Answering switch_;
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   switch_.request( 5 );
   EXPECT_EQ( switch_.log, "5;" );
}

TEST( Responder, ANewTokenIsAnsweredAnew ) {
   Answering switch_;
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   switch_.request( 6 );
   EXPECT_EQ( switch_.log, "5;6;" );
}

TEST( Responder, AWithdrawnRequestTakesItsAnswerBack ) {
   Answering switch_;
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   switch_.request( std::nullopt );
   EXPECT_EQ( switch_.log, "5;-;" );
}

TEST( Responder, ALostAclTakesTheAnswerBackAndGivesItAgain ) {
   Answering switch_;
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   switch_.acl->intfDel( entry( "Ethernet1", "PortChannel10" ) );
   switch_.installed( "Ethernet1" );
   EXPECT_EQ( switch_.log, "5;-;5;" );
}

TEST( Responder, AMemberWithoutAclTakesTheAnswerBackUntilItLeaves ) {
   Answering switch_;
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   switch_.member( "Ethernet2" );
   switch_.config->initialMember( intf( "PortChannel10" ) )->memberDel( intf( "Ethernet2" ) );
   EXPECT_EQ( switch_.log, "5;-;5;" );
}

TEST( Responder, ALagThatIsReplacedIsWatchedAsItIsNow ) {
   Answering switch_;
   switch_.request( 5 );
   switch_.lag( { "Ethernet2" } );
   switch_.installed( "Ethernet2" );
   EXPECT_EQ( switch_.log, "5;" );
   switch_.member( "Ethernet3" );
   EXPECT_EQ( switch_.log, "5;-;" );
}

TEST( Responder, ALagThatIsNotThereHasNothingToInstall ) {
   Answering switch_;
   switch_.request( 5 );
   switch_.config->initialMemberDel( intf( "PortChannel10" ) );
   EXPECT_EQ( switch_.log, "5;" );
   switch_.lag( { "Ethernet1" } );
   EXPECT_EQ( switch_.log, "5;-;" );
}

TEST( Responder, ASilentOneAnswersLater ) {
   Answering switch_;
   switch_.responder->onIs( false );
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   EXPECT_EQ( switch_.log, "" );
   switch_.responder->onIs( true );
   EXPECT_EQ( switch_.log, "5;" );
}

TEST( Responder, ASilentOneLeavesItsAnswerUntilItSpeaksAgain ) {
   Answering switch_;
   switch_.installed( "Ethernet1" );
   switch_.request( 5 );
   switch_.responder->onIs( false );
   switch_.request( std::nullopt );
   EXPECT_EQ( switch_.log, "5;" );
   switch_.responder->onIs( true );
   EXPECT_EQ( switch_.log, "5;-;" );
}

} // namespace
