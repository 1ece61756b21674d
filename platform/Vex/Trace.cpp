#include "platform/Vex/Trace.h"

#include "platform/Vex/Clock.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <sstream>

namespace Vex {

namespace {

constexpr std::uint32_t defaultMask = 1U << 4U;
constexpr unsigned lastLevel = 31;

// Calls `use` for each part of `text` between separators until it returns false; true when it never
// did.
template < class Use >
bool forEachPart( std::string_view text, char separator, Use use ) {
   for ( ;; ) {
      const std::size_t end = text.find( separator );
      if ( !use( text.substr( 0, end ) ) ) {
         return false;
      }
      if ( end == std::string_view::npos ) {
         return true;
      }
      text.remove_prefix( end + 1 );
   }
}

std::optional< unsigned > parseLevel( std::string_view text ) noexcept {
   unsigned level = 0;
   const auto [ end, error ] = std::from_chars( text.data(), text.data() + text.size(), level );
   const bool whole = error == std::errc() && end == text.data() + text.size();
   return whole && level <= lastLevel ? std::optional( level ) : std::nullopt;
}

// The last entry of VEX_TRACE that names this handle, or every handle, decides.
std::uint32_t maskFromEnvironment( std::string_view handle ) {
   const char * const variable = std::getenv( "VEX_TRACE" );
   std::uint32_t mask = defaultMask;
   if ( variable == nullptr || *variable == '\0' ) {
      return mask;
   }
   forEachPart( variable, ';', [ & ]( std::string_view entry ) {
      const std::size_t equals = entry.find( '=' );
      const std::string_view name = entry.substr( 0, equals );
      const auto levels = equals == std::string_view::npos
                             ? std::nullopt
                             : parseLevelMask( entry.substr( equals + 1 ) );
      if ( !levels ) {
         std::fprintf(
            stderr,
            "VEX_TRACE: '%.*s': HANDLE=LEVELS wanted, LEVELS none, all or a list such as "
            "0,2-4\n",
            static_cast< int >( entry.size() ), entry.data() );
      } else if ( name == handle || name == "*" ) {
         mask = *levels;
      }
      return true;
   } );
   return mask;
}

class StandardErrorSink final : public TraceSink {
 public:
   void write( const TraceRecord & record ) override {
      std::ostringstream line;
      line << now() << ' ' << record.source << ':' << record.line << ' ' << record.function << ' '
           << record.level << ' ' << record.message << '\n';
      const std::string_view text = line.view();
      std::fwrite( text.data(), 1, text.size(), stderr );
   }
};

struct State {
   std::mutex mutex; // guards handles; their masks are atomic
   std::map< String, TraceHandle, std::less<> > handles;
   StandardErrorSink standardError;
   std::atomic< TraceSink * > sink{ nullptr };
};

// Never destroyed: state machines may be traced while static objects are being destroyed.
State & state() {
   static auto * const instance = new State;
   return *instance;
}

} // namespace

TraceSink::~TraceSink() = default;

std::optional< std::uint32_t > parseLevelMask( std::string_view levels ) noexcept {
   if ( levels == "none" ) {
      return 0;
   }
   if ( levels == "all" ) {
      return std::numeric_limits< std::uint32_t >::max();
   }
   std::uint32_t mask = 0;
   const bool valid = forEachPart( levels, ',', [ & ]( std::string_view range ) {
      const std::size_t dash = range.find( '-' );
      const auto first = parseLevel( range.substr( 0, dash ) );
      const auto last =
         dash == std::string_view::npos ? first : parseLevel( range.substr( dash + 1 ) );
      if ( !first || !last || *first > *last ) {
         return false;
      }
      for ( unsigned level = *first; level <= *last; ++level ) {
         mask |= 1U << level;
      }
      return true;
   } );
   return valid ? std::optional( mask ) : std::nullopt;
}

TraceHandle & traceHandle( std::string_view name ) {
   const std::lock_guard lock( state().mutex );
   auto & handles = state().handles;
   const auto known = handles.find( name );
   if ( known != handles.end() ) {
      return known->second;
   }
   return handles.try_emplace( String( name ), name, maskFromEnvironment( name ) ).first->second;
}

TraceSink * traceSinkIs( TraceSink * sink ) noexcept {
   return state().sink.exchange( sink, std::memory_order_acq_rel );
}

void TextTrace::write( TraceRecord record, std::span< const TracePiece > pieces ) noexcept {
   try {
      std::ostringstream message;
      message.exceptions( std::ios_base::badbit ); // out of memory: lost as a whole, not cut
      message << std::boolalpha;
      for ( const TracePiece & piece : pieces ) {
         piece.stream( message, piece.value );
      }
      record.message = message.view();
      TraceSink * const sink = state().sink.load( std::memory_order_acquire );
      ( sink != nullptr ? *sink : state().standardError ).write( record );
   } catch ( ... ) { // NOLINT(bugprone-empty-catch): a lost message must not stop a decision
   }
}

} // namespace Vex
