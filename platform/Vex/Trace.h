#pragma once

// Text trace: messages for people, by handle and level. Level n is written when bit n of the
// handle's mask is set; otherwise a message costs the test of that bit, and nothing is built.
//
// Handles live once in the process, by name, from their first use on. A new handle takes its mask
// from the environment variable VEX_TRACE, "HANDLE=LEVELS[;HANDLE=LEVELS]..." where HANDLE may be *
// and LEVELS is none, all, or a list such as 0,2-4; without that it writes level 4, the failures
// that an operator must see.
//
// Ownership: the host owns a sink that it puts in place, and keeps it until it takes it back.
// Threading: masks may be changed and messages written from any thread; sinks are called on the
// thread that writes.
// Re-entrancy: a sink may write messages itself, but then gets them back at once.
// Errors: a message for which there is no memory is lost; its writer goes on.

#include "platform/Vex/CallSite.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/String.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <ostream>
#include <span>
#include <string_view>

namespace Vex {

/// "none", "all", or a list such as "0,2-4" of levels 0 to 31; nothing when it is none of these.
VEX_EXPORT std::optional< std::uint32_t > parseLevelMask( std::string_view levels ) noexcept;

/// A name under which messages are traced, and the levels that are on for it.
class TraceHandle {
 public:
   TraceHandle( std::string_view name, std::uint32_t levelMask )
       : name_( name ), levelMask_( levelMask ) {}

   const String & name() const noexcept { return name_; }
   std::uint32_t levelMask() const noexcept { return levelMask_.load( std::memory_order_relaxed ); }
   void levelMaskIs( std::uint32_t mask ) noexcept {
      levelMask_.store( mask, std::memory_order_relaxed );
   }
   bool enabled( unsigned level ) const noexcept { return ( levelMask() >> level & 1U ) != 0; }

 private:
   String name_;
   std::atomic< std::uint32_t > levelMask_;
};

/// The handle of this name, created on first use; lives until the process ends.
VEX_EXPORT TraceHandle & traceHandle( std::string_view name );

/// One message of the text trace.
struct TraceRecord {
   std::string_view source; // for example "Velo/VeloVlanXlateIntfInterlockSm"
   std::uint32_t line;
   std::string_view function;
   unsigned level;
   std::string_view message;
};

/// Where the messages of the text trace go.
class VEX_EXPORT TraceSink {
 public:
   TraceSink() = default;
   TraceSink( const TraceSink & ) = delete;
   TraceSink & operator=( const TraceSink & ) = delete;
   TraceSink( TraceSink && ) = delete;
   TraceSink & operator=( TraceSink && ) = delete;
   virtual ~TraceSink();

   virtual void write( const TraceRecord & record ) = 0;
};

/// Puts `sink` in place of the current one and returns that; null stands for the default sink, both
/// ways, which writes "TIME SOURCE:LINE FUNCTION LEVEL MESSAGE" lines on standard error.
VEX_EXPORT TraceSink * traceSinkIs( TraceSink * sink ) noexcept;

/// Puts a sink in place for as long as the scope lives.
class VEX_EXPORT TraceSinkScope {
 public:
   explicit TraceSinkScope( TraceSink & sink ) noexcept : before_( traceSinkIs( &sink ) ) {}
   TraceSinkScope( const TraceSinkScope & ) = delete;
   TraceSinkScope & operator=( const TraceSinkScope & ) = delete;
   TraceSinkScope( TraceSinkScope && ) = delete;
   TraceSinkScope & operator=( TraceSinkScope && ) = delete;
   ~TraceSinkScope() { traceSinkIs( before_ ); }

 private:
   TraceSink * before_;
};

/// One piece of a message, not yet written out.
struct TracePiece {
   const void * value;
   void ( *stream )( std::ostream & out, const void * value );
};

template < class T >
TracePiece tracePiece( const T & value ) noexcept {
   return { &value, []( std::ostream & out, const void * piece ) {
              out << *static_cast< const T * >( piece );
           } };
}

/// The text trace of one source: its handle and the source name that its records carry.
class VEX_EXPORT TextTrace {
 public:
   TextTrace( std::string_view handle, std::string_view source )
       : handle_( traceHandle( handle ) ), source_( source ) {}

   std::string_view source() const noexcept { return source_; }

   /// Writes the pieces one after the other, nothing between, when the level is enabled.
   template < unsigned level, class Unique, class... Pieces >
   void operator()( CallSite< level, Unique > site, const Pieces &... pieces ) const noexcept {
      if ( handle_.enabled( level ) ) [[unlikely]] {
         writeOut< level, HandedOn< Pieces >... >( site.line, site.function, pieces... );
      }
   }

 private:
   // Kept out of the way of those that trace.
   template < unsigned level, class... Pieces >
   [[gnu::noinline, gnu::cold]] void writeOut( std::uint32_t line,
                                               std::string_view function,
                                               Pieces... pieces ) const noexcept {
      const std::array< TracePiece, sizeof...( Pieces ) > erased{ tracePiece( pieces )... };
      write( { source_, line, function, level, {} }, erased );
   }
   static void write( TraceRecord record, std::span< const TracePiece > pieces ) noexcept;

   TraceHandle & handle_;
   std::string_view source_;
};

} // namespace Vex
