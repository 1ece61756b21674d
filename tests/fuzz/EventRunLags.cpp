// Events of LAGs, of their members, and of what is installed for these.

#include "tests/fuzz/EventRun.h"

#include <algorithm>

namespace Fuzz {

using Velo::Model::add;
using Velo::Model::remove;

namespace {

// Puts `id` under `key`, in place of what was there.
template < class Entries, class Id >
void put( Entries & entries, const std::string & key, Id id ) {
   const auto slot = std::ranges::find( entries, key, &Entries::value_type::first );
   if ( slot != entries.end() ) {
      slot->second = id;
   } else {
      entries.emplace_back( key, id );
   }
}

template < class Entries >
bool drop( Entries & entries, const std::string & key ) {
   return std::erase_if( entries, [ & ]( const auto & slot ) { return slot.first == key; } ) != 0;
}

} // namespace

std::string EventRun::newSet( Bytes & bytes ) {
   const std::size_t at = bytes.below( lagCount );
   const auto mask = static_cast< Mask >( bytes.below( 16 ) );
   const std::string lag = lagName( at );
   PeerRun::lag( at, mask );
   const Id id = sets_.size();
   sets_.push_back( world_.hwLagConfig->initialMember( lagId( at ) ) );
   lagOfSet_.push_back( at );
   auto & members = basicModel_.lags[ lag ];
   members.clear();
   std::vector< std::string > ports;
   for ( std::size_t m = 0; m < Velo::PeerModel::memberCount; ++m ) {
      if ( ( mask & ( 1U << m ) ) != 0 ) {
         members[ memberName( at, m ) ] = 0;
         ports.push_back( memberName( at, m ) );
      }
   }
   deprecatedModel_.sets.push_back( { lag, ports } );
   put( deprecatedModel_.lags, lag, id );
   vlanModel_.members[ static_cast< int >( id ) ] = { lag, ports };
   put( vlanModel_.lags, lag, static_cast< int >( id ) );
   if ( deprecated_ ) {
      deprecatedModel_.lagEntryChanged( lag );
   }
   if ( vlan_ ) {
      vlanModel_.lagEntryChanged( lag );
   }
   return "set " + std::to_string( id ) + " of " + lag + ", mask " + std::to_string( mask );
}

std::string EventRun::setGone( Bytes & bytes ) {
   const std::size_t at = bytes.below( lagCount );
   const std::string lag = lagName( at );
   noLag( at );
   basicModel_.lags.erase( lag );
   if ( drop( deprecatedModel_.lags, lag ) && deprecated_ ) {
      deprecatedModel_.lagEntryChanged( lag );
   }
   if ( drop( vlanModel_.lags, lag ) && vlan_ ) {
      vlanModel_.lagEntryChanged( lag );
   }
   return lag + " goes";
}

std::string EventRun::memberOfLag( Bytes & bytes ) {
   const auto [ at, m ] = port( bytes );
   const std::size_t what = bytes.below( 5 ); // rather in than out, rarely of another type
   const auto set = world_.hwLagConfig->initialMember( lagId( at ) );
   if ( !set ) {
      return "no such LAG";
   }
   const auto id = static_cast< Id >( std::ranges::find( sets_, set ) - sets_.begin() );
   return memberOf( id, m, what < 2 ? std::nullopt : std::optional( what == 4 ? 1U : 0U ) );
}

std::string EventRun::memberOfAnySet( Bytes & bytes ) {
   const std::size_t which = bytes.next();
   const std::size_t m = bytes.below( Velo::PeerModel::memberCount );
   const bool joins = bytes.coin();
   if ( sets_.empty() ) {
      return "no set yet";
   }
   return memberOf( which % sets_.size(), m, joins ? std::optional( 0U ) : std::nullopt );
}

std::string EventRun::memberOf( Id id, std::size_t m, std::optional< unsigned > type ) {
   auto & set = *sets_[ id ];
   const std::size_t at = lagOfSet_[ id ];
   const std::string & name = memberName( at, m );
   const std::string lag = lagName( at );
   const auto * const before = set.member().find( memberId( at, m ) );
   const auto number = static_cast< int >( id );
   const bool changed = type ? before == nullptr || *before != Hardware::Lag::PortProgType( *type )
                             : before != nullptr;
   const bool toggled = ( before != nullptr ) != type.has_value();
   const bool inUse = world_.hwLagConfig->initialMember( lagId( at ) ).get() == &set;
   type ? set.memberIs( memberId( at, m ), Hardware::Lag::PortProgType( *type ) )
        : set.memberDel( memberId( at, m ) );
   if ( inUse ) {
      if ( toggled ) {
         model_.memberIs( at, m, type.has_value() );
      } else if ( changed && model_.running ) {
         model_.decide( at, m );
      }
      type ? basicModel_.member( name, lag, static_cast< int >( *type ) )
           : basicModel_.memberGone( name, lag );
   }
   auto & ports = deprecatedModel_.sets[ id ].ports;
   auto & others = vlanModel_.members[ number ].ports;
   if ( type ) {
      add( ports, name );
      add( others, name );
   } else {
      remove( ports, name );
      remove( others, name );
   }
   if ( changed && deprecated_ ) {
      deprecatedModel_.memberChanged( id, name );
   }
   if ( changed && vlan_ ) {
      vlanModel_.memberChanged( number, name );
   }
   return name + ( type ? " is in set " : " is not in set " ) + std::to_string( id );
}

std::string EventRun::acl( Bytes & bytes ) {
   const Port which = port( bytes );
   const bool installed = bytes.coin();
   const Pair pair = pairOf( which );
   PeerRun::acl( which.lag, which.member, installed );
   basicModel_.aclIs( pair, installed );
   const bool changed =
      installed ? add( deprecatedModel_.input, pair ) : remove( deprecatedModel_.input, pair );
   if ( changed && deprecated_ ) {
      deprecatedModel_.inputChanged( pair );
   }
   return "acl of " + pair.first + ( installed ? " comes" : " goes" );
}

// ---- VLAN translation --------------------------------------------------------------------------

std::string EventRun::switchport( Bytes & bytes ) {
   const std::size_t which = bytes.below( lagCount + 1 ); // the last one is no LAG
   const bool translated = bytes.coin();
   const bool there = bytes.below( 3 ) != 0;
   const std::string name = which < lagCount ? lagName( which ) : memberName( 0, 0 );
   const Nodo::IntfId intf = which < lagCount ? lagId( which ) : memberId( 0, 0 );
   if ( !there ) {
      world_.bridgingConfig->switchIntfConfigDel( intf );
      if ( drop( vlanModel_.configs, name ) && vlan_ ) {
         vlanModel_.configEntryChanged( name );
      }
      return "no switchport " + name;
   }
   const auto id = static_cast< int >( configs_.size() );
   configs_.push_back( Vex::make< Bridging::SwitchIntfConfig >( intf ) );
   if ( translated ) {
      configs_.back()->egressVlanXlateIs( Bridging::VlanXlateKey( 10 ), Bridging::VlanId( 1000 ) );
   }
   world_.bridgingConfig->switchIntfConfigIs( configs_.back() );
   vlanModel_.switching[ id ] = { name, translated ? 1 : 0 };
   put( vlanModel_.configs, name, id );
   if ( vlan_ ) {
      vlanModel_.configEntryChanged( name );
   }
   return "switchport " + name + ( translated ? ", translated" : "" );
}

std::string EventRun::mapping( Bytes & bytes ) {
   const std::size_t which = bytes.next();
   const bool ingress = bytes.coin();
   const Bridging::VlanXlateKey vlan( static_cast< std::uint16_t >( 10 + bytes.below( 2 ) ) );
   const std::size_t target = bytes.below( 3 ); // 0: the mapping goes
   if ( configs_.empty() ) {
      return "no configuration yet";
   }
   const std::size_t id = which % configs_.size();
   const auto number = static_cast< int >( id );
   auto & config = *configs_[ id ];
   const auto & mappings = ingress ? config.ingressVlanXlate() : config.egressVlanXlate();
   const auto * const before = mappings.find( vlan );
   const Bridging::VlanId newVlan( static_cast< std::uint16_t >( 1000 + target ) );
   const bool changed = target == 0 ? before != nullptr : before == nullptr || *before != newVlan;
   vlanModel_.switching[ number ].mappings +=
      ( target != 0 ? 1 : 0 ) - ( before != nullptr ? 1 : 0 );
   if ( target == 0 ) {
      ingress ? config.ingressVlanXlateDel( vlan ) : config.egressVlanXlateDel( vlan );
   } else {
      ingress ? config.ingressVlanXlateIs( vlan, newVlan )
              : config.egressVlanXlateIs( vlan, newVlan );
   }
   if ( changed && vlan_ ) {
      vlanModel_.mappingChanged( number );
   }
   return ( target == 0 ? "a mapping less of configuration " : "a mapping of configuration " ) +
          std::to_string( id );
}

std::string EventRun::vlanReady( Bytes & bytes ) {
   const Port which = port( bytes );
   const bool ready = bytes.coin();
   const Pair pair = pairOf( which );
   ready ? vlanInput_->intfIs( featureOf( which ) ) : vlanInput_->intfDel( featureOf( which ) );
   const bool changed = ready ? add( vlanModel_.input, pair ) : remove( vlanModel_.input, pair );
   if ( changed && vlan_ ) {
      vlanModel_.inputChanged( pair );
   }
   return "VLANs of " + pair.first + ( ready ? " are ready" : " are not ready" );
}

} // namespace Fuzz
