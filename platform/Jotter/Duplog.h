#pragma once

// Duplog: one message to the text trace and to the ring-buffer trace at once.
//
//    const Jotter::Duplog duplog( trace );
//    duplog( Vex::at< 0 >(), smName, "handleMember", " memberIntf : ", member, " lag : ", lag );
//
// The ring takes every message, whatever the text trace's level mask says. Its descriptor holds the
// literal pieces, its record the arguments; the prefix (a Vex::String) goes into the text copy
// only.

#include "platform/Jotter/Descriptor.h"
#include "platform/Jotter/RecordEncoding.h"
#include "platform/Jotter/TraceFile.h"
#include "platform/Vex/CallSite.h"
#include "platform/Vex/Trace.h"

#include <atomic>
#include <cstdint>

namespace Jotter {

class Duplog {
 public:
   explicit Duplog( const Vex::TextTrace & text ) noexcept : text_( text ) {}

   template < unsigned level, class Unique, class... Pieces >
   void operator()( Vex::CallSite< level, Unique > site, const Pieces &... pieces ) const noexcept {
      if ( TraceFile * const file = defaultTraceFile(); file != nullptr ) {
         // Unique makes this instance, and so this number, one of this call site.
         static constinit std::atomic< DescriptorId > descriptor{ 0 };
         DescriptorId id = descriptor.load( std::memory_order_relaxed );
         if ( id == 0 ) [[unlikely]] {
            id =
               describe< Vex::HandedOn< Pieces >... >( site.line, site.function, level, pieces... );
            descriptor.store( id, std::memory_order_relaxed );
         }
         file->write( id, pieces... );
      }
      text_( site, pieces... );
   }

 private:
   // Returns 0, and the next message tries again, when there is no memory. Happens once a site, so
   // it is kept out of the way.
   template < class... Pieces >
   [[gnu::noinline, gnu::cold]] DescriptorId describe( std::uint32_t line,
                                                       std::string_view function,
                                                       unsigned level,
                                                       Pieces... pieces ) const noexcept {
      try {
         Descriptor descriptor{ Vex::String( text_.source() ),
                                line,
                                Vex::String( function ),
                                static_cast< std::uint8_t >( level ),
                                {} };
         ( addPiece( descriptor.pieces, pieces ), ... );
         return registerDescriptor( descriptor );
      } catch ( ... ) { // NOLINT(bugprone-empty-catch): the decision goes on
      }
      return 0;
   }

   Vex::TextTrace text_;
};

} // namespace Jotter
