#pragma once

// Trace files for tests, with descriptors of their own.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Jotter/TraceReader.h"
#include "platform/Vex/String.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

inline Jotter::Piece literal( Vex::String text ) {
   return { Jotter::PieceKind::literal, std::move( text ) };
}
inline Jotter::Piece placeholder( Jotter::PieceKind kind ) {
   return { kind, {} };
}

inline Jotter::Descriptor describedBy( std::vector< Jotter::Piece > pieces ) {
   return { "Velo/Source", 12, "handle", 3, std::move( pieces ) };
}

inline std::vector< Vex::String > messagesOf( std::span< const std::byte > file ) {
   std::vector< Vex::String > messages;
   for ( const Jotter::Record & record : Jotter::readRecords( file ) ) {
      messages.push_back( record.message() );
   }
   return messages;
}

inline std::vector< std::uint64_t > sequencesOf( std::span< const std::byte > file ) {
   std::vector< std::uint64_t > sequences;
   for ( const Jotter::Record & record : Jotter::readRecords( file ) ) {
      sequences.push_back( record.sequence );
   }
   return sequences;
}
