#include "platform/Nodo/IntfId.h"

#include "platform/Vex/Assert.h"

#include <array>
#include <atomic>
#include <compare>
#include <cstddef>
#include <map>
#include <mutex>
#include <ostream>
#include <string_view>

namespace Nodo {

namespace {

// The name of no interface, which needs no initialization and is never destroyed: identifiers may
// be read while static objects come and go.
union NoName {
   constexpr NoName() noexcept : name() {}
   NoName( const NoName & ) = delete;
   NoName & operator=( const NoName & ) = delete;
   NoName( NoName && ) = delete;
   NoName & operator=( NoName && ) = delete;
   constexpr ~NoName() {} // NOLINT(modernize-use-equals-default): that would be deleted

   InternedName name;
};
constinit NoName noName;

} // namespace

namespace Detail {
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables,*-union-access)
constinit std::array< std::atomic< InternedName * >, nameBlocks > names{ &noName.name };
} // namespace Detail

namespace {

// Which text has which number.
class InternedTexts {
 public:
   InternedTexts() { numbers_.emplace( internedName( 0 ).text, 0 ); }

   std::uint64_t number( const Vex::String & text ) {
      const std::lock_guard lock( mutex_ );
      const auto known = numbers_.find( text );
      return known != numbers_.end() ? known->second : add( text );
   }

 private:
   std::uint64_t add( const Vex::String & text ) {
      const std::uint64_t number = count_;
      VEX_ASSERT( number < std::uint64_t{ 1 } << Detail::handleBits );
      const unsigned block = Detail::nameBlockOf( number );
      InternedName * names = Detail::names.at( block ).load( std::memory_order_relaxed );
      if ( names == nullptr ) {
         names = new InternedName[ Detail::namesIn( block ) ]; // lives as long as the process
         Detail::names.at( block ).store( names, std::memory_order_release );
      }
      InternedName & place = names[ number + 1 - Detail::namesIn( block ) ];
      place.textIs( text );
      numbers_.emplace( place.text, number );
      ++count_;
      return number;
   }

   std::mutex mutex_; // guards all but the blocks' addresses
   std::uint64_t count_ = 1;
   std::map< std::string_view, std::uint64_t > numbers_; // keys: the texts in the blocks
};

// Never destroyed: identifiers may be made while static objects are being destroyed.
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
