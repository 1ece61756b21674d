#pragma once

// Where a trace message is written: one type a call site, so that what belongs to a site (its
// ring-buffer descriptor) is looked up once and then costs nothing.
//
//    trace( Vex::at< 3 >(), "lag is not active" );
//
// Each mention of at<>() is a site of its own: the default template argument is a new closure type
// every time it is used. Only in source files; in a header each includer would get another site.

#include <cstddef>
#include <cstdint>
#include <source_location>
#include <string_view>
#include <type_traits>

namespace Vex {

/// "handleMember" out of "void Velo::Sm::handleMember( Nodo::IntfId, Nodo::IntfId )".
constexpr std::string_view bareFunctionName( std::string_view signature ) noexcept {
   constexpr std::string_view unnamed = "(anonymous namespace)"; // as clang writes it
   std::size_t depth = 0; // of angle brackets, whose content belongs to a type
   std::size_t begin = 0;
   for ( std::size_t at = 0; at < signature.size(); ++at ) {
      const char c = signature[ at ];
      if ( c == '<' ) {
         ++depth;
      } else if ( c == '>' && depth > 0 ) {
         --depth;
      } else if ( depth == 0 && ( c == ' ' || c == ':' || c == '*' || c == '&' ) ) {
         begin = at + 1;
      } else if ( depth == 0 && c == '(' && signature.substr( at ).starts_with( unnamed ) ) {
         at += unnamed.size() - 1;
      } else if ( depth == 0 && c == '(' ) {
         return signature.substr( begin, at - begin );
      }
   }
   return signature;
}

template < unsigned messageLevel, class Unique >
struct CallSite {
   static_assert( messageLevel < 32, "a level is a bit of a 32-bit mask" );
   static constexpr unsigned level = messageLevel;

   std::uint32_t line = 0;
   std::string_view function; // bare name
};

template < unsigned level, auto unique = [] {} >
consteval CallSite< level, decltype( unique ) > at(
   std::source_location where = std::source_location::current() ) {
   return { where.line(), bareFunctionName( where.function_name() ) };
}

/// How a piece of a message is handed on to code that rarely runs: a small one by value. By
/// reference it would have to be in memory, for messages that nobody wants.
template < class Piece >
using HandedOn =
   std::conditional_t< std::is_trivially_copyable_v< Piece > && !std::is_array_v< Piece > &&
                          sizeof( Piece ) <= sizeof( void * ),
                       Piece,
                       const Piece & >;

} // namespace Vex
