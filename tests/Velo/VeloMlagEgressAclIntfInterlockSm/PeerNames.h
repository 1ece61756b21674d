#pragma once

// What the model's numbers are called among the entities.

#include "platform/Nodo/IntfId.h"
#include "platform/Vex/String.h"
#include "tests/Velo/VeloMlagEgressAclIntfInterlockSm/PeerModel.h"

#include <array>
#include <cstddef>
#include <string>

namespace Velo {

struct PeerNames {
   using String = Vex::String;
   static constexpr std::size_t lagCount = PeerModel::lagCount;

   static String lagName( std::size_t at ) {
      return "PortChannel" + std::to_string( 10 * ( at + 1 ) );
   }
   static String memberName( std::size_t at, std::size_t m ) {
      return "Ethernet" + std::to_string( 10 * at + m + 1 );
   }
   static Nodo::IntfId lagId( std::size_t at ) {
      static const std::array< Nodo::IntfId, lagCount > ids{
         Nodo::IntfId( lagName( 0 ) ), Nodo::IntfId( lagName( 1 ) ), Nodo::IntfId( lagName( 2 ) ) };
      return ids[ at ];
   }
   static Nodo::IntfId memberId( std::size_t at, std::size_t m ) {
      static const auto ids = [] {
         std::array< std::array< Nodo::IntfId, PeerModel::memberCount >, lagCount > made;
         for ( std::size_t a = 0; a < lagCount; ++a ) {
            for ( std::size_t b = 0; b < PeerModel::memberCount; ++b ) {
               made[ a ][ b ] = Nodo::IntfId( memberName( a, b ) );
            }
         }
         return made;
      }();
      return ids[ at ][ m ];
   }
};

} // namespace Velo
