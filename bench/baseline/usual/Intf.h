#pragma once

// Interfaces as this baseline names them. std::string in every key would be what comes to mind
// first; interned numbers are what a competent engineer arrives at, and the faster choice: keys are
// compared as numbers, and names are looked up only where a message is written.

#include <compare>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace Bench::Usual {

struct Intf {
   std::uint32_t number = 0;
   friend auto operator<=>( Intf, Intf ) = default;
};

struct Feature {
   Intf member;
   Intf lag;
   friend auto operator<=>( const Feature &, const Feature & ) = default;
};

class Names {
 public:
   static Names & instance() {
      static Names names;
      return names;
   }
   Intf intern( const std::string & name ) {
      const auto [ place, isNew ] =
         numbers_.try_emplace( name, static_cast< std::uint32_t >( names_.size() ) );
      if ( isNew ) {
         names_.push_back( name );
      }
      return { place->second };
   }
   const std::string & of( Intf intf ) const { return names_[ intf.number ]; }

 private:
   std::unordered_map< std::string, std::uint32_t > numbers_;
   std::vector< std::string > names_;
};

inline const std::string & nameOf( Intf intf ) {
   return Names::instance().of( intf );
}

} // namespace Bench::Usual
