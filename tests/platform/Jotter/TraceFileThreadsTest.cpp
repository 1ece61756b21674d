// The ring while several threads use it at once, in the thread-safe pointer mode.

#include "platform/Jotter/Duplog.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/Trace.h"
#include "tests/platform/Jotter/Rings.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using Jotter::PieceKind;
using Nodo::IntfId;

// A number and a text that must belong to it: anything mixed up of two records shows.
Vex::String textOf( std::uint64_t number ) {
   const auto letter = static_cast< char >( 'a' + number % 26 );
   return Vex::String( number % 4 == 0 ? 200 + number % 50 : number % 20, letter );
}

TEST( TraceFileThreadsTest, AReaderSeesOnlyWholeRecordsWhileAThreadWrites ) {
   Jotter::TraceFile file( 1 );
   file.describe( 1, describedBy( { placeholder( PieceKind::number ), literal( " " ),
                                    placeholder( PieceKind::text ) } ) );
   std::vector< IntfId > texts;
   for ( std::uint64_t number = 0; number < 2'600; ++number ) {
      texts.emplace_back( textOf( number ) );
   }
   std::atomic< bool > enough = false;
   std::jthread writer( [ & ] {
      for ( std::uint64_t number = 0; !enough; ++number ) {
         file.write( 1, number, " ", texts[ number % texts.size() ] );
      }
   } );
   std::size_t seen = 0;
   std::uint64_t last = 0;
   // At least so many rounds, and until the writer has been seen at work.
   for ( int round = 0; round < 100 || seen < 1'000 || last < 2'000; ++round ) {
      std::uint64_t before = 0;
      for ( const Jotter::Record & record : Jotter::readRecords( file.bytes() ) ) {
         const std::uint64_t number = record.sequence - 1;
         const Vex::String & wanted = texts[ number % texts.size() ].stringValue();
         if ( record.message() != std::to_string( number ) + " " + wanted ||
              record.sequence <= before ) {
            ADD_FAILURE() << record.sequence << ": " << record.message();
            enough = true;
            return;
         }
         before = record.sequence;
         ++seen;
      }
      last = std::max( last, before );
   }
   enough = true;
}

TEST( TraceFileThreadsTest, RecordsOfManyThreadsAreAllThereEachOnce ) {
   Jotter::TraceFile file( 1U << 13U );
   file.describe( 1, describedBy( { placeholder( PieceKind::number ) } ) );
   constexpr std::uint64_t each = 2'000;
   {
      std::vector< std::jthread > threads;
      for ( std::uint64_t thread = 0; thread < 4; ++thread ) {
         threads.emplace_back( [ &file, thread ] {
            for ( std::uint64_t at = 0; at < each; ++at ) {
               file.write( 1, thread * each + at );
            }
         } );
      }
   }
   std::set< Vex::String > messages;
   std::uint64_t sequence = 0;
   for ( const Jotter::Record & record : Jotter::readRecords( file.bytes() ) ) {
      ASSERT_EQ( record.sequence, ++sequence );
      messages.insert( record.message() );
   }
   EXPECT_EQ( messages.size(), 4 * each );
}

TEST( TraceFileThreadsTest, ThreadsThatLapEachOtherNeverMixTheirRecords ) {
   Jotter::TraceFile file( 1 );
   file.describe( 1, describedBy( { placeholder( PieceKind::number ), literal( " " ),
                                    placeholder( PieceKind::text ) } ) );
   std::vector< IntfId > texts;
   for ( std::uint64_t number = 0; number < 2'600; ++number ) {
      texts.emplace_back( textOf( number ) );
   }
   const auto check = [ & ] {
      for ( const Jotter::Record & record : Jotter::readRecords( file.bytes() ) ) {
         const std::uint64_t number = std::stoull( record.arguments.at( 0 ) );
         ASSERT_EQ( record.arguments.at( 1 ), texts[ number % texts.size() ].stringValue() );
      }
   };
   {
      std::vector< std::jthread > threads;
      for ( std::uint64_t thread = 0; thread < 4; ++thread ) {
         threads.emplace_back( [ &, thread ] {
            for ( std::uint64_t at = 0; at < 5'000; ++at ) {
               const std::uint64_t number = thread * 1'000'000 + at;
               file.write( 1, number, " ", texts[ number % texts.size() ] );
            }
         } );
      }
      for ( int round = 0; round < 50; ++round ) {
         check();
      }
   }
   check();
   EXPECT_EQ( file.written(), 20'000 );
   // A thread that was lapped leaves its record out; nothing but such gaps may be told.
   for ( const Vex::String & problem : Jotter::readTraceFile( file.bytes() ).problems ) {
      EXPECT_TRUE( problem.ends_with( "missing" ) || problem.ends_with( "not finished" ) ||
                   problem.find( "before record" ) != Vex::String::npos )
         << problem;
   }
}

TEST( TraceFileThreadsTest, ASiteThatManyThreadsReachFirstIsKnown ) {
   Jotter::TraceFile file( 1U << 12U );
   Jotter::TraceFile * const before = Jotter::defaultTraceFileIs( &file );
   const Vex::TextTrace trace( "TraceFileThreadsTest", "tests" );
   const Jotter::Duplog duplog( trace );
   const IntfId lag( "PortChannel10" );
   {
      std::vector< std::jthread > threads;
      for ( int thread = 0; thread < 4; ++thread ) {
         threads.emplace_back( [ & ] {
            for ( int round = 0; round < 100; ++round ) {
               duplog( Vex::at< 0 >(), "lag : ", lag );
            }
         } );
      }
   }
   Jotter::defaultTraceFileIs( before );
   const auto messages = messagesOf( file.bytes() );
   EXPECT_EQ( std::ranges::count( messages, "lag : PortChannel10" ), 400 );
   EXPECT_EQ( messages.size(), 400 );
}

} // namespace
