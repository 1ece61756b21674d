// What a wire does to messages: when they arrive, in which order, and which do not.

#include "replay/pair/Wire.h"

#include "platform/Kel/VirtualTime.h"
#include "platform/Vex/Clock.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace {

using Replay::Peering::Content;
using Replay::Peering::Fate;
using Replay::Peering::Message;
using Replay::Peering::Wire;
using Replay::Peering::WireFaults;
using Vex::Seconds;

// A wire with a delay of 0.01 s; `log` gets "TIME TOKEN;" for each message that arrives.
struct Line {
   Vex::VirtualClock clock;
   Vex::ClockScope scope{ clock };
   Vex::Ptr< Kel::TaskScheduler > scheduler = Vex::make< Kel::TaskScheduler >();
   WireFaults faults{ 1 };
   std::ostringstream log;
   Wire wire{ scheduler, faults, [ this ]( const Message & message ) {
                log << clock.now().value() << ' ' << message.token.value_or( 0 ) << ';';
             } };

   Line() { faults.delayIs( Seconds( 0.01 ) ); }

   Fate send( std::uint32_t token ) {
      Message message{ Content::request, Nodo::IntfId( "PortChannel10" ), token };
      return wire.send( message );
   }
   std::string after( double time ) {
      Kel::advanceTo( clock, *scheduler, Seconds( time ) );
      return log.str();
   }
};

TEST( Wire, AMessageArrivesAfterTheDelay ) {
   Line line;
   line.send( 2 );
   EXPECT_EQ( line.after( 0.009 ), "" );
   EXPECT_EQ( line.wire.underWay(), 1U );
   EXPECT_EQ( line.after( 0.01 ), "0.01 2;" );
   EXPECT_EQ( line.wire.underWay(), 0U );
}

TEST( Wire, MessagesOfOneMomentArriveInTheOrderOfSending ) {
   Line line;
   line.send( 2 );
   line.send( 3 );
   line.send( 4 );
   EXPECT_EQ( line.after( 1 ), "0.01 2;0.01 3;0.01 4;" );
}

TEST( Wire, MessagesAreNumberedAndACopyHasTheNumberOfItsOriginal ) {
   Line line;
   std::vector< std::uint64_t > numbers;
   Wire wire( line.scheduler, line.faults,
              [ & ]( const Message & message ) { numbers.push_back( message.sequence ); } );
   line.faults.repeatNext( 1, Seconds( 0.005 ) );
   Message message;
   wire.send( message );
   wire.send( message );
   line.after( 1 );
   EXPECT_EQ( numbers, ( std::vector< std::uint64_t >{ 1, 2, 1 } ) );
}

TEST( Wire, TheNextMessagesAreLostAndNoMore ) {
   Line line;
   line.faults.loseNext( 2 );
   EXPECT_TRUE( line.send( 2 ).delays.empty() );
   line.send( 3 );
   line.send( 4 );
   EXPECT_EQ( line.after( 1 ), "0.01 4;" );
}

TEST( Wire, ARepeatedMessageArrivesTwice ) {
   Line line;
   line.faults.repeatNext( 1, Seconds( 0.05 ) );
   line.send( 2 );
   line.send( 3 );
   EXPECT_EQ( line.after( 1 ), "0.01 2;0.01 3;0.06 2;" );
}

TEST( Wire, AMessageThatIsHeldUpIsOvertaken ) {
   Line line;
   line.faults.holdNext( 1, Seconds( 0.2 ) );
   EXPECT_TRUE( line.send( 2 ).heldUp );
   EXPECT_FALSE( line.send( 3 ).heldUp );
   EXPECT_EQ( line.after( 1 ), "0.01 3;0.21 2;" );
}

TEST( Wire, AWireThatIsOffLosesAllAndThatOnlyWhileItIsOff ) {
   Line line;
   line.send( 2 ); // under way already
   line.faults.onIs( false );
   line.send( 3 );
   line.faults.onIs( true );
   line.send( 4 );
   EXPECT_EQ( line.after( 1 ), "0.01 2;0.01 4;" );
}

TEST( Wire, WhatIsUnderWayGoesWithTheWire ) {
   Line line;
   int arrived = 0;
   {
      Wire wire( line.scheduler, line.faults,
                 [ & ]( const Message & /* message */ ) { ++arrived; } );
      Message message;
      wire.send( message );
   }
   line.after( 1 );
   EXPECT_EQ( arrived, 0 );
}

TEST( Wire, WhoeverGetsAMessageMaySendTheNext ) {
   Line line;
   std::string log;
   Wire * self = nullptr;
   Wire wire( line.scheduler, line.faults, [ & ]( const Message & message ) {
      log += std::to_string( *message.token ) + ";";
      if ( *message.token < 3 ) {
         Message next = message;
         ++*next.token;
         self->send( next );
      }
   } );
   self = &wire;
   Message message{ Content::request, Nodo::IntfId( "PortChannel10" ), 1U };
   wire.send( message );
   line.after( 1 );
   EXPECT_EQ( log, "1;2;3;" );
}

// The fates of 1000 messages under faults by chance.
std::string fates( std::uint64_t seed, std::uint32_t loss ) {
   WireFaults faults( seed );
   faults.lossIs( loss );
   faults.repetitionIs( { 10, Seconds( 0.3 ) } );
   faults.holdingIs( { 20, Seconds( 0.3 ) } );
   std::ostringstream text;
   for ( int at = 0; at < 1000; ++at ) {
      const Fate fate = faults.next();
      text << fate.delays.size() << ( fate.heldUp ? 'h' : ' ' );
      for ( const Seconds delay : fate.delays ) {
         EXPECT_LE( delay, Seconds( 0.6 ) );
         text << delay.value() << ',';
      }
   }
   return text.str();
}

TEST( WireFaults, TheSameSeedMakesTheSameFaults ) {
   EXPECT_EQ( fates( 7, 30 ), fates( 7, 30 ) );
   EXPECT_NE( fates( 7, 30 ), fates( 8, 30 ) );
}

TEST( WireFaults, FaultsByChanceAreAsFrequentAsTheyShouldBe ) {
   WireFaults faults( 3 );
   faults.lossIs( 30 );
   int lost = 0;
   for ( int at = 0; at < 10'000; ++at ) {
      lost += faults.next().delays.empty() ? 1 : 0;
   }
   EXPECT_NEAR( lost, 3000, 200 );
}

TEST( WireFaults, WithoutFaultsEachMessageArrivesOnceAfterTheDelay ) {
   WireFaults faults( 3 );
   faults.delayIs( Seconds( 0.25 ) );
   for ( int at = 0; at < 100; ++at ) {
      EXPECT_EQ( faults.next().delays, std::vector< Seconds >{ Seconds( 0.25 ) } );
   }
}

} // namespace
