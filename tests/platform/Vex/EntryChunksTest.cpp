#include "platform/Vex/EntryChunks.h"

#include "platform/Vex/KeyedCollection.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

using Chunks = Vex::EntryChunks< std::uint32_t, std::string >;
using KeysAlone = Vex::EntryChunks< std::uint64_t, Vex::NoValue >;

void fill( Chunks & chunks, std::uint32_t from, std::uint32_t to ) {
   for ( std::uint32_t at = from; at < to; ++at ) {
      if ( at == chunks.capacity() ) {
         const std::uint32_t next = chunks.nextCapacity();
         chunks.grow();
         ASSERT_EQ( chunks.capacity(), next );
      }
      chunks.key( at ) = at;
      chunks.value( at ) = std::to_string( at );
   }
}

void expectFilled( const Chunks & chunks, std::uint32_t to ) {
   for ( std::uint32_t at = 0; at < to; ++at ) {
      ASSERT_EQ( chunks.key( at ), at );
      ASSERT_EQ( chunks.value( at ), std::to_string( at ) );
   }
}

TEST( EntryChunksTest, WhatIsInThemStaysWhereItIs ) {
   Chunks chunks;
   for ( std::uint32_t length = 1; length <= 5 * Chunks::chunkLength; length += 37 ) {
      fill( chunks, length > 37 ? length - 37 : 0, length );
      expectFilled( chunks, length );
   }
}

TEST( EntryChunksTest, TheFirstRoomIsForSixteenKeysAndEmpty ) {
   Chunks chunks;
   EXPECT_EQ( chunks.firstKeys(), nullptr );
   chunks.grow();
   EXPECT_EQ( chunks.capacity(), 16 );
   ASSERT_NE( chunks.firstKeys(), nullptr );
   for ( std::uint32_t at = 0; at < 16; ++at ) {
      EXPECT_EQ( chunks.firstKeys()[ at ], 0 );
      EXPECT_EQ( chunks.value( at ), "" );
   }
}

TEST( EntryChunksTest, OnlyTheFirstChunkIsEverCopied ) {
   Chunks chunks;
   fill( chunks, 0, Chunks::chunkLength );
   const std::uint32_t * const first = &chunks.key( 0 );
   fill( chunks, Chunks::chunkLength, Chunks::chunkLength + 1 );
   const std::uint32_t * const second = &chunks.key( Chunks::chunkLength );
   fill( chunks, Chunks::chunkLength + 1, 9 * Chunks::chunkLength );
   EXPECT_EQ( &chunks.key( 0 ), first );
   EXPECT_EQ( &chunks.key( Chunks::chunkLength ), second );
   expectFilled( chunks, 9 * Chunks::chunkLength );
}

TEST( EntryChunksTest, TheKeysOfAChunkLieSideBySide ) {
   Chunks chunks;
   fill( chunks, 0, 3 * Chunks::chunkLength );
   for ( std::uint32_t chunk = 0; chunk < 3; ++chunk ) {
      EXPECT_EQ( &chunks.key( ( chunk + 1 ) * Chunks::chunkLength - 1 ) -
                    &chunks.key( chunk * Chunks::chunkLength ),
                 Chunks::chunkLength - 1 );
   }
}

TEST( EntryChunksTest, AChunkTakesSixteenKibibytesAtMost ) {
   EXPECT_LE( Chunks::chunkLength * ( sizeof( std::uint32_t ) + sizeof( std::string ) ),
              16 * 1024 );
   EXPECT_EQ( KeysAlone::chunkLength * sizeof( std::uint64_t ), 16 * 1024 );
   using Large = Vex::EntryChunks< std::uint32_t, std::array< std::byte, 10'000 > >;
   EXPECT_EQ( Large::chunkLength, 64 ); // a word of marks
}

TEST( EntryChunksTest, GivesBackWhatIsFarTooMuchAndGrowsAgain ) {
   Chunks chunks;
   fill( chunks, 0, 10 * Chunks::chunkLength );
   chunks.giveBack( 4 * Chunks::chunkLength ); // as many again, and two chunks, are kept
   EXPECT_EQ( chunks.capacity(), 10 * Chunks::chunkLength );
   chunks.giveBack( 100 );
   EXPECT_EQ( chunks.capacity(), 2 * Chunks::chunkLength );
   expectFilled( chunks, 100 );
   fill( chunks, 100, 20 * Chunks::chunkLength );
   expectFilled( chunks, 20 * Chunks::chunkLength );
}

TEST( EntryChunksTest, ValuesWithoutContentTakeNoRoom ) {
   KeysAlone keys;
   keys.grow();
   EXPECT_EQ( keys.value( 0 ), Vex::NoValue() );
   EXPECT_EQ( KeysAlone::valueBytes, 0 );
   EXPECT_EQ( sizeof( keys ), 4 * sizeof( void * ) );
}

} // namespace
