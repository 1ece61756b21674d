#include "platform/Nodo/IntfId.h"

#include <array>
#include <atomic>
#include <bit>
#include <map>
#include <mutex>
#include <ostream>
#include <string_view>

namespace Nodo {

namespace {

// Texts by number, in blocks that double in size and never move, so that reading takes no lock:
// block b holds the numbers 2^b - 1 to 2^(b+1) - 2.
class InternedTexts {
 public:
   InternedTexts() { add( Vex::String() ); }

   std::uint64_t number( const Vex::String & text ) {
      const std::lock_guard lock( mutex_ );
      const auto known = numbers_.find( text );
      return known != numbers_.end() ? known->second : add( text );
   }

   const Vex::String & text( std::uint64_t number ) const noexcept {
      const unsigned block = blockOf( number );
      return blocks_.at( block ).load( std::memory_order_acquire )[ number + 1 - firstOf( block ) ];
   }

 private:
   static unsigned blockOf( std::uint64_t number ) noexcept {
      return static_cast< unsigned >( std::bit_width( number + 1 ) ) - 1;
   }
   static std::uint64_t firstOf( unsigned block ) noexcept { return std::uint64_t{ 1 } << block; }

   std::uint64_t add( const Vex::String & text ) {
      const std::uint64_t number = count_;
      const unsigned block = blockOf( number );
      Vex::String * texts = blocks_.at( block ).load( std::memory_order_relaxed );
      if ( texts == nullptr ) {
         texts = new Vex::String[ firstOf( block ) ]; // lives as long as the process
         blocks_.at( block ).store( texts, std::memory_order_release );
      }
      Vex::String & place = texts[ number + 1 - firstOf( block ) ];
      place = text;
      numbers_.emplace( place, number );
      ++count_;
      return number;
   }

   std::mutex mutex_; // guards all but the blocks' addresses
   std::uint64_t count_ = 0;
   std::array< std::atomic< Vex::String * >, 48 > blocks_{};
   std::map< std::string_view, std::uint64_t > numbers_; // keys: the texts in the blocks
};

// Never destroyed: identifiers may be read while static objects are being destroyed.
InternedTexts & interned() {
   static auto * const instance = new InternedTexts;
   return *instance;
}

bool isDigit( char c ) noexcept {
   return c >= '0' && c <= '9';
}

// The run of digits or of other bytes at the front of `text`, taken off it.
std::string_view takeRun( std::string_view & text ) noexcept {
   const bool digits = isDigit( text.front() );
   std::size_t length = 1;
   while ( length < text.size() && isDigit( text[ length ] ) == digits ) {
      ++length;
   }
   const std::string_view run = text.substr( 0, length );
   text.remove_prefix( length );
   return run;
}

std::string_view withoutLeadingZeros( std::string_view digits ) noexcept {
   const std::size_t first = digits.find_first_not_of( '0' );
   return first == std::string_view::npos ? std::string_view() : digits.substr( first );
}

std::strong_ordering compareRuns( std::string_view a, std::string_view b ) noexcept {
   if ( isDigit( a.front() ) && isDigit( b.front() ) ) {
      a = withoutLeadingZeros( a );
      b = withoutLeadingZeros( b );
      if ( a.size() != b.size() ) {
         return a.size() <=> b.size();
      }
   }
   return a.compare( b ) <=> 0;
}

} // namespace

void IntfId::handleInitialized( const Vex::String & text ) {
   value_ = interned().number( text );
}

const Vex::String & IntfId::stringValue() const noexcept {
   return interned().text( value_ );
}

std::strong_ordering operator<=>( IntfId a, IntfId b ) noexcept {
   std::string_view restOfA = a.stringValue();
   std::string_view restOfB = b.stringValue();
   while ( !restOfA.empty() && !restOfB.empty() ) {
      const auto order = compareRuns( takeRun( restOfA ), takeRun( restOfB ) );
      if ( order != std::strong_ordering::equal ) {
         return order;
      }
   }
   if ( !restOfA.empty() || !restOfB.empty() ) {
      return restOfA.size() <=> restOfB.size();
   }
   // Alike but for leading zeros: the texts themselves decide, so that only equal ones are equal.
   return a.stringValue().compare( b.stringValue() ) <=> 0;
}

std::ostream & operator<<( std::ostream & out, IntfId intf ) {
   return out << intf.stringValue();
}

} // namespace Nodo
